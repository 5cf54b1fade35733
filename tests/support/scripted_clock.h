// The time that rotation goes by, told by a test.
#ifndef WMQ_TESTS_SCRIPTED_CLOCK_H
#define WMQ_TESTS_SCRIPTED_CLOCK_H

#include <cstdint>
#include <functional>

namespace wmq::testing {

class ScriptedClock {
 public:
  explicit ScriptedClock(int64_t seconds);
  ~ScriptedClock();
  ScriptedClock(const ScriptedClock &) = delete;
  ScriptedClock &operator=(const ScriptedClock &) = delete;

  int64_t now;
  int readings = 0;
  std::function<void()> whenRead = {};  // run at each reading, before the time is told
};

}  // namespace wmq::testing

#endif
