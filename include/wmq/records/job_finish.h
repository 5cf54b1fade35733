// JOB_FINISH: a job has ended: how it was submitted, where it ran, how it ended, what it used.
#ifndef WMQ_RECORDS_JOB_FINISH_H
#define WMQ_RECORDS_JOB_FINISH_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobFinishLog {
  int32_t jobId;
  int32_t userId;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes
  int32_t options;
  int32_t numProcessors;  // requested
  int32_t jStatus;        // final state
  int64_t submitTime;
  int64_t beginTime;
  int64_t termTime;
  int64_t startTime;
  int64_t endTime;            // not on the line: the reader takes the event time of the header
  char queue[WMQ_NAME_SIZE];  // 1 to 59 bytes
  char *resReq;
  char fromHost[WMQ_HOST_SIZE];  // 1 to 63 bytes
  char *cwd;
  char *inFile;
  char *outFile;
  char *finStr1;
  char *finStr2;
  char *finStr3;
  char *finStr4;
  int32_t numNameList;
  char **nameList;
  int32_t numExHosts;
  char **execHosts;  // one name per host occurrence, expanded
  float cpuTime;     // not on the line: user plus system time of wmxRusage, 0 if that is negative
  char *jobName;
  char *command;
  struct wmxRusage wmxRusage;
  float hostFactor;  // one decimal on the line
  char *preExecCmd;
  char *projectName;
  int32_t exitStatus;
  int32_t maxNumProcessors;
  char *finStr5;
  char *finStr6;
  int32_t finInt1;
  int32_t finInt2;
  int32_t finInt3;
  char *finStr7;
  char *finStr8;
  char *finStr9;
  char *finStr10;
  int32_t finInt4;
  char *finStr11;
  int32_t finInt5;
  char *finStr12;
  int32_t finInt6;
  char *finStr13;
  char *finStr14;
  char *finStr15;
  char *finStr16;
  int32_t finInt7;
  char *finStr17;
  char *finStr18;
  int32_t finInt8;
  char *finStr19;
  struct submitExt *submitExt;
  int32_t numhRusages;
  struct hostRusageEntry *hostRusage;  // extra attributes are read, never written
  int32_t finInt9;
  int32_t finInt10;
  int32_t finInt11;
  char *finStr20;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int64_t forwardTime;
  char *finStr21;
  char *finStr22;
  int32_t finInt12;
  char *finStr23;
  int32_t numStrIntPairs;
  struct namedInt *strIntPairs;
  int32_t numAllocSlots;
  char **allocSlots;  // one host name per slot; when the line has none: a copy of execHosts
  int32_t finInt13;
  int32_t numGPURusages;
  struct gpuRusageEntry *gpuRusages;
} jobFinishLog;

// Writes the fields behind the header, line end included. Returns 0 or WMQE_SYS (an empty or missing entry of
// `allocSlots` counts as a failed write).
WMQ_API int writeJobFinish(FILE *file, struct jobFinishLog *log);

// `eventTime` is the time of the header. Conventions as for readJobStatus; WMCE_NO_MEM besides, when the
// array of host usage entries cannot be allocated.
WMQ_API int readJobFinish(const char *fields, struct jobFinishLog *log, int32_t eventTime);

#ifdef __cplusplus
}
#endif

#endif
