#include "trace_output.h"

namespace wmq::tool {

void TraceOutput::write(eventRecord &record, uint64_t line) {
  if (hasFailed) return;
  switch (sink.write(record, trace, line)) {
    case RecordSink::Result::written:
      ++written;
      break;
    case RecordSink::Result::refused:
      faults.refused(trace, line, wmq_errno);
      break;
    case RecordSink::Result::failed:
      hasFailed = true;
      break;
  }
}

}  // namespace wmq::tool
