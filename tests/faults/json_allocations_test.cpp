// JSON in both directions with each of its allocations failing in turn: it must say so, leave nothing behind,
// and work again afterwards.
#include <gmock/gmock.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "support/failing_allocations.h"
#include "support/record_text.h"
#include "support/sampler.h"
#include "wmq/json.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

using ::testing::HasSubstr;

class JsonAllocations : public ::testing::Test {
 protected:
  static constexpr uint64_t kRecords = 3;

  void SetUp() override {
    if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  }

  // False, and nothing is left, when the allocation of that number was to be had and failed.
  static bool readWithFailing(int nth, const std::string &json, const std::string &expected) {
    wmq_errno = 0;
    OwnedRecord record;
    bool failed = false;
    {
      const FailingAllocation failing(nth);
      record.reset(wmq_json2record(json.data(), json.size()));
      failed = failing.hasFailed();
    }
    EXPECT_EQ(record == nullptr, failed);
    if (failed) {
      EXPECT_EQ(wmq_errno, WMQE_NO_MEM) << wmq_jsonerror();
      EXPECT_THAT(wmq_jsonerror(), HasSubstr("out of memory"));
    } else {
      EXPECT_EQ(jsonOf(*record), expected);
    }
    return !failed;
  }

  // Each allocation fails in turn, until there is none left to fail.
  static void expectWritingToFail(const eventRecord &record, const std::string &expected) {
    bool failed = true;
    for (int nth = 1; failed; ++nth) {
      const int before = allocationsLeft();
      char *buffer = nullptr;
      size_t capacity = 0;
      ssize_t length = 0;
      wmq_errno = 0;
      {
        const FailingAllocation failing(nth);
        length = wmq_record2json(&record, 0, &buffer, &capacity);
        failed = failing.hasFailed();
      }
      ASSERT_EQ(length < 0, failed) << "allocation " << nth;
      if (failed) {
        ASSERT_EQ(wmq_errno, WMQE_NO_MEM);
      } else {
        ASSERT_EQ(std::string(buffer, static_cast<size_t>(length)), expected);
      }
      std::free(buffer);
      ASSERT_EQ(allocationsLeft(), before) << "allocation " << nth;
    }
  }
};

class EveryAllocationOfJson : public JsonAllocations, public ::testing::WithParamInterface<int32_t> {};

INSTANTIATE_TEST_SUITE_P(OfCode, EveryAllocationOfJson, ::testing::ValuesIn(typesWithSchema()),
                         [](const auto &tested) { return std::to_string(tested.param); });

TEST_P(EveryAllocationOfJson, MayFailWhileARecordIsRead) {
  for (uint64_t value = 1; value <= kRecords; ++value) {
    const std::string json = jsonOf(*sampleRecord(GetParam(), {.value = value, .size = 6}));
    SCOPED_TRACE(json);
    // What the thread keeps for the next text is as large as it needs to be from now on.
    const OwnedRecord first(wmq_json2record(json.data(), json.size()));
    ASSERT_NE(first, nullptr);
    const std::string expected = jsonOf(*first);
    const int before = allocationsLeft();
    for (int nth = 1; !readWithFailing(nth, json, expected); ++nth)
      ASSERT_EQ(allocationsLeft(), before) << "allocation " << nth;
    ASSERT_EQ(allocationsLeft(), before);
  }
}

TEST_F(JsonAllocations, MayFailWhileAllocationsAreReadAndWritten) {
  for (const char *members : {R"("affinityAllocInfo":"","networkAllocInfo":"")",
                              R"("affinityAllocInfo":"h:0-3,8;i:","networkAllocInfo":"a=1;b=c=2")"}) {
    const std::string json = R"({"type":"JOB_FINISH2","eventLog":{)" + std::string(members) + "}}";
    const OwnedRecord record(wmq_json2record(json.data(), json.size()));
    ASSERT_NE(record, nullptr) << wmq_jsonerror();
    const std::string expected = jsonOf(*record);
    const int before = allocationsLeft();
    for (int nth = 1; !readWithFailing(nth, json, expected); ++nth)
      ASSERT_EQ(allocationsLeft(), before) << "allocation " << nth;
    expectWritingToFail(*record, expected);
  }
}

TEST_P(EveryAllocationOfJson, MayFailInAThreadThatReadsItsFirstRecord) {
  const std::string json = jsonOf(*sampleRecord(GetParam(), {.value = 1, .size = 6}));
  const OwnedRecord record(wmq_json2record(json.data(), json.size()));
  const std::string expected = jsonOf(*record);
  bool succeeded = false;
  for (int nth = 1; !succeeded && !HasFailure(); ++nth)
    std::thread([&] { succeeded = readWithFailing(nth, json, expected); }).join();
}

// There the first array of a record makes what all of them are noted in.
TEST_F(JsonAllocations, MayFailInAThreadWhoseFirstArrayIsAnAllocation) {
  const std::string json = R"({"type":"JOB_FINISH2","eventLog":{"networkAllocInfo":"a=1;b=c=2"}})";
  const OwnedRecord record(wmq_json2record(json.data(), json.size()));
  ASSERT_NE(record, nullptr) << wmq_jsonerror();
  const std::string expected = jsonOf(*record);
  bool succeeded = false;
  for (int nth = 1; !succeeded && !HasFailure(); ++nth)
    std::thread([&] { succeeded = readWithFailing(nth, json, expected); }).join();
}

TEST_P(EveryAllocationOfJson, MayFailWhileARecordIsWritten) {
  for (uint64_t value = 1; value <= kRecords; ++value) {
    const OwnedRecord record = sampleRecord(GetParam(), {.value = value, .size = 6});
    const std::string expected = jsonOf(*record);
    expectWritingToFail(*record, expected);
  }
}

}  // namespace
}  // namespace wmq::testing
