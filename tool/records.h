// Event records of lines.
#ifndef WMQ_TOOL_RECORDS_H
#define WMQ_TOOL_RECORDS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "faults.h"
#include "lines.h"
#include "wmq/wmq.h"

namespace wmq::tool {

struct ReleaseRecord {
  void operator()(eventRecord *record) const {
    wmq_freekept(record);
    wmq_freelogrec(record);
  }
};
using Record = std::unique_ptr<eventRecord, ReleaseRecord>;

// True for lines of a stream file that carry no record: comments and lines without any character.
inline bool carriesNoRecord(std::string_view line) { return line.empty() || line.front() == '#'; }

// The record of a line. Null when the line is refused, which is reported unless `faults` is null.
Record readRecord(const Lines &line, Faults *faults);

// The code of a type given by its name ("JOB_NEW") or number ("1").
std::optional<int32_t> typeFromText(std::string_view text);

}  // namespace wmq::tool

#endif
