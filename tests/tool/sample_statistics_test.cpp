#include "tool/sample_statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace wmq::tool {
namespace {

class SamplesOfRunningJobs : public ::testing::Test {
 protected:
  void add(int64_t time, int32_t cores, int32_t kilobytes = 0, int32_t state = 4) {
    jobStatus2Log log{};
    log.num_processors = cores;
    log.maxMem = kilobytes;
    log.jStatus = state;
    running.add(log, time);
  }

  RunningJobs running;
};

TEST_F(SamplesOfRunningJobs, AreAllThatIsSaidOfOneSecond) {
  add(600, 8, 1000);
  add(600, 4, 500);
  add(900, 2, 100);
  running.finish();
  EXPECT_EQ(running.samples(), 2U);
  EXPECT_EQ(running.spanSeconds(), 60);
  ASSERT_EQ(running.spans().size(), 2U);
  EXPECT_EQ(running.spans().at(600).sum.jobs, 2);
  EXPECT_EQ(running.spans().at(600).sum.cores, 12);
  EXPECT_EQ(running.spans().at(900).sum.jobs, 1);
  EXPECT_EQ(running.whole().samples, 2U);
  EXPECT_EQ(running.whole().sum.cores, 14);
  EXPECT_EQ(running.whole().peak.jobs, 2);
  EXPECT_EQ(running.whole().peak.cores, 12);
  EXPECT_EQ(running.whole().peak.memory, 1500);
}

TEST_F(SamplesOfRunningJobs, StayFiguresWhateverMemoryALineGives) {
  for (const double kilobytes : {HUGE_VAL, 1e308, 1e308, std::nan(""), -HUGE_VAL, 500.0}) {
    jobStatus2Log log{};
    log.ru_maxrss = kilobytes;
    running.add(log, 600);
  }
  running.finish();
  EXPECT_EQ(running.whole().sum.memory, 3e15 + 500);
  EXPECT_EQ(running.whole().peak.memory, 3e15 + 500);
}

TEST_F(SamplesOfRunningJobs, LeaveOutJobsThatDoNotRun) {
  add(600, 8, 1000, 1);
  add(600, 4, 500, 4);
  add(600, 2, 250, 0);
  running.finish();
  EXPECT_EQ(running.samples(), 1U);
  EXPECT_EQ(running.whole().sum.jobs, 2);
  EXPECT_EQ(running.whole().sum.cores, 6);
}

TEST_F(SamplesOfRunningJobs, CountTheJobsThatARecordStandsFor) {
  jobStatus2Log log{};
  log.numJobs = 25;
  log.numProcessors = 50;
  running.add(log, 600);
  running.finish();
  EXPECT_EQ(running.whole().sum.jobs, 25);
  EXPECT_EQ(running.whole().sum.cores, 50);
}

TEST_F(SamplesOfRunningJobs, TakeCoresFromSlotsWhereTheyAreNotGiven) {
  int32_t slots[] = {3, 4};
  jobStatus2Log log{};
  log.numExHosts = 2;
  log.slotUsages = slots;
  log.numProcessors = 1;
  running.add(log, 600);
  log.slotUsages = nullptr;
  running.add(log, 600);
  running.finish();
  EXPECT_EQ(running.whole().sum.cores, 8);
}

TEST_F(SamplesOfRunningJobs, TakeMemoryFromTheLargestProcessWhereTheMostIsNotGiven) {
  jobStatus2Log log{};
  log.ru_maxrss = 2048;
  running.add(log, 600);
  running.finish();
  EXPECT_EQ(running.whole().peak.memory, 2048);
}

TEST_F(SamplesOfRunningJobs, ArePutTogetherInWiderSpansAsTheirTimeGrows) {
  for (int64_t i = 0; i < 1000; ++i) add(86400 + i * 300, static_cast<int32_t>(1 + i));
  running.finish();
  EXPECT_LE(running.spans().size(), RunningJobs::mostSpans);
  EXPECT_EQ(running.spanSeconds(), 10800);
  uint64_t samples = 0;
  double cores = 0;
  for (const auto &[start, span] : running.spans()) {
    EXPECT_EQ(start % 10800, 0);
    samples += span.samples;
    cores += span.sum.cores;
  }
  EXPECT_EQ(samples, 1000U);
  EXPECT_EQ(cores, 1000 * 1001 / 2);
  EXPECT_EQ(running.spans().begin()->second.peak.cores, 36);
  EXPECT_EQ(running.whole().peak.cores, 1000);
}

TEST_F(SamplesOfRunningJobs, HaveRoomForAllTimesOfTheFormat) {
  for (int64_t time = INT32_MIN; time <= INT32_MAX; time += 10'000'000) add(time, 1);
  add(INT32_MAX, 1);
  running.finish();
  EXPECT_LE(running.spans().size(), RunningJobs::mostSpans);
  EXPECT_EQ(running.whole().samples, running.samples());
  uint64_t samples = 0;
  for (const auto &[start, span] : running.spans()) samples += span.samples;
  EXPECT_EQ(samples, running.samples());
}

class SamplesOfWaitingJobs : public ::testing::Test {
 protected:
  void add(int64_t time, int32_t reason, int32_t jobs, int32_t average, const char *detail = "") {
    std::string text = detail;
    jobPendingReasonsLog log{};
    log.mainReason = reason;
    log.numJobs = jobs;
    log.averagePendingTime = average;
    log.sampleInterval = 300;
    log.detail = text.data();
    reasons.add(log, time);
  }

  PendingReasons reasons;
};

TEST_F(SamplesOfWaitingJobs, AddUpByReason) {
  add(600, 2, 3, 50);
  add(600, 2, 4, 70, "full");
  add(600, 3, 1, 10);
  add(900, 2, 2, 60, "other");
  reasons.finish();
  ASSERT_EQ(reasons.reasons().size(), 2U);
  const PendingReasons::Reason &full = reasons.reasons().at({2, 0});
  EXPECT_EQ(full.records, 3U);
  EXPECT_EQ(full.samples, 2U);
  EXPECT_EQ(full.jobSum, 9);
  EXPECT_EQ(full.peakJobs, 7);
  EXPECT_EQ(full.waitSeconds, 2700);
  EXPECT_EQ(full.longestAverage, 70);
  EXPECT_EQ(full.detail, "full");
  EXPECT_EQ(reasons.reasons().at({3, 0}).samples, 1U);
}

TEST_F(SamplesOfWaitingJobs, KeepOnlyTheBeginningOfALongDetail) {
  add(600, 2, 3, 50, std::string(100000, 'x').c_str());
  reasons.finish();
  EXPECT_EQ(reasons.reasons().at({2, 0}).detail, std::string(60, 'x'));
}

}  // namespace
}  // namespace wmq::tool
