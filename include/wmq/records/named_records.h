// The records whose lines are name/value pairs: JOB_FINISH2, JOB_STATUS2, JOB_PENDING_REASONS,
// JOB_STARTLIMIT.
//
// A pair is two quoted strings. Members bear the names of their attributes; an attribute that a line lacks
// leaves its member as it is in a zero-filled structure. Every 64-bit number but the leading job number is
// cut to 32 bits when read. Times and durations are seconds; `wmq stats` takes maxMem, avgMem and ru_maxrss
// for KB.
#ifndef WMQ_RECORDS_NAMED_RECORDS_H
#define WMQ_RECORDS_NAMED_RECORDS_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobFinish2Log {
  int64_t jobId;
  int32_t userId;
  char userName[WMQ_NAME_SIZE];  // cut to 59 bytes when read
  int32_t numProcessors;
  int32_t options;
  int32_t jStatus;
  int64_t submitTime;
  int64_t termTime;
  int64_t startTime;
  int64_t endTime;
  char queue[WMQ_NAME_SIZE];  // cut to 59 bytes when read
  char *resReq;
  char fromHost[WMQ_HOST_SIZE];  // cut to 63 bytes when read
  char *cwd;
  char *inFile;
  char *outFile;
  char *jobFile;
  int32_t numExHosts;
  char **execHosts;     // numExHosts; null where a line has something else at the place
  int32_t *slotUsages;  // numExHosts: slots used on each
  double cpuTime;
  char *jobName;
  char *command;
  double ru_utime;
  double ru_stime;
  double ru_maxrss;
  double ru_nswap;
  char *preExecCmd;
  char *projectName;
  int32_t exitStatus;
  int32_t maxNumProcessors;
  char *sla;
  int32_t exitInfo;
  char *chargedSAAP;
  char *licenseProject;
  char *app;
  char *postExecCmd;
  char *jgroup;
  int32_t numhRusages;
  struct hostRusageEntry *hostRusage;  // of extra attributes only HOST_ENERGY_CONSUMPTION travels
  char *execRusage;
  char *clusterName;
  char *userGroup;
  int32_t runtime;
  int32_t maxMem;
  int32_t avgMem;
  char *effectiveResReq;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int64_t forwardTime;
  int32_t runLimit;
  int32_t options3;
  char *flow_id;
  int32_t totalProvisionTime;
  char *outdir;
  int32_t dcJobFlags;
  char *subcwd;
  struct affinityAlloc *affinityAllocInfo;
  int32_t numNetworkAllocs;
  struct networkAlloc *networkAllocInfo;
  double serial_job_energy;
  int32_t numAllocSlots;
  char **allocSlots;  // numAllocSlots; null where a line has something else at the place
  char *jobDescription;
  int32_t ineligiblePendingTime;
  char *dependCond;
  int32_t options2;
  int64_t beginTime;
  double hostFactor;
  int32_t exceptMask;
  char *rsvId;
  char *requeueEValues;
  int32_t indexRangeCnt;
  int32_t *indexRangeStart;
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
  int32_t numGPURusages;
  struct gpuRusageEntry *gpuRusages;
  int32_t effectiveRunTime;
  int32_t effectiveRunLimit;
} jobFinish2Log;

typedef struct jobStatus2Log {
  int64_t jobId;
  int32_t expectedLogTime;
  int32_t sampleInterval;
  char userName[WMQ_NAME_SIZE];  // cut to 59 bytes when read
  int32_t jobRmtAttr;
  int32_t numProcessors;
  int32_t num_processors;
  int32_t numJobs;
  int32_t jStatus;
  int64_t submitTime;
  int64_t startTime;
  int64_t endTime;
  char queue[WMQ_NAME_SIZE];  // cut to 59 bytes when read
  char *resReq;
  int32_t numExHosts;
  char **execHosts;
  int32_t *slotUsages;
  double ru_utime;
  double ru_stime;
  double ru_maxrss;
  double ru_nswap;
  char *projectName;
  char *app;
  char *jgroup;
  int32_t numhRusages;
  struct hostRusageEntry *hostRusage;
  char *execRusage;
  char *clusterName;
  char *userGroup;
  int32_t runtimeDelta;
  int32_t provtimeDelta;
  int32_t reason;
  int32_t maxMem;
  int32_t avgMem;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t dcJobFlags;
  int32_t ineligiblePendingTime;
  int32_t indexRangeCnt;
  int32_t *indexRangeStart;
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
  int32_t numGPURusages;  // set to 0 by the writer: read, never written
  struct gpuRusageEntry *gpuRusages;
  int32_t interactive;  // written, and never found when reading
} jobStatus2Log;

typedef struct jobPendingReasonsLog {
  char userName[WMQ_NAME_SIZE];  // cut to 59 bytes when read
  char queue[WMQ_NAME_SIZE];     // cut to 59 bytes when read
  char *projectName;
  char *licenseProject;
  char *resReq;
  char *app;
  int32_t num_processors;
  char *combinedResReq;
  int32_t mainReason;
  int32_t subReason;
  int32_t sumDetailReasonHosts;
  char *detail;
  int32_t numJobs;
  int32_t pendingTime;
  int32_t averagePendingTime;
  int32_t sampleInterval;
  int32_t detailedReason;
  char *clusterName;
  char *pendingTimeRanking;
  char *hostType;
  int64_t expectedLogTime;
} jobPendingReasonsLog;

typedef struct jobStartLimitLog {
  char *clusterName;
  int64_t limitJobId;
  int32_t options;
  int32_t wmxRlimits[WMX_RLIM_NLIMITS];  // slot i is named wmxRlimitsStr[i]
  int32_t jobRlimits[WMX_RLIM_NLIMITS];  // slot i is named jobRlimitsStr[i]
} jobStartLimitLog;

// The attribute names that a reader knows, in the order in which it searches them by halving, then null. The
// ones of JOB_STATUS2 are out of order in two places, and so `wmxRusage` and "interactive" are never found.
extern WMQ_API const char *const jobFinish2LogAttrNames[89];
extern WMQ_API const char *const jobStatus2LogAttrNames[54];
extern WMQ_API const char *const jobPendingReasonsLogAttrNames[22];

// Conventions as for writeJobStatus and readJobStatus. A missing or empty host or slot name makes writing
// fail with WMQE_SYS.
WMQ_API int writeJobFinish2(FILE *file, struct jobFinish2Log *log);
WMQ_API int readJobFinish2(const char *fields, struct jobFinish2Log *log);
WMQ_API int writeJobStatus2(FILE *file, struct jobStatus2Log *log);
WMQ_API int readJobStatus2(const char *fields, struct jobStatus2Log *log);
WMQ_API int writeJobPendingReasons(FILE *file, struct jobPendingReasonsLog *log);
WMQ_API int readJobPendingReasons(const char *fields, struct jobPendingReasonsLog *log);
WMQ_API int writeJobStartLimit(FILE *file, struct jobStartLimitLog *log);
WMQ_API int readJobStartLimit(const char *fields, struct jobStartLimitLog *log);

#ifdef __cplusplus
}
#endif

#endif
