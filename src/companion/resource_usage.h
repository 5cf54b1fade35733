// The 19 numbers of a resource usage on a line.
#ifndef WMQ_COMPANION_RESOURCE_USAGE_H
#define WMQ_COMPANION_RESOURCE_USAGE_H

#include "wmq/companion.h"

namespace wmq {

// Room that formatUsage needs.
constexpr int usageRoom = WMX_RUSAGE_VALUES * 32;

// Reads up to 19 numbers and counts them in `converted`. Returns the position behind the last of them, `text`
// without any. Values that were not converted are left as they were.
const char *scanUsage(const char *text, wmxRusage &usage, int &converted);

// Writes the 19 numbers, each behind a blank, without a NUL; returns the end.
char *formatUsage(char *out, const wmxRusage &usage);

}  // namespace wmq

#endif
