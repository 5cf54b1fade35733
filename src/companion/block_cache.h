// Short blocks that a thread has released, kept for the strings that it reads next.
//
// A record of an event line owns some forty short strings, each a block of its own from malloc. A reader that
// releases one record and reads the next gives back the very blocks that it then asks for: taking them from
// here costs a third of what malloc and free do. All blocks are malloc's, whoever made them and whoever frees
// them in the end. Nothing is kept where a checker of memory is at work: it is to see every use of a released
// block.
#ifndef WMQ_COMPANION_BLOCK_CACHE_H
#define WMQ_COMPANION_BLOCK_CACHE_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "companion/borrowed_memory.h"

namespace wmq {

struct KeptBlock {
  KeptBlock *next;
};

// Class c holds blocks of at least 16 * c + 24 bytes: such are the sizes of the C library's blocks.
struct BlockCache {
  static constexpr size_t leastBytes = 24;
  static constexpr size_t numClasses = 60;  // a record belongs to the last but a few
  static constexpr size_t bytesOf(size_t sizeClass) { return 16 * sizeClass + leastBytes; }

  // What a block takes, in units of 16 bytes, with the C library's own 8 bytes before it.
  static constexpr ptrdiff_t unitsOf(size_t sizeClass) { return static_cast<ptrdiff_t>(sizeClass) + 2; }

  // Bounds to what is kept, in units: whatever the records are, and however long they are.
  static constexpr ptrdiff_t usualMost = (1 << 20) / 16;
  static constexpr ptrdiff_t uttermost = (128 << 20) / 16;

  struct Class {
    KeptBlock *first;
    ptrdiff_t count;
  };
  Class classes[numClasses];
  ptrdiff_t units;  // that are kept
  ptrdiff_t most;   // with that many or more, nothing further is kept; 0 before anything has been released
  enum class State : unsigned char { unknown, inUse, unused } state;
};

extern thread_local constinit BlockCache blockCache;

// Bytes to ask for, so that the block of a text belongs to the class with the number of its whole groups of
// 16 bytes, and has room for one group more where it is kept.
constexpr size_t bytesForText(size_t length) {
  return length < 16 ? length + 1 : std::max(length + 1, length / 16 * 16 + 9);
}

// A kept block of a class; null when there is none.
inline void *takeKept(size_t sizeClass) {
  if (sizeClass >= BlockCache::numClasses) return nullptr;
  BlockCache::Class &kept = blockCache.classes[sizeClass];
  KeptBlock *const block = kept.first;
  if (block == nullptr) return nullptr;
  kept.first = block->next;
  --kept.count;
  blockCache.units -= BlockCache::unitsOf(sizeClass);
  return block;
}

// A block for a text of so many whole groups of 16 bytes and one more, from memory that is there already;
// null when there is none.
inline void *takeGroups(size_t wholeGroups) {
  return borrowed.inUse ? borrowed.take(16 * (wholeGroups + 1)) : takeKept(wholeGroups);
}

// As malloc and free, unless the thread borrows.
inline void *takeBlock(size_t bytes) {
  if (borrowed.inUse) return borrow(bytes);
  constexpr size_t least = BlockCache::leastBytes;
  void *const kept = takeKept(bytes <= least ? 0 : (bytes - least + 15) / 16);
  return kept != nullptr ? kept : std::malloc(bytes);
}
void giveBlock(void *block);

// All, or so many that no more than `units` are left.
void freeKeptBlocks(ptrdiff_t units = 0);

// While it lives the thread keeps every short block that it releases: it surrounds the release of a record,
// but for what release keeps.
// Afterwards the thread keeps 1 MiB, or as much as it released meanwhile if that is more, up to 128 MiB. Of
// what lies above 1 MiB each further record gives back a 1,024th: long records are seldom alone, and none
// counts for ever.
class KeepingAll {
 public:
  KeepingAll() : unitsBefore(blockCache.units), mostBefore(blockCache.most) {
    if (mostBefore != 0) blockCache.most = BlockCache::uttermost;
  }
  ~KeepingAll() {
    if (blockCache.most == 0) return;
    // As nearly always: what follows would come to the same.
    if (mostBefore == BlockCache::usualMost && blockCache.units <= BlockCache::usualMost) {
      blockCache.most = BlockCache::usualMost;
      return;
    }
    const ptrdiff_t released = blockCache.units - unitsBefore;
    blockCache.most = std::max({BlockCache::usualMost, released, mostBefore - mostBefore / 1024});
    if (blockCache.units > blockCache.most) freeKeptBlocks(blockCache.most);
  }
  KeepingAll(const KeepingAll &) = delete;
  KeepingAll &operator=(const KeepingAll &) = delete;

 private:
  const ptrdiff_t unitsBefore;
  const ptrdiff_t mostBefore;
};

// Whether this thread keeps blocks. Tests that count allocations switch it off before a thread has kept any.
bool keepsBlocks();
extern bool blocksMayBeKept;

}  // namespace wmq

#endif
