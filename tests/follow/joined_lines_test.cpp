// Where one record ends and the next begins on a line.
#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "support/handmade_stream.h"
#include "support/small_records.h"
#include "wmq/follow.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using Part = std::pair<int, std::string>;

const std::string next = R"("LOG_SWITCH" "10.1" 1700000001 7 )";

std::vector<Part> partsOf(const std::string &line) {
  std::vector<Part> parts;
  for (size_t at = 0; at < line.size();) {
    int part = -1;
    const size_t length = wmq_firstrecord(line.data() + at, line.size() - at, &part);
    if (length == 0 || length > line.size() - at) {
      ADD_FAILURE() << "a part of " << length << " bytes at " << at;
      break;
    }
    parts.emplace_back(part, line.substr(at, length));
    at += length;
  }
  return parts;
}

Part line(const std::string &text) { return {WMQ_PART_LINE, text}; }
Part joined(const std::string &text) { return {WMQ_PART_JOINED, text}; }
Part torn(const std::string &text) { return {WMQ_PART_TORN, text}; }

std::string lineOf(int32_t type) {
  eventRecord record = bareRecord(type);
  std::string text = format(record);
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

std::string withoutEnd(const std::string &text) { return text.substr(0, text.find_last_not_of(" \n") + 1); }

// The very line that would be written for the record that is read from it.
bool isOneRecord(const std::string &text) {
  const OwnedRecord record = parse(text);
  return record != nullptr && withoutEnd(format(*record)) == withoutEnd(text);
}

TEST(JoinedLines, AreCutBehindTypesThatLeaveTheirLineOpen) {
  const std::string occupied = R"("JOB_OCCUPY_REQ" "10.1" 1700000000)";
  EXPECT_THAT(partsOf(vacated + next), ElementsAre(joined(vacated), line(next)));
  EXPECT_THAT(partsOf(occupied + next), ElementsAre(joined(occupied), line(next)));
  EXPECT_THAT(partsOf(sbdStatus + next), ElementsAre(joined(sbdStatus), line(next)));
}

TEST(JoinedLines, CutTheBareHeaderOfJobStatus2AndLeaveOneWithFields) {
  const std::string bare = R"("JOB_STATUS2" "10.1" 1700000000)";
  const std::string fields = bare + R"( 7 2 "jStatus" "4" "ineligiblePendingTime" "0")";
  EXPECT_THAT(partsOf(bare + next), ElementsAre(joined(bare), line(next)));
  EXPECT_THAT(partsOf(fields), ElementsAre(line(fields)));
}

TEST(JoinedLines, MayHaveBlanksBetweenThem) {
  EXPECT_THAT(partsOf(vacated + "  " + next), ElementsAre(joined(vacated + "  "), line(next)));
  EXPECT_THAT(partsOf(vacated + " x " + next), ElementsAre(torn(vacated + " x "), line(next)));
}

TEST(JoinedLines, MayHoldManyRecords) {
  EXPECT_THAT(partsOf(vacated + sbdStatus + vacated + next),
              ElementsAre(joined(vacated), joined(sbdStatus), joined(vacated), line(next)));
  EXPECT_THAT(partsOf(vacated + vacated), ElementsAre(joined(vacated), line(vacated)));
}

TEST(JoinedLines, AreCutBeforeTheEndOfTheFile) {
  const std::string end = R"("END_OF_STREAM" "10.1" 1700000002)";
  EXPECT_THAT(partsOf(vacated + end), ElementsAre(joined(vacated), line(end)));
}

TEST(JoinedLines, AreCutBeforeOlderVersionsToo) {
  const std::string old = R"("LOG_SWITCH" "2.1" 17 7 )";
  EXPECT_THAT(partsOf(sbdStatus + old), ElementsAre(joined(sbdStatus), line(old)));
}

TEST(JoinedLines, OneRecordStaysWhole) {
  for (const std::string &text : {next, vacated, sbdStatus, std::string("# comment"), std::string("x")})
    EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
}

TEST(JoinedLines, EveryTypeStaysWholeAndIsFoundBehindAnOpenOne) {
  for (int32_t type = 1; type <= WMQ_MAX_EVENT_TYPE; ++type) {
    const std::string text = lineOf(type);
    if (text.empty()) continue;
    EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
    EXPECT_THAT(partsOf(vacated + text), ElementsAre(joined(vacated), line(text)));
  }
}

// ---------------------------------------------------------------- text that looks like a header

TEST(JoinedLines, AQuotedStringIsNeverTakenForARecord) {
  eventRecord record = bareRecord(EVENT_JOB_NEW);
  for (const std::string &content :
       {next, vacated + next, "x" + next, "\n" + next, "\"" + next + "\"", next + next}) {
    std::string text = content;
    record.eventLog.jobNewLog.command = text.data();
    std::string written = format(record);
    written.pop_back();
    EXPECT_THAT(partsOf(written), ElementsAre(line(written)));
  }
}

TEST(JoinedLines, FieldsThatLookLikeAHeaderStayFields) {
  // Three strings and numbers behind them: calStr2 and calStr3 are the name of a type and a version.
  const std::string calendar = R"("CAL_NEW" "10.1" 1700000000 5 9 "a" "LOG_SWITCH" "10.1" 7)";
  EXPECT_THAT(partsOf(calendar), ElementsAre(line(calendar)));
  const std::string text = R"("CAL_NEW" "10.1" 1700000000 5 9 "a""LOG_SWITCH" "10.1" 7 "b")";
  EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
}

TEST(JoinedLines, ALineThatDoesNotParseIsNotCutAtItsFields) {
  const std::string bad = R"("CAL_NEW" "10.1" 1700000000 x 9 "a" "LOG_SWITCH" "10.1" 7 5 "more" "b")";
  EXPECT_THAT(partsOf(bad), ElementsAre(line(bad)));
  const std::string unknown = R"("NO_SUCH" "10.1" 1700000000 "LOG_SWITCH" "10.1" 7 5 "more")";
  EXPECT_THAT(partsOf(unknown), ElementsAre(line(unknown)));
}

// What the reader passes over before the first quote belongs to the record.
TEST(JoinedLines, ALineThatIsReadThoughItBeginsWithSomethingElseIsOne) {
  for (const std::string &text : {" " + next, "x" + next}) {
    ASSERT_NE(parse(text), nullptr);
    EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
  }
}

// As above, but the blanks before the version keep its own beginning from being taken for a header.
TEST(JoinedLines, OneRecordStaysWholeWhateverBlanksItHas) {
  const std::string text = R"("MBD_START"  "10.1" 1700000000 )" + next;
  ASSERT_NE(parse(text), nullptr);
  EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
}

// The second string of the calendar is the blank before the version, and its third holds a line end.
TEST(JoinedLines, ARecordThatIsWholeIsNotCutAtAStringThatALaterOneCouldNotUse) {
  const std::string text = R"("CAL_NEW" "10.1" 1700000000 5 9 "b"LOG_SWITCH" "10.1" 17 5 "nfoo")";
  ASSERT_NE(parse(text), nullptr);
  EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
}

TEST(JoinedLines, ARecordMayHoldAnyNumberOfFieldsThatLookLikeHeaders) {
  for (const int count : {1, 63, 64, 65, 200}) {
    std::string text = R"("JOB_MOVE" "10.1" 1700000000 1 2 3 4 5 "ann" 0 0 0 )" + std::to_string(count);
    for (int i = 0; i < count; ++i) text += R"( "MIG" "10.1" 0)";
    ASSERT_NE(parse(text), nullptr) << wmq_errdetail();
    EXPECT_EQ(partsOf(text).size(), 1U) << count;
  }
}

TEST(JoinedLines, WhatBeginsBehindAnOpenRecordNeedNotBeWhole) {
  const std::string part = R"("GRP_CTRL" "10.)";
  for (const std::string &open : {vacated, sbdStatus}) {
    EXPECT_THAT(partsOf(open + part), ElementsAre(joined(open), line(part)));
    EXPECT_THAT(partsOf(open + "\""), ElementsAre(joined(open), line("\"")));
    EXPECT_THAT(partsOf(open + part + next), ElementsAre(joined(open), torn(part), line(next)));
    const std::string before = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
    EXPECT_THAT(partsOf(before + open + part + next),
                ElementsAre(torn(before), joined(open), torn(part), line(next)));
  }
}

TEST(JoinedLines, UnknownTypesAndVersionsBeginNoRecord) {
  for (const char *behind :
       {R"("NO_SUCH" "10.1" 1 7)", R"("LOG_SWITCH" "0" 1 7)", R"("LOG_SWITCH" "10.1" x 7)",
        R"("LOG_SWITCH" "0.0" 1 7)", R"("LOG_SWITCH"  "10.1" 1 7)", R"("log_switch" "10.1" 1 7)",
        R"("" "10.1" 1 7)", R"("LOG_SWITCH" "10.1000000000000" 1 7)", R"("LOG_SWITCH" "10.1x" 1 7)",
        R"("LOG_SWITCH" "10.1"1 7)", R"("LOG_SWITCH" "10.1)", R"("LOG_SWITCH" "10.1")",
        R"("LOG_SWITCH" "10.1" )", R"("LOG_SWITCH" "10.1" -)", R"("LOG_SWITCH" "10.1" 1x 7)"}) {
    EXPECT_THAT(partsOf(vacated + behind), ElementsAre(joined(vacated), line(behind)));
    for (const std::string &before : {next, std::string(R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)")})
      EXPECT_THAT(partsOf(before + behind), ElementsAre(line(before + behind)));
  }
}

TEST(JoinedLines, ATypeNameNeedsBothItsQuotes) {
  for (const char *text : {R"(LOG_SWITCH" "10.1" 1 7)", R"(xLOG_SWITCH" "10.1" 1 7)"}) {
    EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
    EXPECT_THAT(partsOf(vacated + text), ElementsAre(line(vacated + text)));
  }
}

TEST(JoinedLines, AHeaderMayEndWithItsTime) {
  for (const char *behind : {R"("JOB_VACATED" "10.1" -5)", R"("JOB_VACATED" "10.1" 5"LOG_SWITCH)"}) {
    const std::string text = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
    EXPECT_EQ(partsOf(text + behind).front(), torn(text));
  }
}

// ---------------------------------------------------------------------------- torn lines

TEST(TornLines, GiveTheRecordBehindThemWhereverTheyWereTorn) {
  eventRecord record = bareRecord(EVENT_JOB_NEW);
  char command[] = "echo \"a b\" c";
  record.eventLog.jobNewLog.command = command;
  const std::string whole = format(record);
  for (size_t length = 1; length < whole.size(); ++length) {
    const std::string part = whole.substr(0, length);
    const std::vector<Part> parts = partsOf(part + next);
    ASSERT_FALSE(parts.empty());
    EXPECT_EQ(parts.back(), line(next)) << "torn behind " << part;
    EXPECT_EQ(parts.front(), torn(part));
    EXPECT_EQ(parts.size(), 2U);
  }
}

// Torn behind its header, MBD_START takes the name of a type and its version for its two strings.
TEST(TornLines, ThatMakeOneRecordWithTheNextAreThatRecord) {
  const std::string text = R"("MBD_START" "10.1" 1700000000 )" + next;
  ASSERT_TRUE(isOneRecord(text));
  EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
}

TEST(TornLines, OfEveryTypeAreToldFromTheRecordBehind) {
  for (int32_t type = 1; type <= WMQ_MAX_EVENT_TYPE; ++type) {
    const std::string whole = lineOf(type);
    if (whole.empty()) continue;
    for (size_t length = 1; length < whole.size(); ++length) {
      const std::string both = whole.substr(0, length) + next;
      const std::vector<Part> parts = partsOf(both);
      if (isOneRecord(both)) {
        EXPECT_THAT(parts, ElementsAre(line(both)));
        continue;
      }
      ASSERT_EQ(parts.size(), 2U) << whole.substr(0, length);
      EXPECT_EQ(parts.back(), line(next)) << whole.substr(0, length);
    }
  }
}

TEST(TornLines, RecordsOfEveryTypeAreFoundBehind) {
  const std::string text = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
  const std::string number = R"("LOG_SWITCH" "10.1" 1700000001 1)";
  for (int32_t type = 1; type <= WMQ_MAX_EVENT_TYPE; ++type) {
    const std::string whole = lineOf(type);
    if (whole.empty() || type == EVENT_JOB_PROV_HOST || type == EVENT_JOB_STATUS2)
      continue;  // not read as written
    EXPECT_THAT(partsOf(text + whole), ElementsAre(torn(text), line(whole)));
    EXPECT_THAT(partsOf(number + whole), ElementsAre(torn(number), line(whole)));
  }
}

TEST(TornLines, TwoInARow) {
  const std::string first = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
  const std::string second = R"("CAL_NEW" "10.1" 1700000000 5 9 "a" "b)";
  const std::vector<Part> parts = partsOf(first + second + next);
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_EQ(parts.front(), torn(first + second));
  EXPECT_EQ(parts.back(), line(next));
}

// Where the first of them ends nobody can tell when what follows is no record either.
TEST(TornLines, TwoInARowWithNothingBehindThemAreOneLine) {
  const std::string text = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te"CAL_NEW" "10.1" 1700000000 5 9 "a" "b)";
  EXPECT_THAT(partsOf(text), ElementsAre(line(text)));
}

TEST(TornLines, AreToldFromTheRecordBehindThemHoweverShortThatIs) {
  const std::string text = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
  for (const char *name : {"MIG", "JOB_FINISH2"})
    for (size_t blanks = 0; blanks < 40; ++blanks) {
      const std::string behind = "\"" + std::string(name) + "\" \"9\" 1" + std::string(blanks, ' ');
      EXPECT_THAT(partsOf(text + behind), ElementsAre(torn(text), line(behind)));
    }
  for (const char *name : {"", "mig", "MIG-", "MIG[", "5", "g5", "-5"}) {
    const std::string whole = text + "\"" + name + "\" \"9\" 1";
    EXPECT_THAT(partsOf(whole), ElementsAre(line(whole)));
  }
}

TEST(TornLines, MayHoldALineEndInTheStringThatIsTorn) {
  const std::string text = R"("GRP_CTRL" "10.1" 1 2 3 4 "some"n te )";
  const std::string bad = R"("LOG_SWITCH" "10.1" 5 x)";
  EXPECT_THAT(partsOf(text + bad), ElementsAre(torn(text), line(bad)));
}

// Where a field may begin, what follows has to be as a writer would have written it.
TEST(TornLines, AreNotCutWhereFieldsThatAreNotSetApartFollow) {
  const std::string text = R"("GRP_CTRL" "10.1" 1 2 3 4 )";
  const std::string calendar = R"("CAL_NEW" "10.1" 1700000000 5 9 "a" "b")";
  EXPECT_THAT(partsOf(text + calendar + R"( "c")"), ElementsAre(torn(text), line(calendar + R"( "c")")));
  ASSERT_NE(parse(calendar + R"(x "c")"), nullptr);
  EXPECT_THAT(partsOf(text + calendar + R"(x "c")"), ElementsAre(line(text + calendar + R"(x "c")")));
}

TEST(TornLines, BeforeJoinedOnes) {
  const std::string part = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
  EXPECT_THAT(partsOf(part + vacated + next), ElementsAre(torn(part), joined(vacated), line(next)));
  EXPECT_THAT(partsOf(part + sbdStatus + next), ElementsAre(torn(part), joined(sbdStatus), line(next)));
  const std::string fields = R"("GRP_CTRL" "10.1" 1 2 3 )";
  EXPECT_THAT(partsOf(fields + vacated + next), ElementsAre(torn(fields), joined(vacated), line(next)));
  EXPECT_THAT(partsOf(fields + sbdStatus + next), ElementsAre(torn(fields), joined(sbdStatus), line(next)));
}

TEST(TornLines, OfAnOpenTypeAreNotTakenForTheirRecord) {
  const std::string part = R"("SBD_JOB_STATUS" "10.1" 1700000000 7 0 0 0)";
  EXPECT_THAT(partsOf(part + next), ElementsAre(torn(part), line(next)));
  const std::string header = R"("JOB_VACATED" "10.1" )";
  EXPECT_THAT(partsOf(header + next), ElementsAre(torn(header), line(next)));
  const std::string before = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
  EXPECT_THAT(partsOf(before + part + next), ElementsAre(torn(before + part), line(next)));
}

TEST(TornLines, OfJobStatus2AreNoBareHeader) {
  const std::string part = R"("JOB_STATUS2" "10.1" 1700000000 7 2)";
  EXPECT_THAT(partsOf(part + next), ElementsAre(torn(part), line(next)));
}

TEST(TornLines, MayBeWhatADiskHasLost) {
  const std::string lost(100, '\0');
  EXPECT_THAT(partsOf(lost + next), ElementsAre(torn(lost), line(next)));
}

TEST(TornLines, WorkIsBoundedOnHostileLines) {
  std::string hostile = R"("GRP_CTRL" "10.1" 1 x)";
  for (int i = 0; i < 20000; ++i) hostile += R"("MIG" "10.1" 1 y)";
  size_t bytes = 0;
  for (const Part &part : partsOf(hostile)) bytes += part.second.size();
  EXPECT_EQ(bytes, hostile.size());
}

// A walk to the end of the line for each of the headers would take longer than anybody waits.
TEST(TornLines, OfAMillionBytesAreGoneThroughInPieces) {
  const std::string part = R"("JOB_NEW" "10.1" 1 )";
  std::string often;
  for (int i = 0; i < 63; ++i) often += part;
  for (const std::string &each : {part, often + vacated}) {
    std::string text;
    while (text.size() < 1000000) text += each;
    std::vector<Part> parts = partsOf(text + next);
    size_t bytes = 0;
    for (const Part &found : parts) bytes += found.second.size();
    EXPECT_EQ(bytes, text.size() + next.size());
    EXPECT_EQ(parts.back(), line(next));
    parts.pop_back();
    for (size_t i = 0; i < parts.size(); ++i) {
      const bool isOpen = parts[i].second == vacated;
      ASSERT_EQ(parts[i].first, isOpen ? WMQ_PART_JOINED : WMQ_PART_TORN);
      ASSERT_EQ(isOpen, each != part && i % 2 == 1);
    }
  }
}

TEST(TornLines, OfAMillionBytesMayBeRecordsBehindTornStrings) {
  const std::string part = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
  std::string text;
  size_t count = 0;
  for (; text.size() < 1000000; ++count) text += part + vacated;
  std::vector<Part> parts = partsOf(text + next);
  ASSERT_EQ(parts.size(), 2 * count + 1);
  EXPECT_EQ(parts.back(), line(next));
  parts.pop_back();
  for (size_t i = 0; i < parts.size(); ++i) ASSERT_EQ(parts[i], i % 2 == 0 ? torn(part) : joined(vacated));
}

// What is wrong far behind a record does not keep it from being found.
TEST(TornLines, GiveARecordWhateverStandsBehindTheNextHeaders) {
  const std::string part = R"("GRP_CTRL" "10.1" 1 2 3 4 "some te)";
  std::string behind;
  for (int i = 0; i < 100; ++i) behind += R"("MIG" "10.1" 1 )";
  const std::vector<Part> parts = partsOf(part + behind + "\"x");
  EXPECT_EQ(parts.front(), torn(part));
}

// ---------------------------------------------------------------------------- the call

TEST(FirstRecord, LeavesErrorAndVersionAsTheyWere) {
  wmq_setlineversion(3.5F);
  wmq_errno = 99;
  const std::string text = R"("GRP_CTRL" "9.0" 1 2 3 4 "some te)" + next;
  EXPECT_LT(wmq_firstrecord(text.data(), text.size(), nullptr), text.size());
  EXPECT_EQ(wmq_errno, 99);
  EXPECT_EQ(wmq_lineversion(), 3.5F);
}

TEST(LeavesOpen, TellsTheTypesBehindWhichAnotherRecordFollows) {
  for (int32_t type = -1; type <= WMQ_MAX_EVENT_TYPE + 1; ++type) {
    const bool open =
        type == EVENT_JOB_OCCUPY_REQ || type == EVENT_JOB_VACATED || type == EVENT_SBD_JOB_STATUS;
    EXPECT_EQ(wmq_leavesopen(type), open ? 1 : 0) << type;
  }
}

TEST(FirstRecord, TellsOfBadArguments) {
  int part = 7;
  wmq_errno = 0;
  EXPECT_EQ(wmq_firstrecord(nullptr, 5, &part), 0U);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  wmq_errno = 0;
  EXPECT_EQ(wmq_firstrecord("", 0, &part), 0U);
  EXPECT_EQ(part, WMQ_PART_LINE);
  EXPECT_EQ(wmq_errno, 0);
}

}  // namespace
}  // namespace wmq::testing
