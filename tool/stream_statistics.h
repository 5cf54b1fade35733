// What the records of a stream say together: counted as they pass, in memory that grows with the jobs that
// have not ended, with users, queues and exit statuses, and not with the stream.
#ifndef WMQ_TOOL_STREAM_STATISTICS_H
#define WMQ_TOOL_STREAM_STATISTICS_H

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "quantiles.h"
#include "sample_statistics.h"
#include "wmq/wmq.h"

namespace wmq::tool {

// Jobs that have something in common.
struct JobGroup {
  uint64_t jobs = 0;
  double coreSeconds = 0;  // of ended jobs: hosts held, one for each processor, times run time
  Quantiles waits;         // seconds from submission to start, of started jobs
};

struct RecordCount {
  uint64_t records = 0;
  uint64_t bytes = 0;

  void add(const RecordCount &other) {
    records += other.records;
    bytes += other.bytes;
  }
};

// What is counted of lines, in whatever order they come.
class LineCounts {
 public:
  LineCounts() = default;
  LineCounts(LineCounts &&) = default;
  LineCounts &operator=(LineCounts &&) = default;

  // A line without a record.
  void addOther() { ++otherLines; }
  void addMalformed() { ++malformedLines; }

  // A record by its header, and the length of its line.
  void addLine(const wmqLineHeader &header, uint64_t bytes);

  // All that another has counted.
  void addCounts(const LineCounts &other);

  uint64_t otherLines = 0;
  uint64_t malformedLines = 0;
  RecordCount total;
  std::map<int32_t, RecordCount> types;
  std::map<std::string, uint64_t, std::less<>> versions;  // records by the version of their line

  // Of all events; the end-of-stream marks, which tell when a file was closed, are none.
  bool anyEvent = false;
  int32_t firstTime = 0;
  int32_t lastTime = 0;

 private:
  void addTimes(int32_t first, int32_t last);

  // Where the counts of types and of the version of the line before are.
  std::array<RecordCount *, WMQ_MAX_EVENT_TYPE + 1> ofType{};
  std::array<char, sizeof(wmqLineHeader::version)> lastVersion{};
  uint64_t *ofLastVersion = nullptr;
};

// What a record says of the life of a job.
struct JobFact {
  int32_t type = 0;  // EVENT_JOB_NEW, EVENT_JOB_START or EVENT_JOB_FINISH
  int32_t jobId = 0;
  int64_t submitTime = 0;
  int64_t startTime = 0;
  int64_t endTime = 0;
  int32_t exitStatus = 0;
  int32_t numHosts = 0;
  std::string user;
  std::string queue;
};

// What of a record counts.
enum class Counted { header, figures, all };
Counted countedOf(int32_t type);

// What a record says of which figures count.
JobFact jobFactOf(const eventRecord &record);

class StreamStatistics : public LineCounts {
 public:
  // All that a record says, and the length of its line.
  void add(const eventRecord &record, uint64_t bytes);

  // What records say beyond their headers, in the order of the stream.
  void addFact(const JobFact &fact);
  void addSample(const eventRecord &record);

  // To be called once, after the last record: jobs that have not ended are counted with their groups, and the
  // last sample is.
  void finish();

  uint64_t waiting = 0;       // submitted, not started, not ended
  uint64_t running = 0;       // started, not ended
  uint64_t finished = 0;      // ended, whether they had started or not
  uint64_t neverStarted = 0;  // those of them that had not
  int64_t runSeconds = 0;     // start to end, over all that had started
  JobGroup jobs;
  std::unordered_map<std::string, JobGroup> users;
  std::unordered_map<std::string, JobGroup> queues;
  std::map<int32_t, uint64_t> exitStatuses;

  RunningJobs runningJobs;        // of a status stream
  PendingReasons pendingReasons;  // of a pending-reasons stream

 private:
  struct OpenJob {
    JobGroup *user = nullptr;
    JobGroup *queue = nullptr;
    int64_t submitTime = 0;
    int64_t startTime = 0;  // 0: not yet
  };

  void addNew(const JobFact &fact);
  void addStart(const JobFact &fact);
  void addFinish(const JobFact &fact);
  void addWait(OpenJob job);

  std::unordered_map<int32_t, OpenJob> openJobs;
};

// What an exit status says: "success", "exit code 1", "signal 15".
std::string exitMeaning(int32_t exitStatus);

}  // namespace wmq::tool

#endif
