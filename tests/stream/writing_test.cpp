#include <gmock/gmock.h>

#include <cstdio>

#include "stream/expected_types.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

std::string headerOf(const ExpectedType &type) {
  return std::string("\"") + type.name + "\" \"10.1\" " + std::to_string(kEventTime);
}

class WritingARecord : public StreamTest {
 protected:
  // What writing a bare record of the type appends, with wmq_errno as given before.
  std::string written(int32_t type, int errorBefore, int &result) {
    makeFile(path);
    open();
    wmq_errno = errorBefore;
    result = write(bareRecord(type));
    const int error = wmq_errno;
    wmq_closestream();
    wmq_errno = error;
    return contentOf(path);
  }
};

// ----------------------------------------------------------------- what each type code does

TEST_F(WritingARecord, GivesForEachCodeWhatIsExpectedOfIt) {
  for (const ExpectedType &type : kExpectedTypes) {
    SCOPED_TRACE(type.code);
    int result = 99;
    const std::string text = written(type.code, 0, result);
    if (type.writing == Writing::refused) {
      EXPECT_EQ(result, -1);
      EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
      EXPECT_EQ(text, "");
      continue;
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(wmq_errno, 0);
    switch (type.writing) {
      case Writing::fields:
        EXPECT_THAT(text, StartsWith(headerOf(type) + " "));
        EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
        break;
      case Writing::openLine:
        EXPECT_THAT(text, StartsWith(headerOf(type) + " "));
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
        break;
      case Writing::header:
        EXPECT_EQ(text, headerOf(type));
        break;
      default:
        EXPECT_EQ(text, "");
    }
  }
}

TEST_F(WritingARecord, RefusesAnyCodeBeyondTheLastAndBelowTheFirst) {
  for (const int32_t code : {INT32_MIN, -79, 80, 256 + EVENT_LOG_SWITCH, INT32_MAX}) {
    SCOPED_TRACE(code);
    int result = 99;
    EXPECT_EQ(written(code, 0, result), "");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
  }
}

// What was wrong before is no concern of a record that has fields, nor of one that is dropped.
TEST_F(WritingARecord, ClearsTheErrorNumberForTypesWithFieldsAndForDroppedOnes) {
  for (const ExpectedType &type : kExpectedTypes) {
    if (type.writing == Writing::refused || type.writing == Writing::header) continue;
    SCOPED_TRACE(type.code);
    int result = 99;
    written(type.code, WMQE_BAD_FORMAT, result);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(wmq_errno, 0);
  }
}

TEST_F(WritingARecord, FailsATypeWithoutFieldsWhenTheErrorNumberWasNotZero) {
  for (const ExpectedType &type : kExpectedTypes) {
    if (type.writing != Writing::header) continue;
    SCOPED_TRACE(type.name);
    int result = 99;
    EXPECT_EQ(written(type.code, WMQE_BAD_FORMAT, result), headerOf(type)) << "but its header is written";
    EXPECT_EQ(result, -1);
    EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT) << "and the number stays";
  }
}

TEST_F(WritingARecord, ContinuesTheLineThatAHeaderHasBegun) {
  ASSERT_EQ(open(), 0);
  wmq_errno = 0;
  EXPECT_EQ(write(bareRecord(EVENT_JOB_OCCUPY_REQ)), 0);
  EXPECT_EQ(write(bareRecord(EVENT_JOB_STATUS2)), 0);
  EXPECT_EQ(write(7), 0);
  EXPECT_EQ(contentOf(path),
            "\"JOB_OCCUPY_REQ\" \"10.1\" 1700000000\"JOB_STATUS2\" \"10.1\" 1700000000" + logSwitchLine(7));
}

// --------------------------------------------------------------------------------- the header

TEST_F(WritingARecord, PutsTheCurrentVersionWhateverTheRecordSays) {
  ASSERT_EQ(open(), 0);
  eventRecord record = logSwitch(7);
  std::snprintf(record.version, sizeof record.version, "9.1");
  EXPECT_EQ(write(record), 0);
  EXPECT_EQ(contentOf(path), logSwitchLine(7));
}

TEST_F(WritingARecord, PutsAnyEventTime) {
  ASSERT_EQ(open(), 0);
  for (const int32_t time : {0, -1, INT32_MIN, INT32_MAX}) {
    eventRecord record = logSwitch(1);
    record.eventTime = time;
    EXPECT_EQ(write(record), 0);
    EXPECT_THAT(contentOf(path), EndsWith("\"LOG_SWITCH\" \"10.1\" " + std::to_string(time) + " 1 \n"));
  }
}

TEST_F(WritingARecord, PutsThePhysicalLineInFullBeforeItReturns) {
  ASSERT_EQ(open(), 0);
  for (int32_t number = 1; number <= 5; ++number) {
    write(number);
    EXPECT_THAT(contentOf(path), EndsWith(logSwitchLine(number)));
  }
}

TEST_F(WritingARecord, WritesALineOfMegabytesWhole) {
  std::string text(3 << 20, 'x');
  eventRecord record = bareRecord(EVENT_GRP_STATUS);
  record.eventLog.jgrpStatusLog.grpStatusStr = text.data();
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(write(record), 0);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(contentOf(path), "\"GRP_STATUS\" \"10.1\" 1700000000 \"" + text + "\" 0 0\n" + logSwitchLine(1));
}

TEST_F(WritingARecord, LeavesTheRecordToTheCaller) {
  ASSERT_EQ(open(), 0);
  OwnedRecord record = parse("\"GRP_CTRL\" \"10.1\" 5 1 2 3 \"text\" \"/name\"");
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(wmq_writestream(record.get()), 0);
  EXPECT_EQ(wmq_writestream(record.get()), 0);
  EXPECT_STREQ(record->eventLog.jgrpCtrlLog.grpCtrlStr, "text");
  const std::string line = "\"GRP_CTRL\" \"10.1\" 5 1 2 3 \"text\" \"/name\"\n";
  EXPECT_EQ(contentOf(path), line + line);
}

TEST(StreamVersion, IsTheOneOfEveryLineWritten) {
  EXPECT_STREQ(wmq_streamversion(), "10.1");
  EXPECT_STREQ(wmq_streamversion(), WMQ_FORMAT_VERSION);
}

}  // namespace
}  // namespace wmq::testing
