// One line, of any bytes: it is refused with a reason, or becomes a record that can be shown, written, read
// again and released.
#include "fuzz/fuzz_target.h"
#include "fuzz/record_checks.h"
#include "support/collected_lines.h"
#include "support/user_directory.h"

namespace wmq::testing {

void tryInput(std::string_view input) {
  static const UserDirectory users({{0, "root"}, {2, "two"}, {1001, "anna"}});
  if (isHuge(input)) return;
  OwnedRecord record = parseExactly(input);
  if (record == nullptr) return checkRefusal(wmq_errno, wmq_errdetail());
  checkRecordOfLine(*record);
  checkRelease(std::move(record));
}

std::vector<std::string> seeds() {
  std::vector<std::string> lines = goldenLines();
  for (std::string &line : sampledLines()) lines.push_back(std::move(line));
  return lines;
}

}  // namespace wmq::testing
