// MBD_START, MBD_DIE, QUEUE_CTRL, HOST_CTRL, EVENT_HGHOST_CTRL, LOAD_INDEX and the calendars.
#include "wmq/records/daemon_control.h"

#include <gmock/gmock.h>

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

const Fields kStart = {{"mbdStartHost", "\"host\""}, {"mbdStartName", "\"name\""}, {"numbers", "3 4"}};
const Fields kDie = {
    {"mbdDieHost", "\"host\""}, {"numbers", "2 3"}, {"mbdDieText", "\"text\""}, {"mbdDieInt3", "5"}};
const Fields kQueue = {{"ctrlValue", "1"},
                       {"queue", "\"night\""},
                       {"userId", "7"},
                       {"userName", "\"anna\""},
                       {"ctrlText", "\"text\""}};
const Fields kHost = {{"ctrlValue", "1"},
                      {"host", "\"node\""},
                      {"userId", "7"},
                      {"userName", "\"anna\""},
                      {"ctrlText", "\"text\""}};
const Fields kGroupHost = {{"ctrlValue", "1"}, {"ctrlName1", "\"one\""}, {"ctrlName2", "\"two\""},
                           {"userId", "7"},    {"userName", "\"anna\""}, {"ctrlText", "\"text\""}};

std::string quoted(const std::string &text) { return '"' + text + '"'; }

class DaemonControl : public ::testing::Test {
 protected:
  UserDirectory users{{{7, "anna"}}};
};

// ---------------------------------------------------------------------- MBD_START, MBD_DIE

TEST_F(DaemonControl, TakesNamesOfAStartThatFitWithTheirEndAndRefusesLongerOnes) {
  const std::string host(63, 'h');
  const std::string name(39, 'n');
  const Fields longest = kStart.with("mbdStartHost", quoted(host)).with("mbdStartName", quoted(name));
  const OwnedRecord record = parse(line("MBD_START", "10.1", longest));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.mbdStartLog.mbdStartHost, host);
  EXPECT_EQ(record->eventLog.mbdStartLog.mbdStartName, name);
  EXPECT_EQ(faultOf(line("MBD_START", "10.1", longest.with("mbdStartHost", quoted(host + 'h')))),
            (Fault{WMQE_BAD_FORMAT, "mbdStartHost"}));
  EXPECT_EQ(faultOf(line("MBD_START", "10.1", longest.with("mbdStartName", quoted(name + 'n')))),
            (Fault{WMQE_BAD_FORMAT, "mbdStartName"}));
}

TEST_F(DaemonControl, TakesEmptyNamesOfAStart) {
  const OwnedRecord record =
      parse(line("MBD_START", "10.1", kStart.with("mbdStartHost", "\"\"").with("mbdStartName", "\"\"")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(fieldsOf(*record), " \"\" \"\" 3 4\n");
}

TEST_F(DaemonControl, MustHaveBothNumbersOfAStart) {
  EXPECT_EQ(faultOf(line("MBD_START", "10.1", kStart.with("numbers", "3"))),
            (Fault{WMQE_BAD_FORMAT, "mbdStartInt2"}));
}

TEST_F(DaemonControl, EndsADeathOf9_1BehindItsText) {
  wmq_setlineversion(9.1F);
  mbdDieLog log{};
  log.mbdDieInt3 = 77;
  EXPECT_EQ(readMbdDie(kDie.upTo("mbdDieText").text().c_str(), &log), 0);
  EXPECT_STREQ(log.mbdDieText, "text");
  EXPECT_EQ(log.mbdDieInt3, 77) << "left as handed in";
  wmq_setlineversion(9.11F);
  EXPECT_EQ(readMbdDie(kDie.upTo("mbdDieText").text().c_str(), &log), WMQE_BAD_FORMAT);
  EXPECT_EQ(readMbdDie(kDie.text().c_str(), &log), 0);
  EXPECT_EQ(log.mbdDieInt3, 5);
}

TEST_F(DaemonControl, LeavesTheTextOfADeathBefore6_0AsHandedIn) {
  wmq_setlineversion(5.9F);
  mbdDieLog log{};
  std::strcpy(log.mbdDieText, "mine");
  EXPECT_EQ(readMbdDie(kDie.upTo("numbers").text().c_str(), &log), 0);
  EXPECT_STREQ(log.mbdDieText, "mine");
  wmq_setlineversion(6.0F);
  EXPECT_EQ(readMbdDie(kDie.text().c_str(), &log), 0);
  EXPECT_STREQ(log.mbdDieText, "text");
}

TEST_F(DaemonControl, TakesAHostOfADeathOfUpTo63Characters) {
  EXPECT_EQ(faultOf(line("MBD_DIE", "10.1", kDie.with("mbdDieHost", quoted(std::string(63, 'h'))))), Fault{});
  EXPECT_EQ(faultOf(line("MBD_DIE", "10.1", kDie.with("mbdDieHost", quoted(std::string(64, 'h'))))),
            (Fault{WMQE_BAD_FORMAT, "mbdDieHost"}));
}

// ------------------------------------------------------------------------------------ texts

TEST_F(DaemonControl, CutsTextsTo511Characters) {
  const std::string most(511, 't');
  for (const std::string &text : {most, most + 't', std::string(600, 't')}) {
    EXPECT_EQ(parsed(line("QUEUE_CTRL", "10.1", kQueue.with("ctrlText", quoted(text))))
                  ->eventLog.queueCtrlLog.ctrlText,
              most);
    EXPECT_EQ(parsed(line("HOST_CTRL", "10.1", kHost.with("ctrlText", quoted(text))))
                  ->eventLog.hostCtrlLog.ctrlText,
              most);
    EXPECT_EQ(parsed(line("EVENT_HGHOST_CTRL", "10.1", kGroupHost.with("ctrlText", quoted(text))))
                  ->eventLog.hgHostCtrlLog.ctrlText,
              most);
    EXPECT_EQ(
        parsed(line("MBD_DIE", "10.1", kDie.with("mbdDieText", quoted(text))))->eventLog.mbdDieLog.mbdDieText,
        most);
  }
}

TEST_F(DaemonControl, ReadsWhatStandsBehindACutText) {
  const OwnedRecord record =
      parse(line("MBD_DIE", "10.1", kDie.with("mbdDieText", quoted(std::string(600, 't')))));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.mbdDieLog.mbdDieInt3, 5);
}

TEST_F(DaemonControl, HasControlTextsFrom6_0On) {
  const OwnedRecord older = parse(line("QUEUE_CTRL", "5.0", kQueue));
  const OwnedRecord newer = parse(line("QUEUE_CTRL", "6.0", kQueue));
  ASSERT_TRUE(older != nullptr && newer != nullptr);
  EXPECT_STREQ(older->eventLog.queueCtrlLog.ctrlText, "");
  EXPECT_STREQ(newer->eventLog.queueCtrlLog.ctrlText, "text");
  EXPECT_EQ(faultOf(line("QUEUE_CTRL", "6.0", kQueue.upTo("userName"))),
            (Fault{WMQE_BAD_FORMAT, "ctrlText"}));
  EXPECT_EQ(faultOf(line("HOST_CTRL", "6.0", kHost.upTo("userName"))), (Fault{WMQE_BAD_FORMAT, "ctrlText"}));
  EXPECT_EQ(faultOf(line("EVENT_HGHOST_CTRL", "5.0", kGroupHost.upTo("userName"))), Fault{});
}

TEST_F(DaemonControl, EmptiesControlTextsThatOlderLinesLack) {
  wmq_setlineversion(5.0F);
  queueCtrlLog queue{};
  hostCtrlLog host{};
  hgHostCtrlLog group{};
  for (char *text : {queue.ctrlText, host.ctrlText, group.ctrlText})
    std::memcpy(text, "left over", sizeof "left over");
  EXPECT_EQ(readQueueCtrl(kQueue.upTo("userName").text().c_str(), &queue), 0);
  EXPECT_EQ(readHostCtrl(kHost.upTo("userName").text().c_str(), &host), 0);
  EXPECT_EQ(readHgHostCtrl(kGroupHost.upTo("userName").text().c_str(), &group), 0);
  EXPECT_STREQ(queue.ctrlText, "");
  EXPECT_STREQ(host.ctrlText, "");
  EXPECT_STREQ(group.ctrlText, "");
}

// ------------------------------------------------------------------------------------ names

TEST_F(DaemonControl, TakesAnEmptyHostAndRefusesAnEmptyQueue) {
  const OwnedRecord record = parse(line("HOST_CTRL", "10.1", kHost.with("host", "\"\"")));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(record->eventLog.hostCtrlLog.host, "");
  EXPECT_EQ(faultOf(line("QUEUE_CTRL", "10.1", kQueue.with("queue", "\"\""))),
            (Fault{WMQE_BAD_FORMAT, "queue"}));
}

TEST_F(DaemonControl, TakesHostsOf63CharactersAndQueuesOf59) {
  const auto faultWith = [](const char *type, const Fields &fields, const char *name, size_t length) {
    return faultOf(line(type, "10.1", fields.with(name, quoted(std::string(length, 'x')))));
  };
  EXPECT_EQ(faultWith("HOST_CTRL", kHost, "host", 63), Fault{});
  EXPECT_EQ(faultWith("HOST_CTRL", kHost, "host", 64), (Fault{WMQE_BAD_FORMAT, "host"}));
  EXPECT_EQ(faultWith("QUEUE_CTRL", kQueue, "queue", 59), Fault{});
  EXPECT_EQ(faultWith("QUEUE_CTRL", kQueue, "queue", 60), (Fault{WMQE_BAD_FORMAT, "queue"}));
  for (const char *name : {"ctrlName1", "ctrlName2"}) {
    EXPECT_EQ(faultWith("EVENT_HGHOST_CTRL", kGroupHost, name, 0), Fault{});
    EXPECT_EQ(faultWith("EVENT_HGHOST_CTRL", kGroupHost, name, 63), Fault{});
    EXPECT_EQ(faultWith("EVENT_HGHOST_CTRL", kGroupHost, name, 64), (Fault{WMQE_BAD_FORMAT, name}));
  }
}

TEST_F(DaemonControl, RefusesUserNamesThatAreEmptyOrTooLong) {
  const std::pair<const char *, Fields> lines[] = {
      {"QUEUE_CTRL", kQueue}, {"HOST_CTRL", kHost}, {"EVENT_HGHOST_CTRL", kGroupHost}};
  for (const auto &[type, fields] : lines) {
    EXPECT_EQ(faultOf(line(type, "10.1", fields.with("userName", quoted(std::string(59, 'u'))))), Fault{})
        << type;
    for (const size_t length : {0U, 60U})
      EXPECT_EQ(faultOf(line(type, "10.1", fields.with("userName", quoted(std::string(length, 'u'))))),
                (Fault{WMQE_BAD_FORMAT, "userName"}))
          << type;
  }
}

TEST_F(DaemonControl, LooksUserMinus1UpForLinesOf2_1) {
  users.names = {{-1, "nobody"}};
  const OwnedRecord queue = parse(line("QUEUE_CTRL", "2.1", kQueue.upTo("queue")));
  ASSERT_NE(queue, nullptr);
  EXPECT_EQ(queue->eventLog.queueCtrlLog.userId, -1);
  EXPECT_STREQ(queue->eventLog.queueCtrlLog.userName, "nobody");
  const OwnedRecord host = parse(line("HOST_CTRL", "2.1", kHost.upTo("host")));
  ASSERT_NE(host, nullptr);
  EXPECT_EQ(host->eventLog.hostCtrlLog.userId, -1);
  EXPECT_THAT(users.asked, ElementsAre(-1));
  EXPECT_EQ(parsed(line("QUEUE_CTRL", "10.1", kQueue))->eventLog.queueCtrlLog.userId, 7);
}

TEST_F(DaemonControl, AlwaysHasTheUserIdOfAHostGroup) {
  EXPECT_EQ(
      parsed(line("EVENT_HGHOST_CTRL", "2.1", kGroupHost.upTo("userId")))->eventLog.hgHostCtrlLog.userId, 7);
  EXPECT_EQ(faultOf(line("EVENT_HGHOST_CTRL", "2.1", kGroupHost.upTo("ctrlName2"))),
            (Fault{WMQE_BAD_FORMAT, "userId"}));
}

TEST_F(DaemonControl, LogsAFailedLookupUnderTheNameOfItsReader) {
  users.names.clear();
  EXPECT_EQ(faultOf(line("QUEUE_CTRL", "4.0", kQueue.upTo("userId"))), (Fault{WMQE_NO_USER, "userName"}));
  EXPECT_EQ(faultOf(line("HOST_CTRL", "4.0", kHost.upTo("userId"))), (Fault{WMQE_NO_USER, "userName"}));
  EXPECT_THAT(users.messages, ElementsAre(users.failureOf("readQueueCtrl"), users.failureOf("readHostCtrl")));
}

TEST_F(DaemonControl, NamesAnotherReaderWhenTheLookupForAHostGroupFails) {
  users.names.clear();
  EXPECT_EQ(faultOf(line("EVENT_HGHOST_CTRL", "4.0", kGroupHost.upTo("userId"))),
            (Fault{WMQE_NO_USER, "userName"}));
  EXPECT_THAT(users.messages, ElementsAre(users.failureOf("readHostCtrl")));
}

// -------------------------------------------------------------------------------- LOAD_INDEX

TEST_F(DaemonControl, HasAnArrayEvenForNoLoadIndex) {
  const OwnedRecord record = parse(line("LOAD_INDEX", "10.1", "0"));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->eventLog.loadIndexLog.numLoadIndex, 0);
  EXPECT_NE(record->eventLog.loadIndexLog.loadIndexNames, nullptr);
  EXPECT_EQ(fieldsOf(*record), " 0\n");
}

TEST_F(DaemonControl, KeepsTheCountOfLoadIndicesWhenANameFails) {
  wmq_setlineversion(10.1F);
  const OwnedRecord record = emptyRecord(EVENT_LOAD_INDEX);
  loadIndexLog &log = record->eventLog.loadIndexLog;
  EXPECT_EQ(readLoadIndex("4 \"r15s\" \"ut\" none at all", &log), WMQE_BAD_FORMAT);
  ASSERT_EQ(log.numLoadIndex, 4);
  EXPECT_STREQ(log.loadIndexNames[0], "r15s");
  EXPECT_STREQ(log.loadIndexNames[1], "ut");
  EXPECT_EQ(log.loadIndexNames[2], nullptr);
  EXPECT_EQ(log.loadIndexNames[3], nullptr);
  freeLogRec(record.get());
  EXPECT_EQ(log.loadIndexNames, nullptr) << "release passes over the empty slots";
  EXPECT_EQ(log.numLoadIndex, 0);
}

TEST_F(DaemonControl, NeitherCompressesNorExpandsLoadIndices) {
  const std::string names = "3 \"ut\" \"ut\" \"2*ut\"";
  const OwnedRecord record = parse(line("LOAD_INDEX", "10.1", names));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(
      listed(record->eventLog.loadIndexLog.numLoadIndex, record->eventLog.loadIndexLog.loadIndexNames),
      ElementsAre("ut", "ut", "2*ut"));
  EXPECT_EQ(fieldsOf(*record), ' ' + names + '\n');
}

// --------------------------------------------------------------------------------- calendars

TEST_F(DaemonControl, PutsTheSecondNumberOfACalendarFirst) {
  static_assert(offsetof(calendarLog, calInt2) < offsetof(calendarLog, calInt1));
  for (const int32_t type : {EVENT_CAL_NEW, EVENT_CAL_MODIFY, EVENT_CAL_DELETE, EVENT_CAL_UNDELETE}) {
    eventRecord record = bareRecord(type);
    record.eventLog.calendarLog.calInt1 = 5;
    record.eventLog.calendarLog.calInt2 = 9;
    EXPECT_EQ(fieldsOf(record), " 5 9 \"\" \"\" \"\"\n");
    const OwnedRecord back = readBack(record);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->eventLog.calendarLog.calInt1, 5);
    EXPECT_EQ(back->eventLog.calendarLog.calInt2, 9);
  }
}

TEST_F(DaemonControl, MustHaveThreeStringsInACalendar) {
  EXPECT_EQ(faultOf(line("CAL_NEW", "10.1", "5 9 \"a\" \"b\"")), (Fault{WMQE_BAD_FORMAT, "calStr3"}));
  EXPECT_EQ(faultOf(line("CAL_NEW", "2.1", "5 9 \"a\" \"b\" \"c\"")), Fault{});
}

// -------------------------------------------------------------------------- writers' failures

TEST_F(DaemonControl, CannotWriteLoadIndicesThatAreNotThere) {
  eventRecord record = bareRecord(EVENT_LOAD_INDEX);
  record.eventLog.loadIndexLog.numLoadIndex = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "loadIndexNames"}));
}

TEST_F(DaemonControl, FailsToReachAFullFile) {
  hgHostCtrlLog log{};
  EXPECT_EQ(test::resultOnAFullDevice([&](FILE *full) { return writeHgHostCtrl(full, &log); }), WMQE_SYS);
}

TEST_F(DaemonControl, AsksNobodyForNamesThatStandOnTheLine) {
  EXPECT_EQ(faultOf(line("EVENT_HGHOST_CTRL", "4.01", kGroupHost)), Fault{});
  EXPECT_THAT(users.asked, IsEmpty());
}

}  // namespace
}  // namespace wmq::testing
