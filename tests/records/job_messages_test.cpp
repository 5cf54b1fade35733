// JOB_MSG, JOB_MSG_ACK, JOB_EXT_MSG, JOB_ATTA_DATA and JOB_CHUNK.
#include "wmq/records/job_messages.h"

#include <gmock/gmock.h>

#include <cstring>

#include "support/parsed.h"
#include "support/record_lines.h"
#include "support/user_directory.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const Fields kMessage = {{"numbers", "1 2 3 4"},
                         {"msgStr1", "\"s1\""},
                         {"msgStr2", "\"s2\""},
                         {"msgStr3", "\"s3\""},
                         {"msgInt5", "5"}};
const Fields kExternal = {{"numbers", "1 2 3 7 9000000000001 5 6"},
                          {"extMsgStr", "\"text\""},
                          {"userName", "\"anna\""},
                          {"extMsgInt5", "8"},
                          {"extMsgInt6", "9"}};
const Fields kChunk = {{"chunkIds", "3 9000000000001 -2 3"}, {"hosts", "2 \"2*h\" \"i\""}, {"chunkInt", "5"}};

// -------------------------------------------------------------------- JOB_MSG, JOB_MSG_ACK

TEST(JobMessages, HaveTheirLastNumberAbove3_0Only) {
  for (const char *type : {"JOB_MSG", "JOB_MSG_ACK"}) {
    EXPECT_EQ(parsed(line(type, "3.0", kMessage))->eventLog.jobMsgLog.msgInt5, 0) << type;
    EXPECT_EQ(parsed(line(type, "3.01", kMessage))->eventLog.jobMsgLog.msgInt5, 5) << type;
    EXPECT_EQ(faultOf(line(type, "3.01", kMessage.upTo("msgStr3"))), (Fault{WMQE_BAD_FORMAT, "msgInt5"}))
        << type;
    EXPECT_EQ(faultOf(line(type, "10.1", kMessage.with("numbers", "1 2 3"))),
              (Fault{WMQE_BAD_FORMAT, "msgInt4"}))
        << type;
  }
}

TEST(JobMessages, AreWrittenAsTheyWereRead) {
  for (const char *type : {"JOB_MSG", "JOB_MSG_ACK"}) {
    const OwnedRecord record = parse(line(type, "10.1", kMessage));
    ASSERT_NE(record, nullptr) << type;
    EXPECT_EQ(fieldsOf(*record), ' ' + kMessage.text() + '\n') << type;
  }
}

TEST(JobMessages, KeepTheStringsOfAnAcknowledgementOnly) {
  const OwnedRecord message = parse(line("JOB_MSG", "10.1", kMessage));
  const OwnedRecord acknowledgement = parse(line("JOB_MSG_ACK", "10.1", kMessage));
  ASSERT_TRUE(message != nullptr && acknowledgement != nullptr);
  for (int time = 0; time < 2; ++time) {
    freeLogRec(message.get());
    freeLogRec(acknowledgement.get());
  }
  EXPECT_EQ(message->eventLog.jobMsgLog.msgStr1, nullptr);
  EXPECT_EQ(message->eventLog.jobMsgLog.msgStr3, nullptr);
  const jobMsgAckLog &log = acknowledgement->eventLog.jobMsgAckLog;
  EXPECT_STREQ(log.msgStr1, "s1");
  EXPECT_STREQ(log.msgStr2, "s2");
  EXPECT_STREQ(log.msgStr3, "s3");
}

TEST(JobMessages, GiveTheKeptStringsToWmqFreekept) {
  const OwnedRecord record = parse(line("JOB_MSG_ACK", "10.1", kMessage));
  ASSERT_NE(record, nullptr);
  wmq_freekept(record.get());
  const jobMsgAckLog &log = record->eventLog.jobMsgAckLog;
  EXPECT_EQ(log.msgStr1, nullptr);
  EXPECT_EQ(log.msgStr2, nullptr);
  EXPECT_EQ(log.msgStr3, nullptr);
}

// ------------------------------------------------------------------------------- JOB_EXT_MSG

class JobExternalMessage : public ::testing::Test {
 protected:
  int read(const std::string &fields, float version) {
    wmq_setlineversion(version);
    return readJobExternalMsg(fields.c_str(), &log);
  }

  UserDirectory users{{{7, "looked up"}}};
  OwnedRecord record = emptyRecord(EVENT_JOB_EXT_MSG);
  jobExternalMsgLog &log = record->eventLog.jobExternalMsgLog;
};

TEST_F(JobExternalMessage, Of4_0LooksItsUserUpAndLeavesItsFifthNumberAsHandedIn) {
  log.extMsgInt5 = 77;
  EXPECT_EQ(read(kExternal.upTo("extMsgStr"), 4.0F), 0);
  EXPECT_STREQ(log.userName, "looked up");
  EXPECT_THAT(users.asked, ElementsAre(7));
  EXPECT_EQ(log.extMsgInt5, 77);
  EXPECT_EQ(log.extMsgInt6, -1);
}

TEST_F(JobExternalMessage, Before9_1LeavesItsFifthNumberAsHandedIn) {
  log.extMsgInt5 = 77;
  EXPECT_EQ(read(kExternal.upTo("userName"), 9.0F), 0);
  EXPECT_STREQ(log.userName, "anna");
  EXPECT_EQ(log.extMsgInt5, 77);
}

TEST_F(JobExternalMessage, OfTheCurrentVersionCarriesAllItsFields) {
  EXPECT_EQ(read(kExternal, 10.1F), 0);
  EXPECT_STREQ(log.userName, "anna");
  EXPECT_THAT(users.asked, IsEmpty());
  EXPECT_EQ(log.extMsgInt5, 8);
  EXPECT_EQ(log.extMsgInt6, 9);
  EXPECT_EQ(log.extMsgLong1, 9000000000001);
  EXPECT_EQ(fieldsOf(*record), ' ' + kExternal.text() + '\n');
}

TEST_F(JobExternalMessage, HasItsFifthNumberFrom9_1AndItsSixthFrom9_11On) {
  EXPECT_EQ(faultOf(line("JOB_EXT_MSG", "9.1", kExternal.upTo("userName"))),
            (Fault{WMQE_BAD_FORMAT, "extMsgInt5"}));
  EXPECT_EQ(faultOf(line("JOB_EXT_MSG", "9.1", kExternal.upTo("extMsgInt5"))), Fault{});
  EXPECT_EQ(faultOf(line("JOB_EXT_MSG", "9.11", kExternal.upTo("extMsgInt5"))),
            (Fault{WMQE_BAD_FORMAT, "extMsgInt6"}));
}

TEST_F(JobExternalMessage, LogsAFailedLookupUnderTheNameOfItsReader) {
  users.names.clear();
  EXPECT_EQ(read(kExternal.upTo("extMsgStr"), 4.0F), WMQE_NO_USER);
  EXPECT_THAT(users.messages, ElementsAre(users.failureOf("readJobExternalMsg")));
}

TEST_F(JobExternalMessage, CutsItsSecondWideNumberTo32BitsAndKeepsTheFirst) {
  std::strcpy(log.userName, "anna");
  log.extMsgLong1 = (int64_t{1} << 32) + 5;
  log.extMsgLong2 = (int64_t{1} << 32) + 5;
  EXPECT_THAT(fieldsOf(*record), StartsWith(" 0 0 0 0 4294967301 5 0 "));
  const OwnedRecord back = readBack(*record);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->eventLog.jobExternalMsgLog.extMsgLong1, (int64_t{1} << 32) + 5);
  EXPECT_EQ(back->eventLog.jobExternalMsgLog.extMsgLong2, 5);
  EXPECT_EQ(read(kExternal.with("numbers", "1 2 3 7 0 4294967301 6"), 10.1F), 0);
  EXPECT_EQ(log.extMsgLong2, 5);
}

// ----------------------------------------------------------------------------- JOB_ATTA_DATA

TEST(JobAttachedData, HasFiveNumbersAndAStringInEveryVersion) {
  for (const char *version : {"2.1", "10.1"}) {
    const OwnedRecord record = parse(line("JOB_ATTA_DATA", version, "1 2 3 9000000000004 5 \"data\""));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_EQ(record->eventLog.jobAttaDataLog.attaLong, 9000000000004);
    EXPECT_EQ(fieldsOf(*record), " 1 2 3 9000000000004 5 \"data\"\n");
  }
  EXPECT_EQ(faultOf(line("JOB_ATTA_DATA", "2.1", "1 2 3 4 \"data\"")), (Fault{WMQE_BAD_FORMAT, "attaInt4"}));
  EXPECT_EQ(faultOf(line("JOB_ATTA_DATA", "2.1", "1 2 3 4 5")), (Fault{WMQE_BAD_FORMAT, "attaStr"}));
}

// --------------------------------------------------------------------------------- JOB_CHUNK

class JobChunk : public ::testing::Test {
 protected:
  int read(const std::string &fields, float version = 10.1F) {
    wmq_setlineversion(version);
    return readJobChunk(fields.c_str(), &log);
  }

  OwnedRecord record = emptyRecord(EVENT_JOB_CHUNK);
  jobChunkLog &log = record->eventLog.jobChunkLog;
};

TEST_F(JobChunk, HasItsIdsInOrderAndItsHostsExpanded) {
  EXPECT_EQ(read(kChunk), 0);
  EXPECT_THAT(std::vector<int64_t>(log.chunkIds, log.chunkIds + log.numChunkIds),
              ElementsAre(9000000000001, -2, 3));
  EXPECT_EQ(log.numHosts, 3);
  EXPECT_THAT(listed(3, log.hosts), ElementsAre("h", "h", "i"));
  EXPECT_EQ(fieldsOf(*record), ' ' + kChunk.text() + '\n');
}

TEST_F(JobChunk, HoldsItsIdsBackUntilAllOfThemConvert) {
  EXPECT_EQ(read("3 1 two 3 0 0"), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.chunkIds, nullptr);
  EXPECT_EQ(log.hosts, nullptr);
}

TEST_F(JobChunk, HasAnArrayEvenForNoHosts) {
  EXPECT_EQ(read("0 0 5"), 0);
  EXPECT_EQ(log.chunkIds, nullptr);
  EXPECT_EQ(log.numHosts, 0);
  EXPECT_NE(log.hosts, nullptr);
  EXPECT_EQ(log.chunkInt, 5);
}

TEST_F(JobChunk, CutsTheCountToTheHostsThatWereRead) {
  EXPECT_EQ(read("1 7 3 \"h\" \"i\" none"), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.numHosts, 2);
  EXPECT_THAT(listed(2, log.hosts), ElementsAre("h", "i"));
}

TEST_F(JobChunk, HasItsLastNumberFrom9_11On) {
  EXPECT_EQ(read(kChunk.upTo("hosts"), 9.1F), 0);
  EXPECT_EQ(log.chunkInt, -1);
  EXPECT_EQ(faultOf(line("JOB_CHUNK", "9.11", kChunk.upTo("hosts"))), (Fault{WMQE_BAD_FORMAT, "chunkInt"}));
}

TEST_F(JobChunk, CannotBeWrittenWithoutItsLists) {
  log.numChunkIds = 1;
  EXPECT_EQ(faultOf(*record), (Fault{WMQE_SYS, "chunkIds"}));
  log.numChunkIds = 0;
  log.numHosts = 1;
  EXPECT_EQ(faultOf(*record), (Fault{WMQE_SYS, "hosts"}));
  log.numHosts = 0;
}

}  // namespace
}  // namespace wmq::testing
