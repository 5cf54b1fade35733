// From a record to its line.
#ifndef WMQ_STREAM_LINE_FORMAT_H
#define WMQ_STREAM_LINE_FORMAT_H

#include "wmq.stream/stream_file.h"
#include "wmq.stream/type_table.h"

namespace wmq {

// Before every so many writes to a stream its size is checked.
inline constexpr int kWritesPerCheck = 100;

void putHeader(Writer &io, const EventType &type, int32_t eventTime);

// Header, fields and line end of a type that has a layout.
void putFields(Writer &io, const EventType &type, eventRecord &record);

// What a stream appends for a record: each returns the result of the write and leaves its reason in wmq_errno. Nothing is put for types
// that the stream refuses or drops.
int putEventLine(Writer &io, eventRecord &record);
int putSideLine(Writer &io, eventRecord &record, const StreamKind &kind);

// The bytes that `putLine` puts, as a new text.
int formatLine(eventRecord *record, char **text, size_t *length, int (*putLine)(Writer &io, eventRecord &record));

}  // namespace wmq

#endif
