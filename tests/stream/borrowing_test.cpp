// Records that belong to the library (wmq_borrowline).
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <string>
#include <vector>

#include "companion/block_cache.h"
#include "support/collected_lines.h"
#include "support/damaged_line.h"
#include "support/record_text.h"
#include "support/small_records.h"
#include "support/user_directory.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

std::string refusal() { return std::to_string(wmq_errno) + ' ' + wmq_errdetail(); }

const eventRecord *borrowed(const std::string &line) {
  wmq_errno = 0;
  return wmq_borrowline(line.data(), line.size());
}

// All that a line gives: the record with every member, or why it is refused.
std::string borrowedOutcome(const std::string &line) {
  const eventRecord *const record = borrowed(line);
  return record != nullptr ? jsonOf(*record) : refusal();
}

std::string parsedOutcome(const std::string &line) {
  const OwnedRecord record = parse(line);
  return record != nullptr ? jsonOf(*record) : refusal();
}

const char kStart[] =
    "\"JOB_START\" \"10.1\" 1700000000 77 1 2 3 1.5 2 \"3*node1\" \"node2\" \"a\" \"b\" 4 \"c\" 5 \"d\" 6 "
    "\"e\" \"f\" 7 \"g\" 8 1 \"n\" 9 \"\" 1 2 0 3 4 5 ";

class BorrowedRecords : public ::testing::Test {
 protected:
  const UserDirectory users{{{0, "root"}, {2, "two"}, {1001, "anna"}}};
};

TEST_F(BorrowedRecords, AreThoseThatParsingGives) {
  for (const std::string &line : goldenLines()) EXPECT_EQ(borrowedOutcome(line), parsedOutcome(line)) << line;
  for (const std::string &line : sampledLines())
    EXPECT_EQ(borrowedOutcome(line), parsedOutcome(line)) << line;
}

TEST_F(BorrowedRecords, AreThoseThatParsingGivesForEveryBeginningOfALine) {
  const std::string line = kStart;
  for (size_t length = 0; length <= line.size(); ++length)
    EXPECT_EQ(borrowedOutcome(line.substr(0, length)), parsedOutcome(line.substr(0, length)));
}

TEST_F(BorrowedRecords, AreThoseThatParsingGivesForDamagedLines) {
  const std::vector<std::string> lines = goldenLines();
  EXPECT_TRUE(rc::check([&] {
    const std::string line = damagedLine(lines);
    RC_ASSERT(borrowedOutcome(line) == parsedOutcome(line));
  }));
}

TEST_F(BorrowedRecords, MayShareTheTextsOfEqualHosts) {
  const eventRecord *const record = borrowed(kStart);
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  const jobStartLog &log = record->eventLog.jobStartLog;
  ASSERT_EQ(log.numExHosts, 4);
  EXPECT_STREQ(log.execHosts[0], "node1");
  EXPECT_EQ(log.execHosts[0], log.execHosts[2]);
  EXPECT_STREQ(log.execHosts[3], "node2");
  EXPECT_EQ(log.numAllocHosts, 4);
  EXPECT_EQ(log.allocHosts, log.execHosts);
}

TEST_F(BorrowedRecords, LeaveTheRecordThatIsKeptAlone) {
  const eventRecord *const kept = wmq_readstreamline("\"MBD_DIE\" \"10.1\" 5 \"host\" 1 2 \"why\" 3");
  ASSERT_NE(kept, nullptr) << wmq_errdetail();
  const std::string before = jsonOf(*kept);
  ASSERT_NE(borrowed(kStart), nullptr);
  EXPECT_EQ(jsonOf(*kept), before);
}

TEST_F(BorrowedRecords, TakeNoLineWithANul) {
  std::string line = kStart;
  line[line.size() / 2] = '\0';
  EXPECT_EQ(borrowed(line), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT);
  EXPECT_NE(std::string(wmq_errdetail()).find("a line without NUL bytes"), std::string::npos);
}

TEST_F(BorrowedRecords, TakeNoNullLine) {
  EXPECT_EQ(wmq_borrowline(nullptr, 0), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

// Long records come and go, and so does the memory that they took.
TEST_F(BorrowedRecords, GiveBackTheMemoryOfLongOnes) {
  if (!keepsBlocks()) GTEST_SKIP() << "each block stands alone where memory is checked";
  const std::string longLine = "\"JOB_START\" \"2.1\" 5 1 0 0 0 1.0 1 \"1000000*a\" \"\" \"\"";
  ASSERT_NE(borrowed(longLine), nullptr) << wmq_errdetail();
  ASSERT_NE(borrowed(kStart), nullptr);
  EXPECT_GT(wmq::borrowed.wanted, size_t{8} * 1000000);
  for (int i = 0; i < 6000; ++i) ASSERT_NE(borrowed(kStart), nullptr);
  EXPECT_LT(static_cast<size_t>(wmq::borrowed.end - wmq::borrowed.next), size_t{1} << 20);
}

TEST_F(BorrowedRecords, OfOneLengthUseTheSameMemoryAgain) {
  if (!keepsBlocks()) GTEST_SKIP() << "each block stands alone where memory is checked";
  const std::string longLine = "\"JOB_START\" \"2.1\" 5 1 0 0 0 1.0 1 \"100000*a\" \"\" \"\"";
  for (int i = 0; i < 3; ++i) ASSERT_NE(borrowed(longLine), nullptr);
  const eventRecord *const record = borrowed(longLine);
  EXPECT_EQ(borrowed(longLine), record);
}

}  // namespace
}  // namespace wmq::testing
