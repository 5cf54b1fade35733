#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "stream/expected_types.h"
#include "support/small_records.h"

namespace wmq::testing {
namespace {

// Lines of JOB_VACATED, which has no fields: all that can be wrong is the header.
class ParsingAHeader : public ::testing::Test {
 protected:
  void expectRefused(const std::string &line, int error = WMQE_BAD_FORMAT) {
    wmq_errno = 0;
    EXPECT_EQ(wmq_readstreamlineMT(line.c_str()), nullptr) << line;
    EXPECT_EQ(wmq_errno, error) << line;
  }

  void expectAccepted(const std::string &line, int32_t eventTime = 5) {
    const OwnedRecord record = parse(line);
    ASSERT_NE(record, nullptr) << line;
    EXPECT_EQ(wmq_errno, 0);
    EXPECT_EQ(record->type, EVENT_JOB_VACATED) << line;
    EXPECT_EQ(record->eventTime, eventTime) << line;
  }

  // The version that a line with this token is taken for.
  float versionOf(const std::string &token) {
    const OwnedRecord record = parse("\"JOB_VACATED\" \"" + token + "\" 5");
    EXPECT_NE(record, nullptr) << token;
    if (record != nullptr) {
      EXPECT_EQ(record->version, token);
    }
    return wmq_lineversion();
  }
};

// ------------------------------------------------------------------------- the whole line

TEST_F(ParsingAHeader, NamesTheArgumentForAMissingLine) {
  wmq_errno = 0;
  EXPECT_EQ(wmq_readstreamlineMT(nullptr), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  wmq_errno = 0;
  EXPECT_EQ(wmq_readstreamline(nullptr), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

TEST_F(ParsingAHeader, RefusesALineThatEndsEarly) {
  const std::string whole = "\"JOB_VACATED\" \"10.1\" 5";
  expectAccepted(whole);
  for (size_t length = 0; length < whole.size(); ++length) expectRefused(whole.substr(0, length));
}

TEST_F(ParsingAHeader, RefusesALineOfBlanksOrWithoutQuotes) {
  for (const char *line :
       {"", " ", "\n", "JOB_VACATED 10.1 5", "# a comment", "#\"JOB_VACATED\"", "\"", "\"\"", "\"\"\""})
    expectRefused(line);
}

TEST_F(ParsingAHeader, DoesNotSkipComments) {
  expectRefused("# nothing here");
  wmq_errno = 0;
  EXPECT_EQ(wmq_readstreamline("# nothing here"), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT);
}

TEST_F(ParsingAHeader, AcceptsALineWithItsEndStillOn) {
  expectAccepted("\"JOB_VACATED\" \"10.1\" 5\n");
  expectAccepted("\"JOB_VACATED\" \"10.1\" 5\r\n");
  const OwnedRecord record = parse("\"LOG_SWITCH\" \"10.1\" 5 7 \n");
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.logSwitchLog.lastJobId, 7);
}

TEST_F(ParsingAHeader, SkipsWhateverStandsBeforeAQuote) {
  expectAccepted("garbage 17 \"JOB_VACATED\" \"10.1\" 5");
  expectAccepted("\"JOB_VACATED\" garbage 17 \"10.1\" 5");
}

TEST_F(ParsingAHeader, RefusesTokensThatTheirQuotesJoin) {
  expectRefused("\"JOB_VACATED\"\"10.1\" 5");
  expectRefused("\"JOB_VACATED\"n\"10.1\" 5");
}

TEST_F(ParsingAHeader, SkipsOneCharacterBehindAToken) {
  expectAccepted("\"JOB_VACATED\"x\"10.1\"x5");
  expectAccepted("\"JOB_VACATED\" \"10.1\"75", 5);
  expectAccepted("\"JOB_VACATED\" \"10.1\" \t \v\f\r 5");
  expectRefused("\"JOB_VACATED\" \"10.1\"5");
  expectRefused("\"JOB_VACATED\" \"10.1\"xx5");
}

// --------------------------------------------------------------------------- type names

TEST_F(ParsingAHeader, RefusesATypeNameThatItDoesNotKnow) {
  for (const char *name : {"NO_SUCH_EVENT", "", " ", "job_vacated", "JOB_VACATED ", " JOB_VACATED",
                           "JOB_VACATE", "JOB_VACATEDX", "EVENT_JOB_VACATED", "ADRSV_FINISH", "30"})
    expectRefused("\"" + std::string(name) + "\" \"10.1\" 5", WMQE_BAD_EVENT);
}

TEST_F(ParsingAHeader, AcceptsTypeNamesOf59CharactersOnly) {
  expectRefused("\"" + std::string(59, 'X') + "\" \"10.1\" 5", WMQE_BAD_EVENT);
  expectRefused("\"" + std::string(60, 'X') + "\" \"10.1\" 5", WMQE_BAD_FORMAT);
  expectRefused("\"" + std::string(5000, 'X') + "\" \"10.1\" 5", WMQE_BAD_FORMAT);
}

TEST_F(ParsingAHeader, CountsTheCharactersOfATypeNameAsTheyAreDecoded) {
  std::string quotes;
  for (int i = 0; i < 59; ++i) quotes += "\"\"";
  expectRefused("\"" + quotes + "\" \"10.1\" 5", WMQE_BAD_EVENT);
  expectRefused("\"" + quotes + "\"n\" \"10.1\" 5", WMQE_BAD_FORMAT);
}

TEST_F(ParsingAHeader, LooksAtTheTypeNameLast) {
  expectRefused("\"NO_SUCH_EVENT\" \"0\" 5", WMQE_BAD_FORMAT);
  expectRefused("\"NO_SUCH_EVENT\" \"10.1\" x", WMQE_BAD_FORMAT);
}

// ----------------------------------------------------------------------------- versions

TEST_F(ParsingAHeader, TakesTheVersionForADecimalNumber) {
  EXPECT_EQ(versionOf("9.1"), 9.1F);
  EXPECT_EQ(versionOf("10.1"), 10.1F);
  EXPECT_EQ(versionOf("9.10000"), 9.1F);
  EXPECT_EQ(versionOf("009.1"), 9.1F);
  EXPECT_EQ(versionOf(".5"), 0.5F);
  EXPECT_EQ(versionOf("7."), 7.0F);
  EXPECT_EQ(versionOf("1e1"), 10.0F);
  EXPECT_EQ(versionOf("+9.1"), 9.1F);
  EXPECT_EQ(versionOf(" 9.1"), 9.1F);
  EXPECT_EQ(versionOf("0x10"), 16.0F);
}

TEST_F(ParsingAHeader, TakesWhatStandsBehindTheNumberForNothing) {
  EXPECT_EQ(versionOf("9.1.3"), 9.1F);
  EXPECT_EQ(versionOf("9.1beta"), 9.1F);
  EXPECT_EQ(versionOf("9,1"), 9.0F);
  EXPECT_EQ(versionOf("9 "), 9.0F);
}

TEST_F(ParsingAHeader, AcceptsVersionsNewerThanItsOwn) {
  EXPECT_EQ(versionOf("10.2"), 10.2F);
  EXPECT_EQ(versionOf("99999999999"), 99999999999.0F);
  EXPECT_EQ(versionOf("inf"), std::numeric_limits<float>::infinity());
  EXPECT_EQ(versionOf("1e99"), std::numeric_limits<float>::infinity());
}

TEST_F(ParsingAHeader, RefusesVersionsNotAboveZero) {
  for (const char *version : {"0", "0.0", "-0", "-1", "-inf", "-1e-3", "1e-50", "0x0"})
    expectRefused("\"JOB_VACATED\" \"" + std::string(version) + "\" 5");
}

TEST_F(ParsingAHeader, RefusesVersionsThatAreNoNumbers) {
  for (const char *version : {"", " ", "abc", "v10.1", "nan", "-nan", "NAN(1)", ".", "-", "e1", "#"})
    expectRefused("\"JOB_VACATED\" \"" + std::string(version) + "\" 5");
}

TEST_F(ParsingAHeader, AcceptsVersionsOf11CharactersOnly) {
  EXPECT_EQ(versionOf("9.100000000"), 9.1F);
  EXPECT_EQ(std::strlen("9.100000000"), 11U);
  expectRefused("\"JOB_VACATED\" \"9.1000000000\" 5");
  expectRefused("\"JOB_VACATED\" \"" + std::string(5000, '9') + "\" 5");
}

TEST_F(ParsingAHeader, LeavesZerosBehindTheVersion) {
  parse("\"JOB_VACATED\" \"9.100000000\" 5");
  const OwnedRecord record = parse("\"JOB_VACATED\" \"9.1\" 5");
  ASSERT_NE(record, nullptr);
  for (size_t i = 3; i < sizeof record->version; ++i) EXPECT_EQ(record->version[i], '\0') << i;
}

TEST_F(ParsingAHeader, RemembersTheVersionOfTheLineParsedLast) {
  parse("\"JOB_VACATED\" \"9.1\" 5");
  parse("\"JOB_VACATED\" \"7.03\" 5");
  EXPECT_EQ(wmq_lineversion(), 7.03F);
  parse("\"NO_SUCH_EVENT\" \"6.2\" 5");
  EXPECT_EQ(wmq_lineversion(), 6.2F);
  parse("\"JOB_VACATED\"");
  EXPECT_EQ(wmq_lineversion(), 6.2F) << "this line says none";
}

TEST_F(ParsingAHeader, TakesEachVersionForItselfWhateverTheLineBeforeSaid) {
  struct Said {
    const char *token;  // as it stands on the line, with what is right behind it
    const char *version;
    float number;
  };
  constexpr Said all[] = {{"\"10.1\" ", "10.1", 10.1F},
                          {"\"10.12\" ", "10.12", 10.12F},
                          {"\"10.123\" ", "10.123", 10.123F},
                          {"\"10.1 \" ", "10.1 ", 10.1F},
                          {"\"10\" ", "10", 10},
                          {"\"1\" ", "1", 1},
                          {"\"9.1\" ", "9.1", 9.1F},
                          {"\"9.13\" ", "9.13", 9.13F},
                          {"\"10.1\"\t", "10.1", 10.1F},
                          {"\"10.1\"1", "10.1", 10.1F},
                          {"x\"10.1\" ", "10.1", 10.1F},
                          {" \"10.1\" ", "10.1", 10.1F},
                          {"\"10\"\"1\" ", "10\"1", 10},
                          {"\"10\"n1\" ", "10\n1", 10},
                          {"\"2\"n\" ", "2\n", 2},
                          {"\"10.1000000\" ", "10.1000000", 10.1F}};
  for (const Said &before : all)
    for (const Said &then : all) {
      SCOPED_TRACE(std::string(before.token) + " and " + then.token);
      for (const Said *said : {&before, &then, &then}) {
        const OwnedRecord record = parse(std::string("\"JOB_VACATED\" ") + said->token + "5 and more");
        ASSERT_NE(record, nullptr);
        EXPECT_STREQ(record->version, said->version);
        EXPECT_EQ(wmq_lineversion(), said->number);
        EXPECT_EQ(record->eventTime, 5);
        const char *const rest = record->version + std::strlen(said->version);
        const char *const end = record->version + sizeof record->version;
        EXPECT_TRUE(std::all_of(rest, end, [](char c) { return c == '\0'; }));
      }
    }
}

TEST_F(ParsingAHeader, RefusesAVersionThatIsCutShortBehindAWholeOne) {
  const std::string whole = "\"JOB_VACATED\" \"10.1\" 5";
  for (size_t length = 0; length < whole.size(); ++length) {
    expectAccepted(whole);
    expectRefused(std::string(whole.c_str(), length));
  }
}

TEST_F(ParsingAHeader, LetsTheVersionBeSet) {
  wmq_setlineversion(9.0F);
  EXPECT_EQ(wmq_lineversion(), 9.0F);
  parse("\"JOB_VACATED\" \"10.1\" 5");
  EXPECT_EQ(wmq_lineversion(), 10.1F);
}

// --------------------------------------------------------------------------- event times

TEST_F(ParsingAHeader, TakesAnyEventTime) {
  expectAccepted("\"JOB_VACATED\" \"10.1\" 0", 0);
  expectAccepted("\"JOB_VACATED\" \"10.1\" -7", -7);
  expectAccepted("\"JOB_VACATED\" \"10.1\" +7", 7);
  expectAccepted("\"JOB_VACATED\" \"10.1\" 007", 7);
  expectAccepted("\"JOB_VACATED\" \"10.1\" 2147483647", INT32_MAX);
  expectAccepted("\"JOB_VACATED\" \"10.1\" -2147483648", INT32_MIN);
}

TEST_F(ParsingAHeader, CutsAnEventTimeToItsLow32Bits) {
  expectAccepted("\"JOB_VACATED\" \"10.1\" 4294967301", 5);
  expectAccepted("\"JOB_VACATED\" \"10.1\" 2147483648", INT32_MIN);
  expectAccepted("\"JOB_VACATED\" \"10.1\" 99999999999999999999", -1);
  expectAccepted("\"JOB_VACATED\" \"10.1\" -99999999999999999999", 0);
}

TEST_F(ParsingAHeader, EndsTheEventTimeAtTheFirstCharacterThatIsNoDigit) {
  expectAccepted("\"JOB_VACATED\" \"10.1\" 5x", 5);
  expectAccepted("\"JOB_VACATED\" \"10.1\" 5.9", 5);
  expectAccepted("\"JOB_VACATED\" \"10.1\" 0x10", 0);
  expectAccepted("\"JOB_VACATED\" \"10.1\" 5\"", 5);
}

TEST_F(ParsingAHeader, RefusesAnEventTimeThatIsNoNumber) {
  for (const char *time : {"x", "-", "+", "--5", "+-5", "\"5\"", ".5", "\n"})
    expectRefused("\"JOB_VACATED\" \"10.1\" " + std::string(time));
}

TEST_F(ParsingAHeader, BeginsTheFieldsOneCharacterBehindTheEventTime) {
  const OwnedRecord record = parse("\"JOB_EXCEPTION\" \"10.1\" 5x1 2 3 4 5 6");
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobExceptionLog.jobId, 1);
  const OwnedRecord tight = parse("\"JOB_EXCEPTION\" \"10.1\" 5-71 2 3 4 5 6");
  ASSERT_NE(tight, nullptr);
  EXPECT_EQ(tight->eventTime, 5);
  EXPECT_EQ(tight->eventLog.jobExceptionLog.jobId, 71) << "whatever the one character is, it is skipped";
}

// ----------------------------------------------------------- what follows from the type

class ParsingALine : public ParsingAHeader {};

TEST_F(ParsingALine, GivesForEachTypeNameWhatIsExpectedOfIt) {
  for (const ExpectedType &type : kExpectedTypes) {
    if (type.name == nullptr) continue;
    SCOPED_TRACE(type.name);
    eventRecord bare = bareRecord(type.code);
    std::string line = "\"" + std::string(type.name) + "\" \"10.1\" 1700000000";
    if (type.reading == Reading::fields) line = format(bare);
    if (type.reading == Reading::refused) {
      expectRefused(line, WMQE_BAD_EVENT);
      continue;
    }
    const OwnedRecord record = parse(line);
    // Some types ask for more than a bare record has; their names are known all the same.
    if (type.reading == Reading::fields && record == nullptr) {
      EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT) << line;
      continue;
    }
    ASSERT_NE(record, nullptr) << line;
    EXPECT_EQ(record->type, type.code);
    EXPECT_EQ(record->eventTime, kEventTime);
    EXPECT_STREQ(record->version, "10.1");
    EXPECT_EQ(wmq_errno, 0);
    if (type.reading == Reading::fields) continue;
    const auto *bytes = reinterpret_cast<const char *>(&record->eventLog);
    EXPECT_EQ(record->eventLog.endOfStream, type.reading == Reading::marker ? 1 : 0);
    EXPECT_EQ(std::count(bytes + sizeof(int32_t), bytes + sizeof(eventLog), '\0'),
              sizeof(eventLog) - sizeof(int32_t));
  }
}

TEST_F(ParsingALine, LeavesTheTextBehindATypeWithoutFieldsUnread) {
  for (const char *rest : {"", " 7", " \"text", " \"\"\" -", "\"LOG_SWITCH\" \"10.1\" 5 7 \n"})
    expectAccepted("\"JOB_VACATED\" \"10.1\" 5" + std::string(rest));
}

TEST_F(ParsingALine, GivesATypeWithoutFieldsOnlyWhenNothingWasWrongBefore) {
  for (const char *line : {"\"JOB_OCCUPY_REQ\" \"10.1\" 5", "\"JOB_VACATED\" \"10.1\" 5"}) {
    wmq_errno = 99;
    EXPECT_EQ(wmq_readstreamlineMT(line), nullptr) << line;
    EXPECT_EQ(wmq_errno, 99);
    EXPECT_EQ(wmq_readstreamline(line), nullptr) << line;
    wmq_errno = 0;
    EXPECT_NE(wmq_readstreamline(line), nullptr) << line;
    wmq_readstreamline("");
  }
}

TEST_F(ParsingALine, GivesATypeWithFieldsWhateverWasWrongBefore) {
  wmq_errno = 99;
  const OwnedRecord record(wmq_readstreamlineMT(logSwitchLine(7).c_str()));
  EXPECT_NE(record, nullptr);
  EXPECT_EQ(wmq_errno, 0);
}

TEST_F(ParsingALine, TakesTheEndOfTheStreamForWhatItIsWhateverWasWrongBefore) {
  for (const char *rest : {"", " 7", " \"text", "x"}) {
    wmq_errno = 99;
    const OwnedRecord record(
        wmq_readstreamlineMT(("\"END_OF_STREAM\" \"2.1\" 5" + std::string(rest)).c_str()));
    ASSERT_NE(record, nullptr) << rest;
    EXPECT_EQ(record->eventLog.endOfStream, 1);
    EXPECT_EQ(wmq_errno, 0);
  }
}

TEST_F(ParsingALine, ReleasesWhatABadLineHadBroughtAlready) {
  expectRefused("\"GRP_ADD\" \"10.1\" 5 1 2 3 \"one\" \"two\" \"/name\" \"four\" \"five\" 1 2");
  expectRefused(
      "\"JOB_STATUS\" \"10.1\" 5 1 2 3 4 5.0 6 0 0 0 0 \"s\" 1 \"d\" 2 3 1 7 8 9 1 \"group\" 2 \"k\" \"v\" "
      "5");
  expectRefused("\"JOB_START\" \"10.1\" 5 1 2 3 4 5.0 3 \"2*host\" \"other\"");
}

TEST_F(ParsingALine, SaysThatMemoryIsShortForACountThatNoLineHolds) {
  expectRefused("\"JOB_CLEAN\" \"10.1\" 5 1 2 2000000000", WMQE_NO_MEM);
}

}  // namespace
}  // namespace wmq::testing
