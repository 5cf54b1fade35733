#include "command_runner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace wmq::tool {

namespace {

// A command that ends without having read its input must not end this program.
class IgnoringBrokenPipes {
 public:
  IgnoringBrokenPipes() {
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignored, &former);
  }
  IgnoringBrokenPipes(const IgnoringBrokenPipes &) = delete;
  IgnoringBrokenPipes &operator=(const IgnoringBrokenPipes &) = delete;
  ~IgnoringBrokenPipes() { sigaction(SIGPIPE, &former, nullptr); }

 private:
  struct sigaction former {};
};

int spawnShell(const std::string &command, int input, pid_t &child) {
  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&files);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  // Signals that this program waits for reach the command at once. It ignores what this program ignores.
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  char shell[] = "sh";
  char option[] = "-c";
  std::string text = command;
  char *arguments[] = {shell, option, text.data(), nullptr};
  int error = posix_spawn(&child, "/bin/sh", &files, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error;
}

void writeInput(int fd, std::string_view input) {
  while (!input.empty()) {
    ssize_t count = write(fd, input.data(), input.size());
    if (count >= 0)
      input.remove_prefix(static_cast<size_t>(count));
    else if (errno != EINTR)
      return;
  }
}

}  // namespace

std::string runCommand(const std::string &command, std::string_view input, const std::string &position) {
  int ends[2];
  if (setenv("WMQ_POSITION", position.c_str(), 1) != 0) return std::strerror(errno);
  if (pipe2(ends, O_CLOEXEC) != 0) return std::strerror(errno);
  pid_t child = -1;
  int error = spawnShell(command, ends[0], child);
  close(ends[0]);
  if (error == 0) {
    IgnoringBrokenPipes guard;
    writeInput(ends[1], input);
  }
  close(ends[1]);
  if (error != 0) return std::strerror(error);
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return std::strerror(errno);
  if (WIFSIGNALED(status)) return "ended by signal " + std::to_string(WTERMSIG(status));
  return WEXITSTATUS(status) == 0 ? "" : "exit status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace wmq::tool
