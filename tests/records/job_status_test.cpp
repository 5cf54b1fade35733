// JOB_STATUS and SBD_JOB_STATUS.
#include "wmq/records/job_status.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

#include "companion/written_text.h"
#include "support/record_lines.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

const Fields kStatus = {{"jobId", "101"},
                        {"jStatus", "64"},
                        {"reason", "103"},
                        {"subreasons", "-104"},
                        {"cpuTime", "105.5000"},
                        {"endTime", "1600000106"},
                        {"ru", "0"},
                        {"jFlags", "109"},
                        {"idx", "110"},
                        {"exitStatus", "111"},
                        {"srcCluster", "\"src\""},
                        {"srcJobId", "9000000000113"},
                        {"dstCluster", "\"dst\""},
                        {"dstJobId", "-9000000000115"},
                        {"dcJobFlags", "116"},
                        {"indexRanges", "2 1 10 2 30 40 5"},
                        {"attrGroups", "0"}};

constexpr char kNineteen[] = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19";
constexpr char kTwoGroups[] = R"(2 "first" 2 "k1" "v1" "k2" "v2" "second" 0)";

std::string status(const std::string &version, const std::string &fields) {
  return line("JOB_STATUS", version, fields);
}

const jobStatusLog &logOf(const OwnedRecord &record) { return record->eventLog.jobStatusLog; }

std::vector<int32_t> numbersOf(int32_t count, const int32_t *numbers) { return {numbers, numbers + count}; }

// A record that a test gives members of its own; nothing of it is released.
class JobStatusWriting : public ::testing::Test {
 protected:
  eventRecord record = bareRecord(EVENT_JOB_STATUS);
  jobStatusLog &log = record.eventLog.jobStatusLog;
};

// What readJobStatus leaves in a structure, whatever it returns.
class JobStatusReading : public ::testing::Test {
 protected:
  int read(const std::string &fields) {
    wmq_setlineversion(10.1F);
    return readJobStatus(fields.c_str(), &log);
  }

  OwnedRecord record = emptyRecord(EVENT_JOB_STATUS);
  jobStatusLog &log = record->eventLog.jobStatusLog;
};

// ------------------------------------------------------------------- versions of the line

TEST(JobStatus, Of9_1HasNeitherFlagsNorRangesNorGroups) {
  const OwnedRecord record = parse(status("9.1", kStatus));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).dcJobFlags, 0);
  EXPECT_EQ(logOf(record).numRangeJobs, -1);
  EXPECT_EQ(logOf(record).indexRangeCnt, 0);
  EXPECT_EQ(logOf(record).indexRangeStart, nullptr);
  EXPECT_EQ(logOf(record).indexRangeEnd, nullptr);
  EXPECT_EQ(logOf(record).indexRangeStep, nullptr);
  EXPECT_EQ(logOf(record).numAttrGroups, 0);
  EXPECT_EQ(logOf(record).attrGroups, nullptr);
}

TEST(JobStatus, LacksItsIndexUpTo3_0AndCarriesItAbove) {
  for (const char *version : {"2.2", "3.0", "3.00001"}) {
    const OwnedRecord record = parse(status(version, kStatus));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_EQ(logOf(record).idx, 0) << version;
  }
  const OwnedRecord record = parse(status("3.01", kStatus));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).idx, 110);
}

TEST(JobStatus, CarriesItsFlagsFrom2_2On) {
  const OwnedRecord older = parse(status("2.1", kStatus));
  const OwnedRecord newer = parse(status("2.2", kStatus));
  ASSERT_TRUE(older != nullptr && newer != nullptr);
  EXPECT_EQ(logOf(older).jFlags, 0);
  EXPECT_EQ(logOf(newer).jFlags, 109);
}

TEST(JobStatus, CarriesItsExitStatusFrom6_0On) {
  const OwnedRecord older = parse(status("5.9", kStatus));
  const OwnedRecord newer = parse(status("6.0", kStatus));
  ASSERT_TRUE(older != nullptr && newer != nullptr);
  EXPECT_EQ(logOf(older).exitStatus, 0);
  EXPECT_EQ(logOf(newer).exitStatus, 111);
}

TEST(JobStatus, CarriesItsClustersFrom9_1OnHoweverThatIsSpelled) {
  for (const char *version : {"9.1", "9.10000"}) {
    const OwnedRecord record = parse(status(version, kStatus));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_STREQ(logOf(record).srcCluster, "src");
    EXPECT_EQ(logOf(record).srcJobId, 9000000000113);
    EXPECT_STREQ(logOf(record).dstCluster, "dst");
    EXPECT_EQ(logOf(record).dstJobId, -9000000000115);
  }
}

TEST(JobStatus, OwnsEmptyClustersWhereTheLineHasNone) {
  const OwnedRecord record = parse(status("9.0", kStatus));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(logOf(record).srcCluster, "");
  EXPECT_STREQ(logOf(record).dstCluster, "");
  EXPECT_NE(logOf(record).srcCluster, logOf(record).dstCluster) << "each is an allocation of its own";
  EXPECT_EQ(logOf(record).srcJobId, 0);
  EXPECT_EQ(logOf(record).dstJobId, 0);
}

TEST(JobStatus, TakesVersionsForDecimalNumbers) {
  for (const char *without : {"9.1", "9.10000", "9.109"})
    EXPECT_EQ(logOf(parse(status(without, kStatus))).dcJobFlags, 0) << without;
  for (const char *with : {"9.11", "9.2", "10.0"})
    EXPECT_EQ(logOf(parse(status(with, kStatus))).dcJobFlags, 116) << with;
}

TEST(JobStatus, SaysInNumRangeJobsThatItsVersionHasNoRanges) {
  const OwnedRecord older = parse(status("10.0", kStatus));
  const OwnedRecord newer = parse(status("10.1", kStatus));
  ASSERT_TRUE(older != nullptr && newer != nullptr);
  EXPECT_EQ(logOf(older).numRangeJobs, -1);
  EXPECT_EQ(logOf(newer).numRangeJobs, 0);
}

TEST(JobStatus, OfAnOlderVersionIsNotReadBeyondItsLastField) {
  EXPECT_EQ(faultOf(status("10.0", kStatus.upTo("dcJobFlags").text() + " rubbish")), Fault{});
}

TEST(JobStatus, MustHaveEveryFieldOfItsVersion) {
  const std::vector<std::string> names = kStatus.names();
  for (size_t last = 0; last + 1 < names.size(); ++last)
    EXPECT_EQ(faultOf(status("10.1", kStatus.upTo(names[last]))).error, WMQE_BAD_FORMAT)
        << "behind " << names[last];
  EXPECT_EQ(faultOf(status("10.1", kStatus)), Fault{});
}

// ------------------------------------------------------------------------------ numbers

TEST(JobStatus, MustHaveSevenNumbersAtItsHead) {
  EXPECT_EQ(faultOf(status("2.1", kStatus.upTo("endTime"))), (Fault{WMQE_BAD_FORMAT, "ru"}));
  EXPECT_EQ(faultOf(status("2.1", kStatus.with("cpuTime", "fast"))), (Fault{WMQE_BAD_FORMAT, "cpuTime"}));
  EXPECT_EQ(faultOf(status("2.1", kStatus.upTo("ru"))), Fault{});
}

TEST_F(JobStatusWriting, CutsTheEndTimeToItsLow32Bits) {
  log.endTime = (int64_t{1} << 32) + 7;
  EXPECT_THAT(fieldsOf(record), ::testing::StartsWith(" 0 0 0 0 0.0000 7 0 "));
  log.endTime = int64_t{1} << 31;
  EXPECT_THAT(fieldsOf(record), ::testing::StartsWith(" 0 0 0 0 0.0000 -2147483648 0 "));
}

TEST(JobStatus, WidensTheEndTimeWithItsSign) {
  EXPECT_EQ(logOf(parse(status("2.1", kStatus.with("endTime", "-2147483648")))).endTime, -2147483648LL);
}

TEST_F(JobStatusWriting, GivesTheCpuTimeFourDecimals) {
  log.cpuTime = 0.03125F;  // half way between two decimals: the even one
  EXPECT_THAT(fieldsOf(record), ::testing::StartsWith(" 0 0 0 0 0.0312 0 "));
}

// ----------------------------------------------------------------------- resource usage

TEST_F(JobStatusWriting, LeavesResourceUsageOutWhenRuIs0) {
  log.wmxRusage.ru_utime = 42;
  EXPECT_EQ(fieldsOf(record), R"( 0 0 0 0 0.0000 0 0 0 0 0 "" 0 "" 0 0 0 0)"
                              "\n");
}

TEST_F(JobStatusWriting, GivesResourceUsageForAnyOtherRu) {
  log.wmxRusage.ru_utime = 42.5;
  log.wmxRusage.ru_elapsed = 43;
  for (const int32_t ru : {1, -1, INT32_MIN}) {
    log.ru = ru;
    EXPECT_EQ(fieldsOf(record), " 0 0 0 0 0.0000 0 " + std::to_string(ru) +
                                    R"( 42.5 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 43 0 0 0 "" 0 "" 0 0 0 0)"
                                    "\n");
  }
}

TEST(JobStatus, ReadsNoResourceUsageWhenRuIs0) {
  const OwnedRecord record = parse(status("10.1", kStatus.with("ru", "0")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).wmxRusage.ru_utime, 0);
  EXPECT_EQ(logOf(record).jFlags, 109) << "the number behind ru";
}

TEST(JobStatus, ReadsResourceUsageForAnyOtherRu) {
  for (const std::string ru : {"1", "-1"}) {
    const OwnedRecord record = parse(status("10.1", kStatus.with("ru", ru + ' ' + kNineteen)));
    ASSERT_NE(record, nullptr) << ru;
    EXPECT_EQ(logOf(record).wmxRusage.ru_utime, 1);
    EXPECT_EQ(logOf(record).wmxRusage.ru_elapsed, 19);
    EXPECT_EQ(logOf(record).jFlags, 109);
  }
}

TEST(JobStatus, MustHaveNineteenNumbersOfResourceUsage) {
  const std::string eighteen = std::string(kNineteen).substr(0, std::strlen(kNineteen) - 3);
  EXPECT_EQ(faultOf(status("2.1", kStatus.upTo("ru").with("ru", "1 " + eighteen))),
            (Fault{WMQE_BAD_FORMAT, "wmxRusage"}));
}

// --------------------------------------------------------------------------- index ranges

TEST(JobStatus, HoldsItsRangesInOneBlock) {
  const OwnedRecord record = parse(status("10.1", kStatus));
  ASSERT_NE(record, nullptr);
  const jobStatusLog &log = logOf(record);
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeStart), ElementsAre(1, 30));
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeEnd), ElementsAre(10, 40));
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeStep), ElementsAre(2, 5));
  EXPECT_EQ(log.indexRangeEnd, log.indexRangeStart + 2);
  EXPECT_EQ(log.indexRangeStep, log.indexRangeStart + 4);
}

TEST(JobStatus, DoesNotCheckThatARangeConverts) {
  // The second range is the count of groups, which is then read from the same place.
  const OwnedRecord record = parse(status("10.1", kStatus.with("indexRanges", "2 1 10 2")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).indexRangeCnt, 2);
  EXPECT_THAT(numbersOf(2, logOf(record).indexRangeStart), ElementsAre(1, 0));
  EXPECT_THAT(numbersOf(2, logOf(record).indexRangeEnd), ElementsAre(10, 0));
  EXPECT_THAT(numbersOf(2, logOf(record).indexRangeStep), ElementsAre(2, 0));
}

TEST(JobStatus, DoesNotCheckThatTheCountOfRangesConverts) {
  EXPECT_EQ(faultOf(status("10.1", kStatus.with("indexRanges", "many"))),
            (Fault{WMQE_BAD_FORMAT, "numAttrGroups"}))
      << "the field behind it meets the same text";
}

TEST_F(JobStatusReading, KeepsTheCountOfRangesAt0WhereItDoesNotConvert) {
  EXPECT_EQ(read(kStatus.with("indexRanges", "many")), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.indexRangeCnt, 0);
  EXPECT_EQ(log.indexRangeStart, nullptr);
}

TEST(JobStatus, KeepsANegativeCountOfRangesWithoutArrays) {
  const OwnedRecord record = parse(status("10.1", kStatus.with("indexRanges", "-3")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).indexRangeCnt, -3);
  EXPECT_EQ(logOf(record).indexRangeStart, nullptr);
}

TEST(JobStatus, RefusesACountOfRangesThatNoLineCanHold) {
  EXPECT_EQ(faultOf(status("10.1", kStatus.with("indexRanges", "1048577"))),
            (Fault{WMQE_NO_MEM, "indexRangeCnt"}));
}

TEST_F(JobStatusWriting, FailsForRangesWithoutArrays) {
  int32_t numbers[] = {1};
  log.indexRangeCnt = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "indexRangeStart"}));
  log.indexRangeStart = numbers;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "indexRangeEnd"}));
  log.indexRangeEnd = numbers;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "indexRangeStep"}));
  log.indexRangeStep = numbers;
  EXPECT_EQ(faultOf(record), Fault{});
}

TEST_F(JobStatusWriting, PutsANegativeCountOfRangesDownAsItIs) {
  log.indexRangeCnt = -3;
  EXPECT_THAT(fieldsOf(record), ::testing::EndsWith(" -3 0\n"));
}

// ------------------------------------------------------------------------ attribute groups

TEST_F(JobStatusWriting, NeverPutsDownAttributeGroupsAndClearsTheirCount) {
  const OwnedRecord read = parse(status("10.1", kStatus.with("attrGroups", kTwoGroups)));
  ASSERT_NE(read, nullptr);
  log = logOf(read);
  ASSERT_EQ(log.numAttrGroups, 2);
  EXPECT_EQ(fieldsOf(record), ' ' + kStatus.with("attrGroups", "0").text() + '\n');
  EXPECT_EQ(log.numAttrGroups, 0) << "the caller's own count";
  EXPECT_EQ(log.attrGroups, logOf(read).attrGroups) << "only the count is cleared";
}

TEST(JobStatus, TakesAttributeGroupsThatALineCarries) {
  const OwnedRecord record = parse(status("10.1", kStatus.with("attrGroups", kTwoGroups)));
  ASSERT_NE(record, nullptr);
  const jobStatusLog &log = logOf(record);
  ASSERT_EQ(log.numAttrGroups, 2);
  EXPECT_STREQ(log.attrGroups[0].groupName, "first");
  ASSERT_EQ(log.attrGroups[0].numPairs, 2);
  EXPECT_STREQ(log.attrGroups[0].pairs[0].key, "k1");
  EXPECT_STREQ(log.attrGroups[0].pairs[0].value, "v1");
  EXPECT_STREQ(log.attrGroups[0].pairs[1].key, "k2");
  EXPECT_STREQ(log.attrGroups[0].pairs[1].value, "v2");
  EXPECT_STREQ(log.attrGroups[1].groupName, "second");
  EXPECT_EQ(log.attrGroups[1].numPairs, 0);
  EXPECT_EQ(log.attrGroups[1].pairs, nullptr);
}

TEST(JobStatus, EndsWithSuccessAtACountOfGroupsBelow1) {
  for (const char *count : {"0 rubbish", "-1 rubbish"}) {
    const OwnedRecord record = parse(status("10.1", kStatus.with("attrGroups", count)));
    ASSERT_NE(record, nullptr) << count;
    EXPECT_EQ(logOf(record).attrGroups, nullptr) << count;
  }
}

TEST(JobStatus, MustHaveACountOfGroups) {
  EXPECT_EQ(faultOf(status("10.1", kStatus.without("attrGroups"))),
            (Fault{WMQE_BAD_FORMAT, "numAttrGroups"}));
}

TEST(JobStatus, MustHaveEveryStringOfItsGroups) {
  const auto faultOfGroups = [](const char *groups) {
    return faultOf(status("10.1", kStatus.with("attrGroups", groups)));
  };
  EXPECT_EQ(faultOfGroups("1 group 0"), (Fault{WMQE_BAD_FORMAT, "groupName"}));
  EXPECT_EQ(faultOfGroups(R"(1 "group")"), (Fault{WMQE_BAD_FORMAT, "numPairs"}));
  EXPECT_EQ(faultOfGroups(R"(1 "group" 1 key value)"), (Fault{WMQE_BAD_FORMAT, "key"}));
  EXPECT_EQ(faultOfGroups(R"(1 "group" 1 "key" value)"), (Fault{WMQE_BAD_FORMAT, "value"}));
}

TEST_F(JobStatusReading, CutsTheCountOfGroupsToThoseThatAreComplete) {
  EXPECT_EQ(read(kStatus.with("attrGroups", R"(3 "first" 1 "k" "v" "second" 2 "k" "v" "broken")")),
            WMQE_BAD_FORMAT);
  ASSERT_EQ(log.numAttrGroups, 1);
  EXPECT_STREQ(log.attrGroups[0].groupName, "first");
}

TEST_F(JobStatusReading, LeavesWhatItHasReadBeforeAFailure) {
  EXPECT_EQ(read(kStatus.upTo("dstCluster")), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.exitStatus, 111);
  EXPECT_STREQ(log.srcCluster, "src");
  EXPECT_STREQ(log.dstCluster, "dst");
}

// ---------------------------------------------------------------------------- off the line

TEST_F(JobStatusWriting, NeverPutsDownHostUsageNorNumRangeJobs) {
  char host[] = "host";
  hostRusageEntry entry = {host, 1, 2, 3, 4, 0, nullptr};
  const std::string without = fieldsOf(record);
  log.numhRusages = 1;
  log.hostRusage = &entry;
  log.numRangeJobs = 5;
  EXPECT_EQ(fieldsOf(record), without);
}

TEST(JobStatus, HasNoHostUsageWhenRead) {
  const OwnedRecord record = parse(status("10.1", kStatus));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).numhRusages, 0);
  EXPECT_EQ(logOf(record).hostRusage, nullptr);
}

// ---------------------------------------------------------------------------- writing fails

TEST_F(JobStatusWriting, SaysThatTheFileTookNothing) {
  EXPECT_EQ(test::resultOnAFullDevice([&](FILE *file) { return writeJobStatus(file, &log); }), WMQE_SYS);
}

TEST_F(JobStatusWriting, LeavesThePartialLineWhenItFails) {
  log.indexRangeCnt = 1;
  int result = 0;
  EXPECT_EQ(test::writtenBy([&](FILE *file) { result = writeJobStatus(file, &log); }),
            R"( 0 0 0 0 0.0000 0 0 0 0 0 "" 0 "" 0 0 1)");
  EXPECT_EQ(result, WMQE_SYS);
}

TEST_F(JobStatusWriting, EndsItsLine) {
  int result = -1;
  EXPECT_EQ(test::writtenBy([&](FILE *file) { result = writeJobStatus(file, &log); }), fieldsOf(record));
  EXPECT_EQ(result, 0);
}

// --------------------------------------------------------------------------------- release

// A record with all that a JOB_STATUS can own.
OwnedRecord fullStatus() {
  OwnedRecord record = parse(status("10.1", kStatus.with("attrGroups", kTwoGroups)));
  jobStatusLog &log = record->eventLog.jobStatusLog;
  log.numhRusages = 1;
  log.hostRusage = static_cast<hostRusageEntry *>(std::calloc(1, sizeof(hostRusageEntry)));
  log.hostRusage[0].name = ownedCopy("host");
  return record;
}

TEST(JobStatusRelease, FreesClustersAndHostUsage) {
  const OwnedRecord record = fullStatus();
  freeLogRec(record.get());
  EXPECT_EQ(logOf(record).srcCluster, nullptr);
  EXPECT_EQ(logOf(record).dstCluster, nullptr);
  EXPECT_EQ(logOf(record).hostRusage, nullptr);
  EXPECT_EQ(logOf(record).numhRusages, 0);
}

TEST(JobStatusRelease, KeepsRangesAndAttributeGroups) {
  const OwnedRecord record = fullStatus();
  const jobStatusLog before = logOf(record);
  freeLogRec(record.get());
  const jobStatusLog &log = logOf(record);
  EXPECT_EQ(log.indexRangeCnt, 2);
  EXPECT_EQ(log.indexRangeStart, before.indexRangeStart);
  EXPECT_EQ(log.indexRangeEnd, before.indexRangeEnd);
  EXPECT_EQ(log.indexRangeStep, before.indexRangeStep);
  EXPECT_EQ(log.numAttrGroups, 2);
  EXPECT_EQ(log.attrGroups, before.attrGroups);
  EXPECT_THAT(numbersOf(2, log.indexRangeStep), ElementsAre(2, 5));
  EXPECT_STREQ(log.attrGroups[0].pairs[1].value, "v2");
}

TEST(JobStatusRelease, DoesNothingTheSecondTime) {
  const OwnedRecord record = fullStatus();
  freeLogRec(record.get());
  const eventRecord before = *record;
  freeLogRec(record.get());
  EXPECT_EQ(std::memcmp(&before, record.get(), sizeof before), 0);
}

TEST(JobStatusRelease, OfWhatIsKeptFreesRangesAndGroupsAndNothingElse) {
  const OwnedRecord record = fullStatus();
  wmq_freekept(record.get());
  const jobStatusLog &log = logOf(record);
  EXPECT_EQ(log.indexRangeCnt, 0);
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.indexRangeEnd, nullptr);
  EXPECT_EQ(log.indexRangeStep, nullptr);
  EXPECT_EQ(log.numAttrGroups, 0);
  EXPECT_EQ(log.attrGroups, nullptr);
  EXPECT_STREQ(log.srcCluster, "src");
  EXPECT_STREQ(log.hostRusage[0].name, "host");
}

// --------------------------------------------------------------------------- SBD_JOB_STATUS

const Fields kReport = {{"jobId", "201"},      {"jStatus", "202"},    {"reason", "203"},
                        {"subreasons", "204"}, {"sbdField5", "205"},  {"sbdField6", "206"},
                        {"sbdTime", "-207"},   {"sbdField8", "208"},  {"sbdField9", "209"},
                        {"sbdField10", "210"}, {"sbdField11", "211"}, {"sbdField12", "212"},
                        {"sbdField13", "213"}, {"sbdField14", "214"}};

std::string report(const std::string &version, const std::string &fields) {
  return line("SBD_JOB_STATUS", version, fields);
}

const sbdJobStatusLog &reportOf(const OwnedRecord &record) { return record->eventLog.sbdJobStatusLog; }

TEST(SbdJobStatus, Of5_0HasNeitherOfItsLastTwoNumbers) {
  const OwnedRecord record = parse(report("5.0", kReport));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(reportOf(record).sbdField12, 212);
  EXPECT_EQ(reportOf(record).sbdField13, -65535);
  EXPECT_EQ(reportOf(record).sbdField14, 0);
}

TEST(SbdJobStatus, CarriesItsThirteenthNumberAbove5_0) {
  const OwnedRecord record = parse(report("6.0", kReport));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(reportOf(record).sbdField13, 213);
  EXPECT_EQ(reportOf(record).sbdField14, 0) << "not above 6.0";
}

TEST(SbdJobStatus, CarriesItsFourteenthNumberAbove6_0) {
  const OwnedRecord record = parse(report("6.01", kReport));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(reportOf(record).sbdField14, 214);
}

TEST(SbdJobStatus, MustHaveEveryNumberOfItsVersion) {
  EXPECT_EQ(faultOf(report("5.0", kReport.upTo("sbdField11"))), (Fault{WMQE_BAD_FORMAT, "sbdField12"}));
  EXPECT_EQ(faultOf(report("5.01", kReport.upTo("sbdField12"))), (Fault{WMQE_BAD_FORMAT, "sbdField13"}));
  EXPECT_EQ(faultOf(report("6.01", kReport.upTo("sbdField13"))), (Fault{WMQE_BAD_FORMAT, "sbdField14"}));
}

TEST(SbdJobStatus, CutsItsTimeTo32BitsAndWidensItWithItsSign) {
  eventRecord record = bareRecord(EVENT_SBD_JOB_STATUS);
  record.eventLog.sbdJobStatusLog.sbdTime = (int64_t{1} << 32) + (int64_t{1} << 31);
  EXPECT_EQ(fieldsOf(record), " 0 0 0 0 0 0 -2147483648 0 0 0 0 0 0 0");
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(reportOf(read).sbdTime, -2147483648LL);
}

TEST(SbdJobStatus, IsReadByItsLayoutFunctionToo) {
  sbdJobStatusLog log = {};
  wmq_setlineversion(10.1F);
  EXPECT_EQ(readSbdJobStatus(kReport.text().c_str(), &log), 0);
  EXPECT_EQ(log.jobId, 201);
  EXPECT_EQ(log.sbdTime, -207);
  EXPECT_EQ(log.sbdField14, 214);
  EXPECT_EQ(readSbdJobStatus(kReport.upTo("sbdField6").text().c_str(), &log), WMQE_BAD_FORMAT);
}

class AnSbdJobStatusLine : public StreamTest {};

TEST_F(AnSbdJobStatusLine, IsLeftOpenAndTheNextRecordContinuesIt) {
  ASSERT_EQ(open(), 0);
  wmq_errno = 0;
  EXPECT_EQ(write(bareRecord(EVENT_SBD_JOB_STATUS)), 0);
  EXPECT_EQ(write(5), 0);
  EXPECT_EQ(contentOf(path), report("10.1", "0 0 0 0 0 0 0 0 0 0 0 0 0 0") + logSwitchLine(5));
}

}  // namespace
}  // namespace wmq::testing
