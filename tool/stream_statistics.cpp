#include "stream_statistics.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>

namespace wmq::tool {

void LineCounts::addLine(const wmqLineHeader &header, uint64_t bytes) {
  RecordCount *&type = ofType.at(static_cast<size_t>(header.type));
  if (type == nullptr) type = &types[header.type];
  for (RecordCount *count : {&total, type}) {
    ++count->records;
    count->bytes += bytes;
  }
  static_assert(sizeof lastVersion == sizeof header.version);
  if (ofLastVersion == nullptr || std::memcmp(lastVersion.data(), header.version, sizeof lastVersion) != 0) {
    std::memcpy(lastVersion.data(), header.version, sizeof lastVersion);
    ofLastVersion = &versions[header.version];
  }
  ++*ofLastVersion;
  if (header.type != EVENT_END_OF_STREAM) addTimes(header.eventTime, header.eventTime);
}

void LineCounts::addTimes(int32_t first, int32_t last) {
  firstTime = anyEvent ? std::min(firstTime, first) : first;
  lastTime = anyEvent ? std::max(lastTime, last) : last;
  anyEvent = true;
}

void LineCounts::addCounts(const LineCounts &other) {
  otherLines += other.otherLines;
  malformedLines += other.malformedLines;
  total.add(other.total);
  for (const auto &[type, count] : other.types) types[type].add(count);
  for (const auto &[version, records] : other.versions) versions[version] += records;
  if (other.anyEvent) addTimes(other.firstTime, other.lastTime);
}

Counted countedOf(int32_t type) {
  switch (type) {
    case EVENT_JOB_NEW:
    case EVENT_JOB_START:
    case EVENT_JOB_FINISH:
      return Counted::figures;
    case EVENT_JOB_STATUS2:
    case EVENT_JOB_PENDING_REASONS:
      return Counted::all;
    default:
      return Counted::header;
  }
}

JobFact jobFactOf(const eventRecord &record) {
  JobFact fact;
  fact.type = record.type;
  if (record.type == EVENT_JOB_NEW) {
    const jobNewLog &log = record.eventLog.jobNewLog;
    fact.jobId = log.jobId;
    fact.submitTime = log.submitTime;
    fact.user = log.userName;
    fact.queue = log.queue;
  } else if (record.type == EVENT_JOB_START) {
    fact.jobId = record.eventLog.jobStartLog.jobId;
    fact.startTime = record.eventTime;
  } else {
    const jobFinishLog &log = record.eventLog.jobFinishLog;
    fact.jobId = log.jobId;
    fact.submitTime = log.submitTime;
    fact.startTime = log.startTime;
    fact.endTime = log.endTime;
    fact.exitStatus = log.exitStatus;
    fact.numHosts = std::max(0, log.numExHosts);
    fact.user = log.userName;
    fact.queue = log.queue;
  }
  return fact;
}

void StreamStatistics::add(const eventRecord &record, uint64_t bytes) {
  wmqLineHeader header{.type = record.type, .eventTime = record.eventTime, .version = {}, .length = 0};
  std::copy(std::begin(record.version), std::end(record.version), header.version);
  addLine(header, bytes);
  if (countedOf(record.type) == Counted::figures) addFact(jobFactOf(record));
  addSample(record);
}

void StreamStatistics::addFact(const JobFact &fact) {
  if (fact.type == EVENT_JOB_NEW) addNew(fact);
  if (fact.type == EVENT_JOB_START) addStart(fact);
  if (fact.type == EVENT_JOB_FINISH) addFinish(fact);
}

void StreamStatistics::addSample(const eventRecord &record) {
  if (record.type == EVENT_JOB_STATUS2) runningJobs.add(record.eventLog.jobStatus2Log, record.eventTime);
  if (record.type == EVENT_JOB_PENDING_REASONS)
    pendingReasons.add(record.eventLog.jobPendingReasonsLog, record.eventTime);
}

void StreamStatistics::addNew(const JobFact &fact) {
  openJobs[fact.jobId] = {&users[fact.user], &queues[fact.queue], fact.submitTime, 0};
}

void StreamStatistics::addStart(const JobFact &fact) {
  // The submission may stand in an old file that has been removed. The end of the job tells all, then.
  auto job = openJobs.find(fact.jobId);
  if (job == openJobs.end()) return;
  // A job that is requeued starts again; it has waited for the first start.
  if (job->second.startTime == 0) job->second.startTime = fact.startTime;
}

void StreamStatistics::addFinish(const JobFact &fact) {
  openJobs.erase(fact.jobId);
  ++finished;
  ++exitStatuses[fact.exitStatus];
  OpenJob job{&users[fact.user], &queues[fact.queue], fact.submitTime, fact.startTime};
  for (JobGroup *group : {&jobs, job.user, job.queue}) ++group->jobs;
  if (fact.startTime <= 0) {
    ++neverStarted;
    return;
  }
  addWait(job);
  // A clock that was set back does not make a job run backwards.
  int64_t seconds = std::max<int64_t>(0, fact.endTime - fact.startTime);
  runSeconds += seconds;
  double coreSeconds = static_cast<double>(seconds) * fact.numHosts;
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
