#include "trace_events.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace wmq::tool {

namespace {

constexpr int64_t most32 = std::numeric_limits<int32_t>::max();

// Readers refuse lines with more hosts.
constexpr int64_t mostHosts = 16777216;

// Time 0 of a trace that does not tell when it began: a start time of 0 means that a job has not started.
constexpr int64_t inventedStart = 86400;

constexpr const char *schedulerHost = "master";

// As wait(2) would have it: exit code 1, and ended by SIGTERM.
constexpr int32_t exitStatusFailed = 256;
constexpr int32_t exitStatusCancelled = 15;

int32_t narrowed(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(), most32));
}

int32_t countOf(const std::vector<char *> &names) { return static_cast<int32_t>(names.size()); }

template <size_t Size>
void copyName(char (&array)[Size], const std::string &name) {
  size_t length = std::min(name.size(), Size - 1);
  std::memcpy(array, name.data(), length);
  array[length] = '\0';
}

// The header's name for a number, or the number behind `prefix`; `unknown` where there is no number.
std::string nameOf(int64_t number, const std::map<int64_t, std::string> &names, const char *prefix,
                   const char *unknown) {
  if (number < 0) return unknown;
  auto named = names.find(number);
  return named != names.end() ? named->second : prefix + std::to_string(number);
}

std::string nameOf(int64_t number, const char *prefix, const char *unknown) {
  return nameOf(number, {}, prefix, unknown);
}

int32_t exitStatusOf(const SwfJob &job) {
  if (job.status == swfFailed) return exitStatusFailed;
  return job.status == swfCancelled ? exitStatusCancelled : 0;
}

// CPU seconds of all processors together.
double cpuTimeOf(const TraceJob &job) {
  if (!job.started() || job.columns.averageCpuTime <= 0) return 0;
  return job.columns.averageCpuTime * static_cast<double>(job.processors());
}

wmxRusage usageOf(const TraceJob &job) {
  wmxRusage usage{};
  if (!job.started()) return usage;
  usage.ru_utime = cpuTimeOf(job);
  if (job.columns.usedMemory > 0) usage.ru_maxrss = static_cast<double>(job.columns.usedMemory);
  usage.ru_elapsed = static_cast<double>(job.endTime - job.startTime);
  return usage;
}

// KB of all processors together; 0: unknown.
int32_t memoryOf(const TraceJob &job) {
  int64_t each = std::clamp<int64_t>(job.columns.usedMemory, 0, most32);
  return narrowed(each * std::min(job.processors(), most32));
}

void setLimits(int32_t (&limits)[WMX_RLIM_NLIMITS], const SwfJob &job) {
  std::fill(std::begin(limits), std::end(limits), -1);
  if (job.requestedTime > 0) limits[WMX_RLIMIT_RUN] = narrowed(job.requestedTime);
  if (job.requestedMemory > 0) limits[WMX_RLIMIT_RSS] = narrowed(job.requestedMemory);
}

const char *textOf(WaitReason reason) {
  switch (reason) {
    case WaitReason::dependency:
      return "the dependency condition does not hold";
    case WaitReason::processors:
      return "too few processors are free";
    case WaitReason::turn:
      return "other jobs come first";
  }
  return "";
}

int32_t userIdOf(const SwfJob &job) { return narrowed(std::max<int64_t>(job.user, 0)); }

}  // namespace

bool placeOnClock(const SwfHeader &header, TraceJob &job, std::string &why) {
  const SwfJob &columns = job.columns;
  if (columns.number < 1 || columns.number > most32) {
    why = "the job number is not in 1 to 2147483647";
    return false;
  }
  if (columns.allocatedProcessors > mostHosts) {
    why = "more than 16777216 processors are allocated";
    return false;
  }
  if (columns.submitTime < 0) {
    why = "the submit time is unknown";
    return false;
  }
  int64_t clock = header.startTime > 0 ? header.startTime : inventedStart;
  int64_t waitTime = std::max<int64_t>(columns.waitTime, 0);
  int64_t runTime = std::max<int64_t>(columns.runTime, 0);
  for (int64_t step : {columns.submitTime, waitTime, runTime}) {
    if (clock > most32 || step > most32 - clock) {
      why = "a time is later than 2038-01-19T03:14:07Z, which no record holds";
      return false;
    }
    clock += step;
  }
  bool cancelledBeforeStart =
      columns.status == swfCancelled &&
      (columns.runTime < 0 || (columns.runTime == 0 && columns.allocatedProcessors < 0));
  job.endTime = clock;
  job.submitTime = clock - runTime - waitTime;
  job.startTime = cancelledBeforeStart ? 0 : clock - runTime;
  return true;
}

JobState finalState(const SwfJob &job) {
  return job.status == swfFailed || job.status == swfCancelled ? stateExited : stateDone;
}

void EventMaker::begin(int32_t type, int64_t time) {
  record = {};
  record.type = type;
  record.eventTime = static_cast<int32_t>(time);
}

void EventMaker::describe(const TraceJob &job) {
  const SwfJob &columns = job.columns;
  userName = nameOf(columns.user, "user", "unknown");
  queue = nameOf(columns.queue, header.queues, "queue", "default");
  resources = nameOf(columns.partition, header.partitions, "partition", "");
  if (!resources.empty()) resources.insert(0, "partition=");
  dependency = columns.precedingJob > 0 ? "ended(" + std::to_string(columns.precedingJob) + ")" : "";
  command = nameOf(columns.application, "app", "");
  userGroup = nameOf(columns.group, "group", "");
}

// Members of one name in several structures. What describe() has made of the job must stand.
template <class Log>
void EventMaker::setSubmission(Log &log, const TraceJob &job) {
  log.numProcessors = narrowed(std::max<int64_t>(job.columns.requestedProcessors, 0));
  log.submitTime = job.submitTime;
  copyName(log.userName, userName);
  copyName(log.queue, queue);
  log.resReq = resources.data();
}

template <class Log>
void EventMaker::setOrigin(Log &log, const TraceJob &job) {
  log.userId = userIdOf(job.columns);
  log.maxNumProcessors = log.numProcessors;
  copyName(log.fromHost, submitHost);
  log.command = command.data();
}

template <class Log>
void EventMaker::setEnd(Log &log, const TraceJob &job) {
  log.jStatus = finalState(job.columns);
  log.startTime = job.startTime;
  log.endTime = job.endTime;
  log.exitStatus = exitStatusOf(job.columns);
}

eventRecord &EventMaker::schedulerStart(int64_t time) {
  begin(EVENT_MBD_START, time);
  mbdStartLog &log = record.eventLog.mbdStartLog;
  copyName(log.mbdStartHost, schedulerHost);
  copyName(log.mbdStartName, "replay");
  return record;
}

eventRecord &EventMaker::schedulerEnd(int64_t time) {
  begin(EVENT_MBD_DIE, time);
  mbdDieLog &log = record.eventLog.mbdDieLog;
  copyName(log.mbdDieHost, schedulerHost);
  copyName(log.mbdDieText, "end of the trace");
  return record;
}

eventRecord &EventMaker::submission(const TraceJob &job) {
  begin(EVENT_JOB_NEW, job.submitTime);
  describe(job);
  jobNewLog &log = record.eventLog.jobNewLog;
  log.jobId = narrowed(job.columns.number);
  setSubmission(log, job);
  setOrigin(log, job);
  setLimits(log.rlimits, job.columns);
  log.hostFactor = 1;
  log.dependCond = dependency.data();
  log.userGroup = userGroup.data();
  // What a line without these fields means.
  log.newInt7 = -1;
  log.newInt8 = -1;
  log.newInt9 = -1;
  log.newInt10 = -1;
  log.newInt12 = -1;
  return record;
}

eventRecord &EventMaker::start(const TraceJob &job, std::vector<char *> &hosts) {
  begin(EVENT_JOB_START, job.startTime);
  jobStartLog &log = record.eventLog.jobStartLog;
  log.jobId = narrowed(job.columns.number);
  log.hostFactor = 1;
  log.numExHosts = countOf(hosts);
  log.execHosts = hosts.data();
  log.numAllocHosts = log.numExHosts;
  log.allocHosts = log.execHosts;
  // What a line without these fields means.
  log.startInt6 = std::numeric_limits<int32_t>::max();
  log.startInt7 = -1;
  return record;
}

eventRecord &EventMaker::startAccepted(const TraceJob &job) {
  begin(EVENT_JOB_START_ACCEPT, job.startTime);
  jobStartAcceptLog &log = record.eventLog.jobStartAcceptLog;
  log.jobId = narrowed(job.columns.number);
  // What a line without this field means.
  log.acceptInt4 = -1;
  return record;
}

eventRecord &EventMaker::execution(const TraceJob &job) {
  begin(EVENT_JOB_EXECUTE, job.startTime);
  jobExecuteLog &log = record.eventLog.jobExecuteLog;
  log.jobId = narrowed(job.columns.number);
  // What a line without these fields means.
  log.execInt5 = -1;
  log.execInt7 = std::numeric_limits<int32_t>::max();
  log.execInt8 = -1;
  return record;
}

eventRecord &EventMaker::stateChange(const TraceJob &job, int64_t time, JobState state) {
  begin(EVENT_JOB_STATUS, time);
  jobStatusLog &log = record.eventLog.jobStatusLog;
  log.jobId = narrowed(job.columns.number);
  log.jStatus = state;
  log.numRangeJobs = -1;
  if (state != stateExited && state != stateDone) return record;
  log.endTime = job.endTime;
  log.exitStatus = exitStatusOf(job.columns);
  log.ru = job.started() ? 1 : 0;
  log.wmxRusage = usageOf(job);
  log.cpuTime = static_cast<float>(log.wmxRusage.ru_utime);
  return record;
}

eventRecord &EventMaker::cancellation(const TraceJob &job) {
  begin(EVENT_JOB_SIGNAL, job.endTime);
  describe(job);
  jobSignalLog &log = record.eventLog.jobSignalLog;
  log.jobId = narrowed(job.columns.number);
  log.userId = userIdOf(job.columns);
  copyName(log.userName, userName);
  log.signalStr = signal.data();
  return record;
}

eventRecord &EventMaker::finish(const TraceJob &job, std::vector<char *> &hosts) {
  begin(EVENT_JOB_FINISH, job.endTime);
  describe(job);
  jobFinishLog &log = record.eventLog.jobFinishLog;
  log.jobId = narrowed(job.columns.number);
  setSubmission(log, job);
  setOrigin(log, job);
  setEnd(log, job);
  log.numExHosts = countOf(hosts);
  log.execHosts = hosts.data();
  log.wmxRusage = usageOf(job);
  log.cpuTime = static_cast<float>(log.wmxRusage.ru_utime);
  log.hostFactor = 1;
  return record;
}

eventRecord &EventMaker::namedFinish(const TraceJob &job, HostSlots &hosts) {
  begin(EVENT_JOB_FINISH2, job.endTime);
  describe(job);
  jobFinish2Log &log = record.eventLog.jobFinish2Log;
  log.jobId = job.columns.number;
  setSubmission(log, job);
  setOrigin(log, job);
  setEnd(log, job);
  log.dependCond = dependency.data();
  log.userGroup = userGroup.data();
  log.numExHosts = countOf(hosts.hosts);
  log.execHosts = hosts.hosts.data();
  log.slotUsages = hosts.slots.data();
  wmxRusage usage = usageOf(job);
  log.cpuTime = usage.ru_utime;
  log.ru_utime = usage.ru_utime;
  log.ru_maxrss = usage.ru_maxrss;
  if (!job.started()) return record;
  log.runtime = narrowed(job.endTime - job.startTime);
  log.maxMem = memoryOf(job);
  log.avgMem = log.maxMem;
  return record;
}

eventRecord &EventMaker::runningSample(const TraceJob &job, HostSlots &hosts, int64_t time,
                                       int64_t interval) {
  begin(EVENT_JOB_STATUS2, time);
  describe(job);
  jobStatus2Log &log = record.eventLog.jobStatus2Log;
  log.jobId = job.columns.number;
  setSubmission(log, job);
  log.expectedLogTime = narrowed(time);
  log.sampleInterval = narrowed(interval);
  log.num_processors = narrowed(job.processors());
  log.jStatus = stateRunning;
  log.startTime = job.startTime;
  log.numExHosts = countOf(hosts.hosts);
  log.execHosts = hosts.hosts.data();
  log.slotUsages = hosts.slots.data();
  // The trace knows the whole only.
  double share = static_cast<double>(time - job.startTime) / static_cast<double>(job.endTime - job.startTime);
  log.ru_utime = cpuTimeOf(job) * share;
  log.ru_maxrss = usageOf(job).ru_maxrss;
  log.userGroup = userGroup.data();
  log.runtimeDelta = narrowed(std::min(time - job.startTime, interval));
  log.maxMem = memoryOf(job);
  log.avgMem = log.maxMem;
  return record;
}

eventRecord &EventMaker::waitingSample(const TraceJob &job, const WaitingJobs &jobs, int64_t time,
                                       int64_t interval) {
  begin(EVENT_JOB_PENDING_REASONS, time);
  describe(job);
  jobPendingReasonsLog &log = record.eventLog.jobPendingReasonsLog;
  copyName(log.userName, userName);
  copyName(log.queue, queue);
  log.num_processors = narrowed(jobs.processors);
  log.mainReason = static_cast<int32_t>(jobs.reason);
  reason = textOf(jobs.reason);
  log.detail = reason.data();
  log.numJobs = narrowed(jobs.jobs);
  log.pendingTime = narrowed(jobs.seconds);
  log.averagePendingTime = narrowed(jobs.seconds / jobs.jobs);
  log.sampleInterval = narrowed(interval);
  log.expectedLogTime = time;
  return record;
}

}  // namespace wmq::tool
