// Zeroed memory, quickly.
//
// What a reader allocates and frees again and again, records and short arrays, comes from the blocks that its
// thread keeps. Long arrays are left to calloc, which knows pages that are zero already.
#ifndef WMQ_COMPANION_ZEROED_MEMORY_H
#define WMQ_COMPANION_ZEROED_MEMORY_H

#include <cstdlib>
#include <cstring>

#include "companion/block_cache.h"

namespace wmq {

// As calloc; `count` and `size` are above 0.
inline void *zeroed(size_t count, size_t size) {
  constexpr size_t most = 1024;
  if (count > most / size) return std::calloc(count, size);
  size_t bytes = count * size;
  void *memory = takeBlock(bytes);
  if (memory == nullptr) return nullptr;
  // Compilers would make one calloc of malloc and memset, and a slow loop of a memset whose size they know.
  __asm__("" : "+r"(memory), "+r"(bytes));
  return std::memset(memory, 0, bytes);
}

}  // namespace wmq

#endif
