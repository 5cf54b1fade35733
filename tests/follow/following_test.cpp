// Following a stream whose files are made by hand, situation by situation.
#include <gmock/gmock.h>
#include <pthread.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#include "support/handmade_stream.h"
#include "support/small_records.h"
#include "support/stream_follower.h"
#include "support/temporary_directory.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Following : public ::testing::Test, protected HandmadeStream {};

// ---------------------------------------------------------------------------- where to start

TEST_F(Following, BeginsWithTheOldestFile) {
  append(lines(1, 2));
  rotate(100);
  append(lines(3, 4));
  StreamFollower follower(path, WMQ_FROM_OLDEST);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "2", "rotated", "3", "4"));
}

TEST_F(Following, BeginsWithTheCurrentFile) {
  append(lines(1, 2));
  rotate(100);
  append(lines(3, 4));
  StreamFollower follower(path, WMQ_FROM_START);
  EXPECT_THAT(follower.rest(), ElementsAre("3", "4"));
}

TEST_F(Following, BeginsAtTheEnd) {
  append(lines(1, 2));
  StreamFollower follower(path, WMQ_FROM_END);
  EXPECT_EQ(follower.next(), "");
  append(lines(3, 3));
  EXPECT_EQ(follower.next(), "3");
}

TEST_F(Following, BeginsAtTheEndWithALineThatIsBeingWritten) {
  const std::string line = logSwitchLine(2);
  append(logSwitchLine(1) + line.substr(0, 20));
  StreamFollower follower(path, WMQ_FROM_END);
  EXPECT_EQ(follower.next(), "");
  append(line.substr(20));
  EXPECT_EQ(follower.next(), "2");
}

TEST_F(Following, WaitsForAStreamThatIsNotThereYet) {
  for (const int32_t from : {WMQ_FROM_OLDEST, WMQ_FROM_START, WMQ_FROM_END}) {
    fs::remove(path);
    StreamFollower follower(path, from);
    ASSERT_TRUE(follower.isOpen());
    EXPECT_EQ(follower.next(), "");
    append(lines(1, 1));
    EXPECT_THAT(follower.rest(), ElementsAre("1"));
  }
}

TEST_F(Following, TellsWhatIsWrongWithItsParameters) {
  const auto errorOf = [](const wmqFollowParams &params) {
    wmq_errno = 0;
    EXPECT_EQ(wmq_followopen(&params), nullptr);
    return wmq_errno;
  };
  EXPECT_EQ(wmq_followopen(nullptr), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(errorOf({nullptr, WMQ_FROM_START, nullptr, 0}), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf({"", WMQ_FROM_START, nullptr, 0}), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf({path.c_str(), 4, nullptr, 0}), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf({path.c_str(), -1, nullptr, 0}), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf({path.c_str(), WMQ_FROM_POSITION, nullptr, 0}), WMQE_BAD_ARG);
  for (const char *position : {"", "1", "2:-:-", "1:-:-x", "1:1:2:3:-:0.0:5:6.0:-", "1:1:2:3:-:0.0:-5:0.0:-",
                               "1:x:2:3:-:0.0:0:0.0:-", "1:1:2:3:-:9999.0:0:0.0:-", "1:1:2:3:-:-1.0:0:0.0:-",
                               "1:1:2:3:-:0.0:0:0.0:-:", "1::2:3:-:0.0:0:0.0:-",
                               "1:1:2:3:-:0.0:99999999999999999999:0.0:-", "1:1:2:3:-:0.0:0:0.0:7.1.2.3"})
    EXPECT_EQ(errorOf({path.c_str(), WMQ_FROM_POSITION, position, 0}), WMQE_BAD_FORMAT) << position;
  EXPECT_EQ(errorOf({"/nowhere/at/all", WMQ_FROM_START, nullptr, 0}), WMQE_SYS);
  EXPECT_EQ(errorOf({directory.path().c_str(), WMQ_FROM_START, nullptr, 0}), WMQE_SYS);
  EXPECT_EQ(errno, EISDIR);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(errorOf({path.c_str(), WMQ_FROM_START, nullptr, 0}), WMQE_SYS);
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(Following, TakesANullFollowerForNone) {
  eventRecord *record = nullptr;
  char position[WMQ_POSITION_SIZE];
  StreamFollower follower(path);
  const auto errorOf = [](int result) {
    EXPECT_EQ(result, -1);
    return std::exchange(wmq_errno, 0);
  };
  EXPECT_EQ(errorOf(wmq_follownext(nullptr, &record, 0)), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(wmq_follownext(follower.get(), nullptr, 0)), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(wmq_followposition(nullptr, position)), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(wmq_followposition(follower.get(), nullptr)), WMQE_BAD_ARG);
  EXPECT_EQ(wmq_followdescriptor(nullptr), -1);
  ASSERT_NE(wmq_followdetail(nullptr), nullptr);
  EXPECT_STREQ(wmq_followdetail(nullptr)->text, "");
  wmq_followclose(nullptr);
}

TEST_F(Following, BeginsAtTheEndOfAFileThatHasNoLineYet) {
  append(std::string(10'000, 'x'));
  StreamFollower follower(path, WMQ_FROM_END);
  EXPECT_EQ(follower.next(), "");
  append("\n" + lines(1, 1));
  EXPECT_EQ(follower.next(), "line: " + std::string(10'000, 'x'));
  EXPECT_EQ(follower.next(), "1");
}

TEST_F(Following, FindsAStreamByItsNameAlone) {
  const CurrentDirectory there(directory.path());
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  StreamFollower follower("s");
  EXPECT_THAT(follower.rest(), ElementsAre("1", "rotated", "2"));
  EXPECT_STREQ(follower.detail().file, "");
  StreamFollower inRoot("/a-name-that-nobody-has-given");
  EXPECT_EQ(inRoot.next(), "");
}

TEST_F(Following, HasADescriptorOnlyWhereTheSystemBringsNews) {
  append("");
  EXPECT_GE(wmq_followdescriptor(StreamFollower(path).get()), 0);
  EXPECT_EQ(wmq_followdescriptor(StreamFollower(path, WMQ_FROM_START, 1000).get()), -1);
}

// ------------------------------------------------------------------------------ lines

TEST_F(Following, PassesOverCommentsEmptyLinesAndTheEnd) {
  append("# comment\n\n" + lines(1, 1) + "\n#\n" + lines(2, 2));
  rotate(100);
  append("\n" + lines(3, 3));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "2", "rotated", "3"));
}

TEST_F(Following, PassesOverAnyNumberOfEmptyLinesInARow) {
  append(std::string(1000, '\n'));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "");
  append(lines(1, 1));
  EXPECT_EQ(follower.next(), "1");
  EXPECT_EQ(follower.detail().offset, 1000);
}

TEST_F(Following, GivesLinesThatDoNotParseWithPlaceAndReason) {
  append(lines(1, 1) + "\"LOG_SWITCH\" \"10.1\" 5\n" + lines(2, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  EXPECT_EQ(follower.next(), "line: \"LOG_SWITCH\" \"10.1\" 5");
  EXPECT_EQ(follower.detail().error, WMQE_BAD_FORMAT);
  EXPECT_STREQ(follower.detail().reason, "LOG_SWITCH, field lastJobId at byte 21: a number");
  EXPECT_STREQ(follower.detail().file, path.c_str());
  EXPECT_EQ(follower.detail().offset, static_cast<int64_t>(lines(1, 1).size()));
  EXPECT_EQ(follower.detail().length, 22);
  EXPECT_EQ(follower.next(), "2");
}

TEST_F(Following, HoldsBackALineUntilItsEndArrives) {
  const std::string line = logSwitchLine(12);
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  for (const char c : line.substr(0, line.size() - 1)) {
    append(std::string(1, c));
    EXPECT_EQ(follower.next(), "");
  }
  append("\n");
  EXPECT_EQ(follower.next(), "12");
}

TEST_F(Following, ALineOfAnyLengthIsGivenWhole) {
  eventRecord record = bareRecord(EVENT_JOB_NEW);
  std::string command(3000000, 'x');
  record.eventLog.jobNewLog.command = command.data();
  const std::string line = format(record);
  append(lines(1, 1) + line.substr(0, 2000000));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  append(line.substr(2000000) + lines(2, 2));
  EXPECT_THAT(follower.rest(), ElementsAre("JOB_NEW", "2"));
}

TEST_F(Following, GivesEachOfJoinedRecords) {
  append(vacated + sbdStatus + logSwitchLine(1) + vacated);
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("JOB_VACATED", "SBD_JOB_STATUS", "1"));
  append(vacated);
  EXPECT_THAT(follower.rest(), ElementsAre("JOB_VACATED"));
  append(sbdStatus);
  EXPECT_THAT(follower.rest(), ElementsAre("JOB_VACATED"));
  rotate(100);
  EXPECT_THAT(follower.rest(), ElementsAre("SBD_JOB_STATUS", "rotated"));
}

TEST_F(Following, AnOpenRecordAtTheEndOfAFinishedFileIsWhole) {
  append(lines(1, 1) + vacated);
  fs::rename(path, old(100));
  append(lines(2, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  EXPECT_EQ(follower.next(), "JOB_VACATED");
  EXPECT_EQ(follower.detail().lineEnd, 0);
  EXPECT_EQ(follower.next(), "rotated");
  EXPECT_EQ(follower.next(), "2");
  EXPECT_EQ(follower.detail().lineEnd, 1);
}

TEST_F(Following, AtTheEndOfAFinishedFileOnlyTypesThatLeaveTheirLineOpenAreWhole) {
  const std::string whole = logSwitchLine(2);
  int suffix = 100;
  for (const std::string &last :
       {sbdStatus, vacated, whole.substr(0, whole.size() - 1), std::string("bad")}) {
    append(last);
    fs::rename(path, old(suffix++));
  }
  append(lines(5, 5));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("SBD_JOB_STATUS", "rotated", "JOB_VACATED", "rotated",
                                           "torn: " + whole.substr(0, whole.size() - 1), "rotated",
                                           "torn: bad", "rotated", "5"));
}

TEST_F(Following, ATornLineIsToldWhenTheNextRecordFollows) {
  const std::string torn = logSwitchLine(2).substr(0, 25);
  append(lines(1, 1) + torn);
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  append(lines(3, 4));
  EXPECT_EQ(follower.next(), "torn: " + torn);
  EXPECT_EQ(follower.detail().offset, static_cast<int64_t>(lines(1, 1).size()));
  EXPECT_EQ(follower.detail().length, 25);
  EXPECT_THAT(follower.rest(), ElementsAre("3", "4"));
}

TEST_F(Following, ATornLineIsToldWhenItsFileIsFinished) {
  const std::string torn = logSwitchLine(2).substr(0, 25);
  append(lines(1, 1) + torn);
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  fs::rename(path, old(100));
  EXPECT_THAT(follower.rest(), IsEmpty());  // nothing has taken its place
  append(lines(3, 3));
  EXPECT_THAT(follower.rest(), ElementsAre("torn: " + torn, "rotated", "3"));
}

TEST_F(Following, WhatADiskHasLostIsTorn) {
  append(lines(1, 1) + std::string(50, '\0') + lines(2, 2));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "torn: " + std::string(50, '\0'), "2"));
}

TEST_F(Following, SideStreamsAreFollowedInTheSameWay) {
  append("\"JOB_STATUS2\" \"10.1\" 1700000000 7 2 \"jStatus\" \"4\" \"ineligiblePendingTime\" \"0\"\n");
  rotate(100);
  eventRecord reasons = bareRecord(EVENT_JOB_PENDING_REASONS);
  char *text = nullptr;
  size_t length = 0;
  ASSERT_EQ(wmq_formatpendingreasons(&reasons, &text, &length), 0);
  append(std::string(text, length));
  std::free(text);
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("JOB_STATUS2", "rotated", "JOB_PENDING_REASONS"));
}

// ------------------------------------------------------------------------------ rotation

TEST_F(Following, GoesOnWhenTheFileIsRotatedUnderIt) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "2"));
  append(lines(3, 3));
  rotate(100);
  EXPECT_THAT(follower.rest(), ElementsAre("3", "rotated"));
  append(lines(4, 4));
  EXPECT_THAT(follower.rest(), ElementsAre("4"));
}

TEST_F(Following, ManyRotationsMayHappenInBetween) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  for (int i = 0; i < 12; ++i) {
    rotate(100 + i);  // many in one second count on
    append(lines(2 + i, 2 + i));
  }
  std::vector<std::string> expected;
  for (int i = 0; i < 12; ++i) {
    expected.emplace_back("rotated");
    expected.push_back(std::to_string(2 + i));
  }
  EXPECT_EQ(follower.rest(), expected);
}

TEST_F(Following, SuffixesAreNumbersAndNotTexts) {
  append(lines(1, 1));
  rotate(99);
  append(lines(2, 2));
  rotate(100);
  appendTo(path + ".x", lines(77, 77));
  appendTo(path + ".1x", lines(77, 77));
  appendTo(path + "x.5", lines(77, 77));
  appendTo(path + ".99999999999", lines(77, 77));
  appendTo(path + ".-99999999999999999999", lines(77, 77));
  fs::create_directory(path + ".98");
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "rotated", "2", "rotated"));
}

TEST_F(Following, WaitsWhenTheWriterDiedBetweenRenamingAndCreation) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  append(endLine);
  fs::rename(path, old(100));
  EXPECT_THAT(follower.rest(), IsEmpty());
  const std::string position = follower.position();
  append(lines(2, 2));
  EXPECT_THAT(follower.rest(), ElementsAre("rotated", "2"));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("rotated", "2"));
}

TEST_F(Following, AnEndInTheMiddleIsToldAndTheFileGoesOn) {
  append(lines(1, 1) + endLine);
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  append(lines(2, 2));
  const std::string position = follower.position();
  EXPECT_THAT(follower.rest(), ElementsAre("end in the middle", "2"));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("end in the middle", "2"));
}

TEST_F(Following, AFileWithoutItsEndIsTold) {
  append(lines(1, 1));
  fs::rename(path, old(100));
  append(lines(2, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  EXPECT_EQ(follower.next(), "rotated");
  EXPECT_STREQ(follower.detail().reason, (old(100) + " has no END_OF_STREAM line at its end").c_str());
  EXPECT_STREQ(follower.detail().file, path.c_str());
}

TEST_F(Following, ARenamedFileMayGrowUntilAnotherTakesItsPlace) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  fs::rename(path, old(100));
  EXPECT_THAT(follower.rest(), IsEmpty());
  appendTo(old(100), lines(2, 2));
  EXPECT_THAT(follower.rest(), ElementsAre("2"));
  appendTo(old(100), lines(3, 3));
  append(lines(4, 4));
  EXPECT_THAT(follower.rest(), ElementsAre("3", "rotated", "4"));
}

// ---------------------------------------------------------------------------------- gaps

TEST_F(Following, FilesRemovedBeforeTheyWereReadAreNamed) {
  for (int i = 0; i < 4; ++i) {
    append(lines(i, i));
    rotate(100 + i);
  }
  append(lines(9, 9));
  settle();
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "0");
  const auto bytes = fs::file_size(old(101)) + fs::file_size(old(102));
  for (int i = 0; i < 3; ++i) remove(100 + i);
  EXPECT_EQ(follower.next(), "gap of s.101,s.102: " + std::to_string(bytes));
  EXPECT_THAT(follower.rest(), ElementsAre("3", "rotated", "9"));
}

TEST_F(Following, AfterRotationsThatNobodySawTheGapIsUnknown) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  append(lines(2, 2));
  rotate(100);
  append(lines(3, 3));
  rotate(101);
  append(lines(4, 4));
  remove(100);
  remove(101);
  EXPECT_THAT(follower.rest(), ElementsAre("2", "gap", "4"));
}

TEST_F(Following, ARemovedFileIsReadToItsEnd) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  fs::remove(path);
  EXPECT_THAT(follower.rest(), ElementsAre("2"));
  append(lines(5, 5));
  EXPECT_THAT(follower.rest(), ElementsAre("gap", "5"));
}

TEST_F(Following, AStreamWhoseFilesAreAllGoneIsWaitedFor) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  settle();
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  remove(100);
  fs::remove(path);
  EXPECT_THAT(follower.rest(), IsEmpty());
  append(lines(3, 3));
  EXPECT_THAT(follower.rest(), ElementsAre("gap", "3"));
}

TEST_F(Following, AReplacedFileIsAGap) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  appendTo(path + "-new", lines(8, 8));
  fs::rename(path + "-new", path);
  EXPECT_THAT(follower.rest(), ElementsAre("gap", "8"));
}

TEST_F(Following, ACopyInThePlaceOfTheFileIsReadOn) {
  append(lines(1, 3));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  fs::copy_file(path, path + "-copy");
  fs::rename(path + "-copy", path);
  append(lines(4, 4));
  EXPECT_THAT(follower.rest(), ElementsAre("2", "3", "4"));
}

TEST_F(Following, ATruncatedFileIsReadFromItsFirstByte) {
  append(lines(1, 3));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "2", "3"));
  fs::resize_file(path, 0);
  append(lines(4, 4));
  EXPECT_THAT(follower.rest(), ElementsAre("truncated", "4"));
  StreamFollower another(path);
  EXPECT_THAT(another.rest(), ElementsAre("4"));
  EXPECT_EQ(follower.position(), another.position());
}

// Most fields of a line are those of many others, and so may be its last thousand bytes.
TEST_F(Following, ATruncatedFileIsToldEvenIfTheSameEndStandsWhereItWasRead) {
  const auto line = [](int number) {
    return "\"GRP_CTRL\" \"10.1\" " + std::to_string(number) + " 2 3 4 \"" + std::string(1000, 'x') +
           "\" \"name\"\n";
  };
  append(line(1) + line(2));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("GRP_CTRL", "GRP_CTRL"));
  StreamFollower resumed(path, follower.position());
  EXPECT_EQ(resumed.next(), "");
  fs::resize_file(path, 0);
  append(line(3) + line(4) + line(5));
  EXPECT_THAT(follower.rest(), ElementsAre("truncated", "GRP_CTRL", "GRP_CTRL", "GRP_CTRL"));
  EXPECT_THAT(resumed.rest(), ElementsAre("truncated", "GRP_CTRL", "GRP_CTRL", "GRP_CTRL"));
}

TEST_F(Following, AnOldFileThatIsCutWhileItIsReadIsReadFromItsFirstByte) {
  append(lines(1, 2));
  rotate(100);
  append(lines(3, 3));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  fs::resize_file(old(100), 0);
  appendTo(old(100), lines(7, 7));
  EXPECT_THAT(follower.rest(), ElementsAre("2", "truncated", "7", "rotated", "3"));
}

TEST_F(Following, AFileThatIsTruncatedBeforeItsFirstLineIsToldToo) {
  append("half a li");
  StreamFollower follower(path, WMQ_FROM_START);
  EXPECT_EQ(follower.next(), "");
  fs::resize_file(path, 0);
  append(lines(1, 1).substr(0, 5));
  EXPECT_THAT(follower.rest(), ElementsAre("torn: half a li", "truncated"));
  append(lines(1, 1).substr(5));
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
}

TEST_F(Following, AFileUnderTwoNamesIsReadOnce) {
  append(lines(1, 1));
  fs::create_hard_link(path, old(100));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1"));
  append(lines(2, 2));
  EXPECT_THAT(follower.rest(), ElementsAre("2"));
  fs::remove(path);  // the second half of a renaming
  append(lines(3, 3));
  EXPECT_THAT(follower.rest(), ElementsAre("rotated", "3"));
}

TEST_F(Following, AFileThatWasWrittenAnewIsToldEvenIfItIsLonger) {
  append(lines(1, 3));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "2", "3"));
  fs::resize_file(path, 0);
  append(lines(4, 9));
  EXPECT_THAT(follower.rest(), ElementsAre("truncated", "4", "5", "6", "7", "8", "9"));
}

TEST_F(Following, ACopyMadeBeforeTruncationIsReadOn) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "2"));
  append(lines(3, 3));
  fs::copy_file(path, old(100));
  fs::resize_file(path, 0);
  append(lines(4, 4));
  EXPECT_THAT(follower.rest(), ElementsAre("3", "rotated", "4"));
}

// ------------------------------------------------------------------------------ positions

TEST_F(Following, EveryPositionGoesOnWithExactlyTheNext) {
  append(vacated + lines(1, 2) + "bad\n" + logSwitchLine(3).substr(0, 25) + lines(4, 4));
  rotate(100);
  append(lines(5, 6) + endLine + lines(7, 7));
  rotate(101);
  append(lines(8, 8));
  const std::vector<std::string> all = StreamFollower(path).rest();
  ASSERT_EQ(all.size(), 13U);
  std::vector<std::string> given;
  std::string position = StreamFollower(path).position();
  for (;;) {
    StreamFollower follower(path, position);
    ASSERT_TRUE(follower.isOpen()) << position;
    EXPECT_EQ(follower.position(), position);
    const std::string one = follower.next();
    if (one.empty()) break;
    given.push_back(one);
    position = follower.position();
    EXPECT_LT(position.size(), 150U);
    EXPECT_EQ(position.find_first_of(" \n\t"), std::string::npos);
  }
  EXPECT_EQ(given, all);
}

TEST_F(Following, APositionOutlivesAnyNumberOfRotations) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  for (int i = 0; i < 3; ++i) {
    rotate(100 + i);
    append(lines(3 + i, 3 + i));
  }
  EXPECT_THAT(StreamFollower(path, position).rest(),
              ElementsAre("2", "rotated", "3", "rotated", "4", "rotated", "5"));
}

TEST_F(Following, APositionIsFoundInACopyElsewhere) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  rotate(100);
  append(lines(3, 3));
  const TemporaryDirectory other;
  fs::copy_file(path, other / "s");
  fs::copy_file(old(100), other / "s.100");
  fs::remove_all(directory.path());
  EXPECT_THAT(StreamFollower(other / "s", position).rest(), ElementsAre("2", "rotated", "3"));
}

TEST_F(Following, OfTwoCopiesTheOlderOneIsTaken) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  for (const int suffix : {100, 101, 102}) fs::copy_file(path, old(suffix));
  fs::remove(path);
  EXPECT_THAT(StreamFollower(path, position).rest(),
              ElementsAre("2", "rotated", "1", "2", "rotated", "1", "2"));
}

TEST_F(Following, AFileThatBeginsLikeTheOneOfThePositionIsAnother) {
  append(vacated);
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "");
  const std::string position = follower.position();
  fs::remove(path);
  append(vacated + "1" + logSwitchLine(2));
  EXPECT_EQ(StreamFollower(path, position).next(), "gap");
}

TEST_F(Following, APositionInARemovedFileIsAGapThatNamesIt) {
  append(lines(1, 2));
  rotate(100);
  append(lines(3, 3));
  rotate(101);
  append(lines(4, 4));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  remove(100);
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap of s.100", "3", "rotated", "4"));
}

TEST_F(Following, APositionInARemovedCurrentFileGoesOnBehindTheFilesThatWereThere) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  StreamFollower follower(path, WMQ_FROM_START);
  EXPECT_EQ(follower.next(), "2");
  const std::string position = follower.position();
  fs::remove(path);
  append(lines(3, 3));
  rotate(102);
  append(lines(4, 4));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "3", "rotated", "4"));
}

TEST_F(Following, AnInodeThatIsUsedAgainIsNotTakenForTheFile) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  std::string position = follower.position();
  // Another file under the same device, inode and time of creation: only its content tells.
  fs::resize_file(path, 0);
  append(lines(11, 12));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("truncated", "11", "12"));
}

TEST_F(Following, AFileThatIsShorterThanTheFirstLineOfThePositionIsAnother) {
  append(lines(1, 1));
  const std::string position = StreamFollower(path).position();
  fs::resize_file(path, 5);
  EXPECT_EQ(StreamFollower(path, position).next(), "truncated");
}

TEST_F(Following, WithSuffixesThatBeganAgainFurtherDownNothingIsPassedOver) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  StreamFollower follower(path, WMQ_FROM_START);
  EXPECT_EQ(follower.next(), "2");
  const std::string position = follower.position();
  rotate(101);
  append(lines(3, 3));
  remove(100);
  remove(101);
  rotate(50);  // the clock was set back, and no old file was left
  append(lines(4, 4));
  EXPECT_THAT(follower.rest(), ElementsAre("gap", "3", "rotated", "4"));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "3", "rotated", "4"));
}

TEST_F(Following, ASuffixThatIsUsedAgainIsAnotherFile) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  StreamFollower follower(path, WMQ_FROM_OLDEST);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  remove(100);
  rotate(100);
  append(lines(3, 3));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap of s.100", "2", "rotated", "3"));
}

TEST_F(Following, APositionInAnEmptyFileIsKnownByItsPlace) {
  append(lines(1, 1));
  rotate(100);
  StreamFollower follower(path, WMQ_FROM_START);
  EXPECT_EQ(follower.next(), "");
  const std::string position = follower.position();
  append(lines(2, 2));
  rotate(101);
  append(lines(3, 3));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("2", "rotated", "3"));
  remove(100);
  remove(101);
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "3"));
}

TEST_F(Following, APositionInAnEmptyFileThatIsGoneIsFollowedByAGap) {
  append("");
  const std::string position = StreamFollower(path, WMQ_FROM_START).position();
  fs::remove(path);
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap"));
  append("taken");
  append("");
  fs::rename(path, directory / "elsewhere");  // so that the next file is not the same one again
  append(lines(1, 1));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "1"));
}

TEST_F(Following, APositionInAnEmptyFileThatWasReplacedIsFollowedByAGap) {
  append(lines(1, 1));
  rotate(100);
  const std::string position = StreamFollower(path, WMQ_FROM_START).position();
  appendTo(path + "-new", lines(8, 8));
  fs::rename(path + "-new", path);
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "8"));
}

// On another device the inode says nothing: the first file in its place is the one.
TEST_F(Following, APositionInAnEmptyFileIsFoundOnAnotherDevice) {
  append("");
  std::string position = StreamFollower(path, WMQ_FROM_START).position();
  append(lines(1, 1));
  ASSERT_EQ(position.substr(0, 2), "1:");
  position.replace(2, position.find(':', 2) - 2, "fffff");
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("1"));
}

TEST_F(Following, APositionWithoutAFirstLineIsFoundByWhatStandsBeforeIt) {
  append(lines(1, 3));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  std::string position = follower.position();
  const size_t first = position.find(":-:") + 3;
  position.replace(first, position.find(':', first) - first, "0.0");
  EXPECT_EQ(StreamFollower(path, position).next(), "2");
}

// Whether this file was the first, nobody can tell.
TEST_F(Following, APositionBeforeTheFirstFileIsFollowedByAGap) {
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "");
  const std::string position = follower.position();
  append(lines(1, 1));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "1"));
  rotate(100);
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "1", "rotated"));
}

TEST_F(Following, APositionWhoseStreamIsGoneSaysSoAtOnce) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  fs::remove(path);
  StreamFollower resumed(path, position);
  EXPECT_THAT(resumed.rest(), ElementsAre("gap"));
  append(lines(2, 2));
  EXPECT_THAT(resumed.rest(), ElementsAre("2"));
}

TEST_F(Following, AGapIsToldAgainToWhoeverHasNotTakenIt) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  fs::remove(path);
  append(lines(2, 2));
  for (int i = 0; i < 2; ++i) {
    StreamFollower resumed(path, position);
    EXPECT_EQ(resumed.position(), position);
    EXPECT_EQ(resumed.next(), "gap");
    EXPECT_EQ(StreamFollower(path, resumed.position()).next(), "2");
  }
}

// -------------------------------------------------------------------------------- waiting

TEST_F(Following, AWaitEndsWithTheRecord) {
  append(lines(1, 1));
  for (const int timeout : {-1, 1000000})
    for (const int poll : {0, 5}) {
      StreamFollower follower(path, WMQ_FROM_END, poll);
      std::thread writer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        append(lines(2, 2));
      });
      EXPECT_EQ(follower.next(timeout), "2");
      writer.join();
    }
}

TEST_F(Following, AWaitEndsWhenItsTimeIsUp) {
  append(lines(1, 1));
  for (const int poll : {0, 1, 1000000}) EXPECT_EQ(StreamFollower(path, WMQ_FROM_END, poll).next(10), "");
}

TEST_F(Following, AWaitEndsWithARotation) {
  append(lines(1, 1));
  for (const int poll : {0, 5}) {
    StreamFollower follower(path, WMQ_FROM_END, poll);
    std::thread writer([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      rotate(100 + poll);
      append(lines(2, 2));
    });
    EXPECT_EQ(follower.next(-1), "rotated");
    EXPECT_EQ(follower.next(-1), "2");
    writer.join();
  }
}

TEST_F(Following, AWaitCanBeEndedFromOutside) {
  append(lines(1, 1));
  for (const int poll : {0, 1000000}) {
    StreamFollower follower(path, WMQ_FROM_END, poll);
    std::thread other([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      wmq_followwake(follower.get());
    });
    EXPECT_EQ(follower.next(-1), "");
    other.join();
    wmq_followwake(follower.get());
    EXPECT_EQ(follower.next(-1), "");
  }
  wmq_followwake(nullptr);
}

TEST_F(Following, AWaitEndsWhenASignalComes) {
  append(lines(1, 1));
  struct sigaction action {};
  struct sigaction former {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, &former);
  for (const int poll : {0, 1000000}) {
    StreamFollower follower(path, WMQ_FROM_END, poll);
    std::atomic<bool> ended = false;
    std::thread other([&, waiting = pthread_self()] {
      while (!ended) {
        pthread_kill(waiting, SIGUSR1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
    EXPECT_EQ(follower.next(-1), "");
    ended = true;
    other.join();
  }
  sigaction(SIGUSR1, &former, nullptr);
}

// It is what a writer leaves that dies over an empty file, and it may do so twice within one second.
TEST_F(Following, TheEndOfAStreamAtItsBeginningTellsNoFileFromAnother) {
  append(endLine);
  const StreamFollower follower(path);  // while it is open, no other file gets its inode
  const std::string atTheBeginning = follower.position();
  StreamFollower second(path);
  EXPECT_EQ(second.next(), "");
  for (const std::string &position : {atTheBeginning, second.position()}) {
    fs::remove(path);
    makeFile(old(100), endLine + lines(5, 6) + endLine);
    append(lines(7, 7));
    StreamFollower resumed(path, position);
    EXPECT_EQ(resumed.next(), "gap") << position;
    StreamFollower moved(path, "1:ffff:" + position.substr(position.find(':', position.find(':') + 1) + 1));
    EXPECT_EQ(moved.next(), "gap") << position;
  }
}

TEST_F(Following, TheEndOfAStreamAtItsBeginningIsNoHindranceWhereTheFileIsKnown) {
  append(endLine);
  const std::string position = StreamFollower(path).position();
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("end in the middle", "1", "rotated", "2"));
}

TEST_F(Following, OtherFilesOfTheDirectoryAreOfNoConcern) {
  append(lines(1, 1));
  StreamFollower follower(path, WMQ_FROM_END);
  for (int i = 0; i < 2000; ++i) appendTo(directory / "other", "x");
  fs::rename(directory / "other", directory / "another");
  EXPECT_EQ(follower.next(), "");
  append(lines(2, 2));
  EXPECT_EQ(follower.next(-1), "2");
}

TEST_F(Following, TwoFollowersKnowNothingOfEachOther) {
  append(lines(1, 3));
  StreamFollower first(path);
  StreamFollower second(path);
  EXPECT_EQ(first.next(), "1");
  EXPECT_EQ(second.next(), "1");
  EXPECT_EQ(first.next(), "2");
  EXPECT_EQ(first.next(), "3");
  EXPECT_EQ(second.next(), "2");
}

TEST_F(Following, ADirectoryThatIsGoneIsWaitedFor) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  const TemporaryDirectory other;
  const fs::path kept = other / "kept";
  for (const int poll : {0, 1}) {
    StreamFollower behindAll(path, WMQ_FROM_OLDEST, poll);
    EXPECT_THAT(behindAll.rest(), ElementsAre("1", "rotated", "2"));
    StreamFollower inTheOldFile(path, WMQ_FROM_OLDEST, poll);
    EXPECT_EQ(inTheOldFile.next(), "1");
    fs::rename(directory.path(), kept);
    for (StreamFollower *const follower : {&behindAll, &inTheOldFile})
      for (int looks = 0; looks < 3; ++looks) EXPECT_EQ(follower->next(), "");
    fs::rename(kept, directory.path());
    append(lines(3, 3));
    EXPECT_THAT(behindAll.rest(), ElementsAre("3"));
    EXPECT_THAT(inTheOldFile.rest(), ElementsAre("rotated", "2", "3"));
    fs::remove(path);
    append(lines(2, 2));
  }
}

TEST_F(Following, ADirectoryWithCopiesInThePlaceOfTheOneThatWasReadIsReadOn) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const TemporaryDirectory other;
  fs::rename(directory.path(), other / "kept");
  EXPECT_EQ(follower.next(), "");
  fs::copy(other / "kept", other / "copy");
  fs::rename(other / "copy", directory.path());
  append(lines(2, 2));
  EXPECT_THAT(follower.rest(), ElementsAre("2"));
}

TEST_F(Following, ADirectoryThatIsNotThereAtTheBeginningIsAFailure) {
  EXPECT_FALSE(StreamFollower(directory / "none/s").isOpen());
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
}  // namespace wmq::testing
