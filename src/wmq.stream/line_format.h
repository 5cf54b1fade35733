// From a record to its line.
#ifndef WMQ_STREAM_LINE_FORMAT_H
#define WMQ_STREAM_LINE_FORMAT_H

#include "wmq.stream/type_table.h"
#include "wmq/event_record.h"

namespace wmq {

void putHeader(Writer &io, const EventType &type, int32_t eventTime);

// Header, fields and line end of a type that has a layout.
void putFields(Writer &io, const EventType &type, eventRecord &record);

// What a stream appends for a record. Returns the result of the write and leaves its reason in wmq_errno;
// nothing is put for types that the stream refuses or drops.
using PutLine = int(Writer &io, eventRecord &record);
int putEventLine(Writer &io, eventRecord &record);

// The bytes that `putLine` puts, as a new text.
int formatLine(eventRecord *record, char **text, size_t *length, PutLine *putLine);

}  // namespace wmq

#endif
