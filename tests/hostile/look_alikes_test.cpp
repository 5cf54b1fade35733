// A directory full of files that look like old ones.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "hostile/system_calls.h"
#include "support/temporary_directory.h"
#include "support/text_files.h"
#include "wmq/stream.h"

namespace wmq::testing {
namespace {

class LookAlikes : public ::testing::Test {
 protected:
  void makeFiles(int count, const std::string &beginning, const std::string &end = "") const {
    for (int i = 1; i <= count; ++i) makeFile(directory / (beginning + std::to_string(i) + end));
  }
  int remove(int32_t limit) const {
    directoryCalls = {};
    return wmq_checkstatusfilenum((directory / "s").c_str(), limit);
  }

  const TemporaryDirectory directory{};
};

TEST_F(LookAlikes, CostOnePassAndOneLookEach) {
  makeFiles(2000, "s.");
  EXPECT_EQ(remove(3), 0);
  EXPECT_EQ(directoryCalls.opened, 1);
  EXPECT_EQ(directoryCalls.looks, 2000);
  EXPECT_EQ(directoryCalls.removed, 1998);
  EXPECT_EQ(namesIn(directory.path()), (std::vector<std::string>{"s.1999", "s.2000"}));
}

TEST_F(LookAlikes, OfAnotherNameAreNotLookedAt) {
  makeFiles(500, "s.", "x");
  makeFiles(500, "t.");
  makeFiles(500, "s.1.");
  EXPECT_EQ(remove(1), 0);
  EXPECT_EQ(directoryCalls.opened, 1);
  EXPECT_EQ(directoryCalls.looks, 0);
  EXPECT_EQ(directoryCalls.removed, 0);
}

TEST_F(LookAlikes, ThatAreNoFilesAreLookedAtOnce) {
  for (int i = 1; i <= 500; ++i) {
    std::filesystem::create_directory(directory / ("s.1" + std::to_string(i)));
    std::filesystem::create_symlink("nowhere", directory / ("s.9" + std::to_string(i)));
  }
  EXPECT_EQ(remove(1), 0);
  EXPECT_EQ(directoryCalls.opened, 1);
  EXPECT_EQ(directoryCalls.looks, 1000);
  EXPECT_EQ(directoryCalls.removed, 0);
}

}  // namespace
}  // namespace wmq::testing
