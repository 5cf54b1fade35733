#include "records.h"

#include <charconv>

namespace wmq::tool {

Refusal lastRefusal() {
  const std::string detail = wmq_errdetail();
  return {wmq_errno, detail.empty() ? wmq_strerror(wmq_errno) : detail};
}

// The library takes a line as a C string, and would silently stop at a NUL.
static bool holdsNul(std::string_view line, Refusal &why) {
  const size_t nul = line.find('\0');
  if (nul == std::string_view::npos) return false;
  why = {WMQE_BAD_FORMAT, "byte " + std::to_string(nul) + " of the line is a NUL"};
  return true;
}

Record readRecord(std::string_view line, Refusal &why) {
  if (holdsNul(line, why)) return nullptr;
  wmq_errno = 0;
  Record record(wmq_readstreamlineMT(line.data()));
  if (!record) why = lastRefusal();
  return record;
}

const eventRecord *borrowRecord(std::string_view line, Refusal &why) {
  wmq_errno = 0;
  const eventRecord *const record = wmq_borrowline(line.data(), line.size());
  if (record == nullptr && !holdsNul(line, why)) why = lastRefusal();
  return record;
}

bool checkRecord(std::string_view line, eventRecord &record, Refusal &why) {
  if (holdsNul(line, why)) return false;
  if (wmq_checkline(line.data(), &record) == 0) return true;
  why = lastRefusal();
  return false;
}

bool checkFields(std::string_view line, const wmqLineHeader &header, eventRecord &record, Refusal &why) {
  if (wmq_checkfields(line.data(), line.size(), &header, &record) == 0) return true;
  if (!holdsNul(line, why)) why = lastRefusal();
  return false;
}

std::optional<int32_t> typeFromText(std::string_view text) {
  int32_t code = wmq_typecode(std::string(text).c_str());
  if (code > 0) return code;
  auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), code);
  bool isNumber = error == std::errc() && stop == text.data() + text.size();
  if (isNumber && wmq_typename(code)) return code;
  return std::nullopt;
}

}  // namespace wmq::tool
