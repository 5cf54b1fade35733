// UNFULFILL, JOB_CLEAN, JOB_EXCEPTION, LOG_SWITCH and JOB_ATTR_SET, and the retired codes.
//
// Asymmetries, each with its own test in tests/records/small_events_test.cpp:
//   - the ranges of JOB_CLEAN are read unchecked, and release keeps them;
//   - LOG_SWITCH and JOB_ATTR_SET lines end in a blank before their line end.
#include "wmq/records/small_events.h"

#include "records/record_codecs.h"

namespace wmq {

static void layout(auto &io, unfulfillLog &log) {
  using L = unfulfillLog;
  numbers<&L::jobId, &L::unfulfillField2, &L::unfulfillField3, &L::unfulfillField4, &L::unfulfillField5,
          low32<&L::unfulfillTime>, &L::unfulfillField7>(io, log);
  number<&L::unfulfillField8>(io, log, above(3.0F));
}

static void layout(auto &io, jobCleanLog &log) {
  using L = jobCleanLog;
  numbers<&L::jobId, &L::idx>(io, log);
  indexRanges<Ranges::keptBlock>(io, log, atLeast(10.1F));
}

static void layout(auto &io, jobExceptionLog &log) {
  using L = jobExceptionLog;
  numbers<&L::jobId, &L::exceptField2, &L::exceptField3, low32<&L::exceptTime>, &L::exceptField5,
          &L::exceptField6>(io, log);
}

static void layout(auto &io, logSwitchLog &log) {
  number<&logSwitchLog::lastJobId>(io, log);
  trailingBlank(io);
}

static void layout(auto &io, jobAttrSetLog &log) {
  using L = jobAttrSetLog;
  numbers<&L::jobId, &L::attrField2, &L::attrField3, &L::attrField4>(io, log);
  trailingBlank(io);
}

static void layout(auto &io, retiredListLog &log) {
  listOffLine<&retiredListLog::numNames, &retiredListLog::names>(io, log);
}

static void layout(auto &io, allocHostInfo &info) {
  listOffLine<&allocHostInfo::numHosts, &allocHostInfo::hosts>(io, info);
}

static void layout(auto &io, retiredAllocationLog &log) {
  using L = retiredAllocationLog;
  text<&L::text>(io, log);
  layout(io, log.hosts);
  affinity<&L::affinityAlloc>(io, log, always);
}

static void layout(auto &io, retiredTextLog &log) { text<&retiredTextLog::text>(io, log); }

constinit const RecordCodec unfulfillCodec = recordCodec<unfulfillLog>();
constinit const RecordCodec jobCleanCodec = recordCodec<jobCleanLog>();
constinit const RecordCodec jobExceptionCodec = recordCodec<jobExceptionLog>();
constinit const RecordCodec logSwitchCodec = recordCodec<logSwitchLog>();
constinit const RecordCodec jobAttrSetCodec = recordCodec<jobAttrSetLog>();
constinit const RecordCodec retiredListCodec = recordCodec<retiredListLog>();
constinit const RecordCodec retiredAllocationCodec = recordCodec<retiredAllocationLog>();
constinit const RecordCodec retiredTextCodec = recordCodec<retiredTextLog>();

}  // namespace wmq
