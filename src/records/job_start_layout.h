// The layout of a start: JOB_START, PRE_EXEC_START and JOB_ROUTE, and the records that embed one.
//
// Asymmetries, each with its own test in tests/records/job_start_test.cpp:
//   - a second host list of as many hosts as the first is written as 0 and read as a copy of the first;
//   - startInt8, startLong1 and startLong2 are 0 where they do not convert; all other numbers are malformed
//     then.
#ifndef WMQ_RECORDS_JOB_START_LAYOUT_H
#define WMQ_RECORDS_JOB_START_LAYOUT_H

#include "wmq.stream/codec.h"
#include "wmq/records/job_start.h"

namespace wmq {

inline void layout(auto &io, jobStartLog &log) {
  using L = jobStartLog;
  numbers<&L::jobId, &L::startInt1, &L::startInt2, &L::startInt3, fixed<&L::hostFactor, 3, 1>,
          hostCount<&L::numExHosts>>(io, log);
  hosts<&L::numExHosts, &L::execHosts, HostRule{.countBefore = true, .none = NoHosts::refused}>(io, log);
  text<&L::startStr1>(io, log, atLeast(2.2F));
  text<&L::startStr2>(io, log, atLeast(2.2F));
  number<&L::startInt4>(io, log, atLeast(3.0F));
  text<&L::startStr3>(io, log, above(3.0F));
  number<&L::startInt5>(io, log, above(3.0F));
  text<&L::startStr4>(io, log, atLeast(6.0F));
  number<&L::startInt6>(io, log, above(6.1F), INT32_MAX);
  text<&L::startStr5>(io, log, atLeast(9.1F));
  clusterGroup(io, log);
  list<&L::numNamedInts, &L::namedInts>(io, log, atLeast(9.11F));
  affinity<&L::affinityAlloc>(io, log, atLeast(9.11F));
  number<&L::startInt7>(io, log, atLeast(9.11F), -1);
  lenientNumber<&L::startInt8>(io, log, atLeast(9.12F));
  hostsUnlessCopy<&L::numAllocHosts, &L::allocHosts, &L::numExHosts, &L::execHosts>(io, log, atLeast(9.13F));
  number<&L::startInt9>(io, log, atLeast(9.13F), unchanged);
  unset<&L::reserved1>(io, log);
  unset<&L::reserved2>(io, log);
  lenientNumber<low32<&L::startLong1>>(io, log, atLeast(10.1F));
  lenientNumber<low32<&L::startLong2>>(io, log, atLeast(10.1F));
}

}  // namespace wmq

#endif
