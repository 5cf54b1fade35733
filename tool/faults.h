// What goes wrong while a command runs: messages on standard error, and the exit status they lead to.
#ifndef WMQ_TOOL_FAULTS_H
#define WMQ_TOOL_FAULTS_H

#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

#include "exit_status.h"
#include "progress.h"

namespace wmq::tool {

class Faults {
 public:
  // The progress bar, if any, makes way for messages.
  explicit Faults(Progress *bar = nullptr) : progress(bar) {}

  // Called before each message: hands over the output that comes before it, so that the two stand in order
  // where they go to one place.
  void beforePrinting(std::function<void()> action) { handOver = std::move(action); }

  // Bad input: "FILE:LINE: error NUMBER NAME: TEXT".
  void badInput(std::string_view file, uint64_t line, int number, std::string_view text);

  // The same for the library's last failure on this thread, with all that it can say about it.
  void refused(std::string_view file, uint64_t line, int number);

  // An output or the system failed: "wmq: SUBJECT: TEXT".
  void failure(std::string_view subject, std::string_view text);

  int exitStatus() const { return status; }
  uint64_t badInputs() const { return numBad; }

 private:
  void print(std::string_view message);

  Progress *progress;
  std::function<void()> handOver;
  int status = exitFine;
  uint64_t numBad = 0;
};

}  // namespace wmq::tool

#endif
