// What is told of the files of a stream that changes while it is read.
#include "tool/checked_files.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "support/handmade_stream.h"
#include "support/text_files.h"

namespace wmq::tool {
namespace {

using ::testing::ElementsAre;
using testing::endLine;
using ::testing::IsEmpty;
using testing::lines;

class CheckedFiles : public ::testing::TestWithParam<unsigned>, protected testing::HandmadeStream {
 protected:
  void find() { ASSERT_TRUE(findStream(path, files)); }

  // The findings as "FLAW FILE:LINE".
  std::vector<std::string> check() {
    StreamCheck theCheck(path, files);
    Progress progress;
    Faults faults;
    checkFiles(files, GetParam(), theCheck, faults, progress);
    status = faults.exitStatus();
    numRecords = theCheck.records;
    std::vector<std::string> found;
    for (const Finding &finding : theCheck.findings)
      found.push_back(std::string(flawName(finding.flaw)) + " " +
                      std::filesystem::path(finding.file).filename().string() + ":" +
                      std::to_string(finding.place.line));
    return found;
  }

  std::vector<StreamFile> files;
  uint64_t numRecords = 0;
  int status = 0;
};

TEST_P(CheckedFiles, AreWhole) {
  append(lines(1, 2));
  rotate(100);
  append(lines(3, 5));
  find();
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_EQ(numRecords, 5U);
}

TEST_P(CheckedFiles, AreMissingWhenTheyWereRemovedBeforeTheirTurn) {
  for (const int suffix : {100, 101, 102}) {
    append(lines(suffix, suffix));
    rotate(suffix);
  }
  append(lines(103, 103));
  find();
  remove(100);
  EXPECT_THAT(check(), ElementsAre("missing s.100:0"));
  EXPECT_EQ(numRecords, 3U);
  EXPECT_EQ(status, exitFine);
}

TEST_P(CheckedFiles, AreReadFromTheFileThatWasTheCurrentOneWhenTheyWereListed) {
  append(lines(1, 2));
  find();
  rotate(100);
  append(lines(3, 3) + "bad\n");
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_EQ(numRecords, 2U);
}

TEST_P(CheckedFiles, TellOfAWriterThatDiedBehindTheEndOfTheStream) {
  append(lines(1, 2));
  rotate(100);
  append(lines(3, 3) + endLine);
  find();
  EXPECT_THAT(check(), ElementsAre("endInCurrent s:2"));
}

TEST_P(CheckedFiles, TellThatTheCurrentOneIsNotThere) {
  append(lines(1, 2));
  rotate(100);
  std::filesystem::remove(path);
  find();
  EXPECT_THAT(check(), ElementsAre("noCurrent s:0"));
}

// Without a line end stands what was torn, wherever it is; the next file is no part of the line.
TEST_P(CheckedFiles, EndTheirLastLines) {
  append(lines(1, 1) + "\"LOG_SWITCH\" \"10.1\" 2");
  std::filesystem::rename(path, old(100));
  append(lines(3, 3) + testing::vacated);
  std::filesystem::rename(path, old(101));
  append("\n" + lines(4, 4));
  find();
  EXPECT_THAT(check(), ElementsAre("torn s.100:2", "noEnd s.100:0", "noEnd s.101:0"));
  EXPECT_EQ(numRecords, 4U);
}

TEST_P(CheckedFiles, OfManyBlocksAreNumberedThrough) {
  const std::string thousand = lines(1000, 1999);
  std::string text;
  while (text.size() < (size_t{1} << 20)) text += thousand;
  const auto numLines = static_cast<uint64_t>(std::count(text.begin(), text.end(), '\n'));
  append(lines(1, 1));
  rotate(100);
  append(text + "bad\n");
  find();
  StreamCheck theCheck(path, files);
  Progress progress;
  Faults faults;
  checkFiles(files, GetParam(), theCheck, faults, progress);
  ASSERT_FALSE(theCheck.findings.empty());
  EXPECT_EQ(theCheck.count(Flaw::malformed), 1U);
  EXPECT_EQ(theCheck.findings.back().place.line, numLines + 1);
  EXPECT_EQ(theCheck.findings.back().place.offset, text.size());
}

TEST_P(CheckedFiles, ThatCannotBeReadAreAFailure) {
  testing::makeFile(old(100), std::string("\x1f\x8b", 2));
  append(lines(1, 1));
  find();
  check();
  EXPECT_EQ(status, exitBadInput);
}

INSTANTIATE_TEST_SUITE_P(Threads, CheckedFiles, ::testing::Values(1U, 4U));

TEST(FindStream, TellsWhyThereIsNone) {
  const testing::HandmadeStream stream;
  std::vector<StreamFile> files;
  errno = 0;
  EXPECT_FALSE(findStream(stream.path, files));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(findStream(stream.directory.path(), files));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(findStream(stream.directory / "none/s", files));
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
}  // namespace wmq::tool
