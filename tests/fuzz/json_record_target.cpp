// Any bytes as JSON: refused with a reason, or a record, whose line may be read again.
#include <cstring>
#include <memory>

#include "fuzz/fuzz_target.h"
#include "fuzz/record_checks.h"
#include "support/collected_lines.h"
#include "support/record_text.h"
#include "wmq/json.h"

namespace wmq::testing {

// A record made by hand may be one that no reader takes: what is read is held to more.
static void checkItsLine(const eventRecord &record) {
  const std::string line = written(record);
  if (wmq_errno != 0 || isHuge(line)) return;
  OwnedRecord read = parseExactly(line);
  if (read == nullptr) return;
  checkRecordOfLine(*read);
  checkRelease(std::move(read));
}

void tryInput(std::string_view input) {
  const auto text = std::make_unique<char[]>(input.size());  // no byte behind the last
  std::memcpy(text.get(), input.data(), input.size());
  wmq_errno = 0;
  OwnedRecord record(wmq_json2record(text.get(), input.size()));
  if (record == nullptr) return checkRefusal(wmq_errno, wmq_jsonerror());
  checkAnyRecord(*record);
  checkItsLine(*record);
  checkRelease(std::move(record));
}

std::vector<std::string> seeds() {
  std::vector<std::string> texts = goldenJson();
  for (std::string &text : sampledJson()) texts.push_back(std::move(text));
  return texts;
}

}  // namespace wmq::testing
