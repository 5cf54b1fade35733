// What files are told apart by.
#include "follow/file_identity.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/handmade_stream.h"
#include "support/small_records.h"

namespace wmq::testing {
namespace {

TEST(AFileIdentity, IsThatOfDeviceInodeAndTimeOfCreation) {
  const FileIdentity one{1, 2, 3};
  EXPECT_TRUE((one == FileIdentity{1, 2, 3}));
  EXPECT_FALSE((one == FileIdentity{0, 2, 3}));
  EXPECT_FALSE((one == FileIdentity{1, 0, 3}));
  EXPECT_FALSE((one == FileIdentity{1, 2, 4}));
}

TEST(AFileIdentity, GoesWithoutATimeOfCreationOnEitherSide) {
  const FileIdentity one{1, 2, 3};
  const FileIdentity unknown{1, 2, 0};
  EXPECT_TRUE(one == unknown);
  EXPECT_TRUE(unknown == one);
  EXPECT_TRUE(unknown == unknown);
  EXPECT_FALSE((unknown == FileIdentity{1, 3, 0}));
}

TEST(AFileIdentity, IsCertainOnlyWithATimeOfCreation) {
  EXPECT_TRUE(isCertain({1, 2, 1}, {1, 2, 1}));
  EXPECT_FALSE(isCertain({1, 2, 0}, {1, 2, 0}));
  EXPECT_FALSE(isCertain({1, 2, 1}, {1, 2, 0}));
  EXPECT_FALSE(isCertain({1, 2, 0}, {1, 2, 1}));
  EXPECT_FALSE(isCertain({1, 2, 1}, {1, 2, 2}));
}

TEST(AFileIdentity, IsTheSystems) {
  const HandmadeStream stream;
  stream.append("x");
  FileStatus status;
  struct stat found {};
  ASSERT_TRUE(statusOf(stream.path.c_str(), status));
  ASSERT_EQ(stat(stream.path.c_str(), &found), 0);
  EXPECT_EQ(status.identity.inode, found.st_ino);
  EXPECT_EQ(status.size, 1);
  EXPECT_TRUE(status.regular);
  EXPECT_FALSE(statusOf((stream.path + "x").c_str(), status));
  EXPECT_TRUE(statusOf(stream.directory.path().c_str(), status));
  EXPECT_FALSE(status.regular);
}

TEST(AFileIdentity, HasNoTimeOfCreationWhereTheFileSystemKeepsNone) {
  FileStatus status;
  ASSERT_TRUE(statusOf("/proc/self/status", status));
  EXPECT_FALSE(hasBirth(status.identity));
  EXPECT_TRUE(status.regular);
}

TEST(AChecksum, IsTheOneOfEthernet) {
  EXPECT_EQ(checksum("123456789", 9), 0xcbf43926U);
  EXPECT_EQ(checksum("", 0), 0U);
}

}  // namespace
}  // namespace wmq::testing
