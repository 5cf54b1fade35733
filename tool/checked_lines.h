// What is told of a block of lines to whoever checks that a stream is whole.
#ifndef WMQ_TOOL_CHECKED_LINES_H
#define WMQ_TOOL_CHECKED_LINES_H

#include <cstdint>
#include <string>
#include <vector>

#include "line_feed.h"
#include "wmq/wmq.h"

namespace wmq::tool {

// A record, or what is there instead of one.
struct LineFact {
  enum class Kind : uint8_t { record, torn, malformed };
  Kind kind = Kind::record;
  bool joined = false;      // another record follows on the same line
  bool wasStarted = false;  // JOB_FINISH: it says when the job was started
  uint64_t line = 0;        // its number in the block, from 1
  uint64_t offset = 0;      // in the block

  // Of a record:
  int32_t type = 0;
  int32_t time = 0;
  int32_t job = 0;  // of the types that the check looks at
  char version[sizeof(eventRecord::version)] = "";
};

struct CheckedPart : LinePart {
  uint64_t bytes = 0;
  std::vector<LineFact> facts;
  std::vector<std::string> troubles;  // what is wrong with each fact that is no record, in their order
};

// Reads the lines of the part.
void checkLines(CheckedPart &part);

}  // namespace wmq::tool

#endif
