// JOB_START, PRE_EXEC_START and JOB_ROUTE.
#include "wmq/records/job_start.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "companion/written_text.h"
#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const Fields kStart = {{"jobId", "2001"},
                       {"startInt1", "2002"},
                       {"startInt2", "2003"},
                       {"startInt3", "-2004"},
                       {"hostFactor", "5.5"},
                       {"execHosts", R"(2 "2*hostA" "hostB")"},
                       {"startStr1", "\"str 1\""},
                       {"startStr2", "\"str 2\""},
                       {"startInt4", "2009"},
                       {"startStr3", "\"str 3\""},
                       {"startInt5", "2011"},
                       {"startStr4", "\"str 4\""},
                       {"startInt6", "2013"},
                       {"startStr5", "\"str 5\""},
                       {"srcCluster", "\"src\""},
                       {"srcJobId", "9000000000016"},
                       {"dstCluster", "\"dst\""},
                       {"dstJobId", "-9000000000018"},
                       {"namedInts", R"(2 "one" 1 "minus two" -2)"},
                       {"affinityAlloc", "\"hostA:0-3,8;hostB:1\""},
                       {"startInt7", "2021"},
                       {"startInt8", "2022"},
                       {"allocHosts", R"(2 "allocA" "allocB")"},
                       {"startInt9", "2024"},
                       {"startLong1", "2025"},
                       {"startLong2", "-2026"}};

std::string start(const std::string &version, const std::string &fields) {
  return line("JOB_START", version, fields);
}

jobStartLog &logOf(const OwnedRecord &record) { return record->eventLog.jobStartLog; }

std::vector<std::string> execHostsOf(const jobStartLog &log) { return listed(log.numExHosts, log.execHosts); }
std::vector<std::string> allocHostsOf(const jobStartLog &log) {
  return listed(log.numAllocHosts, log.allocHosts);
}

// A record that a test gives members of its own; nothing of it is released. It has one host.
class JobStartWriting : public ::testing::Test {
 protected:
  eventRecord record = bareRecord(EVENT_JOB_START);
  jobStartLog &log = record.eventLog.jobStartLog;
};

// What readJobStart leaves in a structure, whatever it returns.
class JobStartReading : public ::testing::Test {
 protected:
  int read(const std::string &fields, float version = 10.1F) {
    wmq_setlineversion(version);
    return readJobStart(fields.c_str(), &log);
  }

  OwnedRecord record = emptyRecord(EVENT_JOB_START);
  jobStartLog &log = record->eventLog.jobStartLog;
};

// ---------------------------------------------------------------------- versions of the line

TEST(JobStart, ReadsAndWritesEverythingThatALineCanCarry) {
  const OwnedRecord record = parse(start("10.1", kStart));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(fieldsOf(*record), ' ' + kStart.text() + '\n');
}

TEST(JobStart, SharesItsLineWithPreExecStartAndJobRoute) {
  for (const char *type : {"PRE_EXEC_START", "JOB_ROUTE"}) {
    const OwnedRecord record = parse(line(type, "10.1", kStart));
    ASSERT_NE(record, nullptr) << type;
    EXPECT_EQ(format(*record), line(type, "10.1", kStart) + '\n');
    freeLogRec(record.get());
    EXPECT_EQ(logOf(record).execHosts, nullptr) << type;
  }
}

TEST(JobStart, Of3_0CarriesItsFourthNumberButNothingAbove3_0) {
  for (const char *version : {"3.0", "3.00001"}) {
    const OwnedRecord record = parse(start(version, kStart));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_EQ(logOf(record).startInt4, 2009) << version;
    EXPECT_STREQ(logOf(record).startStr3, "") << version;
    EXPECT_EQ(logOf(record).startInt5, 0) << version;
  }
  const OwnedRecord above = parse(start("3.01", kStart));
  ASSERT_NE(above, nullptr);
  EXPECT_STREQ(logOf(above).startStr3, "str 3");
  EXPECT_EQ(logOf(above).startInt5, 2011);
}

TEST(JobStart, Of6_1HasTheLargestNumberForItsSixth) {
  const OwnedRecord record = parse(start("6.1", kStart));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(logOf(record).startStr4, "str 4");
  EXPECT_EQ(logOf(record).startInt6, 2147483647);
}

TEST(JobStart, CarriesItsSixthNumberAbove6_1) {
  EXPECT_EQ(logOf(parse(start("6.11", kStart))).startInt6, 2013);
}

TEST(JobStart, Of2_1EndsBehindItsHosts) {
  const OwnedRecord record = parse(start("2.1", kStart.upTo("execHosts")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  const jobStartLog &log = logOf(record);
  for (const char *text : {log.startStr1, log.startStr2, log.startStr3, log.startStr4, log.startStr5,
                           log.srcCluster, log.dstCluster})
    EXPECT_STREQ(text, "");
  for (const int64_t number :
       {int64_t{log.startInt4}, int64_t{log.startInt5}, int64_t{log.startInt8}, int64_t{log.startInt9},
        log.srcJobId, log.dstJobId, log.startLong1, log.startLong2})
    EXPECT_EQ(number, 0);
  EXPECT_EQ(log.startInt6, INT32_MAX);
  EXPECT_EQ(log.startInt7, -1);
  EXPECT_EQ(log.numNamedInts, 0);
  EXPECT_EQ(log.namedInts, nullptr);
  EXPECT_EQ(log.affinityAlloc, nullptr);
}

TEST(JobStart, EndsWhereItsVersionEndsAndNotBefore) {
  const std::pair<const char *, const char *> lastFields[] = {
      {"2.1", "execHosts"},  {"2.2", "startStr2"},  {"3.0", "startInt4"},
      {"3.01", "startInt5"}, {"6.0", "startStr4"},  {"6.11", "startInt6"},
      {"9.1", "dstJobId"},   {"9.11", "startInt7"}, {"9.13", "startInt9"}};
  const std::vector<std::string> names = kStart.names();
  for (const auto &[version, last] : lastFields) {
    EXPECT_EQ(faultOf(start(version, kStart.upTo(last))), Fault{}) << version;
    const auto at = std::find(names.begin(), names.end(), last);
    EXPECT_EQ(faultOf(start(version, kStart.upTo(at[-1]))).error, WMQE_BAD_FORMAT) << version;
  }
}

TEST_F(JobStartReading, LeavesItsNinthNumberAsItIsBefore9_13) {
  log.startInt9 = 4711;
  EXPECT_EQ(read(kStart, 9.12F), 0);
  EXPECT_EQ(log.startInt9, 4711);
}

// ---------------------------------------------------------------------------- the second list

TEST_F(JobStartWriting, Writes0ForASecondListOfAsManyHosts) {
  Names second = {"host"};
  log.numAllocHosts = second.count();
  log.allocHosts = second;
  EXPECT_EQ(fieldsOf(record), R"( 0 0 0 0 0.0 1 "host" "" "" 0 "" 0 "" 0 "" "" 0 "" 0 0 "" 0 0 0 0 0 0)"
                              "\n");
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_THAT(allocHostsOf(logOf(read)), ElementsAre("host"));
}

TEST_F(JobStartWriting, LosesASecondListOfAsManyOtherHosts) {
  Names second = {"other"};
  log.numAllocHosts = second.count();
  log.allocHosts = second;
  EXPECT_THAT(fieldsOf(record), Not(HasSubstr("other")));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_THAT(allocHostsOf(logOf(read)), ElementsAre("host"));
}

TEST_F(JobStartWriting, WritesASecondListOfAnotherCount) {
  Names second = {"other", "other", "host"};
  log.numAllocHosts = second.count();
  log.allocHosts = second;
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( 2 "2*other" "host" 0 0 0)"
                                         "\n"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_THAT(allocHostsOf(logOf(read)), ElementsAre("other", "other", "host"));
}

TEST_F(JobStartWriting, ReadsASecondListOfNoHostsBackAsACopyOfTheFirst) {
  ASSERT_EQ(log.numAllocHosts, 0);
  EXPECT_THAT(fieldsOf(record), EndsWith(" 0 0 0 0\n"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_THAT(allocHostsOf(logOf(read)), ElementsAre("host"));
}

TEST(JobStart, Of9_12HasACopyOfItsHostsForTheSecondList) {
  const OwnedRecord record = parse(start("9.12", kStart.upTo("startInt8")));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(execHostsOf(logOf(record)), ElementsAre("hostA", "hostA", "hostB"));
  EXPECT_THAT(allocHostsOf(logOf(record)), ElementsAre("hostA", "hostA", "hostB"));
}

TEST(JobStart, OwnsEachNameOfTheCopyByItself) {
  const OwnedRecord record = parse(start("10.1", kStart.with("allocHosts", "0")));
  ASSERT_NE(record, nullptr);
  const jobStartLog &log = logOf(record);
  ASSERT_EQ(log.numAllocHosts, 3);
  for (int32_t i = 0; i < 3; ++i) EXPECT_NE(log.allocHosts[i], log.execHosts[i]);
}

TEST(JobStart, ReadsASecondListOfAsManyOtherHostsThatALineCarries) {
  const OwnedRecord record = parse(start("10.1", kStart.with("allocHosts", R"(3 "x" "y" "z")")));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(allocHostsOf(logOf(record)), ElementsAre("x", "y", "z"));
}

TEST_F(JobStartReading, HasNoSecondListWhenItsCountDoesNotConvert) {
  EXPECT_EQ(read(kStart.with("allocHosts", "x")), WMQE_BAD_FORMAT);
  EXPECT_EQ(lastFault(WMQE_BAD_FORMAT).field, "numAllocHosts");
  EXPECT_EQ(log.numAllocHosts, 0);
  EXPECT_EQ(log.allocHosts, nullptr);
}

TEST_F(JobStartReading, CutsTheCountOfTheSecondListToTheHostsThatAreComplete) {
  EXPECT_EQ(read(kStart.upTo("allocHosts").with("allocHosts", R"(3 "allocA" "allocB" c)")), WMQE_BAD_FORMAT);
  EXPECT_THAT(allocHostsOf(log), ElementsAre("allocA", "allocB"));
}

// -------------------------------------------------------------------------------- hosts

TEST(JobStart, MustHaveAHost) {
  for (const char *version : {"2.1", "10.1"})
    EXPECT_EQ(faultOf(start(version, kStart.with("execHosts", "0"))), (Fault{WMQE_BAD_FORMAT, "numExHosts"}));
}

TEST_F(JobStartWriting, WritesARecordWithoutHostsThatItCannotReadBack) {
  log.numExHosts = 0;
  EXPECT_THAT(fieldsOf(record), StartsWith(R"( 0 0 0 0 0.0 0 "" )"));
  EXPECT_EQ(faultOf(format(record)), (Fault{WMQE_BAD_FORMAT, "numExHosts"}));
}

TEST_F(JobStartWriting, CompressesItsHosts) {
  Names hosts = {"a", "a", "a", "b", "a"};
  log.numExHosts = hosts.count();
  log.execHosts = hosts;
  EXPECT_THAT(fieldsOf(record), StartsWith(R"( 0 0 0 0 0.0 3 "3*a" "b" "a" )"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_THAT(execHostsOf(logOf(read)), ElementsAre("a", "a", "a", "b", "a"));
}

// The number of names stands before them and is known behind them; long lists are written part by part.
TEST_F(JobStartWriting, WritesListsOfAnyLengthWithRunsOfAnyLength) {
  for (const int32_t count : {1, 9, 10, 63, 64, 65, 99, 100, 127, 128, 129, 999, 1000, 1001, 10'000})
    for (const int32_t run : {1, 2, 3, 7, 63, 64, 65, 128, 1000, 10'000}) {
      SCOPED_TRACE(std::to_string(count) + " hosts, " + std::to_string(run) + " of each");
      std::vector<std::string> names;
      names.reserve(static_cast<size_t>(count));
      for (int32_t i = 0; i < count; ++i) names.push_back("host" + std::to_string(i / run));
      std::vector<char *> hosts;
      hosts.reserve(names.size());
      for (std::string &name : names) hosts.push_back(name.data());
      log.numExHosts = count;
      log.execHosts = hosts.data();

      const int32_t numRuns = (count + run - 1) / run;
      std::string list = " " + std::to_string(numRuns);
      for (int32_t i = 0; i < numRuns; ++i) {
        const int32_t times = std::min(run, count - i * run);
        list += " \"" + (times > 1 ? std::to_string(times) + "*" : "") + "host" + std::to_string(i) + "\"";
      }
      ASSERT_THAT(fieldsOf(record), StartsWith(" 0 0 0 0 0.0" + list + " \"\" "));
    }
}

TEST_F(JobStartWriting, ProtectsHostsThatLookCompressed) {
  Names hosts = {"3*a", "b"};
  log.numExHosts = hosts.count();
  log.execHosts = hosts;
  EXPECT_THAT(fieldsOf(record), StartsWith(R"( 0 0 0 0 0.0 2 "1*3*a" "b" )"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_THAT(execHostsOf(logOf(read)), ElementsAre("3*a", "b"));
}

TEST_F(JobStartReading, ReturnsWhatExpandingItsHostsReturns) {
  EXPECT_EQ(read(kStart.with("execHosts", R"(2 "16777216*a" "b")")), WMQE_BAD_FORMAT);
  EXPECT_EQ(lastFault(WMQE_BAD_FORMAT).field, "execHosts");
  EXPECT_THAT(execHostsOf(log), ElementsAre("16777216*a", "b")) << "the list is as it was read";
}

TEST_F(JobStartReading, CutsTheCountOfItsHostsToThoseThatAreComplete) {
  EXPECT_EQ(read(kStart.upTo("execHosts").with("execHosts", R"(3 "hostA" "hostB" c)")), WMQE_BAD_FORMAT);
  EXPECT_THAT(execHostsOf(log), ElementsAre("hostA", "hostB"));
}

TEST_F(JobStartReading, HasNoArrayForACountThatTheLineCannotHoldOrThatIsNegative) {
  EXPECT_EQ(read(kStart.upTo("execHosts").with("execHosts", R"(1000000 "hostA")")), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.numExHosts, 0);
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(read(kStart.with("execHosts", "-1")), WMQE_NO_MEM);
  EXPECT_EQ(log.numExHosts, 0);
  EXPECT_EQ(log.execHosts, nullptr);
}

TEST_F(JobStartWriting, FailsForANegativeCountOfHosts) {
  log.numExHosts = -1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "execHosts"}));
  EXPECT_EQ(fieldsOf(record), " 0 0 0 0 0.0") << "the partial line";
  log.numExHosts = 1;
  log.numAllocHosts = -1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "allocHosts"}));
}

TEST_F(JobStartWriting, FailsForACountOfHostsWithoutHosts) {
  log.numAllocHosts = 2;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "allocHosts"}));
  log.execHosts = nullptr;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "execHosts"}));
}

TEST_F(JobStartWriting, NeedsNoSecondListWhereTheCountsAreEqual) {
  log.numAllocHosts = log.numExHosts;
  log.allocHosts = nullptr;
  EXPECT_EQ(faultOf(record), Fault{});
}

TEST(JobStart, OfAMillionDifferentHostsIsWrittenAndReadBackWhole) {
  constexpr int32_t million = 1'000'000;
  const OwnedRecord record = emptyRecord(EVENT_JOB_START);
  jobStartLog &log = logOf(record);
  log.numExHosts = million;
  log.execHosts = static_cast<char **>(std::calloc(million, sizeof(char *)));
  for (int32_t i = 0; i < million; ++i) log.execHosts[i] = ownedCopy("host" + std::to_string(i));

  const std::string text = format(*record);
  EXPECT_THAT(text.substr(0, 100), HasSubstr(R"( 1000000 "host0" "host1" "host2" )"));
  const OwnedRecord read = parse(text);
  ASSERT_NE(read, nullptr) << wmq_errdetail();
  ASSERT_EQ(logOf(read).numExHosts, million);
  ASSERT_EQ(logOf(read).numAllocHosts, million);
  int32_t different = 0;
  for (int32_t i = 0; i < million; ++i) {
    different += std::strcmp(logOf(read).execHosts[i], log.execHosts[i]) != 0;
    different += std::strcmp(logOf(read).allocHosts[i], log.execHosts[i]) != 0;
  }
  EXPECT_EQ(different, 0);
  EXPECT_TRUE(format(*read) == text) << "the same bytes again";
}

// ------------------------------------------------------------------------ lenient numbers

TEST(JobStart, MayEndBeforeItsLastTwoNumbers) {
  const OwnedRecord record = parse(start("10.1", kStart.upTo("startInt9")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).startInt9, 2024);
  EXPECT_EQ(logOf(record).startLong1, 0);
  EXPECT_EQ(logOf(record).startLong2, 0);
}

TEST(JobStart, Takes0ForLastNumbersThatDoNotConvert) {
  const OwnedRecord record = parse(start("10.1", kStart.with("startLong1", "x")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).startLong1, 0);
  EXPECT_EQ(logOf(record).startLong2, 0) << "meets the same text";
  EXPECT_EQ(logOf(parse(start("10.1", kStart.with("startLong2", "x")))).startLong2, 0);
}

TEST(JobStart, Takes0ForAnEighthNumberThatDoesNotConvert) {
  for (const char *rest : {"", "x"}) {
    const OwnedRecord record = parse(start("9.12", kStart.upTo("startInt7").text() + ' ' + rest));
    ASSERT_NE(record, nullptr) << wmq_errdetail();
    EXPECT_EQ(logOf(record).startInt8, 0);
    EXPECT_EQ(logOf(record).startInt7, 2021);
  }
}

TEST_F(JobStartReading, OverwritesLenientNumbersThatDoNotConvertWith0) {
  log.startInt8 = 1;
  log.startLong1 = 2;
  log.startLong2 = 3;
  EXPECT_EQ(read(kStart.upTo("startInt7"), 9.12F), 0);
  EXPECT_EQ(log.startInt8, 0);
  EXPECT_EQ(log.startLong1, 0);
  EXPECT_EQ(log.startLong2, 0);
}

TEST(JobStart, IsStrictAboutEveryOtherNumber) {
  for (const char *field : {"jobId", "startInt1", "startInt2", "startInt3", "hostFactor", "startInt4",
                            "startInt5", "startInt6", "srcJobId", "dstJobId", "startInt7", "startInt9"})
    EXPECT_EQ(faultOf(start("10.1", kStart.with(field, "x"))), (Fault{WMQE_BAD_FORMAT, field}));
}

TEST_F(JobStartWriting, CutsItsLongNumbersToTheirLow32Bits) {
  log.startLong1 = (int64_t{1} << 32) + 5;
  log.startLong2 = int64_t{1} << 31;
  EXPECT_THAT(fieldsOf(record), EndsWith(" 0 5 -2147483648\n"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(logOf(read).startLong1, 5);
  EXPECT_EQ(logOf(read).startLong2, -2147483648LL);
}

TEST_F(JobStartWriting, GivesTheHostFactorOneDecimal) {
  log.hostFactor = 2.25F;  // half way between two decimals: the even one
  EXPECT_THAT(fieldsOf(record), StartsWith(" 0 0 0 0 2.2 1 "));
}

// ------------------------------------------------------------- strings, named numbers, affinity

TEST_F(JobStartWriting, WritesNullStringsAsEmptyOnes) {
  ASSERT_EQ(log.startStr4, nullptr);
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_STREQ(logOf(read).startStr4, "");
  EXPECT_STREQ(logOf(read).startStr5, "");
}

TEST(JobStart, HasNoNamedNumbersForACountOf0OrLess) {
  for (const char *count : {"0", "-3"}) {
    const OwnedRecord record = parse(start("10.1", kStart.with("namedInts", count)));
    ASSERT_NE(record, nullptr) << count;
    EXPECT_EQ(logOf(record).numNamedInts, std::atoi(count));
    EXPECT_EQ(logOf(record).namedInts, nullptr);
  }
}

TEST_F(JobStartWriting, FailsForACountOfNamedNumbersWithoutThem) {
  log.numNamedInts = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "namedInts"}));
}

TEST(JobStart, ReadsItsAffinityAllocation) {
  const OwnedRecord record = parse(start("10.1", kStart));
  ASSERT_NE(record, nullptr);
  const affinityAlloc *allocation = logOf(record).affinityAlloc;
  ASSERT_NE(allocation, nullptr);
  ASSERT_EQ(allocation->numHosts, 2);
  EXPECT_STREQ(allocation->hosts[0].host, "hostA");
  EXPECT_EQ(allocation->hosts[0].numCpus, 5);
  EXPECT_EQ(allocation->hosts[0].cpus[4], 8);
}

TEST(JobStart, HasNoAffinityAllocationForAnEmptyText) {
  const OwnedRecord record = parse(start("10.1", kStart.with("affinityAlloc", "\"\"")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).affinityAlloc, nullptr);
  EXPECT_EQ(logOf(record).startInt7, 2021);
}

TEST(JobStart, RefusesAnAffinityTextThatSaysNothing) {
  for (const char *text : {"\"hostA\"", "\"hostA:x\""})
    EXPECT_EQ(faultOf(start("10.1", kStart.with("affinityAlloc", text))),
              (Fault{WMQE_BAD_FORMAT, "affinityAlloc"}));
}

TEST_F(JobStartWriting, FailsForAnAffinityAllocationThatHasNoText) {
  affinityAlloc none = {0, nullptr};
  log.affinityAlloc = &none;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "affinityAlloc"}));
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( "" 0 "" 0 0)")) << "the partial line";
}

// --------------------------------------------------------------------- the layout functions

TEST_F(JobStartWriting, LeavesTheLineOpenForTheCallerWithoutItsNewline) {
  int result = -1;
  const std::string closed = test::writtenBy([&](FILE *file) { result = writeJobStart_ex(file, &log, 1); });
  EXPECT_EQ(result, 0);
  const std::string open = test::writtenBy([&](FILE *file) {
    result = writeJobStart_ex(file, &log, 0);
    std::fputs(" and more", file);
  });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(closed, fieldsOf(record));
  EXPECT_EQ(open, closed.substr(0, closed.size() - 1) + " and more");
}

TEST_F(JobStartWriting, SaysThatTheFileTookNothing) {
  for (const int newline : {0, 1})
    EXPECT_EQ(test::resultOnAFullDevice([&](FILE *file) { return writeJobStart_ex(file, &log, newline); }),
              WMQE_SYS);
}

TEST_F(JobStartReading, GoesByTheVersionThatItIsGiven) {
  EXPECT_EQ(read(kStart, 9.1F), 0);
  EXPECT_STREQ(log.srcCluster, "src");
  EXPECT_EQ(log.startInt7, -1);
}

TEST_F(JobStartReading, LeavesWhatItHasReadBeforeAFailure) {
  EXPECT_EQ(read(kStart.upTo("namedInts").with("namedInts", R"(2 "one" 1 "without value")")),
            WMQE_BAD_FORMAT);
  EXPECT_THAT(execHostsOf(log), ElementsAre("hostA", "hostA", "hostB"));
  EXPECT_STREQ(log.dstCluster, "dst");
  ASSERT_EQ(log.numNamedInts, 1);
  EXPECT_STREQ(log.namedInts[0].name, "one");
}

// ------------------------------------------------------------------- reserved members, release

TEST_F(JobStartWriting, TakesNoNoticeOfItsReservedMembers) {
  const std::string without = fieldsOf(record);
  log.reserved1 = &record;
  log.reserved2 = &log;
  EXPECT_EQ(fieldsOf(record), without);
}

TEST_F(JobStartReading, NeitherSetsNorReleasesItsReservedMembers) {
  log.reserved1 = &log;
  log.reserved2 = &record;
  EXPECT_EQ(read(kStart), 0);
  freeLogRec(record.get());
  wmq_freekept(record.get());
  EXPECT_EQ(log.reserved1, &log);
  EXPECT_EQ(log.reserved2, &record);
}

TEST(JobStartRelease, FreesEverythingThatReadingAllocates) {
  const OwnedRecord record = parse(start("10.1", kStart));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jobStartLog &log = logOf(record);
  EXPECT_EQ(log.numExHosts, 0);
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(log.numAllocHosts, 0);
  EXPECT_EQ(log.allocHosts, nullptr);
  EXPECT_EQ(log.numNamedInts, 0);
  EXPECT_EQ(log.namedInts, nullptr);
  EXPECT_EQ(log.affinityAlloc, nullptr);
  for (const char *text : {log.startStr1, log.startStr2, log.startStr3, log.startStr4, log.startStr5,
                           log.srcCluster, log.dstCluster})
    EXPECT_EQ(text, nullptr);
}

TEST(JobStartRelease, DoesNothingTheSecondTime) {
  const OwnedRecord record = parse(start("10.1", kStart));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const eventRecord before = *record;
  freeLogRec(record.get());
  EXPECT_EQ(std::memcmp(&before, record.get(), sizeof before), 0);
}

}  // namespace
}  // namespace wmq::testing
