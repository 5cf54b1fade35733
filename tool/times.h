// Points in time as people write them.
#ifndef WMQ_TOOL_TIMES_H
#define WMQ_TOOL_TIMES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wmq::tool {

// Seconds since the epoch of a text that is either such a number ("1700000000") or ISO 8601 with a zone
// ("2023-11-14T22:13:20Z", "2023-11-14T23:13+01:00", "20231114T221320Z"). None when it is neither; `why` then
// tells what is wrong.
std::optional<int64_t> parseTime(std::string_view text, std::string &why);

// The same point in time as "2023-11-14T22:13:20Z".
std::string timeText(int64_t seconds);

}  // namespace wmq::tool

#endif
