// Reading and writing records with each of their allocations failing in turn: they must say so with the right
// number, leave nothing behind, and work again afterwards.
#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "support/asymmetries.h"
#include "support/collected_lines.h"
#include "support/failing_allocations.h"
#include "support/record_lines.h"
#include "support/sampler.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/line_parser.h"
#include "wmq.stream/writer.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

using ::testing::AnyOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Matches;

constexpr uint64_t kRecordsOfType = 8;

OwnedRecord richRecord(int32_t type, uint64_t value) {
  OwnedRecord record = sampleRecord(type, {.value = value, .size = 8});
  avoidAsymmetries(*record);
  return record;
}

// Writers change the record that they are given.
std::string written(eventRecord record) {
  char *text = nullptr;
  size_t length = 0;
  wmq_errno = 0;
  streamOf(record.type).format(&record, &text, &length);
  std::string line(text != nullptr ? text : "", length);
  std::free(text);
  return line;
}

// What a failed allocation gives: 55, but for the array of host usage entries, which has the number of the
// base library, and for what cannot be told from a malformed line.
int expectedError(int32_t type, const std::string &detail) {
  const auto field = [&](const char *name) { return detail.find(std::string(name) + " at") != detail.npos; };
  const bool list = Matches(EndsWith("memory for the list"))(detail);
  if (type == EVENT_JOB_FINISH && list && field("hostRusage")) return WMCE_NO_MEM;
  if (list && (field("pairIds") || field("pairValues") || field("rsvEntries"))) return WMQE_BAD_FORMAT;
  if (Matches(AnyOf(EndsWith("an affinity allocation"), EndsWith("a network allocation")))(detail))
    return WMQE_BAD_FORMAT;
  return WMQE_NO_MEM;
}

class EveryAllocation : public ::testing::TestWithParam<int32_t> {
 protected:
  void SetUp() override {
    if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  }
};

// ----------------------------------------------------------------------------- reading

class EveryAllocationOfReading : public EveryAllocation {
 protected:
  // Reads the line with its first allocation failing, then with its second, until none fails any more.
  void readWithEachFailing(const std::string &line, FailingAllocation::Later later) const {
    for (int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth) + " of " + line);
      const int before = allocationsLeft();
      wmq_errno = 0;
      eventRecord *record = nullptr;
      bool failed = false;
      {
        const FailingAllocation failing(nth, later);
        record = wmq_readstreamlineMT(line.c_str());
        failed = failing.hasFailed();
      }
      ASSERT_EQ(record == nullptr, failed);
      if (!failed) {
        wmq_freekept(record);
        wmq_freelogrec(record);
        ASSERT_EQ(allocationsLeft(), before);
        return;
      }
      ASSERT_EQ(allocationsLeft(), before);
      const int expected = nth == 1 ? WMQE_NO_MEM : expectedError(GetParam(), wmq_errdetail());
      ASSERT_EQ(wmq_errno, expected) << wmq_errdetail();
    }
  }
};

INSTANTIATE_TEST_SUITE_P(OfType, EveryAllocationOfReading, ::testing::ValuesIn(typesWithLine()),
                         [](const auto &tested) { return wmq_typename(tested.param); });

TEST_P(EveryAllocationOfReading, MayFail) {
  for (uint64_t value = 1; value <= kRecordsOfType; ++value)
    readWithEachFailing(written(*richRecord(GetParam(), value)), FailingAllocation::work);
}

TEST_P(EveryAllocationOfReading, MayFailOnLinesOfAllVersions) {
  const std::string name = std::string("\"") + wmq_typename(GetParam()) + "\"";
  for (const std::string &line : goldenLines())
    if (line.starts_with(name) && parse(line) != nullptr) readWithEachFailing(line, FailingAllocation::work);
}

TEST_P(EveryAllocationOfReading, MayBeTheFirstOfManyThatFail) {
  for (uint64_t value = 1; value <= kRecordsOfType; ++value)
    readWithEachFailing(written(*richRecord(GetParam(), value)), FailingAllocation::failToo);
}

// What was borrowed before a failure goes with the next line.
TEST_P(EveryAllocationOfReading, MayFailOnLinesThatAreBorrowed) {
  const auto giveUp = [] { wmq_borrowline("", 0); };
  for (uint64_t value = 1; value <= kRecordsOfType; ++value) {
    const std::string line = written(*richRecord(GetParam(), value));
    bool failed = true;
    for (int nth = 1; failed; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth) + " of " + line);
      giveUp();
      const int before = allocationsLeft();
      wmq_errno = 0;
      const eventRecord *record = nullptr;
      {
        const FailingAllocation failing(nth, FailingAllocation::work);
        record = wmq_borrowline(line.data(), line.size());
        failed = failing.hasFailed();
      }
      ASSERT_EQ(record == nullptr, failed);
      if (failed) {
        const int expected = nth == 1 ? WMQE_NO_MEM : expectedError(GetParam(), wmq_errdetail());
        ASSERT_EQ(wmq_errno, expected) << wmq_errdetail();
      }
      giveUp();
      ASSERT_EQ(allocationsLeft(), before);
    }
  }
}

// A layout's reader leaves what it has read in the record of its caller, who releases it: what release keeps
// by design is all that stays, and it is freed behind that.
TEST_P(EveryAllocationOfReading, LeavesARecordThatCanBeReleased) {
  const bool keeps =
      GetParam() == EVENT_JOB_STATUS || GetParam() == EVENT_JOB_CLEAN || GetParam() == EVENT_JOB_MSG_ACK;
  int mostKept = 0;
  for (uint64_t value = 1; value <= kRecordsOfType; ++value) {
    const std::string line = written(*richRecord(GetParam(), value));
    bool failed = true;
    for (int nth = 1; failed; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth) + " of " + line);
      const int before = allocationsLeft();
      eventRecord record{};
      wmq_errno = 0;
      {
        const FailingAllocation failing(nth);
        parseInto(line.c_str(), line.size(), &record, true);
        failed = failing.hasFailed();
      }
      ASSERT_EQ(wmq_errno != 0, failed);
      freeLogRec(&record);
      mostKept = std::max(mostKept, allocationsLeft() - before);
      wmq_freekept(&record);
      ASSERT_EQ(allocationsLeft(), before);
    }
  }
  EXPECT_EQ(mostKept > 0, keeps) << mostKept;
}

// ----------------------------------------------------------------------------- writing

class EveryAllocationOfWriting : public EveryAllocation {
 protected:
  struct Attempt {
    bool failed = false;
    int result = 0;
    int error = 0;
    int reason = 0;
    std::string added;
    int left = 0;
  };

  EveryAllocationOfWriting() {
    streamParams params{};
    params.*side.path = path.data();
    if (side.open(&params) != 0) throw std::runtime_error("cannot open " + path);
  }
  ~EveryAllocationOfWriting() override { side.close(); }

  // The buffer in which lines are built stays with its thread, and a new thread has none yet.
  Attempt write(eventRecord record, int nth) {
    Attempt attempt;
    std::thread([&] {
      const std::string before = contentOf(path);
      const int left = allocationsLeft();
      wmq_errno = 0;
      {
        const FailingAllocation failing(nth);
        attempt.result = side.write(&record);
        attempt.reason = errno;
        attempt.failed = failing.hasFailed();
      }
      attempt.error = wmq_errno;
      attempt.left = allocationsLeft() - left;
      attempt.added = contentOf(path).substr(before.size());
    }).join();
    return attempt;
  }

  const SideOperations &side = streamOf(GetParam());
  const TemporaryDirectory directory{};
  std::string path = directory / "s";
};

INSTANTIATE_TEST_SUITE_P(OfType, EveryAllocationOfWriting, ::testing::ValuesIn(typesWithLine()),
                         [](const auto &tested) { return wmq_typename(tested.param); });

TEST_P(EveryAllocationOfWriting, MayFail) {
  for (uint64_t value = 1; value <= kRecordsOfType; ++value) {
    const OwnedRecord record = richRecord(GetParam(), value);
    const std::string whole = written(*record);
    ASSERT_FALSE(whole.empty());
    Attempt attempt;
    for (int nth = 1; (attempt = write(*record, nth)).failed; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth) + " of " + whole);
      if (GetParam() == EVENT_JOB_PROV_HOST && attempt.result == 0) {  // by design: a start within ends there
        ASSERT_EQ(attempt.added, whole.substr(0, attempt.added.size() - 1) + '\n');
        ASSERT_LT(attempt.added.size(), whole.size());
        continue;
      }
      ASSERT_EQ(attempt.result, -1);
      ASSERT_EQ(attempt.error, WMQE_SYS);
      ASSERT_EQ(attempt.reason, ENOMEM);
      ASSERT_EQ(attempt.added, whole.substr(0, attempt.added.size())) << "what had been built";
      ASSERT_LT(attempt.added.size(), whole.size());
      ASSERT_EQ(attempt.left, attempt.added.empty() ? 0 : 1) << "the thread keeps its buffer";
      ASSERT_EQ(written(*record), whole) << "the record is as it was";
    }
    EXPECT_EQ(attempt.result, 0);
    EXPECT_EQ(attempt.error, 0);
    EXPECT_EQ(attempt.added, whole);
  }
}

// A record of JOB_PROV_HOST that has a start within forgives this start much, but not a line without memory.
TEST(AStartWithin, IsNotForgivenALineThatFoundNoMemory) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  std::string longText(4000, 'x');
  eventRecord record = bareRecord(EVENT_JOB_PROV_HOST);
  record.eventLog.jobProvHostLog.hasJobStart = 1;
  record.eventLog.jobProvHostLog.jobStart.startStr1 = longText.data();
  std::thread([&record] {
    char *text = nullptr;
    size_t length = 0;
    int result = 0;
    {
      const FailingAllocation second(2);
      result = wmq_formatrecord(&record, &text, &length);
    }
    EXPECT_EQ(result, -1);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_STREQ(wmq_errdetail() + std::string_view(wmq_errdetail()).rfind(':'), ": memory for the line");
    std::free(text);
  }).join();
}

TEST_P(EveryAllocationOfWriting, MayFailWithoutAStream) {
  const OwnedRecord record = richRecord(GetParam(), 1);
  const std::string whole = written(*record);
  bool failed = true;
  for (int nth = 1; failed; ++nth) {
    SCOPED_TRACE(nth);
    std::thread([&] {
      char *text = nullptr;
      size_t length = 0;
      int result = 0;
      eventRecord copy = *record;
      const int before = allocationsLeft();
      wmq_errno = 0;
      {
        const FailingAllocation failing(nth);
        result = side.format(&copy, &text, &length);
        failed = failing.hasFailed();
      }
      EXPECT_LE(allocationsLeft() - before, text == nullptr ? 1 : 2) << "the thread keeps its buffer";
      const std::string line(text != nullptr ? text : "", length);
      std::free(text);
      if (GetParam() == EVENT_JOB_PROV_HOST && failed && result == 0) return;  // as above
      EXPECT_EQ(result, failed ? -1 : 0);
      EXPECT_EQ(wmq_errno != 0, failed);
      EXPECT_THAT(wmq_errno, AnyOf(0, int{WMQE_SYS}, int{WMQE_NO_MEM}));
      EXPECT_EQ(line, whole.substr(0, line.size()));
      EXPECT_EQ(line.size() == whole.size(), !failed);
    }).join();
  }
}

TEST(AnEmbeddedRecord, LeavesItsFileAsItIsWithoutMemoryForALine) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  std::FILE *const file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  std::thread([file] {  // which has no buffer yet
    const oldRmtJobCtrlRecord record{};
    const FailingAllocation failing(1, FailingAllocation::failToo);
    EXPECT_EQ(writeRmtJobCtrlRecord2File(file, &record), WMQE_SYS);
  })
      .join();
  EXPECT_EQ(std::ftell(file), 0);
  std::fclose(file);
}

// Within such a list the buffer of the line has to grow.
void failEachGrowth(const eventRecord &record) {
  const std::string whole = written(record);
  ASSERT_GT(whole.size(), 20'000U);
  bool failed = true;
  int failures = 0;
  for (int nth = 1; failed; ++nth) {
    SCOPED_TRACE(nth);
    std::thread([&] {
      char *text = nullptr;
      size_t length = 0;
      int result = 0;
      eventRecord copy = record;
      {
        const FailingAllocation failing(nth);
        result = wmq_formatrecord(&copy, &text, &length);
        failed = failing.hasFailed();
      }
      const std::string line(text != nullptr ? text : "", length);
      std::free(text);
      EXPECT_EQ(result, failed ? -1 : 0);
      EXPECT_EQ(line, whole.substr(0, line.size()));
      EXPECT_EQ(line.size() == whole.size(), !failed);
      if (wmq_errno == WMQE_SYS) {  // and not the text for the caller failed
        EXPECT_THAT(wmq_errdetail(), HasSubstr("at byte " + std::to_string(line.size()) + ": "));
      }
    }).join();
    failures += failed ? 1 : 0;
  }
  EXPECT_GT(failures, 2);
}

TEST(AListThatOutgrowsItsLine, IsCutWhereNoMemoryWasFound) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  std::string name(50'000, 'h');
  char *hosts[] = {name.data()};
  eventRecord record = bareRecord(EVENT_JOB_FORWARD);
  record.eventLog.jobForwardLog.hosts = hosts;
  record.eventLog.jobForwardLog.numHosts = 1;
  failEachGrowth(record);

  std::string names[] = {std::string(20, 'a'), std::string(20, 'b')};
  std::vector<char *> manyHosts(5000, names[0].data());
  for (size_t i = 0; i < manyHosts.size(); ++i) manyHosts[i] = names[i / 2 % 2].data();  // in runs of two
  record.eventLog.jobForwardLog.hosts = manyHosts.data();
  record.eventLog.jobForwardLog.numHosts = 5000;
  failEachGrowth(record);

  std::vector<int64_t> ids(5000, 1'000'000);
  std::vector<int32_t> values(ids.size());
  oldRmtJobCtrlRecord control{};
  control.numPairs = static_cast<int32_t>(ids.size());
  control.pairIds = ids.data();
  control.pairValues = values.data();
  record = bareRecord(EVENT_JOB_MOVE);
  record.eventLog.jobMoveLog.numRmtJobCtrl = 1;
  record.eventLog.jobMoveLog.rmtJobCtrls = &control;
  failEachGrowth(record);
}

// A list of hosts is compressed in the buffer of its line, for which there is room: where no memory is left
// at all it goes out as short as ever.
TEST(AHostList, IsCompressedWithoutMemory) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  const Names names = {"a", "a", "a", "2*b"};
  eventRecord record = bareRecord(EVENT_JOB_FORWARD);
  record.eventLog.jobForwardLog.hosts = const_cast<Names &>(names);
  record.eventLog.jobForwardLog.numHosts = names.count();
  format(record);  // now this thread has a buffer
  char *text = nullptr;
  size_t length = 0;
  int result = -1;
  {
    const FailingAllocation none(2, FailingAllocation::failToo);  // the first is the text for the caller
    result = wmq_formatrecord(&record, &text, &length);
  }
  ASSERT_EQ(result, 0);
  EXPECT_THAT(std::string(text, length), HasSubstr("\"3*a\" \"1*2*b\""));
  std::free(text);
}

TEST(TheBufferOfAThread, IsGivenBackBehindALongLine) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be counted here";
  std::string command(kKeptCapacity, 'x');
  const eventRecord record = bareRecord(EVENT_JOB_NEW);
  const eventRecord onlyHeader = bareRecord(EVENT_JOB_VACATED);
  written(record);
  const int withBuffer = allocationsLeft();
  eventRecord longRecord = record;
  longRecord.eventLog.jobNewLog.command = command.data();
  written(longRecord);
  EXPECT_EQ(allocationsLeft(), withBuffer - 1);
  for (eventRecord first : {onlyHeader, record}) {
    char *text = nullptr;
    size_t length = 0;
    wmq_errno = 0;
    const FailingAllocation failing(1);
    EXPECT_EQ(wmq_formatrecord(&first, &text, &length), -1);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_EQ(text, nullptr);
  }
  written(record);
  EXPECT_EQ(allocationsLeft(), withBuffer);
}

}  // namespace
}  // namespace wmq::testing
