// What a failure of following is told of.
#include "tool/followed.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "support/handmade_stream.h"
#include "support/ordinary_user.h"

namespace wmq::tool {
namespace {

class FailedPart : public ::testing::Test, protected testing::HandmadeStream {
 protected:
  std::string failedWith(int error, const std::string &stream) const {
    errno = error;
    std::string failed = failedPart(stream);
    EXPECT_EQ(errno, error);
    return failed;
  }
};

TEST_F(FailedPart, IsTheFileThatCannotBeOpened) {
  for (const int suffix : {100, 101, 102}) {
    append(testing::lines(suffix, suffix));
    rotate(suffix);
  }
  append("");
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(old(101).c_str(), 0), 0);
  const testing::OrdinaryUser user;
  if (!user.isOrdinary()) GTEST_SKIP() << "root cannot step down here";
  EXPECT_EQ(failedWith(EACCES, path), old(101));
  EXPECT_EQ(failedWith(EIO, path), path);
}

TEST_F(FailedPart, IsTheDirectoryThatIsNotThere) {
  EXPECT_EQ(failedWith(ENOENT, directory / "none/s"), directory / "none");
}

}  // namespace
}  // namespace wmq::tool
