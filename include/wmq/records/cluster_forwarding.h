// Jobs that pass from one cluster to another: JOB_FORWARD, JOB_ACCEPT, JOB_ACCEPTACK, JOB_STAT_ACK.
#ifndef WMQ_RECORDS_CLUSTER_FORWARDING_H
#define WMQ_RECORDS_CLUSTER_FORWARDING_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobForwardLog {
  int32_t jobId;
  char *fwdStr1;
  int32_t numHosts;
  char **hosts;  // expanded
  int32_t fwdInt1;
  int32_t fwdInt2;
  char *fwdStr2;
  int64_t fwdLong1;
  int64_t fwdLong2;
} jobForwardLog;

typedef struct jobAcceptLog {
  int32_t jobId;
  int64_t acceptJobId;
  char *jobAcceptStr1;
  int32_t jobAcceptInt1;
  int32_t jobAcceptInt2;
  char *jobAcceptStr2;
  int64_t jobAcceptLong;  // low 32 bits on the line, signed; read as an unsigned number
} jobAcceptLog;

typedef struct jobAcceptAckLog {
  int32_t jobId;
  int32_t acceptAckInt1;
  int32_t acceptAckInt2;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
} jobAcceptAckLog;

typedef struct statusAckLog {
  int32_t jobId;
  int32_t statusAckInt1;
  int32_t statusAckInt2;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
} statusAckLog;

// Conventions as for writeJobStatus and readJobStatus.
WMQ_API int writeJobForward(FILE *file, struct jobForwardLog *log);
WMQ_API int readJobForward(const char *fields, struct jobForwardLog *log);
WMQ_API int writeJobAccept(FILE *file, struct jobAcceptLog *log);
WMQ_API int readJobAccept(const char *fields, struct jobAcceptLog *log);
WMQ_API int writeJobAcceptAck(FILE *file, struct jobAcceptAckLog *log);
WMQ_API int readJobAcceptAck(const char *fields, struct jobAcceptAckLog *log);
WMQ_API int readStatusAck(const char *fields, struct statusAckLog *log);

#ifdef __cplusplus
}
#endif

#endif
