#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>

#include "support/scripted_clock.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

class TellingWhatWasWrong : public ::testing::Test {
 protected:
  // Reading the line fails where its last `place` begins, or at its end.
  void expectReading(const std::string &line, const std::string &where, const std::string &place,
                     const std::string &expected) {
    EXPECT_EQ(parse(line), nullptr) << line;
    const size_t position = place.empty() ? line.size() : line.rfind(place);
    EXPECT_EQ(wmq_errdetail(), where + " at byte " + std::to_string(position) + ": " + expected);
  }
};

TEST_F(TellingWhatWasWrong, NamesTypeFieldAndPlace) {
  expectReading("\"JOB_EXCEPTION\" \"10.1\" 5 1 2 x 4 5 6", "JOB_EXCEPTION, field exceptField3", " x 4",
                "a number");
  expectReading("\"GRP_CTRL\" \"10.1\" 5 1 2 3 x", "GRP_CTRL, field grpCtrlStr", "x", "a quoted string");
  expectReading("\"GRP_CTRL\" \"10.1\" 5 1 2 3 \"text\" \"\"", "GRP_CTRL, field grpName", "\"\"",
                "a name that is not empty");
  expectReading("\"GRP_CTRL\" \"10.1\" 5 1 2 3 \"text\" \"" + std::string(60, 'x') + "\"",
                "GRP_CTRL, field grpName", "\"xxx", "a shorter name");
  expectReading("\"JOB_STATUS\" \"10.1\" 5 1 2 3 4 5.0 6 1 1 2 3 4", "JOB_STATUS, field wmxRusage", "1 2 3 4",
                "19 numbers");
}

TEST_F(TellingWhatWasWrong, NamesTheEndOfTheLineForAFieldThatIsMissing) {
  expectReading("\"LOG_SWITCH\" \"10.1\" 5 ", "LOG_SWITCH, field lastJobId", "", "a number");
  expectReading("\"GRP_STATUS\" \"10.1\" 5 \"text\" 1", "GRP_STATUS, field grpStatusField3", "", "a number");
}

TEST_F(TellingWhatWasWrong, CountsBytesFromTheBeginningOfTheLine) {
  expectReading("garbage \"LOG_SWITCH\" \"10.1\" 5 x", "LOG_SWITCH, field lastJobId", "x", "a number");
}

TEST_F(TellingWhatWasWrong, NamesTheHeader) {
  const std::string header = "header of the line";
  expectReading("garbage", header, "garbage", "a quoted type name");
  expectReading("\"LOG_SWITCH\" 10.1 5", header, "10.1", "a quoted format version");
  expectReading("\"LOG_SWITCH\" \"10.1\" now", header, "now", "an event time");
}

TEST_F(TellingWhatWasWrong, SaysWhatIsWrongWithAVersionOrTypeName) {
  EXPECT_EQ(parse("\"LOG_SWITCH\" \"0\" 5"), nullptr);
  EXPECT_NE(std::string(wmq_errdetail()).find("a format version above 0"), std::string::npos);
  EXPECT_EQ(parse("\"NO_SUCH_EVENT\" \"10.1\" 5"), nullptr);
  EXPECT_NE(std::string(wmq_errdetail()).find("a known type name"), std::string::npos);
}

TEST_F(TellingWhatWasWrong, ForgetsTheTypeOfTheRecordBefore) {
  EXPECT_EQ(parse("\"LOG_SWITCH\" \"10.1\" 5 x"), nullptr);
  EXPECT_EQ(parse("garbage"), nullptr);
  EXPECT_STREQ(wmq_errdetail(), "header of the line at byte 0: a quoted type name");
}

TEST_F(TellingWhatWasWrong, StandsUntilTheNextFailure) {
  EXPECT_EQ(parse("garbage"), nullptr);
  const std::string detail = wmq_errdetail();
  EXPECT_NE(parse(logSwitchLine(1)), nullptr);
  EXPECT_EQ(wmq_errdetail(), detail);
}

TEST_F(TellingWhatWasWrong, NamesTheFieldThatCannotBeWritten) {
  eventRecord record = bareRecord(EVENT_JOB_CLEAN);
  record.eventLog.jobCleanLog.indexRangeCnt = 1;
  const std::string text = format(record);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(wmq_errdetail(), "JOB_CLEAN, field indexRangeStart at byte " + std::to_string(text.size()) +
                                 ": an array for the count");
}

TEST_F(TellingWhatWasWrong, SaysThatATypeIsNotWritten) {
  parse("\"LOG_SWITCH\" \"10.1\" 5 x");
  eventRecord record = bareRecord(31);
  format(record);
  EXPECT_NE(std::string(wmq_errdetail()).find("a type that the event stream writes"), std::string::npos);
  EXPECT_EQ(std::string(wmq_errdetail()).find("LOG_SWITCH"), std::string::npos);
}

TEST_F(TellingWhatWasWrong, IsEmptyWhereNothingHasFailed) {
  parse("garbage");
  std::string detail = "unset";
  std::thread([&detail] { detail = wmq_errdetail(); }).join();
  EXPECT_EQ(detail, "");
}

TEST_F(TellingWhatWasWrong, BelongsToTheThread) {
  parse("garbage");
  const std::string detail = wmq_errdetail();
  std::thread([] { parse("\"LOG_SWITCH\" \"10.1\" 5 x"); }).join();
  EXPECT_EQ(wmq_errdetail(), detail);
}

class TellingWhatWasWrongInAStream : public StreamTest {};

TEST_F(TellingWhatWasWrongInAStream, CountsBytesFromTheBeginningOfEachLine) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(write(bareRecord(EVENT_JOB_OCCUPY_REQ)), 0);
  eventRecord group = bareRecord(EVENT_GRP_CTRL);
  group.eventLog.jgrpCtrlLog.grpName[0] = '\0';
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(write(group), 0);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_NE(wmq_readstream(&lineNum), nullptr);
  EXPECT_EQ(wmq_readstream(&lineNum), nullptr);
  const std::string line = "\"GRP_CTRL\" \"10.1\" 1700000000 0 0 0 \"\" \"\"";
  EXPECT_EQ(wmq_errdetail(), "GRP_CTRL, field grpName at byte " + std::to_string(line.size() - 2) +
                                 ": a name that is not empty");
}

class TellingWhatARotationCouldNotDo : public StreamTest {
 protected:
  // What a rotation that fails leaves to tell.
  std::string detailOfRotation() {
    EXPECT_EQ(open({.size = 1, .oldFiles = 1}), 0);
    EXPECT_EQ(write(1), 0);
    advanceToCheck();
    EXPECT_LT(write(2), 0);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    reason = errno;
    return wmq_errdetail();
  }

  int reason = 0;
};

TEST_F(TellingWhatARotationCouldNotDo, NamesAnOldFileAsItStandsThereAndItsSuffix) {
  makeFile(path + ".007");
  EXPECT_EQ(detailOfRotation(), "rotation: cannot remove s.007 by the suffix 7");
  EXPECT_EQ(reason, ENOENT);
}

TEST_F(TellingWhatARotationCouldNotDo, NamesTheFileThatTheStreamLost) {
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  ASSERT_EQ(write(1), 0);
  ASSERT_EQ(unlink(path.c_str()), 0);
  ScriptedClock clock{1700000500};
  advanceToCheck();
  EXPECT_EQ(write(2), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_STREQ(wmq_errdetail(), "rotation: cannot rename to s.1700000500");
}

TEST_F(TellingWhatARotationCouldNotDo, IsNotToldOfAWriteThatFailsLater) {
  makeFile(path + ".007");
  ASSERT_NE(detailOfRotation(), "");
  wmq_closestream();
  ASSERT_EQ(openAs("/dev/full"), 0);
  EXPECT_EQ(write(3), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_STREQ(wmq_errdetail(), "");
}

}  // namespace
}  // namespace wmq::testing
