// Records for tests that care for the line and not for its fields.
#ifndef WMQ_TESTS_SMALL_RECORDS_H
#define WMQ_TESTS_SMALL_RECORDS_H

#include <cstdint>
#include <memory>
#include <string>

#include "wmq/stream.h"

namespace wmq::testing {

inline constexpr int32_t kEventTime = 1700000000;

// LOG_SWITCH has the shortest line of all. Its number tells one from the other.
eventRecord logSwitch(int32_t number);
std::string logSwitchLine(int32_t number);  // with its line end

// As little as a line of the type needs to be read again. What it points to is static.
eventRecord bareRecord(int32_t type);

// A record that belongs to the test: it is released whole, with what release keeps by design.
struct ReleaseRecord {
  void operator()(eventRecord *record) const;
};
using OwnedRecord = std::unique_ptr<eventRecord, ReleaseRecord>;

// Parses the line with wmq_errno 0 before it.
OwnedRecord parse(const std::string &line);

// What wmq_formatrecord makes of the record, with wmq_errno 0 before it; the partial line if it fails.
std::string format(eventRecord &record);

// A copy from malloc, as records own their strings.
char *ownedCopy(const std::string &text);

}  // namespace wmq::testing

#endif
