// JOB_MSG, JOB_MSG_ACK, JOB_EXT_MSG, JOB_ATTA_DATA and JOB_CHUNK.
//
// Asymmetries, each with its own test in tests/records/job_messages_test.cpp:
//   - release keeps the strings of JOB_MSG_ACK, though not those of JOB_MSG;
//   - extMsgLong2 travels as its low 32 bits, extMsgLong1 whole;
//   - extMsgInt5 is left as handed in where the line lacks it;
//   - the ids of JOB_CHUNK reach the record only when all of them were read.
#include "wmq/records/job_messages.h"

#include "records/record_codecs.h"

namespace wmq {

static void layout(auto &io, jobMsgLog &log) {
  using L = jobMsgLog;
  numbers<&L::msgInt1, &L::msgInt2, &L::msgInt3, &L::msgInt4>(io, log);
  text<&L::msgStr1>(io, log);
  text<&L::msgStr2>(io, log);
  text<&L::msgStr3>(io, log);
  number<&L::msgInt5>(io, log, above(3.0F));
}

static void layout(auto &io, jobMsgAckLog &log) {
  using L = jobMsgAckLog;
  numbers<&L::msgInt1, &L::msgInt2, &L::msgInt3, &L::msgInt4>(io, log);
  keptText<&L::msgStr1>(io, log);
  keptText<&L::msgStr2>(io, log);
  keptText<&L::msgStr3>(io, log);
  number<&L::msgInt5>(io, log, above(3.0F));
}

static void layout(auto &io, jobExternalMsgLog &log) {
  using L = jobExternalMsgLog;
  numbers<&L::extMsgInt1, &L::extMsgInt2, &L::extMsgInt3, &L::userId, &L::extMsgLong1, low32<&L::extMsgLong2>,
          &L::extMsgInt4>(io, log);
  text<&L::extMsgStr>(io, log);
  userName<&L::userName, &L::userId>(io, log, "readJobExternalMsg");
  number<&L::extMsgInt5>(io, log, atLeast(9.1F), unchanged);
  number<&L::extMsgInt6>(io, log, atLeast(9.11F), -1);
}

static void layout(auto &io, jobAttaDataLog &log) {
  using L = jobAttaDataLog;
  numbers<&L::attaInt1, &L::attaInt2, &L::attaInt3, &L::attaLong, &L::attaInt4>(io, log);
  text<&L::attaStr>(io, log);
}

static void layout(auto &io, jobChunkLog &log) {
  using L = jobChunkLog;
  number<&L::numChunkIds>(io, log);
  completeNumbers<&L::numChunkIds, &L::chunkIds>(io, log);
  hosts<&L::numHosts, &L::hosts, HostRule{.none = NoHosts::emptyArray}>(io, log);
  number<&L::chunkInt>(io, log, atLeast(9.11F), -1);
}

constinit const RecordCodec jobMsgCodec = recordCodec<jobMsgLog>();
constinit const RecordCodec jobMsgAckCodec = recordCodec<jobMsgAckLog>();
constinit const RecordCodec jobExternalMsgCodec = recordCodec<jobExternalMsgLog>();
constinit const RecordCodec jobAttaDataCodec = recordCodec<jobAttaDataLog>();
constinit const RecordCodec jobChunkCodec = recordCodec<jobChunkLog>();

}  // namespace wmq

int readJobMsg(const char *fields, jobMsgLog *log) { return wmq::readFields(fields, wmq::jobMsgCodec, log); }

int readJobMsgAck(const char *fields, jobMsgAckLog *log) {
  return wmq::readFields(fields, wmq::jobMsgAckCodec, log);
}

int readJobExternalMsg(const char *fields, jobExternalMsgLog *log) {
  return wmq::readFields(fields, wmq::jobExternalMsgCodec, log);
}

int readJobAttaData(const char *fields, jobAttaDataLog *log) {
  return wmq::readFields(fields, wmq::jobAttaDataCodec, log);
}

int readJobChunk(const char *fields, jobChunkLog *log) {
  return wmq::readFields(fields, wmq::jobChunkCodec, log);
}
