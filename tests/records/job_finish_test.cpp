// JOB_FINISH.
#include "wmq/records/job_finish.h"

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
using ::testing::StartsWith;

const Fields kFinish = {{"jobId", "3001"},
                        {"userId", "3002"},
                        {"options", "3003"},
                        {"numProcessors", "3004"},
                        {"submitTime", "1600003005"},
                        {"beginTime", "1600003006"},
                        {"termTime", "1600003007"},
                        {"startTime", "1600003008"},
                        {"userName", "\"user\""},
                        {"queue", "\"queue\""},
                        {"resReq", "\"res req\""},
                        {"finStr1", "\"str 1\""},
                        {"finStr2", "\"str 2\""},
                        {"fromHost", "\"from.host\""},
                        {"cwd", "\"/cwd\""},
                        {"inFile", "\"in file\""},
                        {"outFile", "\"out file\""},
                        {"finStr3", "\"str 3\""},
                        {"finStr4", "\"str 4\""},
                        {"nameList", R"(2 "name a" "name b")"},
                        {"execHosts", R"(2 "2*hostA" "hostB")"},
                        {"jStatus", "3022"},
                        {"hostFactor", "5.5"},
                        {"jobName", "\"job name\""},
                        {"command", "\"command\""},
                        {"wmxRusage", "1.5 2.25 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19"},
                        {"preExecCmd", "\"pre exec\""},
                        {"projectName", "\"project\""},
                        {"exitStatus", "3028"},
                        {"maxNumProcessors", "3029"},
                        {"finStr5", "\"str 5\""},
                        {"finStr6", "\"str 6\""},
                        {"finInt1", "3032"},
                        {"finInt2", "3033"},
                        {"finInt3", "3034"},
                        {"finStr7", "\"str 7\""},
                        {"finStr8", "\"str 8\""},
                        {"finStr9", "\"str 9\""},
                        {"finStr10", "\"str 10\""},
                        {"finInt4", "3039"},
                        {"finStr11", "\"str 11\""},
                        {"finInt5", "3041"},
                        {"finStr12", "\"str 12\""},
                        {"finInt6", "3043"},
                        {"finStr13", "\"str 13\""},
                        {"finStr14", "\"str 14\""},
                        {"finStr15", "\"str 15\""},
                        {"finStr16", "\"str 16\""},
                        {"finInt7", "3048"},
                        {"finStr17", "\"str 17\""},
                        {"finStr18", "\"str 18\""},
                        {"finInt8", "3051 "},  // with a blank of its own
                        {"finStr19", "\"str 19\""},
                        {"submitExt", R"(2 7 "value a" -8 "value b")"},
                        {"hostRusage", "2 hostA 1 2 3 4 0 hostB -1 -2 -3 -4 0"},
                        {"finInt9", "3055"},
                        {"finInt10", "3056"},
                        {"finInt11", "3057"},
                        {"finStr20", "\"str 20\""},
                        {"srcCluster", "\"src\""},
                        {"srcJobId", "9000000000060"},
                        {"dstCluster", "\"dst\""},
                        {"dstJobId", "-9000000000062"},
                        {"forwardTime", "1600003063"},
                        {"finStr21", "\"str 21\""},
                        {"finStr22", "\"str 22\""},
                        {"finInt12", "3066"},
                        {"finStr23", "\"str 23\""},
                        {"strIntPairs", R"(2 "one" 1 "minus two" -2)"},
                        {"allocSlots", R"(2 "slotA" "slotA")"},
                        {"finInt13", "3070"},
                        {"gpuRusages", R"(2 "gpu A" 2 "k1" "v1" "k2" "v2" "" 0)"}};

std::string finish(const std::string &version, const std::string &fields) {
  return line("JOB_FINISH", version, fields);
}

std::string quoted(const std::string &text) { return '"' + text + '"'; }

jobFinishLog &logOf(const OwnedRecord &record) { return record->eventLog.jobFinishLog; }

std::vector<std::string> execHostsOf(const jobFinishLog &log) {
  return listed(log.numExHosts, log.execHosts);
}
std::vector<std::string> slotsOf(const jobFinishLog &log) {
  return listed(log.numAllocSlots, log.allocSlots);
}

// A record that a test gives members of its own; nothing of it is released.
class JobFinishWriting : public ::testing::Test {
 protected:
  eventRecord record = bareRecord(EVENT_JOB_FINISH);
  jobFinishLog &log = record.eventLog.jobFinishLog;
};

// What readJobFinish leaves in a structure, whatever it returns.
class JobFinishReading : public ::testing::Test {
 protected:
  int read(const std::string &fields, float version = 10.1F) {
    wmq_setlineversion(version);
    return readJobFinish(fields.c_str(), &log, kEventTime);
  }

  OwnedRecord record = emptyRecord(EVENT_JOB_FINISH);
  jobFinishLog &log = record->eventLog.jobFinishLog;
};

// ---------------------------------------------------------------------- versions of the line

TEST(JobFinish, ReadsAndWritesEverythingThatALineCanCarry) {
  const OwnedRecord record = parse(finish("10.1", kFinish));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(fieldsOf(*record), ' ' + kFinish.text() + '\n');
}

TEST(JobFinish, Of2_1EndsBehindItsResourceUsage) {
  const OwnedRecord record = parse(finish("2.1", kFinish.upTo("wmxRusage")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  const jobFinishLog &log = logOf(record);
  EXPECT_EQ(log.maxNumProcessors, 3004);
  EXPECT_EQ(log.submitExt, nullptr);
  EXPECT_THAT(slotsOf(log), ElementsAre("hostA", "hostA", "hostB"));
  for (const char *text :
       {log.preExecCmd, log.projectName, log.finStr5,  log.finStr6,  log.finStr7,  log.finStr8,
        log.finStr9,    log.finStr10,    log.finStr11, log.finStr12, log.finStr13, log.finStr14,
        log.finStr15,   log.finStr16,    log.finStr17, log.finStr18, log.finStr19, log.finStr20,
        log.srcCluster, log.dstCluster,  log.finStr21, log.finStr22, log.finStr23})
    EXPECT_STREQ(text, "");
  for (const int64_t number : {int64_t{log.exitStatus},
                               int64_t{log.finInt1},
                               int64_t{log.finInt2},
                               int64_t{log.finInt3},
                               int64_t{log.finInt4},
                               int64_t{log.finInt5},
                               int64_t{log.finInt6},
                               int64_t{log.finInt7},
                               int64_t{log.finInt8},
                               int64_t{log.finInt9},
                               int64_t{log.finInt10},
                               int64_t{log.finInt11},
                               int64_t{log.finInt12},
                               int64_t{log.finInt13},
                               int64_t{log.numhRusages},
                               int64_t{log.numStrIntPairs},
                               log.srcJobId,
                               log.dstJobId,
                               log.forwardTime,
                               int64_t{log.numGPURusages}})
    EXPECT_EQ(number, 0);
  EXPECT_EQ(log.hostRusage, nullptr);
  EXPECT_EQ(log.strIntPairs, nullptr);
  EXPECT_EQ(log.gpuRusages, nullptr);
}

TEST(JobFinish, Of2_5LosesTheThreeValuesThatItCarries) {
  for (const char *version : {"2.2", "2.5", "2.99"}) {
    const OwnedRecord record = parse(finish(version, kFinish.upTo("exitStatus")));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_STREQ(logOf(record).preExecCmd, "") << version;
    EXPECT_STREQ(logOf(record).projectName, "") << version;
    EXPECT_EQ(logOf(record).exitStatus, 0) << version;
    EXPECT_EQ(logOf(record).maxNumProcessors, 3004) << version;
    EXPECT_STREQ(logOf(record).finStr5, "") << version;
    EXPECT_THAT(slotsOf(logOf(record)), ElementsAre("hostA", "hostA", "hostB")) << "what is set behind them";
  }
}

TEST(JobFinish, Of2_5MustHaveTheThreeValuesThatItLoses) {
  const auto faultBehind = [](const char *last) { return faultOf(finish("2.5", kFinish.upTo(last))); };
  EXPECT_EQ(faultBehind("wmxRusage"), (Fault{WMQE_BAD_FORMAT, "preExecCmd"}));
  EXPECT_EQ(faultBehind("preExecCmd"), (Fault{WMQE_BAD_FORMAT, "projectName"}));
  EXPECT_EQ(faultBehind("projectName"), (Fault{WMQE_BAD_FORMAT, "exitStatus"}));
}

TEST(JobFinish, Of3_0KeepsTheThreeValuesAndHasNothingAbove3_0) {
  for (const char *version : {"3.0", "3.00001"}) {
    const OwnedRecord record = parse(finish(version, kFinish.upTo("finStr5")));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_STREQ(logOf(record).preExecCmd, "pre exec") << version;
    EXPECT_STREQ(logOf(record).projectName, "project") << version;
    EXPECT_EQ(logOf(record).exitStatus, 3028) << version;
    EXPECT_EQ(logOf(record).maxNumProcessors, 3029) << version;
    EXPECT_STREQ(logOf(record).finStr5, "str 5") << version;
    EXPECT_STREQ(logOf(record).finStr6, "") << version;
    EXPECT_EQ(logOf(record).finInt1, 0) << version;
    EXPECT_EQ(logOf(record).finInt3, 0) << version;
  }
}

TEST(JobFinish, EndsWhereItsVersionEndsAndNotBefore) {
  const std::pair<const char *, const char *> lastFields[] = {
      {"2.1", "wmxRusage"},  {"2.2", "exitStatus"}, {"3.0", "finStr5"},  {"3.01", "finInt3"},
      {"4.0", "finStr8"},    {"5.0", "finStr9"},    {"6.0", "finStr14"}, {"7.0", "finStr15"},
      {"7.02", "finStr17"},  {"7.03", "finStr18"},  {"7.04", "finInt8"}, {"7.06", "submitExt"},
      {"8.0", "hostRusage"}, {"8.3", "finInt10"},   {"9.1", "finStr23"}, {"9.11", "strIntPairs"},
      {"9.13", "finInt13"},  {"10.1", "gpuRusages"}};
  const std::vector<std::string> names = kFinish.names();
  for (const auto &[version, last] : lastFields) {
    EXPECT_EQ(faultOf(finish(version, kFinish.upTo(last))), Fault{}) << version;
    const auto at = std::find(names.begin(), names.end(), last);
    EXPECT_EQ(faultOf(finish(version, kFinish.upTo(at[-1]))).error, WMQE_BAD_FORMAT) << version;
  }
}

TEST(JobFinish, MustHaveEveryFieldOfItsVersion) {
  const std::vector<std::string> names = kFinish.names();
  for (size_t last = 0; last + 1 < names.size(); ++last)
    EXPECT_EQ(faultOf(finish("10.1", kFinish.upTo(names[last]))).error, WMQE_BAD_FORMAT)
        << "behind " << names[last];
}

// ------------------------------------------------------------------------ derived members

TEST_F(JobFinishWriting, HasItsEndTimeFromTheHeaderWhateverTheCallerStored) {
  log.endTime = 42;
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(logOf(read).endTime, kEventTime);
}

TEST_F(JobFinishReading, TakesItsEndTimeFromItsCaller) {
  wmq_setlineversion(10.1F);
  EXPECT_EQ(readJobFinish(kFinish.text().c_str(), &log, -5), 0);
  EXPECT_EQ(log.endTime, -5);
}

TEST_F(JobFinishReading, HasItsEndTimeAsSoonAsTheNumbersAtTheHeadAreRead) {
  EXPECT_EQ(read(kFinish.upTo("startTime")), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.endTime, kEventTime);
}

TEST(JobFinish, AddsUserAndSystemTimeUpToItsCpuTime) {
  const OwnedRecord record = parse(finish("10.1", kFinish));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).cpuTime, 3.75F);
}

TEST_F(JobFinishWriting, HasNoCpuTimeWhenUserAndSystemTimeAddUpToLessThanNothing) {
  log.cpuTime = 42;
  log.wmxRusage.ru_utime = 3;
  log.wmxRusage.ru_stime = -4;
  EXPECT_EQ(logOf(readBack(record)).cpuTime, 0);
  log.wmxRusage.ru_utime = 4.5;
  EXPECT_EQ(logOf(readBack(record)).cpuTime, 0.5F) << "one of the two may be negative";
}

// ------------------------------------------------------------------------------- numbers, names

TEST_F(JobFinishWriting, CutsItsTimesToTheirLow32Bits) {
  log.submitTime = (int64_t{1} << 32) + 5;
  log.beginTime = int64_t{1} << 31;
  log.termTime = -(int64_t{1} << 32) - 7;
  log.startTime = 3000000000;
  log.forwardTime = (int64_t{1} << 40) + 63;
  EXPECT_THAT(fieldsOf(record), StartsWith(" 0 0 0 0 5 -2147483648 -7 -1294967296 "));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(logOf(read).submitTime, 5);
  EXPECT_EQ(logOf(read).beginTime, -2147483648LL);
  EXPECT_EQ(logOf(read).termTime, -7);
  EXPECT_EQ(logOf(read).startTime, -1294967296);
  EXPECT_EQ(logOf(read).forwardTime, 63);
}

TEST(JobFinish, MustHaveItsEightNumbersAtTheHead) {
  EXPECT_EQ(faultOf(finish("2.1", kFinish.upTo("termTime"))), (Fault{WMQE_BAD_FORMAT, "startTime"}));
}

TEST(JobFinish, MustHaveStatusAndHostFactorTogether) {
  EXPECT_EQ(faultOf(finish("10.1", kFinish.with("hostFactor", "x"))), (Fault{WMQE_BAD_FORMAT, "hostFactor"}));
}

TEST(JobFinish, MustHaveNineteenNumbersOfResourceUsage) {
  EXPECT_EQ(faultOf(finish("2.1", kFinish.upTo("wmxRusage")
                                      .with("wmxRusage",
                                            "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 "
                                            "16 17 18"))),
            (Fault{WMQE_BAD_FORMAT, "wmxRusage"}));
}

TEST(JobFinish, RefusesNamesThatAreEmptyOrTooLong) {
  const std::pair<const char *, size_t> names[] = {{"userName", 59}, {"queue", 59}, {"fromHost", 63}};
  for (const auto &[field, longest] : names) {
    const auto faultWith = [name = field](size_t length) {
      return faultOf(finish("10.1", kFinish.with(name, quoted(std::string(length, 'n')))));
    };
    EXPECT_EQ(faultWith(0), (Fault{WMQE_BAD_FORMAT, field}));
    EXPECT_EQ(faultWith(longest), Fault{});
    EXPECT_EQ(faultWith(longest + 1), (Fault{WMQE_BAD_FORMAT, field}));
  }
}

TEST(JobFinish, LeavesABlankOfItsOwnBehindItsEighthNumber) {
  const OwnedRecord record = parse(finish("10.1", kFinish));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(fieldsOf(*record), HasSubstr(" 3051  \"str 19\" "));
}

TEST(JobFinish, NeedsNoBlankOfItsOwnBehindItsEighthNumberWhenRead) {
  EXPECT_STREQ(logOf(parse(finish("10.1", kFinish.with("finInt8", "3051")))).finStr19, "str 19");
  EXPECT_EQ(faultOf(finish("7.04", kFinish.with("finInt8", "3051").upTo("finInt8"))), Fault{});
}

TEST_F(JobFinishWriting, WritesNullStringsAsEmptyOnes) {
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr) << wmq_errdetail();
  for (const char *text : {logOf(read).resReq, logOf(read).finStr11, logOf(read).finStr12,
                           logOf(read).finStr13, logOf(read).finStr20, logOf(read).finStr23})
    EXPECT_STREQ(text, "");
}

TEST_F(JobFinishWriting, KeepsNewlinesInItsStrings) {
  char command[] = "a\nb";
  log.command = command;
  EXPECT_STREQ(logOf(readBack(record)).command, "a\nb");
  EXPECT_STREQ(command, "a\nb");
}

// --------------------------------------------------------------------------------- hosts, slots

TEST(JobFinish, NeedsNoHosts) {
  const OwnedRecord record = parse(finish("9.12", kFinish.with("execHosts", "0")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).execHosts, nullptr);
  EXPECT_EQ(logOf(record).numAllocSlots, 0);
  EXPECT_EQ(logOf(record).allocSlots, nullptr);
}

TEST_F(JobFinishWriting, Writes0ForNoHosts) {
  EXPECT_THAT(fieldsOf(record), HasSubstr(R"( "" "" "" "" "" 0 0 0 0.0 "" "" 0 )"));
}

TEST_F(JobFinishReading, ReturnsWhatExpandingItsHostsReturns) {
  EXPECT_EQ(read(kFinish.with("execHosts", R"(1 "16777217*a")")), WMQE_BAD_FORMAT);
  EXPECT_EQ(lastFault(WMQE_BAD_FORMAT).field, "execHosts");
  EXPECT_THAT(execHostsOf(log), ElementsAre("16777217*a")) << "the list is as it was read";
}

TEST(JobFinish, OwnsEachNameOfItsCopiedSlotsByItself) {
  const OwnedRecord record = parse(finish("9.12", kFinish.upTo("strIntPairs")));
  ASSERT_NE(record, nullptr);
  const jobFinishLog &log = logOf(record);
  ASSERT_EQ(log.numAllocSlots, 3);
  for (int32_t i = 0; i < 3; ++i) EXPECT_NE(log.allocSlots[i], log.execHosts[i]);
}

TEST(JobFinish, NeitherCompressesNorExpandsItsSlots) {
  const Fields fields = kFinish.with("allocSlots", R"(3 "2*host" "host" "host")");
  const OwnedRecord record = parse(finish("10.1", fields));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(slotsOf(logOf(record)), ElementsAre("2*host", "host", "host"));
  EXPECT_EQ(fieldsOf(*record), ' ' + fields.text() + '\n');
}

TEST(JobFinish, HasNoSlotsForACountOf0On9_13) {
  const OwnedRecord record = parse(finish("9.13", kFinish.with("allocSlots", "0")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).numAllocSlots, 0);
  EXPECT_EQ(logOf(record).allocSlots, nullptr);
}

TEST_F(JobFinishWriting, FailsForASlotWithoutAName) {
  char host[] = "host";
  char empty[] = "";
  char *slots[] = {host, empty};
  log.numAllocSlots = 2;
  log.allocSlots = slots;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "allocSlots"}));
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( 0 2 "host")")) << "the partial line";
  slots[1] = nullptr;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "allocSlots"}));
  slots[1] = host;
  EXPECT_EQ(faultOf(record), Fault{});
}

TEST_F(JobFinishWriting, FailsForANegativeCountOfHosts) {
  log.numExHosts = -1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "execHosts"}));
}

TEST_F(JobFinishWriting, FailsForCountsWithoutArrays) {
  log.numGPURusages = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "gpuRusages"}));
  log.numAllocSlots = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "allocSlots"}));
  log.numStrIntPairs = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "strIntPairs"}));
  log.numhRusages = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "hostRusage"}));
  log.numExHosts = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "execHosts"}));
  log.numNameList = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "nameList"}));
}

TEST_F(JobFinishWriting, PutsNegativeCountsDownAsTheyAre) {
  log.numNameList = -1;
  log.numhRusages = -2;
  log.numStrIntPairs = -3;
  log.numAllocSlots = -4;
  log.numGPURusages = -5;
  EXPECT_THAT(fieldsOf(record), EndsWith(" -3 -4 0 -5\n"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(read).numNameList, -1);
  EXPECT_EQ(logOf(read).nameList, nullptr);
  EXPECT_EQ(logOf(read).numhRusages, -2);
  EXPECT_EQ(logOf(read).hostRusage, nullptr);
  EXPECT_EQ(logOf(read).numStrIntPairs, -3);
  EXPECT_EQ(logOf(read).numAllocSlots, -4);
  EXPECT_EQ(logOf(read).numGPURusages, -5);
}

// ---------------------------------------------------------------------------- host usage

TEST_F(JobFinishWriting, NeverWritesExtraAttributesOfHostUsage) {
  char host[] = "host";
  char name[] = "name";
  char value[] = "value";
  attribute attrs[] = {{name, value}};
  hostRusageEntry entry = {host, 1, -2, 9000000000003, -9000000000004, 1, attrs};
  log.numhRusages = 1;
  log.hostRusage = &entry;
  EXPECT_THAT(fieldsOf(record), HasSubstr(" 1 host 1 -2 9000000000003 -9000000000004 0 0 0 "));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  ASSERT_EQ(logOf(read).numhRusages, 1);
  EXPECT_EQ(logOf(read).hostRusage[0].numAttrs, 0);
  EXPECT_EQ(logOf(read).hostRusage[0].attrs, nullptr);
  EXPECT_EQ(logOf(read).hostRusage[0].utime, 9000000000003);
  EXPECT_EQ(entry.numAttrs, 1) << "the caller's entry stays";
}

TEST(JobFinish, ReadsExtraAttributesOfHostUsageThatALineCarries) {
  const OwnedRecord record =
      parse(finish("10.1", kFinish.with("hostRusage", "1 host 1 2 3 4 2 n1 v1 n2 v2")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  const hostRusageEntry &entry = logOf(record).hostRusage[0];
  ASSERT_EQ(entry.numAttrs, 2);
  EXPECT_STREQ(entry.attrs[0].name, "n1");
  EXPECT_STREQ(entry.attrs[0].value, "v1");
  EXPECT_STREQ(entry.attrs[1].name, "n2");
  EXPECT_STREQ(entry.attrs[1].value, "v2");
  EXPECT_EQ(logOf(record).finInt9, 3055) << "the number behind them";
}

TEST(JobFinish, DoesNotQuoteTheHostNamesOfHostUsage) {
  const Fields fields = kFinish.with("hostRusage", R"(1 "ho"st" 1 2 3 4 0)");
  const OwnedRecord record = parse(finish("10.1", fields));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(logOf(record).hostRusage[0].name, R"("ho"st")");
  EXPECT_EQ(fieldsOf(*record), ' ' + fields.text() + '\n');
}

TEST(JobFinish, RefusesAHostNameOfHostUsageOf64Characters) {
  const auto faultWith = [](size_t length) {
    return faultOf(
        finish("10.1", kFinish.with("hostRusage", "1 " + std::string(length, 'h') + " 1 2 3 4 0")));
  };
  EXPECT_EQ(faultWith(63), Fault{});
  EXPECT_EQ(faultWith(64), (Fault{WMQE_BAD_FORMAT, "name"}));
}

TEST(JobFinish, MustHaveFiveValuesAndACountForEachHostUsage) {
  EXPECT_EQ(faultOf(finish("10.1", kFinish.with("hostRusage", "1 host 1 2 3 x 0"))),
            (Fault{WMQE_BAD_FORMAT, "stime"}));
  EXPECT_EQ(faultOf(finish("10.1", kFinish.upTo("hostRusage").with("hostRusage", "1 host 1 2 3 4"))),
            (Fault{WMQE_BAD_FORMAT, "numAttrs"}));
}

// ---------------------------------------------------------------------------- other lists

TEST(JobFinish, ReadsTheUsageOfGpus) {
  const OwnedRecord record = parse(finish("10.1", kFinish));
  ASSERT_NE(record, nullptr);
  ASSERT_EQ(logOf(record).numGPURusages, 2);
  const gpuRusageEntry *entries = logOf(record).gpuRusages;
  EXPECT_STREQ(entries[0].hostName, "gpu A");
  ASSERT_EQ(entries[0].numPairs, 2);
  EXPECT_STREQ(entries[0].pairs[1].key, "k2");
  EXPECT_STREQ(entries[0].pairs[1].value, "v2");
  EXPECT_STREQ(entries[1].hostName, "");
  EXPECT_EQ(entries[1].numPairs, 0);
  EXPECT_EQ(entries[1].pairs, nullptr);
}

TEST_F(JobFinishWriting, WritesTheUsageOfGpusToTheEndOfTheLine) {
  char text[] = "x";
  keyValue pair = {text, text};
  gpuRusageEntry entries[] = {{text, 1, &pair}, {nullptr, 0, nullptr}};
  log.numGPURusages = 2;
  log.gpuRusages = entries;
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( 0 0 2 "x" 1 "x" "x" "" 0)"
                                         "\n"));
}

TEST(JobFinish, Of10_0HasNoUsageOfGpusEvenIfTheLineCarriesIt) {
  const OwnedRecord record = parse(finish("10.0", kFinish));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).finInt13, 3070);
  EXPECT_EQ(logOf(record).numGPURusages, 0);
  EXPECT_EQ(logOf(record).gpuRusages, nullptr);
}

TEST_F(JobFinishReading, CutsTheCountOfAListToTheEntriesThatAreComplete) {
  EXPECT_EQ(read(kFinish.upTo("nameList").with("nameList", R"(2 "name a" b)")), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numNameList, log.nameList), ElementsAre("name a"));
  freeLogRec(record.get());

  EXPECT_EQ(read(kFinish.upTo("execHosts").with("execHosts", R"(2 "host" other)")), WMQE_BAD_FORMAT);
  EXPECT_THAT(execHostsOf(log), ElementsAre("host"));
  freeLogRec(record.get());

  EXPECT_EQ(read(kFinish.upTo("hostRusage").with("hostRusage", "2 hostA 1 2 3 4 1 n v hostB 1 2 3 4 2 n")),
            WMQE_BAD_FORMAT);
  ASSERT_EQ(log.numhRusages, 1);
  EXPECT_STREQ(log.hostRusage[0].attrs[0].value, "v");
  freeLogRec(record.get());

  EXPECT_EQ(read(kFinish.upTo("strIntPairs").with("strIntPairs", R"(2 "one" 1 "without value")")),
            WMQE_BAD_FORMAT);
  ASSERT_EQ(log.numStrIntPairs, 1);
  EXPECT_STREQ(log.strIntPairs[0].name, "one");
  freeLogRec(record.get());

  EXPECT_EQ(read(kFinish.upTo("allocSlots").with("allocSlots", R"(2 "slot" other)")), WMQE_BAD_FORMAT);
  EXPECT_THAT(slotsOf(log), ElementsAre("slot"));
  freeLogRec(record.get());

  EXPECT_EQ(read(kFinish.with("gpuRusages", R"(2 "gpu A" 1 "k" "v" "gpu B" 2 "k" "v" "without value")")),
            WMQE_BAD_FORMAT);
  ASSERT_EQ(log.numGPURusages, 1);
  EXPECT_STREQ(log.gpuRusages[0].pairs[0].value, "v");
}

TEST_F(JobFinishReading, HasNoArrayForMoreElementsThanTheLineCanHold) {
  EXPECT_EQ(read(kFinish.with("gpuRusages", R"(1000000 "gpu" 0)")), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.numGPURusages, 0);
  EXPECT_EQ(log.gpuRusages, nullptr);
}

TEST_F(JobFinishReading, LeavesWhatItHasReadBeforeAFailure) {
  EXPECT_EQ(read(kFinish.upTo("dstCluster")), WMQE_BAD_FORMAT);
  EXPECT_STREQ(log.command, "command");
  EXPECT_STREQ(log.srcCluster, "src");
  EXPECT_EQ(log.numhRusages, 2);
}

// ----------------------------------------------------------------------------- writing fails

TEST_F(JobFinishWriting, SaysThatTheFileTookNothing) {
  EXPECT_EQ(test::resultOnAFullDevice([&](FILE *file) { return writeJobFinish(file, &log); }), WMQE_SYS);
}

TEST_F(JobFinishWriting, EndsItsLine) {
  int result = -1;
  EXPECT_EQ(test::writtenBy([&](FILE *file) { result = writeJobFinish(file, &log); }), fieldsOf(record));
  EXPECT_EQ(result, 0);
}

// --------------------------------------------------------------------------------- release

TEST(JobFinishRelease, FreesEverythingThatReadingAllocates) {
  const OwnedRecord record = parse(finish("10.1", kFinish));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jobFinishLog &log = logOf(record);
  for (const int32_t count : {log.numNameList, log.numExHosts, log.numhRusages, log.numStrIntPairs,
                              log.numAllocSlots, log.numGPURusages})
    EXPECT_EQ(count, 0);
  EXPECT_EQ(log.nameList, nullptr);
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(log.submitExt, nullptr);
  EXPECT_EQ(log.hostRusage, nullptr);
  EXPECT_EQ(log.strIntPairs, nullptr);
  EXPECT_EQ(log.allocSlots, nullptr);
  EXPECT_EQ(log.gpuRusages, nullptr);
  for (const char *text :
       {log.resReq, log.cwd, log.inFile, log.outFile, log.jobName, log.command, log.preExecCmd,
        log.projectName, log.finStr1, log.finStr12, log.finStr23, log.srcCluster, log.dstCluster})
    EXPECT_EQ(text, nullptr);
}

TEST(JobFinishRelease, DoesNothingTheSecondTime) {
  const OwnedRecord record = parse(finish("10.1", kFinish));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const eventRecord before = *record;
  freeLogRec(record.get());
  EXPECT_EQ(std::memcmp(&before, record.get(), sizeof before), 0);
}

}  // namespace
}  // namespace wmq::testing
