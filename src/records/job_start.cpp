// JOB_START, PRE_EXEC_START and JOB_ROUTE.
#include "records/job_start_layout.h"
#include "records/record_codecs.h"

namespace wmq {

constinit const RecordCodec jobStartCodec = recordCodec<jobStartLog>();

}  // namespace wmq

int writeJobStart_ex(FILE *file, jobStartLog *log, int writeNewline) {
  return wmq::writeFields(file, wmq::jobStartCodec, log, writeNewline != 0);
}

int readJobStart(const char *fields, jobStartLog *log) {
  return wmq::readFields(fields, wmq::jobStartCodec, log);
}
