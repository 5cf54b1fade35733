#include "records.h"

#include <charconv>

namespace wmq::tool {

Refusal lastRefusal() {
  const std::string detail = wmq_errdetail();
  return {wmq_errno, detail.empty() ? wmq_strerror(wmq_errno) : detail};
}

Record readRecord(std::string_view line, Refusal &why) {
  // The library takes a line as a C string, and would silently stop there.
  const size_t nul = line.find('\0');
  if (nul != std::string_view::npos) {
    why = {WMQE_BAD_FORMAT, "byte " + std::to_string(nul) + " of the line is a NUL"};
    return nullptr;
  }
  wmq_errno = 0;
  Record record(wmq_readstreamlineMT(line.data()));
  if (!record) why = lastRefusal();
  return record;
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
