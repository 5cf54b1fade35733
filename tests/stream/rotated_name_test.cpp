#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>

#include "support/scripted_clock.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

class NamingARotatedFile : public StreamTest {
 protected:
  // One record, then a rotation that begins a new file with the next number.
  int rotate(int32_t number) {
    if (number == 1) write(0);
    advanceToCheck();
    wmq_errno = 0;
    return write(number);
  }

  // The records of a rotated file: one line, and the end of the stream.
  std::string recordOf(const std::string &suffix) const {
    const std::string content = contentOf(path + "." + suffix);
    return content.substr(0, content.find('\n') + 1);
  }

  std::vector<std::string> names() const { return namesIn(directory.path()); }
};

TEST_F(NamingARotatedFile, TakesTheTimeOfTheSystem) {
  ASSERT_EQ(open({.size = 1}), 0);
  const time_t before = std::time(nullptr);
  ASSERT_EQ(rotate(1), 0);
  const time_t after = std::time(nullptr);
  ASSERT_THAT(names(), SizeIs(2));
  const long suffix = std::stol(names()[1].substr(2));
  EXPECT_GE(suffix, before);
  EXPECT_LE(suffix, after);
}

TEST_F(NamingARotatedFile, GoesOneFurtherForEachRotationWithinASecond) {
  const ScriptedClock clock(1700000000);
  ASSERT_EQ(open({.size = 1, .oldFiles = 100}), 0);
  for (int32_t number = 1; number <= 20; ++number) ASSERT_EQ(rotate(number), 0);
  ASSERT_THAT(names(), SizeIs(21));
  for (int32_t number = 0; number < 20; ++number)
    EXPECT_EQ(recordOf(std::to_string(1700000000 + number)), logSwitchLine(number));
}

TEST_F(NamingARotatedFile, KeepsTheOrderOfWritingWhenTheClockIsSetBack) {
  ScriptedClock clock(1700000000);
  ASSERT_EQ(open({.size = 1, .oldFiles = 100}), 0);
  ASSERT_EQ(rotate(1), 0);
  clock.now = 1600000000;
  ASSERT_EQ(rotate(2), 0);
  clock.now = 0;
  ASSERT_EQ(rotate(3), 0);
  clock.now = 1700000001;
  ASSERT_EQ(rotate(4), 0);
  clock.now = 1700009999;
  ASSERT_EQ(rotate(5), 0);
  EXPECT_THAT(names(), ElementsAre("s", "s.1700000000", "s.1700000001", "s.1700000002", "s.1700000003",
                                   "s.1700009999"));
  EXPECT_EQ(recordOf("1700000001"), logSwitchLine(1));
  EXPECT_EQ(recordOf("1700000002"), logSwitchLine(2));
  EXPECT_EQ(recordOf("1700000003"), logSwitchLine(3));
  EXPECT_EQ(recordOf("1700009999"), logSwitchLine(4));
}

TEST_F(NamingARotatedFile, PutsTheTimeOfTheClockInTheEndOfStreamLineWhateverTheSuffixIs) {
  makeFile(path + ".1700000100");
  const ScriptedClock clock(1700000000);
  ASSERT_EQ(open({.size = 1}), 0);
  ASSERT_EQ(rotate(1), 0);
  EXPECT_EQ(contentOf(path + ".1700000101"), logSwitchLine(0) + "\"END_OF_STREAM\" \"10.1\" 1700000000\n");
}

TEST_F(NamingARotatedFile, GoesBackToTheTimeWhenTheLaterFileIsRemoved) {
  makeFile(path + ".1700000100");
  const ScriptedClock clock(1700000000);
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  ASSERT_EQ(rotate(1), 0);
  EXPECT_THAT(names(), ElementsAre("s", "s.1700000000"));
  EXPECT_EQ(recordOf("1700000000"), logSwitchLine(0));
}

TEST_F(NamingARotatedFile, GoesBeyondAnythingThatHasSuchAName) {
  const ScriptedClock clock(1700000000);
  mkdir((path + ".1700000010").c_str(), 0755);
  ASSERT_EQ(open({.size = 1, .oldFiles = 100}), 0);
  ASSERT_EQ(rotate(1), 0);
  EXPECT_TRUE(exists(path + ".1700000011"));

  ASSERT_EQ(symlink("/nowhere", (path + ".1700000020").c_str()), 0);
  ASSERT_EQ(rotate(2), 0);
  EXPECT_TRUE(exists(path + ".1700000021"));

  ASSERT_EQ(mkfifo((path + ".1700000030").c_str(), 0644), 0);
  ASSERT_EQ(rotate(3), 0);
  EXPECT_TRUE(exists(path + ".1700000031"));
}

TEST_F(NamingARotatedFile, TakesNoNoticeOfNamesThatOnlyLookSimilar) {
  const ScriptedClock clock(1700000000);
  for (const char *name :
       {"s.1800000000x", "s.x.1800000000", "s1.1800000000", "as.1800000000", "s.1800000000.", "s..1800000000",
        ".s.1800000000", "1800000000", "s.-1800000000", "s.+", "s."})
    makeFile(directory / name);
  ASSERT_EQ(open({.size = 1}), 0);
  ASSERT_EQ(rotate(1), 0);
  EXPECT_TRUE(exists(path + ".1700000000"));
}

TEST_F(NamingARotatedFile, ReadsSuffixesWithSignsAndLeadingZerosAsTheNumbersTheyAre) {
  const ScriptedClock clock(1700000000);
  makeFile(path + ".+1700000005");
  makeFile(path + ".001700000007");
  ASSERT_EQ(open({.size = 1, .oldFiles = 100}), 0);
  ASSERT_EQ(rotate(1), 0);
  EXPECT_TRUE(exists(path + ".1700000008"));
}

TEST_F(NamingARotatedFile, NeverOverwritesOldFilesOfABareName) {
  const CurrentDirectory here(directory.path());
  const ScriptedClock clock(1700000000);
  ASSERT_EQ(openAs("s", {.size = 1, .oldFiles = 1}), 0);
  for (int32_t number = 1; number <= 3; ++number) ASSERT_EQ(rotate(number), 0);
  EXPECT_THAT(names(), ElementsAre("s", "s.1700000000", "s.1700000001", "s.1700000002"));
  for (int32_t number = 0; number < 3; ++number)
    EXPECT_EQ(recordOf(std::to_string(1700000000 + number)), logSwitchLine(number));
}

TEST_F(NamingARotatedFile, NeverOverwritesOldFilesOfANameWithABackslash) {
  const CurrentDirectory here(directory.path());
  mkdir("sub", 0755);
  const ScriptedClock clock(1700000000);
  ASSERT_EQ(openAs("sub\\s", {.size = 1, .oldFiles = 1}), 0);
  for (int32_t number = 1; number <= 3; ++number) ASSERT_EQ(rotate(number), 0);
  EXPECT_THAT(names(),
              ElementsAre("sub", "sub\\s", "sub\\s.1700000000", "sub\\s.1700000001", "sub\\s.1700000002"));
}

// -------------------------------------------------------- where suffixes come to an end

TEST_F(NamingARotatedFile, GoesUpToTheLastSuffixThatCanBeRemoved) {
  const ScriptedClock clock(1700000000);
  makeFile(path + ".2147483645");
  ASSERT_EQ(open({.size = 1}), 0);
  ASSERT_EQ(rotate(1), 0);
  EXPECT_EQ(recordOf("2147483646"), logSwitchLine(0));
}

TEST_F(NamingARotatedFile, LeavesSuffixesBeyondTheLastOneAside) {
  const ScriptedClock clock(1700000000);
  for (const char *suffix : {"2147483646", "2147483647", "99999999999999999999"})
    makeFile(path + "." + suffix);
  ASSERT_EQ(open({.size = 1, .oldFiles = 100}), 0);
  ASSERT_EQ(rotate(1), 0);
  EXPECT_EQ(recordOf("1700000000"), logSwitchLine(0));
}

TEST_F(NamingARotatedFile, OverwritesNothingEvenWhenNoSuffixIsLeft) {
  const ScriptedClock clock(1700000000);
  makeFile(path + ".2147483645", "the last but one\n");
  makeFile(path + ".2147483646", "the last one\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 100}), 0);
  rotate(1);
  EXPECT_EQ(contentOf(path + ".2147483645"), "the last but one\n");
  EXPECT_EQ(contentOf(path + ".2147483646"), "the last one\n");
}

TEST_F(NamingARotatedFile, OverwritesNothingAfterTheClockHasPassedTheLastSuffix) {
  const ScriptedClock clock(3000000000);
  makeFile(path + ".3000000000", "of the same second\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 100}), 0);
  rotate(1);
  EXPECT_EQ(contentOf(path + ".3000000000"), "of the same second\n");
}

// ------------------------------------------------------------------------- long names

class RotatingALongName : public NamingARotatedFile {
 protected:
  // Another name of the stream's path, of any length from some hundred to 4095 characters.
  std::string nameOf(size_t length) const {
    std::string name = directory.path();
    while (name.size() + 4 <= length) name += "/.";
    name.append(length - name.size() - 1, '/').append("s");
    return name;
  }

  const ScriptedClock clock{1700000000};
};

TEST_F(RotatingALongName, WorksUpTo4095CharactersOfTheRotatedName) {
  ASSERT_EQ(openAs(nameOf(4095 - 11), {.size = 1, .oldFiles = 1}), 0);
  makeFile(path + ".1600000000");
  EXPECT_EQ(rotate(1), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  EXPECT_THAT(names(), ElementsAre("s", "s.1700000000"));
  EXPECT_EQ(contentOf(path), logSwitchLine(1));
}

TEST_F(RotatingALongName, FailsBeyondThatAndTheStreamGoesOn) {
  ASSERT_EQ(openAs(nameOf(4095 - 10), {.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(rotate(1), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(contentOf(path), logSwitchLine(0)) << "no end of the stream in a file that goes on";
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(path), logSwitchLine(0) + logSwitchLine(2));
  EXPECT_THAT(names(), ElementsAre("s"));
}

TEST_F(RotatingALongName, NeverRemovesAFileOfAShorterName) {
  for (const size_t length : {4095U, 4094U, 4090U}) {
    SCOPED_TRACE(length);
    makeFile(path + ".1600000000", "old\n");
    makeFile(path, "current\n");
    ASSERT_EQ(openAs(nameOf(length), {.size = 1, .oldFiles = 1}), 0);
    EXPECT_LT(rotate(2), 0);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_EQ(contentOf(path), "current\n");
    EXPECT_EQ(contentOf(path + ".1600000000"), "old\n");
    wmq_closestream();
  }
}

}  // namespace
}  // namespace wmq::testing
