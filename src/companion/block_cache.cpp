#include "companion/block_cache.h"

#include <cstdlib>
#include <cstring>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "companion/checked_memory.h"
#include "companion/thread_key.h"

namespace wmq {

constinit bool blocksMayBeKept = true;
thread_local constinit BlockCache blockCache{};

// Only this C library tells how many bytes a block has.
#if defined(__GLIBC__) && !defined(WMQ_CHECKED_MEMORY)
namespace {

using State = BlockCache::State;

void endKeeping(void *) {
  freeKeptBlocks();
  blockCache.most = 0;
  blockCache.state = State::unused;
}

const ThreadKey cacheKey(endKeeping);

// Valgrind brings its own malloc into the process this way, and nothing else tells of it.
bool valgrindChecks() {
  const char *const preloaded = std::getenv("LD_PRELOAD");
  return preloaded != nullptr && std::strstr(preloaded, "vgpreload") != nullptr;
}

void keep(void *released, size_t sizeClass) {
  auto *const block = static_cast<KeptBlock *>(released);
  BlockCache::Class &kept = blockCache.classes[sizeClass];
  block->next = kept.first;
  kept.first = block;
  ++kept.count;
  blockCache.units += BlockCache::unitsOf(sizeClass);
}

// The block is too long, or the cache is full, or this is the first that the thread releases.
[[gnu::noinline]] void giveWithoutRoom(void *block, size_t sizeClass) {
  if (sizeClass < BlockCache::numClasses && blockCache.state == State::unknown && keepsBlocks())
    return keep(block, sizeClass);
  std::free(block);
}

}  // namespace

// Those of which most are kept go first: what is asked for again and again is never so many.
void freeKeptBlocks(ptrdiff_t units) {
  while (blockCache.units > units) {
    const auto unitsOfClass = [](size_t c) { return blockCache.classes[c].count * BlockCache::unitsOf(c); };
    size_t largest = 0;
    for (size_t c = 1; c < BlockCache::numClasses; ++c)
      if (unitsOfClass(c) > unitsOfClass(largest)) largest = c;
    do {
      std::free(takeKept(largest));
    } while (blockCache.units > units && blockCache.classes[largest].first != nullptr);
  }
}

bool keepsBlocks() {
  if (blockCache.state == State::unknown) {
    const bool kept = blocksMayBeKept && !valgrindChecks() && cacheKey.keep(&blockCache);
    blockCache.state = kept ? State::inUse : State::unused;
    blockCache.most = kept ? BlockCache::usualMost : 0;
  }
  return blockCache.state == State::inUse;
}

void giveBlock(void *block) {
  if (block == nullptr || borrowed.inUse) return;
  const size_t sizeClass = (malloc_usable_size(block) - BlockCache::leastBytes) / 16;
  if (sizeClass < BlockCache::numClasses && blockCache.units < blockCache.most) return keep(block, sizeClass);
  giveWithoutRoom(block, sizeClass);
}
#else
void giveBlock(void *block) {
  if (!borrowed.inUse) std::free(block);
}
bool keepsBlocks() { return false; }
void freeKeptBlocks(ptrdiff_t) {}
#endif

}  // namespace wmq
