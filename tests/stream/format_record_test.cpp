#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "stream/expected_types.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

struct Outcome {
  int result;
  int error;
  std::string text;
};

bool operator==(const Outcome &a, const Outcome &b) {
  return a.result == b.result && a.error == b.error && a.text == b.text;
}

void PrintTo(const Outcome &outcome, std::ostream *out) {
  *out << outcome.result << ", number " << outcome.error << ", " << outcome.text;
}

// The stream's bytes are what counts; formatting gives the same ones without it.
class FormattingARecord : public StreamTest {
 protected:
  Outcome written(eventRecord record, int errorBefore = 0) {
    makeFile(path);
    open();
    wmq_errno = errorBefore;
    const int result = write(record);
    const int error = wmq_errno;
    wmq_closestream();
    return {result, error, contentOf(path)};
  }

  static Outcome formatted(eventRecord record, int errorBefore = 0) {
    char *text = nullptr;
    size_t length = 99;
    wmq_errno = errorBefore;
    const int result = wmq_formatrecord(&record, &text, &length);
    const int error = wmq_errno;
    if (text == nullptr) {
      EXPECT_EQ(length, 0U);
      return {result, error, ""};
    }
    EXPECT_EQ(text[length], '\0');
    Outcome outcome{result, error, std::string(text, length)};
    std::free(text);
    return outcome;
  }
};

// A text of any length, wherever it lies, with an escape at any place or none, and quotes right behind it.
TEST_F(FormattingARecord, QuotesTextsWhereverTheyLieAndWhateverStandsBehindThem) {
  constexpr size_t longest = 40;
  alignas(16) char memory[16 + longest + 17];
  for (size_t offset : {0, 1, 8, 15}) {
    for (size_t length = 0; length <= longest; ++length) {
      for (size_t place = 0; place <= length; ++place) {
        for (const char special : {'"', '\n'}) {
          std::memset(memory, '"', sizeof memory);
          char *const text = memory + offset;
          std::memset(text, 'x', length);
          text[length] = '\0';
          std::string quoted(length, 'x');
          if (place < length) {
            text[place] = special;
            quoted.replace(place, 1, special == '"' ? "\"\"" : "\"n");
          }
          eventRecord record = bareRecord(EVENT_JOB_SIGNAL);
          record.eventLog.jobSignalLog.signalStr = text;
          EXPECT_NE(formatted(record).text.find(" \"" + quoted + "\" "), std::string::npos)
              << offset << ' ' << length << ' ' << place << ' ' << formatted(record).text;
        }
      }
    }
  }
}

TEST_F(FormattingARecord, GivesTheBytesResultAndNumberOfWritingForEveryCode) {
  for (const ExpectedType &type : kExpectedTypes) {
    SCOPED_TRACE(type.code);
    const eventRecord record = bareRecord(type.code);
    EXPECT_EQ(formatted(record), written(record));
    EXPECT_EQ(formatted(record, 99), written(record, 99));
  }
}

TEST_F(FormattingARecord, GivesThemForRecordsThatWereReadToo) {
  for (const char *line :
       {"\"JOB_STATUS\" \"10.1\" 5 1 2 3 4 5.5 6 0 7 8 9 \"s \"\"q\"\"\" 10 \"d\"nx\" 11 12 2 1 2 3 4 5 6 0",
        "\"JOB_START\" \"2.1\" 5 1 2 3 4 5.0 3 \"2*host\" \"other\" \"1*3*odd\"",
        "\"SBD_JOB_STATUS\" \"10.1\" -5 1 2 3 4 5 6 7 8 9 10 11 12 13 14"}) {
    SCOPED_TRACE(line);
    const OwnedRecord record = parse(line);
    ASSERT_NE(record, nullptr);
    const Outcome outcome = formatted(*record);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome, written(*record));
  }
}

TEST_F(FormattingARecord, GivesThePartialLineOfAFieldThatFails) {
  eventRecord record = bareRecord(EVENT_JOB_CLEAN);
  record.eventLog.jobCleanLog.indexRangeCnt = 2;
  const Outcome outcome = formatted(record);
  EXPECT_EQ(outcome, (Outcome{-1, WMQE_SYS, "\"JOB_CLEAN\" \"10.1\" 1700000000 0 0 2"}));
  EXPECT_EQ(outcome, written(record));
}

TEST_F(FormattingARecord, NeedsNoStreamAndTouchesNone) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(formatted(logSwitch(1)), (Outcome{0, 0, logSwitchLine(1)}));
  EXPECT_EQ(contentOf(path), "");
}

TEST_F(FormattingARecord, IsNoCallThatCounts) {
  makeFile(path, "full\n");
  ASSERT_EQ(open({.size = 1, .oldFiles = 0}), 0);
  for (int call = 0; call < 99; ++call) formatted(logSwitch(1));
  for (int call = 0; call < 99; ++call) ASSERT_EQ(write(call), 0);
  EXPECT_EQ(write(99), -1);
}

TEST_F(FormattingARecord, ChangesTheRecordAsWritingDoes) {
  const OwnedRecord record = parse(
      "\"JOB_STATUS\" \"10.1\" 5 1 2 3 4 5.5 6 0 7 8 9 \"s\" 10 \"d\" 11 12 0 1 \"group\" 1 \"k\" \"v\"");
  ASSERT_NE(record, nullptr);
  ASSERT_EQ(record->eventLog.jobStatusLog.numAttrGroups, 1);
  attrGroup *const groups = record->eventLog.jobStatusLog.attrGroups;
  format(*record);
  EXPECT_EQ(record->eventLog.jobStatusLog.numAttrGroups, 0);
  EXPECT_EQ(record->eventLog.jobStatusLog.attrGroups, groups);
  record->eventLog.jobStatusLog.numAttrGroups = 1;
}

TEST_F(FormattingARecord, NamesAMissingArgument) {
  eventRecord record = logSwitch(1);
  char *text = nullptr;
  size_t length = 0;
  wmq_errno = 0;
  EXPECT_EQ(wmq_formatrecord(nullptr, &text, &length), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  wmq_errno = 0;
  EXPECT_EQ(wmq_formatrecord(&record, nullptr, &length), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  wmq_errno = 0;
  EXPECT_EQ(wmq_formatrecord(&record, &text, nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

TEST_F(FormattingARecord, GivesALineOfMegabytesAndAShortOneAfterIt) {
  std::string big(5 << 20, '"');
  eventRecord record = bareRecord(EVENT_GRP_STATUS);
  record.eventLog.jgrpStatusLog.grpStatusStr = big.data();
  EXPECT_EQ(formatted(record).text,
            "\"GRP_STATUS\" \"10.1\" 1700000000 \"" + std::string(10 << 20, '"') + "\" 0 0\n");
  EXPECT_EQ(formatted(logSwitch(1)).text, logSwitchLine(1));
}

}  // namespace
}  // namespace wmq::testing
