// JOB_SIGNAL, JOB_MOVE, JOB_SWITCH, JOB_SWITCH2, JOB_SIGACT, JOB_REQUEUE, JOB_FORCE, CHKPNT and MIG.
//
// Asymmetries, each with its own test in tests/records/job_control_test.cpp:
//   - JOB_SIGNAL alone takes user id -1 for "unknown", all others look it up;
//   - JOB_SIGNAL reads its ranges unchecked into one block, JOB_MOVE into three arrays;
//   - JOB_SWITCH writes its ranges and never reads them;
//   - JOB_SWITCH2 remembers a bad range as its error and reads the rest of the line all the same;
//   - 64-bit numbers of JOB_SIGACT and CHKPNT lose their high half;
//   - MIG alone writes its hosts without compression, and names itself "readmig" in the log.
#include "wmq/records/job_control.h"

#include "records/record_codecs.h"
#include "records/remote_control_layouts.h"

namespace wmq {

static void layout(auto &io, jobSignalLog &log) {
  using L = jobSignalLog;
  numbers<&L::jobId, &L::userId, &L::signalInt1>(io, log);
  text<&L::signalStr>(io, log);
  number<&L::signalInt2>(io, log, above(3.0F));
  userName<&L::userName, &L::userId>(io, log, "readJobSignal", true);
  clusterGroup(io, log);
  indexRanges<Ranges::block>(io, log, atLeast(10.1F));
}

static void layout(auto &io, jobMoveLog &log) {
  using L = jobMoveLog;
  numbers<&L::userId, &L::jobId, &L::moveInt1, &L::moveInt2>(io, log);
  number<&L::moveInt3>(io, log, above(3.0F));
  userName<&L::userName, &L::userId>(io, log, "readJobMove");
  remoteControls(io, log);
  indexRanges<Ranges::arrays>(io, log, atLeast(10.1F));
  list<&L::numNewRmtJobCtrl, &L::newRmtJobCtrls>(io, log, atLeast(10.1F));
}

static void layout(auto &io, jobSwitchLog &log) {
  using L = jobSwitchLog;
  numbers<&L::userId, &L::jobId>(io, log);
  name<&L::queue>(io, log);
  number<&L::switchInt1>(io, log, above(3.0F));
  userName<&L::userName, &L::userId>(io, log, "readJobSwitch");
  clusterGroup(io, log);
  remoteControls(io, log);
  indexRanges<Ranges::writtenOnly>(io, log, always);
}

static void layout(auto &io, jobSwitch2Log &log) {
  using L = jobSwitch2Log;
  numbers<&L::userId, &L::jobId>(io, log);
  name<&L::queue>(io, log);
  name<&L::userName>(io, log);
  indexRanges<Ranges::checked>(io, log, always);
  clusterGroup(io, log);
  remoteControls(io, log);
}

static void layout(auto &io, jobSigActLog &log) {
  using L = jobSigActLog;
  numbers<&L::jobId, low32<&L::sigActInt1>, &L::sigActInt2, &L::sigActInt3, &L::sigActInt4, &L::sigActInt5,
          &L::sigActInt6>(io, log);
  text<&L::sigActStr>(io, log);
  number<&L::sigActInt7>(io, log, above(3.0F));
}

static void layout(auto &io, jobRequeueLog &log) {
  using L = jobRequeueLog;
  number<&L::jobId>(io, log);
  number<&L::requeueInt1>(io, log, above(3.0F));
  number<&L::requeueInt2>(io, log, atLeast(9.13F));
}

static void layout(auto &io, jobForceLog &log) {
  using L = jobForceLog;
  numbers<&L::jobId, &L::userId, &L::forceInt1, &L::forceInt2, hostCount<&L::numExecHosts>>(io, log);
  hosts<&L::numExecHosts, &L::execHosts, HostRule{.countBefore = true, .none = NoHosts::emptyArray}>(io, log);
  userName<&L::userName, &L::userId>(io, log, "readJobForce");
  boundedText<&L::forceStr>(io, log, above(4.2F), JOB_FORCE_TEXT_MAX);
  remoteControls(io, log);
}

static void layout(auto &io, chkpntLog &log) {
  using L = chkpntLog;
  numbers<&L::jobId, low32<&L::chkpntInt1>, &L::chkpntInt2, &L::chkpntInt3, &L::chkpntInt4>(io, log);
  number<&L::chkpntInt5>(io, log, above(3.0F));
  clusterGroup(io, log);
}

static void layout(auto &io, migLog &log) {
  using L = migLog;
  numbers<&L::jobId, &L::numHosts>(io, log);
  hosts<
      &L::numHosts, &L::hosts,
      HostRule{
          .countBefore = true, .none = NoHosts::nullUnlessNegative, .compressed = false, .expanded = false}>(
      io, log);
  number<&L::userId>(io, log, atLeast(2.2F), -1);
  number<&L::migInt1>(io, log, above(3.0F));
  userName<&L::userName, &L::userId>(io, log, "readmig");
  number<&L::migInt2>(io, log, atLeast(8.0F));
  number<&L::migInt3>(io, log, atLeast(8.0F), -1);
  clusterGroup(io, log);
}

constinit const RecordCodec jobSignalCodec = recordCodec<jobSignalLog>();
constinit const RecordCodec jobMoveCodec = recordCodec<jobMoveLog>();
constinit const RecordCodec jobSwitchCodec = recordCodec<jobSwitchLog>();
constinit const RecordCodec jobSwitch2Codec = recordCodec<jobSwitch2Log>();
constinit const RecordCodec jobSigActCodec = recordCodec<jobSigActLog>();
constinit const RecordCodec jobRequeueCodec = recordCodec<jobRequeueLog>();
constinit const RecordCodec jobForceCodec = recordCodec<jobForceLog>();
constinit const RecordCodec chkpntCodec = recordCodec<chkpntLog>();
constinit const RecordCodec migCodec = recordCodec<migLog>();

}  // namespace wmq

int writeJobSignal(FILE *file, jobSignalLog *log) {
  return wmq::writeFields(file, wmq::jobSignalCodec, log, true);
}

int readJobSignal(const char *fields, jobSignalLog *log) {
  return wmq::readFields(fields, wmq::jobSignalCodec, log);
}

int writeJobMove(FILE *file, jobMoveLog *log) { return wmq::writeFields(file, wmq::jobMoveCodec, log, true); }

int readJobMove(const char *fields, jobMoveLog *log) {
  return wmq::readFields(fields, wmq::jobMoveCodec, log);
}

int writeJobSwitch(FILE *file, jobSwitchLog *log) {
  return wmq::writeFields(file, wmq::jobSwitchCodec, log, true);
}

int readJobSwitch(const char *fields, jobSwitchLog *log) {
  return wmq::readFields(fields, wmq::jobSwitchCodec, log);
}

int writeJobSwitch2(FILE *file, jobSwitch2Log *log) {
  return wmq::writeFields(file, wmq::jobSwitch2Codec, log, true);
}

// This reader alone does not rely on a zero-filled structure.
int readJobSwitch2(const char *fields, jobSwitch2Log *log) {
  if (log != nullptr) *log = jobSwitch2Log{};
  return wmq::readFields(fields, wmq::jobSwitch2Codec, log);
}

int readJobSigAct(const char *fields, jobSigActLog *log) {
  return wmq::readFields(fields, wmq::jobSigActCodec, log);
}

int readJobRequeue(const char *fields, jobRequeueLog *log) {
  return wmq::readFields(fields, wmq::jobRequeueCodec, log);
}

int writeJobForce(FILE *file, jobForceLog *log) {
  return wmq::writeFields(file, wmq::jobForceCodec, log, true);
}

int readJobForce(const char *fields, jobForceLog *log) {
  return wmq::readFields(fields, wmq::jobForceCodec, log);
}

int readChkpnt(const char *fields, chkpntLog *log) { return wmq::readFields(fields, wmq::chkpntCodec, log); }

int writeMig(FILE *file, migLog *log) { return wmq::writeFields(file, wmq::migCodec, log, true); }

int readMig(const char *fields, migLog *log) { return wmq::readFields(fields, wmq::migCodec, log); }
