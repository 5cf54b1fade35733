// Every golden file, case by case.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "support/golden_file.h"
#include "support/record_text.h"
#include "wmq/json.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

struct FreeRecord {
  void operator()(eventRecord *record) const {
    wmq_freekept(record);
    wmq_freelogrec(record);
  }
};
using Record = std::unique_ptr<eventRecord, FreeRecord>;

Record readLine(const std::string &line) {
  wmq_errno = 0;
  return Record(wmq_readstreamlineMT(line.c_str()));
}

class Golden : public ::testing::TestWithParam<std::string> {};

// One field looks whether any text remains: there a line end that is still on the line is a malformed number.
bool seesTheLineEnd(const std::string &lineEnd) {
  return !lineEnd.empty() && std::string(wmq_errdetail()).find("field newInt5 ") != std::string::npos;
}

void checkReading(const GoldenCase &golden) {
  for (const char *lineEnd : {"", "\n"}) {
    const Record record = readLine(*golden.read + lineEnd);
    if (wmq_errno == WMQE_BAD_FORMAT && seesTheLineEnd(lineEnd)) continue;
    if (golden.error != 0) {
      EXPECT_EQ(record, nullptr);
      EXPECT_EQ(wmq_errno, golden.error) << wmq_errdetail();
      if (!golden.field.empty()) {
        EXPECT_NE(std::string(wmq_errdetail()).find("field " + golden.field + " "), std::string::npos)
            << wmq_errdetail();
      }
    } else if (golden.json) {
      EXPECT_NE(record, nullptr) << wmq_errno << ' ' << wmq_errdetail();
      if (record) {
        EXPECT_EQ(jsonDifference(*golden.json, jsonOf(*record)), "");
      }
    }
  }
}

// Two writers set a count of the caller's record to 0 and leave the array: whoever releases the record needs
// it.
int32_t *clearedCount(eventRecord &record) {
  if (record.type == EVENT_JOB_STATUS) return &record.eventLog.jobStatusLog.numAttrGroups;
  if (record.type == EVENT_JOB_STATUS2) return &record.eventLog.jobStatus2Log.numGPURusages;
  return nullptr;
}

// What the record's own stream writes, without the line end.
std::string writtenLine(eventRecord &record) {
  char *text = nullptr;
  size_t length = 0;
  wmq_errno = 0;
  const auto format = record.type == EVENT_JOB_STATUS2           ? wmq_formatstatus
                      : record.type == EVENT_JOB_PENDING_REASONS ? wmq_formatpendingreasons
                                                                 : wmq_formatrecord;
  int32_t *const cleared = clearedCount(record);
  const int32_t count = cleared != nullptr ? *cleared : 0;
  EXPECT_EQ(format(&record, &text, &length), 0) << wmq_errno << ' ' << wmq_errdetail();
  if (cleared != nullptr) *cleared = count;
  std::string line(text ? text : "", length);
  std::free(text);
  if (!line.empty() && line.back() == '\n') line.pop_back();
  return line;
}

void checkWriting(const GoldenCase &golden) {
  const Record record(wmq_json2record(golden.json->data(), golden.json->size()));
  EXPECT_NE(record, nullptr) << wmq_jsonerror();
  if (record) {
    EXPECT_EQ(writtenLine(*record), *golden.written);
  }
}

TEST_P(Golden, LinesReadAndWriteAsTheyStand) {
  for (const GoldenCase &golden : readGoldenFile(GetParam())) {
    SCOPED_TRACE(golden.file + ':' + std::to_string(golden.line) + ": " + golden.comment);
    if (golden.read) checkReading(golden);
    if (golden.written) checkWriting(golden);
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Golden, ::testing::ValuesIn(goldenFiles()), [](const auto &golden) {
  return std::filesystem::path(golden.param).stem().string();
});

// A type that has no golden file is a type that nobody has written a line of by hand.
TEST(GoldenFiles, ThereIsOneForEveryTypeWithALayout) {
  for (int32_t code = 1; code <= WMQ_MAX_EVENT_TYPE; ++code) {
    const char *name = wmq_typename(code);
    if (name == nullptr || wmq_schema(code) == nullptr) continue;
    EXPECT_TRUE(std::filesystem::exists(std::string(WMQ_TEST_DATA "/golden/") + name + ".golden")) << name;
  }
}

}  // namespace
}  // namespace wmq::testing
