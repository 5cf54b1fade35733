#include "tool/stream_statistics.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace wmq::tool {
namespace {

class Statistics : public ::testing::Test {
 protected:
  void submit(int32_t id, int64_t time, const char *user = "ada", const char *queue = "normal") {
    eventRecord record = recordOf(EVENT_JOB_NEW, time);
    record.eventLog.jobNewLog.jobId = id;
    record.eventLog.jobNewLog.submitTime = time;
    std::snprintf(record.eventLog.jobNewLog.userName, WMQ_NAME_SIZE, "%s", user);
    std::snprintf(record.eventLog.jobNewLog.queue, WMQ_NAME_SIZE, "%s", queue);
    stats.add(record, 100);
  }

  void start(int32_t id, int64_t time) {
    eventRecord record = recordOf(EVENT_JOB_START, time);
    record.eventLog.jobStartLog.jobId = id;
    stats.add(record, 10);
  }

  struct Ending {
    int32_t id;
    int64_t submitTime, startTime, endTime;
    int32_t hosts = 1;
    int32_t exitStatus = 0;
    const char *user = "ada";
    const char *queue = "normal";
  };
  void end(const Ending &job) {
    eventRecord record = recordOf(EVENT_JOB_FINISH, job.endTime);
    jobFinishLog &log = record.eventLog.jobFinishLog;
    log.jobId = job.id;
    log.submitTime = job.submitTime;
    log.startTime = job.startTime;
    log.endTime = job.endTime;
    log.numExHosts = job.hosts;
    log.exitStatus = job.exitStatus;
    std::snprintf(log.userName, WMQ_NAME_SIZE, "%s", job.user);
    std::snprintf(log.queue, WMQ_NAME_SIZE, "%s", job.queue);
    stats.add(record, 200);
  }

  static eventRecord recordOf(int32_t type, int64_t time) {
    eventRecord record{};
    record.type = type;
    record.eventTime = static_cast<int32_t>(time);
    std::snprintf(record.version, sizeof record.version, "10.1");
    return record;
  }

  StreamStatistics stats;
};

TEST_F(Statistics, FollowAJobThroughItsLife) {
  submit(1, 1000);
  start(1, 1060);
  end({.id = 1, .submitTime = 1000, .startTime = 1060, .endTime = 4660, .hosts = 8});
  stats.finish();
  EXPECT_EQ(stats.jobs.jobs, 1U);
  EXPECT_EQ(stats.finished, 1U);
  EXPECT_EQ(stats.running + stats.waiting + stats.neverStarted, 0U);
  EXPECT_EQ(stats.runSeconds, 3600);
  EXPECT_EQ(stats.jobs.coreSeconds, 8 * 3600);
  EXPECT_EQ(stats.jobs.waits.count(), 1U);
  EXPECT_EQ(stats.jobs.waits.at(0.5), 60U);
}

TEST_F(Statistics, CountJobsThatHaveNotEnded) {
  submit(1, 1000, "ada", "long");
  submit(2, 1000, "bob", "long");
  start(2, 1300);
  stats.finish();
  EXPECT_EQ(stats.jobs.jobs, 2U);
  EXPECT_EQ(stats.waiting, 1U);
  EXPECT_EQ(stats.running, 1U);
  EXPECT_EQ(stats.finished, 0U);
  EXPECT_EQ(stats.queues.at("long").jobs, 2U);
  EXPECT_EQ(stats.users.at("bob").waits.at(0.5), 300U);
  EXPECT_EQ(stats.users.at("ada").waits.count(), 0U);
}

TEST_F(Statistics, KnowAJobFromItsEndAloneWhenOldFilesAreGone) {
  start(1, 1060);
  end({.id = 1, .submitTime = 1000, .startTime = 1060, .endTime = 1070, .hosts = 2});
  end({.id = 2, .submitTime = 1000, .startTime = 0, .endTime = 1080});
  stats.finish();
  EXPECT_EQ(stats.jobs.jobs, 2U);
  EXPECT_EQ(stats.neverStarted, 1U);
  EXPECT_EQ(stats.runSeconds, 10);
  EXPECT_EQ(stats.jobs.waits.count(), 1U);
}

TEST_F(Statistics, CountAJobWithTheQueueAndUserOfItsEnd) {
  submit(1, 1000, "ada", "short");
  end({.id = 1, .submitTime = 1000, .startTime = 1010, .endTime = 1020, .user = "ada", .queue = "long"});
  stats.finish();
  EXPECT_EQ(stats.queues.at("long").jobs, 1U);
  EXPECT_EQ(stats.queues.at("short").jobs, 0U);
}

TEST_F(Statistics, TakeTheFirstStartOfARequeuedJob) {
  submit(1, 1000);
  start(1, 1100);
  start(1, 5000);
  stats.finish();
  EXPECT_EQ(stats.jobs.waits.count(), 1U);
  EXPECT_EQ(stats.jobs.waits.at(0.5), 100U);
}

TEST_F(Statistics, NeverCountTimeBackwards) {
  end({.id = 1, .submitTime = 1000, .startTime = 900, .endTime = 800, .hosts = 4});
  stats.finish();
  EXPECT_EQ(stats.runSeconds, 0);
  EXPECT_EQ(stats.jobs.coreSeconds, 0);
  EXPECT_EQ(stats.jobs.waits.at(0.5), 0U);
}

TEST_F(Statistics, SumRecordsBytesVersionsAndTimes) {
  submit(1, 5000);
  submit(2, 4000);
  end({.id = 1, .submitTime = 5000, .startTime = 5000, .endTime = 6000, .exitStatus = 256});
  stats.add(recordOf(EVENT_END_OF_STREAM, 2'000'000'000), 34);
  stats.addMalformed();
  stats.addOther();
  stats.finish();
  EXPECT_EQ(stats.total.records, 4U);
  EXPECT_EQ(stats.total.bytes, 434U);
  EXPECT_EQ(stats.types.at(EVENT_JOB_NEW).records, 2U);
  EXPECT_EQ(stats.types.at(EVENT_JOB_NEW).bytes, 200U);
  EXPECT_EQ(stats.versions, (std::map<std::string, uint64_t, std::less<>>{{"10.1", 4}}));
  EXPECT_EQ(stats.firstTime, 4000);
  EXPECT_EQ(stats.lastTime, 6000);
  EXPECT_EQ(stats.malformedLines, 1U);
  EXPECT_EQ(stats.otherLines, 1U);
  EXPECT_EQ(stats.exitStatuses, (std::map<int32_t, uint64_t>{{256, 1}}));
}

TEST(ExitStatuses, AreExplainedAsWaitGivesThem) {
  EXPECT_EQ(exitMeaning(0), "success");
  EXPECT_EQ(exitMeaning(256), "exit code 1");
  EXPECT_EQ(exitMeaning(255 << 8), "exit code 255");
  EXPECT_EQ(exitMeaning(15), "signal 15");
  EXPECT_EQ(exitMeaning(139), "signal 11, core dumped");
  EXPECT_EQ(exitMeaning(-1), "");
  EXPECT_EQ(exitMeaning(1 << 16), "");
  EXPECT_EQ(exitMeaning(0x7f), "");  // stopped, not ended
}

}  // namespace
}  // namespace wmq::tool
