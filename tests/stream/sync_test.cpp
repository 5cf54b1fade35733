#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "support/ordinary_user.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

// What is asked of the disk, and what the disk says to it.
struct Disk {
  std::vector<std::string> synced;
  std::function<int(const std::string &path)> failure;  // errno, 0: none
};
Disk *disk = nullptr;

std::string pathOf(int descriptor) {
  char path[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = readlink(link.c_str(), path, sizeof path);
  return length < 0 ? "" : std::string(path, static_cast<size_t>(length));
}

}  // namespace
}  // namespace wmq::testing

// Stands in for the C library's.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int fsync(int descriptor) {
  using namespace wmq::testing;
  if (disk != nullptr) {
    const std::string path = pathOf(descriptor);
    disk->synced.push_back(path);
    if (const int reason = disk->failure ? disk->failure(path) : 0; reason != 0) {
      errno = reason;
      return -1;
    }
  }
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class WatchedDisk : public Disk {
 public:
  WatchedDisk() { disk = this; }
  ~WatchedDisk() { disk = nullptr; }
  WatchedDisk(const WatchedDisk &) = delete;
  WatchedDisk &operator=(const WatchedDisk &) = delete;

  std::vector<std::string> take() { return std::exchange(synced, {}); }
};

class SyncingTheStream : public StreamTest {
 protected:
  void rotate() {
    advanceToCheck();
    ASSERT_EQ(write(1), 0);
  }

  void expectFailure(int reason) {
    wmq_errno = 0;
    errno = 0;
    EXPECT_EQ(wmq_syncstream(), -1);
    EXPECT_EQ(errno, reason);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
  }

  ScriptedClock clock{1700000500};
  WatchedDisk watched{};
};

TEST_F(SyncingTheStream, BringsTheFileAndThenItsNameToTheDisk) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_THAT(watched.take(), IsEmpty()) << "nothing but the call does";
  wmq_errno = 0;
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, directory.path()));
}

TEST_F(SyncingTheStream, DoesNotBringTheSameNameAgain) {
  ASSERT_EQ(open(), 0);
  for (int call = 0; call < 3; ++call) EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, directory.path(), path, path));
  wmq_closestream();
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, directory.path())) << "another may have created the file";
}

TEST_F(SyncingTheStream, LeavesFileDescriptorsAndCountAsTheyWere) {
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(write(1), 0);
  const int descriptors = openDescriptors();
  for (int call = 0; call < 98; ++call) {
    ASSERT_EQ(wmq_syncstream(), 0);
    ASSERT_EQ(write(bareRecord(61)), 0);
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s")) << "98 calls do not bring the check nearer";
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(write(2), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
  EXPECT_EQ(contentOf(path), logSwitchLine(2));
}

TEST_F(SyncingTheStream, BringsTheFilesThatItWasRotatedIntoSinceTheLastTime) {
  makeFile(path, "full\n");
  makeFile(path + ".1600000000", "another's care\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 9}), 0);
  rotate();
  rotate();
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(),
              UnorderedElementsAre(path, path + ".1700000500", path + ".1700000501", directory.path()));
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path));
  rotate();
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, path + ".1700000502", directory.path()));
}

TEST_F(SyncingTheStream, PassesOverWhatIsNoOldFileOfItsOwn) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 9}), 0);
  rotate();
  makeFile(path + "t.1700000600");
  makeFile(path + ".1700000600.gz");
  mkdir((path + ".1700000601").c_str(), 0755);
  ASSERT_EQ(symlink("/nowhere", (path + ".1700000602").c_str()), 0);
  mkfifo((path + ".1700000603").c_str(), 0644);
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, path + ".1700000500", directory.path()));
}

TEST_F(SyncingTheStream, DoesWithoutOldFilesThatWereRemoved) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 9}), 0);
  rotate();
  rotate();
  std::remove((path + ".1700000500").c_str());
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, path + ".1700000501", directory.path()));
}

TEST_F(SyncingTheStream, FindsTheOldFilesOfAClockThatWasSetBack) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  rotate();
  clock.now -= 100;
  rotate();
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000400"));
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, path + ".1700000400", directory.path()));
}

TEST_F(SyncingTheStream, NeedsToReadItsOldFiles) {
  chmod(directory.path().c_str(), 0777);
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  rotate();
  chmod((path + ".1700000500").c_str(), 0);
  {
    const OrdinaryUser user;
    if (!user.isOrdinary()) GTEST_SKIP() << "root cannot step down here";
    expectFailure(EACCES);
  }
  chmod((path + ".1700000500").c_str(), 0644);
  EXPECT_EQ(wmq_syncstream(), 0);
}

TEST_F(SyncingTheStream, IsTriedAgainWhenItWasInterrupted) {
  ASSERT_EQ(open(), 0);
  watched.failure = [this](const std::string &) { return watched.synced.size() == 1 ? EINTR : 0; };
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, path, directory.path()));
}

TEST_F(SyncingTheStream, EndsAtTheFirstFailureWithTheSystemsReason) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  rotate();
  const int descriptors = openDescriptors();
  for (const std::string &failing : {path, path + ".1700000500", directory.path()}) {
    watched.failure = [&failing](const std::string &name) { return name == failing ? EIO : 0; };
    expectFailure(EIO);
    EXPECT_EQ(watched.take().back(), failing);
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  watched.failure = nullptr;
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, path + ".1700000500", directory.path()))
      << "failures do not count as the last time";
}

TEST_F(SyncingTheStream, NeedsTheDirectory) {
  mkdir((directory / "d").c_str(), 0755);
  ASSERT_EQ(openAs(directory / "d/s"), 0);
  std::rename((directory / "d").c_str(), (directory / "e").c_str());
  expectFailure(ENOENT);
  std::rename((directory / "e").c_str(), (directory / "d").c_str());
  EXPECT_EQ(wmq_syncstream(), 0);
}

TEST_F(SyncingTheStream, OfABareNameTakesTheCurrentDirectory) {
  const CurrentDirectory here(directory.path());
  makeFile("s", "full\n");
  ASSERT_EQ(openAs("s", {.size = 1}), 0);
  rotate();
  EXPECT_EQ(wmq_syncstream(), 0);
  EXPECT_THAT(watched.take(), ElementsAre(path, path + ".1700000500", directory.path()));
}

TEST_F(SyncingTheStream, WithoutAStreamNamesTheArgument) {
  EXPECT_EQ(wmq_syncstream(), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

TEST_F(SyncingTheStream, WithoutAFileNamesTheArgument) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  advanceToCheck();
  clock.whenRead = [this] { std::remove(path.c_str()); };
  EXPECT_EQ(write(1), -1);
  wmq_errno = 0;
  EXPECT_EQ(wmq_syncstream(), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_THAT(watched.take(), IsEmpty());
}

// ------------------------------------------------------------------------- side streams

template <const SideOperations &kOperations>
class SyncingASideStream : public SideStreamTest {
 protected:
  SyncingASideStream() : SideStreamTest(kOperations) {}

  void bringsFileOldFilesAndDirectory() {
    const ScriptedClock clock(1700000500);
    WatchedDisk watched;
    EXPECT_EQ(side.sync(), -1);
    EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
    makeFile(path, "full\n");
    ASSERT_EQ(open({.size = 1}), 0);
    advanceToCheck();
    EXPECT_EQ(write(1), 0);
    EXPECT_EQ(side.sync(), 0);
    EXPECT_THAT(watched.take(), ElementsAre(path, path + ".1700000500", directory.path()));
    watched.failure = [](const std::string &) { return ENOSPC; };
    EXPECT_EQ(side.sync(), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
  }
};

using SyncingTheStatusStream = SyncingASideStream<kStatus>;
using SyncingThePendingReasonsStream = SyncingASideStream<kPendingReasons>;

TEST_F(SyncingTheStatusStream, BringsItsFileItsOldFilesAndItsDirectory) { bringsFileOldFilesAndDirectory(); }

TEST_F(SyncingThePendingReasonsStream, BringsItsFileItsOldFilesAndItsDirectory) {
  bringsFileOldFilesAndDirectory();
}

}  // namespace
}  // namespace wmq::testing
