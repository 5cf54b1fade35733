// Which records another one can follow on the same line.
#ifndef WMQ_FOLLOW_JOINED_LINES_H
#define WMQ_FOLLOW_JOINED_LINES_H

#include "wmq.stream/type_table.h"

namespace wmq {

inline bool leavesLineOpen(Body body) { return body == Body::openLine || body == Body::headerOnly; }

// The event stream's bare header of a type with a stream of its own leaves its line open, too, but is no
// record.
inline bool mayLeaveLineOpen(Body body) { return leavesLineOpen(body) || body == Body::sideStream; }

}  // namespace wmq

#endif
