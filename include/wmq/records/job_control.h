// How a job was controlled after submission: JOB_SIGNAL, JOB_MOVE, JOB_SWITCH, JOB_SWITCH2, JOB_SIGACT,
// JOB_REQUEUE, JOB_FORCE, CHKPNT, MIG.
#ifndef WMQ_RECORDS_JOB_CONTROL_H
#define WMQ_RECORDS_JOB_CONTROL_H

#include "wmq/records/remote_control.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobSignalLog {
  int32_t userId;
  int32_t jobId;
  char *signalStr;
  int32_t signalInt1;
  int32_t signalInt2;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t indexRangeCnt;
  int32_t *indexRangeStart;  // one block of 3 * indexRangeCnt when read: the other two are never freed
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
} jobSignalLog;

typedef struct jobMoveLog {
  int32_t userId;
  int32_t jobId;
  int32_t moveInt1;
  int32_t moveInt2;
  int32_t moveInt3;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  int32_t rmtCtrlInt;            // -1 in lines before 9.1
  int32_t numRmtJobCtrl;
  struct oldRmtJobCtrlRecord *rmtJobCtrls;
  int32_t indexRangeCnt;
  int32_t *indexRangeStart;
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
  int32_t numNewRmtJobCtrl;
  struct newRmtJobCtrlRecord *newRmtJobCtrls;
} jobMoveLog;

typedef struct jobSwitchLog {
  int32_t userId;
  int32_t jobId;
  char queue[WMQ_NAME_SIZE];  // 1 to 59 bytes
  int32_t switchInt1;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t rmtCtrlInt;  // -1 in lines before 9.1
  int32_t numRmtJobCtrl;
  struct oldRmtJobCtrlRecord *rmtJobCtrls;
  int32_t indexRangeCnt;  // the ranges are written and never read back
  int32_t *indexRangeStart;
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
} jobSwitchLog;

typedef struct jobSwitch2Log {
  int32_t userId;
  int32_t jobId;
  char queue[WMQ_NAME_SIZE];     // 1 to 59 bytes
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes, never looked up
  int32_t indexRangeCnt;         // at least 1 on a line that is read
  int32_t *indexRangeStart;
  int32_t *indexRangeEnd;
  int32_t *indexRangeStep;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t rmtCtrlInt;  // -1 in lines before 9.1
  int32_t numRmtJobCtrl;
  struct oldRmtJobCtrlRecord *rmtJobCtrls;
} jobSwitch2Log;

typedef struct jobSigActLog {
  int32_t jobId;
  int64_t sigActInt1;  // low 32 bits on the line
  int32_t sigActInt2;
  int32_t sigActInt3;
  int32_t sigActInt4;
  int32_t sigActInt5;
  char *sigActStr;
  int32_t sigActInt6;
  int32_t sigActInt7;
} jobSigActLog;

typedef struct jobRequeueLog {
  int32_t jobId;
  int32_t requeueInt1;
  int32_t requeueInt2;  // from 9.13 on
} jobRequeueLog;

// Most bytes of forceStr.
#define JOB_FORCE_TEXT_MAX 512

typedef struct jobForceLog {
  int32_t userId;
  int32_t numExecHosts;
  char **execHosts;  // expanded
  int32_t jobId;
  int32_t forceInt1;
  int32_t forceInt2;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  char *forceStr;                // lines up to 4.2 leave it as handed in
  int32_t rmtCtrlInt;            // -1 in lines before 9.1
  int32_t numRmtJobCtrl;
  struct oldRmtJobCtrlRecord *rmtJobCtrls;
} jobForceLog;

typedef struct chkpntLog {
  int32_t jobId;
  int64_t chkpntInt1;  // low 32 bits on the line
  int32_t chkpntInt2;
  int32_t chkpntInt3;
  int32_t chkpntInt4;
  int32_t chkpntInt5;
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
} chkpntLog;

typedef struct migLog {
  int32_t jobId;
  int32_t numHosts;
  char **hosts;    // travel as they are, without compression
  int32_t userId;  // -1 in lines before 2.2
  int32_t migInt1;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  char *srcCluster;
  int64_t srcJobId;
  char *dstCluster;
  int64_t dstJobId;
  int32_t migInt2;
  int32_t migInt3;  // -1 when absent
} migLog;

// Conventions as for writeJobStatus and readJobStatus. Readers that look the user up return WMQE_NO_USER when
// that fails, after a message to the system log.
WMQ_API int writeJobSignal(FILE *file, struct jobSignalLog *log);
WMQ_API int readJobSignal(const char *fields, struct jobSignalLog *log);
WMQ_API int writeJobMove(FILE *file, struct jobMoveLog *log);
WMQ_API int readJobMove(const char *fields, struct jobMoveLog *log);
WMQ_API int writeJobSwitch(FILE *file, struct jobSwitchLog *log);
WMQ_API int readJobSwitch(const char *fields, struct jobSwitchLog *log);
WMQ_API int writeJobSwitch2(FILE *file, struct jobSwitch2Log *log);
WMQ_API int readJobSwitch2(const char *fields, struct jobSwitch2Log *log);
WMQ_API int readJobSigAct(const char *fields, struct jobSigActLog *log);
WMQ_API int readJobRequeue(const char *fields, struct jobRequeueLog *log);
WMQ_API int writeJobForce(FILE *file, struct jobForceLog *log);
WMQ_API int readJobForce(const char *fields, struct jobForceLog *log);
WMQ_API int readChkpnt(const char *fields, struct chkpntLog *log);
WMQ_API int writeMig(FILE *file, struct migLog *log);
WMQ_API int readMig(const char *fields, struct migLog *log);

#ifdef __cplusplus
}
#endif

#endif
