#include "tool/trace_events.h"

#include <gtest/gtest.h>

#include <climits>

namespace wmq::tool {
namespace {

class TraceEvents : public ::testing::Test {
 protected:
  TraceEvents() {
    header.startTime = 1'000'000;
    header.queues[3] = "normal";
    header.partitions[2] = "thin";
  }

  // Why a job cannot be placed, "" when it can.
  std::string place(const SwfJob &columns) {
    job = {};
    job.columns = columns;
    std::string why;
    return placeOnClock(header, job, why) ? "" : why;
  }

  static SwfJob swfJob() {
    SwfJob columns;
    columns.number = 7;
    columns.submitTime = 100;
    columns.waitTime = 50;
    columns.runTime = 10;
    columns.allocatedProcessors = 2;
    columns.status = swfCompleted;
    return columns;
  }

  SwfHeader header;
  TraceJob job;
  EventMaker events{header};
  std::vector<char *> noHosts;
};

TEST_F(TraceEvents, ArePlacedOnTheClock) {
  ASSERT_EQ(place(swfJob()), "");
  EXPECT_EQ(job.submitTime, 1'000'100);
  EXPECT_EQ(job.startTime, 1'000'150);
  EXPECT_EQ(job.endTime, 1'000'160);
}

TEST_F(TraceEvents, TakeUnknownTimesAsNone) {
  SwfJob columns = swfJob();
  columns.waitTime = -1;
  columns.runTime = -1;
  ASSERT_EQ(place(columns), "");
  EXPECT_EQ(job.startTime, 1'000'100);
  EXPECT_EQ(job.endTime, 1'000'100);
}

TEST_F(TraceEvents, KnowAJobThatWasCancelledBeforeItsStart) {
  SwfJob columns = swfJob();
  columns.status = swfCancelled;
  ASSERT_EQ(place(columns), "");
  EXPECT_TRUE(job.started());

  columns.runTime = -1;
  ASSERT_EQ(place(columns), "");
  EXPECT_FALSE(job.started());
  EXPECT_EQ(job.endTime, 1'000'150);

  columns.runTime = 0;
  ASSERT_EQ(place(columns), "");
  EXPECT_TRUE(job.started());
  columns.allocatedProcessors = -1;
  ASSERT_EQ(place(columns), "");
  EXPECT_FALSE(job.started());

  // Other jobs of no length have run.
  columns.status = swfFailed;
  ASSERT_EQ(place(columns), "");
  EXPECT_TRUE(job.started());
}

TEST_F(TraceEvents, RefuseWhatNoRecordHolds) {
  SwfJob columns = swfJob();
  columns.number = 0;
  EXPECT_EQ(place(columns), "the job number is not in 1 to 2147483647");
  columns.number = INT64_C(2147483648);
  EXPECT_EQ(place(columns), "the job number is not in 1 to 2147483647");
  columns = swfJob();
  columns.submitTime = -1;
  EXPECT_EQ(place(columns), "the submit time is unknown");
  columns = swfJob();
  columns.runTime = INT64_MAX;
  EXPECT_EQ(place(columns), "a time is later than 2038-01-19T03:14:07Z, which no record holds");
  columns.runTime = INT32_MAX - 1'000'150;
  EXPECT_EQ(place(columns), "");
  EXPECT_EQ(job.endTime, INT32_MAX);
  columns = swfJob();
  columns.allocatedProcessors = 16'777'217;
  EXPECT_EQ(place(columns), "more than 16777216 processors are allocated");
}

TEST_F(TraceEvents, DoNotTakeAStartAtTheEpochForNone) {
  header.startTime = 0;
  SwfJob columns = swfJob();
  columns.submitTime = 0;
  columns.waitTime = 0;
  ASSERT_EQ(place(columns), "");
  EXPECT_TRUE(job.started());
}

TEST_F(TraceEvents, UseTheNamesOfTheTrace) {
  SwfJob columns = swfJob();
  columns.user = 17;
  columns.group = 4;
  columns.application = 5;
  columns.queue = 3;
  columns.partition = 2;
  columns.precedingJob = 6;
  columns.requestedProcessors = 32;
  columns.requestedTime = 3600;
  columns.requestedMemory = 2048;
  ASSERT_EQ(place(columns), "");
  const eventRecord &record = events.submission(job);
  EXPECT_EQ(record.type, EVENT_JOB_NEW);
  EXPECT_EQ(record.eventTime, 1'000'100);
  const jobNewLog &log = record.eventLog.jobNewLog;
  EXPECT_EQ(log.jobId, 7);
  EXPECT_EQ(log.userId, 17);
  EXPECT_STREQ(log.userName, "user17");
  EXPECT_STREQ(log.userGroup, "group4");
  EXPECT_STREQ(log.command, "app5");
  EXPECT_STREQ(log.queue, "normal");
  EXPECT_STREQ(log.resReq, "partition=thin");
  EXPECT_STREQ(log.dependCond, "ended(6)");
  EXPECT_EQ(log.numProcessors, 32);
  EXPECT_EQ(log.maxNumProcessors, 32);
  EXPECT_EQ(log.submitTime, 1'000'100);
  EXPECT_EQ(log.rlimits[WMX_RLIMIT_RUN], 3600);
  EXPECT_EQ(log.rlimits[WMX_RLIMIT_RSS], 2048);
  EXPECT_EQ(log.rlimits[WMX_RLIMIT_CPU], -1);
}

TEST_F(TraceEvents, UseTheNamesThatReadersRequireWhereTheTraceHasNone) {
  ASSERT_EQ(place(swfJob()), "");
  const jobNewLog &log = events.submission(job).eventLog.jobNewLog;
  EXPECT_STREQ(log.userName, "unknown");
  EXPECT_STREQ(log.queue, "default");
  EXPECT_STREQ(log.fromHost, "submit");
  EXPECT_STREQ(log.resReq, "");
  EXPECT_STREQ(log.dependCond, "");
  EXPECT_EQ(log.numProcessors, 0);
  EXPECT_EQ(log.rlimits[WMX_RLIMIT_RUN], -1);
}

TEST_F(TraceEvents, NameQueuesThatTheHeaderLeavesOutByTheirNumber) {
  SwfJob columns = swfJob();
  columns.queue = 9;
  ASSERT_EQ(place(columns), "");
  EXPECT_STREQ(events.submission(job).eventLog.jobNewLog.queue, "queue9");
}

TEST_F(TraceEvents, CutNamesThatAreTooLong) {
  header.queues[3] = std::string(80, 'q');
  SwfJob columns = swfJob();
  columns.queue = 3;
  ASSERT_EQ(place(columns), "");
  EXPECT_EQ(std::string(events.submission(job).eventLog.jobNewLog.queue), std::string(59, 'q'));
}

TEST_F(TraceEvents, ReportTheEndOfAJobWithItsUsage) {
  SwfJob columns = swfJob();
  columns.averageCpuTime = 4.5;
  columns.usedMemory = 640;
  ASSERT_EQ(place(columns), "");
  char host[] = "node00001";
  std::vector<char *> hosts{host, host};
  const eventRecord &record = events.finish(job, hosts);
  EXPECT_EQ(record.type, EVENT_JOB_FINISH);
  EXPECT_EQ(record.eventTime, 1'000'160);
  const jobFinishLog &log = record.eventLog.jobFinishLog;
  EXPECT_EQ(log.jStatus, 64);
  EXPECT_EQ(log.exitStatus, 0);
  EXPECT_EQ(log.submitTime, 1'000'100);
  EXPECT_EQ(log.startTime, 1'000'150);
  EXPECT_EQ(log.endTime, 1'000'160);
  EXPECT_EQ(log.numExHosts, 2);
  EXPECT_EQ(log.wmxRusage.ru_utime, 9);
  EXPECT_EQ(log.wmxRusage.ru_maxrss, 640);
  EXPECT_EQ(log.wmxRusage.ru_elapsed, 10);
}

TEST_F(TraceEvents, TellHowAJobEnded) {
  struct Case {
    SwfStatus status;
    int32_t state;
    int32_t exitStatus;
  };
  for (Case expected : {Case{swfCompleted, 64, 0}, Case{swfFailed, 32, 256}, Case{swfCancelled, 32, 15}}) {
    SwfJob columns = swfJob();
    columns.status = expected.status;
    ASSERT_EQ(place(columns), "");
    const jobFinishLog &log = events.finish(job, noHosts).eventLog.jobFinishLog;
    EXPECT_EQ(log.jStatus, expected.state);
    EXPECT_EQ(log.exitStatus, expected.exitStatus);
    const jobStatusLog &status =
        events.stateChange(job, job.endTime, finalState(job.columns)).eventLog.jobStatusLog;
    EXPECT_EQ(status.jStatus, expected.state);
    EXPECT_EQ(status.exitStatus, expected.exitStatus);
    EXPECT_EQ(status.endTime, 1'000'160);
    EXPECT_EQ(status.ru, 1);
  }
}

TEST_F(TraceEvents, GiveAJobThatNeverStartedNoStartAndNoUsage) {
  SwfJob columns = swfJob();
  columns.status = swfCancelled;
  columns.runTime = -1;
  columns.averageCpuTime = 3;
  ASSERT_EQ(place(columns), "");
  const jobFinishLog &log = events.finish(job, noHosts).eventLog.jobFinishLog;
  EXPECT_EQ(log.startTime, 0);
  EXPECT_EQ(log.numExHosts, 0);
  EXPECT_EQ(log.wmxRusage.ru_utime, 0);
}

TEST_F(TraceEvents, LeaveStatesOnTheWayWithoutAnEnd) {
  ASSERT_EQ(place(swfJob()), "");
  const eventRecord &record = events.stateChange(job, job.startTime, stateRunning);
  EXPECT_EQ(record.eventTime, 1'000'150);
  EXPECT_EQ(record.eventLog.jobStatusLog.jStatus, 4);
  EXPECT_EQ(record.eventLog.jobStatusLog.endTime, 0);
  EXPECT_EQ(record.eventLog.jobStatusLog.ru, 0);
}

TEST_F(TraceEvents, FrameTheTraceByTheLifeOfTheScheduler) {
  EXPECT_EQ(events.schedulerStart(1'000'000).type, EVENT_MBD_START);
  const eventRecord &end = events.schedulerEnd(2'000'000);
  EXPECT_EQ(end.type, EVENT_MBD_DIE);
  EXPECT_EQ(end.eventTime, 2'000'000);
  EXPECT_STREQ(end.eventLog.mbdDieLog.mbdDieHost, "master");
}

TEST_F(TraceEvents, NameTheUserWhoCancelsAJob) {
  SwfJob columns = swfJob();
  columns.status = swfCancelled;
  columns.user = 17;
  ASSERT_EQ(place(columns), "");
  const eventRecord &record = events.cancellation(job);
  EXPECT_EQ(record.type, EVENT_JOB_SIGNAL);
  EXPECT_EQ(record.eventTime, 1'000'160);
  EXPECT_EQ(record.eventLog.jobSignalLog.jobId, 7);
  EXPECT_EQ(record.eventLog.jobSignalLog.userId, 17);
  EXPECT_STREQ(record.eventLog.jobSignalLog.userName, "user17");
  EXPECT_STREQ(record.eventLog.jobSignalLog.signalStr, "TERM");
}

TEST_F(TraceEvents, AreTheSameInBothFormsOfAJobsEnd) {
  SwfJob columns = swfJob();
  columns.averageCpuTime = 4.5;
  columns.usedMemory = 640;
  columns.queue = 3;
  ASSERT_EQ(place(columns), "");
  char host[] = "node00001";
  HostSlots hosts{{host}, {2}};
  const eventRecord &record = events.namedFinish(job, hosts);
  EXPECT_EQ(record.type, EVENT_JOB_FINISH2);
  const jobFinish2Log &log = record.eventLog.jobFinish2Log;
  EXPECT_EQ(log.jobId, 7);
  EXPECT_STREQ(log.queue, "normal");
  EXPECT_EQ(log.jStatus, 64);
  EXPECT_EQ(log.startTime, 1'000'150);
  EXPECT_EQ(log.endTime, 1'000'160);
  EXPECT_EQ(log.runtime, 10);
  EXPECT_EQ(log.numExHosts, 1);
  EXPECT_EQ(log.slotUsages[0], 2);
  EXPECT_EQ(log.cpuTime, 9);
  EXPECT_EQ(log.ru_maxrss, 640);
  EXPECT_EQ(log.maxMem, 1280);
}

TEST_F(TraceEvents, SpreadTheUsageOfASampledJobOverItsRun) {
  SwfJob columns = swfJob();
  columns.runTime = 1000;
  columns.averageCpuTime = 400;
  columns.usedMemory = INT64_MAX;
  ASSERT_EQ(place(columns), "");
  HostSlots hosts;
  const jobStatus2Log &log =
      events.runningSample(job, hosts, job.startTime + 100, 300).eventLog.jobStatus2Log;
  EXPECT_EQ(log.ru_utime, 80);
  EXPECT_EQ(log.runtimeDelta, 100);
  EXPECT_EQ(log.sampleInterval, 300);
  EXPECT_EQ(log.maxMem, INT32_MAX);
  EXPECT_EQ(events.runningSample(job, hosts, job.startTime + 700, 300).eventLog.jobStatus2Log.runtimeDelta,
            300);
}

TEST_F(TraceEvents, TellWhyJobsWait) {
  ASSERT_EQ(place(swfJob()), "");
  WaitingJobs jobs{WaitReason::processors, 4, 64, 1000};
  const jobPendingReasonsLog &log =
      events.waitingSample(job, jobs, 1'000'200, 300).eventLog.jobPendingReasonsLog;
  EXPECT_STREQ(log.userName, "unknown");
  EXPECT_EQ(log.mainReason, 2);
  EXPECT_STREQ(log.detail, "too few processors are free");
  EXPECT_EQ(log.numJobs, 4);
  EXPECT_EQ(log.num_processors, 64);
  EXPECT_EQ(log.pendingTime, 1000);
  EXPECT_EQ(log.averagePendingTime, 250);
}

}  // namespace
}  // namespace wmq::tool
