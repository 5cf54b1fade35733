// What is particular to the pending-reasons stream.
#include <gmock/gmock.h>
#include <malloc.h>

#include <cstdlib>
#include <set>

#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

class PendingReasonsStream : public SideStreamTest {
 protected:
  PendingReasonsStream() : SideStreamTest(kPendingReasons) {}
};

TEST_F(PendingReasonsStream, CarriesOneTypeRefusesSomeAndDropsAllOthersWithSuccess) {
  const std::set<int32_t> refused = {-1, 0, 3, 31, 33, 50, 56, 59, 65, 66, 67, 76, 79};
  ASSERT_EQ(open(), 0);
  for (int32_t type = -1; type <= 79; ++type) {
    makeFile(path);
    wmq_errno = 99;
    const int result = write(bareRecord(type));
    if (refused.contains(type)) {
      EXPECT_EQ(result, -1) << type;
      EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT) << type;
    } else {
      EXPECT_EQ(result, 0) << type;
      EXPECT_EQ(wmq_errno, 0) << type;
    }
    EXPECT_EQ(contentOf(path), type == 71 ? "\"JOB_PENDING_REASONS\" \"10.1\" 1700000000 0\n" : "") << type;
  }
}

TEST_F(PendingReasonsStream, RefusesTypesFarFromAnyCode) {
  ASSERT_EQ(open(), 0);
  for (const int32_t type : {-2, 80, 1000, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(write(bareRecord(type)), -1) << type;
    EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT) << type;
  }
}

TEST_F(PendingReasonsStream, DropsTheStatusOfAJob) {
  ASSERT_EQ(open(), 0);
  wmq_errno = 99;
  EXPECT_EQ(write(bareRecord(EVENT_JOB_STATUS2)), 0);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(contentOf(path), "");
}

TEST_F(PendingReasonsStream, HasItsTraceTexts) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 5}), 0);
  advanceToCheck();
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(wmq_closependingreasons(), 0);
  EXPECT_THAT(
      trace.messages,
      ElementsAre("wmq_openpendingreasons(): pendingreasons " + path + " open all right maxsize 5",
                  "resetpendingreasons(): pendingreasons " + path + " reset all right maxsize 5",
                  "wmq_closependingreasons(): pendingreasons " + path + " closed all right maxsize 5"));
}

// ------------------------------------------------------------------------- the default path

// Bytes that the process has from malloc.
size_t bytesInUse() { return mallinfo2().uordblks; }

// Where sanitizers or valgrind have put an allocator of their own, nothing is counted.
bool bytesAreCounted() {
  const size_t before = bytesInUse();
  void *volatile some = std::malloc(10000);
  const bool counted = bytesInUse() >= before + 10000;
  std::free(some);
  return counted;
}

// What stays in use for each time that the stream is opened under a name and closed.
size_t bytesLeftByOpening(char *name) {
  constexpr size_t kTimes = 500;
  const streamParams params{nullptr, 0, 3, 0, nullptr, nullptr, name};
  const auto openAndClose = [&] {
    return wmq_openpendingreasons(&params) == 0 && wmq_closependingreasons() == 0;
  };
  for (int i = 0; i < 20; ++i)
    if (!openAndClose()) return SIZE_MAX;
  const size_t before = bytesInUse();
  for (size_t i = 0; i < kTimes; ++i)
    if (!openAndClose()) return SIZE_MAX;
  return (bytesInUse() - before) / kTimes;
}

// In a child process: what is lost there on purpose troubles nobody.
TEST(PendingReasonsDefaultPath, LeavesACopyOfItThatACallerSpelledOutUnreleased) {
  if (!bytesAreCounted()) GTEST_SKIP() << "another allocator stands in here";
  const SharedPath shared(kPendingReasons.defaultPath);
  EXPECT_EXIT(
      {
        char spelledOut[] = "/tmp/wmq.pendingreasons";
        char another[] = "/tmp/./wmq.pendingreasons";
        const size_t ofDefault = bytesLeftByOpening(nullptr);
        const size_t ofCopy = bytesLeftByOpening(spelledOut);
        const size_t ofOther = bytesLeftByOpening(another);
        std::fprintf(stderr, "%d %d %d", ofDefault == 0, ofCopy >= 24 && ofCopy < 100, ofOther == 0);
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "1 1 1");
}

// The same seen from inside, where the copy can be kept and given back.
class KeptDefaultPath : public ::testing::Test {
 protected:
  static StreamKind kindAt(const std::string &path) {
    return {.noun = "noun",
            .defaultPath = path.c_str(),
            .openLabel = "open",
            .resetLabel = "reset",
            .closeLabel = "close",
            .type = EVENT_JOB_PENDING_REASONS,
            .keepsDefaultPath = true};
  }

  const TemporaryDirectory directory{};
  const std::string defaultPath = directory / "default";
  const StreamKind kind = kindAt(defaultPath);
  const streamParams params{nullptr, 0, 3, 0, nullptr, nullptr, nullptr};
};

TEST_F(KeptDefaultPath, IsUsedAsItIsAndNotCopied) {
  streamFile *file = openFile(kind, nullptr, params);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->fileName, kind.defaultPath);
  closeFile(file);
  EXPECT_STREQ(kind.defaultPath, defaultPath.c_str());
}

TEST_F(KeptDefaultPath, LeavesACopyWithTheSameText) {
  streamFile *file = openFile(kind, defaultPath.c_str(), params);
  ASSERT_NE(file, nullptr);
  char *const copy = file->fileName;
  EXPECT_NE(copy, kind.defaultPath) << "a given path is copied";
  closeFile(file);
  EXPECT_EQ(copy, defaultPath);
  std::free(copy);
}

TEST_F(KeptDefaultPath, IsNotReleasedWhenItCannotBeOpened) {
  const std::string missing = directory / "missing/default";
  const StreamKind unreachable = kindAt(missing);
  EXPECT_EQ(openFile(unreachable, nullptr, params), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(openFile(unreachable, missing.c_str(), params), nullptr) << "here the copy is released";
}

TEST(PendingReasonsDefaultPath, CanBeOpenedAgainAndAgain) {
  const SharedPath shared(kPendingReasons.defaultPath);
  const streamParams params{nullptr, 0, 3, 0, nullptr, nullptr, nullptr};
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(wmq_openpendingreasons(&params), 0);
    EXPECT_TRUE(exists(kPendingReasons.defaultPath));
    EXPECT_EQ(wmq_closependingreasons(), 0);
  }
}

}  // namespace
}  // namespace wmq::testing
