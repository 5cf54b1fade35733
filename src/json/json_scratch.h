// Memory that reading JSON works in. Each thread keeps its own from call to call.
#ifndef WMQ_JSON_SCRATCH_H
#define WMQ_JSON_SCRATCH_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "json/json_tokens.h"

namespace wmq {

// An array that grows, and says when it could not: memory running out is an error number here, never an
// exception.
template <typename T>
struct Growing {
  static_assert(std::is_trivially_copyable_v<T>);
  T *items;
  std::size_t size;
  std::size_t capacity;

  bool reserve(std::size_t wanted) {
    if (wanted <= capacity) return true;
    std::size_t larger = capacity + capacity / 2;
    if (larger < wanted) larger = wanted;
    if (larger > SIZE_MAX / sizeof(T)) return false;
    void *moved = std::realloc(items, larger * sizeof(T));
    if (moved == nullptr) return false;
    items = static_cast<T *>(moved);
    capacity = larger;
    return true;
  }

  bool push(const T &item) {
    if (size == capacity && !reserve(size + 64)) return false;
    items[size++] = item;
    return true;
  }

  std::size_t bytes() const { return capacity * sizeof(T); }

  void release() {
    std::free(items);
    *this = {};
  }
};

struct Scratch {
  Growing<char> text;                // the JSON text, decoded in place
  Growing<Token> tokens;             // its values, in order; their strings point into `text`
  Growing<bool> seen;                // by field, for every object that is being read, innermost last
  Growing<std::size_t> knownCounts;  // offsets of the counts that are settled, likewise

  std::size_t bytes() const { return text.bytes() + tokens.bytes() + seen.bytes() + knownCounts.bytes(); }
  void release();
};

// The scratch of this thread, empty; null when memory runs out. Give it back before the call ends: scratch of
// more than 1 MiB in all is then freed.
Scratch *takeScratch();
void giveBackScratch(Scratch *scratch);

}  // namespace wmq

#endif
