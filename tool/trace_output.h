// A stream that a trace is replayed into.
#ifndef WMQ_TOOL_TRACE_OUTPUT_H
#define WMQ_TOOL_TRACE_OUTPUT_H

#include <cstdint>
#include <string>
#include <utility>

#include "record_sink.h"

namespace wmq::tool {

class TraceOutput {
 public:
  TraceOutput(std::string ofTrace, SinkOptions where, Faults &reportTo)
      : trace(std::move(ofTrace)), sink(std::move(where), reportTo), faults(reportTo) {}

  // False when the stream cannot be opened, which is reported.
  bool open() { return sink.open(); }

  // A record that cannot be written is reported with that line of the trace. Once the output has failed,
  // nothing is done.
  void write(eventRecord &record, uint64_t line);

  void flush() { sink.flush(); }
  void close() { sink.close(); }

  bool failed() const { return hasFailed; }
  uint64_t numRecords() const { return written; }

 private:
  std::string trace;
  RecordSink sink;
  Faults &faults;
  uint64_t written = 0;
  bool hasFailed = false;
};

}  // namespace wmq::tool

#endif
