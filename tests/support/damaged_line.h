// Lines that something has gone wrong with, for properties.
#ifndef WMQ_TESTS_DAMAGED_LINE_H
#define WMQ_TESTS_DAMAGED_LINE_H

#include <rapidcheck.h>

#include <string>
#include <vector>

namespace wmq::testing {

// One of the lines with up to three changes: another byte that means something, or an early end.
inline std::string damagedLine(const std::vector<std::string> &lines) {
  std::string line = *rc::gen::elementOf(lines);
  for (int change = *rc::gen::inRange(0, 4); change > 0 && !line.empty(); --change) {
    const auto at = *rc::gen::inRange<size_t>(0, line.size());
    if (*rc::gen::inRange(0, 3) > 0)
      line[at] = *rc::gen::elementOf(std::string("\"n \n09-1*.\\a"));
    else
      line.resize(at);
  }
  return line;
}

}  // namespace wmq::testing

#endif
