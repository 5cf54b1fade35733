// Records that are converted before the library's own objects exist: other static objects of a program may be
// made earlier than those. Nothing can be kept for the next call then.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "wmq/json.h"
#include "wmq/stream.h"

namespace wmq::testing {
namespace {

constinit char line[100] = "";
constinit char json[300] = "";

void convert() {
  constexpr char given[] =
      R"({"type":"LOG_SWITCH","version":"10.1","eventTime":1,"eventLog":{"lastJobId":7}})";
  eventRecord *const record = wmq_json2record(given, sizeof given - 1);
  if (record == nullptr) return;
  char *text = nullptr;
  size_t length = 0;
  if (wmq_formatrecord(record, &text, &length) == 0 && length < sizeof line) std::memcpy(line, text, length);
  std::free(text);
  wmq_freelogrec(record);

  eventRecord *const again = wmq_readstreamlineMT(line);
  if (again == nullptr) return;
  char *shown = nullptr;
  size_t capacity = 0;
  const ssize_t size = wmq_record2json(again, 0, &shown, &capacity);
  if (size > 0 && size < static_cast<ssize_t>(sizeof json))
    std::memcpy(json, shown, static_cast<size_t>(size));
  std::free(shown);
  wmq_freelogrec(again);
}

// On a thread of its own: what a thread does at its first record holds for as long as it lives.
[[gnu::constructor(101)]] void convertEarly() { std::thread(convert).join(); }

TEST(BeforeTheProgramBegins, RecordsCanBeConverted) {
  EXPECT_STREQ(line, "\"LOG_SWITCH\" \"10.1\" 1 7 \n");
  EXPECT_STREQ(
      json, R"({"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":1,"eventLog":{"lastJobId":7}})");
}

}  // namespace
}  // namespace wmq::testing
