// Lines and JSON of every type: those written by hand, of all versions, and those of samples.
#ifndef WMQ_TESTS_COLLECTED_LINES_H
#define WMQ_TESTS_COLLECTED_LINES_H

#include <string>
#include <vector>

namespace wmq::testing {

// Without line ends.
std::vector<std::string> goldenLines();
std::vector<std::string> sampledLines();

std::vector<std::string> goldenJson();
std::vector<std::string> sampledJson();

}  // namespace wmq::testing

#endif
