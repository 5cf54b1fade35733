// Resources accounted for and work sampled: JOB_RUN_RUSAGE, JOB_RESIZE, EVENT_ADRSV_FINISH,
// CPUPROFILE_STATUS, SLA_RECOMPUTE, METRIC_LOG.
#ifndef WMQ_RECORDS_ACCOUNTING_H
#define WMQ_RECORDS_ACCOUNTING_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct rusageEntry {
  int32_t entryInt1;
  int32_t entryInt2;
  int32_t entryInt3;
  int32_t entryInt4;
} rusageEntry;

typedef struct jobRunRusageLog {
  int32_t runRusageInt1;
  int32_t runRusageInt2;
  int32_t runRusageInt3;
  int32_t runRusageInt4;
  int64_t runRusageLong1;
  int64_t runRusageLong2;
  int32_t numRusageEntries;  // 0: the reader stops here
  struct rusageEntry *rusageEntries;
  int32_t numRusageValues;  // 0: the reader stops here
  int32_t *rusageValues;
  int32_t runRusageInt5;
} jobRunRusageLog;

typedef struct jobResizeLog {
  int32_t jobId;
  int32_t jobIndex;
  int64_t resizeLong1;  // low 32 bits on the line
  int32_t resizeInt1;
  char resizeName[WMQ_NAME_SIZE];  // 1 to 59 bytes
  int32_t resizeInt2;
  int64_t resizeLong2;  // low 32 bits on the line
  int32_t resizeInt3;
  int32_t numExHosts;  // not 0 on a line that is read, like the next two; host lists are held expanded
  char **execHosts;
  int32_t numResizeHosts;
  char **resizeHosts;
  char **allocSlots;  // from 9.13 on
  int32_t numAllocSlots;
  char **resizeSlots;  // from 9.13 on; may be empty
  int32_t numResizeSlots;
} jobResizeLog;

typedef struct rsvEntry {
  char *entryName;
  int32_t entryValue;
} rsvEntry;

typedef struct rsvFinishLog {
  int64_t rsvLong1;  // low 32 bits on the line
  int32_t rsvInt1;
  int32_t rsvInt2;
  char *rsvStr1;
  char *rsvStr2;
  int32_t numRsvEntries;
  struct rsvEntry *rsvEntries;
  char *rsvStr3;
  int64_t rsvLong2;  // low 32 bits on the line
  char *rsvStr4;
  char *rsvStr5;
  char *rsvStr6;  // lines before 9.13: a copy of rsvStr2
} rsvFinishLog;

typedef struct cpuProfileLog {
  char cpuProfileName[WMQ_NAME_SIZE];  // 1 to 59 bytes
  int32_t cpuInt1;
  int32_t cpuInt2;
  int32_t cpuInt3;  // last on the line, behind cpuInt4
  int32_t cpuInt4;
} cpuProfileLog;

#define SLA_VALUES 14

typedef struct slaLog {
  char *slaStr1;
  char *slaStr2;
  int32_t slaInt1;
  int32_t slaInt2;
  int32_t slaInt3;
  int32_t slaValues[SLA_VALUES];  // lines up to 7.01 carry the first 8
} slaLog;

// Lines carry metricLong1, metricInt1 to 11, metricLong2, metricInt12 to 16; the reader takes metricLong2 and
// what follows from the beginning of the line again.
typedef struct perfmonMetricsLog {
  int32_t metricInt1;
  int32_t metricInt2;
  int32_t metricInt3;
  int32_t metricInt4;
  int32_t metricInt5;
  int32_t metricInt6;
  int32_t metricInt7;
  int32_t metricInt8;
  int32_t metricInt9;
  int32_t metricInt10;
  int32_t metricInt11;
  int64_t metricLong1;  // low 32 bits on the line
  int64_t metricLong2;
  int32_t metricInt12;
  int32_t metricInt13;
  int32_t metricInt14;
  int32_t metricInt15;
  int32_t metricInt16;
} perfmonMetricsLog;

// Conventions as for writeJobStatus and readJobStatus. writeRsvFinish and readRsvFinish return WMQE_SYS for a
// null argument, and readRsvFinish WMQE_BAD_FORMAT when its entries cannot be allocated.
WMQ_API int writeJobRunRusage(FILE *file, struct jobRunRusageLog *log);
WMQ_API int readJobRunRusage(const char *fields, struct jobRunRusageLog *log);
WMQ_API int writeJobResize(FILE *file, struct jobResizeLog *log);
WMQ_API int readJobResize(const char *fields, struct jobResizeLog *log);
WMQ_API int writeRsvFinish(FILE *file, struct rsvFinishLog *log);
WMQ_API int readRsvFinish(const char *fields, struct rsvFinishLog *log);
WMQ_API int readCpuProfile(const char *fields, struct cpuProfileLog *log);
WMQ_API int readSLALog(const char *fields, struct slaLog *log);
WMQ_API int readPerfmonMetrics(const char *fields, struct perfmonMetricsLog *log);

// Release the members of a log structure, not the structure itself. Null is allowed.
WMQ_API void freeRsvFinishLog(struct rsvFinishLog *log);
WMQ_API void free_jobResizeLog(struct jobResizeLog *log);

#ifdef __cplusplus
}
#endif

#endif
