// What the status stream and the pending-reasons stream have in common.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "support/resource_limit.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/line_parser.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int32_t kDefaultSize = 1000000000;
const std::string kEndLine = "\"END_OF_STREAM\" \"10.1\" 1700000500\n";

class SideStreams : public SideStreamTest, public ::testing::WithParamInterface<const SideOperations *> {
 protected:
  SideStreams() : SideStreamTest(*GetParam()) {}

  // The stream that is not tested.
  const SideOperations &other = GetParam() == &kStatus ? kPendingReasons : kStatus;
};

INSTANTIATE_TEST_SUITE_P(Streams, SideStreams, ::testing::Values(&kStatus, &kPendingReasons),
                         [](const auto &kind) { return kind.param->noun; });

// ---------------------------------------------------------------------------------- opening and closing

TEST_P(SideStreams, AreClosedWithoutWaitingForAPipe) {
  ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(GetParam()->close(), 0);
}

TEST_P(SideStreams, CreateTheirFileWithPermissions0644) {
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(contentOf(path), "");
  EXPECT_EQ(permissionsOf(path), 0644U);
}

TEST_P(SideStreams, AppendToAFileThatIsThere) {
  makeFile(path, "what was there\n");
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(write(7), 0);
  EXPECT_EQ(contentOf(path), "what was there\n" + lineOf(7));
}

TEST_P(SideStreams, TakeNoPathButTheirOwn) {
  std::string event = directory / "event";
  std::string status = directory / "status";
  std::string reasons = directory / "reasons";
  const streamParams params{event.data(), 0, 3, 0, nullptr, status.data(), reasons.data()};
  ASSERT_EQ(side.open(&params), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre(&side == &kStatus ? "status" : "reasons"));
}

TEST_P(SideStreams, RefuseMissingParametersAndStayAsTheyAre) {
  EXPECT_EQ(side.open(nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(side.close(), -1) << "not open";
  ASSERT_EQ(open(), 0);
  wmq_errno = 0;
  EXPECT_EQ(side.open(nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(contentOf(path), lineOf(1));
}

TEST_P(SideStreams, ChangeNothingWhenTheSamePathIsOpen) {
  ASSERT_EQ(open({.size = 500}), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(readNumber(), 1);
  wmq_errno = 99;
  EXPECT_EQ(open({.size = 600, .oldFiles = 1}), 0);
  EXPECT_EQ(wmq_errno, 99);
  EXPECT_THAT(trace.messages, ElementsAre(opened(path, 500)));
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(readNumber(), 2) << "reading goes on where it was";
}

TEST_P(SideStreams, CloseWhatIsOpenForAnotherPath) {
  ASSERT_EQ(open({.size = 500}), 0);
  const int descriptors = openDescriptors();
  EXPECT_EQ(openAs(directory / "next", {.size = 600}), 0);
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_THAT(trace.messages,
              ElementsAre(opened(path, 500), closed(path, 500), opened(directory / "next", 600)));
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(path), "");
  EXPECT_EQ(contentOf(directory / "next"), lineOf(2));
}

TEST_P(SideStreams, TakeAnotherSpellingOfAPathForAnotherPath) {
  ASSERT_EQ(open({.size = 500}), 0);
  EXPECT_EQ(openAs(directory / "./side", {.size = 500}), 0);
  EXPECT_THAT(trace.messages,
              ElementsAre(opened(path, 500), closed(path, 500), opened(directory / "./side", 500)));
}

TEST_P(SideStreams, CloseWhatIsOpenForNoPathEvenWhenThatIsTheDefault) {
  const SharedPath shared(side.defaultPath);
  ASSERT_EQ(open({.size = 500}), 0);
  const streamParams params{nullptr, 0, 3, 1, TraceRecorder::record, nullptr, nullptr};
  ASSERT_EQ(side.open(&params), 0);
  ASSERT_EQ(side.open(&params), 0);
  EXPECT_THAT(trace.messages,
              ElementsAre(opened(path, 500), closed(path, 500), opened(side.defaultPath, kDefaultSize),
                          closed(side.defaultPath, kDefaultSize), opened(side.defaultPath, kDefaultSize)));
  EXPECT_TRUE(exists(side.defaultPath));
  EXPECT_EQ(side.close(), 0);
}

TEST_P(SideStreams, AreClosedWhenAnotherPathCannotBeOpened) {
  ASSERT_EQ(open({.size = 500}), 0);
  wmq_errno = 0;
  errno = 0;
  EXPECT_EQ(openAs(directory / "missing/side"), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_THAT(trace.messages, ElementsAre(opened(path, 500), closed(path, 500)));
  EXPECT_EQ(side.close(), -1);
}

TEST_P(SideStreams, LeaveNothingBehindWhenTheyCannotBeOpened) {
  const int descriptors = openDescriptors();
  EXPECT_EQ(openAs(directory.path()), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_EQ(side.close(), -1);
}

TEST_P(SideStreams, UseTheDefaultSizeForNoneOrANegativeOne) {
  for (const int32_t size : {-5, 0, INT32_MIN}) {
    ASSERT_EQ(open({.size = size}), 0);
    EXPECT_EQ(trace.messages.back(), opened(path, kDefaultSize)) << "given " << size;
    side.close();
  }
}

TEST_P(SideStreams, StandBesideTheOthers) {
  std::string names[] = {directory / "event", directory / "status", directory / "reasons"};
  const streamParams params{names[0].data(), 0, 3, 0, nullptr, names[1].data(), names[2].data()};
  ASSERT_EQ(wmq_openstream(&params), 0);
  ASSERT_EQ(side.open(&params), 0);
  ASSERT_EQ(other.open(&params), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(other.close(), 0);
  EXPECT_EQ(wmq_closestream(), 0);
  EXPECT_EQ(write(2), 0) << "still open";
  EXPECT_EQ(contentOf(names[&side == &kStatus ? 1 : 2]), lineOf(1) + lineOf(2));
  EXPECT_EQ(contentOf(names[0]), "");
}

// ---------------------------------------------------------------------------------- writing

TEST_P(SideStreams, FailToWriteWhenTheyAreNotOpenAndSayNothing) {
  wmq_errno = 99;
  EXPECT_EQ(write(1), -1);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_P(SideStreams, RefuseAMissingRecord) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(side.write(nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(contentOf(path), "");
}

TEST_P(SideStreams, WriteHeaderFieldsAndLineEndAndClearTheErrorNumber) {
  ASSERT_EQ(open(), 0);
  wmq_errno = 99;
  eventRecord record = numbered(5);
  std::snprintf(record.version, sizeof record.version, "3.0");
  EXPECT_EQ(write(record), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(contentOf(path), lineOf(5)) << "in the current version, whatever the record says";
}

TEST_P(SideStreams, FormatWhatTheyWrite) {
  eventRecord record = numbered(5);
  char *text = nullptr;
  size_t length = 0;
  EXPECT_EQ(side.format(&record, &text, &length), 0);
  EXPECT_EQ(std::string(text, length), lineOf(5));
  std::free(text);
  record.type = EVENT_JOB_FINISH;
  wmq_errno = 99;
  EXPECT_EQ(side.format(&record, &text, &length), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(text, nullptr) << "a record that is dropped has no text";
  EXPECT_EQ(length, 0U);
  record.type = EVENT_JOB_STATUS;
  EXPECT_EQ(side.format(&record, &text, &length), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
}

TEST_P(SideStreams, FailWhenTheSystemTakesNoMore) {
  ASSERT_EQ(open(), 0);
  ASSERT_EQ(write(1), 0);
  {
    const ResourceLimit size(RLIMIT_FSIZE, lineOf(1).size());
    errno = 0;
    EXPECT_EQ(write(2), -1);
    EXPECT_EQ(errno, EFBIG);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
  }
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(contentOf(path), lineOf(1) + lineOf(3));
}

// --------------------------------------------------------------------------------- rotation

class RotatingSideStreams : public SideStreams {
 protected:
  // A full file, opened, and the call that checks the size.
  int rotate(const Limits &limits) {
    makeFile(path, "full\n");
    if (open(limits) != 0) throw std::runtime_error("cannot open " + path);
    advanceToCheck();
    trace.messages.clear();
    wmq_errno = 0;
    return write(1);
  }

  ScriptedClock clock{1700000500};
  const std::string rotated = path + ".1700000500";
};

INSTANTIATE_TEST_SUITE_P(Streams, RotatingSideStreams, ::testing::Values(&kStatus, &kPendingReasons),
                         [](const auto &kind) { return kind.param->noun; });

TEST_P(RotatingSideStreams, RotateBeforeEvery100thCallOfTheirOwn) {
  ASSERT_EQ(open({.size = 1}), 0);
  std::string lines;
  for (int32_t number = 1; number < 100; ++number) {
    ASSERT_EQ(write(number), 0);
    lines += lineOf(number);
  }
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side"));
  EXPECT_EQ(write(100), 0);
  EXPECT_EQ(contentOf(rotated), lines + kEndLine);
  EXPECT_EQ(contentOf(path), lineOf(100));
  clock.now += 100;
  for (int32_t number = 101; number < 200; ++number) ASSERT_EQ(write(number), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side", "side.1700000500"));
  EXPECT_EQ(write(200), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side", "side.1700000500", "side.1700000600"));
}

TEST_P(RotatingSideStreams, CountCallsThatWriteNothing) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  for (int call = 0; call < 50; ++call) EXPECT_EQ(write(bareRecord(EVENT_JOB_NEW)), 0);
  for (int call = 0; call < 25; ++call) EXPECT_EQ(write(bareRecord(EVENT_JOB_STATUS)), -1);
  for (int call = 0; call < 24; ++call) EXPECT_EQ(side.write(nullptr), -1);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side"));
  EXPECT_EQ(write(bareRecord(EVENT_JOB_NEW)), 0);
  EXPECT_EQ(contentOf(rotated), "full\n" + kEndLine);
  EXPECT_EQ(contentOf(path), "") << "the record is dropped all the same";
}

TEST_P(RotatingSideStreams, DoNotCountTheCallsOfOtherStreams) {
  std::string names[] = {directory / "event", directory / "status", directory / "reasons"};
  const streamParams params{names[0].data(), 1, 3, 0, nullptr, names[1].data(), names[2].data()};
  ASSERT_EQ(wmq_openstream(&params), 0);
  ASSERT_EQ(side.open(&params), 0);
  ASSERT_EQ(other.open(&params), 0);
  const std::string own = names[&side == &kStatus ? 1 : 2];
  eventRecord event = logSwitch(1);
  eventRecord sample = bareRecord(other.type);
  for (int32_t number = 1; number < 100; ++number) {
    ASSERT_EQ(write(number), 0);
    for (int call = 0; call < 2; ++call) {
      ASSERT_EQ(wmq_writestream(&event), 0);
      ASSERT_EQ(other.write(&sample), 0);
    }
  }
  EXPECT_FALSE(exists(own + ".1700000500"));
  EXPECT_EQ(write(100), 0);
  EXPECT_TRUE(exists(own + ".1700000500"));
  EXPECT_EQ(other.close(), 0);
  EXPECT_EQ(wmq_closestream(), 0);
}

TEST_P(RotatingSideStreams, CheckTheirSizeEvenWhenTheEventStreamHasJustCheckedItsOwn) {
  std::string event = directory / "event";
  makeFile(event, "full\n");
  const streamParams params{event.data(), 1, 3, 0, nullptr, nullptr, nullptr};
  ASSERT_EQ(wmq_openstream(&params), 0);
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  advanceToCheck();
  eventRecord record = logSwitch(1);
  for (int call = 0; call < 100 && !exists(event + ".1700000500"); ++call)
    ASSERT_EQ(wmq_writestream(&record), 0);
  ASSERT_TRUE(exists(event + ".1700000500"));
  EXPECT_EQ(write(1), 0);
  EXPECT_TRUE(exists(rotated));
  EXPECT_EQ(wmq_closestream(), 0);
}

TEST_P(RotatingSideStreams, KeepCountingThroughClosingAndOpening) {
  ASSERT_EQ(open({.size = 1}), 0);
  for (int32_t number = 1; number < 61; ++number) ASSERT_EQ(write(number), 0);
  ASSERT_EQ(openAs(directory / "next", {.size = 1}), 0);
  for (int32_t number = 61; number < 100; ++number) ASSERT_EQ(write(number), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("next", "side"));
  EXPECT_EQ(write(100), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("next", "next.1700000500", "side"));
}

TEST_P(RotatingSideStreams, LeaveAFileBelowTheLimitAlone) {
  EXPECT_EQ(rotate({.size = 6}), 0);
  EXPECT_EQ(contentOf(path), "full\n" + lineOf(1));
}

TEST_P(RotatingSideStreams, DoNotTellThatOldFilesWereRemoved) {
  makeFile(path + ".100");
  EXPECT_EQ(rotate({.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(wmq_errno, 0) << "not WMQE_FILES_REMOVED";
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side", "side.1700000500"));
}

TEST_P(RotatingSideStreams, ReportARotationOnceAndNoRemoval) {
  makeFile(path + ".100");
  EXPECT_EQ(rotate({.size = 5, .oldFiles = 1}), 0);
  EXPECT_THAT(trace.messages, ElementsAre("reset" + std::string(side.noun) + "(): " + side.noun + ' ' + path +
                                          " reset all right maxsize 5"));
}

TEST_P(RotatingSideStreams, ReportARemovalAsTheEventStreamIsToldTo) {
  static std::vector<std::string> heardByEventStream;
  heardByEventStream.clear();
  std::string event = directory / "event";
  const streamParams params{event.data(),
                            0,
                            3,
                            1,
                            [](const char *message) {
                              heardByEventStream.emplace_back(message);
                              return 0;
                            },
                            nullptr,
                            nullptr};
  ASSERT_EQ(wmq_openstream(&params), 0);
  heardByEventStream.clear();
  makeFile(path + ".100");
  EXPECT_EQ(rotate({.size = 1, .oldFiles = 1}), 0);
  EXPECT_THAT(heardByEventStream,
              ElementsAre("deleteoldfiles(): Removing oldest stream file " + path + ".100 "));
  EXPECT_EQ(trace.messages.size(), 1U) << "the rotation itself";
  EXPECT_EQ(wmq_closestream(), 0);
}

TEST_P(RotatingSideStreams, FailAsTheCountOfOldFilesFails) {
  EXPECT_EQ(rotate({.size = 1, .oldFiles = 0}), -1);
  EXPECT_EQ(wmq_errno, 0) << "says nothing";
  EXPECT_EQ(contentOf(path), "full\n") << "the record is lost";
  side.close();
  makeFile(path + ".007");  // counted, and not found under that number
  EXPECT_EQ(rotate({.size = 1, .oldFiles = 1}), -2);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
}

TEST_P(RotatingSideStreams, FailWhenTheFileCannotBeRenamedUntilTheyAreOpenedAnew) {
  clock.whenRead = [this] {
    if (clock.readings == 2) std::remove(path.c_str());
  };
  EXPECT_EQ(rotate({.size = 1}), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_THAT(trace.messages, IsEmpty());
  wmq_errno = 99;
  EXPECT_EQ(write(2), -1);
  EXPECT_EQ(wmq_errno, 99) << "no file is open";
  EXPECT_EQ(side.close(), 0);
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(contentOf(path), lineOf(3));
}

// ---------------------------------------------------------------------------------- reading

TEST_P(SideStreams, ReadTheirRecordsInOrderAndThenTheEnd) {
  makeFile(path, lineOf(1) + lineOf(2));
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(lineNum, 2);
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_EOF);
  EXPECT_EQ(lineNum, 3) << "this call counts as well";
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(readNumber(), 3) << "what was written since";
}

TEST_P(SideStreams, SkipCommentsWithoutCountingThem) {
  makeFile(path, "# one\n#\n" + lineOf(1) + "# two\n" + lineOf(2) + "# three\n");
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(lineNum, 1);
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(lineNum, 2);
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_EOF);
}

TEST_P(SideStreams, TakeNothingButCommentsForTheEnd) {
  makeFile(path, "# one\n# two\n# three\n");
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_EOF);
  EXPECT_EQ(lineNum, 1);
}

TEST_P(SideStreams, ReadLinesOfAnyType) {
  makeFile(path, logSwitchLine(5) + kEndLine + other.noun + "\n\"NO_TYPE\" \"10.1\" 5\n" + lineOf(1));
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(side.read(&lineNum)->type, EVENT_LOG_SWITCH);
  EXPECT_EQ(side.read(&lineNum)->type, EVENT_END_OF_STREAM);
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT);
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
  wmq_errno = 0;
  EXPECT_EQ(readNumber(), 1) << "goes on behind the bad lines";
  EXPECT_EQ(lineNum, 5);
}

TEST_P(SideStreams, CannotBeReadWhenTheyAreNotOpen) {
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

TEST_P(SideStreams, ResetTheirReaderWithoutACounterAndGoOnWhereTheyWere) {
  makeFile(path, lineOf(1) + lineOf(2));
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(side.read(nullptr), nullptr);
  EXPECT_EQ(readNumber(), 2);
}

TEST_P(SideStreams, ShareOneRecordWithEveryOtherRead) {
  std::string names[] = {directory / "event", directory / "status", directory / "reasons"};
  makeFile(names[0], logSwitchLine(1));
  makeFile(names[1], logSwitchLine(2));
  makeFile(names[2], logSwitchLine(3));
  const streamParams params{names[0].data(), 0, 3, 0, nullptr, names[1].data(), names[2].data()};
  ASSERT_EQ(wmq_openstream(&params), 0);
  ASSERT_EQ(side.open(&params), 0);
  ASSERT_EQ(other.open(&params), 0);

  // Each releases what the one before it returned, or the sanitizers and valgrind find it lost.
  const eventRecord *record = side.read(&lineNum);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logRec, record);
  record = other.read(&lineNum);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logRec, record);
  record = wmq_readstream(&lineNum);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logRec, record);
  record = wmq_readstreamline(logSwitchLine(4).c_str());
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logRec, record);
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(logRec, record) << "the end of the stream releases nothing";
  EXPECT_EQ(other.close(), 0);
  EXPECT_EQ(wmq_closestream(), 0);
}

TEST_P(SideStreams, ReleaseTheLastRecordBeforeALineThatDoesNotParse) {
  makeFile(path, lineOf(1) + "rubbish\n");
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(side.read(&lineNum), nullptr);
  EXPECT_EQ(logRec, nullptr);
}

// ---------------------------------------------------------------------------------- closing

TEST_P(SideStreams, CannotBeClosedTwice) {
  wmq_errno = 99;
  EXPECT_EQ(side.close(), -1);
  EXPECT_EQ(wmq_errno, 99);
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(side.close(), 0);
  EXPECT_EQ(side.close(), -1);
}

TEST_P(SideStreams, SayThatTheyAreAtTheEndWhenTheyAreClosed) {
  makeFile(path, lineOf(1) + lineOf(2));
  ASSERT_EQ(open(), 0);
  const eventRecord *record = side.read(&lineNum);
  wmq_errno = 0;
  EXPECT_EQ(side.close(), 0);
  EXPECT_EQ(wmq_errno, WMQE_EOF);
  EXPECT_EQ(logRec, record) << "what was read last still stands";
  EXPECT_EQ(lineNum, 1);
}

TEST_P(SideStreams, ReportTheirClosingAndClearTheText) {
  ASSERT_EQ(open({.size = 4096}), 0);
  const int descriptors = openDescriptors();
  trace.messages.clear();
  EXPECT_EQ(side.close(), 0);
  EXPECT_EQ(openDescriptors(), descriptors - 1);
  EXPECT_THAT(trace.messages, ElementsAre(closed(path, 4096)));
  EXPECT_STREQ(trace.lastText, "");
}

TEST_P(SideStreams, ReportNothingWithoutTheFlag) {
  std::string name = path;
  streamParams params{nullptr, 0, 3, 0, TraceRecorder::record, nullptr, nullptr};
  params.*side.path = name.data();
  ASSERT_EQ(side.open(&params), 0);
  EXPECT_EQ(side.close(), 0);
  EXPECT_THAT(trace.messages, IsEmpty());
}

}  // namespace
}  // namespace wmq::testing
