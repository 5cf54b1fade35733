// Figures of a line without the memory of a record (wmq_checkline).
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstring>
#include <string>
#include <thread>

#include "support/collected_lines.h"
#include "support/damaged_line.h"
#include "wmq/schema.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

constexpr char kStart[] =
    "\"JOB_START\" \"10.1\" 1700000000 77 1 2 3 1.5 2 \"8*node1\" \"node2\" \"a\" \"b\" 4 \"c\" 5 \"d\" 6 "
    "\"e\" \"f\" 7 \"g\" 8 1 \"n\" 9 \"\" 1 2 0 3 4 5 \n";

// What checking and parsing a line come to, with the failure's details.
struct Outcome {
  int error = 0;
  std::string detail;
  bool operator==(const Outcome &) const = default;
};

Outcome lastOutcome() { return {wmq_errno, wmq_errno == 0 ? "" : wmq_errdetail()}; }

struct Parsed {
  explicit Parsed(const std::string &line) {
    wmq_errno = 0;
    record = wmq_readstreamlineMT(line.c_str());
    outcome = lastOutcome();
  }
  Parsed(const Parsed &) = delete;
  Parsed &operator=(const Parsed &) = delete;
  ~Parsed() {
    wmq_freekept(record);
    wmq_freelogrec(record);
  }
  eventRecord *record;
  Outcome outcome;
};

bool isOwned(const wmqField &field) {
  switch (field.kind) {
    case WMQ_KIND_STRING:
    case WMQ_KIND_SUBMIT_EXT:
    case WMQ_KIND_NAMED_VALUES:
    case WMQ_KIND_AFFINITY:
      return true;
    default:
      return field.shape == WMQ_SHAPE_COUNTED;
  }
}

// Pointers are null in what was checked; all else is as in the whole record.
void expectFigures(const wmqLayout &layout, const char *checked, const char *whole) {
  for (size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if ((field.flags & WMQ_FIELD_RESERVED) != 0) continue;
    const char *const at = checked + field.offset;
    if (isOwned(field)) {
      const void *pointer;
      std::memcpy(&pointer, at, sizeof pointer);
      EXPECT_EQ(pointer, nullptr) << field.name;
    } else if (field.kind == WMQ_KIND_STRUCT && field.shape == WMQ_SHAPE_ONE) {
      expectFigures(*field.layout, at, whole + field.offset);
    } else if (field.kind == WMQ_KIND_CHARS) {
      EXPECT_STREQ(at, whole + field.offset) << field.name;
    } else {
      EXPECT_EQ(std::memcmp(at, whole + field.offset, field.size * field.length), 0) << field.name;
    }
  }
}

// Where the header has been looked at, what remains to be checked comes to the same, to the last byte.
void expectSameFromTheFields(const std::string &line, int result, const eventRecord &checked) {
  const Outcome outcome = lastOutcome();
  wmqLineHeader header;
  if (wmq_peekline(line.c_str(), &header) != 0) return;
  eventRecord rest;
  std::memset(&rest, 0xAA, sizeof rest);
  EXPECT_EQ(wmq_checkfields(line.c_str(), std::strlen(line.c_str()), &header, &rest), result);
  EXPECT_EQ(lastOutcome(), outcome);
  EXPECT_EQ(std::memcmp(&rest, &checked, sizeof rest), 0);
  EXPECT_EQ(wmq_lineversion(), std::strtof(header.version, nullptr));
}

void expectAgreement(const std::string &line) {
  SCOPED_TRACE(line);
  const Parsed parsed(line);
  eventRecord checked;
  std::memset(&checked, 0x55, sizeof checked);
  const int result = wmq_checkline(line.c_str(), &checked);
  EXPECT_EQ(result, parsed.outcome.error == 0 ? 0 : -1);
  EXPECT_EQ(lastOutcome(), parsed.outcome);
  expectSameFromTheFields(line, result, checked);
  if (parsed.record == nullptr) return;
  EXPECT_EQ(checked.type, parsed.record->type);
  EXPECT_STREQ(checked.version, parsed.record->version);
  EXPECT_EQ(checked.eventTime, parsed.record->eventTime);
  if (const wmqLayout *const layout = wmq_schema(checked.type))
    expectFigures(*layout, reinterpret_cast<const char *>(&checked.eventLog),
                  reinterpret_cast<const char *>(&parsed.record->eventLog));
}

TEST(CheckingALine, TellsNumbersNamesAndCounts) {
  eventRecord record;
  ASSERT_EQ(wmq_checkline(kStart, &record), 0) << wmq_errdetail();
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(record.type, EVENT_JOB_START);
  const jobStartLog &log = record.eventLog.jobStartLog;
  EXPECT_EQ(log.jobId, 77);
  EXPECT_EQ(log.hostFactor, 1.5F);
  EXPECT_EQ(log.numExHosts, 9);
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(log.numAllocHosts, 9);
  EXPECT_EQ(log.allocHosts, nullptr);
  EXPECT_EQ(log.numNamedInts, 1);
  EXPECT_EQ(log.namedInts, nullptr);
  EXPECT_EQ(log.startStr1, nullptr);
  EXPECT_EQ(log.startLong2, 5);
}

TEST(CheckingALine, TakesNoMoreHostsThanReadingDoes) {
  const auto line = [](const std::string &hosts) {
    return "\"JOB_START\" \"2.1\" 5 1 0 0 0 1.0 " + hosts + " \"\" \"\"";
  };
  eventRecord record;
  ASSERT_EQ(wmq_checkline(line("1 \"16777216*a\"").c_str(), &record), 0);
  EXPECT_EQ(record.eventLog.jobStartLog.numExHosts, 16777216);
  for (const char *hosts :
       {"1 \"16777217*a\"", "2 \"16777216*a\" \"b\"", "3 \"9999999999999999999*a\" \"b\" \"c\"",
        "2 \"99999999999999999999*a\" \"99999999999999999999*a\""}) {
    EXPECT_EQ(wmq_checkline(line(hosts).c_str(), &record), -1) << hosts;
    EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT) << hosts;
    EXPECT_STREQ(wmq_errdetail(), Parsed(line(hosts)).outcome.detail.c_str()) << hosts;
  }
}

TEST(CheckingALine, AgreesWithParsingOnLinesOfAllVersions) {
  for (const std::string &line : goldenLines()) expectAgreement(line);
}

TEST(CheckingALine, AgreesWithParsingOnEveryBeginningOfALine) {
  const std::string line = kStart;
  for (size_t length = 0; length <= line.size(); ++length) expectAgreement(line.substr(0, length));
}

TEST(CheckingALine, AgreesWithParsingOnDamagedLines) {
  const std::vector<std::string> lines = goldenLines();
  EXPECT_TRUE(rc::check([&] {
    expectAgreement(damagedLine(lines));
    RC_ASSERT(!::testing::Test::HasFailure());
  }));
}

TEST(CheckingALine, LeavesTheKeptRecordAlone) {
  const eventRecord *const kept = wmq_readstreamline("\"LOG_SWITCH\" \"10.1\" 5 43 ");
  ASSERT_NE(kept, nullptr);
  eventRecord record;
  EXPECT_EQ(wmq_checkline(kStart, &record), 0);
  EXPECT_EQ(kept->eventLog.logSwitchLog.lastJobId, 43);
}

TEST(CheckingALine, RefusesNull) {
  eventRecord record;
  EXPECT_EQ(wmq_checkline(nullptr, &record), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(wmq_checkline(kStart, nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

TEST(CheckingTheFields, RefusesWhatCannotBeAHeaderOfTheLine) {
  const std::string line = kStart;
  wmqLineHeader header;
  ASSERT_EQ(wmq_peekline(kStart, &header), 0);
  eventRecord record;
  const auto errorOf = [&](const char *text, size_t length, const wmqLineHeader *of, eventRecord *into) {
    wmq_errno = 0;
    EXPECT_EQ(wmq_checkfields(text, length, of, into), -1);
    return wmq_errno;
  };
  EXPECT_EQ(errorOf(nullptr, line.size(), &header, &record), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(kStart, line.size(), nullptr, &record), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(kStart, line.size(), &header, nullptr), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(kStart, header.length - 1, &header, &record), WMQE_BAD_ARG);
  for (const int32_t type : {-1, 0, 54, WMQ_MAX_EVENT_TYPE + 1, INT32_MIN}) {
    header.type = type;
    EXPECT_EQ(errorOf(kStart, line.size(), &header, &record), WMQE_BAD_EVENT) << type;
  }
}

TEST(CheckingTheFields, RefusesANulWithinTheLine) {
  const std::string line = std::string(kStart) + '\0' + "1";
  wmqLineHeader header;
  ASSERT_EQ(wmq_peekline(line.c_str(), &header), 0);
  eventRecord record;
  EXPECT_EQ(wmq_checkfields(line.data(), line.size(), &header, &record), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT);
  EXPECT_EQ(record.type, 0);
}

TEST(CheckingALine, KeepsThreadsApart) {
  const auto check = [](int32_t time) {
    const std::string line = "\"LOG_SWITCH\" \"10.1\" " + std::to_string(time) + " 1 ";
    for (int i = 0; i < 1000; ++i) {
      eventRecord record;
      ASSERT_EQ(wmq_checkline(line.c_str(), &record), 0);
      ASSERT_EQ(record.eventTime, time);
    }
  };
  std::thread other(check, 1);
  check(2);
  other.join();
}

}  // namespace
}  // namespace wmq::testing
