// Looks at the jobs of a trace at fixed intervals: at those that run for the status stream, at those that
// wait for the pending-reasons stream.
#ifndef WMQ_TOOL_TRACE_SAMPLER_H
#define WMQ_TOOL_TRACE_SAMPLER_H

#include <cstdint>
#include <map>
#include <utility>

#include "host_pool.h"
#include "trace_events.h"
#include "trace_output.h"

namespace wmq::tool {

class TraceSampler {
 public:
  // Seconds from one sample to the next; samples are taken at multiples of it since the epoch.
  static constexpr int64_t interval = 300;

  // An output may be null: nothing is said of those jobs, then.
  TraceSampler(const SwfHeader &ofTrace, HostPool &hostsOfJobs, TraceOutput *statusTo, TraceOutput *pendingTo)
      : header(ofTrace), pool(hostsOfJobs), status(statusTo), pending(pendingTo) {}

  // What becomes of a job. It must stay where it is until it has ended.
  void submitted(const TraceJob &job) { waiting.emplace(orderOf(job), &job); }
  void started(const TraceJob &job);
  void ended(const TraceJob &job);

  // Takes the samples that are due before `time`, at which something happens next.
  void sampleUntil(int64_t time);

 private:
  using Order = std::pair<int64_t, uint64_t>;  // job number, line: a trace may name a job twice
  using Jobs = std::map<Order, const TraceJob *>;

  static Order orderOf(const TraceJob &job) { return {job.columns.number, job.line}; }
  static bool contains(const Jobs &jobs, int64_t number);

  void sampleRunning(int64_t time);
  void sampleWaiting(int64_t time);
  WaitReason reasonOf(const TraceJob &job) const;

  const SwfHeader &header;
  HostPool &pool;
  TraceOutput *status;
  TraceOutput *pending;
  EventMaker events{header};
  Jobs waiting;
  Jobs running;
  int64_t busyProcessors = 0;
  int64_t nextSample = 0;
  HostSlots hosts;  // of the job at hand
};

}  // namespace wmq::tool

#endif
