#include "support/side_stream_fixture.h"

#include <cstdio>
#include <stdexcept>

#include "support/text_files.h"

namespace wmq::testing {

const SideOperations kStatus = {.noun = "status",
                                .defaultPath = "/tmp/wmq.status",
                                .type = EVENT_JOB_STATUS2,
                                .path = &streamParams::statusFileName,
                                .open = wmq_openstatus,
                                .write = wmq_writestatus,
                                .writeBatch = wmq_writestatusbatch,
                                .sync = wmq_syncstatus,
                                .read = wmq_readstatus,
                                .close = wmq_closestatus,
                                .format = wmq_formatstatus};
const SideOperations kPendingReasons = {.noun = "pendingreasons",
                                        .defaultPath = "/tmp/wmq.pendingreasons",
                                        .type = EVENT_JOB_PENDING_REASONS,
                                        .path = &streamParams::pendingReasonsFileName,
                                        .open = wmq_openpendingreasons,
                                        .write = wmq_writependingreasons,
                                        .writeBatch = wmq_writependingreasonsbatch,
                                        .sync = wmq_syncpendingreasons,
                                        .read = wmq_readpendingreasons,
                                        .close = wmq_closependingreasons,
                                        .format = wmq_formatpendingreasons};
const SideOperations kEvents = {.noun = "stream",
                                .defaultPath = "/tmp/wmq.stream",
                                .type = EVENT_LOG_SWITCH,
                                .path = &streamParams::fileName,
                                .open = wmq_openstream,
                                .write = wmq_writestream,
                                .writeBatch = wmq_writestreambatch,
                                .sync = wmq_syncstream,
                                .read = wmq_readstream,
                                .close = wmq_closestream,
                                .format = wmq_formatrecord};

const SideOperations &streamOf(int32_t type) {
  return type == EVENT_JOB_STATUS2 ? kStatus : type == EVENT_JOB_PENDING_REASONS ? kPendingReasons : kEvents;
}

std::ostream &operator<<(std::ostream &out, const SideOperations *side) { return out << side->noun; }

SharedPath::SharedPath(const std::string &path) : path_(path), wasThere_(exists(path)) {}

SharedPath::~SharedPath() {
  if (!wasThere_) std::remove(path_.c_str());
}

// Of a type that all streams drop: the call counts all the same.
static eventRecord nothing() { return bareRecord(61); }

// A stream that keeps no old files but has reached its size fails at each check, and at nothing else.
static void callUntilCheck(const SideOperations &side, const std::string &path) {
  makeFile(path, "full\n");
  std::string name = path;
  streamParams params{nullptr, 1, 0, 0, nullptr, nullptr, nullptr};
  params.*side.path = name.data();
  if (side.open(&params) != 0) throw std::runtime_error("cannot open " + path);
  eventRecord record = nothing();
  int calls = 1;
  while (calls <= 100 && side.write(&record) == 0) ++calls;
  side.close();
  std::remove(path.c_str());
  if (calls > 100) throw std::runtime_error("no check of the size in 100 calls");
}

SideStreamTest::SideStreamTest(const SideOperations &operations) : side(operations) {
  callUntilCheck(side, path);
  wmq_errno = 0;
}

SideStreamTest::~SideStreamTest() {
  side.close();
  wmq_readstreamline("");  // releases the record that the library keeps
}

int SideStreamTest::open(const Limits &limits) { return openAs(path, limits); }

int SideStreamTest::openAs(const std::string &name, const Limits &limits) {
  std::string copy = name;
  streamParams params{nullptr, limits.size, limits.oldFiles, 1, TraceRecorder::record, nullptr, nullptr};
  params.*side.path = copy.data();
  return side.open(&params);
}

int SideStreamTest::write(int32_t number) { return write(numbered(number)); }

int SideStreamTest::write(eventRecord record) {
  callsSinceCheck = (callsSinceCheck + 1) % 100;
  return side.write(&record);
}

eventRecord SideStreamTest::numbered(int32_t number) const {
  if (side.type == EVENT_LOG_SWITCH) return logSwitch(number);
  eventRecord record = bareRecord(side.type);
  (side.type == EVENT_JOB_STATUS2 ? record.eventLog.jobStatus2Log.numJobs
                                  : record.eventLog.jobPendingReasonsLog.numJobs) = number;
  return record;
}

std::string SideStreamTest::lineOf(int32_t number) const {
  if (side.type == EVENT_LOG_SWITCH) return logSwitchLine(number);
  const std::string pair = "\"numJobs\" \"" + std::to_string(number) + '"';
  return side.type == EVENT_JOB_STATUS2
             ? "\"JOB_STATUS2\" \"10.1\" 1700000000 0 2 " + pair + " \"ineligiblePendingTime\" \"0\"\n"
             : "\"JOB_PENDING_REASONS\" \"10.1\" 1700000000 1 " + pair + '\n';
}

void SideStreamTest::advanceToCheck() {
  while (callsSinceCheck != 99) write(nothing());
}

int32_t SideStreamTest::readNumber() {
  const eventRecord *record = side.read(&lineNum);
  if (record == nullptr || record->type != side.type) return 0;
  if (side.type == EVENT_LOG_SWITCH) return record->eventLog.logSwitchLog.lastJobId;
  return side.type == EVENT_JOB_STATUS2 ? record->eventLog.jobStatus2Log.numJobs
                                        : record->eventLog.jobPendingReasonsLog.numJobs;
}

std::string SideStreamTest::opened(const std::string &name, int32_t size) const {
  return std::string("wmq_open") + side.noun + "(): " + side.noun + ' ' + name + " open all right maxsize " +
         std::to_string(size);
}

std::string SideStreamTest::closed(const std::string &name, int32_t size) const {
  return std::string("wmq_close") + side.noun + "(): " + side.noun + ' ' + name +
         " closed all right maxsize " + std::to_string(size);
}

}  // namespace wmq::testing
