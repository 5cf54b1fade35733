#include "launcher.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

namespace wmq::bench {
namespace {

int launcher = -1;

double secondsOf(const timeval &time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// `words` ends each argument with a NUL.
Usage run(std::string &words) {
  std::vector<char *> arguments;
  for (size_t at = 0; at < words.size(); at = words.find('\0', at) + 1) arguments.push_back(&words[at]);
  arguments.push_back(nullptr);
  const auto begin = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
  }
  Usage usage{.status = -1};
  rusage used{};
  if (child < 0 || wait4(child, &usage.status, 0, &used) != child) return usage;
  usage.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  usage.cpuSeconds = secondsOf(used.ru_utime) + secondsOf(used.ru_stime);
  usage.peakKilobytes = static_cast<double>(used.ru_maxrss);
  return usage;
}

[[noreturn]] void serve(int requests) {
  std::string words(size_t{64} << 10, '\0');
  for (ssize_t got; (got = recv(requests, words.data(), words.size(), 0)) > 0;) {
    std::string command = words.substr(0, static_cast<size_t>(got));
    const Usage usage = run(command);
    if (send(requests, &usage, sizeof usage, 0) != sizeof usage) break;
  }
  _exit(0);
}

}  // namespace

void startLauncher() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
    throw std::runtime_error("no socket for the launcher");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process for the launcher");
  close(ends[child == 0 ? 0 : 1]);
  if (child == 0) serve(ends[1]);
  launcher = ends[0];
}

Usage runCommand(const std::vector<std::string> &command) {
  std::string words;
  for (const std::string &word : command) words.append(word).push_back('\0');
  Usage usage;
  if (send(launcher, words.data(), words.size(), 0) != static_cast<ssize_t>(words.size()) ||
      recv(launcher, &usage, sizeof usage, 0) != sizeof usage)
    throw std::runtime_error("the launcher is gone");
  if (usage.status != 0) throw std::runtime_error(command[0] + " failed");
  return usage;
}

}  // namespace wmq::bench
