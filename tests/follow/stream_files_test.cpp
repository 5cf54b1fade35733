// The files of a stream, listed.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "follow/stream_listing.h"
#include "support/handmade_stream.h"
#include "support/text_files.h"
#include "wmq/follow.h"
#include "wmq/stream.h"

namespace wmq::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StreamFiles : public ::testing::Test, protected HandmadeStream {
 protected:
  // Each as its suffix, or "current".
  std::vector<std::string> listed() const {
    size_t count = 77;
    const std::unique_ptr<wmqStreamFile, decltype(&std::free)> files(wmq_streamfiles(path.c_str(), &count),
                                                                     std::free);
    if (!files) return {"failed " + std::to_string(wmq_errno)};
    std::vector<std::string> found;
    for (size_t i = 0; i < count; ++i) {
      const wmqStreamFile &file = files.get()[i];
      EXPECT_TRUE(exists(file.path));
      EXPECT_EQ(file.path, file.isCurrent != 0 ? path : path + "." + std::to_string(file.suffix));
      found.push_back(file.isCurrent != 0 ? "current" : std::to_string(file.suffix));
    }
    return found;
  }

  int errorOf(const std::string &stream) const {
    size_t count = 0;
    errno = 0;
    EXPECT_EQ(wmq_streamfiles(stream.c_str(), &count), nullptr);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    return errno;
  }
};

TEST_F(StreamFiles, StandInTheOrderOfWriting) {
  for (const int suffix : {1000, 99, 100, 2147483645}) makeFile(old(suffix));
  append(lines(1, 1));
  EXPECT_THAT(listed(), ElementsAre("99", "100", "1000", "2147483645", "current"));
}

TEST(StreamListing, IsAnotherWhereANameOrAFileIs) {
  StreamListing listing;
  listing.old.push_back({.suffix = 1, .path = "s.1", .identity = {.inode = 5}});
  EXPECT_EQ(listing, StreamListing(listing));
  StreamListing replaced = listing;
  replaced.old[0].identity.inode = 6;
  EXPECT_FALSE(listing == replaced);
  StreamListing renamed = listing;
  renamed.old[0].path = "s.2";
  EXPECT_FALSE(listing == renamed);
}

TEST_F(StreamFiles, NeedNotBeThere) {
  EXPECT_THAT(listed(), IsEmpty());
  makeFile(old(5));
  EXPECT_THAT(listed(), ElementsAre("5"));
}

TEST_F(StreamFiles, AreTheRegularOnesWithANumberBehindTheirName) {
  makeFile(old(7));
  for (const char *name : {".x", ".1x", "x.5", ".2147483646", ".", ".1.gz", "5"}) makeFile(path + name);
  fs::create_directory(old(8));
  fs::create_symlink(old(7), old(9));
  ASSERT_EQ(mkfifo(old(10).c_str(), 0600), 0);
  EXPECT_THAT(listed(), ElementsAre("7"));
}

TEST_F(StreamFiles, OfTheSameNumberStandInTheOrderOfTheirNames) {
  const std::vector<std::string> names = {path + ".007", path + ".07", path + ".7", path + ".8"};
  for (const size_t i : {2, 0, 3, 1}) makeFile(names[i]);
  size_t count = 0;
  const std::unique_ptr<wmqStreamFile, decltype(&std::free)> files(wmq_streamfiles(path.c_str(), &count),
                                                                   std::free);
  ASSERT_EQ(count, names.size());
  for (size_t i = 0; i < count; ++i) EXPECT_EQ(files.get()[i].path, names[i]);
}

TEST_F(StreamFiles, OfABareNameAreInTheWorkingDirectory) {
  makeFile(old(5));
  append("");
  const fs::path before = fs::current_path();
  fs::current_path(directory.path());
  size_t count = 0;
  const std::unique_ptr<wmqStreamFile, decltype(&std::free)> files(wmq_streamfiles("s", &count), std::free);
  fs::current_path(before);
  ASSERT_EQ(count, 2U);
  EXPECT_STREQ(files.get()[0].path, "s.5");
  EXPECT_STREQ(files.get()[1].path, "s");
}

TEST_F(StreamFiles, AreNotListedForWhatIsNoStream) {
  EXPECT_EQ(errorOf(directory.path()), EISDIR);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(errorOf(path), EINVAL);
  EXPECT_EQ(errorOf(directory / "none/s"), ENOENT);
}

TEST_F(StreamFiles, WantAPathAndRoomForTheCount) {
  size_t count = 0;
  for (const char *none : {static_cast<const char *>(nullptr), ""}) {
    wmq_errno = 0;
    EXPECT_EQ(wmq_streamfiles(none, &count), nullptr);
    EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  }
  wmq_errno = 0;
  EXPECT_EQ(wmq_streamfiles(path.c_str(), nullptr), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

}  // namespace
}  // namespace wmq::testing
