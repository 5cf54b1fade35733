// UNFULFILL, JOB_CLEAN, JOB_EXCEPTION, LOG_SWITCH and JOB_ATTR_SET, and the release of types that own nothing
// or have no line any more.
#include "wmq/records/small_events.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

// ------------------------------------------------------------------------------ UNFULFILL

TEST(Unfulfill, HasNoEighthNumberUpTo3_0) {
  for (const char *version : {"2.1", "3.0", "3.00001"}) {
    const OwnedRecord record = parse(line("UNFULFILL", version, "1 2 3 4 5 6 7 8"));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_EQ(record->eventLog.unfulfillLog.unfulfillField7, 7) << version;
    EXPECT_EQ(record->eventLog.unfulfillLog.unfulfillField8, 0) << version;
  }
}

TEST(Unfulfill, CarriesItsEighthNumberAbove3_0) {
  const OwnedRecord record = parse(line("UNFULFILL", "3.01", "1 2 3 4 5 6 7 8"));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.unfulfillLog.unfulfillField8, 8);
}

TEST(Unfulfill, MustHaveEveryNumberOfItsVersion) {
  EXPECT_EQ(faultOf(line("UNFULFILL", "3.0", "1 2 3 4 5 6")), (Fault{WMQE_BAD_FORMAT, "unfulfillField7"}));
  EXPECT_EQ(faultOf(line("UNFULFILL", "3.01", "1 2 3 4 5 6 7")), (Fault{WMQE_BAD_FORMAT, "unfulfillField8"}));
  EXPECT_EQ(faultOf(line("UNFULFILL", "3.0", "1 2 3 4 5 6 7")), Fault{});
}

TEST(Unfulfill, CutsItsTimeTo32BitsAndWidensItWithItsSign) {
  eventRecord record = bareRecord(EVENT_UNFULFILL);
  record.eventLog.unfulfillLog.unfulfillTime = 3000000000;
  EXPECT_EQ(fieldsOf(record), " 0 0 0 0 0 -1294967296 0 0\n");
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->eventLog.unfulfillLog.unfulfillTime, -1294967296);
}

// ------------------------------------------------------------------------------ JOB_CLEAN

std::string clean(const std::string &version, const std::string &fields) {
  return line("JOB_CLEAN", version, fields);
}

const jobCleanLog &cleanIn(const OwnedRecord &record) { return record->eventLog.jobCleanLog; }

std::vector<int32_t> blockOf(const jobCleanLog &log) {
  return {log.indexRangeStart, log.indexRangeStart + 3 * static_cast<std::ptrdiff_t>(log.indexRangeCnt)};
}

TEST(JobClean, HasNoRangesBefore10_1EvenIfTheLineCarriesThem) {
  for (const char *version : {"9.1", "10.0"}) {
    const OwnedRecord record = parse(clean(version, "1 2 1 3 4 5"));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_EQ(cleanIn(record).jobId, 1);
    EXPECT_EQ(cleanIn(record).idx, 2);
    EXPECT_EQ(cleanIn(record).indexRangeCnt, 0) << version;
    EXPECT_EQ(cleanIn(record).indexRangeStart, nullptr) << version;
    EXPECT_EQ(cleanIn(record).indexRangeEnd, nullptr) << version;
    EXPECT_EQ(cleanIn(record).indexRangeStep, nullptr) << version;
  }
}

TEST(JobClean, HoldsItsRangesInOneBlock) {
  const OwnedRecord record = parse(clean("10.1", "1 2 2 3 4 5 6 7 8"));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(blockOf(cleanIn(record)), ElementsAre(3, 6, 4, 7, 5, 8));
  EXPECT_EQ(cleanIn(record).indexRangeEnd, cleanIn(record).indexRangeStart + 2);
  EXPECT_EQ(cleanIn(record).indexRangeStep, cleanIn(record).indexRangeStart + 4);
}

TEST(JobClean, DoesNotCheckThatTheCountOfRangesConverts) {
  for (const char *fields : {"1 2", "1 2 many 3 4 5"}) {
    const OwnedRecord record = parse(clean("10.1", fields));
    ASSERT_NE(record, nullptr) << fields;
    EXPECT_EQ(cleanIn(record).indexRangeCnt, 0) << fields;
    EXPECT_EQ(cleanIn(record).indexRangeStart, nullptr) << fields;
  }
}

TEST(JobClean, DoesNotCheckThatItsRangesConvert) {
  const OwnedRecord record = parse(clean("10.1", "1 2 3 4 5 6 x 7 8"));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(cleanIn(record).indexRangeCnt, 3);
  EXPECT_THAT(blockOf(cleanIn(record)), ElementsAre(4, 0, 0, 5, 0, 0, 6, 0, 0));
}

TEST(JobClean, KeepsANegativeCountOfRangesWithoutArrays) {
  const OwnedRecord record = parse(clean("10.1", "1 2 -4"));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(cleanIn(record).indexRangeCnt, -4);
  EXPECT_EQ(cleanIn(record).indexRangeStart, nullptr);
  EXPECT_EQ(fieldsOf(*record), " 1 2 -4\n");
}

TEST(JobClean, MustHaveItsTwoNumbers) {
  EXPECT_EQ(faultOf(clean("10.1", "1")), (Fault{WMQE_BAD_FORMAT, "idx"}));
}

TEST(JobClean, FailsToWriteRangesWithoutArrays) {
  eventRecord record = bareRecord(EVENT_JOB_CLEAN);
  record.eventLog.jobCleanLog.indexRangeCnt = 2;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "indexRangeStart"}));
  EXPECT_EQ(fieldsOf(record), " 0 0 2") << "the partial line";
}

TEST(JobClean, KeepsItsRangesWhenReleased) {
  const OwnedRecord record = parse(clean("10.1", "1 2 2 3 4 5 6 7 8"));
  ASSERT_NE(record, nullptr);
  const jobCleanLog before = cleanIn(record);
  freeLogRec(record.get());
  EXPECT_EQ(std::memcmp(&before, &cleanIn(record), sizeof before), 0);
  EXPECT_THAT(blockOf(cleanIn(record)), ElementsAre(3, 6, 4, 7, 5, 8));
}

TEST(JobClean, GivesUpItsRangesWhenWhatIsKeptIsFreed) {
  const OwnedRecord record = parse(clean("10.1", "1 2 2 3 4 5 6 7 8"));
  ASSERT_NE(record, nullptr);
  wmq_freekept(record.get());
  EXPECT_EQ(cleanIn(record).indexRangeCnt, 0);
  EXPECT_EQ(cleanIn(record).indexRangeStart, nullptr);
  EXPECT_EQ(cleanIn(record).indexRangeEnd, nullptr);
  EXPECT_EQ(cleanIn(record).indexRangeStep, nullptr);
}

// --------------------------------------------------------- JOB_EXCEPTION and the like

TEST(JobException, MustHaveItsSixNumbers) {
  EXPECT_EQ(faultOf(line("JOB_EXCEPTION", "10.1", "1 2 3 4 5")), (Fault{WMQE_BAD_FORMAT, "exceptField6"}));
  EXPECT_EQ(faultOf(line("JOB_EXCEPTION", "2.1", "1 2 3 4 5 6")), Fault{});
}

TEST(JobException, CutsItsTimeTo32BitsAndWidensItWithItsSign) {
  eventRecord record = bareRecord(EVENT_JOB_EXCEPTION);
  record.eventLog.jobExceptionLog.exceptTime = -(int64_t{1} << 32) - 7;
  EXPECT_EQ(fieldsOf(record), " 0 0 0 -7 0 0\n");
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->eventLog.jobExceptionLog.exceptTime, -7);
}

TEST(LogSwitch, EndsInABlankBeforeItsLineEnd) {
  eventRecord record = logSwitch(12345);
  EXPECT_EQ(fieldsOf(record), " 12345 \n");
}

TEST(LogSwitch, NeedsNoBlankWhenRead) {
  const OwnedRecord record = parse(line("LOG_SWITCH", "10.1", "12345"));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.logSwitchLog.lastJobId, 12345);
}

TEST(LogSwitch, MustHaveItsNumber) {
  EXPECT_EQ(faultOf(line("LOG_SWITCH", "10.1", "")), (Fault{WMQE_BAD_FORMAT, "lastJobId"}));
  EXPECT_EQ(faultOf(line("LOG_SWITCH", "10.1", "x")), (Fault{WMQE_BAD_FORMAT, "lastJobId"}));
}

TEST(JobAttrSet, EndsInABlankBeforeItsLineEnd) {
  eventRecord record = bareRecord(EVENT_JOB_ATTR_SET);
  record.eventLog.jobAttrSetLog = {1, -2, 3, -4};
  EXPECT_EQ(fieldsOf(record), " 1 -2 3 -4 \n");
}

TEST(JobAttrSet, MustHaveItsFourNumbers) {
  EXPECT_EQ(faultOf(line("JOB_ATTR_SET", "10.1", "1 2 3 ")), (Fault{WMQE_BAD_FORMAT, "attrField4"}));
  EXPECT_EQ(faultOf(line("JOB_ATTR_SET", "10.1", "1 2 3 4")), Fault{});
}

// --------------------------------------------------------------------------------- release

TEST(Release, DoesNothingAtAllForTypesThatOwnNothing) {
  for (const int32_t type : {0,  6,  7,  8,  9,  15, 28, 29, 30, 31, 33, 34, 37, 38,        43,       46,
                             50, 52, 54, 56, 58, 59, 61, 62, 66, 67, 76, 79, -1, INT32_MAX, INT32_MIN}) {
    eventRecord record = {};
    std::memset(&record, 0xA5, sizeof record);  // no pointer in it can be freed
    record.type = type;
    const eventRecord before = record;
    freeLogRec(&record);
    EXPECT_EQ(std::memcmp(&before, &record, sizeof record), 0) << "type " << type;
  }
}

TEST(Release, TakesNullRecords) {
  freeLogRec(nullptr);
  wmq_freelogrec(nullptr);
  wmq_freekept(nullptr);
}

TEST(Release, FreesTheRecordItselfForEveryType) {
  for (int32_t type = -1; type <= WMQ_MAX_EVENT_TYPE + 1; ++type) wmq_freelogrec(emptyRecord(type).release());
}

TEST(Release, FreesTheCountedStringsOfCode60) {
  const OwnedRecord record = emptyRecord(60);
  retiredListLog &log = record->eventLog.retiredListLog;
  log.numNames = 2;
  log.names = static_cast<char **>(std::calloc(2, sizeof(char *)));
  log.names[1] = ownedCopy("name");
  for (int times = 1; times <= 2; ++times) {
    freeLogRec(record.get());
    EXPECT_EQ(log.names, nullptr);
    EXPECT_EQ(log.numNames, 0);
  }
}

TEST(Release, FreesTheMembersOfCode63) {
  const OwnedRecord record = emptyRecord(63);
  retiredAllocationLog &log = record->eventLog.retiredAllocationLog;
  log.text = ownedCopy("text");
  log.hosts.numHosts = 1;
  log.hosts.hosts = static_cast<char **>(std::calloc(1, sizeof(char *)));
  log.hosts.hosts[0] = ownedCopy("host");
  log.affinityAlloc = parseAffinityAllocField("host:0-3");
  ASSERT_NE(log.affinityAlloc, nullptr);
  for (int times = 1; times <= 2; ++times) {
    freeLogRec(record.get());
    EXPECT_EQ(log.text, nullptr);
    EXPECT_EQ(log.hosts.hosts, nullptr);
    EXPECT_EQ(log.hosts.numHosts, 0);
    EXPECT_EQ(log.affinityAlloc, nullptr);
  }
}

TEST(Release, FreesTheOneStringOfCode64) {
  const OwnedRecord record = emptyRecord(64);
  record->eventLog.retiredTextLog.text = ownedCopy("text");
  for (int times = 1; times <= 2; ++times) {
    freeLogRec(record.get());
    EXPECT_EQ(record->eventLog.retiredTextLog.text, nullptr);
  }
}

}  // namespace
}  // namespace wmq::testing
