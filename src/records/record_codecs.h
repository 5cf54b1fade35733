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
extern const RecordCodec retiredListCodec;
extern const RecordCodec retiredAllocationCodec;
extern const RecordCodec retiredTextCodec;

}  // namespace wmq

#endif
