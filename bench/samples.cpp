#include "samples.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <type_traits>

namespace wmq::bench {
namespace {

// What stands in the strings of real lines: many are empty or short, a few are paths and expressions.
const char *sampleText(int number) {
  static const char *const texts[] = {"",
                                      "normal",
                                      "/home/user95/projects/climate",
                                      "select[type==any] rusage[mem=4096]",
                                      "",
                                      "climate_run_0815",
                                      "project_a",
                                      "/home/user95/out.%J",
                                      "",
                                      "user95@cluster1.example.org",
                                      "default",
                                      "0.25 MiB"};
  return texts[static_cast<size_t>(number) % std::size(texts)];
}

void fill(int32_t &value, int number) { value = number * 37 % 1000; }
void fill(int64_t &value, int number) { value = 1700000000 + number * 61; }
void fill(float &value, int number) { value = static_cast<float>(number) * 0.25F; }
void fill(char *&value, int number) { value = copyOf(sampleText(number)); }
template <size_t N>
void fill(char (&value)[N], int number) {
  std::strcpy(value, ("name" + std::to_string(number)).c_str());
}
template <size_t N>
void fill(int32_t (&values)[N], int) {
  for (int32_t &value : values) value = -1;
}
void fill(wmxRusage &usage, int) {
  usage = {};
  usage.ru_utime = 1234.56;
  usage.ru_stime = 7.25;
  usage.ru_maxrss = 204800;
  usage.ru_nvcsw = 1234;
  usage.ru_elapsed = 3600;
}

void fillHosts(int32_t &count, char **&hosts, int32_t wanted, const char *prefix) {
  count = wanted;
  hosts = static_cast<char **>(std::malloc(static_cast<size_t>(wanted) * sizeof *hosts));
  for (int32_t i = 0; i < wanted; ++i) hosts[i] = copyOf(prefix + std::to_string(1000 + i));
}

// Members that count something that the sample has none of.
void clear(auto &...counts) { ((counts = 0), ...); }

#define NUMBER(n, member) fill(log.member, n);
#define REAL NUMBER
#define TEXT NUMBER
#define NAME NUMBER
#define USAGE NUMBER
#define NUMBERS NUMBER
#define TEXTS(n, count, member) fillHosts(log.count, log.member, 4, "host");

void fillMembers(jobFinishLog &log) {
#include "job_finish_members.inc"
  clear(log.numhRusages, log.numStrIntPairs, log.numGPURusages, log.finInt8);
  log.endTime = 1700000000;
  log.cpuTime = static_cast<float>(log.wmxRusage.ru_utime + log.wmxRusage.ru_stime);
}

void fillMembers(jobNewLog &log) {
#include "job_new_members.inc"
  clear(log.numStrPairs, log.newInt13);
  log.options = 0;
  log.options2 = JOB_OPTION2_INT8 | JOB_OPTION2_STR13 | JOB_OPTION2_RSV | JOB_OPTION2_JGROUP |
                 JOB_OPTION2_SLA | JOB_OPTION2_STR12 | JOB_OPTION2_LICENSE;
}

void fillMembers(jobStatusLog &log) {
#include "job_status_members.inc"
  clear(log.ru, log.indexRangeCnt, log.numAttrGroups);
}

Record filled(int32_t type, auto eventLog::*member) {
  Record record = newRecord(type);
  fillMembers(record->eventLog.*member);
  // What reading makes of it: members that no line carries are as the reader sets them.
  return parsed(lineOf(*record));
}

}  // namespace

Record newRecord(int32_t type) {
  auto *record = static_cast<eventRecord *>(std::calloc(1, sizeof(eventRecord)));
  record->type = type;
  record->eventTime = 1700000000;
  std::strcpy(record->version, wmq_streamversion());
  return Record(record, {.plainly = true});
}

char *copyOf(std::string_view text) {
  auto *copy = static_cast<char *>(std::malloc(text.size() + 1));
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

std::string lineOf(const eventRecord &record) {
  eventRecord copy = record;
  char *text = nullptr;
  size_t length = 0;
  if (wmq_formatrecord(&copy, &text, &length) != 0) throw std::runtime_error(wmq_errdetail());
  std::string line(text, length - 1);  // as a line reader gives it
  std::free(text);
  return line;
}

Record parsed(const std::string &line) {
  Record record(wmq_readstreamlineMT(line.c_str()));
  if (!record) throw std::runtime_error(wmq_errdetail());
  return record;
}

Record jobFinish() { return filled(EVENT_JOB_FINISH, &eventLog::jobFinishLog); }
Record jobNew() { return filled(EVENT_JOB_NEW, &eventLog::jobNewLog); }
Record jobStatus() { return filled(EVENT_JOB_STATUS, &eventLog::jobStatusLog); }

Record jobFinish2() {
  Record record = newRecord(EVENT_JOB_FINISH2);
  record.get_deleter().plainly = false;
  jobFinish2Log &log = record->eventLog.jobFinish2Log;
  log.jobId = 4711;
  log.userId = 1000;
  std::strcpy(log.userName, "user95");
  log.submitTime = log.beginTime = log.termTime = log.startTime = log.endTime = 1700000000;
  std::strcpy(log.queue, "normal");
  log.command = copyOf(sampleText(2));
  log.jobName = copyOf(sampleText(5));
  log.cwd = copyOf(sampleText(2));
  fillHosts(log.numExHosts, log.execHosts, 4, "host");
  log.slotUsages = static_cast<int32_t *>(std::calloc(4, sizeof(int32_t)));
  return parsed(lineOf(*record));
}

Record jobStart(int32_t numHosts) {
  Record record = newRecord(EVENT_JOB_START);
  record.get_deleter().plainly = false;
  jobStartLog &log = record->eventLog.jobStartLog;
  log.jobId = 4711;
  fillHosts(log.numExHosts, log.execHosts, numHosts, "node");
  log.numAllocHosts = 0;
  return record;
}

#undef NUMBER
#undef TEXT
#undef TEXTS
#define NUMBER(n, member)
#define TEXT(n, member) std::free(log.member);
#define TEXTS(n, count, member)                                     \
  for (int32_t i = 0; i < log.count; ++i) std::free(log.member[i]); \
  std::free(log.member);

static void freeMembers(const jobFinishLog &log) {
#include "job_finish_members.inc"
}
static void freeMembers(const jobNewLog &log) {
#include "job_new_members.inc"
}
static void freeMembers(const jobStatusLog &log) {
#include "job_status_members.inc"
}

void ReleaseRecord::operator()(eventRecord *record) const {
  if (!plainly) {
    wmq_freekept(record);
    return wmq_freelogrec(record);
  }
  if (record->type == EVENT_JOB_FINISH) freeMembers(record->eventLog.jobFinishLog);
  if (record->type == EVENT_JOB_NEW) freeMembers(record->eventLog.jobNewLog);
  if (record->type == EVENT_JOB_STATUS) freeMembers(record->eventLog.jobStatusLog);
  std::free(record);
}

std::vector<size_t> blocksOf(const eventRecord &record) {
  std::vector<size_t> sizes{sizeof(eventRecord)};
  const auto text = [&](const char *owned) {
    if (owned != nullptr) sizes.push_back(std::strlen(owned) + 1);
  };
#undef TEXT
#undef TEXTS
#define TEXT(n, member) text(log.member);
#define TEXTS(n, count, member)                                                        \
  if (log.count > 0) sizes.push_back(static_cast<size_t>(log.count) * sizeof(char *)); \
  for (int32_t i = 0; i < log.count; ++i) text(log.member[i]);
  if (record.type == EVENT_JOB_FINISH) {
    const jobFinishLog &log = record.eventLog.jobFinishLog;
#include "job_finish_members.inc"
  }
  return sizes;
}

}  // namespace wmq::bench
