// Disks that are full: behind every byte of a line of every type, and in the middle of a rotation.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "support/asymmetries.h"
#include "support/failing_calls.h"
#include "support/private_mounts.h"
#include "support/record_lines.h"
#include "support/resource_limit.h"
#include "support/sampler.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

// ------------------------------------------------------------------------ lines

// A file without a disk, for tests that write a hundred thousand times.
class MemoryFile {
 public:
  ~MemoryFile() { ::close(fd_); }
  MemoryFile() = default;
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }
  std::string content() const {
    std::string text(static_cast<size_t>(lseek(fd_, 0, SEEK_END)), '\0');
    const ssize_t got = pread(fd_, text.data(), text.size(), 0);
    return got == static_cast<ssize_t>(text.size()) ? text : "(unreadable)";
  }
  void clear() const { ASSERT_EQ(ftruncate(fd_, 0), 0); }

 private:
  int fd_ = memfd_create("stream", MFD_CLOEXEC);
};

// The one with the longest line of some.
OwnedRecord richRecord(int32_t type) {
  OwnedRecord richest;
  size_t longest = 0;
  for (uint64_t value = 1; value <= 20; ++value) {
    OwnedRecord record = sampleRecord(type, {.value = value, .size = 6});
    avoidAsymmetries(*record);
    eventRecord copy = *record;
    char *text = nullptr;
    size_t length = 0;
    streamOf(type).format(&copy, &text, &length);
    std::free(text);
    if (length <= longest) continue;
    longest = length;
    richest = std::move(record);
  }
  return richest;
}

class EveryByte : public ::testing::TestWithParam<int32_t> {
 protected:
  EveryByte() {
    streamParams params{};
    params.*side.path = path.data();
    if (side.open(&params) != 0) throw std::runtime_error("cannot open " + path);
    EXPECT_EQ(write(), 0);
    line = file.content();
  }
  ~EveryByte() override { side.close(); }

  // Writers change the record that they are given.
  int write() const {
    eventRecord copy = *record;
    wmq_errno = 0;
    errno = 0;
    return side.write(&copy);
  }

  void expectNoSpace(int reason) const {
    ASSERT_EQ(write(), -1);
    ASSERT_EQ(errno, reason);
    ASSERT_EQ(wmq_errno, WMQE_SYS);
  }

  const SideOperations &side = streamOf(GetParam());
  const MemoryFile file{};
  std::string path = file.path();
  const OwnedRecord record = richRecord(GetParam());
  std::string line;
};

INSTANTIATE_TEST_SUITE_P(OfType, EveryByte, ::testing::ValuesIn(typesWithLine()),
                         [](const auto &tested) { return wmq_typename(tested.param); });

TEST_P(EveryByte, MayBeTheFirstWithoutRoom) {
  for (size_t room = 0; room < line.size(); ++room) {
    SCOPED_TRACE(room);
    file.clear();
    {
      const WritesEndAfter full(room, ENOSPC);
      expectNoSpace(ENOSPC);
    }
    ASSERT_EQ(file.content(), line.substr(0, room));
    ASSERT_EQ(write(), 0);
    ASSERT_EQ(wmq_errno, 0);
    ASSERT_EQ(file.content(), line.substr(0, room) + line);
  }
  RecordProperty("failedWrites", static_cast<int>(line.size()));
}

TEST_P(EveryByte, MayBeTheFirstBeyondTheLimitOfTheProcess) {
  for (const size_t room : {size_t{0}, size_t{1}, line.size() / 2, line.size() - 1}) {
    SCOPED_TRACE(room);
    file.clear();
    {
      const ResourceLimit limit(RLIMIT_FSIZE, room);
      expectNoSpace(EFBIG);
    }
    ASSERT_EQ(file.content(), line.substr(0, room));
    ASSERT_EQ(write(), 0);
    ASSERT_EQ(file.content(), line.substr(0, room) + line);
  }
}

// ------------------------------------------------------- writers of a layout

using LayoutWriter = int (*)(FILE *file, eventLog &log);

const std::map<int32_t, LayoutWriter> kLayoutWriters = {
    {EVENT_JOB_NEW, [](FILE *file, eventLog &log) { return writeJobNew(file, &log.jobNewLog); }},
    {EVENT_JOB_START, [](FILE *file, eventLog &log) { return writeJobStart_ex(file, &log.jobStartLog, 1); }},
    {EVENT_JOB_STATUS, [](FILE *file, eventLog &log) { return writeJobStatus(file, &log.jobStatusLog); }},
    {EVENT_JOB_SWITCH, [](FILE *file, eventLog &log) { return writeJobSwitch(file, &log.jobSwitchLog); }},
    {EVENT_JOB_MOVE, [](FILE *file, eventLog &log) { return writeJobMove(file, &log.jobMoveLog); }},
    {EVENT_JOB_FINISH, [](FILE *file, eventLog &log) { return writeJobFinish(file, &log.jobFinishLog); }},
    {EVENT_JOB_MODIFY2, [](FILE *file, eventLog &log) { return writeJobMod(file, &log.jobModLog); }},
    {EVENT_JOB_RESIZE, [](FILE *file, eventLog &log) { return writeJobResize(file, &log.jobResizeLog); }},
    {EVENT_JOB_FINISH2, [](FILE *file, eventLog &log) { return writeJobFinish2(file, &log.jobFinish2Log); }},
    {EVENT_JOB_STARTLIMIT,
     [](FILE *file, eventLog &log) { return writeJobStartLimit(file, &log.jobStartLimitLog); }},
    {EVENT_JOB_STATUS2, [](FILE *file, eventLog &log) { return writeJobStatus2(file, &log.jobStatus2Log); }},
    {EVENT_JOB_PENDING_REASONS,
     [](FILE *file, eventLog &log) { return writeJobPendingReasons(file, &log.jobPendingReasonsLog); }},
};

// A file that takes so many bytes and then is full.
struct SmallFile {
  std::string content;
  size_t room = 0;
  FILE *file = nullptr;

  explicit SmallFile(size_t size) : room(size) {
    cookie_io_functions_t functions{};
    functions.write = [](void *cookie, const char *bytes, size_t count) {
      auto &small = *static_cast<SmallFile *>(cookie);
      const size_t taken = std::min(count, small.room);
      small.content.append(bytes, taken);
      small.room -= taken;
      if (taken < count) errno = ENOSPC;
      return static_cast<ssize_t>(taken);
    };
    file = fopencookie(this, "w", functions);
    std::setvbuf(file, nullptr, _IONBF, 0);
  }
  ~SmallFile() { std::fclose(file); }
  SmallFile(const SmallFile &) = delete;
  SmallFile &operator=(const SmallFile &) = delete;
};

TEST(ALayoutsWriter, TellsBehindWhicheverByteTheFileIsFull) {
  int failures = 0;
  for (const auto &[type, writer] : kLayoutWriters) {
    const OwnedRecord record = richRecord(type);
    SmallFile large(1 << 20);
    eventLog log = record->eventLog;
    ASSERT_EQ(writer(large.file, log), 0);
    const std::string &whole = large.content;
    for (size_t room = 0; room < whole.size(); ++room) {
      SCOPED_TRACE(std::string(wmq_typename(type)) + ", room for " + std::to_string(room));
      SmallFile small(room);
      log = record->eventLog;
      errno = 0;
      ASSERT_EQ(writer(small.file, log), WMQE_SYS);
      ASSERT_EQ(errno, ENOSPC);
      ASSERT_EQ(small.content, whole.substr(0, room));
      ++failures;
    }
  }
  RecordProperty("failedWrites", failures);
}

TEST(AHelper, TellsBehindWhicheverByteTheFileIsFull) {
  const Names names = {"a", "a", "2*b", std::string(600, 'c')};
  const auto list = [&](FILE *file) {
    return writeHostList(file, names.count(), const_cast<Names &>(names));
  };
  const std::string longText(600, '"');
  const auto text = [&](FILE *file) { return addQStr(file, longText.c_str()); };
  const std::function<int(FILE *)> operations[] = {list, text};
  for (const auto &operation : operations) {
    SmallFile large(1 << 20);
    ASSERT_EQ(operation(large.file), 0);
    for (size_t room = 0; room < large.content.size(); ++room) {
      SmallFile small(room);
      ASSERT_LT(operation(small.file), 0) << room;
      ASSERT_EQ(small.content, large.content.substr(0, room));
    }
  }
}

// -------------------------------------------------------------- real disks

constexpr size_t kPage = 4096;

class AFullDisk : public SideStreamTest, public ::testing::WithParamInterface<const SideOperations *> {
 protected:
  AFullDisk() : SideStreamTest(*GetParam()) {}

  // A stream of that many bytes whose next call rotates.
  void beReady(size_t size) {
    makeFile(path, '#' + std::string(size - 2, 'x') + '\n');
    before = contentOf(path);
    ASSERT_EQ(open({.size = 1}), 0);
    advanceToCheck();
  }

  // Takes all that the disk has left.
  void fillDisk() const {
    FILE *const filler = std::fopen((directory / "filler").c_str(), "w");
    std::setvbuf(filler, nullptr, _IONBF, 0);
    const std::string page(kPage, 'f');
    while (std::fwrite(page.data(), 1, page.size(), filler) == page.size()) {
    }
    std::fclose(filler);
  }
  void makeRoom() const {
    for (const std::string &name : namesIn(directory.path()))
      if (name.starts_with("filler")) std::remove((directory / name).c_str());
  }

  void expectNoSpace(int32_t number, int reason = ENOSPC) {
    wmq_errno = 0;
    errno = 0;
    EXPECT_EQ(write(number), -1);
    EXPECT_EQ(errno, reason);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
  }

  ScriptedClock clock{1700000500};
  const std::string rotated = path + ".1700000500";
  const std::string endLine = "\"END_OF_STREAM\" \"10.1\" 1700000500\n";
  std::string before;
};

INSTANTIATE_TEST_SUITE_P(Of, AFullDisk, ::testing::Values(&kEvents, &kStatus, &kPendingReasons),
                         [](const auto &tested) { return std::string(tested.param->noun); });

// A part of the last line still fits.
TEST_P(AFullDisk, KeepsTheFileThatIsToBeRotated) {
  const bool possible = withPrivateMounts([this] {
    mountDisk(directory.path(), "size=64k");
    beReady(kPage - 10);
    fillDisk();
    expectNoSpace(2);
    EXPECT_EQ(contentOf(path), before + endLine.substr(0, 10));
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("filler", "side"));
    expectNoSpace(3);

    makeRoom();
    EXPECT_EQ(write(4), 0);
    EXPECT_EQ(contentOf(path), before + endLine.substr(0, 10) + lineOf(4));
    advanceToCheck();
    EXPECT_EQ(write(5), 0);
    EXPECT_EQ(contentOf(rotated), before + endLine.substr(0, 10) + lineOf(4) + endLine);
    EXPECT_EQ(contentOf(path), lineOf(5));
  });
  if (possible) return;
  beReady(kPage - 10);
  {
    const ResourceLimit limit(RLIMIT_FSIZE, kPage);
    expectNoSpace(2, EFBIG);
  }
  EXPECT_EQ(contentOf(path), before + endLine.substr(0, 10));
  EXPECT_EQ(write(4), 0);
  EXPECT_EQ(contentOf(path), before + endLine.substr(0, 10) + lineOf(4));
}

// The last line fills the last page, and the first record of the new file finds none.
TEST_P(AFullDisk, LosesNoOldRecordWhenTheNewFileHasNoRoom) {
  const bool possible = withPrivateMounts([this] {
    mountDisk(directory.path(), "size=64k");
    beReady(kPage - endLine.size());
    fillDisk();
    expectNoSpace(2);
    EXPECT_EQ(contentOf(rotated), before + endLine);
    EXPECT_EQ(contentOf(path), "");
    expectNoSpace(3);

    makeRoom();
    EXPECT_EQ(write(4), 0);
    EXPECT_EQ(contentOf(path), lineOf(4));
  });
  if (!possible) GTEST_SKIP() << "no mounts of one's own here";
}

TEST_P(AFullDisk, LosesTheStreamWhenNoFileCanBeCreated) {
  const bool possible = withPrivateMounts([this] {
    mountDisk(directory.path(), "size=1m,nr_inodes=20");
    beReady(100);
    const auto filler = [&](int number) { return directory / ("filler" + std::to_string(number)); };
    for (int number = 0; FILE *file = std::fopen(filler(number).c_str(), "w"); ++number) std::fclose(file);
    const int descriptors = openDescriptors();
    expectNoSpace(2);
    EXPECT_EQ(openDescriptors(), descriptors - 1);
    EXPECT_EQ(contentOf(rotated), before + endLine);
    EXPECT_FALSE(exists(path));
    side.close();
    EXPECT_EQ(open(), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(wmq_errno, WMQE_SYS);

    makeRoom();
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(write(3), 0);
    EXPECT_EQ(contentOf(path), lineOf(3));
  });
  if (!possible) GTEST_SKIP() << "no mounts of one's own here";
}

// A stream that rotates on and on fills a small disk at whatever place it comes to. Every record whose write
// succeeded is there once, in the order of writing, and of every other at most a beginning.
TEST_P(AFullDisk, KeepsEveryRecordThatWasWritten) {
  const bool possible = withPrivateMounts([this] {
    clock.whenRead = [this] { ++clock.now; };
    for (const size_t filled : {0U, 1U, 2U, 3U}) {
      const TemporaryDirectory disk;
      mountDisk(disk.path(), "size=64k");
      makeFile(disk / "filler", std::string(filled * kPage, 'f'));
      ASSERT_EQ(openAs(disk / "s", {.size = 1, .oldFiles = 1000}), 0);
      std::vector<int32_t> good;
      int failures = 0;
      for (int32_t number = 1; failures < 150; ++number) {
        errno = 0;
        if (write(number) == 0) {
          good.push_back(number);
        } else if (errno == ENOSPC) {
          ++failures;
        } else {
          side.close();
          if (openAs(disk / "s", {.size = 1, .oldFiles = 1000}) != 0) ++failures;
        }
      }
      side.close();

      std::vector<std::string> names = namesIn(disk.path());
      std::erase(names, "filler");
      std::rotate(names.begin(), names.begin() + 1, names.end());  // the stream's own file is the last
      EXPECT_GT(names.size(), 1U) << "there was a rotation";
      std::string all;
      for (const std::string &name : names) all += contentOf(disk / name);
      size_t at = 0;
      for (const int32_t number : good) {
        at = all.find(lineOf(number), at);
        ASSERT_NE(at, all.npos) << number;
      }
      // A line of the end of a file is the only one that ends in a digit, and what is torn has no line end.
      size_t records = 0;
      for (size_t i = 1; i < all.size(); ++i)
        if (all[i] == '\n' && std::isdigit(static_cast<unsigned char>(all[i - 1])) == 0) ++records;
      EXPECT_EQ(records, good.size());
    }
  });
  if (!possible) GTEST_SKIP() << "no mounts of one's own here";
}

}  // namespace
}  // namespace wmq::testing
