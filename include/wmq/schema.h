// What a type consists of, as data: the members of its log structure, and how each stands on the line. It is
// made from the very statements that the writer and the reader are made from, so it cannot differ from them.
// JSON, documentation and test records are derived from it; exports to other forms can be, too.
#ifndef WMQ_SCHEMA_H
#define WMQ_SCHEMA_H

#include "wmq/event_types.h"

#ifdef __cplusplus
extern "C" {
#endif

// What a member is, or each element of it when it is an array.
typedef enum wmqKind {
  WMQ_KIND_INT32 = 1,
  WMQ_KIND_INT64,
  WMQ_KIND_FLOAT,
  WMQ_KIND_DOUBLE,
  WMQ_KIND_STRING,        // char *, owned, may be null
  WMQ_KIND_CHARS,         // char[size], NUL-terminated
  WMQ_KIND_STRUCT,        // a structure, described by `layout`
  WMQ_KIND_SUBMIT_EXT,    // submitExt *, may be null
  WMQ_KIND_NAMED_VALUES,  // namedValueList *, may be null
  WMQ_KIND_AFFINITY,      // affinityAlloc *, may be null
  WMQ_KIND_NETWORK        // networkAlloc
} wmqKind;

typedef enum wmqShape {
  WMQ_SHAPE_ONE = 1,  // the member itself
  WMQ_SHAPE_FIXED,    // an array inside the structure, `length` elements
  WMQ_SHAPE_COUNTED   // pointer to an owned array, as long as the count member says; may be null
} wmqShape;

// Which lines carry the field.
typedef enum wmqGate {
  WMQ_GATE_ALWAYS = 0,
  WMQ_GATE_AT_LEAST,  // `gateVersion` and later
  WMQ_GATE_ABOVE      // later than `gateVersion` only
} wmqGate;

enum {
  WMQ_FIELD_AGAIN = 1,          // the member was stated before: a second place on the line
  WMQ_FIELD_COUNT = 2,          // the number of elements of the counted arrays that name it
  WMQ_FIELD_KEPT = 4,           // release leaves it (wmq_freekept frees it)
  WMQ_FIELD_BLOCK = 8,          // all arrays of this count share one allocation, the first begins it
  WMQ_FIELD_WRITTEN_ONLY = 16,  // never read back
  WMQ_FIELD_READ_ONLY = 32,     // never written
  WMQ_FIELD_OFF_LINE = 64,      // a member that no line carries
  WMQ_FIELD_TOGETHER = 128,     // converted together with the field before it, all or none
  WMQ_FIELD_EMPTY_ARRAY = 256,  // a count of 0 has an allocated, empty array when read
  WMQ_FIELD_RESERVED = 512      // room in the structure without a meaning: no kind, not in JSON, not released
};

struct wmqLayout;

typedef struct wmqField {
  const char *name;   // of the member
  size_t nameLength;  // of it, in bytes
  wmqKind kind;
  wmqShape shape;
  unsigned flags;                  // WMQ_FIELD_
  size_t offset;                   // of the member in its structure
  size_t size;                     // bytes of the member; of one element where it is an array
  size_t length;                   // elements of a WMQ_SHAPE_FIXED array, else 1
  const struct wmqLayout *layout;  // of WMQ_KIND_STRUCT, else null
  const char *countName;           // WMQ_SHAPE_COUNTED: the count member, else null
  size_t countOffset;
  wmqKind countKind;  // WMQ_KIND_INT32 or WMQ_KIND_INT64

  int position;      // on the line, from 1; the same for all that belong together; 0 when off the line
  const char *form;  // how it stands on the line, such as "%d", "quoted", "host list"
  wmqGate gate;
  float gateVersion;
  const char *condition;  // on other members, such as "options & 0x400"; "" when there is none
  const char *absent;     // value when the line has none, such as "0", "\"\"", "copy of execHosts"
  const char *note;       // what else there is to say, or ""
  size_t minLength;       // WMQ_KIND_CHARS: fewest characters that a reader accepts
} wmqField;

typedef struct wmqLayout {
  const char *name;  // of the structure
  size_t size;       // of the structure, bytes
  size_t numFields;
  const struct wmqField *fields;  // in line order
} wmqLayout;

// The layout of a type's log structure; null for a code that has none. A header-only type has no fields.
// Static, thread-safe. Memory for it is taken at the first call for a type; null too when there is none.
WMQ_API const struct wmqLayout *wmq_schema(int32_t type);

// Non-zero when a line of `version` passes the field's version gate (its condition aside).
WMQ_API int wmq_gateopen(const struct wmqField *field, float version);

#ifdef __cplusplus
}
#endif

#endif
