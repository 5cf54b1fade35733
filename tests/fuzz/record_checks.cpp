#include "fuzz/record_checks.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/requirement.h"
#include "support/asymmetries.h"
#include "support/record_text.h"
#include "support/sampler.h"
#include "wmq/json.h"
#include "wmq/schema.h"

namespace wmq::testing {
namespace {

constexpr int64_t kFew = 20000;
constexpr size_t kLongJson = 200000;

// The version is told, and not read: what JSON makes is of the current one.
void checkJson(const eventRecord &record) {
  if (wmq_schema(record.type) == nullptr) return;  // a code of which nothing but the number is known
  eventRecord current = record;
  std::strcpy(current.version, WMQ_FORMAT_VERSION);
  const std::string json = jsonOf(current);
  require(!json.empty(), "a record has a JSON form");
  if (json.size() > kLongJson) return;
  const OwnedRecord again(wmq_json2record(json.data(), json.size()));
  require(again != nullptr, "JSON that was written is read", json + '\n' + wmq_jsonerror());
  const std::string jsonAgain = jsonOf(*again);
  require(jsonAgain == json, "JSON comes back as it was", json + '\n' + jsonAgain);
}

}  // namespace

bool isHuge(std::string_view text) {
  int64_t number = 0;
  for (const char c : text) {
    if (c >= '0' && c <= '9') {
      number = number > INT32_MAX ? number : number * 10 + (c - '0');
      continue;
    }
    if (number > kFew && number <= (c == '*' ? int64_t{16777216} : int64_t{1048576})) return true;
    number = 0;
  }
  return number > kFew && number <= 1048576;
}

OwnedRecord parseExactly(std::string_view text) {
  const size_t length = std::min(text.find('\0'), text.size());
  const auto line = std::make_unique<char[]>(length + 1);
  std::memcpy(line.get(), text.data(), length);
  wmq_errno = 0;
  return OwnedRecord(wmq_readstreamlineMT(line.get()));
}

void checkAnyRecord(const eventRecord &record) {
  checkJson(record);
  const std::string line = written(record);
  require(wmq_errno == 0 || line.empty() || line.back() != '\n', "a line that failed has no line end", line);
}

void checkRecordOfLine(eventRecord &record) {
  checkAnyRecord(record);
  avoidAsymmetries(record);
  const std::string line = written(record);
  if (wmq_errno != 0) return;
  const OwnedRecord second = parseExactly(line);
  require(second != nullptr, "a line that was written is read", line + wmq_errdetail());
  const std::string json = jsonOf(*second);
  const std::string again = written(*second);
  require(again == line, "a line that was read back is written the same", line + again);
  const OwnedRecord third = parseExactly(again);
  require(third != nullptr && jsonOf(*third) == json, "and means the same", line);
}

void checkRelease(OwnedRecord record) {
  wmq_freekept(record.get());
  freeLogRec(record.get());
  const std::vector<std::string> left = ownedMembers(*record);
  require(left.empty(), "a released record owns nothing", left.empty() ? "" : left.front());
}

void checkRefusal(int error, const std::string &detail) {
  require(error != 0, "a failure has a number");
  require(!detail.empty(), "a failure has a reason");
}

}  // namespace wmq::testing
