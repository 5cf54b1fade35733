// Opening, rotating, removing old files, reading and closing, of each stream, with each of their allocations
// failing in turn.
#include <gmock/gmock.h>
#include <pthread.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "companion/thread_key.h"
#include "support/failing_allocations.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Pair;

class EveryAllocationOfAStream : public SideStreamTest,
                                 public ::testing::WithParamInterface<const SideOperations *> {
 protected:
  EveryAllocationOfAStream() : SideStreamTest(*GetParam()) {}

  void SetUp() override {
    if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
    eventRecord record = numbered(0);
    char *text = nullptr;
    size_t length = 0;
    side.format(&record, &text, &length);  // the buffer of this thread
    std::free(text);
  }

  // Opens without trace: what takes it down is the test's, and would need memory itself.
  int openAt(std::string &fileName, int32_t size = 0) const {
    streamParams params{};
    params.*side.path = fileName.data();
    params.maxStreamSize = size;
    params.maxStreamFileNum = 3;
    return side.open(&params);
  }

  // Calls `operation` with its first allocation failing, then with its second, until none fails any more:
  // `begin` makes everything ready for it, and `check` looks at what a failed one has done.
  template <class Begin, class Operation, class Check>
  void withEachFailing(Begin begin, Operation operation, Check check) {
    for (bool failed = true; failed;) {
      ++nth;
      SCOPED_TRACE("allocation " + std::to_string(nth));
      begin();
      descriptors = openDescriptors();
      left = allocationsLeft();
      wmq_errno = 0;
      errno = 0;
      int result = 0;
      int reason = 0;
      {
        const FailingAllocation failing(nth);
        result = operation();
        reason = errno;
        failed = failing.hasFailed();
      }
      if (failed) {
        check(result, reason);
      } else {
        EXPECT_EQ(result, 0);
      }
      if (HasFatalFailure()) return;
    }
  }

  // Either the library's own memory was out, or that of the C library.
  static void expectNoMemory(int reason) {
    EXPECT_THAT(std::pair(wmq_errno, reason),
                AnyOf(Pair(int{WMQE_NO_MEM}, ENOMEM), Pair(int{WMQE_SYS}, ENOMEM)));
  }

  bool isClosed() const {
    eventRecord record = numbered(99);
    wmq_errno = 12345;
    return side.write(&record) == -1 && wmq_errno == 12345;
  }

  void makeOldFiles(const std::vector<std::string> &suffixes) const {
    for (const std::string &suffix : suffixes) makeFile(path + '.' + suffix, suffix);
  }

  std::string name = path;
  int nth = 0;
  int descriptors = 0;
  int left = 0;
};

INSTANTIATE_TEST_SUITE_P(Of, EveryAllocationOfAStream,
                         ::testing::Values(&kEvents, &kStatus, &kPendingReasons),
                         [](const auto &tested) { return std::string(tested.param->noun); });

TEST_P(EveryAllocationOfAStream, MayFailWhenItIsOpened) {
  withEachFailing([] {}, [this] { return openAt(name); },
                  [this](int result, int reason) {
                    EXPECT_EQ(result, -1);
                    expectNoMemory(reason);
                    EXPECT_EQ(openDescriptors(), descriptors);
                    EXPECT_TRUE(isClosed());
                  });
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(path), lineOf(2));
  EXPECT_GT(nth, 3);
}

TEST_P(EveryAllocationOfAStream, MayFailWhenItsDefaultPathIsOpened) {
  const SharedPath shared(side.defaultPath);
  streamParams params{};
  withEachFailing([] {}, [&] { return side.open(&params); },
                  [this](int result, int reason) {
                    EXPECT_EQ(result, -1);
                    expectNoMemory(reason);
                    EXPECT_EQ(openDescriptors(), descriptors);
                    EXPECT_EQ(allocationsLeft(), left);
                  });
}

TEST_P(EveryAllocationOfAStream, MayFailWhenItIsOpenedElsewhere) {
  if (&side == &kEvents) GTEST_SKIP() << "the event stream stays where it is";
  std::string other = path + "2";
  withEachFailing([this] { ASSERT_EQ(openAt(name), 0); }, [&] { return openAt(other); },
                  [this](int result, int reason) {
                    if (result == 0) return;  // only reading what is closed needed memory
                    expectNoMemory(reason);
                    EXPECT_EQ(openDescriptors(), descriptors - 1);
                    EXPECT_TRUE(isClosed()) << "what was open is closed";
                  });
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(other), lineOf(2));
}

TEST_P(EveryAllocationOfAStream, MayFailWhenItIsRotated) {
  const ScriptedClock clock{1700000500};
  const auto begin = [this] {
    side.close();
    for (const std::string &old : namesIn(directory.path())) std::remove((directory / old).c_str());
    makeOldFiles({"100", "200", "300"});
    makeFile(path, lineOf(1));
    ASSERT_EQ(openAt(name, 1), 0);
    advanceToCheck();
  };
  withEachFailing(
      begin, [this] { return write(2); },
      [&](int result, int reason) {
        EXPECT_EQ(result, -1);
        expectNoMemory(reason);
        EXPECT_THAT(openDescriptors(), AnyOf(descriptors, descriptors - 1));
        const bool isThere = exists(path);
        EXPECT_EQ(contentOf(isThere ? path : path + ".1700000500").find(lineOf(1)), 0U);

        side.close();
        ASSERT_EQ(openAt(name, 1), 0);
        advanceToCheck();
        EXPECT_EQ(write(2), 0) << "a later one goes well";
        EXPECT_EQ(contentOf(path), lineOf(2));
      });
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side", "side.1700000500", "side.200", "side.300"));
  EXPECT_EQ(contentOf(path), lineOf(2));
  EXPECT_GT(nth, 4);
}

TEST_P(EveryAllocationOfAStream, MayFailWhenOldFilesAreRemoved) {
  const std::vector<std::string> suffixes = {"1", "2", "3", "4", "5", "6", "7", "8", "9"};
  makeOldFiles(suffixes);
  const std::vector<std::string> names = namesIn(directory.path());
  withEachFailing([] {}, [this] { return checkstreamfilenum(path.c_str(), 1); },
                  [&](int result, int reason) {
                    EXPECT_EQ(result, -1);
                    expectNoMemory(reason);
                    EXPECT_EQ(openDescriptors(), descriptors);
                    EXPECT_EQ(allocationsLeft(), left);
                    EXPECT_THAT(namesIn(directory.path()), ElementsAreArray(names)) << "none is removed";
                  });
  EXPECT_THAT(namesIn(directory.path()), ElementsAre());
  EXPECT_GT(nth, 5) << "the list has grown";
}

TEST_P(EveryAllocationOfAStream, MayFailWhenItIsRead) {
  makeFile(path, lineOf(1) + lineOf(2));
  const auto begin = [this] {
    side.close();
    ASSERT_EQ(openAt(name), 0);
    lineNum = 0;
  };
  withEachFailing(
      begin, [this] { return readNumber() == 1 ? 0 : -1; },
      [this](int result, int) {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(wmq_errno, WMQE_NO_MEM);
        EXPECT_EQ(lineNum, 1);
        EXPECT_EQ(readNumber(), nth == 1 ? 1 : 2) << "a line that was taken is gone";
      });
  EXPECT_EQ(readNumber(), 2);
  EXPECT_GT(nth, 2);
}

TEST_P(EveryAllocationOfAStream, MayFailBehindAComment) {
  makeFile(path, "#\n#" + std::string(200000, 'x') + '\n' + lineOf(1));
  ASSERT_EQ(openAt(name), 0);
  {
    const FailingAllocation failing(2);
    EXPECT_EQ(readNumber(), 0);
    EXPECT_TRUE(failing.hasFailed());
  }
  EXPECT_EQ(wmq_errno, WMQE_EOF) << "which counts as the end";
  EXPECT_EQ(readNumber(), 1);
}

TEST_P(EveryAllocationOfAStream, MayFailWhenItIsClosed) {
  const int closed = openDescriptors();
  int leftWhenClosed = 0;
  const auto begin = [&] {
    leftWhenClosed = allocationsLeft();
    ASSERT_EQ(openAt(name), 0);
  };
  withEachFailing(
      begin, [this] { return side.close(); },
      [&](int result, int) {
        EXPECT_EQ(result, 0) << "closing always does";
        EXPECT_EQ(wmq_errno, WMQE_NO_MEM);
        EXPECT_EQ(openDescriptors(), closed);
        EXPECT_EQ(allocationsLeft(), leftWhenClosed);
      });
  EXPECT_EQ(wmq_errno, WMQE_EOF);
  EXPECT_EQ(allocationsLeft(), leftWhenClosed);
}

// ------------------------------------------------------------- what threads keep

int released = 0;
void countRelease(void * /*kept*/) { ++released; }

// Beyond the first few keys of a process, a thread needs memory to have a value for one.
class KeptByThread : public ::testing::Test {
 protected:
  KeptByThread() {
    for (pthread_key_t &key : keys) pthread_key_create(&key, nullptr);
    released = 0;
  }
  ~KeptByThread() override {
    for (const pthread_key_t key : keys) pthread_key_delete(key);
  }

  pthread_key_t keys[64] = {};
};

TEST_F(KeptByThread, IsReleasedWithIt) {
  const ThreadKey key(countRelease);
  std::thread([&key] {
    EXPECT_EQ(key.kept(), nullptr);
    EXPECT_TRUE(key.keep(&released));
    EXPECT_EQ(key.kept(), &released);
    EXPECT_EQ(released, 0);
  }).join();
  EXPECT_EQ(released, 1);
}

TEST_F(KeptByThread, IsReleasedWithItsKey) {
  {
    const ThreadKey key(countRelease);
    EXPECT_TRUE(key.keep(&released));
  }
  EXPECT_EQ(released, 1);
}

TEST_F(KeptByThread, CannotBePromisedWithoutMemory) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  const ThreadKey key(countRelease);
  std::thread([&key] {
    bool kept = true;
    errno = ENOSPC;
    {
      const FailingAllocation failing(1);
      kept = key.keep(&released);
      EXPECT_TRUE(failing.hasFailed());
    }
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_FALSE(kept);
    EXPECT_EQ(key.kept(), nullptr);
  }).join();
  EXPECT_EQ(released, 0);
}

}  // namespace
}  // namespace wmq::testing
