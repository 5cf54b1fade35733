// JOB_SIGNAL, JOB_MOVE, JOB_SWITCH, JOB_SWITCH2, JOB_SIGACT, JOB_REQUEUE, JOB_FORCE, CHKPNT and MIG.
#include "wmq/records/job_control.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

#include "companion/users.h"
#include "companion/written_text.h"
#include "support/parsed.h"
#include "support/record_lines.h"
#include "support/user_directory.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using wmq::test::resultOnAFullDevice;

const std::string kClusters = R"("src" 9000000000001 "dst" -9000000000002)";
const std::string kOldControls = R"(71 2 "a1" "a2" 1 5 1 6 7 "b1" "b2" 0 0)";
const std::string kNewControls = R"(1 "n1" "n2" 1 5 1 6 7 8 0)";

std::vector<int32_t> numbersOf(int32_t count, const int32_t *numbers) {
  if (numbers == nullptr) return {};
  return {numbers, numbers + count};
}

const Fields kSignal = {{"numbers", "1 7 3"},    {"signalStr", "\"text\""},
                        {"signalInt2", "4"},     {"userName", "\"anna\""},
                        {"clusters", kClusters}, {"indexRanges", "2 1 10 2 30 40 5"}};
const Fields kMove = {{"numbers", "7 2 3 4"},
                      {"moveInt3", "5"},
                      {"userName", "\"anna\""},
                      {"rmtJobCtrls", kOldControls},
                      {"indexRanges", "2 1 10 2 30 40 5"},
                      {"newRmtJobCtrls", kNewControls}};
const Fields kSwitch = {{"numbers", "7 2"},
                        {"queue", "\"night\""},
                        {"switchInt1", "3"},
                        {"userName", "\"anna\""},
                        {"clusters", kClusters},
                        {"rmtJobCtrls", kOldControls},
                        {"indexRanges", "2 1 10 2 30 40 5"}};
const Fields kSwitch2 = {{"numbers", "7 2"},       {"queue", "\"night\""},
                         {"userName", "\"anna\""}, {"indexRanges", "2 1 10 2 30 40 5"},
                         {"clusters", kClusters},  {"rmtJobCtrls", kOldControls}};
const Fields kSigAct = {{"numbers", "1 2 3 4 5 6 7"}, {"sigActStr", "\"text\""}, {"sigActInt7", "8"}};
const Fields kForce = {{"numbers", "1 7 3 4"},
                       {"execHosts", "2 \"2*h\" \"i\""},
                       {"userName", "\"anna\""},
                       {"forceStr", "\"text\""},
                       {"rmtJobCtrls", kOldControls}};
const Fields kChkpnt = {{"numbers", "1 2 3 4 5"}, {"chkpntInt5", "6"}, {"clusters", kClusters}};
const Fields kMig = {{"numbers", "1 2 \"h\" \"h\""}, {"userId", "7"},  {"migInt1", "4"},
                     {"userName", "\"anna\""},       {"migInt2", "5"}, {"migInt3", "6"},
                     {"clusters", kClusters}};

// What older lines lack, for types with a user name and an id among the numbers.
Fields without(Fields fields, std::initializer_list<const char *> names) {
  for (const char *name : names) fields = fields.without(name);
  return fields;
}

class JobControl : public ::testing::Test {
 protected:
  UserDirectory users{{{7, "anna"}}};
};

// Lines of 4.0, which have no user name, by a user whom nobody knows.
void expectLookup(UserDirectory &users, const std::string &type, const Fields &fields,
                  const std::string &reader) {
  SCOPED_TRACE(type);
  users.names = {{7, "looked up"}};
  users.asked.clear();
  users.messages.clear();
  EXPECT_EQ(faultOf(line(type, "4.0", fields)), Fault{});
  EXPECT_THAT(users.asked, ElementsAre(7));
  EXPECT_THAT(users.messages, IsEmpty());

  users.names.clear();
  for (const int reason : {ENOENT, EIO}) {
    users.reason = reason;
    users.messages.clear();
    wmq::forgetUsers();
    EXPECT_EQ(faultOf(line(type, "4.0", fields)), (Fault{WMQE_NO_USER, "userName"}));
    EXPECT_THAT(users.messages, ElementsAre(users.failureOf(reader)));
  }
}

// --------------------------------------------------------------------------------- user names

TEST_F(JobControl, LooksUserNamesUpForLinesUpTo4_0AndLogsEachFailureOnce) {
  expectLookup(users, "JOB_SIGNAL", without(kSignal, {"userName", "clusters", "indexRanges"}),
               "readJobSignal");
  expectLookup(users, "JOB_MOVE", without(kMove, {"userName", "rmtJobCtrls"}), "readJobMove");
  expectLookup(users, "JOB_SWITCH", without(kSwitch, {"userName", "clusters"}), "readJobSwitch");
  expectLookup(users, "JOB_FORCE", without(kForce, {"userName", "forceStr"}), "readJobForce");
}

TEST_F(JobControl, NamesTheReaderOfAMigrationInLowerCase) {
  expectLookup(users, "MIG", without(kMig, {"userName", "migInt2"}), "readmig");
}

TEST_F(JobControl, HasTheNameOnTheLineAbove4_0) {
  users.names.clear();
  EXPECT_STREQ(parsed(line("JOB_SIGNAL", "4.01", kSignal))->eventLog.jobSignalLog.userName, "anna");
  EXPECT_STREQ(parsed(line("MIG", "4.01", kMig))->eventLog.migLog.userName, "anna");
  EXPECT_THAT(users.asked, IsEmpty());
}

TEST_F(JobControl, TakesUserMinus1OfASignalForUnknownWithoutALookup) {
  const OwnedRecord record = parse(line("JOB_SIGNAL", "4.0", kSignal.with("numbers", "1 -1 3")));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(record->eventLog.jobSignalLog.userName, "unknown");
  EXPECT_THAT(users.asked, IsEmpty());
}

TEST_F(JobControl, LooksUserMinus1UpForEveryOtherRecord) {
  users.names = {{-1, "nobody"}};
  EXPECT_STREQ(
      parsed(line("JOB_MOVE", "4.0", kMove.with("numbers", "-1 2 3 4")))->eventLog.jobMoveLog.userName,
      "nobody");
  EXPECT_STREQ(
      parsed(line("JOB_SWITCH", "4.0", kSwitch.with("numbers", "-1 2")))->eventLog.jobSwitchLog.userName,
      "nobody");
  EXPECT_STREQ(
      parsed(line("JOB_FORCE", "4.0", kForce.with("numbers", "1 -1 3 4")))->eventLog.jobForceLog.userName,
      "nobody");
  EXPECT_STREQ(parsed(line("MIG", "4.0", kMig.with("userId", "-1")))->eventLog.migLog.userName, "nobody");
  EXPECT_THAT(users.asked, ElementsAre(-1)) << "the answer is kept";
}

TEST_F(JobControl, TakesUserNamesOf1To59Characters) {
  const std::string longest(59, 'u');
  const auto quoted = [](const std::string &text) { return '"' + text + '"'; };
  EXPECT_EQ(parsed(line("JOB_SIGNAL", "10.1", kSignal.with("userName", quoted(longest))))
                ->eventLog.jobSignalLog.userName,
            longest);
  const std::pair<const char *, Fields> lines[] = {{"JOB_SIGNAL", kSignal}, {"JOB_MOVE", kMove},
                                                   {"JOB_SWITCH", kSwitch}, {"JOB_SWITCH2", kSwitch2},
                                                   {"JOB_FORCE", kForce},   {"MIG", kMig}};
  for (const auto &[type, fields] : lines) {
    EXPECT_EQ(faultOf(line(type, "10.1", fields.with("userName", quoted(longest)))), Fault{}) << type;
    for (const std::string &name : {longest + 'u', std::string()})
      EXPECT_EQ(faultOf(line(type, "10.1", fields.with("userName", quoted(name)))),
                (Fault{WMQE_BAD_FORMAT, "userName"}))
          << type;
  }
}

// --------------------------------------------------------------------------------- JOB_SIGNAL

TEST_F(JobControl, HoldsTheRangesOfASignalInOneBlock) {
  const OwnedRecord record = parse(line("JOB_SIGNAL", "10.1", kSignal));
  ASSERT_NE(record, nullptr);
  const jobSignalLog &log = record->eventLog.jobSignalLog;
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeStart), ElementsAre(1, 30));
  EXPECT_EQ(log.indexRangeEnd, log.indexRangeStart + 2);
  EXPECT_EQ(log.indexRangeStep, log.indexRangeStart + 4);
}

TEST_F(JobControl, ReleasesTheRangesOfASignal) {
  const OwnedRecord record = parse(line("JOB_SIGNAL", "10.1", kSignal));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jobSignalLog &log = record->eventLog.jobSignalLog;
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.indexRangeEnd, nullptr);
  EXPECT_EQ(log.indexRangeStep, nullptr);
  EXPECT_EQ(log.indexRangeCnt, 0);
  freeLogRec(record.get());
}

TEST_F(JobControl, DoesNotCheckThatRangesOfASignalConvert) {
  OwnedRecord record = parse(line("JOB_SIGNAL", "10.1", kSignal.with("indexRanges", "3 1 10 2 30")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobSignalLog.indexRangeCnt, 3);
  EXPECT_THAT(numbersOf(3, record->eventLog.jobSignalLog.indexRangeStart), ElementsAre(1, 30, 30));
  EXPECT_THAT(numbersOf(3, record->eventLog.jobSignalLog.indexRangeStep), ElementsAre(2, 0, 0));
  record = parse(line("JOB_SIGNAL", "10.1", kSignal.with("indexRanges", "many")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobSignalLog.indexRangeCnt, 0);
  EXPECT_EQ(record->eventLog.jobSignalLog.indexRangeStart, nullptr);
}

TEST_F(JobControl, HasNoRangesInASignalBefore10_1) {
  const OwnedRecord record = parse(line("JOB_SIGNAL", "10.0", kSignal));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobSignalLog.indexRangeCnt, 0);
  EXPECT_EQ(record->eventLog.jobSignalLog.indexRangeStart, nullptr);
}

TEST_F(JobControl, SetsTheRangesThatASignalBefore10_1LacksToNone) {
  wmq_setlineversion(10.0F);
  int32_t leftOver = 0;
  jobSignalLog log{};
  log.indexRangeCnt = 77;
  log.indexRangeStart = log.indexRangeEnd = log.indexRangeStep = &leftOver;
  EXPECT_EQ(readJobSignal(kSignal.upTo("clusters").text().c_str(), &log), 0);
  EXPECT_EQ(log.indexRangeCnt, 0);
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.indexRangeEnd, nullptr);
  EXPECT_EQ(log.indexRangeStep, nullptr);
  std::free(log.signalStr);
  std::free(log.srcCluster);
  std::free(log.dstCluster);
}

TEST_F(JobControl, WritesASignalAsItWasRead) {
  const OwnedRecord record = parse(line("JOB_SIGNAL", "10.1", kSignal));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(fieldsOf(*record), ' ' + kSignal.text() + '\n');
}

// ----------------------------------------------------------------------------------- JOB_MOVE

TEST_F(JobControl, HoldsTheRangesOfAMoveInThreeArrays) {
  const OwnedRecord record = parse(line("JOB_MOVE", "10.1", kMove));
  ASSERT_NE(record, nullptr);
  jobMoveLog &log = record->eventLog.jobMoveLog;
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeStart), ElementsAre(1, 30));
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeEnd), ElementsAre(10, 40));
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeStep), ElementsAre(2, 5));
  // Each is an allocation of its own: free would not take a part of one.
  for (int32_t **array : {&log.indexRangeStep, &log.indexRangeEnd, &log.indexRangeStart}) {
    std::free(*array);
    *array = nullptr;
  }
}

TEST_F(JobControl, DoesNotCheckThatRangesOfAMoveConvert) {
  // The second range begins with the next count, which is then read from the same place.
  OwnedRecord record = parse(line("JOB_MOVE", "10.1", kMove.with("indexRanges", "2 1 10 2")));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(numbersOf(2, record->eventLog.jobMoveLog.indexRangeStart), ElementsAre(1, 1));
  EXPECT_THAT(numbersOf(2, record->eventLog.jobMoveLog.indexRangeEnd), ElementsAre(10, 0));
  EXPECT_EQ(record->eventLog.jobMoveLog.numNewRmtJobCtrl, 1);
  record = parse(line("JOB_MOVE", "10.1", kMove.with("indexRanges", "-3").with("newRmtJobCtrls", "0")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobMoveLog.indexRangeCnt, -3);
  EXPECT_EQ(record->eventLog.jobMoveLog.indexRangeStart, nullptr);
}

TEST_F(JobControl, MustHaveTheCountOfNewControlsInAMoveOf10_1) {
  EXPECT_EQ(faultOf(line("JOB_MOVE", "10.1", kMove.without("newRmtJobCtrls"))),
            (Fault{WMQE_BAD_FORMAT, "numNewRmtJobCtrl"}));
}

TEST_F(JobControl, ReadsAMoveBefore10_1UpToItsOldControls) {
  wmq_setlineversion(10.0F);
  const OwnedRecord record = emptyRecord(EVENT_JOB_MOVE);
  jobMoveLog &log = record->eventLog.jobMoveLog;
  log.indexRangeCnt = 77;
  log.numNewRmtJobCtrl = 78;
  EXPECT_EQ(readJobMove((kMove.upTo("rmtJobCtrls").text() + " rubbish").c_str(), &log), 0);
  EXPECT_EQ(log.indexRangeCnt, 77) << "left as handed in";
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.numNewRmtJobCtrl, 0);
  EXPECT_EQ(log.newRmtJobCtrls, nullptr);
  log.numNewRmtJobCtrl = 0;
}

TEST_F(JobControl, WritesAMoveAsItWasRead) {
  const OwnedRecord record = parse(line("JOB_MOVE", "10.1", kMove));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(fieldsOf(*record), ' ' + kMove.text() + '\n');
}

// --------------------------------------------------------------------------------- JOB_SWITCH

TEST_F(JobControl, WritesTheRangesOfASwitchAndNeverReadsThem) {
  int32_t start[] = {1, 30};
  int32_t end[] = {10, 40};
  int32_t step[] = {2, 5};
  eventRecord record = bareRecord(EVENT_JOB_SWITCH);
  jobSwitchLog &log = record.eventLog.jobSwitchLog;
  std::strcpy(log.queue, "night");
  std::strcpy(log.userName, "anna");
  log.indexRangeCnt = 2;
  log.indexRangeStart = start;
  log.indexRangeEnd = end;
  log.indexRangeStep = step;
  EXPECT_EQ(fieldsOf(record), R"( 0 0 "night" 0 "anna" "" 0 "" 0 0 0 2 1 10 2 30 40 5)"
                              "\n");

  const OwnedRecord back = readBack(record);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->eventLog.jobSwitchLog.indexRangeCnt, 0);
  EXPECT_EQ(back->eventLog.jobSwitchLog.indexRangeStart, nullptr);
  EXPECT_EQ(back->eventLog.jobSwitchLog.indexRangeEnd, nullptr);
  EXPECT_EQ(back->eventLog.jobSwitchLog.indexRangeStep, nullptr);
}

TEST_F(JobControl, LeavesTheCountOfRangesOfASwitchAsHandedIn) {
  wmq_setlineversion(10.1F);
  const OwnedRecord record = emptyRecord(EVENT_JOB_SWITCH);
  record->eventLog.jobSwitchLog.indexRangeCnt = 77;
  EXPECT_EQ(readJobSwitch(kSwitch.text().c_str(), &record->eventLog.jobSwitchLog), 0);
  EXPECT_EQ(record->eventLog.jobSwitchLog.indexRangeCnt, 77);
}

TEST_F(JobControl, StopsReadingASwitchBeforeItsRanges) {
  for (const char *ranges : {"many", "5000000", "1 2"})
    EXPECT_EQ(faultOf(line("JOB_SWITCH", "10.1", kSwitch.with("indexRanges", ranges))), Fault{}) << ranges;
  EXPECT_EQ(faultOf(line("JOB_SWITCH", "10.1", kSwitch.without("indexRanges"))), Fault{});
}

TEST_F(JobControl, TakesQueuesOf1To59Characters) {
  const std::string longest(59, 'q');
  const std::pair<const char *, Fields> lines[] = {{"JOB_SWITCH", kSwitch}, {"JOB_SWITCH2", kSwitch2}};
  for (const auto &[type, fields] : lines) {
    EXPECT_EQ(faultOf(line(type, "10.1", fields.with("queue", '"' + longest + '"'))), Fault{}) << type;
    EXPECT_EQ(faultOf(line(type, "10.1", fields.with("queue", '"' + longest + "q\""))),
              (Fault{WMQE_BAD_FORMAT, "queue"}))
        << type;
    EXPECT_EQ(faultOf(line(type, "10.1", fields.with("queue", "\"\""))), (Fault{WMQE_BAD_FORMAT, "queue"}))
        << type;
  }
}

// -------------------------------------------------------------------------------- JOB_SWITCH2

// What readJobSwitch2 leaves in a structure, whatever it returns.
class JobSwitch2Reading : public JobControl {
 protected:
  int read(const std::string &fields, float version = 10.1F) {
    wmq_setlineversion(version);
    const int result = readJobSwitch2(fields.c_str(), &log);
    fault = lastFault(result);
    return result;
  }

  OwnedRecord record = emptyRecord(EVENT_JOB_SWITCH2);
  jobSwitch2Log &log = record->eventLog.jobSwitch2Log;
  Fault fault{};
};

TEST_F(JobSwitch2Reading, ZeroFillsTheWholeStructureFirst) {
  std::memset(&log, 0xA5, sizeof log);
  EXPECT_EQ(read("no number"), WMQE_BAD_FORMAT);
  const jobSwitch2Log nothing{};
  EXPECT_EQ(std::memcmp(&log, &nothing, sizeof log), 0);
}

TEST_F(JobSwitch2Reading, RefusesACountOf0Ranges) {
  EXPECT_EQ(read(kSwitch2.with("indexRanges", "0")), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "indexRangeCnt");
}

TEST_F(JobSwitch2Reading, RefusesACountOfRangesThatDoesNotConvert) {
  EXPECT_EQ(read(kSwitch2.with("indexRanges", "many")), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "indexRangeCnt");
}

TEST_F(JobSwitch2Reading, RemembersABadRangeAndReadsAllThatFollows) {
  EXPECT_EQ(read(kSwitch2.with("indexRanges", "2 1 10 2 30")), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "indexRangeStart");
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.indexRangeEnd, nullptr);
  EXPECT_EQ(log.indexRangeStep, nullptr);
  EXPECT_STREQ(log.srcCluster, "src");
  EXPECT_EQ(log.dstJobId, -9000000000002);
  EXPECT_EQ(log.rmtCtrlInt, 71);
  ASSERT_EQ(log.numRmtJobCtrl, 2);
  EXPECT_STREQ(log.rmtJobCtrls[1].ctrlName1, "b1");
}

TEST_F(JobSwitch2Reading, ForgetsABadRangeWhenALaterFieldFails) {
  EXPECT_EQ(read(kSwitch2.with("indexRanges", "2 1 10 2 30").with("rmtJobCtrls", "71 some")),
            WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "numRmtJobCtrl");
}

TEST_F(JobSwitch2Reading, GivesNoRecordForABadRange) {
  EXPECT_EQ(parse(line("JOB_SWITCH2", "10.1", kSwitch2.with("indexRanges", "2 1 10 2 30"))), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_FORMAT);
}

TEST_F(JobSwitch2Reading, EndsBehindTheRangesBefore9_1) {
  EXPECT_EQ(read(kSwitch2.upTo("indexRanges").text() + " rubbish", 9.0F), 0);
  EXPECT_THAT(numbersOf(log.indexRangeCnt, log.indexRangeStart), ElementsAre(1, 30));
  EXPECT_STREQ(log.srcCluster, "");
  EXPECT_EQ(log.srcJobId, 0);
  EXPECT_EQ(log.rmtCtrlInt, -1);
  EXPECT_EQ(log.numRmtJobCtrl, 0);
  EXPECT_EQ(log.rmtJobCtrls, nullptr);
}

TEST_F(JobSwitch2Reading, HoldsItsRangesInThreeArrays) {
  EXPECT_EQ(read(kSwitch2), 0);
  for (int32_t **array : {&log.indexRangeStep, &log.indexRangeEnd, &log.indexRangeStart}) {
    std::free(*array);
    *array = nullptr;
  }
}

TEST_F(JobSwitch2Reading, NeverLooksAUserUp) {
  users.names.clear();
  EXPECT_EQ(read(kSwitch2.upTo("indexRanges"), 2.1F), 0);
  EXPECT_STREQ(log.userName, "anna");
  EXPECT_THAT(users.asked, IsEmpty());
}

TEST_F(JobControl, WritesTheSecondSwitchAsItWasRead) {
  const OwnedRecord record = parse(line("JOB_SWITCH2", "10.1", kSwitch2));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(fieldsOf(*record), ' ' + kSwitch2.text() + '\n');
}

// -------------------------------------------------------------------- remote control records

TEST_F(JobControl, HasOldControlsFrom9_1On) {
  const std::pair<const char *, Fields> lines[] = {{"JOB_MOVE", kMove.without("rmtJobCtrls")},
                                                   {"JOB_SWITCH", kSwitch.without("clusters")},
                                                   {"JOB_FORCE", kForce.without("rmtJobCtrls")}};
  for (const auto &[type, fields] : lines) EXPECT_EQ(faultOf(line(type, "9.0", fields)), Fault{}) << type;
  const OwnedRecord record = parse(line("JOB_FORCE", "9.0", kForce));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobForceLog.rmtCtrlInt, -1);
  EXPECT_EQ(record->eventLog.jobForceLog.numRmtJobCtrl, 0);
  EXPECT_EQ(record->eventLog.jobForceLog.rmtJobCtrls, nullptr);
}

TEST_F(JobControl, MustHaveBothNumbersBeforeOldControls) {
  const std::pair<const char *, Fields> lines[] = {{"JOB_MOVE", kMove.upTo("rmtJobCtrls")},
                                                   {"JOB_SWITCH", kSwitch.upTo("rmtJobCtrls")},
                                                   {"JOB_SWITCH2", kSwitch2},
                                                   {"JOB_FORCE", kForce}};
  for (const auto &[type, fields] : lines) {
    EXPECT_EQ(faultOf(line(type, "9.1", fields.with("rmtJobCtrls", "71"))),
              (Fault{WMQE_BAD_FORMAT, "numRmtJobCtrl"}))
        << type;
    EXPECT_EQ(faultOf(line(type, "9.1", fields.with("rmtJobCtrls", "71 1 \"a1\" \"a2\" 1 x"))),
              (Fault{WMQE_BAD_FORMAT, "ids"}))
        << type;
  }
}

TEST_F(JobControl, ReleasesAllControlsOfAMoveOnce) {
  const OwnedRecord record = parse(line("JOB_MOVE", "10.1", kMove));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  EXPECT_EQ(record->eventLog.jobMoveLog.rmtJobCtrls, nullptr);
  EXPECT_EQ(record->eventLog.jobMoveLog.newRmtJobCtrls, nullptr);
  const eventRecord once = *record;
  freeLogRec(record.get());
  EXPECT_EQ(std::memcmp(&once, record.get(), sizeof once), 0);
}

// ------------------------------------------------------- JOB_SIGACT, CHKPNT, JOB_REQUEUE

TEST_F(JobControl, CutsWideNumbersOfAnActionAndACheckpointTo32Bits) {
  const std::pair<int64_t, std::string> numbers[] = {
      {int64_t{1} << 32, "0"}, {(int64_t{1} << 32) + 5, "5"}, {int64_t{1} << 31, "-2147483648"}, {-1, "-1"}};
  for (const auto &[held, written] : numbers) {
    eventRecord action = bareRecord(EVENT_JOB_SIGACT);
    action.eventLog.jobSigActLog.sigActInt1 = held;
    EXPECT_EQ(fieldsOf(action), " 0 " + written + " 0 0 0 0 0 \"\" 0\n");
    EXPECT_EQ(parsed(format(action))->eventLog.jobSigActLog.sigActInt1, std::stoll(written));
    eventRecord checkpoint = bareRecord(EVENT_CHKPNT);
    checkpoint.eventLog.chkpntLog.chkpntInt1 = held;
    EXPECT_EQ(fieldsOf(checkpoint), " 0 " + written + " 0 0 0 0 \"\" 0 \"\" 0\n");
    EXPECT_EQ(parsed(format(checkpoint))->eventLog.chkpntLog.chkpntInt1, std::stoll(written));
  }
}

TEST_F(JobControl, ReadsWideNumbersOfAnActionAndACheckpointAs32Bits) {
  const OwnedRecord action =
      parse(line("JOB_SIGACT", "10.1", kSigAct.with("numbers", "1 4294967298 3 4 5 6 7")));
  EXPECT_EQ(action->eventLog.jobSigActLog.sigActInt1, 2);
  const OwnedRecord checkpoint = parse(line("CHKPNT", "10.1", kChkpnt.with("numbers", "1 2147483648 3 4 5")));
  EXPECT_EQ(checkpoint->eventLog.chkpntLog.chkpntInt1, -2147483648LL);
}

TEST_F(JobControl, CarriesTheSixthNumberOfAnActionBeforeItsText) {
  const OwnedRecord record = parse(line("JOB_SIGACT", "10.1", kSigAct));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.jobSigActLog.sigActInt6, 7);
  EXPECT_EQ(record->eventLog.jobSigActLog.sigActInt7, 8);
  EXPECT_EQ(fieldsOf(*record), ' ' + kSigAct.text() + '\n');
  EXPECT_EQ(faultOf(line("JOB_SIGACT", "10.1", kSigAct.with("numbers", "1 2 3 4 5 6"))).error,
            WMQE_BAD_FORMAT);
}

TEST_F(JobControl, HasTheLastNumberOfACheckpointAbove3_0Only) {
  EXPECT_EQ(parsed(line("CHKPNT", "3.0", kChkpnt))->eventLog.chkpntLog.chkpntInt5, 0);
  EXPECT_EQ(parsed(line("CHKPNT", "3.01", kChkpnt))->eventLog.chkpntLog.chkpntInt5, 6);
}

TEST_F(JobControl, HasTheLastNumberOfARequeueFrom9_13On) {
  EXPECT_EQ(parsed(line("JOB_REQUEUE", "9.12", "1 2 3"))->eventLog.jobRequeueLog.requeueInt2, 0);
  EXPECT_EQ(parsed(line("JOB_REQUEUE", "9.13", "1 2 3"))->eventLog.jobRequeueLog.requeueInt2, 3);
  EXPECT_EQ(faultOf(line("JOB_REQUEUE", "9.12", "1 2")), Fault{});
  EXPECT_EQ(faultOf(line("JOB_REQUEUE", "9.13", "1 2")), (Fault{WMQE_BAD_FORMAT, "requeueInt2"}));
  EXPECT_EQ(parsed(line("JOB_REQUEUE", "3.0", "1"))->eventLog.jobRequeueLog.requeueInt1, 0);
}

// ---------------------------------------------------------------------------------- JOB_FORCE

class JobForceReading : public JobControl {
 protected:
  int read(const std::string &fields, float version = 10.1F) {
    wmq_setlineversion(version);
    return readJobForce(fields.c_str(), &log);
  }

  OwnedRecord record = emptyRecord(EVENT_JOB_FORCE);
  jobForceLog &log = record->eventLog.jobForceLog;
};

TEST_F(JobForceReading, ExpandsItsHosts) {
  EXPECT_EQ(read(kForce), 0);
  EXPECT_THAT(listed(log.numExecHosts, log.execHosts), ElementsAre("h", "h", "i"));
  EXPECT_EQ(fieldsOf(*record), ' ' + kForce.text() + '\n') << "and writes them compressed";
}

TEST_F(JobForceReading, HasAnArrayEvenForNoHosts) {
  EXPECT_EQ(read(kForce.with("execHosts", "0")), 0);
  EXPECT_EQ(log.numExecHosts, 0);
  EXPECT_NE(log.execHosts, nullptr);
}

TEST_F(JobForceReading, CutsTheCountToTheHostsThatWereRead) {
  EXPECT_EQ(read("1 7 3 4 3 \"h\" \"i\" none"), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numExecHosts, log.execHosts), ElementsAre("h", "i"));
}

TEST_F(JobForceReading, TakesATextOf512CharactersAndNoLonger) {
  const std::string longest(512, 't');
  EXPECT_EQ(read(kForce.with("forceStr", '"' + longest + '"')), 0);
  EXPECT_EQ(log.forceStr, longest);
  EXPECT_EQ(faultOf(line("JOB_FORCE", "10.1", kForce.with("forceStr", '"' + longest + "t\""))),
            (Fault{WMQE_BAD_FORMAT, "forceStr"}));
}

TEST_F(JobForceReading, LeavesItsTextAsHandedInUpTo4_2) {
  log.forceStr = ownedCopy("mine");
  EXPECT_EQ(read(kForce.without("forceStr"), 4.2F), 0);
  EXPECT_STREQ(log.forceStr, "mine");
}

TEST_F(JobForceReading, HasNoTextOfItsOwnUpTo4_2) {
  EXPECT_EQ(read(kForce.without("forceStr"), 4.2F), 0);
  EXPECT_EQ(log.forceStr, nullptr);
}

TEST_F(JobForceReading, HasItsTextAbove4_2) {
  EXPECT_EQ(read(kForce.upTo("forceStr"), 4.21F), 0);
  EXPECT_STREQ(log.forceStr, "text");
}

TEST_F(JobForceReading, MustHaveTheCountOfHostsAmongItsFirstNumbers) {
  EXPECT_EQ(faultOf(line("JOB_FORCE", "10.1", "1 7 3 4")), (Fault{WMQE_BAD_FORMAT, "numExecHosts"}));
}

// ---------------------------------------------------------------------------------------- MIG

TEST_F(JobControl, WritesTheHostsOfAMigrationWithoutCompression) {
  const OwnedRecord record = parse(line("MIG", "10.1", kMig));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(fieldsOf(*record), ' ' + kMig.text() + '\n');
}

TEST_F(JobControl, LeavesCompressedHostsOfAMigrationAsTheyAre) {
  const OwnedRecord record = parse(line("MIG", "10.1", kMig.with("numbers", "1 1 \"2*h\"")));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(listed(record->eventLog.migLog.numHosts, record->eventLog.migLog.hosts), ElementsAre("2*h"));
  EXPECT_EQ(fieldsOf(*record), ' ' + kMig.with("numbers", "1 1 \"2*h\"").text() + '\n');
}

TEST_F(JobControl, LooksUserMinus1UpForAMigrationOf2_1) {
  users.names = {{-1, "nobody"}, {7, "anna"}};
  const OwnedRecord record = parse(line("MIG", "2.1", kMig.upTo("numbers")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.migLog.userId, -1);
  EXPECT_STREQ(record->eventLog.migLog.userName, "nobody");
  EXPECT_EQ(parsed(line("MIG", "2.2", kMig))->eventLog.migLog.userId, 7);
}

TEST_F(JobControl, HasTheLateNumbersOfAMigrationFrom8_0On) {
  const OwnedRecord older = parse(line("MIG", "7.9", kMig));
  EXPECT_EQ(older->eventLog.migLog.migInt2, 0);
  EXPECT_EQ(older->eventLog.migLog.migInt3, -1);
  const OwnedRecord newer = parse(line("MIG", "8.0", kMig));
  EXPECT_EQ(newer->eventLog.migLog.migInt2, 5);
  EXPECT_EQ(newer->eventLog.migLog.migInt3, 6);
  EXPECT_EQ(faultOf(line("MIG", "8.0", kMig.upTo("migInt2"))), (Fault{WMQE_BAD_FORMAT, "migInt3"}));
}

TEST_F(JobControl, CutsTheCountOfAMigrationToTheHostsThatWereRead) {
  wmq_setlineversion(10.1F);
  const OwnedRecord record = emptyRecord(EVENT_MIG);
  migLog &log = record->eventLog.migLog;
  EXPECT_EQ(readMig("1 3 \"h\" \"i\" none", &log), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numHosts, log.hosts), ElementsAre("h", "i"));
}

TEST_F(JobControl, HasNoArrayForAMigrationWithoutHosts) {
  const OwnedRecord record = parse(line("MIG", "10.1", kMig.with("numbers", "1 0")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.migLog.hosts, nullptr);
}

// -------------------------------------------------------------------------- writers' failures

TEST_F(JobControl, CannotBeWrittenWithListsThatAreNotThere) {
  const auto faultWith = [](int32_t type, auto member, auto count) {
    eventRecord record = bareRecord(type);
    record.eventLog.*member = count;
    return faultOf(record);
  };
  jobSignalLog signal{};
  signal.indexRangeCnt = 1;
  EXPECT_EQ(faultWith(EVENT_JOB_SIGNAL, &eventLog::jobSignalLog, signal),
            (Fault{WMQE_SYS, "indexRangeStart"}));
  jobMoveLog move{};
  move.numNewRmtJobCtrl = 1;
  EXPECT_EQ(faultWith(EVENT_JOB_MOVE, &eventLog::jobMoveLog, move), (Fault{WMQE_SYS, "newRmtJobCtrls"}));
  jobSwitchLog switched{};
  switched.numRmtJobCtrl = 1;
  EXPECT_EQ(faultWith(EVENT_JOB_SWITCH, &eventLog::jobSwitchLog, switched), (Fault{WMQE_SYS, "rmtJobCtrls"}));
  jobSwitch2Log second{};
  second.indexRangeCnt = 1;
  EXPECT_EQ(faultWith(EVENT_JOB_SWITCH2, &eventLog::jobSwitch2Log, second),
            (Fault{WMQE_SYS, "indexRangeStart"}));
  jobForceLog force{};
  force.numExecHosts = 1;
  EXPECT_EQ(faultWith(EVENT_JOB_FORCE, &eventLog::jobForceLog, force), (Fault{WMQE_SYS, "execHosts"}));
  migLog mig{};
  mig.numHosts = 1;
  EXPECT_EQ(faultWith(EVENT_MIG, &eventLog::migLog, mig), (Fault{WMQE_SYS, "hosts"}));
}

TEST_F(JobControl, FailsToReachAFullFile) {
  const auto result = [](auto write, auto log) {
    return resultOnAFullDevice([&](FILE *full) { return write(full, &log); });
  };
  EXPECT_EQ(result(writeJobSignal, jobSignalLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobMove, jobMoveLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobSwitch, jobSwitchLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobSwitch2, jobSwitch2Log{}), WMQE_SYS);
  EXPECT_EQ(result(writeJobForce, jobForceLog{}), WMQE_SYS);
  EXPECT_EQ(result(writeMig, migLog{}), WMQE_SYS);
}

}  // namespace
}  // namespace wmq::testing
