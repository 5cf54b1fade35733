// A process that is stopped at each of its system calls (ptrace(2)), and can be made to end there.
#ifndef WMQ_TESTS_TRACED_PROCESS_H
#define WMQ_TESTS_TRACED_PROCESS_H

#include <sys/types.h>

#include <cstddef>
#include <functional>

namespace wmq::testing {

// Runs `body` in a process of its own; true when it came to its end.
bool runInChild(const std::function<void()> &body);

// False where the system lets nobody trace, as in some containers.
bool canTrace();

class TracedProcess {
 public:
  // A copy of this process that runs `body` and ends. It waits for the first call of goOn().
  explicit TracedProcess(const std::function<void()> &body);
  ~TracedProcess();  // kills what is left of it
  TracedProcess(const TracedProcess &) = delete;
  TracedProcess &operator=(const TracedProcess &) = delete;

  // Lets it run until it enters or leaves a system call; false when it has ended by itself.
  bool goOn();

  // It stands before write(2), which has not been done.
  bool isAboutToWrite() const;

  // Lets that write(2) take no more than the first `length` bytes.
  void shortenWrite(size_t length) const;

  void kill();

 private:
  pid_t process_;
};

}  // namespace wmq::testing

#endif
