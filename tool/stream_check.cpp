#include "stream_check.h"

#include <algorithm>
#include <cstdlib>

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
    {"noCurrent", "current file that is not there", "current files that are not there"},
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

std::string jobText(const LineFact &fact) {
  return std::string(wmq_typename(fact.type)) + " of job " + std::to_string(fact.job);
}

}  // namespace

const char *flawName(Flaw flaw) { return words[static_cast<size_t>(flaw)].name; }
const char *flawText(Flaw flaw, uint64_t count) {
  const FlawWords &word = words[static_cast<size_t>(flaw)];
  return count == 1 ? word.one : word.several;
}

bool StreamCheck::isWhole() const {
  return !isDamaged && std::all_of(counts.begin(), counts.end(), [](uint64_t count) { return count == 0; });
}

bool StreamCheck::isListed(Flaw flaw) const { return count(flaw) < mostFindings; }

void StreamCheck::note(Flaw flaw, const Place &place, std::string text) {
  if (isListed(flaw))
    findings.push_back({flaw, at < files.size() ? files[at].path : path, place, std::move(text)});
  ++counts[static_cast<size_t>(flaw)];
}

// ------------------------------------------------------------------------------------ files

void StreamCheck::add(const CheckedPart &part) {
  if (part.block.empty()) return endFile();
  const std::string *trouble = part.troubles.data();
  for (const LineFact &fact : part.facts) {
    const bool isRecord = fact.kind == LineFact::Kind::record;
    addFact(fact, {reached.line + fact.line, reached.offset + fact.offset}, isRecord ? nullptr : trouble++);
  }
  reached.line += part.numLines;
  reached.offset += part.bytes;
}

void StreamCheck::addGone() {
  note(Flaw::missing, {}, "the file was removed before it could be read");
  nextFile();
}

void StreamCheck::endFile() {
  const StreamFile &file = files[at];
  if (file.isCurrent) {
    if (endSeen && !wasRotatedSince(path, files))
      note(Flaw::endInCurrent, endPlace, "the writer died before it could rename the file");
  } else if (!endSeen) {
    note(Flaw::noEnd, {}, "the file does not end with END_OF_STREAM");
  } else if (at > 0 && file.suffix > endTime && files[at - 1].suffix != file.suffix - 1) {
    // The suffix is the time at which the file was rotated, unless a file with the suffix before was there.
    note(Flaw::missing, {}, path + "." + std::to_string(file.suffix - 1) + " is missing before it");
  }
  nextFile();
}

void StreamCheck::nextFile() {
  ++at;
  reached = {};
  endSeen = false;
}

void StreamCheck::finish() {
  if (!files.back().isCurrent)
    note(Flaw::noCurrent, {}, "the writer died before it could create the file, or the file was taken away");
}

// ---------------------------------------------------------------------------------- records

void StreamCheck::addFact(const LineFact &fact, const Place &place, const std::string *trouble) {
  if (endSeen)
    note(Flaw::endInMiddle, endPlace,
         "lines follow the end of the stream: it was written by a writer that could not rename the file");
  endSeen = false;
  switch (fact.kind) {
    case LineFact::Kind::torn:
      note(Flaw::torn, place, *trouble);
      break;
    case LineFact::Kind::malformed:
      note(Flaw::malformed, place, *trouble);
      break;
    default:
      addRecord(fact, place);
  }
  if (fact.joined)
    note(Flaw::joined, place,
         fact.kind == LineFact::Kind::record ? wmq_typename(fact.type) : "a line that does not parse");
}

void StreamCheck::addRecord(const LineFact &fact, const Place &place) {
  if (fact.type == EVENT_END_OF_STREAM) {
    endSeen = true;
    endPlace = place;
    endTime = fact.time;
    return;
  }
  ++records;
  addVersion(fact, place);
  if (anyTime && fact.time < latest)
    note(Flaw::backwards, place,
         isListed(Flaw::backwards) ? std::string(wmq_typename(fact.type)) + " of " + timeText(fact.time) +
                                         " behind one of " + timeText(latest)
                                   : "");
  latest = anyTime ? std::max(latest, fact.time) : fact.time;
  anyTime = true;
  addJob(fact, place);
}

void StreamCheck::addVersion(const LineFact &fact, const Place &place) {
  if (!lastVersionCount || lastVersion != fact.version) {
    lastVersion = fact.version;
    lastVersionCount = &versions[lastVersion];
    lastVersionIsLate = isLate(fact.version);
  }
  ++*lastVersionCount;
  if (lastVersionIsLate)
    note(Flaw::version, place, std::string(wmq_typename(fact.type)) + " of version " + fact.version);
}

// Job numbers grow: one below the first that is submitted in the stream was submitted before it begins. The
// elements of an array share one number, so a job is kept until it is cleaned away, and not until it ends.
void StreamCheck::addJob(const LineFact &fact, const Place &place) {
  switch (fact.type) {
    case EVENT_JOB_NEW:
      if (!anyNew) firstNewJob = fact.job;
      anyNew = true;
      jobs[fact.job] = Job::waiting;
      break;
    case EVENT_JOB_START: {
      Job *job = findJob(fact.job);
      if (job) *job = Job::started;
      if (!job && !isEarlier(fact.job))
        note(Flaw::unsubmitted, place, jobText(fact) + ", which was not submitted");
      break;
    }
    case EVENT_JOB_FINISH: {
      const Job *job = findJob(fact.job);
      if (!job && isEarlier(fact.job)) ++earlierJobs;
      // A job that was killed while it waited has no start.
      const bool unstarted = fact.wasStarted && (job ? *job != Job::started : !isEarlier(fact.job));
      if (unstarted) note(Flaw::unstarted, place, jobText(fact) + ", which was not started");
      break;
    }
    case EVENT_JOB_CLEAN:
      jobs.erase(fact.job);
      break;
    default:
      break;
  }
}

StreamCheck::Job *StreamCheck::findJob(int32_t number) {
  auto job = jobs.find(number);
  return job == jobs.end() ? nullptr : &job->second;
}

}  // namespace wmq::tool
