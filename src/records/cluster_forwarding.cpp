// JOB_FORWARD, JOB_ACCEPT, JOB_ACCEPTACK and JOB_STAT_ACK.
//
// Asymmetries, each with its own test in tests/records/cluster_forwarding_test.cpp:
//   - jobAcceptLong is written as the signed low 32 bits and read as an unsigned 64-bit number;
//   - JOB_ACCEPTACK has no version gates.
#include "wmq/records/cluster_forwarding.h"

#include "records/record_codecs.h"

namespace wmq {

// A string stands between the count of the hosts and their names.
static void layout(auto &io, jobForwardLog &log) {
  using L = jobForwardLog;
  numbers<&L::jobId, compressedCount<&L::numHosts, &L::hosts>>(io, log);
  text<&L::fwdStr1>(io, log);
  hosts<&L::numHosts, &L::hosts,
        HostRule{.countBefore = true, .countWritten = true, .none = NoHosts::nullZeroCount}>(io, log);
  number<&L::fwdInt1>(io, log, above(3.0F));
  number<&L::fwdInt2>(io, log, atLeast(5.0F));
  text<&L::fwdStr2>(io, log, atLeast(9.1F));
  number<&L::fwdLong1>(io, log, atLeast(9.1F));
  number<&L::fwdLong2>(io, log, atLeast(9.1F));
}

static void layout(auto &io, jobAcceptLog &log) {
  using L = jobAcceptLog;
  numbers<&L::jobId, &L::acceptJobId>(io, log);
  text<&L::jobAcceptStr1>(io, log);
  number<&L::jobAcceptInt1>(io, log, above(3.0F));
  number<&L::jobAcceptInt2>(io, log, atLeast(5.0F));
  text<&L::jobAcceptStr2>(io, log, atLeast(9.1F));
  number<low32Unsigned<&L::jobAcceptLong>>(io, log, atLeast(9.1F));
}

static void layout(auto &io, jobAcceptAckLog &log) {
  using L = jobAcceptAckLog;
  number<&L::jobId>(io, log);
  number<&L::acceptAckInt1>(io, log);
  number<&L::acceptAckInt2>(io, log);
  clusterGroup(io, log, always);
}

static void layout(auto &io, statusAckLog &log) {
  using L = statusAckLog;
  numbers<&L::jobId, &L::statusAckInt1>(io, log);
  number<&L::statusAckInt2>(io, log, above(3.0F));
  clusterGroup(io, log);
}

constinit const RecordCodec jobForwardCodec = recordCodec<jobForwardLog>();
constinit const RecordCodec jobAcceptCodec = recordCodec<jobAcceptLog>();
constinit const RecordCodec jobAcceptAckCodec = recordCodec<jobAcceptAckLog>();
constinit const RecordCodec statusAckCodec = recordCodec<statusAckLog>();

}  // namespace wmq

int writeJobForward(FILE *file, jobForwardLog *log) {
  return wmq::writeFields(file, wmq::jobForwardCodec, log, true);
}

int readJobForward(const char *fields, jobForwardLog *log) {
  return wmq::readFields(fields, wmq::jobForwardCodec, log);
}

int writeJobAccept(FILE *file, jobAcceptLog *log) {
  return wmq::writeFields(file, wmq::jobAcceptCodec, log, true);
}

int readJobAccept(const char *fields, jobAcceptLog *log) {
  return wmq::readFields(fields, wmq::jobAcceptCodec, log);
}

int writeJobAcceptAck(FILE *file, jobAcceptAckLog *log) {
  return wmq::writeFields(file, wmq::jobAcceptAckCodec, log, true);
}

int readJobAcceptAck(const char *fields, jobAcceptAckLog *log) {
  return wmq::readFields(fields, wmq::jobAcceptAckCodec, log);
}

int readStatusAck(const char *fields, statusAckLog *log) {
  return wmq::readFields(fields, wmq::statusAckCodec, log);
}
