// Releasing what records own.
#ifndef WMQ_STREAM_RELEASE_H
#define WMQ_STREAM_RELEASE_H

#include "wmq/event_record.h"

namespace wmq {

// All that the record owns, with what release keeps by design. Numbers stay, and counts, which then tell how
// many there were.
void releaseAllButFigures(eventRecord *record);

}  // namespace wmq

#endif
