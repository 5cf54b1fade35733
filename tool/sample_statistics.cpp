#include "sample_statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "trace_events.h"

namespace wmq::tool {

namespace {

// Each is a multiple of the one before, so that spans can be put together.
constexpr std::array<int64_t, 8> widths{60, 300, 900, 3600, 10800, 21600, 43200, 86400};

// Bytes of a detail that are kept.
constexpr size_t mostDetail = 60;

int64_t startOfSpan(int64_t time, int64_t seconds) {
  int64_t remainder = time % seconds;
  return time - (remainder < 0 ? remainder + seconds : remainder);
}

void add(RunningJobs::Usage &sum, const RunningJobs::Usage &usage) {
  sum.jobs += usage.jobs;
  sum.cores += usage.cores;
  sum.memory += usage.memory;
}

void raise(RunningJobs::Usage &peak, const RunningJobs::Usage &usage) {
  peak.jobs = std::max(peak.jobs, usage.jobs);
  peak.cores = std::max(peak.cores, usage.cores);
  peak.memory = std::max(peak.memory, usage.memory);
}

double coresOf(const jobStatus2Log &log) {
  if (log.num_processors > 0) return log.num_processors;
  double slots = 0;
  for (int32_t i = 0; log.slotUsages && i < log.numExHosts; ++i) slots += log.slotUsages[i];
  return slots > 0 ? slots : std::max(0, log.numProcessors);
}

// A line may hold any number, "inf" and "1e308" too, which sums and means are to stay figures with.
constexpr double mostKilobytes = 1e15;

double memoryOf(const jobStatus2Log &log) {
  if (log.maxMem > 0) return log.maxMem;
  return std::isnan(log.ru_maxrss) ? 0 : std::clamp(log.ru_maxrss, 0.0, mostKilobytes);
}

}  // namespace

int64_t RunningJobs::spanSeconds() const { return widths[width] * beyond; }

void RunningJobs::add(const jobStatus2Log &log, int64_t time) {
  if (open && time != sampleTime) endSample();
  open = true;
  sampleTime = time;
  // A line without a state tells of a job that runs.
  bool runs = log.jStatus <= 0 || (log.jStatus & stateRunning) != 0;
  if (!runs) return;
  double jobs = std::max(1, log.numJobs);
  tool::add(sample, {jobs, coresOf(log), memoryOf(log)});
}

void RunningJobs::endSample() {
  if (!open) return;
  open = false;
  ++numSamples;
  for (Span *span : {&spanOfStart[startOfSpan(sampleTime, spanSeconds())], &all}) {
    ++span->samples;
    tool::add(span->sum, sample);
    raise(span->peak, sample);
  }
  sample = {};
  while (spanOfStart.size() > mostSpans) widen();
}

void RunningJobs::widen() {
  if (width + 1 < widths.size()) {
    ++width;
  } else {
    beyond *= 2;
  }
  std::map<int64_t, Span> wider;
  for (const auto &[start, span] : spanOfStart) {
    Span &into = wider[startOfSpan(start, spanSeconds())];
    into.samples += span.samples;
    tool::add(into.sum, span.sum);
    raise(into.peak, span.peak);
  }
  spanOfStart = std::move(wider);
}

void PendingReasons::add(const jobPendingReasonsLog &log, int64_t time) {
  Reason &reason = reasonOfKey[{log.mainReason, log.subReason}];
  if (reason.records > 0 && time != reason.sampleTime) endSample(reason);
  ++reason.records;
  reason.sampleTime = time;
  reason.sampleJobs += log.numJobs;
  reason.waitSeconds += static_cast<double>(log.numJobs) * log.sampleInterval;
  reason.longestAverage = std::max<int64_t>(reason.longestAverage, log.averagePendingTime);
  if (reason.detail.empty() && log.detail) reason.detail.assign(log.detail, strnlen(log.detail, mostDetail));
}

void PendingReasons::endSample(Reason &reason) {
  ++reason.samples;
  reason.jobSum += reason.sampleJobs;
  reason.peakJobs = std::max(reason.peakJobs, reason.sampleJobs);
  reason.sampleJobs = 0;
}

void PendingReasons::finish() {
  for (auto &[key, reason] : reasonOfKey) endSample(reason);
}

}  // namespace wmq::tool
