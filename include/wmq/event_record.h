// The event record: one event in memory.
#ifndef WMQ_EVENT_RECORD_H
#define WMQ_EVENT_RECORD_H

#include "wmq/records/job_finish.h"
#include "wmq/records/job_group.h"
#include "wmq/records/job_new.h"
#include "wmq/records/job_start.h"
#include "wmq/records/job_status.h"
#include "wmq/records/small_events.h"

#ifdef __cplusplus
extern "C" {
#endif

// What is particular to a type. Every member starts at the same place and bears the name of its structure.
typedef union eventLog {
  struct jobNewLog jobNewLog;                        // JOB_NEW, JOB_MODIFY
  struct jobStartLog jobStartLog;                    // JOB_START, PRE_EXEC_START, JOB_ROUTE
  struct jobStatusLog jobStatusLog;                  // JOB_STATUS
  struct sbdJobStatusLog sbdJobStatusLog;            // SBD_JOB_STATUS
  struct jobFinishLog jobFinishLog;                  // JOB_FINISH
  struct unfulfillLog unfulfillLog;                  // UNFULFILL
  struct jobCleanLog jobCleanLog;                    // JOB_CLEAN
  struct jobExceptionLog jobExceptionLog;            // JOB_EXCEPTION
  struct jgrpAddLog jgrpAddLog;                      // GRP_ADD
  struct jgrpModLog jgrpModLog;                      // GRP_MOD
  struct jgrpCtrlLog jgrpCtrlLog;                    // GRP_CTRL
  struct jgrpStatusLog jgrpStatusLog;                // GRP_STATUS
  struct logSwitchLog logSwitchLog;                  // LOG_SWITCH
  struct jobAttrSetLog jobAttrSetLog;                // JOB_ATTR_SET
  struct retiredListLog retiredListLog;              // code 60
  struct retiredAllocationLog retiredAllocationLog;  // code 63
  struct retiredTextLog retiredTextLog;              // code 64
  int32_t endOfStream;                               // END_OF_STREAM: 1
} eventLog;

typedef struct eventRecord {
  char version[12];   // version of the line it was read from; writers ignore it
  int32_t type;       // EVENT_ code
  int32_t eventTime;  // seconds since the epoch
  union eventLog eventLog;
} eventRecord;

#ifdef __cplusplus
}
#endif

#endif
