// Workload traces in the Standard Workload Format: one job a line in 18 columns, -1 where a value is unknown,
// and a header of "; Label: value" lines.
#ifndef WMQ_TOOL_SWF_TRACE_H
#define WMQ_TOOL_SWF_TRACE_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace wmq::tool {

// What the header tells, as far as it is known yet.
struct SwfHeader {
  int64_t startTime = 0;  // seconds since the epoch at time 0 of the trace (UnixStartTime); 0, -1: unknown
  int64_t maxNodes = 0;   // 0, -1: unknown
  int64_t maxProcessors = 0;  // likewise
  std::map<int64_t, std::string> queues;
  std::map<int64_t, std::string> partitions;
};

// A job line. All values below 0 are unknown. Times in seconds, memory in KB.
struct SwfJob {
  int64_t number = 0;
  int64_t submitTime = 0;  // since the start of the trace
  int64_t waitTime = -1;
  int64_t runTime = -1;
  int64_t allocatedProcessors = -1;
  double averageCpuTime = -1;  // of one processor
  int64_t usedMemory = -1;     // of one processor, on average
  int64_t requestedProcessors = -1;
  int64_t requestedTime = -1;
  int64_t requestedMemory = -1;  // for one processor
  int64_t status = -1;
  int64_t user = -1;
  int64_t group = -1;
  int64_t application = -1;
  int64_t queue = -1;
  int64_t partition = -1;
  int64_t precedingJob = -1;
  int64_t thinkTime = -1;
};

// Values of SwfJob::status.
enum SwfStatus : int64_t {
  swfFailed = 0,
  swfCompleted = 1,
  swfPartial = 2,           // the job line before it speaks of the whole job
  swfPartialCompleted = 3,  // likewise
  swfPartialFailed = 4,     // likewise
  swfCancelled = 5
};

enum class SwfLine { job, header, bad };

// Takes one line apart: a job into `job`, a line of the header into `header`. `why` tells what is bad.
SwfLine readSwfLine(std::string_view line, SwfHeader &header, SwfJob &job, std::string &why);

}  // namespace wmq::tool

#endif
