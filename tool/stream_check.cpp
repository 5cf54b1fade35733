#include "stream_check.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "followed.h"
#include "times.h"

namespace wmq::tool {

namespace {

constexpr uint64_t mostFindings = 100;  // of each kind

struct FlawWords {
  const char *name;
  const char *one;
  const char *several;
};
constexpr FlawWords words[numFlaws] = {
    {"torn", "record that was not written to its end", "records that were not written to their end"},
    {"joined", "record that another one follows on the same line",
     "records that another one follows on the same line"},
    {"malformed", "line that does not parse", "lines that do not parse"},
    {"noEnd", "old file without END_OF_STREAM at its end", "old files without END_OF_STREAM at their end"},
    {"endInMiddle", "END_OF_STREAM line with something behind it",
     "END_OF_STREAM lines with something behind them"},
    {"endInCurrent", "END_OF_STREAM at the end of the current file",
     "END_OF_STREAM at the end of the current file"},
    {"missing", "gap between files", "gaps between files"},
    {"backwards", "record older than one before it", "records older than one before them"},
    {"version", "record of a later version than is known", "records of a later version than is known"},
    {"unsubmitted", "job that starts without having been submitted",
     "jobs that start without having been submitted"},
    {"unstarted", "job that ends without having been started", "jobs that end without having been started"},
};

bool isLate(const char *version) {
  return std::strtof(version, nullptr) > std::strtof(WMQ_FORMAT_VERSION, nullptr);
}

// The suffix of an old file; -1 for the current one.
int64_t suffixOf(const std::string &file, const std::string &current) {
  if (file.size() <= current.size() + 1) return -1;
  return std::strtoll(file.c_str() + current.size() + 1, nullptr, 10);
}

// The last line of a file without its line end, or all of a short file. Lines above 64 KB are cut at their
// beginning: END_OF_STREAM lines are short.
std::string lastLine(const std::string &file, bool &ended) {
  ended = true;
  int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status {};
  std::string text;
  if (fd >= 0 && fstat(fd, &status) == 0) {
    off_t from = std::max<off_t>(0, status.st_size - (off_t{64} << 10));
    text.resize(static_cast<size_t>(status.st_size - from));
    ssize_t got = pread(fd, text.data(), text.size(), from);
    text.resize(got < 0 ? 0 : static_cast<size_t>(got));
  }
  if (fd >= 0) close(fd);
  if (text.empty()) return text;
  ended = text.back() == '\n';
  if (ended) text.pop_back();
  size_t before = text.rfind('\n');
  return before == std::string::npos ? text : text.substr(before + 1);
}

bool isOfType(const std::string &line, int32_t type, wmqLineHeader &header) {
  return wmq_peekline(line.c_str(), &header) == 0 && header.type == type;
}

}  // namespace

const char *flawName(Flaw flaw) { return words[static_cast<size_t>(flaw)].name; }
const char *flawText(Flaw flaw, uint64_t count) {
  const FlawWords &word = words[static_cast<size_t>(flaw)];
  return count == 1 ? word.one : word.several;
}

bool StreamCheck::isWhole() const {
  return std::all_of(counts.begin(), counts.end(), [](uint64_t count) { return count == 0; });
}

void StreamCheck::note(Flaw flaw, const std::string &file, int64_t offset, std::string text) {
  if (isListed(flaw)) findings.push_back({flaw, file, offset, std::move(text)});
  ++counts[static_cast<size_t>(flaw)];
}

bool StreamCheck::isListed(Flaw flaw) const { return count(flaw) < mostFindings; }

void StreamCheck::note(Flaw flaw, const wmqFollowDetail &detail, std::string text) {
  note(flaw, detail.file, detail.offset, std::move(text));
}

void StreamCheck::add(const eventRecord *record, const wmqFollowDetail &detail) {
  if (files.empty() || files.back() != detail.file) files.emplace_back(detail.file);
  if (record) addRecord(*record, detail);
  if (detail.kind == WMQ_FOLLOW_LINE)
    note(Flaw::malformed, detail,
         "error " + std::to_string(detail.error) + " " + wmq_errname(detail.error) + ": " + detail.reason);
  if (detail.kind == WMQ_FOLLOW_NOTICE) addNotice(detail);
  bool sharesLine =
      detail.kind != WMQ_FOLLOW_NOTICE && detail.lineEnd != 0 && detail.length == detail.textLength;
  if (sharesLine)
    note(Flaw::joined, detail, record ? wmq_typename(record->type) : "a line that does not parse");
}

void StreamCheck::addNotice(const wmqFollowDetail &detail) {
  switch (detail.notice) {
    case WMQ_NOTICE_ROTATED:
      if (*detail.reason != '\0') note(Flaw::noEnd, detail, detail.reason);
      break;
    case WMQ_NOTICE_TORN:
      note(Flaw::torn, detail, std::to_string(detail.textLength) + " bytes of a record");
      break;
    case WMQ_NOTICE_END_IN_MIDDLE:
      note(Flaw::endInMiddle, detail, detail.reason);
      break;
    default:
      note(Flaw::missing, detail, noticeText(detail));
  }
}

void StreamCheck::addRecord(const eventRecord &record, const wmqFollowDetail &detail) {
  ++records;
  if (!lastVersionCount || lastVersion != record.version) {
    lastVersion = record.version;
    lastVersionCount = &versions[lastVersion];
    lastVersionIsLate = isLate(record.version);
  }
  ++*lastVersionCount;
  if (lastVersionIsLate) note(Flaw::version, detail, std::string("version ") + record.version);
  if (anyTime && record.eventTime < latest)
    note(Flaw::backwards, detail,
         isListed(Flaw::backwards) ? timeText(record.eventTime) + " behind " + timeText(latest) : "");
  latest = anyTime ? std::max(latest, record.eventTime) : record.eventTime;
  anyTime = true;
  addJob(record, detail);
}

// Job numbers grow: one below the first that is submitted in the stream was submitted before it begins. The
// elements of an array share one number, so a job is kept until it is cleaned away, and not until it ends.
void StreamCheck::addJob(const eventRecord &record, const wmqFollowDetail &detail) {
  switch (record.type) {
    case EVENT_JOB_NEW: {
      int32_t number = record.eventLog.jobNewLog.jobId;
      if (!anyNew) firstNewJob = number;
      anyNew = true;
      jobs[number] = Job::waiting;
      break;
    }
    case EVENT_JOB_START: {
      int32_t number = record.eventLog.jobStartLog.jobId;
      auto job = findJob(number);
      if (job) *job = Job::started;
      if (!job && !isEarlier(number)) note(Flaw::unsubmitted, detail, "job " + std::to_string(number));
      break;
    }
    case EVENT_JOB_FINISH: {
      const auto &finish = record.eventLog.jobFinishLog;
      auto job = findJob(finish.jobId);
      if (!job && isEarlier(finish.jobId)) ++earlierJobs;
      // A job that was killed while it waited has no start.
      bool unstarted = finish.startTime > 0 && (job ? *job != Job::started : !isEarlier(finish.jobId));
      if (unstarted) note(Flaw::unstarted, detail, "job " + std::to_string(finish.jobId));
      break;
    }
    case EVENT_JOB_CLEAN:
      jobs.erase(record.eventLog.jobCleanLog.jobId);
      break;
    default:
      break;
  }
}

StreamCheck::Job *StreamCheck::findJob(int32_t number) {
  auto job = jobs.find(number);
  return job == jobs.end() ? nullptr : &job->second;
}

void StreamCheck::finish(const std::string &path) {
  if (files.empty() || files.back() != path) files.push_back(path);
  for (size_t i = 0; i + 1 < files.size(); ++i) {
    if (files[i] == path) continue;
    // The time at which the file was rotated, and its suffix: the same, unless a file with the suffix before
    // was there then.
    bool ended = false;
    wmqLineHeader header{};
    if (!isOfType(lastLine(files[i], ended), EVENT_END_OF_STREAM, header)) continue;
    int64_t suffix = suffixOf(files[i], path);
    if (i > 0 && suffix > header.eventTime && suffixOf(files[i - 1], path) != suffix - 1)
      note(Flaw::missing, files[i], 0, path + "." + std::to_string(suffix - 1) + " is missing before it");
  }
  checkTail(path);
}

void StreamCheck::checkTail(const std::string &path) {
  bool ended = true;
  std::string line = lastLine(path, ended);
  wmqLineHeader header{};
  if (isOfType(line, EVENT_END_OF_STREAM, header) && ended)
    note(Flaw::endInCurrent, path, 0, "the writer died before it could rename the file");
  if (ended) return;
  // Without a line end stands what was torn, or a record that leaves its line open.
  for (size_t at = 0; at < line.size();) {
    int part = WMQ_PART_LINE;
    size_t length = wmq_firstrecord(line.data() + at, line.size() - at, &part);
    if (length == 0) return;
    if (part == WMQ_PART_LINE) line.erase(0, at);
    at = part == WMQ_PART_LINE ? line.size() : at + length;
  }
  wmq_errno = 0;
  eventRecord *record = wmq_readstreamlineMT(line.c_str());
  bool isOpen = record && (record->type == EVENT_JOB_OCCUPY_REQ || record->type == EVENT_JOB_VACATED ||
                           record->type == EVENT_SBD_JOB_STATUS);
  wmq_freekept(record);
  wmq_freelogrec(record);
  if (!isOpen) note(Flaw::torn, path, 0, "the last line has no end");
}

}  // namespace wmq::tool
