#include "support/failing_allocations.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "companion/block_cache.h"
#include "companion/checked_memory.h"

#ifdef WMQ_CHECKED_MEMORY
#define WMQ_TESTS_BELOW(function) __interceptor_##function
#else
#define WMQ_TESTS_BELOW(function) __libc_##function
#endif

namespace wmq::testing {
namespace {

// Each allocation is to be one of this program's, and each release too.
[[maybe_unused]] const bool noBlocksKept = blocksMayBeKept = false;

thread_local int untilFailure = 0;  // 0: none is to fail
thread_local bool failed = false;
thread_local bool laterFail = false;
thread_local int left = 0;
std::atomic<int> allFailed = 0;

bool failsNow() {
  if (untilFailure > 0) {
    if (--untilFailure > 0) return false;
    failed = true;
  } else if (!laterFail || !failed) {
    return false;
  }
  ++allFailed;
  errno = ENOMEM;
  return true;
}

void *counted(void *memory) {
  left += memory == nullptr ? 0 : 1;
  return memory;
}

}  // namespace

FailingAllocation::FailingAllocation(int nth, Later later) {
  failed = false;
  laterFail = later == failToo;
  untilFailure = nth;
}

FailingAllocation::~FailingAllocation() {
  untilFailure = 0;
  laterFail = false;
}

bool FailingAllocation::hasFailed() const { return failed; }

int allocationsLeft() { return left; }

int allocationsFailed() { return allFailed; }

// Called by its address: a tool puts its own function there, and not where the compiler has copied this one.
bool allocationsCanFail() {
  void *(*volatile const allocate)(size_t) = std::malloc;
  void (*volatile const release)(void *) = std::free;
  void *probe = nullptr;
  {
    const FailingAllocation failing(1);
    probe = allocate(1);
  }
  release(probe);
  return probe == nullptr;
}

}  // namespace wmq::testing

// The C library itself must find them.
#pragma GCC visibility push(default)
extern "C" {
void *WMQ_TESTS_BELOW(malloc)(size_t size) noexcept;
void *WMQ_TESTS_BELOW(calloc)(size_t count, size_t size) noexcept;
void *WMQ_TESTS_BELOW(realloc)(void *memory, size_t size) noexcept;
void WMQ_TESTS_BELOW(free)(void *memory) noexcept;

// The parameters have names of the C library's own in its header.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
void *malloc(size_t size) noexcept {
  return wmq::testing::failsNow() ? nullptr : wmq::testing::counted(WMQ_TESTS_BELOW(malloc)(size));
}

void *calloc(size_t count, size_t size) noexcept {
  return wmq::testing::failsNow() ? nullptr : wmq::testing::counted(WMQ_TESTS_BELOW(calloc)(count, size));
}

void *realloc(void *memory, size_t size) noexcept {
  if (wmq::testing::failsNow()) return nullptr;
  void *const moved = WMQ_TESTS_BELOW(realloc)(memory, size);
  return memory == nullptr ? wmq::testing::counted(moved) : moved;
}

void free(void *memory) noexcept {
  wmq::testing::left -= memory == nullptr ? 0 : 1;
  WMQ_TESTS_BELOW(free)(memory);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
}
#pragma GCC visibility pop
