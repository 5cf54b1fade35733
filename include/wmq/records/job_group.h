// GRP_ADD, GRP_MOD, GRP_CTRL, GRP_STATUS: job groups.
#ifndef WMQ_RECORDS_JOB_GROUP_H
#define WMQ_RECORDS_JOB_GROUP_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jgrpAddLog {
  int32_t grpField1;
  int64_t grpTime;
  char grpName[WMQ_NAME_SIZE];  // 1 to 59 bytes
  char *grpStr4;
  char *grpStr5;
  char *grpStr1;
  char *grpStr2;
  int32_t grpOptions;
  int32_t grpField10;
  int32_t grpField9;
  char *grpStr6;
  int32_t grpField12;
  int32_t grpField13;  // 1 in lines up to 7.02
} jgrpAddLog;

// In `grpOptions` of GRP_MOD: the reader takes grpField14 and grpName2 from the line.
#define GRP_OPTION_RENAMED 0x4

typedef struct jgrpModLog {
  int32_t grpField1;
  int64_t grpTime;
  char grpName[WMQ_NAME_SIZE];  // 1 to 59 bytes
  char *grpStr4;
  char *grpStr5;
  char *grpStr1;
  char *grpStr2;
  int32_t grpOptions;
  int32_t grpField10;
  int32_t grpField9;
  char *grpStr6;
  int32_t grpField12;
  int32_t grpField13;
  int32_t grpField14;
  char grpName2[WMQ_NAME_SIZE];  // 0 to 59 bytes
} jgrpModLog;

typedef struct jgrpCtrlLog {
  int32_t grpField1;
  char grpName[WMQ_NAME_SIZE];  // 1 to 59 bytes
  char *grpCtrlStr;
  int32_t grpCtrlField2;
  int32_t grpCtrlField3;
} jgrpCtrlLog;

typedef struct jgrpStatusLog {
  char *grpStatusStr;
  int32_t grpStatusField2;
  int32_t grpStatusField3;
} jgrpStatusLog;

// Reads the fields of a GRP_MOD line; conventions and results as for readJobStatus.
WMQ_API int readJgrpMod(const char *fields, struct jgrpModLog *log);

#ifdef __cplusplus
}
#endif

#endif
