#include "stream_statistics.h"

#include <algorithm>
#include <initializer_list>

namespace wmq::tool {

void StreamStatistics::add(const eventRecord &record, uint64_t bytes) {
  for (RecordCount *count : {&total, &types[record.type]}) {
    ++count->records;
    count->bytes += bytes;
  }
  ++versions[record.version];

  if (record.type != EVENT_END_OF_STREAM) {
    firstTime = anyEvent ? std::min(firstTime, record.eventTime) : record.eventTime;
    lastTime = anyEvent ? std::max(lastTime, record.eventTime) : record.eventTime;
    anyEvent = true;
  }

  if (record.type == EVENT_JOB_NEW) addNew(record.eventLog.jobNewLog);
  if (record.type == EVENT_JOB_START) addStart(record.eventLog.jobStartLog, record.eventTime);
  if (record.type == EVENT_JOB_FINISH) addFinish(record.eventLog.jobFinishLog);
  if (record.type == EVENT_JOB_STATUS2) runningJobs.add(record.eventLog.jobStatus2Log, record.eventTime);
  if (record.type == EVENT_JOB_PENDING_REASONS)
    pendingReasons.add(record.eventLog.jobPendingReasonsLog, record.eventTime);
}

void StreamStatistics::addNew(const jobNewLog &log) {
  openJobs[log.jobId] = {&users[log.userName], &queues[log.queue], log.submitTime, 0};
}

void StreamStatistics::addStart(const jobStartLog &log, int32_t time) {
  // The submission may stand in an old file that has been removed. The end of the job tells all, then.
  auto job = openJobs.find(log.jobId);
  if (job == openJobs.end()) return;
  // A job that is requeued starts again; it has waited for the first start.
  if (job->second.startTime == 0) job->second.startTime = time;
}

void StreamStatistics::addFinish(const jobFinishLog &log) {
  openJobs.erase(log.jobId);
  ++finished;
  ++exitStatuses[log.exitStatus];
  OpenJob job{&users[log.userName], &queues[log.queue], log.submitTime, log.startTime};
  for (JobGroup *group : {&jobs, job.user, job.queue}) ++group->jobs;
  if (log.startTime <= 0) {
    ++neverStarted;
    return;
  }
  addWait(job);
  // A clock that was set back does not make a job run backwards.
  int64_t seconds = std::max<int64_t>(0, log.endTime - log.startTime);
  runSeconds += seconds;
  double coreSeconds = static_cast<double>(seconds) * std::max(0, log.numExHosts);
  for (JobGroup *group : {&jobs, job.user, job.queue}) group->coreSeconds += coreSeconds;
}

void StreamStatistics::addWait(OpenJob job) {
  auto wait = static_cast<uint64_t>(std::max<int64_t>(0, job.startTime - job.submitTime));
  for (JobGroup *group : {&jobs, job.user, job.queue}) group->waits.add(wait);
}

void StreamStatistics::finish() {
  for (const auto &[id, job] : openJobs) {
    for (JobGroup *group : {&jobs, job.user, job.queue}) ++group->jobs;
    ++(job.startTime > 0 ? running : waiting);
    if (job.startTime > 0) addWait(job);
  }
  openJobs.clear();
  runningJobs.finish();
  pendingReasons.finish();
}

std::string exitMeaning(int32_t exitStatus) {
  // As wait(2) gives it: the low seven bits are a signal, the next byte an exit code.
  if (exitStatus == 0) return "success";
  int signal = exitStatus & 0x7f;
  if (exitStatus < 0 || exitStatus > 0xffff) return "";
  if (signal == 0x7f || (signal == 0 && exitStatus == 0x80)) return "";
  if (signal != 0) return "signal " + std::to_string(signal) + (exitStatus & 0x80 ? ", core dumped" : "");
  return "exit code " + std::to_string(exitStatus >> 8);
}

}  // namespace wmq::tool
