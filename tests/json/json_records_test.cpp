#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "json/structures.h"
#include "wmq/json.h"
#include "wmq/stream.h"

namespace wmq::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Release {
  void operator()(eventRecord *record) const {
    wmq_freekept(record);
    wmq_freelogrec(record);
  }
};
using Record = std::unique_ptr<eventRecord, Release>;

Record recordOf(const std::string &json) { return Record(wmq_json2record(json.data(), json.size())); }

std::string jsonOf(const eventRecord &record, int pretty = 0) {
  char *buffer = nullptr;
  std::size_t capacity = 0;
  const ssize_t length = wmq_record2json(&record, pretty, &buffer, &capacity);
  std::string text = length < 0 ? std::string("error ") + wmq_errname(wmq_errno) : buffer;
  if (length >= 0) {
    EXPECT_EQ(text.size(), static_cast<std::size_t>(length));
    EXPECT_GT(capacity, text.size());
  }
  std::free(buffer);
  return text;
}

// What a text is refused for: the error's name and the message.
std::string faultOf(const std::string &json) {
  wmq_errno = 0;
  if (const Record record = recordOf(json)) return "read";
  return std::string(wmq_errname(wmq_errno)) + ' ' + wmq_jsonerror();
}

std::vector<std::int32_t> typesWithLog() {
  std::vector<std::int32_t> types;
  for (std::int32_t type = 1; type <= WMQ_MAX_EVENT_TYPE; ++type)
    if (wmq_schema(type) != nullptr) types.push_back(type);
  return types;
}

TEST(JsonRecords, GatherInOneText) {
  eventRecord record{};
  record.type = EVENT_MBD_DIE;
  char *buffer = nullptr;
  std::size_t capacity = 0;
  std::size_t length = 0;
  std::string expected;
  for (int pretty : {0, 1, 0}) {
    record.eventTime += 1;
    const ssize_t added = wmq_appendjson(&record, pretty, &buffer, &capacity, &length);
    EXPECT_EQ(static_cast<std::size_t>(added), jsonOf(record, pretty).size());
    expected += jsonOf(record, pretty);
    EXPECT_EQ(length, expected.size());
    EXPECT_EQ(buffer, expected);
  }
  record.type = 99999;
  EXPECT_EQ(wmq_appendjson(&record, 0, &buffer, &capacity, &length), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
  EXPECT_EQ(std::string(buffer, length), expected);
  EXPECT_EQ(wmq_appendjson(&record, 0, &buffer, &capacity, nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  std::free(buffer);
}

// ------------------------------------------------------------------------------ the envelope

TEST(JsonRecords, BeginWithTypeCodeVersionAndTime) {
  eventRecord record{};
  record.type = EVENT_UNFULFILL;
  record.eventTime = 1700000000;
  std::strcpy(record.version, "9.12");
  record.eventLog.unfulfillLog.jobId = 7;
  record.eventLog.unfulfillLog.unfulfillTime = 1LL << 40;
  EXPECT_EQ(jsonOf(record),
            R"({"type":"UNFULFILL","code":9,"version":"9.12","eventTime":1700000000,"eventLog":{"jobId":7,)"
            R"("unfulfillField2":0,"unfulfillField3":0,"unfulfillField4":0,"unfulfillField5":0,)"
            R"("unfulfillTime":1099511627776,"unfulfillField7":0,"unfulfillField8":0}})");
}

TEST(JsonRecords, MayBeIndented) {
  eventRecord record{};
  record.type = EVENT_LOG_SWITCH;
  record.eventLog.logSwitchLog.lastJobId = -3;
  EXPECT_EQ(jsonOf(record, 1),
            "{\n  \"type\": \"LOG_SWITCH\",\n  \"code\": 43,\n  \"version\": \"\",\n  \"eventTime\": 0,\n"
            "  \"eventLog\": {\n    \"lastJobId\": -3\n  }\n}");
}

TEST(JsonRecords, HaveOneMemberAtTheEndOfAStream) {
  const Record record = recordOf(R"({"type":"END_OF_STREAM","eventTime":5,"eventLog":{"endOfStream":1}})");
  ASSERT_NE(record, nullptr) << wmq_jsonerror();
  EXPECT_EQ(record->type, EVENT_END_OF_STREAM);
  EXPECT_EQ(record->eventLog.endOfStream, 1);
  EXPECT_THAT(jsonOf(*record), HasSubstr(R"("eventLog":{"endOfStream":1}})"));
}

TEST(JsonRecords, HaveAnEmptyLogWhereThereIsOnlyAHeader) {
  const Record record = recordOf(R"({"type":"JOB_OCCUPY_REQ","eventLog":{}})");
  ASSERT_NE(record, nullptr) << wmq_jsonerror();
  EXPECT_THAT(jsonOf(*record), HasSubstr(R"("eventLog":{}})"));
  EXPECT_EQ(faultOf(R"({"type":"JOB_OCCUPY_REQ","eventLog":{"jobId":1}})"),
            "WMQE_BAD_FORMAT eventLog.jobId: no such member");
}

TEST(JsonRecords, AreKnownByTypeOrCodeOrBoth) {
  for (const char *json : {R"({"type":"JOB_CLEAN"})", R"({"code":37})", R"({"type":"JOB_CLEAN","code":37})",
                           R"({"eventLog":{"jobId":0},"code":37,"type":"JOB_CLEAN"})"}) {
    const Record record = recordOf(json);
    ASSERT_NE(record, nullptr) << wmq_jsonerror();
    EXPECT_EQ(record->type, EVENT_JOB_CLEAN);
    EXPECT_EQ(record->eventTime, 0);
    EXPECT_STREQ(record->version, "10.1");
  }
}

TEST(JsonRecords, NeedATypeThatExists) {
  EXPECT_EQ(faultOf("{}"), "WMQE_BAD_EVENT neither type nor code is given");
  EXPECT_EQ(faultOf(R"({"type":"JOB_CLEA"})"), "WMQE_BAD_EVENT type: JOB_CLEA is not a type name");
  EXPECT_EQ(faultOf(R"({"type":""})"), "WMQE_BAD_EVENT type:  is not a type name");
  EXPECT_EQ(faultOf(R"({"type":"JOB_CLEAN","code":2})"), "WMQE_BAD_EVENT code: 2, but JOB_CLEAN is 37");
  EXPECT_EQ(faultOf(R"({"code":0})"), "WMQE_BAD_EVENT code: 0 is not a type code");
  EXPECT_EQ(faultOf(R"({"code":79})"), "WMQE_BAD_EVENT code: 79 is not a type code");
  EXPECT_EQ(faultOf(R"({"code":-4294967259})"), "WMQE_BAD_EVENT code: -4294967259 is not a type code");
  EXPECT_EQ(faultOf(R"({"code":"37"})"), "WMQE_BAD_FORMAT code: must be an integer, not a string");
  EXPECT_EQ(faultOf(R"({"type":37})"), "WMQE_BAD_FORMAT type: must be a string, not a number");
}

TEST(JsonRecords, IgnoreTheVersion) {
  const Record record = recordOf(R"({"code":37,"version":"whatever text, however long"})");
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(record->version, "10.1");
  EXPECT_EQ(faultOf(R"({"code":37,"version":10.1})"),
            "WMQE_BAD_FORMAT version: must be a string, not a number");
  EXPECT_EQ(faultOf(R"({"version":[1,[2],{"a":3}],"code":37})"),
            "WMQE_BAD_FORMAT version: must be a string, not an array");
}

TEST(JsonRecords, RefuseOtherMembers) {
  EXPECT_EQ(faultOf(R"({"code":37,"time":1})"), "WMQE_BAD_FORMAT time: no such member");
  EXPECT_EQ(faultOf(R"({"code":37,"eventLog":{"a":[{"b":1}]},"code":37})"),
            "WMQE_BAD_FORMAT code: given twice");
  EXPECT_EQ(faultOf(R"({"code":37,"eventTime":2147483648})"),
            "WMQE_BAD_FORMAT eventTime: 2147483648 is out of range");
  EXPECT_EQ(faultOf(R"({"code":37,"eventLog":null})"),
            "WMQE_BAD_FORMAT eventLog: must be an object, not null");
  EXPECT_EQ(faultOf(R"([1])"), "WMQE_BAD_FORMAT must be an object, not an array");
  EXPECT_EQ(faultOf("1"), "WMQE_BAD_FORMAT must be an object, not a number");
  EXPECT_EQ(faultOf(R"({"code":37)"),
            "WMQE_BAD_FORMAT byte 10: Missing a comma or '}' after an object member.");
  EXPECT_EQ(faultOf(R"({"code":37} {})"),
            "WMQE_BAD_FORMAT byte 12: The document root must not be followed by other values.");
}

TEST(JsonRecords, NameTheFaultByItsPath) {
  EXPECT_EQ(
      faultOf(
          R"({"type":"JOB_NEW","eventLog":{"jobId":1,"strPairs":[{},{"first":"f","flags":3000000000}]}})"),
      "WMQE_BAD_FORMAT eventLog.strPairs[1].flags: 3000000000 is out of range");
  EXPECT_EQ(faultOf(R"({"type":"JOB_NEW","eventLog":{"userName":")" + std::string(60, 'u') + R"("}})"),
            "WMQE_BAD_FORMAT eventLog.userName: a text of 60 bytes, at most 59 fit");
}

TEST(JsonRecords, KeepTheMessageUntilTheNextFailure) {
  faultOf(R"({"code":79})");
  const std::string message = wmq_jsonerror();
  EXPECT_EQ(faultOf(R"({"code":37})"), "read");
  EXPECT_EQ(wmq_jsonerror(), message);
}

TEST(JsonRecords, LeaveTheErrorNumberAloneOnSuccess) {
  wmq_errno = 4711;
  const Record record = recordOf(R"({"code":37})");
  ASSERT_NE(record, nullptr);
  jsonOf(*record);
  EXPECT_EQ(wmq_errno, 4711);
}

// ------------------------------------------------------------------------ codes without a name

TEST(JsonRecords, AreReadByCodeWhereNothingElseIsKnown) {
  const Record record = recordOf(R"({"code":31,"eventTime":3,"eventLog":{}})");
  ASSERT_NE(record, nullptr) << wmq_jsonerror();
  EXPECT_EQ(record->type, 31);
  EXPECT_EQ(faultOf(R"({"code":31,"eventLog":{"text":"t"}})"),
            "WMQE_BAD_FORMAT eventLog.text: no such member");
  EXPECT_EQ(jsonOf(*record), "error WMQE_BAD_EVENT");
}

TEST(JsonRecords, AreWrittenWithoutATypeWhereTheCodeHasNoName) {
  const Record record = recordOf(R"({"code":64,"eventLog":{"text":"t"}})");
  ASSERT_NE(record, nullptr) << wmq_jsonerror();
  EXPECT_EQ(jsonOf(*record), R"({"code":64,"version":"10.1","eventTime":0,"eventLog":{"text":"t"}})");
}

TEST(JsonRecords, CannotBeWrittenWithoutALogStructure) {
  eventRecord record{};
  for (const std::int32_t type : {-1, 0, 31, 79, INT32_MAX}) {
    record.type = type;
    EXPECT_EQ(jsonOf(record), "error WMQE_BAD_EVENT") << type;
  }
}

// ---------------------------------------------------------------------------------- all types

RC_GTEST_PROP(JsonRecords, KeepWhateverARecordOfAnyTypeHolds, ()) {
  const std::int32_t type = *rc::gen::elementOf(typesWithLog());
  Record record(static_cast<eventRecord *>(std::calloc(1, sizeof(eventRecord))));
  record->type = type;
  record->eventTime = arbitraryWhole<std::int32_t>();
  std::strcpy(record->version, "10.1");
  fillStructure(*wmq_schema(type), &record->eventLog);

  const std::string json = jsonOf(*record, *rc::gen::inRange(0, 2));
  const Record again = recordOf(json);
  if (again == nullptr) RC_FAIL(wmq_jsonerror());
  RC_ASSERT(again->type == type);
  RC_ASSERT(again->eventTime == record->eventTime);
  RC_ASSERT(structureDifference(*wmq_schema(type), &record->eventLog, &again->eventLog) == "");
  RC_ASSERT(jsonOf(*again) == jsonOf(*record));
}

TEST(JsonRecords, LeaveAbsentMembersZeroInEveryType) {
  for (const std::int32_t type : typesWithLog()) {
    const Record record = recordOf(R"({"code":)" + std::to_string(type) + "}");
    ASSERT_NE(record, nullptr) << wmq_jsonerror();
    const eventRecord zero{};
    EXPECT_EQ(structureDifference(*wmq_schema(type), &record->eventLog, &zero.eventLog), "") << type;
  }
}

TEST(JsonRecords, ShowAMillionHosts) {
  std::string json = R"({"type":"JOB_START","eventLog":{"execHosts":[)";
  for (int i = 0; i < 1000000; ++i) json += (i > 0 ? ",\"host" : "\"host") + std::to_string(i) + '"';
  json += "]}}";
  const Record record = recordOf(json);
  ASSERT_NE(record, nullptr) << wmq_jsonerror();
  EXPECT_EQ(record->eventLog.jobStartLog.numExHosts, 1000000);
  EXPECT_STREQ(record->eventLog.jobStartLog.execHosts[999999], "host999999");
  EXPECT_THAT(jsonOf(*record), HasSubstr(R"("host999998","host999999"])"));
}

// -------------------------------------------------------------------------- arguments, buffers

TEST(JsonRecords, NeedTheirArguments) {
  eventRecord record{};
  record.type = EVENT_LOG_SWITCH;
  char *buffer = nullptr;
  std::size_t capacity = 0;
  const auto errorOf = [](auto result) { return result < 0 ? std::exchange(wmq_errno, 0) : 0; };
  wmq_errno = 0;
  EXPECT_EQ(errorOf(wmq_record2json(nullptr, 0, &buffer, &capacity)), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(wmq_record2json(&record, 0, nullptr, &capacity)), WMQE_BAD_ARG);
  EXPECT_EQ(errorOf(wmq_record2json(&record, 0, &buffer, nullptr)), WMQE_BAD_ARG);
  EXPECT_EQ(wmq_json2record(nullptr, 0), nullptr);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

TEST(JsonRecords, AreWrittenIntoTheBufferOfTheLastOne) {
  const Record big =
      recordOf(R"({"type":"JOB_START","eventLog":{"startStr1":")" + std::string(5000, 'x') + "\"}}");
  eventRecord small{};
  small.type = EVENT_LOG_SWITCH;

  char *buffer = nullptr;
  std::size_t capacity = 12345;  // of no buffer: without a meaning
  ASSERT_GT(wmq_record2json(big.get(), 0, &buffer, &capacity), 5000);
  const char *const first = buffer;
  const std::size_t grown = capacity;
  const ssize_t length = wmq_record2json(&small, 0, &buffer, &capacity);
  EXPECT_EQ(buffer, first);
  EXPECT_EQ(capacity, grown);
  EXPECT_EQ(std::strlen(buffer), static_cast<std::size_t>(length));
  EXPECT_THAT(buffer, StartsWith(R"({"type":"LOG_SWITCH")"));
  std::free(buffer);
}

TEST(JsonRecords, NeedNoNulBehindTheirText) {
  const std::string json = R"({"code":37})";
  const std::vector<char> exact(json.begin(), json.end());
  const Record record(wmq_json2record(exact.data(), exact.size()));
  EXPECT_NE(record, nullptr) << wmq_jsonerror();
}

TEST(JsonRecords, MayBeConvertedByManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  std::vector<std::string> results(8);
  for (std::size_t t = 0; t < results.size(); ++t)
    threads.emplace_back([&result = results[t], t] {
      const std::string json = R"({"code":2,"eventLog":{"startStr1":")" + std::string(t * 1000, 'x') + "\"}}";
      std::string expected;
      for (int i = 0; i < 200; ++i) {
        const Record record = recordOf(json);
        const std::string shown = record == nullptr ? wmq_jsonerror() : jsonOf(*record);
        if (expected.empty()) expected = shown;
        if (shown != expected || shown.find(std::string(t * 1000, 'x')) == std::string::npos) result += shown;
        const std::string bad = "{\"code\":" + std::to_string(100 + t) + "}";
        if (recordOf(bad) != nullptr || std::string(wmq_jsonerror()).find(std::to_string(100 + t)) != 6)
          result += wmq_jsonerror();
      }
    });
  for (std::thread &thread : threads) thread.join();
  for (const std::string &result : results) EXPECT_EQ(result, "");
}

}  // namespace
}  // namespace wmq::testing
