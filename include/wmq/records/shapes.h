// Shapes that several records share.
//
// In all log structures: "string" members are owned, allocated with malloc, and released with the record;
// arrays are owned likewise and as long as the count beside them says. Times are seconds since the epoch and
// travel as their low 32 bits.
#ifndef WMQ_RECORDS_SHAPES_H
#define WMQ_RECORDS_SHAPES_H

#include "wmq/companion.h"

#ifdef __cplusplus
extern "C" {
#endif

// Sizes of the inline names and texts, the terminating NUL included.
#define WMQ_NAME_SIZE 60
#define WMQ_HOST_SIZE 64
#define WMQ_TEXT_SIZE 512

// Two strings that go to the line without any escaping, and a number.
typedef struct strPair {
  char *first;
  char *second;
  int32_t flags;
} strPair;

// Names with a number each.
typedef struct namedValueList {
  int32_t count;
  char **names;
  int32_t *values;
} namedValueList;

// A name with a number.
typedef struct namedInt {
  char *name;
  int32_t value;
} namedInt;

// A group of attributes of a job.
typedef struct attrGroup {
  char *groupName;
  int32_t numPairs;
  struct keyValue *pairs;
} attrGroup;

#ifdef __cplusplus
}
#endif

#endif
