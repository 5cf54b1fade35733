// Inputs that several targets begin with.
#ifndef WMQ_TESTS_FUZZ_SEEDS_H
#define WMQ_TESTS_FUZZ_SEEDS_H

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
