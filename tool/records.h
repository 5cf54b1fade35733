// Event records of lines.
#ifndef WMQ_TOOL_RECORDS_H
#define WMQ_TOOL_RECORDS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

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

// Why a line is refused: an error number of the library, and all that is known of it.
struct Refusal {
  int error = 0;
  std::string text;
};

// The library's last failure on this thread.
Refusal lastRefusal();

// The record of a line, behind which stands a NUL. Null when the line is refused.
Record readRecord(std::string_view line, Refusal &why);

// The same, which lasts until the thread asks for the next one (wmq_borrowline).
const eventRecord *borrowRecord(std::string_view line, Refusal &why);

// The same with nothing but figures in `record` (wmq_checkline); false when the line is refused.
bool checkRecord(std::string_view line, eventRecord &record, Refusal &why);

// And for a line that has this header.
bool checkFields(std::string_view line, const wmqLineHeader &header, eventRecord &record, Refusal &why);

// The code of a type given by its name ("JOB_NEW") or number ("1").
std::optional<int32_t> typeFromText(std::string_view text);

}  // namespace wmq::tool

#endif
