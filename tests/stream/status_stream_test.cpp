// What is particular to the status stream.
#include <gmock/gmock.h>

#include <set>

#include "support/side_stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

class StatusStream : public SideStreamTest {
 protected:
  StatusStream() : SideStreamTest(kStatus) {}
};

TEST_F(StatusStream, CarriesOneTypeRefusesSomeAndDropsAllOthersWithSuccess) {
  const std::set<int32_t> refused = {-1, 0, 3, 31, 33, 50, 56, 59, 65, 66, 67, 71, 76, 79};
  ASSERT_EQ(open(), 0);
  for (int32_t type = -1; type <= 79; ++type) {
    makeFile(path);
    wmq_errno = 99;
    const int result = write(bareRecord(type));
    if (refused.contains(type)) {
      EXPECT_EQ(result, -1) << type;
      EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT) << type;
    } else {
      EXPECT_EQ(result, 0) << type;
      EXPECT_EQ(wmq_errno, 0) << type;
    }
    EXPECT_EQ(contentOf(path),
              type == 70 ? "\"JOB_STATUS2\" \"10.1\" 1700000000 0 1 \"ineligiblePendingTime\" \"0\"\n" : "")
        << type;
  }
}

TEST_F(StatusStream, RefusesTypesFarFromAnyCode) {
  ASSERT_EQ(open(), 0);
  for (const int32_t type : {-2, 80, 1000, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(write(bareRecord(type)), -1) << type;
    EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT) << type;
  }
}

TEST_F(StatusStream, DropsTheEndOfAJobAndRefusesPendingReasons) {
  ASSERT_EQ(open(), 0);
  wmq_errno = 99;
  EXPECT_EQ(write(bareRecord(EVENT_JOB_FINISH)), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(write(bareRecord(EVENT_JOB_PENDING_REASONS)), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
  EXPECT_EQ(contentOf(path), "");
}

TEST_F(StatusStream, ReadsAnInteractiveJobBackAsOneThatIsNot) {
  ASSERT_EQ(open(), 0);
  eventRecord record = numbered(5);
  record.eventLog.jobStatus2Log.interactive = 1;
  ASSERT_EQ(write(record), 0);
  EXPECT_THAT(contentOf(path), ::testing::EndsWith(" \"interactive\" \"1\"\n"));
  const eventRecord *back = wmq_readstatus(&lineNum);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->eventLog.jobStatus2Log.interactive, 0);
  EXPECT_EQ(back->eventLog.jobStatus2Log.numJobs, 5);
}

TEST_F(StatusStream, WritesNoGpusAndClearsTheirCountInTheCallersRecord) {
  ASSERT_EQ(open(), 0);
  gpuRusageEntry gpus[3] = {};
  eventRecord record = numbered(5);
  record.eventLog.jobStatus2Log.numGPURusages = 3;
  record.eventLog.jobStatus2Log.gpuRusages = gpus;
  EXPECT_EQ(wmq_writestatus(&record), 0);
  EXPECT_EQ(contentOf(path), lineOf(5));
  EXPECT_EQ(record.eventLog.jobStatus2Log.numGPURusages, 0);
  EXPECT_EQ(record.eventLog.jobStatus2Log.gpuRusages, gpus);
}

TEST_F(StatusStream, FailsForARecordThatCannotBeWrittenAndLeavesWhatCould) {
  ASSERT_EQ(open(), 0);
  eventRecord record = numbered(5);
  record.eventLog.jobStatus2Log.numExHosts = 1;
  EXPECT_EQ(write(record), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_THAT(contentOf(path),
              ::testing::StartsWith("\"JOB_STATUS2\" \"10.1\" 1700000000 0 5 \"numJobs\" \"5\""));
}

TEST_F(StatusStream, HasItsTraceTexts) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 5}), 0);
  advanceToCheck();
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(wmq_closestatus(), 0);
  EXPECT_THAT(trace.messages,
              ElementsAre("wmq_openstatus(): status " + path + " open all right maxsize 5",
                          "resetstatus(): status " + path + " reset all right maxsize 5",
                          "wmq_closestatus(): status " + path + " closed all right maxsize 5"));
}

// ------------------------------------------------------------------- wmq_checkstatusfilenum

class CheckingStatusFiles : public ::testing::Test {
 protected:
  const TemporaryDirectory directory{};
  const std::string path = directory / "side";
};

TEST_F(CheckingStatusFiles, RemovesTheOldestSoThatFewerThanTheLimitRemain) {
  for (const char *name : {"side", "side.100", "side.200", "side.300", "side.x"}) makeFile(directory / name);
  wmq_errno = 0;
  EXPECT_EQ(wmq_checkstatusfilenum(path.c_str(), 2), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side", "side.300", "side.x"));
  wmq_errno = 0;
  EXPECT_EQ(wmq_checkstatusfilenum(path.c_str(), 2), 0);
  EXPECT_EQ(wmq_errno, 0) << "nothing to remove";
}

TEST_F(CheckingStatusFiles, RefusesNoPathAndNoFilesWithoutAWord) {
  wmq_errno = 99;
  EXPECT_EQ(wmq_checkstatusfilenum(nullptr, 1), -1);
  EXPECT_EQ(wmq_checkstatusfilenum(path.c_str(), 0), -1);
  EXPECT_EQ(wmq_checkstatusfilenum(path.c_str(), -1), -1);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(CheckingStatusFiles, FailsForAFileThatCannotBeRemoved) {
  makeFile(path + ".007");
  EXPECT_EQ(wmq_checkstatusfilenum(path.c_str(), 1), -2);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
}

TEST_F(CheckingStatusFiles, FailsForADirectoryThatCannotBeListed) {
  EXPECT_EQ(wmq_checkstatusfilenum((directory / "missing/side").c_str(), 1), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
}

}  // namespace
}  // namespace wmq::testing
