// Preparing hosts for jobs, and the power of hosts: JOB_PROVISION_START, JOB_PROVISION_END,
// HOST_POWER_STATUS, JOB_PROV_HOST.
#ifndef WMQ_RECORDS_PROVISIONING_H
#define WMQ_RECORDS_PROVISIONING_H

#include "wmq/records/job_start.h"

#ifdef __cplusplus
extern "C" {
#endif

// In `provFlags`: provStr2 stands on the line.
#define PROVISION_FLAG_STR2 0x80

typedef struct jobProvisionStartLog {
  int32_t jobId;
  int32_t provInt1;
  char *provStr1;
  int32_t provFlags;
  int32_t hasJobStart;  // not 0: jobStart is given
  struct jobStartLog jobStart;
  char *provStr2;  // behind a jobStart the reader gets that one's first string instead
} jobProvisionStartLog;

typedef struct jobProvisionEndLog {
  int32_t jobId;
  int32_t provInt1;
  char *provStr1;
  int32_t provFlags;
  int32_t provInt2;
  int32_t numProvHosts;
  char **provHosts;  // expanded
  int32_t numProvHosts2;
  char **provHosts2;  // expanded
  char *provStr2;
} jobProvisionEndLog;

typedef struct hostPowerStatusLog {
  int32_t powerInt1;
  int32_t powerInt2;
  int32_t powerInt3;
  char *powerStr1;
  int32_t powerInt4;
  int32_t numPowerHosts;
  char **powerHosts;  // compressed when written, left so when read
  char *powerStr2;
} hostPowerStatusLog;

typedef struct jobProvHostLog {
  int32_t jobId;
  int32_t provHostInt1;
  int32_t provHostInt2;
  int32_t hasJobStart;  // 1: jobStart is written; not 0: it is read
  int32_t numProvHosts;
  char **provHosts;         // compressed when written, left so when read
  int32_t *provHostValues;  // numProvHosts
  struct jobStartLog jobStart;
} jobProvHostLog;

// Conventions as for writeJobStatus and readJobStatus.
WMQ_API int writeJobProvisionStart(FILE *file, struct jobProvisionStartLog *log);
WMQ_API int readJobProvisionStart(const char *fields, struct jobProvisionStartLog *log);
WMQ_API int writeJobProvisionEnd(FILE *file, struct jobProvisionEndLog *log);
WMQ_API int readJobProvisionEnd(const char *fields, struct jobProvisionEndLog *log);
WMQ_API int writeHostPowerStatusLog(FILE *file, struct hostPowerStatusLog *log);
WMQ_API int readHostPowerStatusLog(const char *fields, struct hostPowerStatusLog *log);
WMQ_API int readJobProvHostLog(const char *fields, struct jobProvHostLog *log);

// Release the members of a log structure, not the structure itself. Null is allowed.
WMQ_API void free_jobProvisionStartLog(struct jobProvisionStartLog *log);
WMQ_API void free_jobProvisionEndLog(struct jobProvisionEndLog *log);
WMQ_API void free_hostPowerStatusLog(struct hostPowerStatusLog *log);
WMQ_API void free_jobProvHostLog(struct jobProvHostLog *log);

#ifdef __cplusplus
}
#endif

#endif
