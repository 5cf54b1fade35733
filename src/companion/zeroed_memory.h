// Zeroed memory, quickly.
//
// What a reader allocates and frees again and again, records and short arrays, comes from the blocks that its
// thread keeps. Long arrays are left to calloc, which knows pages that are zero already.
#ifndef WMQ_COMPANION_ZEROED_MEMORY_H
#define WMQ_COMPANION_ZEROED_MEMORY_H

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "companion/block_cache.h"

namespace wmq {

// memset with 0. Compilers would make a slow loop of it where they know the size.
inline void *clear(void *memory, size_t bytes) {
  __asm__("" : "+r"(bytes));
  return std::memset(memory, 0, bytes);
}

// How often this thread has called zeroed(): whatever a record points to but texts comes from there.
inline thread_local constinit unsigned numZeroed = 0;

// As calloc; `count` and `size` are above 0.
inline void *zeroed(size_t count, size_t size) {
  ++numZeroed;
  constexpr size_t most = 1024;
  if (count > most / size && !borrowed.inUse) return std::calloc(count, size);
  if (count > PTRDIFF_MAX / size) return nullptr;
  const size_t bytes = count * size;
  void *const memory = takeBlock(bytes);
  return memory != nullptr ? clear(memory, bytes) : nullptr;
}

}  // namespace wmq

#endif
