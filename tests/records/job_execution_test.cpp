// JOB_START_ACCEPT and JOB_EXECUTE.
#include "wmq/records/job_execution.h"

#include <gmock/gmock.h>

#include "companion/written_text.h"
#include "support/parsed.h"
#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using wmq::test::resultOnAFullDevice;

// ------------------------------------------------------------------------ JOB_START_ACCEPT

const Fields kAccept = {{"numbers", "1 2 3"},      {"acceptInt3", "4"},
                        {"srcCluster", "\"src\""}, {"srcJobId", "9000000000006"},
                        {"dstCluster", "\"dst\""}, {"dstJobId", "-9000000000008"},
                        {"acceptInt4", "9"}};

std::string accept(const std::string &version, const std::string &fields) {
  return line("JOB_START_ACCEPT", version, fields);
}

TEST(JobStartAccept, Of3_0HoldsThreeNumbersAndNothingElse) {
  const OwnedRecord record = parse(accept("3.0", kAccept.upTo("numbers")));
  ASSERT_NE(record, nullptr);
  const jobStartAcceptLog &log = record->eventLog.jobStartAcceptLog;
  EXPECT_EQ(log.acceptInt2, 3);
  EXPECT_EQ(log.acceptInt3, 0);
  EXPECT_STREQ(log.srcCluster, "");
  EXPECT_EQ(log.srcJobId, 0);
  EXPECT_STREQ(log.dstCluster, "");
  EXPECT_EQ(log.dstJobId, 0);
  EXPECT_EQ(log.acceptInt4, -1);
}

TEST(JobStartAccept, OwnsEachOfItsEmptyClusters) {
  const OwnedRecord record = parse(accept("3.0", kAccept.upTo("numbers")));
  ASSERT_NE(record, nullptr);
  EXPECT_NE(record->eventLog.jobStartAcceptLog.srcCluster, record->eventLog.jobStartAcceptLog.dstCluster);
}

TEST(JobStartAccept, CarriesItsFourthNumberAbove3_0Only) {
  EXPECT_EQ(parsed(accept("3.0", kAccept))->eventLog.jobStartAcceptLog.acceptInt3, 0);
  EXPECT_EQ(parsed(accept("3.01", kAccept))->eventLog.jobStartAcceptLog.acceptInt3, 4);
  EXPECT_EQ(faultOf(accept("3.01", kAccept.upTo("numbers"))), (Fault{WMQE_BAD_FORMAT, "acceptInt3"}));
}

TEST(JobStartAccept, Of9_1MustHaveAllButTheLastNumber) {
  const OwnedRecord record = parse(accept("9.1", kAccept.upTo("dstJobId")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobStartAcceptLog.dstJobId, -9000000000008);
  EXPECT_EQ(record->eventLog.jobStartAcceptLog.acceptInt4, -1) << "9.1 is below 9.11";
  EXPECT_EQ(faultOf(accept("9.1", kAccept.upTo("dstCluster"))), (Fault{WMQE_BAD_FORMAT, "dstJobId"}));
}

TEST(JobStartAccept, MustHaveItsLastNumberFrom9_11On) {
  EXPECT_EQ(faultOf(accept("9.11", kAccept.upTo("dstJobId"))), (Fault{WMQE_BAD_FORMAT, "acceptInt4"}));
  EXPECT_EQ(parsed(accept("9.11", kAccept))->eventLog.jobStartAcceptLog.acceptInt4, 9);
}

TEST(JobStartAccept, MustHaveThreeNumbersAtItsHead) {
  EXPECT_EQ(faultOf(accept("2.1", "1 2")).error, WMQE_BAD_FORMAT);
  EXPECT_EQ(faultOf(accept("2.1", "1 2 x")).error, WMQE_BAD_FORMAT);
}

TEST(JobStartAccept, WritesAllItsFieldsWhateverTheyHold) {
  eventRecord record = bareRecord(EVENT_JOB_START_ACCEPT);
  EXPECT_EQ(fieldsOf(record), " 0 0 0 0 \"\" 0 \"\" 0 0\n");
}

TEST(JobStartAccept, FailsToReachAFullFile) {
  jobStartAcceptLog log{};
  EXPECT_EQ(resultOnAFullDevice([&](FILE *full) { return writeJobStartAccept(full, &log); }), WMQE_SYS);
}

// ----------------------------------------------------------------------------- JOB_EXECUTE

const Fields kExecute = {{"numbers", "1 2 3"},
                         {"execStr1", "\"s1\""},
                         {"execStr2", "\"s2\""},
                         {"execStr3", "\"s3\""},
                         {"execInt3", "33"},
                         {"execInt4", "34"},
                         {"execStr4", "\"s4\""},
                         {"execInt5", "35"},
                         {"execStr5", "\"s5\""},
                         {"execInt6", "36"},
                         {"execInt7", "37"},
                         {"srcCluster", "\"src\""},
                         {"srcJobId", "9000000000015"},
                         {"dstCluster", "\"dst\""},
                         {"dstJobId", "9000000000017"},
                         {"execStr6", "\"s6\""},
                         {"execInt8", "38"}};

std::string execute(const std::string &version, const std::string &fields) {
  return line("JOB_EXECUTE", version, fields);
}

const jobExecuteLog &executeOf(const OwnedRecord &record) { return record->eventLog.jobExecuteLog; }

TEST(JobExecute, OfTheCurrentVersionIsReadBackWithEveryField) {
  const OwnedRecord record = parse(execute("10.1", kExecute));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(executeOf(record).srcJobId, 9000000000015);
  EXPECT_EQ(executeOf(record).dstJobId, 9000000000017);
  EXPECT_EQ(fieldsOf(*record), ' ' + kExecute.text() + '\n');
}

TEST(JobExecute, HasAnotherOrderOnTheLineThanInMemory) {
  const OwnedRecord record = parse(execute("10.1", kExecute));
  ASSERT_NE(record, nullptr);
  const jobExecuteLog &log = executeOf(record);
  EXPECT_EQ(log.execInt2, 3) << "the third number, before the strings";
  EXPECT_STREQ(log.execStr1, "s1");
  EXPECT_STREQ(log.execStr2, "s2");
  EXPECT_STREQ(log.execStr5, "s5");
  EXPECT_EQ(log.execInt6, 36) << "behind the fifth string";
  EXPECT_LT(offsetof(jobExecuteLog, execStr2), offsetof(jobExecuteLog, execStr1));
  EXPECT_LT(offsetof(jobExecuteLog, execInt6), offsetof(jobExecuteLog, execStr5));
}

TEST(JobExecute, Of3_0CarriesItsFirstLateNumberAndNotTheNext) {
  const OwnedRecord record = parse(execute("3.0", kExecute));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(executeOf(record).execInt3, 33);
  EXPECT_EQ(executeOf(record).execInt4, 0);
  EXPECT_EQ(executeOf(parsed(execute("3.01", kExecute))).execInt4, 34);
  EXPECT_EQ(executeOf(parsed(execute("2.9", kExecute))).execInt3, 0);
}

TEST(JobExecute, Of6_0EndsBehindItsFifthNumber) {
  const OwnedRecord record = parse(execute("6.0", kExecute.upTo("execInt5")));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(executeOf(record).execStr4, "s4");
  EXPECT_EQ(executeOf(record).execInt5, 35);
  EXPECT_STREQ(executeOf(record).execStr5, "");
  EXPECT_EQ(executeOf(record).execInt6, 0);
  EXPECT_EQ(executeOf(record).execInt7, 2147483647);
  EXPECT_EQ(faultOf(execute("6.01", kExecute.upTo("execInt5"))), (Fault{WMQE_BAD_FORMAT, "execStr5"}));
}

TEST(JobExecute, CarriesItsSeventhNumberAbove6_1Only) {
  EXPECT_EQ(executeOf(parsed(execute("6.1", kExecute))).execInt7, 2147483647);
  EXPECT_EQ(executeOf(parsed(execute("6.11", kExecute))).execInt7, 37);
}

TEST(JobExecute, Of5_9HasItsDefaults) {
  const OwnedRecord record = parse(execute("5.9", kExecute.upTo("execInt4")));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(executeOf(record).execStr4, "");
  EXPECT_EQ(executeOf(record).execInt5, -1);
  EXPECT_STREQ(executeOf(record).execStr6, "");
  EXPECT_EQ(executeOf(record).execInt8, -1);
}

TEST(JobExecute, WritesAMissingLastStringAsAnEmptyOne) {
  eventRecord record = bareRecord(EVENT_JOB_EXECUTE);
  const OwnedRecord back = readBack(record);
  ASSERT_NE(back, nullptr);
  EXPECT_STREQ(executeOf(back).execStr6, "");
}

TEST(JobExecute, MustHaveEveryFieldOfItsVersion) {
  const std::vector<std::string> names = kExecute.names();
  for (size_t last = 0; last + 1 < names.size(); ++last)
    EXPECT_EQ(faultOf(execute("10.1", kExecute.upTo(names[last]))),
              (Fault{WMQE_BAD_FORMAT, names[last + 1]}));
}

TEST(JobExecute, FailsToReachAFullFile) {
  jobExecuteLog log{};
  EXPECT_EQ(resultOnAFullDevice([&](FILE *full) { return writeJobExecute(full, &log); }), WMQE_SYS);
}

}  // namespace
}  // namespace wmq::testing
