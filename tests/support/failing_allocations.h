// Allocations that fail when a test wants it. This defines malloc and its kin for the whole program: one file
// of a test program includes it, and no other. Sanitizers bring an allocator of their own; there nothing is
// defined.
#ifndef WMQ_TESTS_FAILING_ALLOCATIONS_H
#define WMQ_TESTS_FAILING_ALLOCATIONS_H

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#ifdef __has_feature
#define WMQ_TESTS_CAN_FAIL_ALLOCATIONS (!__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer))
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WMQ_TESTS_CAN_FAIL_ALLOCATIONS 0
#else
#define WMQ_TESTS_CAN_FAIL_ALLOCATIONS 1
#endif

#if WMQ_TESTS_CAN_FAIL_ALLOCATIONS

namespace wmq::testing {

// Of this thread: the allocation to fail, counted from 1 (0: none), and how many more there were than
// releases.
inline thread_local int allocationToFail = 0;
inline thread_local int allocationsLeft = 0;

// Fails the nth allocation from here on, for as long as it stands.
class FailingAllocation {
 public:
  explicit FailingAllocation(int nth) { allocationToFail = nth; }
  ~FailingAllocation() { allocationToFail = 0; }
  FailingAllocation(const FailingAllocation &) = delete;
  FailingAllocation &operator=(const FailingAllocation &) = delete;

  bool hasFailed() const { return allocationToFail == 0; }
};

inline bool failsNow() {
  if (allocationToFail == 0 || --allocationToFail != 0) return false;
  errno = ENOMEM;
  return true;
}

inline void *counted(void *memory) {
  allocationsLeft += memory == nullptr ? 0 : 1;
  return memory;
}

// False where some tool has put its own functions in the place of those below.
inline bool allocationsCanFail() {
  void *volatile probe = nullptr;
  {
    const FailingAllocation failing(1);
    probe = std::malloc(1);
  }
  std::free(probe);
  return probe == nullptr;
}

}  // namespace wmq::testing

extern "C" {
void *__libc_malloc(size_t size) noexcept;
void *__libc_calloc(size_t count, size_t size) noexcept;
void *__libc_realloc(void *memory, size_t size) noexcept;
void __libc_free(void *memory) noexcept;

void *malloc(size_t size) noexcept {
  return wmq::testing::failsNow() ? nullptr : wmq::testing::counted(__libc_malloc(size));
}

void *calloc(size_t count, size_t size) noexcept {
  return wmq::testing::failsNow() ? nullptr : wmq::testing::counted(__libc_calloc(count, size));
}

void *realloc(void *memory, size_t size) noexcept {
  if (wmq::testing::failsNow()) return nullptr;
  return memory == nullptr ? wmq::testing::counted(__libc_malloc(size)) : __libc_realloc(memory, size);
}

void free(void *memory) noexcept {
  wmq::testing::allocationsLeft -= memory == nullptr ? 0 : 1;
  __libc_free(memory);
}
}

#endif

#endif
