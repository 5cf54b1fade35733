// Memory of a thread, also where the system has no more keys to give.
#include "companion/thread_key.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <thread>
#include <vector>

namespace wmq::testing {
namespace {

int released = 0;
void countRelease(void *) { ++released; }

class AThreadKey : public ::testing::Test {
 protected:
  void SetUp() override { released = 0; }
  int memory = 0;
};

TEST_F(AThreadKey, ReleasesWhatItsThreadKeepsWhenThatEnds) {
  const ThreadKey key(countRelease);
  EXPECT_EQ(key.kept(), nullptr);
  std::thread([&] {
    EXPECT_TRUE(key.keep(&memory));
    EXPECT_EQ(key.kept(), &memory);
    EXPECT_EQ(released, 0);
  }).join();
  EXPECT_EQ(released, 1);
  EXPECT_EQ(key.kept(), nullptr) << "no other thread has it";
}

TEST_F(AThreadKey, ReleasesAtItsOwnEndWhatThisThreadKeeps) {
  std::optional<ThreadKey> key(countRelease);
  EXPECT_TRUE(key->keep(&memory));
  key.reset();
  EXPECT_EQ(released, 1);
}

TEST_F(AThreadKey, KeepsNothingWhereThereAreNoMoreKeys) {
  std::vector<pthread_key_t> all;
  for (pthread_key_t one = 0; pthread_key_create(&one, nullptr) == 0;) all.push_back(one);
  {
    const ThreadKey key(countRelease);
    errno = EDOM;
    EXPECT_FALSE(key.keep(&memory));
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(key.kept(), nullptr);
  }
  for (const pthread_key_t one : all) pthread_key_delete(one);
  EXPECT_EQ(released, 0);
}

}  // namespace
}  // namespace wmq::testing
