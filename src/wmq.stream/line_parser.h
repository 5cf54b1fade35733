// From a line to a record.
#ifndef WMQ_STREAM_LINE_PARSER_H
#define WMQ_STREAM_LINE_PARSER_H

#include <cstddef>

#include "wmq/event_record.h"

namespace wmq {

// Version of the line that this thread parsed last; layouts decide by it which fields a line carries.
extern thread_local float version;

// Parses a line of `length` bytes, which a NUL follows. Returns a new record, or null with wmq_errno.
eventRecord *parsestreamlineMT(const char *line, size_t length);

// The same for a line that is known to hold no NUL.
eventRecord *parseText(const char *line, size_t length);

// The same for callers to whom the line is good until there was memory to look at it: `lacked` tells that
// there was none. Types have numbers of their own for that, which stand for bad lines, too.
eventRecord *parseLine(const char *line, size_t length, bool &lacked);

// Parses a line of `length` bytes, which a NUL follows, into a zeroed record, which can be released whatever
// comes of it. The result is in wmq_errno, which types without fields do not touch. Without `keepsTexts` null
// stands where a text or a list of texts would be.
void parseInto(const char *line, size_t length, eventRecord *record, bool keepsTexts);

// The record returned last by any of the reads that keep it, of any stream.
extern eventRecord *logRec;
eventRecord *keepRecord(eventRecord *record);
void dropKeptRecord();

}  // namespace wmq

#endif
