// What is amiss in a stream, told by what a follower gives of it.
#ifndef WMQ_TOOL_STREAM_CHECK_H
#define WMQ_TOOL_STREAM_CHECK_H

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "wmq/wmq.h"

namespace wmq::tool {

enum class Flaw {
  torn,          // a record that was not written to its end
  joined,        // records that share a line
  malformed,     // lines that do not parse
  noEnd,         // an old file without END_OF_STREAM at its end
  endInMiddle,   // END_OF_STREAM with something behind it
  endInCurrent,  // the current file ends with END_OF_STREAM
  missing,       // files that must have been there
  backwards,     // a record older than one before it
  version,       // a version later than this library knows
  unsubmitted,   // a job that starts without having been submitted
  unstarted,     // a job that ends without having been started
};
inline constexpr size_t numFlaws = 11;

// A word for programs, a phrase for people.
const char *flawName(Flaw flaw);
const char *flawText(Flaw flaw, uint64_t count);

struct Finding {
  Flaw flaw;
  std::string file;
  int64_t offset;
  std::string text;
};

class StreamCheck {
 public:
  // What wmq_follownext has given; `record` is null for lines and notices.
  void add(const eventRecord *record, const wmqFollowDetail &detail);

  // After the last: what stands behind the last record of the current file, and which old files there were.
  void finish(const std::string &path);

  uint64_t count(Flaw flaw) const { return counts[static_cast<size_t>(flaw)]; }
  bool isWhole() const;

  // The first hundred of each kind.
  std::vector<Finding> findings;

  uint64_t records = 0;
  std::vector<std::string> files;            // in their order
  std::map<std::string, uint64_t> versions;  // records by the version of their line
  uint64_t earlierJobs = 0;                  // submitted before the stream begins, as far as it can be known

 private:
  bool isListed(Flaw flaw) const;  // there is room for another finding
  void note(Flaw flaw, const wmqFollowDetail &detail, std::string text);
  void note(Flaw flaw, const std::string &file, int64_t offset, std::string text);
  void addRecord(const eventRecord &record, const wmqFollowDetail &detail);
  void addJob(const eventRecord &record, const wmqFollowDetail &detail);
  void addNotice(const wmqFollowDetail &detail);
  void checkTail(const std::string &path);

  std::array<uint64_t, numFlaws> counts{};
  std::string lastVersion;
  uint64_t *lastVersionCount = nullptr;
  bool lastVersionIsLate = false;
  bool anyTime = false;
  int32_t latest = 0;
  bool anyNew = false;
  int32_t firstNewJob = 0;
  enum class Job : uint8_t { waiting, started };
  Job *findJob(int32_t number);
  bool isEarlier(int32_t number) const { return !anyNew || number < firstNewJob; }
  std::unordered_map<int32_t, Job> jobs;
};

}  // namespace wmq::tool

#endif
