// Inode numbers that go to another file while the system's clock stands still, as it does for some
// milliseconds: device, inode and time of creation are the same then.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <map>

#include "support/handmade_stream.h"
#include "support/stream_follower.h"

namespace wmq::testing {

namespace {

struct Frozen {
  bool stands = false;
  bool hidden = false;                  // the system tells nothing of any file
  std::map<uint64_t, uint64_t> inodes;  // as they are, as they are told
};
Frozen frozen;

constexpr int64_t frozenTime = 1700000000;

}  // namespace

}  // namespace wmq::testing

extern "C" {

int __real_statx(int directory, const char *name, int flags, unsigned mask, struct statx *status);
int __real_clock_gettime(clockid_t clock, timespec *time);

int __wrap_statx(int directory, const char *name, int flags, unsigned mask, struct statx *status) {
  using wmq::testing::frozen;
  if (frozen.hidden) {
    errno = EIO;
    return -1;
  }
  const int result = __real_statx(directory, name, flags, mask, status);
  if (result != 0 || !frozen.stands) return result;
  status->stx_mask |= STATX_BTIME;
  status->stx_btime.tv_sec = wmq::testing::frozenTime;
  status->stx_btime.tv_nsec = 0;
  const auto told = frozen.inodes.find(status->stx_ino);
  if (told != frozen.inodes.end()) status->stx_ino = told->second;
  return result;
}

int __wrap_clock_gettime(clockid_t clock, timespec *time) {
  if (!wmq::testing::frozen.stands) return __real_clock_gettime(clock, time);
  *time = {wmq::testing::frozenTime, 0};
  return 0;
}
}

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

class InodesUsedAgain : public ::testing::Test, protected HandmadeStream {
 protected:
  InodesUsedAgain() { frozen = {.stands = true}; }
  ~InodesUsedAgain() override { frozen = {}; }

  static uint64_t inodeOf(const std::string &file) {
    struct stat status {};
    stat(file.c_str(), &status);
    return status.st_ino;
  }
};

TEST_F(InodesUsedAgain, DoNotHideTheFilesBetween) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  StreamFollower follower(path, WMQ_FROM_OLDEST);
  EXPECT_EQ(follower.next(), "1");
  const uint64_t inode = inodeOf(path);
  rotate(101);
  append(lines(3, 3));
  rotate(102);
  remove(100);
  remove(101);
  append(lines(4, 4));
  frozen.inodes[inodeOf(path)] = inode;
  EXPECT_THAT(follower.rest(), ElementsAre("gap", "3", "rotated", "4"));
}

TEST_F(InodesUsedAgain, AreNotTakenForAnEmptyFileOfAPosition) {
  append("");
  const std::string position = StreamFollower(path).position();
  const uint64_t inode = inodeOf(path);
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  rotate(101);
  remove(100);
  append(lines(3, 3));
  frozen.inodes[inodeOf(path)] = inode;
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "2", "rotated", "3"));
}

// While a file is rotated there may be none but the current one.
TEST_F(InodesUsedAgain, AreNotTakenForAnEmptyFileOfAPositionWhenThereIsNoOther) {
  append("");
  const std::string position = StreamFollower(path).position();
  const uint64_t inode = inodeOf(path);
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  remove(100);
  frozen.inodes[inodeOf(path)] = inode;
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "2"));
}

// The follower has its file open, so that nobody else can have its inode.
TEST_F(InodesUsedAgain, OfTheFileThatIsReadAreItsOwn) {
  append("");
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "");
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  EXPECT_THAT(follower.rest(), ElementsAre("1", "rotated", "2"));
}

// An empty file is known by its place then.
TEST_F(InodesUsedAgain, LeaveAPositionInAnEmptyFileWhatItIs) {
  append(lines(1, 1));
  rotate(100);
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("1", "rotated"));
  const std::string position = follower.position();
  frozen.hidden = true;
  EXPECT_EQ(follower.position(), position) << "it takes no status of the file";
  frozen.hidden = false;
  append(lines(2, 2));
  rotate(101);
  append(lines(3, 3));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("2", "rotated", "3"));
}

}  // namespace
}  // namespace wmq::testing
