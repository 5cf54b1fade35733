#include "support/scripted_clock.h"

#include "wmq.stream/stream_file.h"

namespace wmq::testing {

static ScriptedClock *current = nullptr;
static Clock *formerClock = nullptr;

static int64_t read() {
  ++current->readings;
  if (current->whenRead) current->whenRead();
  return current->now;
}

ScriptedClock::ScriptedClock(int64_t seconds) : now(seconds) {
  current = this;
  formerClock = currentTime;
  currentTime = read;
}

ScriptedClock::~ScriptedClock() {
  currentTime = formerClock;
  current = nullptr;
}

}  // namespace wmq::testing
