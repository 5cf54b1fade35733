#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "wmq/companion.h"

namespace {

constexpr int64_t element(int64_t job, int64_t index) { return index << 32 | job; }

TEST(JobIdText, IsTheJobNumber) {
  EXPECT_STREQ(wmq_jobid2str(0), "0");
  EXPECT_STREQ(wmq_jobid2str(12345), "12345");
  EXPECT_STREQ(wmq_jobid2str(0xffffffff), "4294967295");
}

TEST(JobIdText, HasTheIndexOfAnArrayElementInBrackets) {
  EXPECT_STREQ(wmq_jobid2str(element(12345, 7)), "12345[7]");
  EXPECT_STREQ(wmq_jobid2str(element(0, 1)), "0[1]");
  EXPECT_STREQ(wmq_jobid2str(-1), "4294967295[4294967295]");
}

TEST(JobIdInstruction, IsThePlainNumber) {
  EXPECT_STREQ(wmq_jobidinstr(element(1, 1)), "4294967297");
  EXPECT_STREQ(wmq_jobidinstr(-1), "-1");
  EXPECT_STREQ(wmq_jobidinstr(INT64_MIN), "-9223372036854775808");
}

TEST(JobIdText, OfOneKindLeavesTheOtherAlone) {
  const char *const text = wmq_jobid2str(5);
  wmq_jobidinstr(6);
  EXPECT_STREQ(text, "5");
}

TEST(JobIdText, BelongsToItsThread) {
  const char *const text = wmq_jobid2str(5);
  std::thread([] { wmq_jobid2str(6); }).join();
  EXPECT_STREQ(text, "5");
}

}  // namespace
