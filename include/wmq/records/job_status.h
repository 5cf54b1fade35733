// JOB_STATUS: the state of a job changed. SBD_JOB_STATUS: the execution side reports on a job.
#ifndef WMQ_RECORDS_JOB_STATUS_H
#define WMQ_RECORDS_JOB_STATUS_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobStatusLog {
  int32_t jobId;
  int32_t jStatus;  // new state
  int32_t reason;
  int32_t subreasons;
  float cpuTime;  // seconds
  int64_t endTime;
  int32_t ru;  // not 0: wmxRusage is given
  struct wmxRusage wmxRusage;
  int32_t jFlags;
  int32_t idx;  // array index
  int32_t exitStatus;
  int32_t numhRusages;  // not on the line: 0 when read
  struct hostRusageEntry *hostRusage;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t dcJobFlags;
  int32_t numRangeJobs;  // not on the line: -1 when read from a line below 10.1, else as handed in
  int32_t indexRangeCnt;
  int32_t *indexRangeStart;  // one block of 3 * indexRangeCnt when read; kept by the release
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
  int32_t numAttrGroups;         // set to 0 by the writer: groups are read, never written
  struct attrGroup *attrGroups;  // kept by the release
} jobStatusLog;

typedef struct sbdJobStatusLog {
  int32_t jobId;
  int32_t jStatus;
  int32_t reason;
  int32_t subreasons;
  int32_t sbdField5;
  int32_t sbdField6;
  int64_t sbdTime;
  int32_t sbdField8;
  int32_t sbdField9;
  int32_t sbdField10;
  int32_t sbdField11;
  int32_t sbdField12;
  int32_t sbdField13;  // -65535 in lines up to 5.0
  int32_t sbdField14;
} sbdJobStatusLog;

// Layout functions. A writer puts the fields behind the header, line end included, and returns 0 or WMQE_SYS.
// A reader takes the text behind the header (a NUL-terminated line, its end may still be on it) of a line of
// version wmq_lineversion() and fills `log`, which must be zero-filled; it returns 0, WMQE_BAD_FORMAT or
// WMQE_NO_MEM (others as stated), and leaves whatever it allocated in `log`, also after a failure: put the
// structure into an eventRecord of its type, and release that with wmq_freekept and freeLogRec. Both return
// WMQE_BAD_ARG for a null argument; wmq_errno stays as it is.
WMQ_API int writeJobStatus(FILE *file, struct jobStatusLog *log);
WMQ_API int readJobStatus(const char *fields, struct jobStatusLog *log);
WMQ_API int readSbdJobStatus(const char *fields, struct sbdJobStatusLog *log);

#ifdef __cplusplus
}
#endif

#endif
