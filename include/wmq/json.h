// The JSON form of event records. A library of its own: -lwmqjson.
//
// One record is one object: type, code, version, eventTime, and under eventLog every member of the log
// structure by its own name. The form loses nothing; docs/json.md describes it.
#ifndef WMQ_JSON_H
#define WMQ_JSON_H

#include <sys/types.h>

#include "wmq/event_record.h"

#ifdef __cplusplus
extern "C" {
#endif

// Writes `record` as JSON into `*buffer`, like getline(3): `*buffer` comes from malloc and has `*capacity`
// bytes (null and 0 to begin with), is grown as needed, and stays the caller's to reuse and free. `pretty`
// not 0: indented over several lines. No line end at the end; a NUL follows the text.
// Returns the length of the text, or -1 with wmq_errno WMQE_NO_MEM, WMQE_BAD_ARG (a null argument), or
// WMQE_BAD_EVENT (a type code that no log structure belongs to).
WMQ_API ssize_t wmq_record2json(const struct eventRecord *record, int pretty, char **buffer,
                                size_t *capacity);

// The same behind the `*length` bytes that the buffer holds already, which grows by what is returned, so that
// many records gather in one text. After a failure `*length` stands as it was, and so do those bytes.
WMQ_API ssize_t wmq_appendjson(const struct eventRecord *record, int pretty, char **buffer, size_t *capacity,
                               size_t *length);

// Reads one JSON object of `length` bytes (nothing but white space may follow it). Absent members are as in a
// zero-filled record. The new record is the caller's, to be released with wmq_freekept and wmq_freelogrec.
// Returns null with wmq_errno
//   WMQE_BAD_FORMAT  bad JSON, an unknown member, a value of the wrong kind or out of its member's range, a
//   text
//                    too long for its array, a count that differs from its array's length
//   WMQE_BAD_EVENT   no or no known type, or type and code disagree
//   WMQE_NO_MEM, WMQE_BAD_ARG
// and with wmq_jsonerror telling what and where.
WMQ_API struct eventRecord *wmq_json2record(const char *text, size_t length);

// What the last failed wmq_json2record on this thread stumbled over. "" before the first failure. The text
// stands until the next failure.
WMQ_API const char *wmq_jsonerror(void);

#ifdef __cplusplus
}
#endif

#endif
