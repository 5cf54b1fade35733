#include "companion/block_cache.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "companion/checked_memory.h"
#include "support/failing_allocations.h"

namespace wmq::testing {
namespace {

bool memoryIsChecked() {
#if defined(WMQ_CHECKED_MEMORY) || !defined(__GLIBC__)
  return true;
#else
  const char *const preloaded = std::getenv("LD_PRELOAD");
  return preloaded != nullptr && std::strstr(preloaded, "vgpreload") != nullptr;
#endif
}

// Only a thread that has not released anything yet can be told to keep blocks.
class KeptBlocks : public ::testing::Test {
 protected:
  void onANewThread(const std::function<void()> &action) {
    if (isDoneOnANewThread(action)) return;
    ASSERT_TRUE(memoryIsChecked());
    GTEST_SKIP() << "no blocks are kept where memory is checked";
  }

  // False when that thread keeps no blocks: then it has done nothing.
  bool isDoneOnANewThread(const std::function<void()> &action) {
    blocksMayBeKept = true;
    // Unlike std::thread, this releases nothing on the new thread that another has allocated.
    task = [&] {
      skipped = !keepsBlocks();
      if (!skipped) action();
    };
    pthread_t thread;
    EXPECT_EQ(pthread_create(&thread, nullptr, run, this), 0);
    pthread_join(thread, nullptr);
    blocksMayBeKept = false;
    return !skipped;
  }

  bool skipped = false;

 private:
  static void *run(void *test) {
    static_cast<KeptBlocks *>(test)->task();
    return nullptr;
  }

  std::function<void()> task;
};

TEST_F(KeptBlocks, AreTakenAgainWithoutAnAllocation) {
  onANewThread([] {
    for (const size_t bytes : {1, 8, 24, 25, 40, 41, 88}) {
      void *const block = takeBlock(bytes);
      giveBlock(block);
      const FailingAllocation failing(1, FailingAllocation::failToo);
      void *const again = takeBlock(bytes);
      EXPECT_EQ(again, block) << bytes;
      EXPECT_FALSE(failing.hasFailed());
      giveBlock(again);
    }
  });
}

TEST_F(KeptBlocks, AreNeverShorterThanWhatIsAskedFor) {
  onANewThread([] {
    std::vector<char *> blocks;
    for (int round = 0; round < 3; ++round) {
      for (size_t bytes = 1; bytes < 200; ++bytes) {
        blocks.push_back(static_cast<char *>(takeBlock(bytes)));
        std::memset(blocks.back(), static_cast<int>(bytes), bytes);
      }
      for (size_t bytes = 1; bytes < 200; ++bytes) {
        char *const block = blocks[bytes - 1];
        for (size_t i = 0; i < bytes; ++i) ASSERT_EQ(block[i], static_cast<char>(bytes));
        giveBlock(block);
      }
      blocks.clear();
    }
  });
}

TEST_F(KeptBlocks, AreFew) {
  onANewThread([] {
    const int before = allocationsLeft();
    {
      std::vector<void *> blocks(100'000);
      for (void *&block : blocks) block = takeBlock(10);
      for (void *block : blocks) giveBlock(block);
    }
    EXPECT_LE(allocationsLeft() - before, 1024 * 1024 / 24 + 1);
    EXPECT_GE(allocationsLeft() - before, 1000);
    freeKeptBlocks();
    EXPECT_EQ(allocationsLeft(), before);
  });
}

// As if the blocks were those of a record.
void takeAndRelease(std::span<void *> blocks) {
  for (void *&block : blocks) block = takeBlock(10);
  const KeepingAll all;
  for (void *block : blocks) giveBlock(block);
}

TEST_F(KeptBlocks, AreAsManyAsALongRecordReleased) {
  std::vector<void *> blocks(100'000);
  onANewThread([&blocks] {
    const int before = allocationsLeft();
    takeAndRelease(blocks);
    EXPECT_EQ(allocationsLeft() - before, 100'000);
    const FailingAllocation failing(1, FailingAllocation::failToo);
    takeAndRelease(blocks);
    EXPECT_FALSE(failing.hasFailed());
  });
}

TEST_F(KeptBlocks, BecomeFewerWithEachShortRecordUntilTheyAreFew) {
  std::vector<void *> blocks(100'000);
  onANewThread([&blocks] {
    const int before = allocationsLeft();
    takeAndRelease(blocks);
    int left = allocationsLeft() - before;
    for (int record = 0; record < 1024; ++record) {
      takeAndRelease({blocks.data(), 1});
      const int leftNow = allocationsLeft() - before;
      EXPECT_LE(leftNow, left);
      EXPECT_GE(leftNow, left - left / 512);
      left = leftNow;
    }
    EXPECT_LE(left, 40'000);
    for (int record = 0; record < 1024; ++record) takeAndRelease({blocks.data(), 1});
    EXPECT_EQ(allocationsLeft() - before, (1 << 20) / 32);
  });
}

// However many others were left by what was read before.
TEST_F(KeptBlocks, AreThoseThatAreAskedForAgain) {
  std::vector<void *> blocks(100'000);
  onANewThread([&blocks] {
    takeAndRelease(blocks);
    const auto takeAndReleaseLong = [] {
      void *const text = takeBlock(50);
      void *const record = takeBlock(900);
      const KeepingAll all;
      giveBlock(text);
      giveBlock(record);
    };
    for (int record = 0; record < 400; ++record) takeAndReleaseLong();
    const FailingAllocation failing(1, FailingAllocation::failToo);
    takeAndReleaseLong();
    EXPECT_FALSE(failing.hasFailed());
  });
}

TEST_F(KeptBlocks, AreBoundedHoweverLongARecordIs) {
  std::vector<void *> blocks(5'000'000);
  onANewThread([&blocks] {
    const int before = allocationsLeft();
    takeAndRelease(blocks);
    EXPECT_EQ(allocationsLeft() - before, (128 << 20) / 32);
    freeKeptBlocks();
    EXPECT_EQ(allocationsLeft(), before);
  });
}

TEST_F(KeptBlocks, AreNoneWhereNoneMayBeKept) {
  std::vector<void *> blocks(10);
  const int before = allocationsLeft();
  takeAndRelease(blocks);
  EXPECT_EQ(allocationsLeft(), before);
}

// Valgrind has its own malloc loaded before the C library's.
TEST_F(KeptBlocks, AreNoneUnderValgrind) {
  if (!isDoneOnANewThread([] {})) GTEST_SKIP() << "no blocks are kept anyway";
  const char *const set = std::getenv("LD_PRELOAD");
  const std::string before = set != nullptr ? set : "";
  setenv("LD_PRELOAD", "/usr/lib/libother.so", 1);
  EXPECT_TRUE(isDoneOnANewThread([] {}));
  setenv("LD_PRELOAD", "/usr/libexec/valgrind/vgpreload_memcheck-amd64-linux.so", 1);
  EXPECT_FALSE(isDoneOnANewThread([] {}));
  if (set != nullptr)
    setenv("LD_PRELOAD", before.c_str(), 1);
  else
    unsetenv("LD_PRELOAD");
}

// What a thread does at its first record holds for as long as it lives.
TEST_F(KeptBlocks, AreKeptForAsLongAsTheThreadLives) {
  onANewThread([] {
    blocksMayBeKept = false;
    EXPECT_TRUE(keepsBlocks());
  });
}

TEST_F(KeptBlocks, TakeAMissingBlockForNothing) {
  onANewThread([] { giveBlock(nullptr); });
}

TEST_F(KeptBlocks, MakeWayForAnAllocationThatFails) {
  onANewThread([] {
    const FailingAllocation failing(1, FailingAllocation::failToo);
    void *const block = takeBlock(10);
    EXPECT_EQ(block, nullptr);
    giveBlock(block);
  });
}

// A key's value is set again in the first round of its release, so that the second sees what all others left.
pthread_key_t lastKey;
int leftAtTheEnd = -1;
void lookAtTheEnd(void *round) {
  static int rounds = 0;
  leftAtTheEnd = allocationsLeft();
  if (++rounds < 2) pthread_setspecific(lastKey, round);
}

TEST_F(KeptBlocks, AreFreedWhenTheThreadEnds) {
  static int before = 0;
  ASSERT_EQ(pthread_key_create(&lastKey, lookAtTheEnd), 0);
  onANewThread([] {
    pthread_setspecific(lastKey, &before);
    before = allocationsLeft();
    for (int i = 0; i < 10; ++i) {
      void *const first = takeBlock(10);
      void *const second = takeBlock(50);
      giveBlock(first);
      giveBlock(second);
    }
    EXPECT_EQ(allocationsLeft(), before + 2);
  });
  pthread_key_delete(lastKey);
  if (!skipped) {
    EXPECT_EQ(leftAtTheEnd, before);
  }
}

}  // namespace
}  // namespace wmq::testing
