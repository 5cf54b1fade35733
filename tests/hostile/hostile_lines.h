// Lines of any size that are made to cost their reader much.
#ifndef WMQ_TESTS_HOSTILE_LINES_H
#define WMQ_TESTS_HOSTILE_LINES_H

#include <cstddef>
#include <string>
#include <vector>

namespace wmq::testing {

struct HostileLine {
  const char *name;
  std::string (*ofSize)(size_t bytes);  // of about so many bytes, for any number above a thousand
  int error;                            // what reading it ends in
};

const std::vector<HostileLine> &hostileLines();

// A start on so many hosts, each of them named, and one whose single name stands for all.
std::string lineOfHosts(size_t count);
std::string lineOfTimes(const std::string &times);

}  // namespace wmq::testing

#endif
