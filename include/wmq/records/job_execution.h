// JOB_START_ACCEPT: the execution side accepted a started job. JOB_EXECUTE: its context once it runs.
#ifndef WMQ_RECORDS_JOB_EXECUTION_H
#define WMQ_RECORDS_JOB_EXECUTION_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobStartAcceptLog {
  int32_t jobId;
  int32_t acceptInt1;
  int32_t acceptInt2;
  int32_t acceptInt3;  // 0 in lines up to 3.0
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t acceptInt4;  // -1 when absent
} jobStartAcceptLog;

typedef struct jobExecuteLog {
  int32_t jobId;
  int32_t execInt1;
  char *execStr2;
  char *execStr1;
  int32_t execInt2;
  char *execStr3;
  int32_t execInt3;
  int32_t execInt4;
  char *execStr4;
  int32_t execInt5;  // -1 when absent
  int32_t execInt6;
  char *execStr5;
  int32_t execInt7;  // 2147483647 when absent
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  char *execStr6;
  int32_t execInt8;  // -1 when absent
} jobExecuteLog;

// Conventions as for writeJobStatus and readJobStatus.
WMQ_API int writeJobStartAccept(FILE *file, struct jobStartAcceptLog *log);
WMQ_API int readJobStartAccept(const char *fields, struct jobStartAcceptLog *log);
WMQ_API int writeJobExecute(FILE *file, struct jobExecuteLog *log);
WMQ_API int readJobExecute(const char *fields, struct jobExecuteLog *log);

#ifdef __cplusplus
}
#endif

#endif
