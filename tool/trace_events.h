// The events that a scheduler would have logged for the jobs of a trace.
#ifndef WMQ_TOOL_TRACE_EVENTS_H
#define WMQ_TOOL_TRACE_EVENTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "host_pool.h"
#include "swf_trace.h"
#include "wmq/wmq.h"

namespace wmq::tool {

// A job of the trace, with its times on the clock: seconds since the epoch.
struct TraceJob {
  SwfJob columns;
  uint64_t line = 0;  // where it stands in the trace
  int64_t submitTime = 0;
  int64_t startTime = 0;  // 0: cancelled before it started
  int64_t endTime = 0;
  std::vector<HostShare> hosts;

  bool started() const { return startTime > 0; }
  int64_t processors() const { return columns.allocatedProcessors > 0 ? columns.allocatedProcessors : 1; }
};

// Sets the times of `job` from its columns. False when a record cannot hold it; `why` tells.
bool placeOnClock(const SwfHeader &header, TraceJob &job, std::string &why);

// States of a job in JOB_STATUS and JOB_FINISH.
enum JobState : int32_t { statePending = 1, stateRunning = 4, stateExited = 32, stateDone = 64 };

// State in which a job ends.
JobState finalState(const SwfJob &job);

// Why jobs wait.
enum class WaitReason : int32_t { dependency = 1, processors = 2, turn = 3 };

// Jobs that wait for the same reason.
struct WaitingJobs {
  WaitReason reason;
  int64_t jobs = 0;
  int64_t processors = 0;  // that they ask for
  int64_t seconds = 0;     // that they have waited, in all
};

// Makes records. Each stands until the next one is made; its strings belong to the maker.
class EventMaker {
 public:
  explicit EventMaker(const SwfHeader &ofTrace) : header(ofTrace) {}
  EventMaker(const EventMaker &) = delete;
  EventMaker &operator=(const EventMaker &) = delete;

  eventRecord &schedulerStart(int64_t time);
  eventRecord &schedulerEnd(int64_t time);

  eventRecord &submission(const TraceJob &job);
  // `hosts`: one name for each processor.
  eventRecord &start(const TraceJob &job, std::vector<char *> &hosts);
  eventRecord &startAccepted(const TraceJob &job);
  eventRecord &execution(const TraceJob &job);
  eventRecord &stateChange(const TraceJob &job, int64_t time, JobState state);
  eventRecord &cancellation(const TraceJob &job);
  eventRecord &finish(const TraceJob &job, std::vector<char *> &hosts);
  eventRecord &namedFinish(const TraceJob &job, HostSlots &hosts);

  // A job that runs at `time`, where one is looked at every `interval` seconds.
  eventRecord &runningSample(const TraceJob &job, HostSlots &hosts, int64_t time, int64_t interval);
  // Jobs that wait at `time`. One of them stands for what they have in common.
  eventRecord &waitingSample(const TraceJob &job, const WaitingJobs &jobs, int64_t time, int64_t interval);

 private:
  void begin(int32_t type, int64_t time);
  void describe(const TraceJob &job);
  template <class Log>
  void setSubmission(Log &log, const TraceJob &job);
  template <class Log>
  void setOrigin(Log &log, const TraceJob &job);
  template <class Log>
  void setEnd(Log &log, const TraceJob &job);

  const SwfHeader &header;
  eventRecord record{};

  // What is said of a job in more than one record.
  std::string userName;
  std::string queue;
  std::string submitHost = "submit";
  std::string signal = "TERM";
  std::string reason;
  std::string resources;
  std::string dependency;
  std::string command;
  std::string userGroup;
};

}  // namespace wmq::tool

#endif
