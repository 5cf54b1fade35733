// The scheduler itself: MBD_START, MBD_DIE, QUEUE_CTRL, HOST_CTRL, EVENT_HGHOST_CTRL, LOAD_INDEX and the
// calendars.
//
// Names are refused when they are too long, texts are cut to 511 bytes.
#ifndef WMQ_RECORDS_DAEMON_CONTROL_H
#define WMQ_RECORDS_DAEMON_CONTROL_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mbdStartLog {
  char mbdStartHost[WMQ_HOST_SIZE];
  char mbdStartName[40];
  int32_t mbdStartInt1;
  int32_t mbdStartInt2;
} mbdStartLog;

typedef struct mbdDieLog {
  char mbdDieHost[WMQ_HOST_SIZE];
  int32_t mbdDieInt1;
  int32_t mbdDieInt2;
  char mbdDieText[WMQ_TEXT_SIZE];  // lines before 6.0 leave it as handed in
  int32_t mbdDieInt3;              // lines before 9.11 leave it as handed in
} mbdDieLog;

typedef struct queueCtrlLog {
  int32_t ctrlValue;
  char queue[WMQ_NAME_SIZE];     // 1 to 59 bytes
  int32_t userId;                // -1 in lines before 2.2
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  char ctrlText[WMQ_TEXT_SIZE];
} queueCtrlLog;

typedef struct hostCtrlLog {
  int32_t ctrlValue;
  char host[WMQ_HOST_SIZE];      // 0 to 63 bytes
  int32_t userId;                // -1 in lines before 2.2
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  char ctrlText[WMQ_TEXT_SIZE];
} hostCtrlLog;

typedef struct hgHostCtrlLog {
  int32_t ctrlValue;
  char ctrlName1[WMQ_HOST_SIZE];  // 0 to 63 bytes
  char ctrlName2[WMQ_HOST_SIZE];  // 0 to 63 bytes
  int32_t userId;
  char userName[WMQ_NAME_SIZE];  // 1 to 59 bytes; lines up to 4.0 lack it: looked up from userId
  char ctrlText[WMQ_TEXT_SIZE];
} hgHostCtrlLog;

typedef struct loadIndexLog {
  int32_t numLoadIndex;  // as read also when a name fails: the slots behind it are null
  char **loadIndexNames;
} loadIndexLog;

typedef struct calendarLog {
  int32_t calInt2;
  int32_t calInt1;
  char *calStr1;
  char *calStr2;
  char *calStr3;
} calendarLog;

// Conventions as for writeJobStatus and readJobStatus. Readers that look the user up return WMQE_NO_USER when
// that fails, after a message to the system log.
WMQ_API int readMbdStart(const char *fields, struct mbdStartLog *log);
WMQ_API int readMbdDie(const char *fields, struct mbdDieLog *log);
WMQ_API int readQueueCtrl(const char *fields, struct queueCtrlLog *log);
WMQ_API int readHostCtrl(const char *fields, struct hostCtrlLog *log);
WMQ_API int writeHgHostCtrl(FILE *file, struct hgHostCtrlLog *log);
WMQ_API int readHgHostCtrl(const char *fields, struct hgHostCtrlLog *log);
WMQ_API int readLoadIndex(const char *fields, struct loadIndexLog *log);
WMQ_API int readCalendar(const char *fields, struct calendarLog *log);

#ifdef __cplusplus
}
#endif

#endif
