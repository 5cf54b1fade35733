// JOB_START, PRE_EXEC_START and JOB_ROUTE: where and how a job was started. One structure, one layout.
#ifndef WMQ_RECORDS_JOB_START_H
#define WMQ_RECORDS_JOB_START_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobStartLog {
  int32_t jobId;
  int32_t startInt1;
  int32_t startInt2;
  int32_t startInt3;
  float hostFactor;    // one decimal on the line
  int32_t numExHosts;  // at least 1 on a line that is read
  char **execHosts;    // one name per host occurrence, expanded
  char *startStr1;
  char *startStr2;
  int32_t startInt4;
  char *startStr3;
  int32_t startInt5;
  char *startStr4;
  int32_t startInt6;  // 2147483647 when the line has none
  char *startStr5;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t numNamedInts;
  struct namedInt *namedInts;
  struct affinityAlloc *affinityAlloc;
  int32_t startInt7;  // -1 when the line has none
  int32_t startInt8;
  int32_t numAllocHosts;  // written only where it differs from numExHosts
  char **allocHosts;      // when the line has none: a copy of execHosts
  int32_t startInt9;
  void *reserved1;  // no line carries these two; not released
  void *reserved2;
  int64_t startLong1;  // low 32 bits on the line
  int64_t startLong2;
} jobStartLog;

// Writes the fields behind the header, and the line end only when `writeNewline` is not 0, so that a caller
// can go on in the same line. Returns 0 or WMQE_SYS.
WMQ_API int writeJobStart_ex(FILE *file, struct jobStartLog *log, int writeNewline);

// Conventions and results as for readJobStatus; WMQE_BAD_FORMAT too when the hosts of the line expand to more
// than 16,777,216.
WMQ_API int readJobStart(const char *fields, struct jobStartLog *log);

#ifdef __cplusplus
}
#endif

#endif
