#include "companion/limits.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "wmq/companion.h"

namespace {

using Limits = std::array<int32_t, WMX_RLIM_NLIMITS>;

class LimitUnits : public testing::Test {
 protected:
  ~LimitUnits() override {
    rlimitUnit = 1;
    wmq::limitConverter = nullptr;
  }
};

Limits converted(Limits limits, int direction) {
  convertRLimit(limits.data(), direction);
  return limits;
}

Limits filled(int32_t limit) {
  Limits limits;
  limits.fill(limit);
  return limits;
}

TEST_F(LimitUnits, AreOneFromTheStart) {
  EXPECT_EQ(rlimitUnit, 1);
  EXPECT_EQ(unifiedUnit, 0);
  EXPECT_EQ(converted(filled(7), 0), filled(7));
  EXPECT_EQ(converted(filled(7), 1), filled(7));
}

TEST_F(LimitUnits, ConcernOnlyTheSlotsThatHoldSizes) {
  rlimitUnit = 1024;
  const Limits written = {3, 3072, 3072, 3072, 3072, 3072, 3, 3, 3072, 3, 3, 3};
  EXPECT_EQ(converted(filled(3), 0), written);
  EXPECT_EQ(converted(written, 1), filled(3));
}

TEST_F(LimitUnits, LeaveNoLimitAlone) {
  rlimitUnit = 1024;
  for (const int direction : {0, 1}) {
    EXPECT_EQ(converted(filled(-1), direction), filled(-1));
    EXPECT_EQ(converted(filled(INT32_MAX), direction), filled(INT32_MAX));
  }
}

TEST_F(LimitUnits, Saturate) {
  rlimitUnit = 1024;
  EXPECT_EQ(converted(filled(2'097'152), 0)[WMX_RLIMIT_RSS], INT32_MAX);
  EXPECT_EQ(converted(filled(2'097'151), 0)[WMX_RLIMIT_RSS], 2'147'482'624);
  EXPECT_EQ(converted(filled(INT32_MIN), 0)[WMX_RLIMIT_RSS], INT32_MIN);
}

TEST_F(LimitUnits, AreIgnoredWhereTheyMakeNoSense) {
  for (const int unit : {0, -1, -1024, 1}) {
    rlimitUnit = unit;
    EXPECT_EQ(converted(filled(5), 0), filled(5));
    EXPECT_EQ(converted(filled(5), 1), filled(5));
  }
  rlimitUnit = 1024;
  EXPECT_EQ(converted(filled(5), 2), filled(5));
  convertRLimit(nullptr, 0);
}

TEST_F(LimitUnits, CanBeReplacedByAnotherRule) {
  wmq::limitConverter = [](int32_t *limits, int direction) { limits[0] = direction + 100; };
  EXPECT_EQ(converted(filled(5), 1)[0], 101);
  EXPECT_EQ(converted(filled(5), 1)[1], 5);
}

RC_GTEST_FIXTURE_PROP(LimitUnits, AreUndoneByReading, ()) {
  rlimitUnit = *rc::gen::inRange(1, 2000);
  Limits limits;
  for (int32_t &limit : limits) limit = *rc::gen::inRange(-1, 1'000'000);
  RC_ASSERT(converted(converted(limits, 0), 1) == limits);
}

TEST(LimitNames, StandInIndexOrderAndEndWithNull) {
  EXPECT_STREQ(wmxRlimitsStr[WMX_RLIMIT_CPU], "WMX_RLIMIT_CPU");
  EXPECT_STREQ(wmxRlimitsStr[WMX_RLIMIT_OPEN_MAX], "WMX_RLIMIT_OPEN_MAX");
  EXPECT_STREQ(wmxRlimitsStr[WMX_RLIMIT_SWAP], "WMX_RLIMIT_SWAP");
  EXPECT_STREQ(wmxRlimitsStr[WMX_RLIMIT_THREAD], "WMX_RLIMIT_THREAD");
  EXPECT_EQ(wmxRlimitsStr[WMX_RLIM_NLIMITS], nullptr);
  EXPECT_EQ(jobRlimitsStr[WMX_RLIM_NLIMITS], nullptr);
  for (int i = 0; i < WMX_RLIM_NLIMITS; ++i)
    EXPECT_EQ("JOB" + std::string(wmxRlimitsStr[i]).substr(3), jobRlimitsStr[i]);
}

}  // namespace
