// What must hold whatever the input is.
#ifndef WMQ_TESTS_REQUIREMENT_H
#define WMQ_TESTS_REQUIREMENT_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace wmq::testing {

// Ends the program as a crash does, which is what libFuzzer looks for.
inline void require(bool holds, const char *what, const std::string &detail = "") {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n%s\n", what, detail.c_str());
  std::abort();
}

}  // namespace wmq::testing

#endif
