// JOB_STATUS and SBD_JOB_STATUS.
//
// Asymmetries, each with its own test in tests/records/job_status_test.cpp:
//   - attribute groups are read, never written; writing sets the caller's count to 0;
//   - release keeps the index ranges and the attribute groups;
//   - an SBD_JOB_STATUS line is left open: the next record continues it.
#include "wmq/records/job_status.h"

#include "records/record_codecs.h"

namespace wmq {

static void layout(auto &io, jobStatusLog &log) {
  using L = jobStatusLog;
  numbers<&L::jobId, &L::jStatus, &L::reason, &L::subreasons, fixed<&L::cpuTime, 4, 4>, low32<&L::endTime>,
          &L::ru>(io, log);
  usage<&L::wmxRusage>(io, log, notZero<&L::ru>());
  number<&L::jFlags>(io, log, atLeast(2.2F));
  number<&L::idx>(io, log, above(3.0F));
  number<&L::exitStatus>(io, log, atLeast(6.0F));
  listOffLine<&L::numhRusages, &L::hostRusage>(io, log);
  clusterGroup(io, log);
  number<&L::dcJobFlags>(io, log, atLeast(9.11F));

  computed<&L::numRangeJobs>(io, log, [](const Reader &reader, const L &read) {
    return gateOpen(atLeast(10.1F), reader.gates) ? read.numRangeJobs : -1;
  });
  indexRanges<Ranges::keptBlock>(io, log, atLeast(10.1F));
  readList<&L::numAttrGroups, &L::attrGroups>(io, log, atLeast(10.1F));
}

static void layout(auto &io, sbdJobStatusLog &log) {
  using L = sbdJobStatusLog;
  numbers<&L::jobId, &L::jStatus, &L::reason, &L::subreasons, &L::sbdField5, &L::sbdField6,
          low32<&L::sbdTime>, &L::sbdField8, &L::sbdField9, &L::sbdField10, &L::sbdField11, &L::sbdField12>(
      io, log);
  number<&L::sbdField13>(io, log, above(5.0F), -65535);
  number<&L::sbdField14>(io, log, above(6.0F));
}

constinit const RecordCodec jobStatusCodec = recordCodec<jobStatusLog>();
constinit const RecordCodec sbdJobStatusCodec = recordCodec<sbdJobStatusLog>();

}  // namespace wmq

int writeJobStatus(FILE *file, jobStatusLog *log) {
  return wmq::writeFields(file, wmq::jobStatusCodec, log, true);
}

int readJobStatus(const char *fields, jobStatusLog *log) {
  return wmq::readFields(fields, wmq::jobStatusCodec, log);
}

int readSbdJobStatus(const char *fields, sbdJobStatusLog *log) {
  return wmq::readFields(fields, wmq::sbdJobStatusCodec, log);
}
