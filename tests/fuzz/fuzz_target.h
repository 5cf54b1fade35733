// What a target of fuzzing consists of. Each *_target.cpp is one: libFuzzer feeds it (fuzz_entry.cpp), and a
// plain program replays its corpus (replay.cpp).
#ifndef WMQ_TESTS_FUZZ_TARGET_H
#define WMQ_TESTS_FUZZ_TARGET_H

#include <string>
#include <string_view>
#include <vector>

namespace wmq::testing {

// Tries one input. What does not hold ends the program (see requirement.h).
void tryInput(std::string_view input);

// Inputs to begin with, beside the corpus.
std::vector<std::string> seeds();

}  // namespace wmq::testing

#endif
