#include "support/stream_fixture.h"

#include <cstdio>
#include <stdexcept>

#include "support/text_files.h"

namespace wmq::testing {
namespace {

// Of a type that the writer drops: the call counts all the same.
eventRecord nothing() { return bareRecord(61); }

// A stream that keeps no old files but has reached its size fails at each check, and at nothing else.
void callUntilCheck(const std::string &path) {
  makeFile(path, "full\n");
  std::string name = path;
  const streamParams params{name.data(), 1, 0, 0, nullptr, nullptr, nullptr};
  if (wmq_openstream(&params) != 0) throw std::runtime_error("cannot open " + path);
  eventRecord record = nothing();
  int calls = 1;
  while (calls <= 100 && wmq_writestream(&record) == 0) ++calls;
  wmq_closestream();
  std::remove(path.c_str());
  if (calls > 100) throw std::runtime_error("no check of the size in 100 calls");
}

}  // namespace

StreamTest::StreamTest() { countFromZero(); }

StreamTest::~StreamTest() {
  trace.whenReported = nullptr;  // what it refers to is gone by now
  wmq_closestream();
  wmq_readstreamline("");  // releases the record that the library keeps
}

int StreamTest::open(const Limits &limits) { return openAs(path, limits); }

int StreamTest::openAs(const std::string &name, const Limits &limits) {
  std::string copy = name;
  const streamParams params{copy.data(),           limits.size, limits.oldFiles, 1,
                            TraceRecorder::record, nullptr,     nullptr};
  return wmq_openstream(&params);
}

int StreamTest::write(int32_t number) { return write(logSwitch(number)); }

int StreamTest::write(eventRecord record) {
  callsSinceCheck = (callsSinceCheck + 1) % 100;
  return wmq_writestream(&record);
}

void StreamTest::countFromZero() {
  callUntilCheck(path);
  callsSinceCheck = 0;
  wmq_errno = 0;
}

void StreamTest::advanceToCheck() {
  while (callsSinceCheck != 99) write(nothing());
}

int32_t StreamTest::readNumber() {
  const eventRecord *record = wmq_readstream(&lineNum);
  return record != nullptr && record->type == EVENT_LOG_SWITCH ? record->eventLog.logSwitchLog.lastJobId : 0;
}

}  // namespace wmq::testing
