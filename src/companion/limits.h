// Resource limits between records and lines.
#ifndef WMQ_COMPANION_LIMITS_H
#define WMQ_COMPANION_LIMITS_H

#include <cstdint>

namespace wmq {

// What convertRLimit does; null for its own rule.
extern void (*limitConverter)(int32_t *limits, int direction);

}  // namespace wmq

#endif
