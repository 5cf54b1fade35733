#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "companion/checked_memory.h"
#include "stream/expected_types.h"
#include "support/resource_limit.h"
#include "support/scripted_clock.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/line_parser.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

class ReadingAStream : public StreamTest {
 protected:
  void openWith(const std::string &content) {
    makeFile(path, content);
    ASSERT_EQ(open(), 0);
    wmq_errno = 0;
  }

  void expectFailure(int error) {
    wmq_errno = 0;
    EXPECT_EQ(wmq_readstream(&lineNum), nullptr);
    EXPECT_EQ(wmq_errno, error);
  }

  void expectEnd() { expectFailure(WMQE_EOF); }
};

// ------------------------------------------------------------------------- lines in turn

TEST_F(ReadingAStream, GivesTheRecordsInTheirOrder) {
  openWith(logSwitchLine(1) + logSwitchLine(2) + logSwitchLine(3));
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(readNumber(), 3);
  expectEnd();
}

TEST_F(ReadingAStream, GivesTypeTimeAndVersionOfTheLine) {
  openWith("\"LOG_SWITCH\" \"9.1\" -5 7 \n");
  const eventRecord *record = wmq_readstream(&lineNum);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->type, EVENT_LOG_SWITCH);
  EXPECT_EQ(record->eventTime, -5);
  EXPECT_STREQ(record->version, "9.1");
  EXPECT_EQ(wmq_lineversion(), 9.1F);
}

TEST(ParsingOneLine, LeavesErrnoAsItWas) {
  for (const std::string line : {"\"JOB_VACATED\" \"10.1\" 1", "bad"}) {
    wmq_errno = 0;
    errno = EXDEV;
    bool lacked = true;
    eventRecord *const record = parseLine(line.data(), line.size(), lacked);
    EXPECT_EQ(errno, EXDEV) << line;
    EXPECT_FALSE(lacked);
    EXPECT_EQ(record != nullptr, line != "bad");
    if (record != nullptr) wmq_freelogrec(record);
  }
}

TEST_F(ReadingAStream, EndsAtOnceInAnEmptyFile) {
  openWith("");
  expectEnd();
}

TEST_F(ReadingAStream, StaysAtTheEnd) {
  openWith(logSwitchLine(1));
  EXPECT_EQ(readNumber(), 1);
  expectEnd();
  expectEnd();
}

TEST_F(ReadingAStream, ReadsALastLineWithoutItsEnd) {
  openWith(logSwitchLine(1) + "\"LOG_SWITCH\" \"10.1\" 5 2");
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(readNumber(), 2);
  expectEnd();
}

TEST_F(ReadingAStream, SkipsEmptyLines) {
  openWith("\n\n" + logSwitchLine(1) + "\n\n\n" + logSwitchLine(2) + "\n\n");
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(readNumber(), 2);
  expectEnd();
}

TEST_F(ReadingAStream, DoesNotTakeALineOfBlanksForAnEmptyOne) {
  openWith(" \n\t\n\r\n" + logSwitchLine(1));
  expectFailure(WMQE_BAD_FORMAT);
  expectFailure(WMQE_BAD_FORMAT);
  expectFailure(WMQE_BAD_FORMAT);
  EXPECT_EQ(readNumber(), 1);
}

TEST_F(ReadingAStream, SkipsCommentLines) {
  openWith("# one\n#two\n#\n" + logSwitchLine(1) + "#\n\n# \"LOG_SWITCH\" \"10.1\" 5 9 \n" +
           logSwitchLine(2));
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(readNumber(), 2);
  expectEnd();
}

TEST_F(ReadingAStream, EndsBehindCommentLines) {
  openWith(logSwitchLine(1) + "# nothing\n# but comments");
  EXPECT_EQ(readNumber(), 1);
  expectEnd();
}

TEST_F(ReadingAStream, TakesOnlyAFirstCharacterForAComment) {
  openWith(" # not a comment\n" + logSwitchLine(1));
  expectFailure(WMQE_BAD_FORMAT);
  EXPECT_EQ(readNumber(), 1);
}

TEST_F(ReadingAStream, ReadsLinesOfAnyLength) {
  std::string content;
  const std::vector<size_t> sizes = {0, 1, 65000, 65535, 65536, 131072, 1000000, 3};
  for (const size_t size : sizes)
    content += "\"GRP_STATUS\" \"10.1\" 5 \"" + std::string(size, 'x') + "\" 1 2\n";
  openWith(content);
  for (const size_t size : sizes) {
    const eventRecord *record = wmq_readstream(&lineNum);
    ASSERT_NE(record, nullptr) << size;
    EXPECT_EQ(record->eventLog.jgrpStatusLog.grpStatusStr, std::string(size, 'x'));
    EXPECT_EQ(record->eventLog.jgrpStatusLog.grpStatusField3, 2);
  }
  expectEnd();
}

TEST_F(ReadingAStream, KeepsTheLinesApartWhateverTheirLengths) {
  std::string content;
  std::vector<std::string> texts;
  for (size_t i = 0; i < 400; ++i) {
    texts.emplace_back(i * 7919 % 1600, static_cast<char>('a' + i % 26));
    content += "\"GRP_STATUS\" \"10.1\" 5 \"" + texts.back() + "\" 1 2\n" + (i % 3 == 0 ? "\n" : "");
  }
  openWith(content);
  for (const std::string &text : texts) {
    const eventRecord *record = wmq_readstream(&lineNum);
    ASSERT_NE(record, nullptr);
    ASSERT_EQ(record->eventLog.jgrpStatusLog.grpStatusStr, text);
  }
  expectEnd();
}

// --------------------------------------------------------------------------- bad lines

TEST_F(ReadingAStream, GoesOnBehindABadLine) {
  openWith(logSwitchLine(1) + "garbage\n" + "\"LOG_SWITCH\" \"10.1\" 5 x \n" + "\"NO_SUCH\" \"10.1\" 5\n" +
           logSwitchLine(2));
  EXPECT_EQ(readNumber(), 1);
  expectFailure(WMQE_BAD_FORMAT);
  expectFailure(WMQE_BAD_FORMAT);
  expectFailure(WMQE_BAD_EVENT);
  EXPECT_EQ(readNumber(), 2);
  expectEnd();
}

TEST_F(ReadingAStream, RefusesALineThatHoldsANulByte) {
  std::string line = logSwitchLine(1);
  line[line.find(' ')] = '\0';
  std::string later = logSwitchLine(2);
  later[later.size() - 2] = '\0';
  openWith(line + later + logSwitchLine(3));
  expectFailure(WMQE_BAD_FORMAT);
  expectFailure(WMQE_BAD_FORMAT);
  EXPECT_EQ(readNumber(), 3);
}

// The file is read in blocks; a line whose NUL has come with the block before it is no better.
TEST_F(ReadingAStream, RefusesALineThatHoldsANulByteWhereverABlockEnds) {
  std::string early = logSwitchLine(1);
  early[early.find(' ')] = '\0';
  std::string late = logSwitchLine(2);
  late[late.size() - 2] = '\0';
  const size_t lines = early.size() + late.size() + logSwitchLine(3).size();
  for (const size_t block : {64, 128, 256})
    for (size_t before = 0; before <= lines; ++before) {
      const std::string comment = '#' + std::string((block << 10) - 4 - before, 'x') + '\n';
      openWith(comment + early + logSwitchLine(3) + late + logSwitchLine(4));
      expectFailure(WMQE_BAD_FORMAT);
      ASSERT_EQ(readNumber(), 3) << before;
      expectFailure(WMQE_BAD_FORMAT);
      ASSERT_EQ(readNumber(), 4) << before;
      expectEnd();
      wmq_closestream();
    }
}

TEST_F(ReadingAStream, RefusesALongLineForANulByteAnywhereInIt) {
  const std::string line = "\"GRP_STATUS\" \"10.1\" 5 \"" + std::string(500000, 'x') + "\" 1 2\n";
  for (size_t place = 0; place < line.size() - 1; place += 49999) {
    std::string bad = line;
    bad[place] = '\0';
    openWith(bad + logSwitchLine(1) + bad.substr(0, place + 1));
    expectFailure(WMQE_BAD_FORMAT);
    ASSERT_EQ(readNumber(), 1) << place;
    expectFailure(WMQE_BAD_FORMAT);
    expectEnd();
    wmq_closestream();
  }
}

TEST_F(ReadingAStream, SeesALineOfOnlyANulByte) {
  openWith(std::string(1, '\0') + "\n" + logSwitchLine(1));
  expectFailure(WMQE_BAD_FORMAT);
  EXPECT_EQ(readNumber(), 1);
}

TEST_F(ReadingAStream, ReadsTheFirstOfTwoRecordsOnOnePhysicalLine) {
  ASSERT_EQ(open(), 0);
  wmq_errno = 0;
  ASSERT_EQ(write(bareRecord(EVENT_JOB_OCCUPY_REQ)), 0);
  ASSERT_EQ(write(1), 0);
  ASSERT_EQ(write(2), 0);
  const eventRecord *record = wmq_readstream(&lineNum);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->type, EVENT_JOB_OCCUPY_REQ);
  EXPECT_EQ(readNumber(), 2);
}

// -------------------------------------------------------------------------- the counter

TEST_F(ReadingAStream, CountsCallsAndNotLines) {
  openWith("# a comment\n\n" + logSwitchLine(1) + "bad\n" + logSwitchLine(2));
  lineNum = 40;
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(lineNum, 41);
  expectFailure(WMQE_BAD_FORMAT);
  EXPECT_EQ(lineNum, 42);
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(lineNum, 43);
  expectEnd();
  EXPECT_EQ(lineNum, 44);
}

TEST_F(ReadingAStream, TakesAMissingCounterForAReset) {
  openWith(logSwitchLine(1) + logSwitchLine(2));
  EXPECT_EQ(wmq_readstream(nullptr), nullptr);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(wmq_readstream(nullptr), nullptr);
  EXPECT_EQ(wmq_readstream(nullptr), nullptr);
  EXPECT_EQ(readNumber(), 2) << "a reset gives storage back and loses no line";
  expectEnd();
  EXPECT_EQ(wmq_readstream(nullptr), nullptr);
  expectEnd();
}

TEST_F(ReadingAStream, LeavesTheErrorNumberAloneWhenReset) {
  openWith(logSwitchLine(1));
  wmq_errno = 99;
  EXPECT_EQ(wmq_readstream(nullptr), nullptr);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(ReadingAStream, KeepsTheRecordWhenReset) {
  openWith(logSwitchLine(1));
  const eventRecord *record = wmq_readstream(&lineNum);
  EXPECT_EQ(wmq_readstream(nullptr), nullptr);
  EXPECT_EQ(logRec, record);
}

// ------------------------------------------------------------------- without a stream

TEST_F(ReadingAStream, NamesTheArgumentWithoutAStream) {
  expectFailure(WMQE_BAD_ARG);
  EXPECT_EQ(lineNum, 0) << "no call that reads";
}

TEST_F(ReadingAStream, AcceptsAResetWithoutAStream) {
  wmq_errno = 99;
  EXPECT_EQ(wmq_readstream(nullptr), nullptr);
  EXPECT_EQ(wmq_errno, 99);
}

// ---------------------------------------------------------------- reading what grows

TEST_F(ReadingAStream, SeesWhatOthersAppend) {
  openWith(logSwitchLine(1));
  EXPECT_EQ(readNumber(), 1);
  expectEnd();
  appendTo(path, logSwitchLine(2) + logSwitchLine(3));
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(readNumber(), 3);
  expectEnd();
  appendTo(path, logSwitchLine(4));
  EXPECT_EQ(readNumber(), 4);
}

TEST_F(ReadingAStream, SeesWhatTheStreamItselfWrites) {
  openWith("");
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(readNumber(), 1);
  expectEnd();
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(write(4), 0);
  EXPECT_EQ(readNumber(), 3);
  EXPECT_EQ(readNumber(), 4);
  expectEnd();
  EXPECT_EQ(contentOf(path), logSwitchLine(1) + logSwitchLine(2) + logSwitchLine(3) + logSwitchLine(4));
}

TEST_F(ReadingAStream, BeginsAtTheBeginningOfTheFileWhateverIsWrittenFirst) {
  openWith(logSwitchLine(1) + logSwitchLine(2));
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(write(4), 0);
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(readNumber(), 3);
  EXPECT_EQ(readNumber(), 4);
  EXPECT_EQ(contentOf(path), logSwitchLine(1) + logSwitchLine(2) + logSwitchLine(3) + logSwitchLine(4));
}

TEST_F(ReadingAStream, FindsNothingInTheFileThatARotationBegins) {
  const ScriptedClock clock(1700000500);
  makeFile(path, logSwitchLine(1) + logSwitchLine(2));
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(readNumber(), 1);
  advanceToCheck();
  EXPECT_EQ(write(3), 0);
  EXPECT_EQ(write(4), 0);
  expectEnd();
  wmq_closestream();
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 3) << "only opening it again makes it readable";
  EXPECT_EQ(readNumber(), 4);
}

TEST_F(ReadingAStream, GivesTheLastLineOfARotatedFileAsAMarker) {
  const ScriptedClock clock(1700000500);
  makeFile(path, logSwitchLine(1));
  ASSERT_EQ(open({.size = 1}), 0);
  advanceToCheck();
  EXPECT_EQ(write(2), 0);
  wmq_closestream();
  ASSERT_EQ(openAs(path + ".1700000500"), 0);
  EXPECT_EQ(readNumber(), 1);
  const eventRecord *record = wmq_readstream(&lineNum);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->type, EVENT_END_OF_STREAM);
  EXPECT_EQ(record->eventTime, 1700000500);
  EXPECT_EQ(record->eventLog.endOfStream, 1);
  expectEnd();
}

// ---------------------------------------------------------------- whose the record is

TEST_F(ReadingAStream, KeepsTheRecordUntilTheNextRead) {
  openWith(logSwitchLine(1) + logSwitchLine(2));
  const eventRecord *record = wmq_readstream(&lineNum);
  ASSERT_NE(record, nullptr);
  write(3);
  parse(logSwitchLine(4));
  EXPECT_EQ(wmq_readstreamline(nullptr), nullptr);
  EXPECT_EQ(logRec, record);
  EXPECT_EQ(record->eventLog.logSwitchLog.lastJobId, 1);
  EXPECT_EQ(readNumber(), 2);
}

TEST_F(ReadingAStream, KeepsTheRecordWhenTheEndIsReached) {
  openWith(logSwitchLine(1));
  const eventRecord *record = wmq_readstream(&lineNum);
  ASSERT_NE(record, nullptr);
  expectEnd();
  EXPECT_EQ(logRec, record);
  EXPECT_EQ(record->eventLog.logSwitchLog.lastJobId, 1);
}

TEST_F(ReadingAStream, ReleasesTheRecordForALineThatIsBad) {
  openWith(logSwitchLine(1) + "bad\n");
  ASSERT_NE(wmq_readstream(&lineNum), nullptr);
  expectFailure(WMQE_BAD_FORMAT);
  EXPECT_EQ(logRec, nullptr);
}

TEST_F(ReadingAStream, SharesTheOneRecordWithTheReadingOfLines) {
  openWith(logSwitchLine(1));
  const eventRecord *record = wmq_readstreamline(logSwitchLine(7).c_str());
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logRec, record);
  EXPECT_EQ(readNumber(), 1);
  EXPECT_EQ(logRec->eventLog.logSwitchLog.lastJobId, 1);
  EXPECT_EQ(wmq_readstreamline("bad"), nullptr);
  EXPECT_EQ(logRec, nullptr);
}

// ---------------------------------------------------------------------------- failures

TEST_F(ReadingAStream, EndsWhereTheFileCannotBeRead) {
  openWith(logSwitchLine(1) + logSwitchLine(2));
  const int writeOnly = ::open(path.c_str(), O_WRONLY);
  dup2(writeOnly, fileno(stream->fp));
  ::close(writeOnly);
  expectEnd();
}

TEST_F(ReadingAStream, SaysThatMemoryIsShortForALineOfAHundredMillionBytes) {
#ifdef WMQ_CHECKED_MEMORY
  GTEST_SKIP() << "a sanitizer ends the program where there is no memory";
#endif
  constexpr size_t kLineSize = 100'000'000;
  openWith("");
  ASSERT_EQ(truncate(path.c_str(), kLineSize), 0);
  appendTo(path, "\n" + logSwitchLine(1));
  {
    const ResourceLimit limit(RLIMIT_AS, 0);
    void *volatile const probe = std::malloc(kLineSize);  // volatile: compilers leave out what is not used
    std::free(probe);
    if (probe != nullptr) GTEST_SKIP() << "memory cannot be limited here";
    expectFailure(WMQE_NO_MEM);
  }
  expectFailure(WMQE_BAD_FORMAT);
  EXPECT_EQ(readNumber(), 1);
}

}  // namespace
}  // namespace wmq::testing
