#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>

#include "support/ordinary_user.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

// The stream "s" need not be there: only its old files are looked at.
class RemovingOldFiles : public StreamTest {
 protected:
  void have(const std::vector<std::string> &names) {
    for (const std::string &name : names) makeFile(directory / name, name);
  }

  // Makes room for one more among `keep` old files. wmq_errno is 99 before, to see whether it is set.
  int remove(int32_t keep) {
    wmq_errno = 99;
    return checkstreamfilenum(path.c_str(), keep);
  }

  void expectLeft(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    EXPECT_THAT(namesIn(directory.path()), ElementsAreArray(names));
  }
};

// --------------------------------------------------------------------- how many are kept

TEST_F(RemovingOldFiles, LeavesFewerThanAreKept) {
  have({"s.100", "s.200"});
  EXPECT_EQ(remove(3), 0);
  EXPECT_EQ(wmq_errno, 99);
  expectLeft({"s.100", "s.200"});
}

TEST_F(RemovingOldFiles, DoesNothingWhereThereAreNone) {
  EXPECT_EQ(remove(1), 0);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(RemovingOldFiles, RemovesTheOldestOfAsManyAsAreKept) {
  have({"s", "s.300", "s.100", "s.200", "s.abc"});
  EXPECT_EQ(remove(3), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  expectLeft({"s", "s.200", "s.300", "s.abc"});
}

TEST_F(RemovingOldFiles, RemovesAllThatAreTooMany) {
  have({"s.5", "s.70", "s.600", "s.8000", "s.9", "s.10"});
  EXPECT_EQ(remove(3), 0);
  expectLeft({"s.600", "s.8000"});
}

TEST_F(RemovingOldFiles, RemovesEveryOneWhenOneIsKept) {
  have({"s.1", "s.2", "s.3"});
  EXPECT_EQ(remove(1), 0);
  expectLeft({});
}

TEST_F(RemovingOldFiles, GoesByTheNumberAndNotByTheTextOrTheAge) {
  have({"s.1000", "s.999"});
  EXPECT_EQ(remove(2), 0);
  expectLeft({"s.1000"});
}

TEST_F(RemovingOldFiles, ManagesMoreFilesThanItsFirstListHolds) {
  for (int32_t suffix = 1; suffix <= 3000; ++suffix) makeFile(path + "." + std::to_string(suffix));
  EXPECT_EQ(remove(2), 0);
  expectLeft({"s.3000"});
}

TEST_F(RemovingOldFiles, AcceptsAnyNumberToKeep) {
  have({"s.100"});
  EXPECT_EQ(remove(INT32_MAX), 0);
  EXPECT_EQ(wmq_errno, 99);
  expectLeft({"s.100"});
}

TEST_F(RemovingOldFiles, FailsSilentlyWhenNoneIsKept) {
  have({"s.100"});
  for (const int32_t keep : {0, -1, INT32_MIN}) {
    EXPECT_EQ(remove(keep), -1);
    EXPECT_EQ(wmq_errno, 99);
  }
  expectLeft({"s.100"});
}

TEST_F(RemovingOldFiles, FailsSilentlyWithoutAName) {
  wmq_errno = 99;
  EXPECT_EQ(checkstreamfilenum(nullptr, 3), -1);
  EXPECT_EQ(wmq_errno, 99);
}

// ------------------------------------------------------------------ what is an old file

TEST_F(RemovingOldFiles, LeavesWhatOnlyLooksSimilar) {
  const std::vector<std::string> others = {"s",     "s.",     "s.abc", "s.1x",   "s.x1",  "s.1.x", "s. 1",
                                           "s.1 ",  "s.0x10", "s.+",   "s.-",    "s.--1", "s.1.5", "s..1",
                                           "s.x.1", "ss.1",   "as.1",  "S.1",    ".s.1",  "t.1",   "1",
                                           "s1",    "s-1",    "s.1e3", "s.1,000"};
  have(others);
  EXPECT_EQ(remove(1), 0);
  EXPECT_EQ(wmq_errno, 99) << "none of them is counted";
  expectLeft(others);
}

TEST_F(RemovingOldFiles, LeavesLinksAndDirectories) {
  ASSERT_EQ(symlink("/dev/null", (path + ".100").c_str()), 0);
  have({"target"});
  ASSERT_EQ(symlink("target", (path + ".200").c_str()), 0);
  ASSERT_EQ(mkdir((path + ".300").c_str(), 0755), 0);
  ASSERT_EQ(mkfifo((path + ".400").c_str(), 0644), 0);
  EXPECT_EQ(remove(1), 0);
  EXPECT_EQ(wmq_errno, 99) << "none of them is counted";
  expectLeft({"s.100", "s.200", "s.300", "s.400", "target"});
}

TEST_F(RemovingOldFiles, TakesAHardLinkForAFile) {
  have({"target"});
  ASSERT_EQ(link((directory / "target").c_str(), (path + ".100").c_str()), 0);
  EXPECT_EQ(remove(1), 0);
  expectLeft({"target"});
}

TEST_F(RemovingOldFiles, LooksInTheStreamsDirectoryOnly) {
  mkdir((directory / "sub").c_str(), 0755);
  have({"sub/s.100", "s.100"});
  EXPECT_EQ(remove(1), 0);
  expectLeft({"sub"});
  EXPECT_THAT(namesIn(directory / "sub"), ElementsAre("s.100"));
}

TEST_F(RemovingOldFiles, TakesADotInTheStreamsNameForWhatItIs) {
  have({"s.log.100", "s.log.200", "s.50", "s.log.60.70"});
  wmq_errno = 0;
  EXPECT_EQ(checkstreamfilenum((path + ".log").c_str(), 2), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  expectLeft({"s.50", "s.log.200", "s.log.60.70"});
}

TEST_F(RemovingOldFiles, FindsThemThroughRepeatedSlashes) {
  have({"s.100"});
  EXPECT_EQ(checkstreamfilenum((directory.path() + "//s").c_str(), 1), 0);
  expectLeft({});
}

TEST_F(RemovingOldFiles, LooksForThemInTheRootDirectoryToo) {
  wmq_errno = 0;
  EXPECT_EQ(checkstreamfilenum("/a-name-that-nobody-has-given", 1), 0);
  EXPECT_EQ(wmq_errno, 0);
}

TEST_F(RemovingOldFiles, FindsNoneInADirectoryWithALongerNameThanThereCanBe) {
  wmq_errno = 0;
  EXPECT_EQ(checkstreamfilenum((path + std::string(PATH_MAX, 'x') + "/s").c_str(), 1), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
}

// ------------------------------------------------------------------------- odd suffixes

TEST_F(RemovingOldFiles, DeletesOneOfTwoWithTheSameNumber) {
  have({"s.0100", "s.100"});
  EXPECT_EQ(remove(1), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  expectLeft({"s.0100"});
}

TEST_F(RemovingOldFiles, GoesOnWithTheNextNumberAfterTwoOfTheSame) {
  have({"s.0100", "s.100", "s.200", "s.300"});
  EXPECT_EQ(remove(2), 0);
  expectLeft({"s.0100"});
}

TEST_F(RemovingOldFiles, NeverChoosesASuffixOf2147483647OrMore) {
  have({"s.2147483647", "s.2147483648", "s.4294967396", "s.99999999999999999999"});
  EXPECT_EQ(remove(1), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED) << "there were enough to remove some";
  expectLeft({"s.2147483647", "s.2147483648", "s.4294967396", "s.99999999999999999999"});
}

TEST_F(RemovingOldFiles, CountsSuffixesOf2147483647OrMore) {
  have({"s.100", "s.2147483647", "s.99999999999999999999"});
  EXPECT_EQ(remove(3), 0);
  expectLeft({"s.2147483647", "s.99999999999999999999"});
}

TEST_F(RemovingOldFiles, ChoosesASuffixOf2147483646) {
  have({"s.2147483646"});
  EXPECT_EQ(remove(1), 0);
  expectLeft({});
}

TEST_F(RemovingOldFiles, TakesNegativeSuffixesForTheOldest) {
  have({"s.-5", "s.-2147483648", "s.0", "s.7"});
  EXPECT_EQ(remove(3), 0);
  expectLeft({"s.0", "s.7"});
}

TEST_F(RemovingOldFiles, FailsForTheOldestWhoseNameIsNotItsNumber) {
  for (const char *name : {"s.+7", "s.007", "s.-0"}) {
    SCOPED_TRACE(name);
    have({name, "s.200"});
    EXPECT_EQ(remove(1), -2);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    expectLeft({name, "s.200"});
    std::remove((directory / name).c_str());
  }
}

// ------------------------------------------------------- names without a directory part

TEST_F(RemovingOldFiles, NeverFindsThoseOfABareName) {
  const CurrentDirectory here(directory.path());
  have({"s.100", "s.200"});
  wmq_errno = 99;
  EXPECT_EQ(checkstreamfilenum("s", 1), 0);
  EXPECT_EQ(wmq_errno, 99);
  expectLeft({"s.100", "s.200"});
}

TEST_F(RemovingOldFiles, FindsThoseOfANameInTheCurrentDirectory) {
  const CurrentDirectory here(directory.path());
  have({"s.100"});
  EXPECT_EQ(checkstreamfilenum("./s", 1), 0);
  expectLeft({});
}

TEST_F(RemovingOldFiles, TakesABackslashForTheEndOfADirectoryWhereThereIsNoSlash) {
  const CurrentDirectory here(directory.path());
  mkdir("sub", 0755);
  have({"sub\\s.100", "sub/s.100"});
  wmq_errno = 99;
  EXPECT_EQ(checkstreamfilenum("sub\\s", 1), 0);
  EXPECT_EQ(wmq_errno, 99);
  expectLeft({"sub", "sub\\s.100"});
  EXPECT_THAT(namesIn("sub"), ElementsAre("s.100"));

  EXPECT_EQ(checkstreamfilenum("missing\\s", 1), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
}

TEST_F(RemovingOldFiles, TakesABackslashForALetterWhereThereIsASlash) {
  have({"sub\\s.100"});
  EXPECT_EQ(checkstreamfilenum((directory / "sub\\s").c_str(), 1), 0);
  expectLeft({});
}

// ----------------------------------------------------------------------------- failures

TEST_F(RemovingOldFiles, FailsForADirectoryThatIsMissing) {
  wmq_errno = 0;
  EXPECT_EQ(checkstreamfilenum((directory / "missing/s").c_str(), 1), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
}

TEST_F(RemovingOldFiles, FailsForADirectoryThatCannotBeListed) {
  have({"s.100"});
  chmod(directory.path().c_str(), 0733);
  OrdinaryUser user;
  if (!user.isOrdinary()) GTEST_SKIP() << "root cannot step down here";
  EXPECT_EQ(remove(1), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  user.stepBack();
  expectLeft({"s.100"});
}

TEST_F(RemovingOldFiles, FailsInADirectoryThatCannotBeWritten) {
  have({"s.100", "s.200"});
  chmod(directory.path().c_str(), 0555);
  OrdinaryUser user;
  if (!user.isOrdinary()) GTEST_SKIP() << "root cannot step down here";
  EXPECT_EQ(remove(1), -2);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  user.stepBack();
  expectLeft({"s.100", "s.200"});
}

TEST_F(RemovingOldFiles, StopsAtTheFirstThatCannotBeRemoved) {
  have({"s.100", "s.200", "s.300"});
  ASSERT_EQ(open(), 0);
  trace.messages.clear();
  trace.whenReported = [this] {
    if (trace.messages.size() == 2) std::remove((path + ".200").c_str());
  };
  EXPECT_EQ(remove(1), -2);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_THAT(trace.messages, ElementsAre("deleteoldfiles(): Removing oldest stream file " + path + ".100 ",
                                          "deleteoldfiles(): Removing oldest stream file " + path + ".200 ",
                                          "deleteoldfiles(): Failed to remove file " + path +
                                              ".200, errno= " + std::to_string(ENOENT)));
  expectLeft({"s", "s.300"});
}

TEST_F(RemovingOldFiles, LeavesNoDescriptorOpen) {
  const int descriptors = openDescriptors();
  have({"s.100", "s.0100"});
  remove(1);
  remove(1);
  remove(5);
  checkstreamfilenum((directory / "missing/s").c_str(), 1);
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(RemovingOldFiles, ReportsNothingWithoutAStream) {
  have({"s.100"});
  EXPECT_EQ(remove(1), 0);
  EXPECT_THAT(trace.messages, IsEmpty());
}

}  // namespace
}  // namespace wmq::testing
