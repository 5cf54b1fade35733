// What the text forms of allocations share: entries between semicolons, each a name, a separator and a rest
// that never holds the separator, so that the last one counts.
#ifndef WMQ_COMPANION_LIST_TEXT_H
#define WMQ_COMPANION_LIST_TEXT_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "companion/block_cache.h"

namespace wmq {

// The last `wanted` before `end`, null if there is none.
inline const char *findLast(const char *text, const char *end, char wanted) {
  while (end != text) {
    if (*--end == wanted) return end;
  }
  return nullptr;
}

// A NUL-terminated copy, a block; null when memory runs out.
inline char *copyOf(const char *first, const char *last) {
  const auto length = static_cast<size_t>(last - first);
  auto *const copy = static_cast<char *>(takeBlock(length + 1));
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, first, length);
  copy[length] = '\0';
  return copy;
}

inline const char *textOrEmpty(const char *text) { return text == nullptr ? "" : text; }

}  // namespace wmq

#endif
