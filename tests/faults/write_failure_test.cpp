#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include "support/failing_calls.h"
#include "support/ordinary_user.h"
#include "support/resource_limit.h"
#include "support/scripted_clock.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

// The disk is full under the open stream, for as long as it stands.
class FullDisk {
 public:
  FullDisk() : descriptor_(fileno(stream->fp)), kept_(dup(descriptor_)) {
    const int full = ::open("/dev/full", O_RDWR);
    dup2(full, descriptor_);
    ::close(full);
  }
  ~FullDisk() {
    dup2(kept_, descriptor_);
    ::close(kept_);
  }
  FullDisk(const FullDisk &) = delete;
  FullDisk &operator=(const FullDisk &) = delete;

 private:
  int descriptor_;
  int kept_;
};

class FailingToWrite : public StreamTest {
 protected:
  void expectFailure(eventRecord record, int reason) {
    wmq_errno = 0;
    errno = 0;
    EXPECT_EQ(write(record), -1);
    EXPECT_EQ(errno, reason);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
  }

  static off_t sizeOf(const std::string &name) { return static_cast<off_t>(contentOf(name).size()); }
};

TEST_F(FailingToWrite, WithoutAStreamSaysNothing) {
  eventRecord record = logSwitch(1);
  wmq_errno = 99;
  EXPECT_EQ(wmq_writestream(&record), -1);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(FailingToWrite, WithoutARecordNamesTheArgument) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(wmq_writestream(nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(write(1), 0);
}

TEST_F(FailingToWrite, OnAFullDiskLeavesTheSystemsReason) {
  ASSERT_EQ(open(), 0);
  {
    const FullDisk disk;
    expectFailure(logSwitch(1), ENOSPC);
    expectFailure(bareRecord(EVENT_JOB_VACATED), ENOSPC);
    expectFailure(bareRecord(EVENT_SBD_JOB_STATUS), ENOSPC);
  }
}

TEST_F(FailingToWrite, OnAFullDiskWritesNothingLater) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(1), 0);
  {
    const FullDisk disk;
    expectFailure(logSwitch(2), ENOSPC);
  }
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(wmq_errno, 0);
  wmq_closestream();
  EXPECT_EQ(contentOf(path), logSwitchLine(1) + logSwitchLine(3));
}

TEST_F(FailingToWrite, EndsABatchOfWhichAPartFindsNoRoom) {
  ASSERT_EQ(open(), 0);
  eventRecord record = logSwitch(1);
  const std::vector<eventRecord *> records(5000, &record);
  size_t written = 77;
  wmq_errno = 0;
  {
    const FailingCall full("write", 1, ENOSPC);
    EXPECT_EQ(wmq_writestreambatch(records.data(), records.size(), &written), -1);
    EXPECT_EQ(errno, ENOSPC);
  }
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(written, 0U);
  EXPECT_EQ(contentOf(path), "") << "nor is what comes behind it written";
}

TEST_F(FailingToWrite, LeavesThePartOfTheLineThatWentIn) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(1), 0);
  const std::string before = contentOf(path);
  {
    const ResourceLimit limit(RLIMIT_FSIZE, before.size() + 10);
    expectFailure(logSwitch(2), EFBIG);
  }
  EXPECT_EQ(contentOf(path), before + logSwitchLine(2).substr(0, 10));
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(contentOf(path), before + logSwitchLine(2).substr(0, 10) + logSwitchLine(3));
}

TEST_F(FailingToWrite, LeavesWhatWasPutTogetherWhenAFieldFails) {
  ASSERT_EQ(open(), 0);
  eventRecord record = bareRecord(EVENT_JOB_CLEAN);
  record.eventLog.jobCleanLog.jobId = 5;
  record.eventLog.jobCleanLog.indexRangeCnt = 2;  // but no ranges
  wmq_errno = 0;
  EXPECT_EQ(write(record), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(contentOf(path), "\"JOB_CLEAN\" \"10.1\" 1700000000 5 0 2");
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(contentOf(path), "\"JOB_CLEAN\" \"10.1\" 1700000000 5 0 2" + logSwitchLine(1));
}

// ------------------------------------------------------------------------------ rotation

class FailingToRotate : public FailingToWrite {
 protected:
  // A full stream, and its next call is the one that rotates.
  void beReady(int32_t oldFiles = 3) {
    makeFile(path, "full\n");
    ASSERT_EQ(open({.size = 1, .oldFiles = oldFiles}), 0);
    advanceToCheck();
    trace.messages.clear();
  }

  // Run when the name of the rotated file is settled and its last line is about to be written.
  void beforeTheLastLine(std::function<void()> change) {
    clock.whenRead = [this, change = std::move(change)] {
      if (clock.readings == 2) change();
    };
  }

  // The stream has lost its file: nothing works, until it is closed and opened again.
  void expectWithoutFile() {
    wmq_errno = 99;
    EXPECT_EQ(write(2), -1);
    EXPECT_EQ(wmq_errno, 99);
    EXPECT_EQ(wmq_readstream(&lineNum), nullptr);
    EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
    EXPECT_EQ(wmq_closestream(), 0);
    std::remove(path.c_str());
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(write(3), 0);
    EXPECT_EQ(contentOf(path), logSwitchLine(3));
  }

  ScriptedClock clock{1700000500};
  const std::string rotated = path + ".1700000500";
  const std::string endLine = "\"END_OF_STREAM\" \"10.1\" 1700000500\n";
};

TEST_F(FailingToRotate, BecauseTheTargetIsADirectoryLosesTheFile) {
  beReady();
  beforeTheLastLine([this] { mkdir(rotated.c_str(), 0755); });
  expectFailure(logSwitch(1), EISDIR);
  EXPECT_EQ(contentOf(path), "full\n" + endLine);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
  expectWithoutFile();
}

TEST_F(FailingToRotate, BecauseTheFileIsGoneLosesTheFile) {
  beReady();
  beforeTheLastLine([this] { std::remove(path.c_str()); });
  expectFailure(logSwitch(1), ENOENT);
  expectWithoutFile();
}

TEST_F(FailingToRotate, BecauseTheDirectoryCannotBeWrittenLosesTheFile) {
  chmod(directory.path().c_str(), 0777);
  OrdinaryUser user;
  if (!user.isOrdinary()) GTEST_SKIP() << "root cannot step down here";
  beReady();
  user.stepBack();
  chmod(directory.path().c_str(), 0555);
  {
    const OrdinaryUser again;
    expectFailure(logSwitch(1), EACCES);
    EXPECT_EQ(contentOf(path), "full\n" + endLine);
  }
  chmod(directory.path().c_str(), 0755);
  expectWithoutFile();
}

TEST_F(FailingToRotate, BecauseNoFileCanBeCreatedLosesTheFile) {
  beReady();
  std::unique_ptr<ResourceLimit> limit;
  bool limited = false;
  beforeTheLastLine([&] {
    limit = std::make_unique<ResourceLimit>(RLIMIT_NOFILE, 0);
    const int probe = ::open("/dev/null", O_RDONLY);
    limited = probe < 0;
    if (probe >= 0) ::close(probe);
  });
  wmq_errno = 0;
  errno = 0;
  const int result = write(1);
  const int reason = errno;
  limit.reset();
  if (!limited) GTEST_SKIP() << "the limit of open files has no effect here";
  EXPECT_EQ(result, -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(reason, EMFILE);
  EXPECT_EQ(contentOf(rotated), "full\n" + endLine);
  expectWithoutFile();
}

TEST_F(FailingToRotate, BecauseTheNewFileGetsNoPermissionsLosesTheFile) {
  beReady();
  const int descriptors = openDescriptors();
  {
    const FailingCall refused("fchmod", 1, EPERM);
    expectFailure(logSwitch(1), EPERM);
  }
  EXPECT_EQ(openDescriptors(), descriptors - 1) << "the old file is closed, and the new one too";
  EXPECT_EQ(contentOf(rotated), "full\n" + endLine);
  EXPECT_EQ(contentOf(path), "");
  expectWithoutFile();
}

TEST_F(FailingToRotate, BecauseTheLastLineCannotBeWrittenKeepsTheFile) {
  beReady();
  {
    const ResourceLimit limit(RLIMIT_FSIZE, 5);
    expectFailure(logSwitch(1), EFBIG);
  }
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(path), "full\n" + logSwitchLine(2));
}

TEST_F(FailingToRotate, BecauseTheSizeCannotBeToldKeepsTheFile) {
  beReady();
  const int descriptor = fileno(stream->fp);
  const int kept = dup(descriptor);
  ::close(descriptor);
  expectFailure(logSwitch(1), EBADF);
  dup2(kept, descriptor);
  ::close(kept);
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(path), "full\n" + logSwitchLine(2));
}

TEST_F(FailingToRotate, BecauseAnOldFileCannotBeRemovedGivesTheNumberOfThatFailure) {
  makeFile(path + ".007");
  beReady(1);
  wmq_errno = 0;
  EXPECT_EQ(write(1), -2);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(contentOf(path), "full\n") << "nothing of the record, and no last line";
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(contentOf(path), "full\n" + logSwitchLine(2));

  std::remove((path + ".007").c_str());
  advanceToCheck();
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(contentOf(path), logSwitchLine(3));
}

TEST_F(FailingToRotate, BecauseTheDirectoryCannotBeListedKeepsTheFile) {
  mkdir((directory / "d").c_str(), 0755);
  makeFile(directory / "d/s", "full\n");
  ASSERT_EQ(openAs(directory / "d/s", {.size = 1}), 0);
  advanceToCheck();
  std::rename((directory / "d").c_str(), (directory / "e").c_str());
  wmq_errno = 0;
  EXPECT_EQ(write(1), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(directory / "e/s"), "full\n" + logSwitchLine(2));

  std::rename((directory / "e").c_str(), (directory / "d").c_str());
  advanceToCheck();
  EXPECT_EQ(write(3), 0);
  EXPECT_THAT(namesIn(directory / "d"), ElementsAre("s", "s.1700000500"));
}

TEST_F(FailingToRotate, LeavesTheCountAtZero) {
  makeFile(path + ".007");
  beReady(1);
  EXPECT_EQ(write(1), -2);
  for (int call = 0; call < 99; ++call) ASSERT_EQ(write(call), 0) << call;
  EXPECT_EQ(write(100), -2);
}

TEST_F(FailingToRotate, DoesNotCountTheCallsOfAStreamWithoutAFile) {
  beReady();
  beforeTheLastLine([this] { std::remove(path.c_str()); });
  EXPECT_EQ(write(1), -1);
  eventRecord record = logSwitch(2);
  for (int call = 0; call < 50; ++call) EXPECT_EQ(wmq_writestream(&record), -1);
  wmq_closestream();
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1}), 0);
  advanceToCheck();
  EXPECT_FALSE(exists(rotated));
  EXPECT_EQ(write(3), 0);
  EXPECT_TRUE(exists(rotated));
}

}  // namespace
}  // namespace wmq::testing
