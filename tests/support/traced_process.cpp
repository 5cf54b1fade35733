#include "support/traced_process.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace wmq::testing {
namespace {

// The way out is _exit(2): what this process wants done at its end is no business of a copy.
[[noreturn]] void runAndEnd(const std::function<void()> &body) {
  body();
  _exit(0);
}

pid_t forkOrThrow() {
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("cannot fork");
  return process;
}

bool waitFor(pid_t process, int &status) {
  while (waitpid(process, &status, 0) < 0)
    if (errno != EINTR) return false;
  return true;
}

int statusOf(pid_t process) {
  int status = 0;
  if (!waitFor(process, status)) throw std::runtime_error("lost sight of a process");
  return status;
}

long trace(__ptrace_request request, pid_t process, long data) {
  return ptrace(request, process, nullptr, data);
}

}  // namespace

bool runInChild(const std::function<void()> &body) {
  const pid_t process = forkOrThrow();
  if (process == 0) runAndEnd(body);
  return statusOf(process) == 0;
}

bool canTrace() {
  return runInChild([] {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
  });
}

TracedProcess::TracedProcess(const std::function<void()> &body) : process_(forkOrThrow()) {
  if (process_ == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
    raise(SIGSTOP);
    runAndEnd(body);
  }
  if (!WIFSTOPPED(statusOf(process_)) ||
      trace(PTRACE_SETOPTIONS, process_, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0)
    throw std::runtime_error("cannot trace");
}

TracedProcess::~TracedProcess() { kill(); }

bool TracedProcess::goOn() {
  constexpr int kAtSystemCall = SIGTRAP | 0x80;
  int signal = 0;
  for (;;) {
    if (trace(PTRACE_SYSCALL, process_, signal) != 0) throw std::runtime_error("cannot let it go on");
    const int status = statusOf(process_);
    if (!WIFSTOPPED(status)) {
      process_ = 0;
      if (status != 0) throw std::runtime_error("it has not come to its end");
      return false;
    }
    if (WSTOPSIG(status) == kAtSystemCall) return true;
    signal = WSTOPSIG(status);
  }
}

bool TracedProcess::isAboutToWrite() const {
  __ptrace_syscall_info call{};
  ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof call, &call);
  return call.op == PTRACE_SYSCALL_INFO_ENTRY && call.entry.nr == SYS_write;
}

void TracedProcess::shortenWrite(size_t length) const {
  user_regs_struct registers{};
  ptrace(PTRACE_GETREGS, process_, nullptr, &registers);
  registers.rdx = length;
  ptrace(PTRACE_SETREGS, process_, nullptr, &registers);
}

void TracedProcess::kill() {
  if (process_ == 0) return;
  ::kill(process_, SIGKILL);
  int status = 0;
  waitFor(process_, status);
  process_ = 0;
}

}  // namespace wmq::testing
