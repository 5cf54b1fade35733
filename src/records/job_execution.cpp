// JOB_START_ACCEPT and JOB_EXECUTE.
#include "wmq/records/job_execution.h"

#include "records/record_codecs.h"

namespace wmq {

static void layout(auto &io, jobStartAcceptLog &log) {
  using L = jobStartAcceptLog;
  numbers<&L::jobId, &L::acceptInt1, &L::acceptInt2>(io, log);
  number<&L::acceptInt3>(io, log, above(3.0F));
  clusterGroup(io, log);
  number<&L::acceptInt4>(io, log, atLeast(9.11F), -1);
}

// The line order differs from the order in memory: execInt2 stands before the strings, execStr5 before
// execInt6.
static void layout(auto &io, jobExecuteLog &log) {
  using L = jobExecuteLog;
  numbers<&L::jobId, &L::execInt1, &L::execInt2>(io, log);
  text<&L::execStr1>(io, log);
  text<&L::execStr2>(io, log);
  text<&L::execStr3>(io, log);
  number<&L::execInt3>(io, log, atLeast(3.0F));
  number<&L::execInt4>(io, log, above(3.0F));
  text<&L::execStr4>(io, log, atLeast(6.0F));
  number<&L::execInt5>(io, log, atLeast(6.0F), -1);
  text<&L::execStr5>(io, log, above(6.0F));
  number<&L::execInt6>(io, log, above(6.0F));
  number<&L::execInt7>(io, log, above(6.1F), INT32_MAX);
  clusterGroup(io, log);
  text<&L::execStr6>(io, log, atLeast(9.1F));
  number<&L::execInt8>(io, log, atLeast(9.11F), -1);
}

constinit const RecordCodec jobStartAcceptCodec = recordCodec<jobStartAcceptLog>();
constinit const RecordCodec jobExecuteCodec = recordCodec<jobExecuteLog>();

}  // namespace wmq

int writeJobStartAccept(FILE *file, jobStartAcceptLog *log) {
  return wmq::writeFields(file, wmq::jobStartAcceptCodec, log, true);
}

int readJobStartAccept(const char *fields, jobStartAcceptLog *log) {
  return wmq::readFields(fields, wmq::jobStartAcceptCodec, log);
}

int writeJobExecute(FILE *file, jobExecuteLog *log) {
  return wmq::writeFields(file, wmq::jobExecuteCodec, log, true);
}

int readJobExecute(const char *fields, jobExecuteLog *log) {
  return wmq::readFields(fields, wmq::jobExecuteCodec, log);
}
