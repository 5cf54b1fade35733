#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "support/record_lines.h"
#include "support/small_records.h"

namespace wmq::testing {
namespace {

// Leaks, and memory that is released twice, are for the address sanitizer and valgrind to find; these tests
// look at what is left in the record.
bool sameLog(const eventRecord &a, const eventRecord &b) {
  return std::memcmp(&a.eventLog, &b.eventLog, sizeof a.eventLog) == 0;
}

class ReleasingARecord : public ::testing::Test {
 protected:
  // All bytes of the log as given; no pointer in it may be touched.
  static eventRecord filled(int32_t type) {
    eventRecord record{};
    record.type = type;
    std::memset(&record.eventLog, 0xA5, sizeof record.eventLog);
    return record;
  }

  void expectUntouched(int32_t type) {
    eventRecord record = filled(type);
    const eventRecord before = record;
    freeLogRec(&record);
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0) << type;
  }
};

TEST_F(ReleasingARecord, SetsWhatItOwnedToNull) {
  const OwnedRecord record =
      parse("\"GRP_ADD\" \"10.1\" 5 1 2 3 \"one\" \"two\" \"/name\" \"four\" \"five\" 6 7 \"eight\" 9 10");
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jgrpAddLog &log = record->eventLog.jgrpAddLog;
  EXPECT_EQ(log.grpStr1, nullptr);
  EXPECT_EQ(log.grpStr2, nullptr);
  EXPECT_EQ(log.grpStr4, nullptr);
  EXPECT_EQ(log.grpStr5, nullptr);
  EXPECT_EQ(log.grpStr6, nullptr);
}

TEST_F(ReleasingARecord, LeavesTheRestOfItAsItIs) {
  const OwnedRecord record = parse("\"GRP_CTRL\" \"9.1\" 5 1 2 3 \"text\" \"/name\"");
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  EXPECT_EQ(record->type, EVENT_GRP_CTRL);
  EXPECT_EQ(record->eventTime, 5);
  EXPECT_STREQ(record->version, "9.1");
  EXPECT_EQ(record->eventLog.jgrpCtrlLog.grpCtrlField3, 3);
  EXPECT_STREQ(record->eventLog.jgrpCtrlLog.grpName, "/name");
}

TEST_F(ReleasingARecord, SetsTheCountsOfReleasedArraysToZero) {
  const OwnedRecord record = parse("\"JOB_START\" \"2.1\" 5 1 2 3 4 5.0 2 \"host\" \"other\"");
  ASSERT_NE(record, nullptr);
  const jobStartLog &log = record->eventLog.jobStartLog;
  ASSERT_EQ(log.numExHosts, 2);
  ASSERT_EQ(log.numAllocHosts, 2);
  freeLogRec(record.get());
  EXPECT_EQ(log.numExHosts, 0);
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(log.numAllocHosts, 0);
  EXPECT_EQ(log.allocHosts, nullptr);
}

TEST_F(ReleasingARecord, DoesNothingTheSecondTime) {
  for (const char *line :
       {"\"GRP_STATUS\" \"10.1\" 5 \"text\" 1 2", "\"JOB_START\" \"2.1\" 5 1 2 3 4 5.0 1 \"host\"",
        "\"JOB_STATUS\" \"10.1\" 5 1 2 3 4 5.0 6 0 7 8 9 \"src\" 10 \"dst\" 11 12 1 2 3 4 1 \"group\" 1 "
        "\"k\" \"v\""}) {
    const OwnedRecord record = parse(line);
    ASSERT_NE(record, nullptr) << line;
    freeLogRec(record.get());
    const eventRecord once = *record;
    freeLogRec(record.get());
    EXPECT_TRUE(sameLog(once, *record)) << line;
    wmq_freekept(record.get());
    const eventRecord bare = *record;
    wmq_freekept(record.get());
    EXPECT_TRUE(sameLog(bare, *record)) << line;
  }
}

TEST_F(ReleasingARecord, AcceptsNone) {
  freeLogRec(nullptr);
  wmq_freelogrec(nullptr);
  wmq_freekept(nullptr);
  wmq_errno = 99;
  wmq_freelogrec(nullptr);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(ReleasingARecord, AcceptsAnyTypeThatHoldsNothing) {
  for (int32_t type = -1; type <= 79; ++type) {
    eventRecord *record = emptyRecord(type).release();
    const eventRecord empty = *record;
    freeLogRec(record);
    wmq_freekept(record);
    EXPECT_EQ(std::memcmp(record, &empty, sizeof empty), 0) << type;
    wmq_freelogrec(record);
  }
}

TEST_F(ReleasingARecord, ChangesNothingForTypesThatOwnNothing) {
  for (const int32_t type : {0,  6,  7,  8,  9,  15, 27, 28, 29, 30, 31, 33, 34, 37,
                             38, 43, 46, 50, 52, 54, 56, 58, 59, 61, 62, 66, 67, 76})
    expectUntouched(type);
}

TEST_F(ReleasingARecord, ChangesNothingForTypesThatDoNotExist) {
  for (const int32_t type : {79, 80, 1000, INT32_MAX, -1, INT32_MIN}) {
    expectUntouched(type);
    eventRecord record = filled(type);
    const eventRecord before = record;
    wmq_freekept(&record);
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0) << type;
  }
}

TEST_F(ReleasingARecord, TakesMembersThatTheCallerPutIn) {
  eventRecord *record = emptyRecord(EVENT_JOB_STATUS).release();
  jobStatusLog &log = record->eventLog.jobStatusLog;
  log.srcCluster = ownedCopy("src");
  log.numhRusages = 2;
  log.hostRusage = static_cast<hostRusageEntry *>(std::calloc(2, sizeof(hostRusageEntry)));
  log.hostRusage[0].name = ownedCopy("host");
  log.hostRusage[1].numAttrs = 1;
  log.hostRusage[1].attrs = static_cast<attribute *>(std::calloc(1, sizeof(attribute)));
  log.hostRusage[1].attrs[0].name = ownedCopy("name");
  log.hostRusage[1].attrs[0].value = ownedCopy("value");
  freeLogRec(record);
  EXPECT_EQ(log.srcCluster, nullptr);
  EXPECT_EQ(log.hostRusage, nullptr);
  EXPECT_EQ(log.numhRusages, 0);
  wmq_freelogrec(record);
}

// ----------------------------------------------------------------- what release keeps

class KeepingMembers : public ::testing::Test {
 protected:
  const std::string status =
      "\"JOB_STATUS\" \"10.1\" 5 1 2 3 4 5.0 6 0 7 8 9 \"src\" 10 \"dst\" 11 12 2 1 2 3 4 5 6 "
      "2 \"group\" 1 \"key\" \"value\" \"empty\" 0";
  const std::string clean = "\"JOB_CLEAN\" \"10.1\" 5 7 8 2 1 2 3 4 5 6";
};

TEST_F(KeepingMembers, LeavesTheRangesAndGroupsOfJobStatus) {
  const OwnedRecord record = parse(status);
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jobStatusLog &log = record->eventLog.jobStatusLog;
  EXPECT_EQ(log.srcCluster, nullptr);
  EXPECT_EQ(log.dstCluster, nullptr);
  ASSERT_EQ(log.indexRangeCnt, 2);
  EXPECT_EQ(log.indexRangeStart[1], 4);
  EXPECT_EQ(log.indexRangeEnd[1], 5);
  EXPECT_EQ(log.indexRangeStep[1], 6);
  ASSERT_EQ(log.numAttrGroups, 2);
  EXPECT_STREQ(log.attrGroups[0].groupName, "group");
  EXPECT_STREQ(log.attrGroups[0].pairs[0].value, "value");
  EXPECT_STREQ(log.attrGroups[1].groupName, "empty");
}

TEST_F(KeepingMembers, LeavesTheRangesOfJobClean) {
  const OwnedRecord record = parse(clean);
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jobCleanLog &log = record->eventLog.jobCleanLog;
  ASSERT_EQ(log.indexRangeCnt, 2);
  EXPECT_EQ(log.indexRangeStart[0], 1);
  EXPECT_EQ(log.indexRangeStep[1], 6);
}

TEST_F(KeepingMembers, FreesTheRangesAndGroupsOfJobStatusWhenAsked) {
  const OwnedRecord record = parse(status);
  ASSERT_NE(record, nullptr);
  wmq_freekept(record.get());
  const jobStatusLog &log = record->eventLog.jobStatusLog;
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.indexRangeEnd, nullptr);
  EXPECT_EQ(log.indexRangeStep, nullptr);
  EXPECT_EQ(log.indexRangeCnt, 0);
  EXPECT_EQ(log.attrGroups, nullptr);
  EXPECT_EQ(log.numAttrGroups, 0);
  EXPECT_STREQ(log.srcCluster, "src") << "what release frees is not kept";
  EXPECT_STREQ(log.dstCluster, "dst");
}

TEST_F(KeepingMembers, FreesTheRangesOfJobCleanWhenAsked) {
  const OwnedRecord record = parse(clean);
  ASSERT_NE(record, nullptr);
  wmq_freekept(record.get());
  const jobCleanLog &log = record->eventLog.jobCleanLog;
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.indexRangeEnd, nullptr);
  EXPECT_EQ(log.indexRangeStep, nullptr);
  EXPECT_EQ(log.indexRangeCnt, 0);
}

TEST_F(KeepingMembers, IsUndoneInEitherOrder) {
  const OwnedRecord keptFirst = parse(status);
  const OwnedRecord releasedFirst = parse(status);
  ASSERT_NE(keptFirst, nullptr);
  ASSERT_NE(releasedFirst, nullptr);
  wmq_freekept(keptFirst.get());
  freeLogRec(keptFirst.get());
  freeLogRec(releasedFirst.get());
  wmq_freekept(releasedFirst.get());
  EXPECT_TRUE(sameLog(*keptFirst, *releasedFirst));
}

TEST_F(KeepingMembers, ConcernsNoOtherRecord) {
  const OwnedRecord record = parse("\"GRP_STATUS\" \"10.1\" 5 \"text\" 1 2");
  ASSERT_NE(record, nullptr);
  const eventRecord before = *record;
  wmq_freekept(record.get());
  EXPECT_TRUE(sameLog(*record, before));
}

// --------------------------------------------------------------------- retired codes

TEST(RetiredRecords, ReleaseTheNamesOfCode60) {
  eventRecord record{};
  record.type = 60;
  retiredListLog &log = record.eventLog.retiredListLog;
  log.numNames = 3;
  log.names = static_cast<char **>(std::calloc(3, sizeof(char *)));
  log.names[0] = ownedCopy("one");
  log.names[2] = ownedCopy("three");
  freeLogRec(&record);
  EXPECT_EQ(log.names, nullptr);
  EXPECT_EQ(log.numNames, 0);
  freeLogRec(&record);
}

TEST(RetiredRecords, ReleaseTheAllocationOfCode63) {
  eventRecord record{};
  record.type = 63;
  retiredAllocationLog &log = record.eventLog.retiredAllocationLog;
  log.affinityAlloc = parseAffinityAllocField("host:0-3,8;other:1");
  ASSERT_NE(log.affinityAlloc, nullptr);
  log.text = ownedCopy("text");
  log.hosts.numHosts = 1;
  log.hosts.hosts = static_cast<char **>(std::calloc(1, sizeof(char *)));
  log.hosts.hosts[0] = ownedCopy("host");
  freeLogRec(&record);
  EXPECT_EQ(log.text, nullptr);
  EXPECT_EQ(log.hosts.hosts, nullptr);
  EXPECT_EQ(log.hosts.numHosts, 0);
  EXPECT_EQ(log.affinityAlloc, nullptr);
  freeLogRec(&record);
}

TEST(RetiredRecords, ReleaseTheTextOfCode64) {
  eventRecord record{};
  record.type = 64;
  record.eventLog.retiredTextLog.text = ownedCopy("text");
  freeLogRec(&record);
  EXPECT_EQ(record.eventLog.retiredTextLog.text, nullptr);
  freeLogRec(&record);
}

TEST(RetiredRecords, AreReleasedWhole) {
  eventRecord *record = emptyRecord(64).release();
  record->eventLog.retiredTextLog.text = ownedCopy("text");
  wmq_freelogrec(record);
}

}  // namespace
}  // namespace wmq::testing
