// JOB_RUN_RUSAGE, JOB_RESIZE, EVENT_ADRSV_FINISH, CPUPROFILE_STATUS, SLA_RECOMPUTE and METRIC_LOG.
#include "wmq/records/accounting.h"

#include <gmock/gmock.h>
#include <syslog.h>

#include <cstring>

#include "companion/written_text.h"
#include "support/parsed.h"
#include "support/record_lines.h"
#include "support/user_directory.h"

namespace wmq::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using wmq::test::resultOnAFullDevice;
using wmq::test::writtenBy;

// A structure and what a reader leaves in it, whatever it returns.
template <typename Log, Log eventLog::*Member, int32_t Type, int Read(const char *, Log *)>
class Reading : public ::testing::Test {
 protected:
  int read(const std::string &fields, float version = 10.1F) {
    if (wasRead) freeLogRec(record.get());
    wasRead = true;
    wmq_setlineversion(version);
    const int result = Read(fields.c_str(), &log);
    fault = lastFault(result);
    return result;
  }

  UserDirectory system{};  // for its ear on the log
  OwnedRecord record = emptyRecord(Type);
  Log &log = record->eventLog.*Member;
  Fault fault{};
  bool wasRead = false;
};

// ---------------------------------------------------------------------------- JOB_RUN_RUSAGE

using JobRunRusage =
    Reading<jobRunRusageLog, &eventLog::jobRunRusageLog, EVENT_JOB_RUN_RUSAGE, readJobRunRusage>;

constexpr char kRunRusage[] = "1 2 3 4 9000000000005 -6 2 11 12 13 14 21 22 23 24 3 31 32 33 7";

TEST_F(JobRunRusage, IsWrittenAsItWasRead) {
  EXPECT_EQ(read(kRunRusage), 0);
  EXPECT_EQ(log.runRusageLong1, 9000000000005);
  ASSERT_EQ(log.numRusageEntries, 2);
  EXPECT_EQ(log.rusageEntries[1].entryInt4, 24);
  EXPECT_THAT(std::vector<int32_t>(log.rusageValues, log.rusageValues + log.numRusageValues),
              ElementsAre(31, 32, 33));
  EXPECT_EQ(log.runRusageInt5, 7);
  EXPECT_EQ(fieldsOf(*record), ' ' + std::string(kRunRusage) + '\n');
}

TEST_F(JobRunRusage, EndsAtACountOf0EntriesWithSuccess) {
  log.numRusageValues = 77;
  log.runRusageInt5 = 78;
  EXPECT_EQ(read("1 2 3 4 5 6 0 3 31 32 33 7"), 0);
  EXPECT_EQ(log.rusageEntries, nullptr);
  EXPECT_EQ(log.numRusageValues, 77) << "unread";
  EXPECT_EQ(log.rusageValues, nullptr);
  EXPECT_EQ(log.runRusageInt5, 78) << "unread";
  EXPECT_EQ(read("1 2 3 4 5 6 0 rubbish"), 0);
}

TEST_F(JobRunRusage, EndsAtACountOf0ValuesWithSuccess) {
  log.runRusageInt5 = 78;
  EXPECT_EQ(read("1 2 3 4 5 6 1 11 12 13 14 0 7"), 0);
  EXPECT_EQ(log.numRusageEntries, 1);
  EXPECT_EQ(log.rusageValues, nullptr);
  EXPECT_EQ(log.runRusageInt5, 78) << "unread";
}

TEST(JobRunRusageWriting, WritesValuesThatNobodyReadsBack) {
  int32_t values[] = {31, 32, 33};
  eventRecord record = bareRecord(EVENT_JOB_RUN_RUSAGE);
  record.eventLog.jobRunRusageLog.numRusageValues = 3;
  record.eventLog.jobRunRusageLog.rusageValues = values;
  record.eventLog.jobRunRusageLog.runRusageInt5 = 7;
  EXPECT_EQ(fieldsOf(record), " 0 0 0 0 0 0 0 3 31 32 33 7\n");
  const OwnedRecord back = readBack(record);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->eventLog.jobRunRusageLog.numRusageValues, 0);
  EXPECT_EQ(back->eventLog.jobRunRusageLog.runRusageInt5, 0);
}

TEST_F(JobRunRusage, SkipsNothingBetweenItsNumbers) {
  EXPECT_EQ(read("1 2+3+4+5+6+1+11+12+13+14+1+31+7"), 0) << "a sign begins the next number";
  EXPECT_EQ(log.runRusageInt3, 3);
  EXPECT_EQ(log.rusageEntries[0].entryInt4, 14);
  EXPECT_EQ(log.runRusageInt5, 7);
}

TEST_F(JobRunRusage, MustHaveAllNumbersThatItsCountsAnnounce) {
  for (const char *fields : {"1", "1 2 3 4 5 6", "1 2 3 4 5 6 1 11 12 13", "1 2 3 4 5 6 1 11 12 13 14",
                             "1 2 3 4 5 6 1 11 12 13 14 2 31", "1 2 3 4 5 6 1 11 12 13 14 1 31"})
    EXPECT_EQ(faultOf(line("JOB_RUN_RUSAGE", "10.1", fields)).error, WMQE_BAD_FORMAT) << fields;
}

TEST_F(JobRunRusage, HasRoomForAsManyEntriesAsFitOnTheLine) {
  std::string fields = "1 2 3 4 5 6 1000";
  for (int i = 0; i < 1000; ++i) fields += " 1 2 3 4";
  EXPECT_EQ(read(fields + " 0"), 0);
  EXPECT_EQ(log.numRusageEntries, 1000);
}

TEST_F(JobRunRusage, HasNoEntriesWhenTheirCountIsNegative) {
  EXPECT_EQ(read("1 2 3 4 5 6 -1 0"), WMQE_NO_MEM);
  EXPECT_EQ(log.numRusageEntries, 0);
}

// -------------------------------------------------------------------------------- JOB_RESIZE

using JobResize = Reading<jobResizeLog, &eventLog::jobResizeLog, EVENT_JOB_RESIZE, readJobResize>;

const Fields kResize = {{"numbers", "12 3 4 5"},     {"resizeName", "\"name\""},
                        {"moreNumbers", "6 7 8"},    {"execHosts", "2 \"2*h\" \"i\""},
                        {"resizeHosts", "1 \"j\""},  {"allocSlots", "1 \"3*k\""},
                        {"resizeSlots", "1 \"2*l\""}};

// The one message of a line of job 12, index 3, with those fields changed.
void expectMessage(const UserDirectory &system, const std::string &text) {
  EXPECT_THAT(system.messages, ElementsAre(UserDirectory::Message{LOG_ERR, text}));
}

TEST_F(JobResize, ExpandsAllItsLists) {
  EXPECT_EQ(read(kResize), 0);
  EXPECT_THAT(listed(log.numExHosts, log.execHosts), ElementsAre("h", "h", "i"));
  EXPECT_THAT(listed(log.numResizeHosts, log.resizeHosts), ElementsAre("j"));
  EXPECT_THAT(listed(log.numAllocSlots, log.allocSlots), ElementsAre("k", "k", "k"));
  EXPECT_THAT(listed(log.numResizeSlots, log.resizeSlots), ElementsAre("l", "l"));
  EXPECT_THAT(system.messages, IsEmpty());
  EXPECT_EQ(fieldsOf(*record), ' ' + kResize.text() + '\n');
}

TEST_F(JobResize, LogsThatItHasNoExecutionHosts) {
  EXPECT_EQ(read(kResize.with("execHosts", "0")), WMQE_BAD_FORMAT);
  expectMessage(system, "readJobResize: The number of execution hosts is zero for job <12>");
}

TEST_F(JobResize, LogsThatItHasNoResizeHosts) {
  EXPECT_EQ(read(kResize.with("resizeHosts", "0")), WMQE_BAD_FORMAT);
  expectMessage(system, "readJobResize: The numResizeHosts for JOB_RESIZE is zero for job <12>");
}

TEST_F(JobResize, LogsNothingForCountsOfHostsThatDoNotConvert) {
  EXPECT_EQ(read(kResize.with("execHosts", "no")), WMQE_BAD_FORMAT);
  EXPECT_EQ(read(kResize.with("resizeHosts", "no")), WMQE_BAD_FORMAT);
  EXPECT_THAT(system.messages, IsEmpty());
}

TEST_F(JobResize, LogsACountOfSlotsThatDoesNotConvertWithTheIndexOfTheJob) {
  EXPECT_EQ(read(kResize.with("allocSlots", "no")), WMQE_BAD_FORMAT);
  expectMessage(system, "readJobResize: OFFSET numAllocSlots <12[3]>");
}

TEST_F(JobResize, LogsThatItHasNoSlots) {
  EXPECT_EQ(read(kResize.with("allocSlots", "0").with("numbers", "12 0 4 5")), WMQE_BAD_FORMAT);
  expectMessage(system, "readJobResize: The number of slot execution hosts is zero for job <12>");
}

TEST_F(JobResize, CallsACountOfResizedSlotsThatDoesNotConvertZeroBehindSixteenBlanks) {
  EXPECT_EQ(read(kResize.with("resizeSlots", "no")), WMQE_BAD_FORMAT);
  expectMessage(system, std::string(16, ' ') +
                            "readJobResize: The number of resized slot hosts is zero for job <12[3]>");
}

TEST_F(JobResize, AcceptsThatItHasNoResizedSlots) {
  EXPECT_EQ(read(kResize.with("resizeSlots", "0")), 0);
  EXPECT_EQ(log.numResizeSlots, 0);
  EXPECT_EQ(log.resizeSlots, nullptr);
  EXPECT_THAT(system.messages, IsEmpty());
}

TEST_F(JobResize, NamesAJobWithItsIndexInTheHighHalf) {
  EXPECT_EQ(read(kResize.with("allocSlots", "0").with("numbers", "-1 1 4 5")), WMQE_BAD_FORMAT);
  expectMessage(system, std::string("readJobResize: The number of slot execution hosts is zero for job <") +
                            wmq_jobid2str(0x1FFFFFFFF) + ">");
}

TEST_F(JobResize, Before9_13EndsBehindItsResizeHosts) {
  EXPECT_EQ(read(kResize.upTo("resizeHosts"), 9.12F), 0);
  EXPECT_EQ(log.numAllocSlots, 0);
  EXPECT_EQ(log.allocSlots, nullptr);
  EXPECT_EQ(log.numResizeSlots, 0);
  EXPECT_EQ(log.resizeSlots, nullptr);
  EXPECT_EQ(read(kResize.upTo("resizeHosts"), 9.13F), WMQE_BAD_FORMAT);
}

TEST_F(JobResize, CutsTheCountToTheNamesThatWereRead) {
  EXPECT_EQ(read(kResize.upTo("execHosts").text() + " 3 \"j\" \"k\" none"), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numResizeHosts, log.resizeHosts), ElementsAre("j", "k"));
}

TEST_F(JobResize, TakesANameOf1To59Characters) {
  const std::string longest(59, 'n');
  EXPECT_EQ(read(kResize.with("resizeName", '"' + longest + '"')), 0);
  EXPECT_EQ(log.resizeName, longest);
  for (const std::string &name : {longest + 'n', std::string()})
    EXPECT_EQ(faultOf(line("JOB_RESIZE", "10.1", kResize.with("resizeName", '"' + name + '"'))),
              (Fault{WMQE_BAD_FORMAT, "resizeName"}));
}

TEST_F(JobResize, CutsItsWideNumbersTo32Bits) {
  std::strcpy(log.resizeName, "name");
  log.resizeLong1 = (int64_t{1} << 32) + 5;
  log.resizeLong2 = int64_t{1} << 31;
  EXPECT_THAT(fieldsOf(*record), ::testing::StartsWith(" 0 0 5 0 \"name\" 0 -2147483648 0 0 "));
  EXPECT_EQ(read(kResize.with("numbers", "12 3 4294967301 5").with("moreNumbers", "6 2147483648 8")), 0);
  EXPECT_EQ(log.resizeLong1, 5);
  EXPECT_EQ(log.resizeLong2, -2147483648LL);
}

TEST_F(JobResize, HasNothingToReleaseTheSecondTime) {
  EXPECT_EQ(read(kResize), 0);
  free_jobResizeLog(&log);
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(log.resizeHosts, nullptr);
  EXPECT_EQ(log.allocSlots, nullptr);
  EXPECT_EQ(log.resizeSlots, nullptr);
  for (const int32_t count : {log.numExHosts, log.numResizeHosts, log.numAllocSlots, log.numResizeSlots})
    EXPECT_EQ(count, 0);
  free_jobResizeLog(&log);
  free_jobResizeLog(nullptr);
}

TEST_F(JobResize, CannotBeWrittenWithoutItsLists) {
  log.numAllocSlots = 1;
  EXPECT_EQ(faultOf(*record), (Fault{WMQE_SYS, "allocSlots"}));
  log.numAllocSlots = 0;
}

// ------------------------------------------------------------------------ EVENT_ADRSV_FINISH

using ReservationFinish = Reading<rsvFinishLog, &eventLog::rsvFinishLog, EVENT_ADRSV_FINISH, readRsvFinish>;

const Fields kReservation = {{"numbers", "1 2 3"},
                             {"rsvStr1", "\"s1\""},
                             {"rsvStr2", "\"s2\""},
                             {"rsvStr3", "\"s3\""},
                             {"rsvStr4", "\"s4\""},
                             {"rsvLong2", "4"},
                             {"entries", "2 \"e1\" 5 \"e2\" -6"},
                             {"rsvStr5", "\"s5\""},
                             {"rsvStr6", "\"s6\""}};

TEST_F(ReservationFinish, IsWrittenAsItWasRead) {
  EXPECT_EQ(read(kReservation), 0);
  ASSERT_EQ(log.numRsvEntries, 2);
  EXPECT_STREQ(log.rsvEntries[1].entryName, "e2");
  EXPECT_EQ(log.rsvEntries[1].entryValue, -6);
  EXPECT_STREQ(log.rsvStr6, "s6");
  EXPECT_EQ(fieldsOf(*record), ' ' + kReservation.text() + '\n');
}

TEST_F(ReservationFinish, Before9_13TakesItsSecondStringForItsLast) {
  EXPECT_EQ(read(kReservation.upTo("entries"), 9.1F), 0);
  EXPECT_STREQ(log.rsvStr5, "");
  EXPECT_STREQ(log.rsvStr6, "s2");
  EXPECT_NE(log.rsvStr6, log.rsvStr2) << "a copy of its own";
}

TEST_F(ReservationFinish, FailsWithASystemErrorWithoutItsArguments) {
  EXPECT_EQ(readRsvFinish(nullptr, &log), WMQE_SYS);
  EXPECT_EQ(readRsvFinish("1", nullptr), WMQE_SYS);
  EXPECT_EQ(writeRsvFinish(nullptr, &log), WMQE_SYS);
  EXPECT_EQ(writtenBy([](FILE *file) { EXPECT_EQ(writeRsvFinish(file, nullptr), WMQE_SYS); }), "");
}

TEST_F(ReservationFinish, CutsItsWideNumbersTo32Bits) {
  log.rsvLong1 = (int64_t{1} << 32) + 5;
  log.rsvLong2 = int64_t{1} << 31;
  EXPECT_EQ(fieldsOf(*record), " 5 0 0 \"\" \"\" \"\" \"\" -2147483648 0 \"\" \"\"\n");
  EXPECT_EQ(read(kReservation.with("numbers", "4294967301 2 3").with("rsvLong2", "2147483648")), 0);
  EXPECT_EQ(log.rsvLong1, 5);
  EXPECT_EQ(log.rsvLong2, -2147483648LL);
}

TEST_F(ReservationFinish, HasNoArrayForACountBelow1) {
  for (const char *count : {"0", "-2"}) {
    const OwnedRecord none = parsed(line("EVENT_ADRSV_FINISH", "10.1", kReservation.with("entries", count)));
    EXPECT_EQ(none->eventLog.rsvFinishLog.rsvEntries, nullptr) << count;
    EXPECT_STREQ(none->eventLog.rsvFinishLog.rsvStr6, "s6") << count;
  }
}

TEST_F(ReservationFinish, MustHaveTheValueOfEveryEntry) {
  EXPECT_EQ(read(kReservation.upTo("entries").with("entries", "2 \"e1\" 5 \"e2\"")), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "entryValue");
}

TEST_F(ReservationFinish, HasNothingToReleaseTheSecondTime) {
  EXPECT_EQ(read(kReservation), 0);
  freeRsvFinishLog(&log);
  EXPECT_EQ(log.rsvStr1, nullptr);
  EXPECT_EQ(log.rsvEntries, nullptr);
  EXPECT_EQ(log.numRsvEntries, 0);
  EXPECT_EQ(log.rsvStr6, nullptr);
  freeRsvFinishLog(&log);
  freeRsvFinishLog(nullptr);
}

// ------------------------------------------------------------------------- CPUPROFILE_STATUS

using CpuProfile = Reading<cpuProfileLog, &eventLog::cpuProfileLog, EVENT_CPUPROFILE_STATUS, readCpuProfile>;

TEST_F(CpuProfile, CarriesItsFourthNumberBeforeItsThird) {
  EXPECT_EQ(read("\"name\" 1 2 3 4"), 0);
  EXPECT_EQ(log.cpuInt1, 1);
  EXPECT_EQ(log.cpuInt2, 2);
  EXPECT_EQ(log.cpuInt4, 3);
  EXPECT_EQ(log.cpuInt3, 4);
  EXPECT_EQ(fieldsOf(*record), " \"name\" 1 2 3 4\n");
}

TEST_F(CpuProfile, TakesOneNumberForTheFirstTwo) {
  log.cpuInt3 = 77;
  log.cpuInt4 = 78;
  EXPECT_EQ(read("\"name\" 7"), 0);
  EXPECT_EQ(log.cpuInt1, 7);
  EXPECT_EQ(log.cpuInt2, 7);
  EXPECT_EQ(log.cpuInt3, 0);
  EXPECT_EQ(log.cpuInt4, 0);
  EXPECT_EQ(read("\"name\" 8 and words"), 0);
  EXPECT_EQ(log.cpuInt2, 8);
}

TEST_F(CpuProfile, RefusesTwoNumbersThreeAndNone) {
  for (const char *numbers : {"", "1 2", "1 2 3", "1 2 3 x", "x"})
    EXPECT_EQ(read("\"name\" " + std::string(numbers)), WMQE_BAD_FORMAT) << numbers;
}

TEST_F(CpuProfile, IsTheSameInEveryVersion) {
  for (const float version : {2.1F, 9.1F, 11.0F}) {
    EXPECT_EQ(read("\"name\" 1 2 3 4", version), 0);
    EXPECT_EQ(read("\"name\" 1", version), 0);
  }
}

TEST_F(CpuProfile, TakesANameOf1To59Characters) {
  EXPECT_EQ(read('"' + std::string(59, 'n') + "\" 1"), 0);
  EXPECT_EQ(read('"' + std::string(60, 'n') + "\" 1"), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("\"\" 1"), WMQE_BAD_FORMAT);
}

// ----------------------------------------------------------------------------- SLA_RECOMPUTE

using SlaRecompute = Reading<slaLog, &eventLog::slaLog, EVENT_SLA_RECOMPUTE, readSLALog>;

TEST_F(SlaRecompute, Above7_01Has14Values) {
  const std::string fields = "\"a\" \"b\" 1 2 3 11 12 13 14 15 16 17 18 19 20 21 22 23 24";
  EXPECT_EQ(read(fields, 7.02F), 0);
  EXPECT_EQ(log.slaValues[0], 11);
  EXPECT_EQ(log.slaValues[13], 24);
  EXPECT_EQ(fieldsOf(*record), ' ' + fields + " \n") << "each value with a blank behind it";
  EXPECT_EQ(read("\"a\" \"b\" 1 2 3 11 12 13 14 15 16 17 18 19 20 21 22 23", 7.02F), WMQE_BAD_FORMAT);
}

TEST_F(SlaRecompute, UpTo7_01Has8ValuesAndTheOthersAre0) {
  std::fill(std::begin(log.slaValues), std::end(log.slaValues), 77);
  EXPECT_EQ(read("\"a\" \"b\" 1 2 3 11 12 13 14 15 16 17 18 19 20 21 22 23 24", 7.01F), 0);
  EXPECT_EQ(log.slaValues[7], 18);
  EXPECT_THAT(std::vector<int32_t>(log.slaValues + 8, log.slaValues + 14), Each(0));
  EXPECT_EQ(read("\"a\" \"b\" 1 2 3 11 12 13 14 15 16 17", 7.01F), WMQE_BAD_FORMAT);
}

// -------------------------------------------------------------------------------- METRIC_LOG

using MetricLog =
    Reading<perfmonMetricsLog, &eventLog::perfmonMetricsLog, EVENT_METRIC_LOG, readPerfmonMetrics>;

std::string oneTo(int last) {
  std::string text;
  for (int i = 1; i <= last; ++i) text += (i > 1 ? " " : "") + std::to_string(i);
  return text;
}

TEST_F(MetricLog, ReadsFromItsFirstNumberAgainTwice) {
  EXPECT_EQ(read(oneTo(18)), 0);
  EXPECT_EQ(log.metricLong1, 1);
  EXPECT_EQ(log.metricInt1, 2);
  EXPECT_EQ(log.metricInt11, 12);
  EXPECT_EQ(log.metricLong2, 1);
  EXPECT_EQ(log.metricInt12, 2);
  EXPECT_EQ(log.metricInt13, 3);
  EXPECT_EQ(log.metricInt14, 4);
  EXPECT_EQ(log.metricInt15, 5);
  EXPECT_EQ(log.metricInt16, 1);
  EXPECT_EQ(fieldsOf(*record), " 1 2 3 4 5 6 7 8 9 10 11 12 1 2 3 4 5 1\n");
}

TEST_F(MetricLog, NeverReadsItsThirteenthNumber) {
  EXPECT_EQ(read(oneTo(12) + " rubbish"), 0);
  EXPECT_EQ(read(oneTo(11)), WMQE_BAD_FORMAT);
}

TEST_F(MetricLog, ReadsAgainFrom9_1OnAndOnceMoreFrom9_2On) {
  EXPECT_EQ(read(oneTo(18), 9.0F), 0);
  EXPECT_EQ(log.metricLong2, 0);
  EXPECT_EQ(log.metricInt15, 0);
  EXPECT_EQ(read(oneTo(18), 9.1F), 0);
  EXPECT_EQ(log.metricLong2, 1);
  EXPECT_EQ(log.metricInt16, 0);
  EXPECT_EQ(read(oneTo(18), 9.2F), 0);
  EXPECT_EQ(log.metricInt16, 1);
}

TEST_F(MetricLog, ReadsItsFirstNumberNarrowAndThenWide) {
  EXPECT_EQ(read("4294967301 2 3 4 5 6 7 8 9 10 11 12"), 0);
  EXPECT_EQ(log.metricLong1, 5);
  EXPECT_EQ(log.metricLong2, 4294967301);
  EXPECT_EQ(log.metricInt16, 5);
}

TEST_F(MetricLog, WritesItsFirstWideNumberCutAndItsSecondWhole) {
  log.metricLong1 = (int64_t{1} << 32) + 5;
  log.metricLong2 = (int64_t{1} << 32) + 5;
  EXPECT_EQ(fieldsOf(*record), " 5 0 0 0 0 0 0 0 0 0 0 0 4294967301 0 0 0 0 0\n");
}

// -------------------------------------------------------------------------- writers' failures

TEST(Accounting, FailsToReachAFullFile) {
  const auto result = [](auto write, auto log) {
    return resultOnAFullDevice([&](FILE *full) { return write(full, &log); });
  };
  EXPECT_EQ(result(writeJobRunRusage, jobRunRusageLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobResize, jobResizeLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeRsvFinish, rsvFinishLog{}), WMQE_SYS);
}

TEST(Accounting, CannotBeWrittenWithoutItsLists) {
  eventRecord usage = bareRecord(EVENT_JOB_RUN_RUSAGE);
  usage.eventLog.jobRunRusageLog.numRusageEntries = 1;
  EXPECT_EQ(faultOf(usage), (Fault{WMQE_SYS, "rusageEntries"}));
  eventRecord reservation = bareRecord(EVENT_ADRSV_FINISH);
  reservation.eventLog.rsvFinishLog.numRsvEntries = 1;
  EXPECT_EQ(faultOf(reservation), (Fault{WMQE_SYS, "rsvEntries"}));
}

}  // namespace
}  // namespace wmq::testing
