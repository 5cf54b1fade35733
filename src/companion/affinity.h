// Affinity allocations as text, for readers of lines that may carry several.
#ifndef WMQ_COMPANION_AFFINITY_H
#define WMQ_COMPANION_AFFINITY_H

#include <cstdint>

#include "wmq/companion.h"

namespace wmq {

// parseAffinityAllocField with at most `cpusLeft` CPUs, of which it takes away those of the text. A few bytes
// may stand for a million CPUs: without a limit for the whole line, reading it could take any time.
affinityAlloc *parseAffinity(const char *text, int64_t &cpusLeft);

}  // namespace wmq

#endif
