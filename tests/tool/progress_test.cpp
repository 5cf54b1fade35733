#include "tool/progress.h"

#include <gtest/gtest.h>

namespace wmq::tool {
namespace {

TEST(ProgressText, ShowsShareRateAndRemainingTime) {
  EXPECT_EQ(progressText(25'000'000, 100'000'000, 10),
            " 25% [#######.......................] 2.5 MB/s, 0:00:30 left");
  EXPECT_EQ(progressText(100, 100, 1), "100% [##############################] 0.0 MB/s, 0:00:00 left");
}

TEST(ProgressText, StaysWithinTheBarWhenAFileGrows) {
  EXPECT_EQ(progressText(300, 100, 1), "100% [##############################] 0.0 MB/s, 0:00:00 left");
}

TEST(ProgressText, ShowsBytesAndRateWhereTheTotalIsUnknown) {
  EXPECT_EQ(progressText(3'000'000, 0, 2), "3.0 MB  1.5 MB/s");
}

TEST(ProgressText, PromisesNothingBeforeAnythingIsDone) {
  EXPECT_EQ(progressText(0, 100, 0), "  0% [..............................] 0.0 MB/s");
}

TEST(TotalSize, IsUnknownAsSoonAsOneInputIsNoFile) {
  EXPECT_EQ(totalSize({"/dev/null"}), 0U);
  EXPECT_EQ(totalSize({WMQ_TEST_PROGRAM, "/dev/null"}), 0U);
  EXPECT_GT(totalSize({WMQ_TEST_PROGRAM}), 0U);
  EXPECT_EQ(totalSize({WMQ_TEST_PROGRAM, WMQ_TEST_PROGRAM}), 2 * totalSize({WMQ_TEST_PROGRAM}));
}

}  // namespace
}  // namespace wmq::tool
