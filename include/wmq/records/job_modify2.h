// JOB_MODIFY2: a submitted job was modified; only what changed stands on the line.
#ifndef WMQ_RECORDS_JOB_MODIFY2_H
#define WMQ_RECORDS_JOB_MODIFY2_H

#include "wmq/records/remote_control.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobModLog {
  char *modJobIdStr;
  int32_t options;  // with options2 and options3: which fields stand on the line
  int32_t options2;
  int32_t modInt1;
  int32_t modInt13;
  int32_t modInt2;
  char *modStr1;
  int32_t modInt3;
  int32_t modInt4;
  int32_t modInt5;
  int32_t modInt6;
  int32_t modInt7;
  int32_t modInt8;
  int32_t modInt9;
  char *modStr2;
  char *modStr3;
  int32_t numNameList;
  char **nameList;
  char *modStr4;
  int32_t rlimits[WMX_RLIM_NLIMITS];  // travel as held: no conversion
  char *modStr5;
  char *modStr6;
  char *modStr7;
  char *modStr8;
  char *modStr9;
  char *modStr10;
  char *modStr11;
  char *modStr12;
  char *modStr24;
  char *modStr25;
  int32_t modInt10;
  char *modStr13;
  int32_t numStrPairs;
  struct strPair *strPairs;
  char *modStr14;
  char *modStr15;
  char *modStr16;
  char *modStr17;
  char *modStr18;
  char *modStr19;
  int32_t modInt11;
  int32_t modInt12;
  char *modStr20;
  char *modStr21;
  char *modStr22;
  char *modStr23;
  int32_t modInt14;
  char *rsvId;
  char *newStr12;
  int32_t newInt8;  // -1 when absent
  char *newStr13;
  char *jgroup;
  char *sla;
  char *licenseProject;
  int32_t options3;
  int32_t modInt15;
  char *modStr26;
  char *modStr27;
  char *modStr28;
  int32_t modInt16;  // -1 when absent
  char *modStr29;
  int32_t modInt17;
  int32_t modInt18;  // -1 when absent
  void *reserved1;   // no line carries it; not released
  char *modStr30;
  struct submitExt *submitExt;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t modInt19;  // JOB_INT13_NAME_LIST2: nameList2 stands on the line
  int32_t modInt20;
  int32_t numNameList2;
  char **nameList2;
  int32_t modInt21;  // -1 when absent
  int32_t numRmtJobCtrls;
  struct oldRmtJobCtrlRecord *rmtJobCtrls;
  char *modStr31;
  char *modStr32;
  char *modStr33;
  int32_t modInt22;
  int32_t modInt23;
  int32_t modInt24;
  char *modStr34;  // may be null; written as ""
  char *modStr35;  // likewise
  struct namedValueList *namedValues;
  void *reserved2;
  int32_t numNewRmtJobCtrls;
  struct newRmtJobCtrlRecord *newRmtJobCtrls;
} jobModLog;

// Conventions as for writeJobStatus and readJobStatus. Line ends inside `modStr6`, `modStr17`, `modStr28` and
// `modStr29` become blanks in the caller's record where these are written.
WMQ_API int writeJobMod(FILE *file, struct jobModLog *log);
WMQ_API int readJobMod(const char *fields, struct jobModLog *log);

#ifdef __cplusplus
}
#endif

#endif
