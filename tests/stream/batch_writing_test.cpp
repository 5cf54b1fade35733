#include <gmock/gmock.h>
#include <rapidcheck.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <vector>

#include "support/resource_limit.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

static int writeCalls = 0;

// Stands in for the C library's: how often it is called is what a batch is about.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" ssize_t write(int descriptor, const void *bytes, size_t length) {
  ++writeCalls;
  return syscall(SYS_write, descriptor, bytes, length);
}

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;

const std::string kEndLine = "\"END_OF_STREAM\" \"10.1\" 1700000500\n";

// A record of which the writer puts a part and then fails.
eventRecord failingRecord() {
  eventRecord record = bareRecord(EVENT_JOB_CLEAN);
  record.eventLog.jobCleanLog.jobId = 5;
  record.eventLog.jobCleanLog.indexRangeCnt = 2;  // but no ranges
  return record;
}
const std::string kFailedPart = "\"JOB_CLEAN\" \"10.1\" 1700000000 5 0 2";

std::vector<eventRecord *> pointersTo(std::vector<eventRecord> &records) {
  std::vector<eventRecord *> pointers;
  pointers.reserve(records.size());
  for (eventRecord &record : records) pointers.push_back(&record);
  return pointers;
}

class WritingABatch : public StreamTest {
 protected:
  // LOG_SWITCH records with the numbers from `first` up to the one before `last`.
  static std::vector<eventRecord> numbered(int32_t first, int32_t last) {
    std::vector<eventRecord> records;
    for (int32_t number = first; number < last; ++number) records.push_back(logSwitch(number));
    return records;
  }

  static std::string lines(int32_t first, int32_t last) {
    std::string text;
    for (int32_t number = first; number < last; ++number) text += logSwitchLine(number);
    return text;
  }

  int writeAll(std::vector<eventRecord> records) {
    const std::vector<eventRecord *> pointers = pointersTo(records);
    wmq_errno = 0;
    writeCalls = 0;
    written = 77;
    return wmq_writestreambatch(pointers.data(), pointers.size(), &written);
  }

  eventRecord longRecord() {
    eventRecord record = bareRecord(EVENT_JOB_NEW);
    record.eventLog.jobNewLog.jobName = longText_.data();
    return record;
  }

  // Every 100th record looks at the size of the file; one that is lost behind the rotation counts as well.
  void lose100thBehindItsRotation(const std::vector<std::vector<eventRecord>> &batches) {
    ASSERT_EQ(open({.size = 1}), 0);
    for (const std::vector<eventRecord> &records : batches) {
      const bool last = &records == &batches.back();
      const ResourceLimit limit(RLIMIT_FSIZE, lines(1, 110).size());
      EXPECT_EQ(writeAll(records), last ? -1 : 0);
      EXPECT_EQ(written, records.size() - (last ? 1 : 0));
    }
    EXPECT_EQ(contentOf(rotated), lines(1, 100) + kEndLine);
    std::remove(rotated.c_str());

    EXPECT_EQ(writeAll(numbered(1, 100)), 0);
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("s")) << "99 are no hundred";
    EXPECT_EQ(writeAll(numbered(100, 101)), 0);
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
  }

  size_t written = 0;
  ScriptedClock clock{1700000500};
  const std::string rotated = path + ".1700000500";

 private:
  std::string longText_ = std::string(300'000, 'x');
};

TEST_F(WritingABatch, AppendsEveryLineInOneWrite) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(writeAll(numbered(1, 1001)), 0);
  EXPECT_EQ(writeCalls, 1);
  EXPECT_EQ(written, 1000U);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(contentOf(path), lines(1, 1001));
}

TEST_F(WritingABatch, OfManyRecordsTakesBoundedMemory) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(writeAll(numbered(1, 3001)), 0);
  EXPECT_EQ(writeCalls, 3);
  EXPECT_EQ(written, 3000U);
  EXPECT_EQ(contentOf(path), lines(1, 3001));

  EXPECT_EQ(writeAll(std::vector(9, longRecord())), 0);
  EXPECT_EQ(writeCalls, 5);
  EXPECT_EQ(written, 9U);
}

TEST_F(WritingABatch, OfNothingSucceeds) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(writeAll({}), 0);
  EXPECT_EQ(written, 0U);
  EXPECT_EQ(wmq_writestreambatch(nullptr, 0, nullptr), 0);
  EXPECT_EQ(contentOf(path), "");
}

TEST_F(WritingABatch, DoesNotNeedToBeAskedHowManyWereWritten) {
  ASSERT_EQ(open(), 0);
  eventRecord record = logSwitch(1);
  eventRecord *const records[] = {&record, &record};
  EXPECT_EQ(wmq_writestreambatch(records, 2, nullptr), 0);
  EXPECT_EQ(contentOf(path), lines(1, 2) + lines(1, 2));
}

TEST_F(WritingABatch, WithoutAStreamSaysNothing) {
  eventRecord record = logSwitch(1);
  eventRecord *const records[] = {&record};
  wmq_errno = 99;
  written = 77;
  EXPECT_EQ(wmq_writestreambatch(records, 1, &written), -1);
  EXPECT_EQ(wmq_errno, 99);
  EXPECT_EQ(written, 0U);
}

TEST_F(WritingABatch, WithoutRecordsNamesTheArgument) {
  ASSERT_EQ(open(), 0);
  wmq_errno = 0;
  written = 77;
  EXPECT_EQ(wmq_writestreambatch(nullptr, 1, &written), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(written, 0U);
  wmq_errno = 0;
  EXPECT_EQ(wmq_writestreambatch(nullptr, 0, &written), 0);
  EXPECT_EQ(wmq_errno, 0);
  wmq_closestream();
  wmq_errno = 99;
  EXPECT_EQ(wmq_writestreambatch(nullptr, 1, &written), -1);
  EXPECT_EQ(wmq_errno, 99);
}

TEST_F(WritingABatch, StopsAtAMissingRecord) {
  ASSERT_EQ(open(), 0);
  eventRecord record = logSwitch(1);
  eventRecord *const records[] = {&record, nullptr, &record};
  wmq_errno = 0;
  EXPECT_EQ(wmq_writestreambatch(records, 3, &written), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  EXPECT_EQ(written, 1U);
  EXPECT_EQ(contentOf(path), lines(1, 2));
}

TEST_F(WritingABatch, CountsAMissingRecordAsASingleWriteDoes) {
  ASSERT_EQ(open({.size = 1}), 0);
  eventRecord record = logSwitch(1);
  eventRecord *const records[] = {&record, nullptr};
  for (int call = 0; call < 49; ++call) EXPECT_EQ(wmq_writestreambatch(records, 2, nullptr), -1);
  EXPECT_EQ(wmq_writestreambatch(records, 1, nullptr), 0);
  EXPECT_FALSE(exists(rotated));
  EXPECT_EQ(wmq_writestreambatch(records + 1, 1, &written), -1);
  EXPECT_TRUE(exists(rotated));
  EXPECT_EQ(contentOf(path), "");
}

TEST_F(WritingABatch, StopsAtARecordOfAnUnknownTypeAndKeepsThoseBeforeIt) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(writeAll({logSwitch(1), bareRecord(60), bareRecord(31), logSwitch(2)}), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
  EXPECT_EQ(written, 2U) << "a record that is dropped counts";
  EXPECT_EQ(contentOf(path), lines(1, 2));
}

TEST_F(WritingABatch, LeavesThePartOfTheRecordThatFailed) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(writeAll({logSwitch(1), failingRecord(), logSwitch(2)}), -1);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_STREQ(wmq_errdetail(), "JOB_CLEAN, field indexRangeStart at byte 35: an array for the count")
      << "the position is one in the line, not in the batch";
  EXPECT_EQ(written, 1U);
  EXPECT_EQ(contentOf(path), lines(1, 2) + kFailedPart);
  EXPECT_EQ(writeAll({logSwitch(2)}), 0);
  EXPECT_EQ(contentOf(path), lines(1, 2) + kFailedPart + lines(2, 3));
}

TEST_F(WritingABatch, TellsHowManyAreWholeWhenTheDiskIsFull) {
  ASSERT_EQ(open(), 0);
  const size_t length = logSwitchLine(1).size();
  for (const size_t extra : {size_t{0}, size_t{1}, length - 1}) {
    SCOPED_TRACE(extra);
    const std::string before = contentOf(path);
    const ResourceLimit limit(RLIMIT_FSIZE, before.size() + 4 * length + extra);
    EXPECT_EQ(writeAll(numbered(1, 10)), -1);
    EXPECT_EQ(errno, EFBIG);
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_EQ(written, 4U);
    EXPECT_EQ(contentOf(path), before + lines(1, 5) + logSwitchLine(5).substr(0, extra));
  }
}

TEST_F(WritingABatch, CountsTheRecordThatFoundTheDiskFull) {
  ASSERT_EQ(open({.size = 1}), 0);
  {
    const ResourceLimit limit(RLIMIT_FSIZE, 4 * logSwitchLine(1).size());
    EXPECT_EQ(writeAll(numbered(1, 10)), -1);
  }
  EXPECT_EQ(writeAll(numbered(6, 100)), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
  EXPECT_EQ(writeAll(numbered(100, 101)), 0);
  EXPECT_EQ(contentOf(rotated), lines(1, 5) + lines(6, 100) + kEndLine);
}

TEST_F(WritingABatch, CountsTheRecordThatIsLostBehindItsRotation) {
  lose100thBehindItsRotation({numbered(1, 100), {longRecord()}});
}

TEST_F(WritingABatch, CountsItsLastRecordThatIsLostBehindItsRotation) {
  std::vector<eventRecord> records = numbered(1, 100);
  records.push_back(longRecord());
  lose100thBehindItsRotation({records});
}

TEST_F(WritingABatch, CountsTheRecordsBehindARotationUpToTheOneThatIsLost) {
  ASSERT_EQ(open({.size = 1}), 0);
  std::vector<eventRecord> records = numbered(1, 103);
  records.push_back(longRecord());
  {
    const ResourceLimit limit(RLIMIT_FSIZE, lines(1, 110).size());
    EXPECT_EQ(writeAll(records), -1);
  }
  EXPECT_EQ(written, 102U);
  std::remove(rotated.c_str());
  EXPECT_EQ(writeAll(numbered(104, 200)), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s"));
  EXPECT_EQ(writeAll(numbered(200, 201)), 0) << "the 200th, the lost one counted";
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
}

TEST_F(WritingABatch, RotatesWhereSingleWritesWould) {
  ASSERT_EQ(open({.size = 1}), 0);
  EXPECT_EQ(writeAll(numbered(1, 151)), 0);
  EXPECT_EQ(written, 150U);
  EXPECT_EQ(writeCalls, 3) << "lines before, the last line of the old file, lines behind";
  EXPECT_EQ(contentOf(rotated), lines(1, 100) + kEndLine);
  EXPECT_EQ(contentOf(path), lines(100, 151));
}

TEST_F(WritingABatch, CountsWhatWaitsForTheSizeOfTheFile) {
  const auto size = static_cast<int32_t>(lines(1, 100).size());
  ASSERT_EQ(open({.size = size + 1}), 0);
  EXPECT_EQ(writeAll(numbered(1, 101)), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s")) << "one byte is missing";
  wmq_closestream();
  std::remove(path.c_str());
  ASSERT_EQ(open({.size = size}), 0);
  EXPECT_EQ(writeAll(numbered(1, 101)), 0);
  EXPECT_EQ(contentOf(rotated), lines(1, 100) + kEndLine);
}

TEST_F(WritingABatch, SaysThatOldFilesWereRemovedOnTheWay) {
  makeFile(directory / "s.100");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(writeAll(numbered(1, 151)), 0);
  EXPECT_EQ(wmq_errno, WMQE_FILES_REMOVED);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
}

TEST_F(WritingABatch, StopsWhereARotationFailsAndKeepsWhatWasBefore) {
  makeFile(path + ".007");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  EXPECT_EQ(writeAll(numbered(1, 151)), -2);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(written, 99U);
  EXPECT_EQ(contentOf(path), lines(1, 100));
  EXPECT_EQ(writeAll(numbered(100, 151)), 0);
  EXPECT_EQ(contentOf(path), lines(1, 151));
}

TEST_F(WritingABatch, StopsWhereARotationLosesTheFile) {
  ASSERT_EQ(open({.size = 1}), 0);
  clock.whenRead = [this] {
    if (clock.readings == 2) std::remove(path.c_str());
  };
  EXPECT_EQ(writeAll(numbered(1, 151)), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(written, 99U);
  EXPECT_EQ(writeAll(numbered(100, 151)), -1);
  EXPECT_EQ(written, 0U);
  wmq_errno = 99;
  EXPECT_EQ(wmq_writestreambatch(nullptr, 1, &written), -1);
  EXPECT_EQ(wmq_errno, 99) << "as without a stream";
}

// --------------------------------------------------------------- batches and single calls

// One call after the other, or all records up to a failure in one batch, and on behind it.
struct Outcome {
  int result;
  int error;
  size_t written;
  bool operator==(const Outcome &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
  return out << outcome.result << " (error " << outcome.error << ") behind " << outcome.written;
}

// What a directory holds, name by name.
std::map<std::string, std::string> filesIn(const std::string &directory) {
  std::map<std::string, std::string> files;
  for (const std::string &name : namesIn(directory)) files[name] = contentOf(directory + '/' + name);
  return files;
}

Outcome writeOneByOne(const std::vector<eventRecord *> &records) {
  bool removed = false;
  for (size_t i = 0; i < records.size(); ++i) {
    const int result = wmq_writestream(records[i]);
    if (result != 0) return {result, wmq_errno, i};
    removed = removed || wmq_errno == WMQE_FILES_REMOVED;
  }
  return {0, removed ? WMQE_FILES_REMOVED : wmq_errno, records.size()};
}

Outcome writeAtOnce(const std::vector<eventRecord *> &records) {
  size_t written = 0;
  const int result = wmq_writestreambatch(records.data(), records.size(), &written);
  return {result, wmq_errno, written};
}

using Write = Outcome(const std::vector<eventRecord *> &);

eventRecord recordOf(int kind, int32_t number) {
  switch (kind) {
    case 0:
      return bareRecord(60);
    case 1:
      return bareRecord(31);
    case 2:
      return failingRecord();
    case 3:
      return bareRecord(EVENT_JOB_VACATED);
    case 4:
      return bareRecord(EVENT_SBD_JOB_STATUS);
    default:
      return logSwitch(number);
  }
}

class Batches : public StreamTest {
 protected:
  // Writes the records, in batches that go on behind each failure, to a stream in a directory of its own.
  std::vector<Outcome> write(Write *writeBatch, std::vector<eventRecord> records, size_t batchSize,
                             const Limits &limits, rlim_t largestFile, const std::string &directoryName) {
    countFromZero();
    mkdir(directoryName.c_str(), 0755);
    makeFile(directoryName + "/s.100", "old\n");
    if (openAs(directoryName + "/s", limits) != 0) return {};
    const ScriptedClock clock(1700000500);
    std::vector<Outcome> outcomes;
    {
      const ResourceLimit limit(RLIMIT_FSIZE, largestFile);
      for (size_t begin = 0; begin < records.size();) {
        std::vector<eventRecord *> batch;
        for (size_t i = begin; i < std::min(begin + batchSize, records.size()); ++i)
          batch.push_back(&records[i]);
        outcomes.push_back(writeBatch(batch));
        begin += outcomes.back().written + (outcomes.back().result != 0 ? 1 : 0);
        // A batch tells of removed files at its end, single calls in their midst; a type without fields
        // takes up what it finds here.
        wmq_errno = 0;
      }
    }
    wmq_closestream();
    return outcomes;
  }
};

TEST_F(Batches, LeaveAndReturnWhatSingleCallsDo) {
  int round = 0;
  EXPECT_TRUE(rc::check([&] {
    const auto numRecords = *rc::gen::inRange(1, 400);
    const auto kinds = *rc::gen::element(8, 30, 400);  // those below 5 are not plain records
    std::vector<eventRecord> records;
    records.reserve(static_cast<size_t>(numRecords));
    for (int32_t i = 0; i < numRecords; ++i) records.push_back(recordOf(*rc::gen::inRange(0, kinds), i));
    const auto batchSize = *rc::gen::element<size_t>(1, 2, 7, 99, 100, 101, 400);
    const Limits limits{.size = *rc::gen::element(1, 1000, 3000, 100000),
                        .oldFiles = *rc::gen::element(0, 1, 2)};
    const auto largestFile = *rc::gen::element<rlim_t>(20, 450, 2000, 1 << 20);

    const std::string one = directory / ("one" + std::to_string(round));
    const std::string many = directory / ("many" + std::to_string(round));
    ++round;
    const auto expected = write(writeOneByOne, records, batchSize, limits, largestFile, one);
    const auto actual = write(writeAtOnce, records, batchSize, limits, largestFile, many);
    RC_ASSERT(actual == expected);
    RC_ASSERT(filesIn(many) == filesIn(one));
  }));
}

// ------------------------------------------------------------------------- the side streams

class SideBatches : public SideStreamTest, public ::testing::WithParamInterface<const SideOperations *> {
 protected:
  SideBatches() : SideStreamTest(*GetParam()) {}

  int writeBatch(std::vector<eventRecord> records) {
    const std::vector<eventRecord *> pointers = pointersTo(records);
    wmq_errno = 0;
    return side.writeBatch(pointers.data(), pointers.size(), &written);
  }

  size_t written = 0;
};

INSTANTIATE_TEST_SUITE_P(Streams, SideBatches, ::testing::Values(&kStatus, &kPendingReasons),
                         [](const auto &kind) { return kind.param->noun; });

TEST_P(SideBatches, CarryTheirOwnTypeAndDropOthers) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(writeBatch({numbered(1), bareRecord(EVENT_JOB_NEW), numbered(2)}), 0);
  EXPECT_EQ(written, 3U);
  EXPECT_EQ(contentOf(path), lineOf(1) + lineOf(2));
}

TEST_P(SideBatches, StopAtATypeThatTheStreamRefuses) {
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(writeBatch({numbered(1), bareRecord(EVENT_JOB_STATUS), numbered(2)}), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_EVENT);
  EXPECT_EQ(written, 1U);
  EXPECT_EQ(contentOf(path), lineOf(1));
}

TEST_P(SideBatches, RotateByACounterOfTheirOwnAndDoNotTellOfRemovedFiles) {
  const ScriptedClock clock(1700000500);
  makeFile(directory / "side.100");
  ASSERT_EQ(open({.size = 1, .oldFiles = 1}), 0);
  std::vector<eventRecord> records;
  std::string before;
  std::string behind;
  for (int32_t number = 1; number <= 120; ++number) {
    records.push_back(numbered(number));
    (number < 100 ? before : behind) += lineOf(number);
  }
  EXPECT_EQ(writeBatch(records), 0);
  EXPECT_EQ(written, 120U);
  EXPECT_EQ(wmq_errno, 0);
  EXPECT_EQ(contentOf(path + ".1700000500"), before + kEndLine);
  EXPECT_EQ(contentOf(path), behind);
  EXPECT_FALSE(exists(directory / "side.100"));
}

TEST_P(SideBatches, WithoutAStreamSayNothing) {
  wmq_errno = 99;
  eventRecord record = numbered(1);
  eventRecord *const records[] = {&record};
  EXPECT_EQ(side.writeBatch(records, 1, &written), -1);
  EXPECT_EQ(wmq_errno, 99);
}

}  // namespace
}  // namespace wmq::testing
