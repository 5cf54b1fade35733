// MBD_START, MBD_DIE, QUEUE_CTRL, HOST_CTRL, EVENT_HGHOST_CTRL, LOAD_INDEX and the four calendar records.
//
// Asymmetries, each with its own test in tests/records/daemon_control_test.cpp:
//   - EVENT_HGHOST_CTRL names "readHostCtrl" in the log;
//   - LOAD_INDEX keeps its count when a name fails, and has an array for a count of 0;
//   - fields that old MBD_DIE lines lack are left as handed in.
#include "wmq/records/daemon_control.h"

#include "records/record_codecs.h"

namespace wmq {

static void layout(auto &io, mbdStartLog &log) {
  using L = mbdStartLog;
  nameOrEmpty<&L::mbdStartHost>(io, log);
  nameOrEmpty<&L::mbdStartName>(io, log);
  numbers<&L::mbdStartInt1, &L::mbdStartInt2>(io, log);
}

static void layout(auto &io, mbdDieLog &log) {
  using L = mbdDieLog;
  nameOrEmpty<&L::mbdDieHost>(io, log);
  numbers<&L::mbdDieInt1, &L::mbdDieInt2>(io, log);
  cutText<&L::mbdDieText>(io, log, atLeast(6.0F));
  number<&L::mbdDieInt3>(io, log, atLeast(9.11F), unchanged);
}

// Empty in lines that lack it, whatever was handed in.
template <typename L>
static void controlText(auto &io, L &log) {
  cutText<&L::ctrlText>(io, log, atLeast(6.0F));
}

template <typename L>
static void controlText(Reader &io, L &log) {
  if (io.error == 0) std::fill(log.ctrlText, log.ctrlText + WMQ_NAME_SIZE, '\0');
  cutText<&L::ctrlText>(io, log, atLeast(6.0F));
}

static void layout(auto &io, queueCtrlLog &log) {
  using L = queueCtrlLog;
  number<&L::ctrlValue>(io, log);
  name<&L::queue>(io, log);
  number<&L::userId>(io, log, atLeast(2.2F), -1);
  userName<&L::userName, &L::userId>(io, log, "readQueueCtrl");
  controlText(io, log);
}

static void layout(auto &io, hostCtrlLog &log) {
  using L = hostCtrlLog;
  number<&L::ctrlValue>(io, log);
  nameOrEmpty<&L::host>(io, log);
  number<&L::userId>(io, log, atLeast(2.2F), -1);
  userName<&L::userName, &L::userId>(io, log, "readHostCtrl");
  controlText(io, log);
}

static void layout(auto &io, hgHostCtrlLog &log) {
  using L = hgHostCtrlLog;
  number<&L::ctrlValue>(io, log);
  nameOrEmpty<&L::ctrlName1>(io, log);
  nameOrEmpty<&L::ctrlName2>(io, log);
  number<&L::userId>(io, log);
  userName<&L::userName, &L::userId>(io, log, "readHostCtrl");
  controlText(io, log);
}

static void layout(auto &io, loadIndexLog &log) {
  using L = loadIndexLog;
  hosts<&L::numLoadIndex, &L::loadIndexNames,
        HostRule{.none = NoHosts::emptyArray, .compressed = false, .expanded = false, .keepsCount = true}>(
      io, log);
}

static void layout(auto &io, calendarLog &log) {
  using L = calendarLog;
  numbers<&L::calInt1, &L::calInt2>(io, log);
  text<&L::calStr1>(io, log);
  text<&L::calStr2>(io, log);
  text<&L::calStr3>(io, log);
}

constinit const RecordCodec mbdStartCodec = recordCodec<mbdStartLog>();
constinit const RecordCodec mbdDieCodec = recordCodec<mbdDieLog>();
constinit const RecordCodec queueCtrlCodec = recordCodec<queueCtrlLog>();
constinit const RecordCodec hostCtrlCodec = recordCodec<hostCtrlLog>();
constinit const RecordCodec hgHostCtrlCodec = recordCodec<hgHostCtrlLog>();
constinit const RecordCodec loadIndexCodec = recordCodec<loadIndexLog>();
constinit const RecordCodec calendarCodec = recordCodec<calendarLog>();

}  // namespace wmq

int readMbdStart(const char *fields, mbdStartLog *log) {
  return wmq::readFields(fields, wmq::mbdStartCodec, log);
}

int readMbdDie(const char *fields, mbdDieLog *log) { return wmq::readFields(fields, wmq::mbdDieCodec, log); }

int readQueueCtrl(const char *fields, queueCtrlLog *log) {
  return wmq::readFields(fields, wmq::queueCtrlCodec, log);
}

int readHostCtrl(const char *fields, hostCtrlLog *log) {
  return wmq::readFields(fields, wmq::hostCtrlCodec, log);
}

int writeHgHostCtrl(FILE *file, hgHostCtrlLog *log) {
  return wmq::writeFields(file, wmq::hgHostCtrlCodec, log, true);
}

int readHgHostCtrl(const char *fields, hgHostCtrlLog *log) {
  return wmq::readFields(fields, wmq::hgHostCtrlCodec, log);
}

int readLoadIndex(const char *fields, loadIndexLog *log) {
  return wmq::readFields(fields, wmq::loadIndexCodec, log);
}

int readCalendar(const char *fields, calendarLog *log) {
  return wmq::readFields(fields, wmq::calendarCodec, log);
}
