// JOB_NEW: a job was submitted. JOB_MODIFY: its parameters changed. One structure, one layout.
#ifndef WMQ_RECORDS_JOB_NEW_H
#define WMQ_RECORDS_JOB_NEW_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobNewLog {
  int32_t jobId;
  int32_t userId;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes
  int32_t options;               // negative: limits are not converted
  int32_t options2;
  int32_t numProcessors;
  int64_t submitTime;
  int64_t beginTime;
  int64_t termTime;
  int32_t newInt1;
  int32_t newInt2;
  int32_t newInt3;
  int32_t rlimits[WMX_RLIM_NLIMITS];  // slot i is named wmxRlimitsStr[i]
  char newHost[WMQ_HOST_SIZE];        // 0 to 63 bytes
  float hostFactor;                   // two decimals on the line
  int32_t newInt4;
  char queue[WMQ_NAME_SIZE];  // 1 to 59 bytes
  char *resReq;
  char fromHost[WMQ_HOST_SIZE];  // submission host; 1 to 63 bytes
  char *cwd;
  char *newStr1;
  char *inFile;
  char *outFile;
  char *newStr2;
  char *newStr9;
  char *newStr10;
  char *newStr11;
  char *newStr3;
  char *jobFile;
  int32_t numNameList;
  char **nameList;
  char *dependCond;
  char *newStr7;
  char *jobName;
  char *command;
  int32_t numStrPairs;
  struct strPair *strPairs;
  char *preExecCmd;
  char *newStr4;
  char *projectName;
  int32_t newInt5;  // on the line under JOB_OPTION_INT5, or JOB_OPTION2_INT5
  int32_t maxNumProcessors;
  char *newStr5;
  char *newStr6;
  char *userGroup;
  char *newStr8;
  int32_t newInt6;
  int32_t newInt7;  // -1 when absent
  char *rsvId;
  char *jgroup;
  char *newStr12;
  int32_t newInt8;  // -1 when absent
  char *newStr13;
  char *sla;
  int32_t newInt9;  // -1 when absent
  char *licenseProject;
  int32_t options3;
  char *app;
  char *postExecCmd;
  int32_t newInt10;  // -1 when absent
  char *requeueEValues;
  int32_t newInt11;
  int32_t newInt12;  // -1 when absent
  char *newStr21;
  char *jobDescription;
  struct submitExt *submitExt;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t newInt13;  // JOB_INT13_NAME_LIST2: the reader takes nameList2 from the line
  int32_t numNameList2;
  char **nameList2;
  char *newStr14;
  char *newStr15;
  char *newStr16;
  char *newStr17;
  char *newStr18;
  int32_t newInt14;
  int32_t newInt15;
  int32_t newInt16;
  char *newStr19;  // may be null; written as ""
  char *newStr20;
  struct namedValueList *namedValues;  // may be null
} jobNewLog;

// Option bits that decide which fields stand on a submission line.
#define JOB_OPTION_INT5 0x04000000    // options: newInt5 (first place)
#define JOB_OPTION2_INT5 0x4          // options2: newInt5 (second place)
#define JOB_OPTION2_INT8 0x2000       // options2: newInt8
#define JOB_OPTION2_STR13 0x4000      // options2: newStr13
#define JOB_OPTION2_RSV 0x8000        // options2: rsvId
#define JOB_OPTION2_JGROUP 0x40000    // options2: jgroup
#define JOB_OPTION2_SLA 0x80000       // options2: sla
#define JOB_OPTION2_STR12 0x100000    // options2: newStr12
#define JOB_OPTION2_LICENSE 0x200000  // options2: licenseProject
#define JOB_INT13_NAME_LIST2 0x80     // newInt13: nameList2 is read

// Writes the fields behind the header of a JOB_NEW or JOB_MODIFY line, line end included; returns 0 or
// WMQE_SYS. Line ends inside `resReq`, `dependCond`, `preExecCmd`, `command`, `newStr4`, `newStr7`,
// `postExecCmd`, `requeueEValues` and `newStr14` become blanks in the caller's record.
WMQ_API int writeJobNew(FILE *file, struct jobNewLog *log);

#ifdef __cplusplus
}
#endif

#endif
