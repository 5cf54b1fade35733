#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/ordinary_user.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OpeningAStream : public StreamTest {
 protected:
  // Opening fails for the system's `reason`, and leaves nothing behind.
  void expectRefused(const std::string &name, int reason) {
    const int descriptors = openDescriptors();
    wmq_errno = 0;
    errno = 0;
    EXPECT_EQ(openAs(name), -1);
    EXPECT_EQ(errno, reason);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_THAT(trace.messages, IsEmpty());
    EXPECT_EQ(wmq_closestream(), -1) << "a stream is open";
  }

  void expectThatItStillWorks() {
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(write(1), 0);
    EXPECT_EQ(contentOf(path), logSwitchLine(1));
  }
};

// ------------------------------------------------------------------- what opening does

TEST_F(OpeningAStream, CreatesTheFile) {
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(contentOf(path), "");
}

TEST_F(OpeningAStream, AppendsToAFileThatIsThere) {
  makeFile(path, "what was there\n");
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(write(7), 0);
  EXPECT_EQ(contentOf(path), "what was there\n" + logSwitchLine(7));
}

TEST_F(OpeningAStream, LeavesTheErrorNumberAlone) {
  wmq_errno = 99;
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(OpeningAStream, UsesTheDefaultPathWithoutAName) {
  const std::string defaultPath = "/tmp/wmq.stream";
  const bool wasThere = exists(defaultPath);
  const streamParams params{nullptr, -5, 3, 1, TraceRecorder::record, nullptr, nullptr};
  ASSERT_EQ(wmq_openstream(&params), 0);
  const std::string descriptor = "/proc/self/fd/" + std::to_string(fileno(stream->fp));
  EXPECT_EQ(std::filesystem::read_symlink(descriptor), defaultPath);
  EXPECT_THAT(trace.messages,
              ElementsAre("wmq_openstream(): stream /tmp/wmq.stream open all right maxsize 1000000000"));
  EXPECT_EQ(wmq_closestream(), 0);
  if (!wasThere) std::remove(defaultPath.c_str());
}

TEST_F(OpeningAStream, UsesTheDefaultSizeForNoneOrANegativeOne) {
  for (const int32_t size : {-5, 0, INT32_MIN}) {
    ASSERT_EQ(open({.size = size}), 0);
    EXPECT_THAT(trace.messages.back(), ::testing::EndsWith(" maxsize 1000000000")) << "given " << size;
    wmq_closestream();
  }
}

TEST_F(OpeningAStream, TakesAnySizeAboveZero) {
  for (const int32_t size : {1, INT32_MAX}) {
    ASSERT_EQ(open({.size = size}), 0);
    EXPECT_THAT(trace.messages.back(), ::testing::EndsWith(" maxsize " + std::to_string(size)));
    wmq_closestream();
  }
}

TEST_F(OpeningAStream, TakesTheNumberOfOldFilesAsGiven) {
  for (const int32_t oldFiles : {-1, 0, 7}) {
    ASSERT_EQ(open({.oldFiles = oldFiles}), 0);
    EXPECT_EQ(stream->maxStreamFileNum, oldFiles);
    wmq_closestream();
  }
}

TEST_F(OpeningAStream, KeepsNoPointerToTheNameGiven) {
  std::string name = path;
  const streamParams params{name.data(), 0, 3, 0, nullptr, nullptr, nullptr};
  ASSERT_EQ(wmq_openstream(&params), 0);
  name.assign(name.size(), 'x');
  EXPECT_EQ(stream->fileName, path);
}

TEST_F(OpeningAStream, TakesNoNoticeOfTheNamesOfOtherStreams) {
  std::string name = path;
  std::string status = directory / "status";
  std::string reasons = directory / "reasons";
  const streamParams params{name.data(), 0, 3, 0, nullptr, status.data(), reasons.data()};
  ASSERT_EQ(wmq_openstream(&params), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
}

TEST_F(OpeningAStream, AcceptsATraceThatNobodyListensTo) {
  std::string name = path;
  const streamParams params{name.data(), 0, 3, 1, nullptr, nullptr, nullptr};
  EXPECT_EQ(wmq_openstream(&params), 0);
  EXPECT_EQ(wmq_closestream(), 0);
}

// ------------------------------------------------------------------------- permissions

TEST_F(OpeningAStream, GivesANewFilePermissions0644WhateverTheMaskIs) {
  const mode_t mask = umask(077);
  EXPECT_EQ(open(), 0);
  umask(mask);
  EXPECT_EQ(permissionsOf(path), 0644U);
}

TEST_F(OpeningAStream, GivesAFileThatIsTherePermissions0644) {
  for (const mode_t before : {0600U, 0777U}) {
    makeFile(path);
    chmod(path.c_str(), before);
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(permissionsOf(path), 0644U);
    wmq_closestream();
  }
}

// ------------------------------------------------------------------------ already open

TEST_F(OpeningAStream, ChangesNothingWhenOneIsOpen) {
  ASSERT_EQ(open({.size = 500}), 0);
  wmq_errno = 99;
  EXPECT_EQ(openAs(directory / "other", {.size = 600, .oldFiles = 1}), 0);
  EXPECT_EQ(wmq_errno, 99);
  EXPECT_FALSE(exists(directory / "other"));
  EXPECT_EQ(trace.messages.size(), 1U) << "opening is reported once";
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(contentOf(path), logSwitchLine(1));
}

TEST_F(OpeningAStream, SucceedsWhenOneIsOpenEvenForANameThatCannotBeOpened) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(openAs(directory.path()), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(contentOf(path), logSwitchLine(1));
}

// ----------------------------------------------------------------------------- failures

TEST_F(OpeningAStream, RefusesMissingParameters) {
  EXPECT_EQ(wmq_openstream(nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, RefusesMissingParametersAlsoWhenOneIsOpen) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(wmq_openstream(nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  wmq_errno = 0;
  EXPECT_EQ(write(1), 0);
}

TEST_F(OpeningAStream, FailsForADirectory) {
  expectRefused(directory.path(), EISDIR);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsInADirectoryThatIsMissing) {
  expectRefused(directory / "missing/s", ENOENT);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsBehindAFileInPlaceOfADirectory) {
  makeFile(directory / "file");
  expectRefused(directory / "file/s", ENOTDIR);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsForAnEmptyName) {
  expectRefused("", ENOENT);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsForANameOf4096Characters) {
  std::string name = directory.path();
  while (name.size() + 4 <= 4096) name += "/.";
  name.append(4096 - name.size() - 2, '/').append("/s");
  ASSERT_EQ(name.size(), 4096U);
  expectRefused(name, ENAMETOOLONG);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsForANameWhoseLastPartIsTooLong) {
  expectRefused(directory / std::string(256, 's'), ENAMETOOLONG);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsForALinkThatPointsToItself) {
  ASSERT_EQ(symlink("loop", (directory / "loop").c_str()), 0);
  expectRefused(directory / "loop", ELOOP);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsForAFileWhosePermissionsCannotBeChanged) {
  const std::string kernelsOwn = "/proc/self/comm";
  FILE *const canBeOpened = std::fopen(kernelsOwn.c_str(), "a+");
  ASSERT_NE(canBeOpened, nullptr);
  std::fclose(canBeOpened);
  expectRefused(kernelsOwn, EPERM);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsInADirectoryThatCannotBeWritten) {
  chmod(directory.path().c_str(), 0555);
  OrdinaryUser user;
  if (!user.isOrdinary()) GTEST_SKIP() << "root cannot step down here";
  expectRefused(path, EACCES);
  user.stepBack();
  chmod(directory.path().c_str(), 0755);
  expectThatItStillWorks();
}

TEST_F(OpeningAStream, FailsForAFileThatCannotBeRead) {
  makeFile(path, "secret\n");
  chmod(path.c_str(), 0200);
  chmod(directory.path().c_str(), 0755);
  OrdinaryUser user;
  if (!user.isOrdinary()) GTEST_SKIP() << "root cannot step down here";
  expectRefused(path, EACCES);
}

}  // namespace
}  // namespace wmq::testing
