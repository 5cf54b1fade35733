// The remote job control records, by themselves.
#include "wmq/records/remote_control.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

#include "companion/written_text.h"
#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using wmq::test::resultOnAFullDevice;
using wmq::test::writtenBy;

// A record read from a text, and how far that went.
template <typename Record, int Read(char **, Record *), void Free(Record *)>
class ReadRecord {
 public:
  explicit ReadRecord(const std::string &text, const Record &before = {}) : record(before), text_(text) {
    char *position = text_.data();
    result = Read(&position, &record);
    rest = position;
  }
  ~ReadRecord() { Free(&record); }
  ReadRecord(const ReadRecord &) = delete;
  ReadRecord &operator=(const ReadRecord &) = delete;

  Record record;
  int result;
  std::string rest;  // of the text, from the position reached

 private:
  std::string text_;
};

using ReadOld = ReadRecord<oldRmtJobCtrlRecord, readRmtJobCtrlRecordFromLine, freeRmtJobCtrlRecord>;
using ReadNew = ReadRecord<newRmtJobCtrlRecord, readNewRmtJobCtrlRecordFromLine, freeRmtJobCtrlRecord2>;

std::string written(const oldRmtJobCtrlRecord &record) {
  return writtenBy([&](FILE *file) { EXPECT_EQ(writeRmtJobCtrlRecord2File(file, &record), 0); });
}

std::string written(const newRmtJobCtrlRecord &record) {
  return writtenBy([&](FILE *file) { EXPECT_EQ(writeNewRmtJobCtrlRecord2File(file, &record), 0); });
}

// ----------------------------------------------------------------------------- old records

constexpr char kOld[] = R"( "first" "second" 2 5000000000 -6 3 7 8 -9000000000 10 11 -12)";

TEST(OldRemoteControl, ReadsAndWritesTwoListsOfNumbersBehindTwoNames) {
  const ReadOld old(kOld);
  ASSERT_EQ(old.result, 0);
  EXPECT_STREQ(old.record.ctrlName1, "first");
  EXPECT_STREQ(old.record.ctrlName2, "second");
  EXPECT_THAT(std::vector<int64_t>(old.record.ids, old.record.ids + old.record.numIds),
              ElementsAre(5000000000, -6));
  ASSERT_EQ(old.record.numPairs, 3);
  EXPECT_THAT(std::vector<int64_t>(old.record.pairIds, old.record.pairIds + 3),
              ElementsAre(7, -9000000000, 11));
  EXPECT_THAT(std::vector<int32_t>(old.record.pairValues, old.record.pairValues + 3),
              ElementsAre(8, 10, -12));
  EXPECT_EQ(written(old.record), kOld);
}

TEST(OldRemoteControl, WithoutPairsEndsIn0AndHasNeitherArray) {
  const ReadOld old(R"( "a" "b" 1 5 0)");
  ASSERT_EQ(old.result, 0);
  EXPECT_EQ(old.record.numPairs, 0);
  EXPECT_EQ(old.record.pairIds, nullptr);
  EXPECT_EQ(old.record.pairValues, nullptr);
  EXPECT_EQ(written(old.record), R"( "a" "b" 1 5 0)");
}

TEST(OldRemoteControl, HasNoArraysForCountsBelow1) {
  for (const char *counts : {"0 0", "-1 -2"}) {
    const ReadOld old(std::string(R"( "a" "b" )") + counts);
    EXPECT_EQ(old.result, 0) << counts;
    EXPECT_EQ(old.record.ids, nullptr) << counts;
    EXPECT_EQ(old.record.pairIds, nullptr) << counts;
    EXPECT_EQ(old.record.pairValues, nullptr) << counts;
  }
}

TEST(OldRemoteControl, SetsArraysOfCountsBelow1ToNull) {
  int64_t wide = 0;
  int32_t narrow = 0;
  std::string text = R"( "a" "b" 0 0)";
  char *position = text.data();
  oldRmtJobCtrlRecord record{
      .numIds = 7, .ids = &wide, .numPairs = 8, .pairIds = &wide, .pairValues = &narrow};
  EXPECT_EQ(readRmtJobCtrlRecordFromLine(&position, &record), 0);
  EXPECT_EQ(record.ids, nullptr);
  EXPECT_EQ(record.pairIds, nullptr);
  EXPECT_EQ(record.pairValues, nullptr);
  std::free(record.ctrlName1);
  std::free(record.ctrlName2);
}

TEST(OldRemoteControl, LeavesThePositionBehindItself) {
  EXPECT_EQ(ReadOld(std::string(kOld) + " 77 more").rest, "77 more");
  EXPECT_EQ(ReadOld(R"("a" "b" 0 0 "the next")").rest, "\"the next\"");
  EXPECT_EQ(ReadOld(R"("a" "b" 0 0)").rest, "");
}

TEST(OldRemoteControl, LeavesThePositionWhereItStoppedBehindItsNames) {
  const ReadOld old(R"( "a" "b" 2 5 six 0)");
  EXPECT_EQ(old.result, WMQE_BAD_FORMAT);
  EXPECT_EQ(old.rest, "six 0");
}

TEST(OldRemoteControl, LeavesThePositionBeforeAPairThatDoesNotConvert) {
  EXPECT_EQ(ReadOld(R"( "a" "b" 1 5 2 7 8 9 ten)").rest, "9 ten");
}

TEST(RemoteControl, IsRefusedWhereSomethingIsMissing) {
  char line[] = " \"a\" \"b\" 0 0";
  char *position = line;
  char *nowhere = nullptr;
  oldRmtJobCtrlRecord old{};
  newRmtJobCtrlRecord fresh{};
  EXPECT_EQ(readRmtJobCtrlRecordFromLine(nullptr, &old), WMQE_BAD_ARG);
  EXPECT_EQ(readRmtJobCtrlRecordFromLine(&nowhere, &old), WMQE_BAD_ARG);
  EXPECT_EQ(readRmtJobCtrlRecordFromLine(&position, nullptr), WMQE_BAD_ARG);
  EXPECT_EQ(readNewRmtJobCtrlRecordFromLine(nullptr, &fresh), WMQE_BAD_ARG);
  EXPECT_EQ(readNewRmtJobCtrlRecordFromLine(&nowhere, &fresh), WMQE_BAD_ARG);
  EXPECT_EQ(readNewRmtJobCtrlRecordFromLine(&position, nullptr), WMQE_BAD_ARG);
  EXPECT_EQ(position, line);
  EXPECT_EQ(writeRmtJobCtrlRecord2File(nullptr, &old), WMQE_BAD_ARG);
  EXPECT_EQ(writeRmtJobCtrlRecord2File(stdout, nullptr), WMQE_BAD_ARG);
  EXPECT_EQ(writeNewRmtJobCtrlRecord2File(nullptr, &fresh), WMQE_BAD_ARG);
  EXPECT_EQ(writeNewRmtJobCtrlRecord2File(stdout, nullptr), WMQE_BAD_ARG);
}

TEST(OldRemoteControl, DoesNotMoveThePositionWithoutBothNames) {
  EXPECT_EQ(ReadOld(" no name").rest, " no name");
  EXPECT_EQ(ReadOld(" \"one\" no other").rest, " \"one\" no other");
}

TEST(OldRemoteControl, MustHaveEveryNumberThatItsCountsAnnounce) {
  EXPECT_EQ(ReadOld(R"( "a" "b")").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadOld(R"( "a" "b" 2 5)").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadOld(R"( "a" "b" 1 5)").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadOld(R"( "a" "b" 0 1 7)").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadOld(R"( "a" "b" 0 2 7 8 9 x)").result, WMQE_BAD_FORMAT);
}

TEST(OldRemoteControl, CannotBeWrittenWithoutItsArrays) {
  int64_t wide = 1;
  int32_t narrow = 2;
  const auto result = [](const oldRmtJobCtrlRecord &record) {
    int outcome = 0;
    writtenBy([&](FILE *file) { outcome = writeRmtJobCtrlRecord2File(file, &record); });
    return outcome;
  };
  EXPECT_EQ(result({.numIds = 1}), WMQE_SYS);
  EXPECT_EQ(result({.numPairs = 1, .pairValues = &narrow}), WMQE_SYS);
  EXPECT_EQ(result({.numPairs = 1, .pairIds = &wide}), WMQE_SYS);
  EXPECT_EQ(result({.numPairs = 1, .pairIds = &wide, .pairValues = &narrow}), 0);
}

TEST(OldRemoteControl, FailsToReachAFullFile) {
  const oldRmtJobCtrlRecord record{};
  EXPECT_EQ(resultOnAFullDevice([&](FILE *full) { return writeRmtJobCtrlRecord2File(full, &record); }),
            WMQE_SYS);
}

TEST(OldRemoteControl, HasNothingToReleaseTheSecondTime) {
  ReadOld old(kOld);
  freeRmtJobCtrlRecord(&old.record);
  const oldRmtJobCtrlRecord nothing{};
  EXPECT_EQ(std::memcmp(&old.record, &nothing, sizeof nothing), 0);
  freeRmtJobCtrlRecord(&old.record);
  freeRmtJobCtrlRecord(nullptr);
}

// ----------------------------------------------------------------------------- new records

constexpr char kNew[] = R"( "first" "second" 2 5 2 11 12 13 21 22 23 6 0)";

TEST(NewRemoteControl, ReadsAndWritesItsEntriesNumberByNumber) {
  const ReadNew fresh(std::string(kNew) + " 0");
  ASSERT_EQ(fresh.result, 0);
  EXPECT_STREQ(fresh.record.ctrlName1, "first");
  EXPECT_STREQ(fresh.record.ctrlName2, "second");
  ASSERT_EQ(fresh.record.numEntries, 2);
  const rmtCtrlEntry &entry = fresh.record.entries[0];
  EXPECT_EQ(entry.id, 5);
  ASSERT_EQ(entry.count, 2);
  EXPECT_THAT(std::vector<int32_t>(entry.a, entry.a + 2), ElementsAre(11, 21));
  EXPECT_THAT(std::vector<int32_t>(entry.b, entry.b + 2), ElementsAre(12, 22));
  EXPECT_THAT(std::vector<int32_t>(entry.c, entry.c + 2), ElementsAre(13, 23));
  EXPECT_EQ(fresh.record.entries[1].id, 6);
  EXPECT_EQ(fresh.record.entries[1].count, 0);
  EXPECT_EQ(fresh.record.numEntries2, 0);
  EXPECT_EQ(fresh.record.entries2, nullptr);
  EXPECT_EQ(fresh.record.values2, nullptr);
  EXPECT_EQ(written(fresh.record), std::string(kNew) + " 0");
}

TEST(NewRemoteControl, LeavesThePositionBeforeTheCountOfItsSecondList) {
  const ReadNew fresh(std::string(kNew) + " 0 more");
  EXPECT_EQ(fresh.result, 0);
  EXPECT_EQ(fresh.rest, "0 more");
}

TEST(NewRemoteControl, ThatHoldsAPositiveSecondCountIsRefused) {
  const ReadNew held(std::string(kNew) + " 0", {.numEntries2 = 1});
  EXPECT_EQ(held.result, WMQE_BAD_FORMAT);
  EXPECT_EQ(held.record.numEntries, 2) << "all before it was read";
  EXPECT_EQ(held.rest, "0");
}

TEST(NewRemoteControl, ThatHoldsASecondCountOf0OrLessReadsLikeAnyOther) {
  for (const int32_t count : {0, -1}) {
    const ReadNew held(std::string(kNew) + " 0", {.numEntries2 = count});
    EXPECT_EQ(held.result, 0) << count;
    EXPECT_EQ(held.record.entries2, nullptr);
    EXPECT_EQ(held.record.values2, nullptr);
  }
}

TEST(NewRemoteControl, LeavesThePositionBeforeNumbersThatDoNotAllConvert) {
  EXPECT_EQ(ReadNew(R"("a" "b" 1 5 six)").rest, "5 six");
  EXPECT_EQ(ReadNew(R"("a" "b" 1 5 1 7 8 nine)").rest, "7 8 nine");
}

class WithASecondList : public ::testing::Test {
 protected:
  int32_t a = 31;
  int32_t b = 32;
  int32_t c = 33;
  rmtCtrlEntry entries[2] = {{7, 1, &a, &b, &c}, {8, 0, nullptr, nullptr, nullptr}};
  int32_t values[2] = {70, 80};
  char name[5] = "name";
  newRmtJobCtrlRecord record{
      .ctrlName1 = name, .ctrlName2 = name, .numEntries2 = 2, .entries2 = entries, .values2 = values};
};

TEST_F(WithASecondList, TheCountsOfItsEntriesAreNotWritten) {
  EXPECT_EQ(written(record), R"( "name" "name" 0 2 7 31 32 33 70 8 80)");
}

TEST_F(WithASecondList, ItIsNotReadBack) {
  const ReadNew back(written(record));
  EXPECT_EQ(back.result, 0);
  EXPECT_EQ(back.record.numEntries2, 0);
  EXPECT_EQ(back.record.entries2, nullptr);
  EXPECT_EQ(back.rest, "2 7 31 32 33 70 8 80");
}

TEST_F(WithASecondList, ItCannotBeWrittenWithoutItsArrays) {
  record.values2 = nullptr;
  int result = 0;
  const auto write = [&](FILE *file) { result = writeNewRmtJobCtrlRecord2File(file, &record); };
  writtenBy(write);
  EXPECT_EQ(result, WMQE_SYS);
  record.values2 = values;
  record.entries2 = nullptr;
  writtenBy(write);
  EXPECT_EQ(result, WMQE_SYS);
  record.entries2 = entries;
  entries[0].b = nullptr;
  writtenBy(write);
  EXPECT_EQ(result, WMQE_SYS);
}

TEST(NewRemoteControl, ReleasesTheSecondListThatACallerBuilt) {
  newRmtJobCtrlRecord record{};
  record.numEntries2 = 1;
  record.entries2 = static_cast<rmtCtrlEntry *>(std::calloc(1, sizeof(rmtCtrlEntry)));
  record.values2 = static_cast<int32_t *>(std::calloc(1, sizeof(int32_t)));
  record.entries2[0].count = 1;
  record.entries2[0].a = static_cast<int32_t *>(std::calloc(1, sizeof(int32_t)));
  freeRmtJobCtrlRecord2(&record);
  const newRmtJobCtrlRecord nothing{};
  EXPECT_EQ(std::memcmp(&record, &nothing, sizeof nothing), 0);
}

TEST(NewRemoteControl, HasNoEntriesForACountBelow1) {
  for (const char *count : {"0", "-1"}) {
    const ReadNew fresh(std::string(R"( "a" "b" )") + count);
    EXPECT_EQ(fresh.result, 0) << count;
    EXPECT_EQ(fresh.record.entries, nullptr) << count;
  }
}

TEST(NewRemoteControl, SetsItsListsToNullForCountsBelow1) {
  rmtCtrlEntry entry{};
  int32_t value = 0;
  std::string text = R"( "a" "b" 0 0)";
  char *position = text.data();
  newRmtJobCtrlRecord record{.numEntries = 7, .entries = &entry, .entries2 = &entry, .values2 = &value};
  EXPECT_EQ(readNewRmtJobCtrlRecordFromLine(&position, &record), 0);
  EXPECT_EQ(record.entries, nullptr);
  EXPECT_EQ(record.entries2, nullptr);
  EXPECT_EQ(record.values2, nullptr);
  std::free(record.ctrlName1);
  std::free(record.ctrlName2);
}

TEST(NewRemoteControl, MustHaveEveryNumberThatItsCountsAnnounce) {
  EXPECT_EQ(ReadNew(R"( "a" "b")").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadNew(R"( "a" "b" 1 5)").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadNew(R"( "a" "b" 1 5 1 1 2)").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadNew(R"( "a" "b" 2 5 1 1 2 3 6)").result, WMQE_BAD_FORMAT);
  EXPECT_EQ(ReadNew(R"( "a" "b" 1 5 1 1 2 3)").result, 0);
}

TEST(NewRemoteControl, CannotBeWrittenWithoutItsArrays) {
  rmtCtrlEntry entry{.id = 1, .count = 1, .a = nullptr, .b = nullptr, .c = nullptr};
  newRmtJobCtrlRecord record{.numEntries = 1};
  int result = 0;
  writtenBy([&](FILE *file) { result = writeNewRmtJobCtrlRecord2File(file, &record); });
  EXPECT_EQ(result, WMQE_SYS);
  record.entries = &entry;
  writtenBy([&](FILE *file) { result = writeNewRmtJobCtrlRecord2File(file, &record); });
  EXPECT_EQ(result, WMQE_SYS);
}

TEST(NewRemoteControl, FailsToReachAFullFile) {
  const newRmtJobCtrlRecord record{};
  EXPECT_EQ(resultOnAFullDevice([&](FILE *full) { return writeNewRmtJobCtrlRecord2File(full, &record); }),
            WMQE_SYS);
}

TEST(NewRemoteControl, HasNothingToReleaseTheSecondTime) {
  ReadNew fresh(std::string(kNew) + " 0");
  freeRmtJobCtrlRecord2(&fresh.record);
  const newRmtJobCtrlRecord nothing{};
  EXPECT_EQ(std::memcmp(&fresh.record, &nothing, sizeof nothing), 0);
  freeRmtJobCtrlRecord2(&fresh.record);
  freeRmtJobCtrlRecord2(nullptr);
}

}  // namespace
}  // namespace wmq::testing
