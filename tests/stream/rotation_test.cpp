#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/scripted_clock.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

const std::string kEndLine = "\"END_OF_STREAM\" \"10.1\" 1700000500\n";

class RotatingAStream : public StreamTest {
 protected:
  // The record of that number, by a call that checks the size.
  int writeWithCheck(int32_t number) {
    advanceToCheck();
    return write(number);
  }

  // Records from `first` on, up to the one before `last`.
  void writeAll(int32_t first, int32_t last) {
    for (int32_t number = first; number < last; ++number) ASSERT_EQ(write(number), 0) << number;
  }

  static std::string lines(int32_t first, int32_t last) {
    std::string text;
    for (int32_t number = first; number < last; ++number) text += logSwitchLine(number);
    return text;
  }

  ScriptedClock clock{1700000500};
  const std::string rotated = path + ".1700000500";
};

// ---------------------------------------------------------------- when the size is checked

TEST_F(RotatingAStream, HappensBeforeThe100thCallAndNotEarlier) {
  ASSERT_EQ(open({.size = 1}), 0);
  writeAll(1, 100);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
  EXPECT_EQ(write(100), 0);
  EXPECT_EQ(contentOf(rotated), lines(1, 100) + kEndLine);
  EXPECT_EQ(contentOf(path), lines(100, 101));
}

TEST_F(RotatingAStream, HappensAgainBeforeThe200thCallAndNotEarlier) {
  ASSERT_EQ(open({.size = 1}), 0);
  writeAll(1, 101);
  clock.now += 100;
  writeAll(101, 200);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
  EXPECT_EQ(write(200), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500", "s.1700000600"));
  EXPECT_EQ(contentOf(path), lines(200, 201));
}

TEST_F(RotatingAStream, CountsCallsThatFailOrWriteNothing) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  for (int call = 0; call < 25; ++call) EXPECT_EQ(write(bareRecord(31)), -1);
  for (int call = 0; call < 25; ++call) EXPECT_EQ(write(bareRecord(60)), 0);
  for (int call = 0; call < 25; ++call) EXPECT_EQ(write(bareRecord(EVENT_END_OF_STREAM)), -1);
  for (int call = 0; call < 24; ++call) EXPECT_EQ(wmq_writestream(nullptr), -1);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
  wmq_errno = 0;
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(contentOf(rotated), "full\n" + kEndLine);
}

TEST_F(RotatingAStream, DoesNotCountCallsWithoutAStream) {
  eventRecord record = logSwitch(1);
  for (int call = 0; call < 99; ++call) EXPECT_EQ(wmq_writestream(&record), -1);
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  writeAll(1, 100);
  EXPECT_FALSE(exists(rotated));
  EXPECT_EQ(write(100), 0);
  EXPECT_TRUE(exists(rotated));
}

TEST_F(RotatingAStream, KeepsCountingThroughClosingAndOpening) {
  ASSERT_EQ(open({.size = 1}), 0);
  writeAll(1, 61);
  wmq_closestream();
  ASSERT_EQ(openAs(directory / "t", {.size = 1}), 0);
  writeAll(61, 100);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "t"));
  EXPECT_EQ(write(100), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "t", "t.1700000500"));
}

// -------------------------------------------------------------------------------- the size

TEST_F(RotatingAStream, LeavesAFileOfOneByteLessThanTheLimitAlone) {
  makeFile(path, std::string(999, 'x'));
  ASSERT_EQ(open({.size = 1000}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
  EXPECT_EQ(contentOf(path), std::string(999, 'x') + logSwitchLine(1));
}

TEST_F(RotatingAStream, HappensForAFileOfExactlyTheLimit) {
  makeFile(path, std::string(1000, 'x'));
  ASSERT_EQ(open({.size = 1000}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  EXPECT_EQ(contentOf(rotated), std::string(1000, 'x') + kEndLine);
  EXPECT_EQ(contentOf(path), logSwitchLine(1));
}

TEST_F(RotatingAStream, LeavesAnEmptyFileAlone) {
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
}

TEST_F(RotatingAStream, NeverHappensWhenNoOldFilesAreKept) {
  for (const int32_t oldFiles : {0, -1}) {
    SCOPED_TRACE(oldFiles);
    makeFile(path, "full\n");
    ASSERT_EQ(open({.size = 1, .oldFiles = oldFiles}), 0);
    std::string expected = "full\n";
    for (int round = 0; round < 3; ++round) {
      writeAll(1, 100);
      EXPECT_EQ(write(100), -1) << "every 100th call fails";
      EXPECT_EQ(wmq_errno, 0) << "and says nothing";
      expected += lines(1, 100);
    }
    EXPECT_EQ(contentOf(path), expected);
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
    wmq_closestream();
  }
}

TEST_F(RotatingAStream, DoesNotNeedOldFilesBelowTheLimit) {
  ASSERT_EQ(open({.size = 1000000, .oldFiles = 0}), 0);
  writeAll(1, 301);
  EXPECT_EQ(contentOf(path), lines(1, 301));
}

// ----------------------------------------------------------------------- what it leaves

TEST_F(RotatingAStream, ReadsTheTimeAgainForTheEndOfStreamLine) {
  clock.whenRead = [this] { clock.now = 1700000500 + 7 * clock.readings; };
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000507"));
  EXPECT_EQ(contentOf(path + ".1700000507"), "full\n\"END_OF_STREAM\" \"10.1\" 1700000514\n");
}

TEST_F(RotatingAStream, GivesTheNewFilePermissions0644) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  const mode_t mask = umask(077);
  EXPECT_EQ(writeWithCheck(1), 0);
  umask(mask);
  EXPECT_EQ(permissionsOf(path), 0644U);
  EXPECT_EQ(permissionsOf(rotated), 0644U);
}

TEST_F(RotatingAStream, AppendsToTheNewFileWhateverOthersWriteToIt) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  appendTo(path, "# by another program\n");
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(path), logSwitchLine(1) + "# by another program\n" + logSwitchLine(2));
}

TEST_F(RotatingAStream, KeepsOneDescriptorOpen) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  const int descriptors = openDescriptors();
  for (int32_t number = 1; number < 5; ++number) ASSERT_EQ(writeWithCheck(number), 0);
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(RotatingAStream, WorksOnANameInTheCurrentDirectory) {
  const CurrentDirectory here(directory.path());
  makeFile("./s", "full\n");
  ASSERT_EQ(openAs("./s", {.size = 1}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  EXPECT_THAT(namesIn("."), ElementsAre("s", "s.1700000500"));
}

TEST_F(RotatingAStream, RenamesALinkAndLeavesWhatItPointsTo) {
  makeFile(directory / "target", "full\n");
  ASSERT_EQ(symlink((directory / "target").c_str(), path.c_str()), 0);
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  EXPECT_EQ(contentOf(directory / "target"), "full\n" + kEndLine);
  EXPECT_EQ(contentOf(rotated), "full\n" + kEndLine);
  EXPECT_EQ(contentOf(path), logSwitchLine(1));
}

// ---------------------------------------------------------------------- removed old files

TEST_F(RotatingAStream, RemovesTheOldestFileAndSaysSo) {
  for (const char *name : {"s.100", "s.200", "s.300", "s.abc"}) makeFile(directory / name, name);
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 3}), 0);
  advanceToCheck();
  wmq_errno = 0;
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500", "s.200", "s.300", "s.abc"));
}

TEST_F(RotatingAStream, SaysNothingWhenNoFileWasRemoved) {
  makeFile(directory / "s.100");
  makeFile(directory / "s.200");
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 3}), 0);
  advanceToCheck();
  wmq_errno = 0;
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.100", "s.1700000500", "s.200"));
}

TEST_F(RotatingAStream, SaysItOfOneCallOnly) {
  makeFile(directory / "s.100");
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(writeWithCheck(1), 0);
  ASSERT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(wmq_errno, 0);
}

TEST_F(RotatingAStream, TakesAnOldWordOfRemovedFilesForItsOwn) {
  ASSERT_EQ(open(), 0);
  advanceToCheck();
  wmq_errno = WMQE_FILES_REMOVED;
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED) << "nothing was removed, but the number was not cleared before";
}

TEST_F(RotatingAStream, FailsAHeaderWithoutFieldsWhenItRemovesFiles) {
  makeFile(directory / "s.100");
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  advanceToCheck();
  wmq_errno = 0;
  EXPECT_EQ(write(bareRecord(EVENT_JOB_VACATED)), -1) << "such a type leaves the number as it is";
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  EXPECT_EQ(contentOf(path), "\"JOB_VACATED\" \"10.1\" 1700000000");
}

TEST_F(RotatingAStream, HappensEvenWhenTheRecordIsDroppedOrRefused) {
  makeFile(directory / "s.100");
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  advanceToCheck();
  EXPECT_EQ(write(bareRecord(60)), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
  EXPECT_EQ(contentOf(path), "");

  EXPECT_EQ(write(1), 0);
  clock.now += 1;
  advanceToCheck();
  EXPECT_EQ(write(bareRecord(0)), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000501"));
}

TEST_F(RotatingAStream, KeepsTheNewestOldFilesAndLosesNoRecordOfThem) {
  ASSERT_EQ(open({.size = 1, .oldFiles = 4}), 0);
  for (int32_t number = 1; number <= 1000; ++number) {
    clock.now = 1700000000 + number;
    ASSERT_EQ(write(number), 0) << number;
  }
  EXPECT_THAT(namesIn(directory.path()),
              ElementsAre("s", "s.1700000700", "s.1700000800", "s.1700000900", "s.1700001000"));
  EXPECT_EQ(contentOf(path + ".1700000700"), lines(600, 700) + "\"END_OF_STREAM\" \"10.1\" 1700000700\n");
  EXPECT_EQ(contentOf(path + ".1700001000"), lines(900, 1000) + "\"END_OF_STREAM\" \"10.1\" 1700001000\n");
  EXPECT_EQ(contentOf(path), lines(1000, 1001));
}

TEST_F(RotatingAStream, NeverRemovesOldFilesOfABareName) {
  const CurrentDirectory here(directory.path());
  for (const char *name : {"s.100", "s.200", "s.300"}) makeFile(name);
  makeFile("s", "full\n");
  ASSERT_EQ(openAs("s", {.size = 1, .oldFiles = 1}), 0);
  advanceToCheck();
  wmq_errno = 0;
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_THAT(namesIn("."), ElementsAre("s", "s.100", "s.1700000500", "s.200", "s.300"));
}

}  // namespace
}  // namespace wmq::testing
