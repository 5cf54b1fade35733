// One line, of any bytes, for the library's reader and for the second one: both refuse it for the same
// reason, or both find the same in it.
#include "fuzz/flat_record.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/record_checks.h"
#include "fuzz/requirement.h"
#include "fuzz/second_reader.h"
#include "support/collected_lines.h"
#include "support/user_directory.h"

namespace wmq::testing {

void tryInput(std::string_view input) {
  static const UserNames names = {{0, "root"}, {2, "two"}, {1001, "anna"}};
  static const UserDirectory users(names);
  if (isHuge(input)) return;
  const std::string line(input.substr(0, input.find('\0')));
  const OwnedRecord record = parseExactly(line);
  const int error = wmq_errno;
  const SecondReading second = readSecondly(line, names);
  require(second.error == error, "both readers end the same",
          line + "\nlibrary: " + std::to_string(error) + ' ' + (error != 0 ? wmq_errdetail() : "") +
              "\nsecond reader: " + std::to_string(second.error));
  if (record == nullptr) return;
  require(record->type == second.type && record->version == second.version &&
              record->eventTime == second.eventTime,
          "both readers find the same header", line);
  const std::string difference = flatDifference(second.fields, flatten(*record));
  require(difference.empty(), "both readers find the same fields", line + '\n' + difference);
}

std::vector<std::string> seeds() {
  std::vector<std::string> lines = goldenLines();
  for (std::string &line : sampledLines()) lines.push_back(std::move(line));
  return lines;
}

}  // namespace wmq::testing
