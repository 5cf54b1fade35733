// The codecs of all records; each is defined in the unit that states the layout.
#ifndef WMQ_RECORDS_RECORD_CODECS_H
#define WMQ_RECORDS_RECORD_CODECS_H

#include "wmq.stream/codec.h"

namespace wmq {

extern const RecordCodec jobNewCodec;
extern const RecordCodec jobStartCodec;
extern const RecordCodec jobStatusCodec;
extern const RecordCodec sbdJobStatusCodec;
extern const RecordCodec jobFinishCodec;
extern const RecordCodec unfulfillCodec;
extern const RecordCodec jobCleanCodec;
extern const RecordCodec jobExceptionCodec;
extern const RecordCodec jgrpAddCodec;
extern const RecordCodec jgrpModCodec;
extern const RecordCodec jgrpCtrlCodec;
extern const RecordCodec jgrpStatusCodec;
extern const RecordCodec logSwitchCodec;
extern const RecordCodec jobAttrSetCodec;
extern const RecordCodec jobModCodec;
extern const RecordCodec jobStartAcceptCodec;
extern const RecordCodec jobExecuteCodec;
extern const RecordCodec jobSignalCodec;
extern const RecordCodec jobMoveCodec;
extern const RecordCodec jobSwitchCodec;
extern const RecordCodec jobSwitch2Codec;
extern const RecordCodec jobSigActCodec;
extern const RecordCodec jobRequeueCodec;
extern const RecordCodec jobForceCodec;
extern const RecordCodec chkpntCodec;
extern const RecordCodec migCodec;
extern const RecordCodec mbdStartCodec;
extern const RecordCodec mbdDieCodec;
extern const RecordCodec queueCtrlCodec;
extern const RecordCodec hostCtrlCodec;
extern const RecordCodec hgHostCtrlCodec;
extern const RecordCodec loadIndexCodec;
extern const RecordCodec calendarCodec;
extern const RecordCodec jobForwardCodec;
extern const RecordCodec jobAcceptCodec;
extern const RecordCodec jobAcceptAckCodec;
extern const RecordCodec statusAckCodec;
extern const RecordCodec jobMsgCodec;
extern const RecordCodec jobMsgAckCodec;
extern const RecordCodec jobExternalMsgCodec;
extern const RecordCodec jobAttaDataCodec;
extern const RecordCodec jobChunkCodec;
extern const RecordCodec jobRunRusageCodec;
extern const RecordCodec jobResizeCodec;
extern const RecordCodec rsvFinishCodec;
extern const RecordCodec cpuProfileCodec;
extern const RecordCodec slaCodec;
extern const RecordCodec perfmonMetricsCodec;
extern const RecordCodec jobProvisionStartCodec;
extern const RecordCodec jobProvisionEndCodec;
extern const RecordCodec hostPowerStatusCodec;
extern const RecordCodec jobProvHostCodec;
extern const RecordCodec jobFinish2Codec;
extern const RecordCodec jobStatus2Codec;
extern const RecordCodec jobPendingReasonsCodec;
extern const RecordCodec jobStartLimitCodec;
extern const RecordCodec retiredListCodec;
extern const RecordCodec retiredAllocationCodec;
extern const RecordCodec retiredTextCodec;

}  // namespace wmq

#endif
