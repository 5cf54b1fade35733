// A process that gets no more memory.
#ifndef WMQ_TESTS_SCARCE_MEMORY_H
#define WMQ_TESTS_SCARCE_MEMORY_H

#include <malloc.h>
#include <unistd.h>

#include <fstream>

#include "support/resource_limit.h"

// Sanitizers bring an allocator of their own, which dies of such a limit.
#ifdef __has_feature
#define WMQ_TESTS_CAN_LIMIT_MEMORY (!__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer))
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WMQ_TESTS_CAN_LIMIT_MEMORY 0
#else
#define WMQ_TESTS_CAN_LIMIT_MEMORY 1
#endif

namespace wmq::testing {

// Allocations that need more than about `bytes` of new memory fail for as long as it stands. A test that uses
// this bears "Million" in its name: valgrind would die of the limit, and leaves such tests out.
class ScarceMemory {
 public:
  explicit ScarceMemory(size_t bytes) : limit_(RLIMIT_AS, inUse() + bytes) {}

 private:
  static size_t inUse() {
    malloc_trim(0);
    size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
  }

  ResourceLimit limit_;
};

}  // namespace wmq::testing

#endif
