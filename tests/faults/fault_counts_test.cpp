// The faults themselves: they happen, are counted, and end. What all tests together came to is told at the
// end.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "support/failing_allocations.h"
#include "support/failing_calls.h"

namespace wmq::testing {
namespace {

class Counts : public ::testing::Environment {
  void TearDown() override {
    std::printf("Failed: %d allocations, %d system calls, %d writes\n", allocationsFailed(), callsFailed(),
                writesFailed());
  }
};

[[maybe_unused]] const ::testing::Environment *const kCounts =
    ::testing::AddGlobalTestEnvironment(new Counts);

// How many of the calls fail, beginning with the one that does so first.
template <class Call>
int failuresOf(int calls, Call call) {
  int failures = 0;
  for (int i = 0; i < calls; ++i) failures += call() ? 0 : 1;
  return failures;
}

bool allocates() {
  void *volatile memory = std::malloc(1);
  std::free(memory);
  return memory != nullptr;
}

bool reads() {
  char byte = 0;
  return read(-2, &byte, 1) >= 0 || errno == EBADF;
}

TEST(AFailingAllocation, FailsOnceOrFromThereOn) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  const int before = allocationsFailed();
  {
    const FailingAllocation third(3);
    EXPECT_EQ(failuresOf(2, allocates), 0);
    EXPECT_FALSE(third.hasFailed());
    EXPECT_EQ(failuresOf(5, allocates), 1);
    EXPECT_TRUE(third.hasFailed());
  }
  int failures = 0;
  {
    const FailingAllocation third(3, FailingAllocation::failToo);
    failures = failuresOf(5, allocates);
  }
  EXPECT_EQ(failures, 3);
  EXPECT_TRUE(allocates());
  EXPECT_EQ(allocationsFailed() - before, 4);
}

TEST(AFailingCall, FailsOnceOrFromThereOn) {
  const int before = callsFailed();
  {
    const FailingCall second("read", 2, EIO);
    EXPECT_EQ(failuresOf(5, reads), 1);
    EXPECT_EQ(second.name(), "read");
  }
  {
    const FailingCall second("", 2, EIO, AtCall::failToo);
    EXPECT_EQ(failuresOf(5, reads), 4);
  }
  {
    const FailingCall other("write", 1, EIO);
    EXPECT_EQ(failuresOf(5, reads), 0);
    EXPECT_FALSE(other.happened());
  }
  EXPECT_EQ(callsFailed() - before, 5);
}

TEST(AnEndOfWrites, ComesBehindTheLastByteThatIsTaken) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const int before = writesFailed();
  {
    const WritesEndAfter full(5, ENOSPC);
    EXPECT_EQ(write(ends[1], "abc", 3), 3);
    EXPECT_EQ(write(ends[1], "defg", 4), 2);
    EXPECT_EQ(write(ends[1], "fg", 2), -1);
    EXPECT_EQ(errno, ENOSPC);
  }
  EXPECT_EQ(write(ends[1], "fg", 2), 2);
  EXPECT_EQ(writesFailed() - before, 1);
  char text[10] = "";
  EXPECT_EQ(read(ends[0], text, sizeof text), 7);
  EXPECT_STREQ(text, "abcdefg");
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace wmq::testing
