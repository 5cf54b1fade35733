#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/line_parser.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

class ClosingAStream : public StreamTest {
 protected:
  int close() { return wmq_closestream(); }
};

TEST_F(ClosingAStream, FailsSilentlyWhenNoneIsOpen) {
  wmq_errno = 99;
  EXPECT_EQ(close(), -1);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(ClosingAStream, Succeeds) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(close(), 0);
  EXPECT_EQ(stream, nullptr);
}

TEST_F(ClosingAStream, DoesNotWaitForAPipe) {
  ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(close(), 0);
  EXPECT_EQ(wmq_errno, WMQE_EOF);
}

TEST_F(ClosingAStream, FailsTheSecondTime) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(close(), 0);
  EXPECT_EQ(close(), -1);
}

TEST_F(ClosingAStream, ReadsToTheEndAndSaysSo) {
  makeFile(path, logSwitchLine(1) + "not a line\n" + logSwitchLine(2));
  ASSERT_EQ(open(), 0);
  wmq_errno = 0;
  EXPECT_EQ(close(), 0);
  EXPECT_EQ(wmq_errno, WMQE_EOF);
}

TEST_F(ClosingAStream, LeavesTheFileAsItIs) {
  ASSERT_EQ(open(), 0);
  write(1);
  write(2);
  close();
  EXPECT_EQ(contentOf(path), logSwitchLine(1) + logSwitchLine(2));
}

TEST_F(ClosingAStream, GivesTheDescriptorBack) {
  const int descriptors = openDescriptors();
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(openDescriptors(), descriptors + 1);
  close();
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(ClosingAStream, LetsAnotherBeOpened) {
  ASSERT_EQ(open(), 0);
  close();
  ASSERT_EQ(openAs(directory / "t"), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(contentOf(path), "");
  EXPECT_EQ(contentOf(directory / "t"), logSwitchLine(1));
}

TEST_F(ClosingAStream, LetsTheSameBeReadFromItsBeginning) {
  makeFile(path, logSwitchLine(1) + logSwitchLine(2));
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 1);
  close();
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 1);
}

TEST_F(ClosingAStream, LeavesTheRecordThatWasReadLast) {
  makeFile(path, logSwitchLine(1) + logSwitchLine(2));
  ASSERT_EQ(open(), 0);
  const eventRecord *record = wmq_readstream(&lineNum);
  ASSERT_NE(record, nullptr);
  close();
  EXPECT_EQ(logRec, record);
  EXPECT_EQ(record->eventLog.logSwitchLog.lastJobId, 1);
}

TEST_F(ClosingAStream, WorksWhenTheFileIsGone) {
  ASSERT_EQ(open(), 0);
  std::remove(path.c_str());
  EXPECT_EQ(close(), 0);
  EXPECT_FALSE(exists(path));
}

}  // namespace
}  // namespace wmq::testing
