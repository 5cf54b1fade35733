// What is amiss in a stream, told by what its lines hold.
#ifndef WMQ_TOOL_STREAM_CHECK_H
#define WMQ_TOOL_STREAM_CHECK_H

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "checked_lines.h"
#include "stream_files.h"

namespace wmq::tool {

enum class Flaw {
  torn,          // a record that was not written to its end
  joined,        // records that share a line
  malformed,     // lines that do not parse
  noEnd,         // an old file without END_OF_STREAM at its end
  endInMiddle,   // END_OF_STREAM with something behind it
  endInCurrent,  // the current file ends with END_OF_STREAM
  noCurrent,     // there are old files, and no current one
  missing,       // files that must have been there
  backwards,     // a record older than one before it
  version,       // a version later than this library knows
  unsubmitted,   // a job that starts without having been submitted
  unstarted,     // a job that ends without having been started
};
inline constexpr size_t numFlaws = 12;

// A word for programs, a phrase for people.
const char *flawName(Flaw flaw);
const char *flawText(Flaw flaw, uint64_t count);

// In a file; line 0 stands for the whole of it.
struct Place {
  uint64_t line = 0;
  uint64_t offset = 0;
};

struct Finding {
  Flaw flaw;
  std::string file;
  Place place;
  std::string text;
};

class StreamCheck {
 public:
  // The files of the stream in their order.
  StreamCheck(std::string currentPath, std::vector<StreamFile> inOrder)
      : path(std::move(currentPath)), files(std::move(inOrder)) {}

  // The parts of all files in their order; an empty block ends a file.
  void add(const CheckedPart &part);

  // The next file was gone when its turn came.
  void addGone();

  // The file at hand holds more than could be unpacked, which is reported where it is read.
  void addDamage() { isDamaged = true; }

  // After the last part.
  void finish();

  uint64_t count(Flaw flaw) const { return counts[static_cast<size_t>(flaw)]; }
  bool isWhole() const;

  // The first hundred of each kind.
  std::vector<Finding> findings;

  uint64_t records = 0;
  std::map<std::string, uint64_t> versions;  // records by the version of their line
  uint64_t earlierJobs = 0;                  // submitted before the stream begins, as far as it can be known

 private:
  enum class Job : uint8_t { waiting, started };

  bool isListed(Flaw flaw) const;  // there is room for another finding
  void note(Flaw flaw, const Place &place, std::string text);
  void addFact(const LineFact &fact, const Place &place, const std::string *trouble);
  void addRecord(const LineFact &fact, const Place &place);
  void addVersion(const LineFact &fact, const Place &place);
  void addJob(const LineFact &fact, const Place &place);
  void endFile();
  void nextFile();
  Job *findJob(int32_t number);
  bool isEarlier(int32_t number) const { return !anyNew || number < firstNewJob; }

  const std::string path;
  const std::vector<StreamFile> files;
  std::array<uint64_t, numFlaws> counts{};

  bool isDamaged = false;
  size_t at = 0;         // the file at hand
  Place reached;         // behind all lines of it that were added
  bool endSeen = false;  // END_OF_STREAM, and nothing has come behind it
  Place endPlace;
  int32_t endTime = 0;

  std::string lastVersion;
  uint64_t *lastVersionCount = nullptr;
  bool lastVersionIsLate = false;
  bool anyTime = false;
  int32_t latest = 0;
  bool anyNew = false;
  int32_t firstNewJob = 0;
  std::unordered_map<int32_t, Job> jobs;
};

}  // namespace wmq::tool

#endif
