// What a stream finds at its path, beside it and in its place: whatever it is, nothing but the stream's own
// files is removed or written.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "support/failing_calls.h"
#include "support/private_mounts.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

class AHostileFileSystem : public SideStreamTest,
                           public ::testing::WithParamInterface<const SideOperations *> {
 protected:
  AHostileFileSystem() : SideStreamTest(*GetParam()) {
    makeFile(elsewhere / "target", "somebody's");
    mkdir((elsewhere / "d").c_str(), 0755);
    makeFile(elsewhere / "d/inner", "somebody's");
  }

  ~AHostileFileSystem() override {
    EXPECT_EQ(contentOf(elsewhere / "d/inner"), "somebody's");
    EXPECT_THAT(namesIn(elsewhere.path()), IsSupersetOf({"d", "target"}));
    EXPECT_THAT(namesIn(elsewhere / "d"), ElementsAre("inner"));
  }

  void expectUnopened(const std::string &name, int reason) {
    wmq_errno = 0;
    errno = 0;
    const int descriptors = openDescriptors();
    EXPECT_EQ(openAs(name), -1);
    EXPECT_EQ(errno, reason);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_EQ(openDescriptors(), descriptors);
  }

  // The next call rotates, if the stream has a byte.
  void rotateWith(int32_t number, int result = 0) {
    advanceToCheck();
    errno = 0;
    EXPECT_EQ(write(number), result);
  }

  void link(const std::string &name, const std::string &to) const {
    ASSERT_EQ(symlink((elsewhere / to).c_str(), name.c_str()), 0);
  }

  static bool isLink(const std::string &name) {
    struct stat status;
    return lstat(name.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  }

  const TemporaryDirectory elsewhere{};
  ScriptedClock clock{1700000500};
  const std::string rotated = path + ".1700000500";
  const std::string endLine = "\"END_OF_STREAM\" \"10.1\" 1700000500\n";
};

INSTANTIATE_TEST_SUITE_P(Of, AHostileFileSystem, ::testing::Values(&kEvents, &kStatus, &kPendingReasons),
                         [](const auto &tested) { return std::string(tested.param->noun); });

// -------------------------------------------------------------------- at the path

// A link is followed, as its owner wants it to be. A rotation gives the link the old name and leaves what it
// leads to alone from then on; nobody counts the link as an old file.
TEST_P(AHostileFileSystem, MayHaveALinkAtThePath) {
  makeFile(elsewhere / "log");
  link(path, "log");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(write(1), 0);
  rotateWith(2);
  EXPECT_EQ(contentOf(elsewhere / "log"), lineOf(1) + endLine);
  EXPECT_TRUE(isLink(rotated));
  EXPECT_FALSE(isLink(path));
  EXPECT_EQ(contentOf(path), lineOf(2));
  for (int32_t number = 3; number < 6; ++number) rotateWith(number);
  EXPECT_EQ(contentOf(elsewhere / "log"), lineOf(1) + endLine);
  EXPECT_TRUE(isLink(rotated));
  EXPECT_EQ(namesIn(directory.path()).size(), 3U) << "the stream, one old file and the link";
}

TEST_P(AHostileFileSystem, MayHaveAFifoAtThePath) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(readNumber(), 1) << "it is read as it comes";
  rotateWith(3);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side")) << "it has no size, and is never rotated";
  wmq_errno = 0;
  EXPECT_EQ(side.close(), 0) << "without waiting for what may never come";
  EXPECT_EQ(wmq_errno, WMQE_EOF);
}

TEST_P(AHostileFileSystem, MayHaveADeviceAtThePath) {
  constexpr unsigned kMemory = 1;
  constexpr unsigned kFull = 7;
  if (mknod(path.c_str(), S_IFCHR | 0600, makedev(kMemory, kFull)) != 0)
    GTEST_SKIP() << "only root makes devices";
  const int probe = ::open(path.c_str(), O_WRONLY);
  if (probe < 0) GTEST_SKIP() << "devices cannot be used here";
  ::close(probe);
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  wmq_errno = 0;
  EXPECT_EQ(write(1), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(side.close(), 0) << "though it could be read for ever";
  EXPECT_EQ(wmq_errno, WMQE_EOF);
}

TEST_P(AHostileFileSystem, MayHaveNoFileAtThePath) {
  expectUnopened(directory.path(), EISDIR);
  expectUnopened(path + "/", EISDIR);
  expectUnopened(path + "/s", ENOENT);
  expectUnopened(elsewhere / "target/s", ENOTDIR);
  expectUnopened("", ENOENT);
  expectUnopened(directory / std::string(300, 'x'), ENAMETOOLONG);
  expectUnopened(directory / std::string(5000, 'x'), ENAMETOOLONG);
  ASSERT_EQ(symlink(path.c_str(), path.c_str()), 0);
  expectUnopened(path, ELOOP);
}

TEST_P(AHostileFileSystem, MayRefuseAllWriting) {
  const bool possible = withPrivateMounts([this] {
    mountDisk(directory.path(), "size=64k");
    makeFile(path, lineOf(1));
    makeFile(path + ".100", "old");
    makeReadOnly(directory.path());
    expectUnopened(path, EROFS);
    expectUnopened(path + "2", EROFS);
    wmq_errno = 0;
    EXPECT_EQ(checkstreamfilenum(path.c_str(), 1), -2);
    EXPECT_EQ(errno, EROFS);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("side", "side.100"));
  });
  if (!possible) GTEST_SKIP() << "no mounts of one's own here";
}

// Another disk has come to lie over the directory: the stream goes on in the file that it has, and loses it
// with the next rotation.
TEST_P(AHostileFileSystem, MayHideTheDirectory) {
  const bool possible = withPrivateMounts([this] {
    ASSERT_EQ(open({.size = 1}), 0);
    EXPECT_EQ(write(1), 0);
    mountDisk(directory.path(), "size=64k");
    makeFile(path + ".5", "somebody's");
    EXPECT_EQ(write(2), 0);
    wmq_errno = 0;
    rotateWith(3, -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("side.5"));
    side.close();
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(write(4), 0);
    EXPECT_EQ(contentOf(path), lineOf(4));
  });
  if (!possible) GTEST_SKIP() << "no mounts of one's own here";
}

// ---------------------------------------------------------------------- odd names

TEST_P(AHostileFileSystem, MayHaveAnyBytesInTheName) {
  for (const char *name : {"a\nb", "\xff\xfe\x80", "*?[a]", "-rf", " ", "%s%n", "\\", ".5", "a.100"}) {
    SCOPED_TRACE(name);
    const std::string odd = directory / name;
    makeFile(odd + ".100", "old");
    makeFile(odd + ".200", "old");
    ASSERT_EQ(openAs(odd, {.size = 1, .oldFiles = 2}), 0);
    EXPECT_EQ(write(1), 0);
    lineNum = 0;
    EXPECT_EQ(readNumber(), 1);
    rotateWith(2);
    EXPECT_EQ(contentOf(odd + ".1700000500"), lineOf(1) + endLine);
    EXPECT_EQ(contentOf(odd), lineOf(2));
    side.close();
    EXPECT_THAT(namesIn(directory.path()),
                ElementsAre(name, std::string(name) + ".1700000500", std::string(name) + ".200"));
    for (const std::string &left : namesIn(directory.path())) std::remove((directory / left).c_str());
  }
}

// ------------------------------------------------------------------------ old files

TEST_P(AHostileFileSystem, MayHaveLinksAndDirectoriesForOldFiles) {
  link(path + ".1", "target");
  link(path + ".2", "d");
  link(path + ".3", "missing");
  ASSERT_EQ(mkdir((path + ".4").c_str(), 0755), 0);
  makeFile(path + ".4/inner", "somebody's");
  ASSERT_EQ(mkfifo((path + ".6").c_str(), 0600), 0);
  const std::vector<std::string> odd = namesIn(directory.path());
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(write(1), 0);
  for (int32_t number = 2; number < 8; ++number) {
    ++clock.now;
    rotateWith(number);
  }
  EXPECT_THAT(namesIn(directory.path()), IsSupersetOf(odd));
  EXPECT_EQ(namesIn(directory.path()).size(), odd.size() + 2) << "the stream and one old file";
  EXPECT_EQ(contentOf(elsewhere / "target"), "somebody's");
  EXPECT_EQ(contentOf(path + ".4/inner"), "somebody's");
}

// The number of an old file need not be written as its name has it. What bears that number plainly and was
// not counted is no file to be removed.
TEST_P(AHostileFileSystem, MayHaveALinkWithTheNumberOfAnOldFile) {
  makeFile(path + ".0100", "old");
  link(path + ".100", "target");
  wmq_errno = 0;
  EXPECT_EQ(checkstreamfilenum(path.c_str(), 1), -2);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side.0100", "side.100"));
  EXPECT_EQ(contentOf(elsewhere / "target"), "somebody's");
}

TEST_P(AHostileFileSystem, MayHaveOldFilesThatCannotBeRead) {
  makeFile(path + ".100", "old");
  makeFile(path + ".200", "old");
  chmod((path + ".100").c_str(), 0);
  EXPECT_EQ(checkstreamfilenum(path.c_str(), 2), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side.200"));
}

// A second name of somebody's file goes, the file stays.
TEST_P(AHostileFileSystem, MayHaveASecondNameOfAFileForAnOldFile) {
  if (::link((elsewhere / "target").c_str(), (path + ".100").c_str()) != 0)
    GTEST_SKIP() << "no hard links here";
  EXPECT_EQ(checkstreamfilenum(path.c_str(), 1), 0);
  EXPECT_THAT(namesIn(directory.path()), IsEmpty());
  EXPECT_EQ(contentOf(elsewhere / "target"), "somebody's");
}

// ------------------------------------------------------------- under the writer

TEST_P(AHostileFileSystem, MayDeleteTheFileUnderTheWriter) {
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(write(1), 0);
  ASSERT_EQ(std::remove(path.c_str()), 0);
  EXPECT_EQ(write(2), 0) << "into a file without a name";
  wmq_errno = 0;
  rotateWith(3, -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_THAT(namesIn(directory.path()), IsEmpty());
  side.close();
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(4), 0);
  EXPECT_EQ(contentOf(path), lineOf(4));
}

// The rotation renames what it finds: it is kept whole, and the stream comes back to its path.
TEST_P(AHostileFileSystem, MayReplaceTheFileUnderTheWriter) {
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(write(1), 0);
  ASSERT_EQ(std::rename(path.c_str(), (path + ".bak").c_str()), 0);
  makeFile(path, "somebody's");
  EXPECT_EQ(write(2), 0);
  rotateWith(3);
  EXPECT_EQ(contentOf(path + ".bak"), lineOf(1) + lineOf(2) + endLine);
  EXPECT_EQ(contentOf(rotated), "somebody's");
  EXPECT_EQ(contentOf(path), lineOf(3));
}

TEST_P(AHostileFileSystem, MayReplaceTheFileByALinkUnderTheWriter) {
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(write(1), 0);
  ASSERT_EQ(std::remove(path.c_str()), 0);
  link(path, "target");
  EXPECT_EQ(write(2), 0);
  rotateWith(3);
  EXPECT_EQ(contentOf(elsewhere / "target"), "somebody's");
  EXPECT_TRUE(isLink(rotated));
  EXPECT_FALSE(isLink(path));
  EXPECT_EQ(contentOf(path), lineOf(3));
}

TEST_P(AHostileFileSystem, MayReplaceTheFileByADirectoryUnderTheWriter) {
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(write(1), 0);
  ASSERT_EQ(std::remove(path.c_str()), 0);
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
  makeFile(path + "/inner", "somebody's");
  rotateWith(2);
  EXPECT_EQ(contentOf(rotated + "/inner"), "somebody's");
  EXPECT_EQ(contentOf(path), lineOf(2));
}

TEST_P(AHostileFileSystem, MayAddLinesToTheFileWhileItIsClosed) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(1), 0);
  wmq_errno = 0;
  const AtCall reading("pread", 1, [this] {
    appendTo(path, lineOf(2) + lineOf(3));
    return 0;
  });
  EXPECT_EQ(side.close(), 0);
  EXPECT_TRUE(reading.happened());
  EXPECT_EQ(wmq_errno, WMQE_EOF) << "it is read to its end";
}

TEST_P(AHostileFileSystem, MayCutTheFileUnderTheWriter) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(readNumber(), 1);
  ASSERT_EQ(truncate(path.c_str(), 0), 0);
  EXPECT_EQ(write(2), 0) << "at the end, wherever that is now";
  EXPECT_EQ(contentOf(path), lineOf(2));
  EXPECT_EQ(readNumber(), 0) << "the reader stands where it was";
  EXPECT_EQ(side.close(), 0);
}

}  // namespace
}  // namespace wmq::testing
