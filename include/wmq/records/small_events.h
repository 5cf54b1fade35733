// The small records: UNFULFILL, JOB_CLEAN, JOB_EXCEPTION, LOG_SWITCH, JOB_ATTR_SET, and what old programs may
// still release.
#ifndef WMQ_RECORDS_SMALL_EVENTS_H
#define WMQ_RECORDS_SMALL_EVENTS_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct unfulfillLog {
  int32_t jobId;
  int32_t unfulfillField2;
  int32_t unfulfillField3;
  int32_t unfulfillField4;
  int32_t unfulfillField5;
  int64_t unfulfillTime;
  int32_t unfulfillField7;
  int32_t unfulfillField8;
} unfulfillLog;

typedef struct jobCleanLog {
  int32_t jobId;
  int32_t idx;
  int32_t indexRangeCnt;
  int32_t *indexRangeStart;  // one block of 3 * indexRangeCnt when read; kept by the release
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
} jobCleanLog;

typedef struct jobExceptionLog {
  int32_t jobId;
  int32_t exceptField2;
  int32_t exceptField3;
  int64_t exceptTime;
  int32_t exceptField5;
  int32_t exceptField6;
} jobExceptionLog;

typedef struct logSwitchLog {
  int32_t lastJobId;
} logSwitchLog;

typedef struct jobAttrSetLog {
  int32_t jobId;
  int32_t attrField2;
  int32_t attrField3;
  int32_t attrField4;
} jobAttrSetLog;

// Codes 60, 63 and 64 have no line any more: writing drops them and no line carries them. Records that a
// program still builds are released.
typedef struct retiredListLog {  // 60
  int32_t numNames;
  char **names;
} retiredListLog;

typedef struct retiredAllocationLog {  // 63
  char *text;
  struct allocHostInfo hosts;
  struct affinityAlloc *affinityAlloc;
} retiredAllocationLog;

typedef struct retiredTextLog {  // 64
  char *text;
} retiredTextLog;

#ifdef __cplusplus
}
#endif

#endif
