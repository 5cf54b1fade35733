#include "records.h"

#include <charconv>

namespace wmq::tool {

Record readRecord(const Lines &line, Faults *faults) {
  // The library takes a line as a C string, and would silently stop there.
  size_t nul = line.text().find('\0');
  if (nul != std::string_view::npos) {
    if (faults)
      faults->badInput(line.file(), line.number(), WMQE_BAD_FORMAT,
                       "byte " + std::to_string(nul) + " of the line is a NUL");
    return nullptr;
  }
  wmq_errno = 0;
  Record record(wmq_readstreamlineMT(line.text().data()));
  if (!record && faults) faults->refused(line.file(), line.number(), wmq_errno);
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
