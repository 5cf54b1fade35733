// Messages and data attached to jobs: JOB_MSG, JOB_MSG_ACK, JOB_EXT_MSG, JOB_ATTA_DATA; JOB_CHUNK: jobs run
// together.
#ifndef WMQ_RECORDS_JOB_MESSAGES_H
#define WMQ_RECORDS_JOB_MESSAGES_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct jobMsgLog {
  int32_t msgInt1;
  int32_t msgInt2;
  int32_t msgInt3;
  int32_t msgInt4;
  char *msgStr1;
  char *msgStr2;
  char *msgStr3;
  int32_t msgInt5;
} jobMsgLog;

// The release keeps the strings of this one.
typedef struct jobMsgAckLog {
  int32_t msgInt1;
  int32_t msgInt2;
  int32_t msgInt3;
  int32_t msgInt4;
  char *msgStr1;
  char *msgStr2;
  char *msgStr3;
  int32_t msgInt5;
} jobMsgAckLog;

typedef struct jobExternalMsgLog {
  int32_t extMsgInt1;
  int32_t extMsgInt2;
  int32_t extMsgInt3;
  char *extMsgStr;
  int32_t userId;
  int64_t extMsgLong1;
  int64_t extMsgLong2;  // low 32 bits on the line
  int32_t extMsgInt4;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  int32_t extMsgInt5;            // lines before 9.1 leave it as handed in
  int32_t extMsgInt6;            // -1 when absent
} jobExternalMsgLog;

typedef struct jobAttaDataLog {
  int32_t attaInt1;
  int32_t attaInt2;
  int32_t attaInt3;
  int64_t attaLong;
  int32_t attaInt4;
  char *attaStr;
} jobAttaDataLog;

typedef struct jobChunkLog {
  int64_t numChunkIds;
  int64_t *chunkIds;
  int64_t numHosts;
  char **hosts;      // expanded
  int32_t chunkInt;  // -1 when absent
} jobChunkLog;

// Conventions as for readJobStatus; readJobExternalMsg returns WMQE_NO_USER when it must look the user up and
// cannot.
WMQ_API int readJobMsg(const char *fields, struct jobMsgLog *log);
WMQ_API int readJobMsgAck(const char *fields, struct jobMsgAckLog *log);
WMQ_API int readJobExternalMsg(const char *fields, struct jobExternalMsgLog *log);
WMQ_API int readJobAttaData(const char *fields, struct jobAttaDataLog *log);
WMQ_API int readJobChunk(const char *fields, struct jobChunkLog *log);

#ifdef __cplusplus
}
#endif

#endif
