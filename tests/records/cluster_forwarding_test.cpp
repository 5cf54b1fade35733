// JOB_FORWARD, JOB_ACCEPT, JOB_ACCEPTACK and JOB_STAT_ACK.
#include "wmq/records/cluster_forwarding.h"

#include <gmock/gmock.h>

#include <cstdint>

#include "companion/written_text.h"
#include "support/parsed.h"
#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using wmq::test::resultOnAFullDevice;

const Fields kForward = {
    {"numbers", "1 2"}, {"fwdStr1", "\"s1\""}, {"hosts", "\"2*h\" \"i\""},    {"fwdInt1", "3"},
    {"fwdInt2", "4"},   {"fwdStr2", "\"s2\""}, {"fwdLong1", "9000000000001"}, {"fwdLong2", "-9000000000002"}};
const Fields kAccept = {{"numbers", "1 9000000000001"}, {"jobAcceptStr1", "\"s1\""}, {"jobAcceptInt1", "3"},
                        {"jobAcceptInt2", "4"},         {"jobAcceptStr2", "\"s2\""}, {"jobAcceptLong", "5"}};
const Fields kAcceptAck = {{"jobId", "1"},
                           {"acceptAckInt1", "2"},
                           {"acceptAckInt2", "3"},
                           {"srcCluster", "\"src\""},
                           {"srcJobId", "9000000000001"},
                           {"dstCluster", "\"dst\""},
                           {"dstJobId", "9000000000002"}};
const Fields kStatusAck = {{"numbers", "1 2"},        {"statusAckInt2", "3"},
                           {"srcCluster", "\"src\""}, {"srcJobId", "9000000000001"},
                           {"dstCluster", "\"dst\""}, {"dstJobId", "9000000000002"}};

// ------------------------------------------------------------------------------- JOB_FORWARD

TEST(JobForward, PutsTheCompressedCountBeforeAStringAndTheNamesBehindIt) {
  Names hosts{"h", "h", "i"};
  eventRecord record = bareRecord(EVENT_JOB_FORWARD);
  jobForwardLog &log = record.eventLog.jobForwardLog;
  log.numHosts = hosts.count();
  log.hosts = hosts;
  EXPECT_EQ(fieldsOf(record), R"( 0 2 "" "2*h" "i" 0 0 "" 0 0)"
                              "\n");
  const OwnedRecord back = readBack(record);
  ASSERT_NE(back, nullptr);
  EXPECT_THAT(listed(back->eventLog.jobForwardLog.numHosts, back->eventLog.jobForwardLog.hosts),
              ElementsAre("h", "h", "i"));
}

TEST(JobForward, PutsHostsDownAsTheyAreWhereNothingIsGained) {
  Names hosts{"h", "i", "h"};
  eventRecord record = bareRecord(EVENT_JOB_FORWARD);
  record.eventLog.jobForwardLog.numHosts = hosts.count();
  record.eventLog.jobForwardLog.hosts = hosts;
  EXPECT_EQ(fieldsOf(record), R"( 0 3 "" "h" "i" "h" 0 0 "" 0 0)"
                              "\n");
}

TEST(JobForward, OfNoHostsOrLessHasNone) {
  for (const char *numbers : {"1 0", "1 -3"}) {
    const OwnedRecord record =
        parse(line("JOB_FORWARD", "10.1", kForward.with("numbers", numbers).without("hosts")));
    ASSERT_NE(record, nullptr) << numbers;
    EXPECT_EQ(record->eventLog.jobForwardLog.numHosts, 0) << numbers;
    EXPECT_EQ(record->eventLog.jobForwardLog.hosts, nullptr) << numbers;
    EXPECT_EQ(record->eventLog.jobForwardLog.fwdInt1, 3) << numbers;
  }
}

TEST(JobForward, CutsTheCountToTheHostsThatWereRead) {
  wmq_setlineversion(10.1F);
  const OwnedRecord record = emptyRecord(EVENT_JOB_FORWARD);
  jobForwardLog &log = record->eventLog.jobForwardLog;
  EXPECT_EQ(readJobForward("1 3 \"s1\" \"2*h\" \"i\" none", &log), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numHosts, log.hosts), ElementsAre("2*h", "i"))
      << "not expanded before all are there";
}

TEST(JobForward, HasItsLateFieldsFromTheirVersionsOn) {
  EXPECT_EQ(parsed(line("JOB_FORWARD", "3.0", kForward))->eventLog.jobForwardLog.fwdInt1, 0);
  EXPECT_EQ(parsed(line("JOB_FORWARD", "3.01", kForward))->eventLog.jobForwardLog.fwdInt1, 3);
  EXPECT_EQ(parsed(line("JOB_FORWARD", "4.9", kForward))->eventLog.jobForwardLog.fwdInt2, 0);
  EXPECT_EQ(parsed(line("JOB_FORWARD", "5.0", kForward))->eventLog.jobForwardLog.fwdInt2, 4);
  const OwnedRecord older = parse(line("JOB_FORWARD", "9.0", kForward));
  EXPECT_STREQ(older->eventLog.jobForwardLog.fwdStr2, "");
  EXPECT_EQ(older->eventLog.jobForwardLog.fwdLong1, 0);
  const OwnedRecord newer = parse(line("JOB_FORWARD", "9.1", kForward));
  EXPECT_EQ(newer->eventLog.jobForwardLog.fwdLong1, 9000000000001);
  EXPECT_EQ(newer->eventLog.jobForwardLog.fwdLong2, -9000000000002);
}

TEST(JobForward, MustHaveEveryFieldOfItsVersion) {
  const std::vector<std::string> names = kForward.names();
  for (size_t last = 0; last + 1 < names.size(); ++last)
    EXPECT_EQ(faultOf(line("JOB_FORWARD", "10.1", kForward.upTo(names[last]))).error, WMQE_BAD_FORMAT)
        << names[last];
}

TEST(JobForward, CannotBeWrittenWithoutItsHosts) {
  eventRecord record = bareRecord(EVENT_JOB_FORWARD);
  record.eventLog.jobForwardLog.numHosts = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "hosts"}));
  record.eventLog.jobForwardLog.numHosts = -1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "hosts"}));
}

// -------------------------------------------------------------------------------- JOB_ACCEPT

TEST(JobAccept, CutsItsLastNumberToItsLow32BitsSigned) {
  const std::pair<int64_t, std::string> numbers[] = {
      {(int64_t{1} << 32) + 1, "1"}, {-1, "-1"}, {int64_t{1} << 31, "-2147483648"}, {0xFFFFFFFF, "-1"}};
  for (const auto &[held, written] : numbers) {
    eventRecord record = bareRecord(EVENT_JOB_ACCEPT);
    record.eventLog.jobAcceptLog.jobAcceptLong = held;
    EXPECT_EQ(fieldsOf(record), R"( 0 0 "" 0 0 "" )" + written + '\n');
  }
}

TEST(JobAccept, ReadsItsLastNumberAsAnUnsignedOne) {
  const auto readAs = [](const char *text) {
    const OwnedRecord record = parse(line("JOB_ACCEPT", "10.1", kAccept.with("jobAcceptLong", text)));
    return static_cast<uint64_t>(record->eventLog.jobAcceptLog.jobAcceptLong);
  };
  EXPECT_EQ(readAs("1"), 1U);
  EXPECT_EQ(readAs("-1"), UINT64_MAX);
  EXPECT_EQ(readAs("-2147483648"), UINT64_MAX - 2147483647);
  EXPECT_EQ(readAs("18446744073709551615"), UINT64_MAX);
  EXPECT_EQ(readAs("9223372036854775808"), uint64_t{1} << 63);
  EXPECT_EQ(readAs("4294967297"), 4294967297U) << "all 64 bits are read, though only 32 are written";
}

TEST(JobAccept, HasItsSecondJobNumberWhole) {
  const OwnedRecord record = parse(line("JOB_ACCEPT", "10.1", kAccept));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobAcceptLog.acceptJobId, 9000000000001);
  EXPECT_EQ(fieldsOf(*record), ' ' + kAccept.text() + '\n');
}

TEST(JobAccept, HasItsLateFieldsFromTheirVersionsOn) {
  EXPECT_EQ(parsed(line("JOB_ACCEPT", "3.0", kAccept))->eventLog.jobAcceptLog.jobAcceptInt1, 0);
  EXPECT_EQ(parsed(line("JOB_ACCEPT", "4.9", kAccept))->eventLog.jobAcceptLog.jobAcceptInt2, 0);
  EXPECT_EQ(parsed(line("JOB_ACCEPT", "9.0", kAccept))->eventLog.jobAcceptLog.jobAcceptLong, 0);
  EXPECT_EQ(parsed(line("JOB_ACCEPT", "9.1", kAccept))->eventLog.jobAcceptLog.jobAcceptLong, 5);
  EXPECT_EQ(faultOf(line("JOB_ACCEPT", "9.1", kAccept.upTo("jobAcceptStr2"))),
            (Fault{WMQE_BAD_FORMAT, "jobAcceptLong"}));
}

// ----------------------------------------------------------------------------- JOB_ACCEPTACK

TEST(JobAcceptAck, MustHaveAllItsFieldsInEveryVersion) {
  const std::vector<std::string> names = kAcceptAck.names();
  for (const char *version : {"2.1", "9.0", "10.1", "11.0"}) {
    for (size_t last = 0; last + 1 < names.size(); ++last)
      EXPECT_EQ(faultOf(line("JOB_ACCEPTACK", version, kAcceptAck.upTo(names[last]))),
                (Fault{WMQE_BAD_FORMAT, names[last + 1]}))
          << version;
    const OwnedRecord record = parse(line("JOB_ACCEPTACK", version, kAcceptAck));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_EQ(fieldsOf(*record), ' ' + kAcceptAck.text() + '\n');
  }
}

// ------------------------------------------------------------------------------ JOB_STAT_ACK

TEST(JobStatAck, Of3_0HoldsTwoNumbersAndNothingElse) {
  const OwnedRecord record = parse(line("JOB_STAT_ACK", "3.0", kStatusAck.upTo("numbers")));
  ASSERT_NE(record, nullptr);
  const statusAckLog &log = record->eventLog.statusAckLog;
  EXPECT_EQ(log.statusAckInt2, 0);
  EXPECT_STREQ(log.srcCluster, "");
  EXPECT_EQ(log.srcJobId, 0);
  EXPECT_STREQ(log.dstCluster, "");
  EXPECT_EQ(log.dstJobId, 0);
}

TEST(JobStatAck, IsWrittenAsItWasRead) {
  const OwnedRecord record = parse(line("JOB_STAT_ACK", "10.1", kStatusAck));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(fieldsOf(*record), ' ' + kStatusAck.text() + '\n');
  EXPECT_EQ(parsed(line("JOB_STAT_ACK", "3.01", kStatusAck))->eventLog.statusAckLog.statusAckInt2, 3);
}

// -------------------------------------------------------------------------- writers' failures

TEST(ClusterForwarding, FailsToReachAFullFile) {
  const auto result = [](auto write, auto log) {
    return resultOnAFullDevice([&](FILE *full) { return write(full, &log); });
  };
  EXPECT_EQ(result(writeJobForward, jobForwardLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobAccept, jobAcceptLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobAcceptAck, jobAcceptAckLog{}), WMQE_SYS);
}

}  // namespace
}  // namespace wmq::testing
