// One line, of any bytes: it is refused with a reason, or becomes a record that can be shown, written, read
// again and released. A look at its figures alone, and a record that is borrowed, come to the same.
#include <cstring>

#include "fuzz/fuzz_target.h"
#include "fuzz/record_checks.h"
#include "fuzz/requirement.h"
#include "support/collected_lines.h"
#include "support/record_text.h"
#include "support/user_directory.h"

namespace wmq::testing {

static void checkFigures(const std::string &line, const eventRecord *record, int error) {
  eventRecord figures;
  const int result = wmq_checkline(line.c_str(), &figures);
  require((result == 0) == (record != nullptr) && wmq_errno == error, "figures come to what the record does");
  if (record == nullptr) return;
  require(figures.type == record->type && figures.eventTime == record->eventTime, "the same header");
  wmqLineHeader header;
  eventRecord rest;
  require(wmq_peekline(line.c_str(), &header) == 0, "a record has a header");
  require(wmq_checkfields(line.c_str(), line.size(), &header, &rest) == 0 &&
              std::memcmp(&rest, &figures, sizeof rest) == 0,
          "the same figures behind the header");
}

static void checkBorrowed(std::string_view line, const eventRecord *record, int error) {
  const std::string text(line);  // with a NUL behind it
  wmq_errno = 0;
  const eventRecord *const borrowed = wmq_borrowline(text.data(), text.size());
  require((borrowed == nullptr) == (record == nullptr) && wmq_errno == error,
          "borrowing fails as parsing does");
  if (record != nullptr) require(jsonOf(*borrowed) == jsonOf(*record), "the same record is borrowed");
}

void tryInput(std::string_view input) {
  static const UserDirectory users({{0, "root"}, {2, "two"}, {1001, "anna"}});
  if (isHuge(input)) return;
  OwnedRecord record = parseExactly(input);
  const int error = record == nullptr ? wmq_errno : 0;
  if (record == nullptr) checkRefusal(error, wmq_errdetail());
  checkFigures(std::string(input.substr(0, input.find('\0'))), record.get(), error);
  checkBorrowed(input.substr(0, input.find('\0')), record.get(), error);
  if (record == nullptr) return;
  checkRecordOfLine(*record);
  checkRelease(std::move(record));
}

std::vector<std::string> seeds() {
  std::vector<std::string> lines = goldenLines();
  for (std::string &line : sampledLines()) lines.push_back(std::move(line));
  return lines;
}

}  // namespace wmq::testing
