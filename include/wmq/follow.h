// Following a stream.
#ifndef WMQ_FOLLOW_H
#define WMQ_FOLLOW_H

#include "wmq/event_record.h"

#ifdef __cplusplus
extern "C" {
#endif

// ------------------------------------------------------------------------------ joined lines

// How wmq_firstrecord has found the end of what stands first.
enum {
  WMQ_PART_LINE = 0,    // all of the line belongs to it
  WMQ_PART_JOINED = 1,  // a record of a type that leaves its line open; another record begins behind it
  WMQ_PART_TORN = 2     // the beginning of a record whose writer did not finish it; a record begins behind it
};

// Finds where the next record begins on a line on which several may stand. JOB_OCCUPY_REQ, JOB_VACATED,
// SBD_JOB_STATUS and the bare header of JOB_STATUS2 leave their line open, and a writer that dies in the middle
// of a line leaves it open, too; the next record then stands on the same line.
//
// `line` has `length` bytes, without its line end; NULs are allowed. Returns the number of bytes that belong to
// the first record and puts at `*part`, unless it is null, which of the above it is. For all but WMQ_PART_LINE
// the call is repeated with the rest. What a quoted string holds is never taken for a record; where a line
// parses as one record with all that it says, it is one.
// Returns 0 for an empty line, and for a null one or without memory, with wmq_errno WMQE_BAD_ARG, WMQE_NO_MEM.
WMQ_API size_t wmq_firstrecord(const char *line, size_t length, int *part);

#ifdef __cplusplus
}
#endif

#endif
