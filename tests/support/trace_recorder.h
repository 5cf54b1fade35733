// Keeps the trace messages of streams.
#ifndef WMQ_TESTS_TRACE_RECORDER_H
#define WMQ_TESTS_TRACE_RECORDER_H

#include <functional>
#include <string>
#include <vector>

namespace wmq::testing {

class TraceRecorder {
 public:
  TraceRecorder();
  ~TraceRecorder();
  TraceRecorder(const TraceRecorder &) = delete;
  TraceRecorder &operator=(const TraceRecorder &) = delete;

  // What a stream is given as its trace function. It reports to the recorder that stands at the moment.
  static int record(const char *message);

  std::vector<std::string> messages;
  const char *lastText = nullptr;           // as it was handed over
  std::function<void()> whenReported = {};  // run at each message, in the middle of the operation
};

}  // namespace wmq::testing

#endif
