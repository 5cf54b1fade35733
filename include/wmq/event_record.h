// The event record: one event in memory.
#ifndef WMQ_EVENT_RECORD_H
#define WMQ_EVENT_RECORD_H

#include "wmq/records/accounting.h"
#include "wmq/records/cluster_forwarding.h"
#include "wmq/records/daemon_control.h"
#include "wmq/records/job_control.h"
#include "wmq/records/job_execution.h"
#include "wmq/records/job_finish.h"
#include "wmq/records/job_group.h"
#include "wmq/records/job_messages.h"
#include "wmq/records/job_modify2.h"
#include "wmq/records/job_new.h"
#include "wmq/records/job_start.h"
#include "wmq/records/job_status.h"
#include "wmq/records/named_records.h"
#include "wmq/records/provisioning.h"
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
  struct jobModLog jobModLog;                        // JOB_MODIFY2
  struct jobStartAcceptLog jobStartAcceptLog;        // JOB_START_ACCEPT
  struct jobExecuteLog jobExecuteLog;                // JOB_EXECUTE
  struct jobSignalLog jobSignalLog;                  // JOB_SIGNAL
  struct jobMoveLog jobMoveLog;                      // JOB_MOVE
  struct jobSwitchLog jobSwitchLog;                  // JOB_SWITCH
  struct jobSwitch2Log jobSwitch2Log;                // JOB_SWITCH2
  struct jobSigActLog jobSigActLog;                  // JOB_SIGACT
  struct jobRequeueLog jobRequeueLog;                // JOB_REQUEUE
  struct jobForceLog jobForceLog;                    // JOB_FORCE
  struct chkpntLog chkpntLog;                        // CHKPNT
  struct migLog migLog;                              // MIG
  struct mbdStartLog mbdStartLog;                    // MBD_START
  struct mbdDieLog mbdDieLog;                        // MBD_DIE
  struct queueCtrlLog queueCtrlLog;                  // QUEUE_CTRL
  struct hostCtrlLog hostCtrlLog;                    // HOST_CTRL
  struct hgHostCtrlLog hgHostCtrlLog;                // EVENT_HGHOST_CTRL
  struct loadIndexLog loadIndexLog;                  // LOAD_INDEX
  struct calendarLog calendarLog;                    // CAL_NEW, CAL_MODIFY, CAL_DELETE, CAL_UNDELETE
  struct jobForwardLog jobForwardLog;                // JOB_FORWARD
  struct jobAcceptLog jobAcceptLog;                  // JOB_ACCEPT
  struct jobAcceptAckLog jobAcceptAckLog;            // JOB_ACCEPTACK
  struct statusAckLog statusAckLog;                  // JOB_STAT_ACK
  struct jobMsgLog jobMsgLog;                        // JOB_MSG
  struct jobMsgAckLog jobMsgAckLog;                  // JOB_MSG_ACK
  struct jobExternalMsgLog jobExternalMsgLog;        // JOB_EXT_MSG
  struct jobAttaDataLog jobAttaDataLog;              // JOB_ATTA_DATA
  struct jobChunkLog jobChunkLog;                    // JOB_CHUNK
  struct jobRunRusageLog jobRunRusageLog;            // JOB_RUN_RUSAGE
  struct jobResizeLog jobResizeLog;                  // JOB_RESIZE
  struct rsvFinishLog rsvFinishLog;                  // EVENT_ADRSV_FINISH
  struct cpuProfileLog cpuProfileLog;                // CPUPROFILE_STATUS
  struct slaLog slaLog;                              // SLA_RECOMPUTE
  struct perfmonMetricsLog perfmonMetricsLog;        // METRIC_LOG
  struct jobFinish2Log jobFinish2Log;                // JOB_FINISH2
  struct jobStatus2Log jobStatus2Log;                // JOB_STATUS2
  struct jobPendingReasonsLog jobPendingReasonsLog;  // JOB_PENDING_REASONS
  struct jobStartLimitLog jobStartLimitLog;          // JOB_STARTLIMIT
  struct jobProvisionStartLog jobProvisionStartLog;  // JOB_PROVISION_START
  struct jobProvisionEndLog jobProvisionEndLog;      // JOB_PROVISION_END
  struct hostPowerStatusLog hostPowerStatusLog;      // HOST_POWER_STATUS
  struct jobProvHostLog jobProvHostLog;              // JOB_PROV_HOST
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
