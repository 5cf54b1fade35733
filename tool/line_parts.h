// The records of a line on which several may stand.
#ifndef WMQ_TOOL_LINE_PARTS_H
#define WMQ_TOOL_LINE_PARTS_H

#include <string>
#include <string_view>

#include "records.h"
#include "wmq/follow.h"

namespace wmq::tool {

// Hands each of them to `take(text, isTorn)`, with a NUL behind the text. A NUL stands behind `line`.
template <typename Take>
void eachRecordText(std::string_view line, Take take) {
  while (!carriesNoRecord(line)) {
    int part = WMQ_PART_LINE;
    const size_t length = wmq_firstrecord(line.data(), line.size(), &part);
    if (length == 0 || part == WMQ_PART_LINE) return take(line, false);
    const std::string first(line.substr(0, length));
    take(std::string_view(first), part == WMQ_PART_TORN);
    line.remove_prefix(length);
  }
}

// Why a torn one is refused.
inline Refusal tornRefusal() { return {WMQE_BAD_FORMAT, "a record that was not written to its end"}; }

}  // namespace wmq::tool

#endif
