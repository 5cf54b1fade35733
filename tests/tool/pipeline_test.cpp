#include "tool/pipeline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

namespace wmq::tool {
namespace {

struct Part {
  int number = 0;
  int64_t square = 0;
};

class SharingWork : public ::testing::TestWithParam<unsigned> {
 protected:
  // The steps of squaring the numbers below `count`.
  Steps<Part> squaring(int count) {
    return {.fill =
                [this, count](Part &part) {
                  part.number = filled;
                  return filled++ < count;
                },
            .work = [](Part &part) { part.square = int64_t{part.number} * part.number; },
            .use =
                [this](Part &part) {
                  EXPECT_EQ(part.number, used);
                  EXPECT_EQ(part.square, int64_t{used} * used);
                  ++used;
                  return true;
                },
            .idle = [] {}};
  }

  void run(const Steps<Part> &steps) { Pipeline<Part>(GetParam(), steps).run(); }

  int filled = 0;
  int used = 0;
};

INSTANTIATE_TEST_SUITE_P(Among, SharingWork, ::testing::Values(1, 2, 3, 16),
                         ::testing::PrintToStringParamName());

TEST_P(SharingWork, GivesResultsInTheOrderOfTheParts) {
  run(squaring(5000));
  EXPECT_EQ(used, 5000);
}

TEST_P(SharingWork, TakesNoMoreThreadsThanItMay) {
  Steps<Part> steps = squaring(5000);
  std::mutex mutex;
  std::set<std::thread::id> threads;
  steps.work = [&, work = steps.work](Part &part) {
    const std::lock_guard lock(mutex);
    threads.insert(std::this_thread::get_id());
    work(part);
  };
  run(steps);
  EXPECT_LE(threads.size(), GetParam());
}

TEST_P(SharingWork, IsIdleOnceAllThatIsReadyHasBeenUsed) {
  Steps<Part> steps = squaring(100);
  std::atomic<int> usedBeforeIdle = 0;
  steps.idle = [&] {
    usedBeforeIdle = used;
    usedBeforeIdle.notify_one();
  };
  // An input that brings nothing more until all before has come out.
  steps.fill = [&, fill = steps.fill](Part &part) {
    if (filled == 50)
      for (int seen = usedBeforeIdle; seen != 50; seen = usedBeforeIdle) usedBeforeIdle.wait(seen);
    return fill(part);
  };
  run(steps);
  EXPECT_EQ(usedBeforeIdle, 100);
}

TEST_P(SharingWork, OfNothingEnds) {
  run(squaring(0));
  EXPECT_EQ(used, 0);
}

TEST_P(SharingWork, HoldsFewPartsAtATime) {
  Steps<Part> steps = squaring(5000);
  std::atomic<int> atWork = 0;
  std::atomic<int> most = 0;
  steps.fill = [this, fill = steps.fill, &atWork, &most](Part &part) {
    const bool more = fill(part);
    if (more && ++atWork > most) most = atWork.load();
    return more;
  };
  steps.use = [use = steps.use, &atWork](Part &part) {
    --atWork;
    return use(part);
  };
  run(steps);
  EXPECT_LE(most, static_cast<int>(2 * GetParam() + 2));
}

TEST_P(SharingWork, EndsWhenNothingMoreIsWanted) {
  Steps<Part> steps = squaring(1'000'000'000);
  steps.use = [this](Part &) { return ++used < 10; };
  run(steps);
  EXPECT_EQ(used, 10);
}

TEST_P(SharingWork, PassesOnWhatAnyStepThrows) {
  for (int thrower = 0; thrower < 3; ++thrower) {
    filled = used = 0;
    Steps<Part> steps = squaring(1'000'000'000);
    const auto atFifty = [](const Part &part) {
      if (part.number == 50) throw std::runtime_error("fifty");
    };
    if (thrower == 0)
      steps.fill = [fill = steps.fill, atFifty](Part &part) {
        const bool more = fill(part);
        atFifty(part);
        return more;
      };
    if (thrower == 1) steps.work = atFifty;
    if (thrower == 2)
      steps.use = [atFifty](Part &part) {
        atFifty(part);
        return true;
      };
    if (thrower == 1) steps.use = [](Part &) { return true; };
    EXPECT_THROW(run(steps), std::runtime_error) << thrower;
  }
}

TEST(AvailableThreads, AreAtLeastOne) { EXPECT_GE(availableThreads(), 1U); }

}  // namespace
}  // namespace wmq::tool
