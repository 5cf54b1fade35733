// JOB_PROVISION_START, JOB_PROVISION_END, HOST_POWER_STATUS and JOB_PROV_HOST.
#include "wmq/records/provisioning.h"

#include <gmock/gmock.h>

#include <cstring>

#include "companion/written_text.h"
#include "support/parsed.h"
#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using wmq::test::resultOnAFullDevice;

// A start as it stands inside of another record.
constexpr char kStart[] = R"(31 32 33 34 1.5 2 "hA" "hB" "j1" "j2" 35 "j3" 36 "j4" 37 "j5" )"
                          R"("src" 38 "dst" 39 0 "" 40 41 0 42 43 44)";

// ------------------------------------------------------------------------ JOB_PROVISION_START

std::string provisionStart(const std::string &version, const std::string &fields) {
  return line("JOB_PROVISION_START", version, fields);
}

TEST(JobProvisionStart, HasItsSecondStringWhenItsFlagSaysSoAndNoStartStandsBefore) {
  const OwnedRecord record = parsed(provisionStart("9.1", R"(1 2 "s1" 128 0 "s2")"));
  EXPECT_STREQ(record->eventLog.jobProvisionStartLog.provStr2, "s2");
  EXPECT_EQ(fieldsOf(*record), " 1 2 \"s1\" 128 0 \"s2\"\n");
}

TEST(JobProvisionStart, HasNoSecondStringBefore9_1OrWithoutTheFlag) {
  EXPECT_STREQ(
      parsed(provisionStart("9.0", R"(1 2 "s1" 128 0 "s2")"))->eventLog.jobProvisionStartLog.provStr2, "");
  for (const char *flags : {"0", "127", "256", "-256"})
    EXPECT_STREQ(parsed(provisionStart("10.1", std::string(R"(1 2 "s1" )") + flags + R"( 0 "s2")"))
                     ->eventLog.jobProvisionStartLog.provStr2,
                 "")
        << flags;
  EXPECT_EQ(faultOf(provisionStart("10.1", R"(1 2 "s1" 128 0)")), (Fault{WMQE_BAD_FORMAT, "provStr2"}));
}

TEST(JobProvisionStart, TakesTheFirstStringOfItsStartForItsSecondString) {
  const OwnedRecord record =
      parsed(provisionStart("10.1", std::string(R"(1 2 "s1" 128 1 )") + kStart + " \"s2\""));
  EXPECT_STREQ(record->eventLog.jobProvisionStartLog.provStr2, "hA");
  EXPECT_THAT(listed(record->eventLog.jobProvisionStartLog.jobStart.numExHosts,
                     record->eventLog.jobProvisionStartLog.jobStart.execHosts),
              ElementsAre("hA", "hB"));
  EXPECT_EQ(fieldsOf(*record), std::string(R"( 1 2 "s1" 128 1 )") + kStart + " \"hA\"\n");
}

TEST(JobProvisionStart, HasAStartForAnyHasJobStartThatIsNot0) {
  for (const char *given : {"1", "-1", "7"}) {
    const OwnedRecord record =
        parsed(provisionStart("10.1", std::string(R"(1 2 "s1" 0 )") + given + ' ' + kStart));
    EXPECT_EQ(record->eventLog.jobProvisionStartLog.jobStart.jobId, 31) << given;
    EXPECT_EQ(fieldsOf(*record), std::string(R"( 1 2 "s1" 0 )") + given + ' ' + kStart + '\n');
  }
}

TEST(JobProvisionStart, EndsWithTheFailureOfItsStart) {
  EXPECT_EQ(faultOf(provisionStart("10.1", R"(1 2 "s1" 0 1 31 32 33 34 1.5 0)")),
            (Fault{WMQE_BAD_FORMAT, "numExHosts"}));
  eventRecord record = bareRecord(EVENT_JOB_PROVISION_START);
  record.eventLog.jobProvisionStartLog.hasJobStart = 1;
  record.eventLog.jobProvisionStartLog.jobStart.numExHosts = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "execHosts"}));
}

TEST(JobProvisionStart, HasNothingToReleaseTheSecondTime) {
  const OwnedRecord record = parsed(provisionStart("10.1", std::string(R"(1 2 "s1" 128 1 )") + kStart));
  jobProvisionStartLog &log = record->eventLog.jobProvisionStartLog;
  log.hasJobStart = 0;
  log.provFlags = 0;
  free_jobProvisionStartLog(&log);
  EXPECT_EQ(log.provStr1, nullptr);
  EXPECT_EQ(log.provStr2, nullptr);
  EXPECT_EQ(log.jobStart.execHosts, nullptr) << "whatever hasJobStart says by then";
  EXPECT_EQ(log.jobStart.startStr1, nullptr);
  free_jobProvisionStartLog(&log);
  free_jobProvisionStartLog(nullptr);
}

// -------------------------------------------------------------------------- JOB_PROVISION_END

const Fields kEnd = {{"numbers", "1 2"}, {"provStr1", "\"s1\""},           {"provFlags", "0"},
                     {"provInt2", "3"},  {"provHosts", "2 \"2*h\" \"i\""}, {"provHosts2", "1 \"3*k\""}};

TEST(JobProvisionEnd, EndsBehindItsSecondHostsWithoutTheFlag) {
  const OwnedRecord record = parsed(line("JOB_PROVISION_END", "10.1", kEnd.text() + " \"more\""));
  const jobProvisionEndLog &log = record->eventLog.jobProvisionEndLog;
  EXPECT_STREQ(log.provStr2, "");
  EXPECT_THAT(listed(log.numProvHosts, log.provHosts), ElementsAre("h", "h", "i"));
  EXPECT_THAT(listed(log.numProvHosts2, log.provHosts2), ElementsAre("k", "k", "k"));
  EXPECT_EQ(fieldsOf(*record), ' ' + kEnd.text() + '\n');
}

TEST(JobProvisionEnd, HasItsSecondStringWithTheFlagInEveryVersion) {
  for (const char *version : {"2.1", "9.0", "10.1"}) {
    const std::string fields = kEnd.with("provFlags", "128").text();
    EXPECT_STREQ(
        parsed(line("JOB_PROVISION_END", version, fields + " \"s2\""))->eventLog.jobProvisionEndLog.provStr2,
        "s2");
    EXPECT_EQ(faultOf(line("JOB_PROVISION_END", version, fields)), (Fault{WMQE_BAD_FORMAT, "provStr2"}))
        << version;
  }
}

TEST(JobProvisionEnd, HasNoArraysForCountsBelow1) {
  const OwnedRecord record =
      parsed(line("JOB_PROVISION_END", "10.1", kEnd.with("provHosts", "0").with("provHosts2", "-1")));
  EXPECT_EQ(record->eventLog.jobProvisionEndLog.provHosts, nullptr);
  EXPECT_EQ(record->eventLog.jobProvisionEndLog.provHosts2, nullptr);
}

TEST(JobProvisionEnd, CutsTheCountToTheHostsThatWereRead) {
  wmq_setlineversion(10.1F);
  const OwnedRecord record = emptyRecord(EVENT_JOB_PROVISION_END);
  jobProvisionEndLog &log = record->eventLog.jobProvisionEndLog;
  EXPECT_EQ(readJobProvisionEnd("1 2 \"s1\" 0 3 3 \"h\" \"i\" none", &log), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numProvHosts, log.provHosts), ElementsAre("h", "i"));
}

TEST(JobProvisionEnd, MustHaveTheCountOfHostsAmongItsNumbers) {
  EXPECT_EQ(faultOf(line("JOB_PROVISION_END", "10.1", kEnd.upTo("provInt2"))),
            (Fault{WMQE_BAD_FORMAT, "numProvHosts"}));
  EXPECT_EQ(faultOf(line("JOB_PROVISION_END", "10.1", kEnd.upTo("provHosts"))),
            (Fault{WMQE_BAD_FORMAT, "numProvHosts2"}));
}

TEST(JobProvisionEnd, HasNothingToReleaseTheSecondTime) {
  const OwnedRecord record = parsed(line("JOB_PROVISION_END", "10.1", kEnd));
  jobProvisionEndLog &log = record->eventLog.jobProvisionEndLog;
  free_jobProvisionEndLog(&log);
  EXPECT_EQ(log.provHosts, nullptr);
  EXPECT_EQ(log.numProvHosts, 0);
  EXPECT_EQ(log.provHosts2, nullptr);
  EXPECT_EQ(log.numProvHosts2, 0);
  EXPECT_EQ(log.provStr1, nullptr);
  free_jobProvisionEndLog(&log);
  free_jobProvisionEndLog(nullptr);
}

// -------------------------------------------------------------------------- HOST_POWER_STATUS

TEST(HostPowerStatus, ReadsCompressedHostsBackCompressed) {
  Names hosts{"h", "h", "h", "i"};
  eventRecord record = bareRecord(EVENT_HOST_POWER_STATUS);
  hostPowerStatusLog &log = record.eventLog.hostPowerStatusLog;
  log.numPowerHosts = hosts.count();
  log.powerHosts = hosts;
  EXPECT_EQ(fieldsOf(record), R"( 0 0 0 "" "" 0 2 "3*h" "i")"
                              "\n");
  const OwnedRecord back = readBack(record);
  ASSERT_NE(back, nullptr);
  EXPECT_THAT(
      listed(back->eventLog.hostPowerStatusLog.numPowerHosts, back->eventLog.hostPowerStatusLog.powerHosts),
      ElementsAre("3*h", "i"));
  EXPECT_EQ(fieldsOf(*back), R"( 0 0 0 "" "" 0 2 "1*3*h" "i")"
                             "\n")
      << "protected when written again";
}

TEST(HostPowerStatus, HasItsLastStringSecondOnTheLine) {
  static_assert(offsetof(hostPowerStatusLog, powerStr2) > offsetof(hostPowerStatusLog, powerHosts));
  const OwnedRecord record = parsed(line("HOST_POWER_STATUS", "10.1", R"(1 2 3 "s1" "s2" 4 0)"));
  EXPECT_STREQ(record->eventLog.hostPowerStatusLog.powerStr1, "s1");
  EXPECT_STREQ(record->eventLog.hostPowerStatusLog.powerStr2, "s2");
  EXPECT_EQ(record->eventLog.hostPowerStatusLog.powerInt4, 4);
}

TEST(HostPowerStatus, HasAnArrayEvenForNoHosts) {
  const OwnedRecord record = parsed(line("HOST_POWER_STATUS", "10.1", R"(1 2 3 "s1" "s2" 4 0)"));
  EXPECT_EQ(record->eventLog.hostPowerStatusLog.numPowerHosts, 0);
  EXPECT_NE(record->eventLog.hostPowerStatusLog.powerHosts, nullptr);
}

TEST(HostPowerStatus, HasNothingToReleaseTheSecondTime) {
  const OwnedRecord record = parsed(line("HOST_POWER_STATUS", "10.1", R"(1 2 3 "s1" "s2" 4 1 "h")"));
  hostPowerStatusLog &log = record->eventLog.hostPowerStatusLog;
  free_hostPowerStatusLog(&log);
  EXPECT_EQ(log.powerStr1, nullptr);
  EXPECT_EQ(log.powerStr2, nullptr);
  EXPECT_EQ(log.powerHosts, nullptr);
  EXPECT_EQ(log.numPowerHosts, 0);
  free_hostPowerStatusLog(&log);
  free_hostPowerStatusLog(nullptr);
}

// ------------------------------------------------------------------------------ JOB_PROV_HOST

class JobProvHost : public ::testing::Test {
 protected:
  int read(const std::string &fields) {
    wmq_setlineversion(10.1F);
    const int result = readJobProvHostLog(fields.c_str(), &back);
    fault = lastFault(result);
    return result;
  }

  eventRecord record = bareRecord(EVENT_JOB_PROV_HOST);  // for writing: nothing of it is released
  jobProvHostLog &log = record.eventLog.jobProvHostLog;
  OwnedRecord readRecord = emptyRecord(EVENT_JOB_PROV_HOST);
  jobProvHostLog &back = readRecord->eventLog.jobProvHostLog;
  Fault fault{};
};

TEST_F(JobProvHost, WithoutHostsHasNoCountAndCannotBeReadBack) {
  EXPECT_EQ(fieldsOf(record), " 0 0 0 0\n");
  EXPECT_EQ(read("0 0 0 0"), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "hasJobStart");
  EXPECT_EQ(back.numProvHosts, 0) << "taken from what was written for hasJobStart";
}

TEST_F(JobProvHost, WithoutHostsHasItsHasJobStartTakenForTheCount) {
  log.hasJobStart = 2;
  EXPECT_EQ(fieldsOf(record), " 0 0 0 2\n");
  EXPECT_EQ(read("0 0 0 2"), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "provHosts");
}

TEST_F(JobProvHost, WritesAValueForEachUncompressedHostAndReadsOneForEachName) {
  Names hosts{"h", "h", "i"};
  int32_t values[] = {7, 8, 0};
  log.numProvHosts = hosts.count();
  log.provHosts = hosts;
  log.provHostValues = values;
  log.hasJobStart = 5;
  EXPECT_EQ(fieldsOf(record), R"( 0 0 0 2 "2*h" "i" 7 8 0 5)"
                              "\n");
  EXPECT_EQ(read(R"(0 0 0 2 "2*h" "i" 7 8 0 5)"), 0);
  EXPECT_THAT(listed(back.numProvHosts, back.provHosts), ElementsAre("2*h", "i"));
  EXPECT_THAT(std::vector<int32_t>(back.provHostValues, back.provHostValues + 2), ElementsAre(7, 8));
  EXPECT_EQ(back.hasJobStart, 0) << "the third value";
}

TEST_F(JobProvHost, WritesAStartForA1OnlyAndReadsOneForAnyNumberButZero) {
  Names hosts{"h"};
  int32_t values[] = {7};
  log.numProvHosts = 1;
  log.provHosts = hosts;
  log.provHostValues = values;
  log.jobStart.jobId = 31;
  for (const int32_t given : {0, 2, -1}) {
    log.hasJobStart = given;
    EXPECT_EQ(fieldsOf(record), R"( 0 0 0 1 "h" 7 )" + std::to_string(given) + '\n');
  }
  log.hasJobStart = 1;
  EXPECT_THAT(fieldsOf(record), HasSubstr(R"( 0 0 0 1 "h" 7 1 31 )"));

  for (const char *given : {"1", "2", "-1"}) {
    const OwnedRecord start =
        parsed(line("JOB_PROV_HOST", "10.1", R"(0 0 0 1 "h" 7 )" + std::string(given) + ' ' + kStart));
    EXPECT_EQ(start->eventLog.jobProvHostLog.jobStart.jobId, 31) << given;
    EXPECT_EQ(faultOf(line("JOB_PROV_HOST", "10.1", R"(0 0 0 1 "h" 7 )" + std::string(given))).error,
              WMQE_BAD_FORMAT);
  }
}

TEST_F(JobProvHost, TakesNoNoticeOfAStartThatCannotBeWritten) {
  Names hosts{"h"};
  int32_t values[] = {7};
  log.numProvHosts = 1;
  log.provHosts = hosts;
  log.provHostValues = values;
  log.hasJobStart = 1;
  log.jobStart.jobId = 31;
  log.jobStart.numExHosts = 1;
  EXPECT_EQ(faultOf(record), Fault{});
  EXPECT_EQ(fieldsOf(record), R"( 0 0 0 1 "h" 7 1 31 0 0 0 0.0)"
                              "\n")
      << "what could be written of it stands";
}

TEST_F(JobProvHost, FailsForWhatStandsBeforeAStart) {
  log.numProvHosts = 1;
  log.hasJobStart = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "provHosts"}));
  Names hosts{"h"};
  log.provHosts = hosts;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "provHostValues"}));
}

TEST_F(JobProvHost, EndsWithTheFailureOfItsStart) {
  EXPECT_EQ(read(R"(0 0 0 1 "h" 7 1 31 32 33 34 1.5 0)"), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "numExHosts");
}

TEST_F(JobProvHost, MustHaveAValueForEachName) {
  EXPECT_EQ(read(R"(0 0 0 2 "h" "i" 7 x)"), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "provHostValues");
}

TEST_F(JobProvHost, HasNothingToReleaseTheSecondTime) {
  EXPECT_EQ(read(std::string(R"(1 2 3 2 "h" "i" 7 8 1 )") + kStart), 0);
  back.hasJobStart = 0;
  free_jobProvHostLog(&back);
  EXPECT_EQ(back.provHosts, nullptr);
  EXPECT_EQ(back.provHostValues, nullptr);
  EXPECT_EQ(back.numProvHosts, 0);
  EXPECT_EQ(back.jobStart.execHosts, nullptr);
  free_jobProvHostLog(&back);
  free_jobProvHostLog(nullptr);
}

// -------------------------------------------------------------------------- writers' failures

TEST(Provisioning, FailsToReachAFullFile) {
  const auto result = [](auto write, auto log) {
    return resultOnAFullDevice([&](FILE *full) { return write(full, &log); });
  };
  EXPECT_EQ(result(writeJobProvisionStart, jobProvisionStartLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobProvisionEnd, jobProvisionEndLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeHostPowerStatusLog, hostPowerStatusLog{}), WMQE_SYS);
}

TEST(Provisioning, CannotBeWrittenWithoutItsHosts) {
  eventRecord end = bareRecord(EVENT_JOB_PROVISION_END);
  end.eventLog.jobProvisionEndLog.numProvHosts2 = 1;
  EXPECT_EQ(faultOf(end), (Fault{WMQE_SYS, "provHosts2"}));
  eventRecord power = bareRecord(EVENT_HOST_POWER_STATUS);
  power.eventLog.hostPowerStatusLog.numPowerHosts = 1;
  EXPECT_EQ(faultOf(power), (Fault{WMQE_SYS, "powerHosts"}));
}

}  // namespace
}  // namespace wmq::testing
