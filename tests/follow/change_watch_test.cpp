// News of a stream's files.
#include "follow/change_watch.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "follow/follower.h"
#include "support/handmade_stream.h"
#include "support/stream_follower.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

namespace fs = std::filesystem;

class AWatch : public ::testing::Test, protected HandmadeStream {
 protected:
  void SetUp() override {
    append("");
    ASSERT_TRUE(watch.open(path, 0));
    if (watch.descriptor() < 0) GTEST_SKIP() << "the system brings no news here";
    file = OpenFile(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    watch.watchFile(file.get());
    watch.collect();
    watch.namesSeen();
  }

  ChangeWatch watch;
  OpenFile file;
};

TEST_F(AWatch, TellsNamesFromWhatIsWritten) {
  append("x");
  EXPECT_TRUE(watch.wait(-1));
  watch.collect();
  EXPECT_FALSE(watch.namesChanged());
  fs::rename(path, old(100));
  EXPECT_TRUE(watch.wait(-1));
  watch.collect();
  EXPECT_TRUE(watch.namesChanged());
}

TEST_F(AWatch, EndsWhenTheTimeIsUp) {
  for (const int timeout : {0, 1, 10}) EXPECT_FALSE(watch.wait(timeout)) << timeout;
}

// Right behind the first news, and some time later.
TEST_F(AWatch, BringsNewsAsOftenAsSomethingHappens) {
  for (const int timeout : {0, 1, 50, -1})
    for (int i = 0; i < 10; ++i) {
      append("x");
      EXPECT_TRUE(watch.wait(timeout));
      EXPECT_TRUE(watch.wait(timeout)) << "nobody has collected it";
      watch.collect();
      EXPECT_FALSE(watch.wait(timeout < 0 ? 0 : timeout)) << "it was collected";
    }
}

TEST_F(AWatch, CanBeWokenRightBehindNews) {
  for (const int timeout : {0, 1, 50, -1})
    for (int i = 0; i < 10; ++i) {
      append("x");
      EXPECT_TRUE(watch.wait(-1));
      watch.collect();
      watch.wake();
      EXPECT_FALSE(watch.wait(timeout));
    }
}

TEST_F(AWatch, LooksAtIntervalsOnceItsDirectoryIsAnother) {
  const std::string moved = directory.path() + ".moved";
  fs::rename(directory.path(), moved);
  fs::create_directory(directory.path());
  watch.collect();
  EXPECT_LT(watch.descriptor(), 0);
  EXPECT_TRUE(watch.namesChanged());
  watch.namesSeen();
  EXPECT_TRUE(watch.namesChanged());
  fs::remove_all(moved);
}

TEST_F(AWatch, LooksAtIntervalsWhereThePathLeadsOverALink) {
  fs::create_directory(directory / "real");
  fs::create_directory_symlink("real", directory / "link");
  fs::create_symlink("s", directory / "file");
  for (const char *name : {"real/s", "link/s", "file"}) {
    ChangeWatch another;
    ASSERT_TRUE(another.open(directory / name, 0));
    EXPECT_EQ(another.descriptor() < 0, std::string(name) != "real/s") << name;
  }
}

// The system forgets news of which there is too much, and says so.
class AWatchOfManyChanges : public ::testing::Test, protected HandmadeStream {
 protected:
  void SetUp() override {
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
    if (most == 0 || most > 100000) GTEST_SKIP() << "room for " << most << " changes";
  }

  void makeMore() const {
    for (int i = 0; i <= most / 2; ++i) {
      makeFile(directory / "other");
      fs::remove(directory / "other");
    }
  }

 private:
  int most = 0;
};

TEST_F(AWatchOfManyChanges, MissesNoName) {
  append(lines(1, 1));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  EXPECT_EQ(follower.next(), "");
  makeMore();
  rotate(100);
  append(lines(2, 2));
  EXPECT_EQ(follower.next(), "rotated");
  EXPECT_EQ(follower.next(), "2");
}

TEST_F(AWatchOfManyChanges, MissesNoNameBeforeThereIsAFile) {
  ChangeWatch watch;
  ASSERT_TRUE(watch.open(path, 0));
  if (watch.descriptor() < 0) GTEST_SKIP() << "the system brings no news here";
  watch.namesSeen();
  makeMore();
  append("");
  watch.collect();
  EXPECT_TRUE(watch.namesChanged());
}

}  // namespace
}  // namespace wmq::testing
