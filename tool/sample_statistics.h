// What samples of running and of waiting jobs say together, in memory that does not grow with their number.
#ifndef WMQ_TOOL_SAMPLE_STATISTICS_H
#define WMQ_TOOL_SAMPLE_STATISTICS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "wmq/wmq.h"

namespace wmq::tool {

// Jobs that run, over time. A sample is all that is said of one second; the samples of a span of time are put
// together, and the spans grow with the time that is covered.
class RunningJobs {
 public:
  static constexpr size_t mostSpans = 40;

  struct Usage {
    double jobs = 0;
    double cores = 0;
    double memory = 0;  // KB
  };
  struct Span {
    uint64_t samples = 0;
    Usage sum;   // over the samples
    Usage peak;  // of each on its own
  };

  // Records must come in order of time.
  void add(const jobStatus2Log &log, int64_t time);

  // To be called once, after the last record.
  void finish() { endSample(); }

  uint64_t samples() const { return numSamples; }
  int64_t spanSeconds() const;
  const std::map<int64_t, Span> &spans() const { return spanOfStart; }
  const Span &whole() const { return all; }

 private:
  void endSample();
  void widen();

  bool open = false;
  int64_t sampleTime = 0;
  Usage sample;
  uint64_t numSamples = 0;
  size_t width = 0;                     // which of the widths is in use
  int64_t beyond = 1;                   // how many of the last one, once they do not suffice
  std::map<int64_t, Span> spanOfStart;  // by its first second
  Span all;
};

// Reasons for which jobs wait.
class PendingReasons {
 public:
  struct Reason {
    uint64_t records = 0;
    uint64_t samples = 0;        // seconds at which the reason was given
    int64_t jobSum = 0;          // over the samples
    int64_t peakJobs = 0;        // in one sample
    double waitSeconds = 0;      // that jobs have waited for the reason: for each sample, jobs times interval
    int64_t longestAverage = 0;  // seconds that the jobs of a record had waited on average
    std::string detail;          // the beginning of the first that was given
    int64_t sampleTime = 0;
    int64_t sampleJobs = 0;  // of the sample at hand
  };
  using Key = std::pair<int32_t, int32_t>;  // mainReason, subReason

  // Records must come in order of time.
  void add(const jobPendingReasonsLog &log, int64_t time);

  // To be called once, after the last record.
  void finish();

  const std::map<Key, Reason> &reasons() const { return reasonOfKey; }

 private:
  static void endSample(Reason &reason);

  std::map<Key, Reason> reasonOfKey;
};

}  // namespace wmq::tool

#endif
