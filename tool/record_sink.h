// Where records go: standard output, or a stream that rotates.
#ifndef WMQ_TOOL_RECORD_SINK_H
#define WMQ_TOOL_RECORD_SINK_H

#include <cstdint>
#include <string>
#include <string_view>

#include "faults.h"
#include "output.h"
#include "wmq/wmq.h"

namespace wmq::tool {

// The three streams of the library, by what is done with them.
struct StreamOperations {
  const char *name;  // as an option has it
  char *streamParams::*path;
  int (*open)(const streamParams *params);
  int (*write)(eventRecord *record);
  int (*sync)();
  int (*close)();
  int (*format)(eventRecord *record, char **text, size_t *length);
};
extern const StreamOperations eventStream;
extern const StreamOperations statusStream;
extern const StreamOperations pendingReasonsStream;

struct SinkOptions {
  const StreamOperations *stream = &eventStream;
  std::string file = "-";  // "-": standard output
  int32_t maxSize = 0;     // bytes at which the file is rotated; 0: the library's own limit
  int32_t maxFiles = 10;   // old files kept
  bool sync = false;       // bring all to the disk before the end
};

class RecordSink {
 public:
  enum class Result {
    written,
    refused,  // the record cannot be written; wmq_errno and wmq_errdetail() tell why
    failed    // the output failed, which has been reported
  };

  RecordSink(SinkOptions where, Faults &reportTo) : options(std::move(where)), faults(reportTo) {}
  RecordSink(const RecordSink &) = delete;
  RecordSink &operator=(const RecordSink &) = delete;

  // False when the stream cannot be opened, which is reported.
  bool open();

  // `file` and `line` are where the record comes from, for reports.
  Result write(eventRecord &record, std::string_view file, uint64_t line);

  // Hands what is waiting for standard output over to its reader.
  void flush() { output.flush(); }

  // Ends the output and reports a failure.
  void close();

 private:
  bool toStandardOutput() const { return options.file == "-"; }
  Result writeToOutput(eventRecord &record);
  Result writeToStream(eventRecord &record, std::string_view file, uint64_t line);

  SinkOptions options;
  Faults &faults;
  Output output;
};

}  // namespace wmq::tool

#endif
