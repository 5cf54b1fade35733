// What is taken from the allocator. The test programs of this directory are linked so that the calls of the
// library come by here.
#ifndef WMQ_TESTS_ALLOCATION_METER_H
#define WMQ_TESTS_ALLOCATION_METER_H

#include <cstddef>

namespace wmq::testing {

// Bytes that this thread has asked for since the last reset: in all, and the most in one call.
struct Allocated {
  size_t total = 0;
  size_t largest = 0;
};
void resetMeter();
Allocated allocated();

}  // namespace wmq::testing

#endif
