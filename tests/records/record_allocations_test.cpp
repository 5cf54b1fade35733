// Reading and writing records with each of their allocations failing in turn: they must say so, leave nothing
// behind, and work again afterwards.
#include <gmock/gmock.h>

#include <map>
#include <set>
#include <string>
#include <thread>

#include "support/asymmetries.h"
#include "support/failing_allocations.h"
#include "support/record_lines.h"
#include "support/sampler.h"
#include "wmq/wmq.h"

#if WMQ_TESTS_CAN_FAIL_ALLOCATIONS

namespace wmq::testing {
namespace {

using ::testing::AnyOf;

// What a failed allocation gives beside WMQE_NO_MEM: a host usage array has the number of the base library,
// an allocation without a parsed form is malformed, and so are entries that two kinds of records cannot hold.
const std::map<int32_t, std::set<int>> kOtherNumbers = {
    {EVENT_JOB_FINISH, {WMCE_NO_MEM}},
    {EVENT_JOB_START, {WMQE_BAD_FORMAT}},
    {EVENT_PRE_EXEC_START, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_ROUTE, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_PROVISION_START, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_PROV_HOST, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_FINISH2, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_MODIFY2, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_MOVE, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_SWITCH, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_SWITCH2, {WMQE_BAD_FORMAT}},
    {EVENT_JOB_FORCE, {WMQE_BAD_FORMAT}},
    {EVENT_ADRSV_FINISH, {WMQE_BAD_FORMAT}},
};

std::string written(eventRecord &record) {
  if (record.type != EVENT_JOB_STATUS2 && record.type != EVENT_JOB_PENDING_REASONS) return format(record);
  char *text = nullptr;
  size_t length = 0;
  const auto format = record.type == EVENT_JOB_STATUS2 ? wmq_formatstatus : wmq_formatpendingreasons;
  format(&record, &text, &length);
  std::string line(text != nullptr ? text : "", length);
  std::free(text);
  return line;
}

class EveryAllocation : public ::testing::TestWithParam<int32_t> {
 protected:
  void SetUp() override {
    if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  }

  // Reads the line with its first allocation failing, then with its second, until none fails any more.
  // Returns the error numbers that this gave.
  static std::set<int> errorsOf(const std::string &line) {
    std::set<int> errors;
    for (int nth = 1;; ++nth) {
      const int before = allocationsLeft;
      wmq_errno = 0;
      eventRecord *record = nullptr;
      bool failed = false;
      {
        const FailingAllocation failing(nth);
        record = wmq_readstreamlineMT(line.c_str());
        failed = failing.hasFailed();
      }
      EXPECT_EQ(record == nullptr, failed) << "allocation " << nth;
      if (record == nullptr) errors.insert(wmq_errno);
      const OwnedRecord released(record);
      if (!failed) return errors;
      EXPECT_EQ(allocationsLeft, before) << "allocation " << nth << " of " << line;
    }
  }
};

INSTANTIATE_TEST_SUITE_P(OfType, EveryAllocation, ::testing::ValuesIn(typesWithLine()),
                         [](const auto &tested) { return wmq_typename(tested.param); });

TEST_P(EveryAllocation, MayFailWhenALineIsRead) {
  std::set<int> expected = {WMQE_NO_MEM};
  if (const auto others = kOtherNumbers.find(GetParam()); others != kOtherNumbers.end())
    expected.insert(others->second.begin(), others->second.end());

  std::set<int> errors;
  for (uint64_t value = 1; value <= 10; ++value) {
    const OwnedRecord record = sampleRecord(GetParam(), {.value = value});
    avoidAsymmetries(*record);
    const int before = allocationsLeft;
    {
      eventRecord copy = *record;
      const std::string line = written(copy);
      errors.merge(errorsOf(line));
      EXPECT_NE(parse(line), nullptr) << "a later reading works";
    }
    EXPECT_EQ(allocationsLeft, before);
  }
  EXPECT_EQ(errors, expected);
}

// The buffer in which lines are built stays with its thread: a new thread has none yet.
TEST(EveryAllocationOfWriting, MayFail) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  std::string longText(20000, 'x');
  eventRecord record = bareRecord(EVENT_GRP_STATUS);
  record.eventLog.jgrpStatusLog.grpStatusStr = longText.data();
  const std::string whole = format(record);

  bool failed = true;
  for (int nth = 1; failed; ++nth) {
    std::thread([&] {
      char *text = nullptr;
      size_t length = 0;
      int result = 0;
      wmq_errno = 0;
      {
        const FailingAllocation failing(nth);
        result = wmq_formatrecord(&record, &text, &length);
        failed = failing.hasFailed();
      }
      EXPECT_EQ(result, failed ? -1 : 0) << "allocation " << nth;
      if (failed) {
        EXPECT_THAT(wmq_errno, AnyOf(int{WMQE_SYS}, int{WMQE_NO_MEM})) << "allocation " << nth;
      } else {
        EXPECT_EQ(wmq_errno, 0);
      }
      const std::string line(text != nullptr ? text : "", length);
      EXPECT_EQ(line, whole.substr(0, line.size()));
      EXPECT_EQ(line.size() == whole.size(), !failed);
      std::free(text);
    }).join();
  }
}

}  // namespace
}  // namespace wmq::testing

#endif
