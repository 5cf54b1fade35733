#include "companion/block_cache.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "companion/thread_key.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WMQ_CHECKED_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define WMQ_CHECKED_MEMORY
#endif
#endif

namespace wmq {

constinit bool blocksMayBeKept = true;

// Only this C library tells how many bytes a block has.
#if defined(__GLIBC__) && !defined(WMQ_CHECKED_MEMORY)
namespace {

// Class c holds blocks of at least 16 * c + 24 bytes: such are the sizes of the C library's blocks.
constexpr size_t kLeastBytes = 24;
constexpr size_t kClasses = 5;
constexpr size_t kMostBytes = size_t{128} << 10;  // in all
constexpr size_t bytesOf(size_t sizeClass) { return 16 * sizeClass + kLeastBytes; }

struct Block {
  Block *next;
};

struct Cache {
  Block *first[kClasses];
  size_t bytes;
  enum class State : uint8_t { unknown, inUse, unused } state;
};

thread_local constinit Cache cache{};

void endKeeping(void *) {
  freeKeptBlocks();
  cache.state = Cache::State::unused;
}

const ThreadKey cacheKey(endKeeping);

// Valgrind brings its own malloc into the process this way, and nothing else tells of it.
bool valgrindChecks() {
  const char *const preloaded = std::getenv("LD_PRELOAD");
  return preloaded != nullptr && std::strstr(preloaded, "vgpreload") != nullptr;
}

}  // namespace

void freeKeptBlocks() {
  for (Block *&first : cache.first) {
    while (first != nullptr) {
      Block *const block = first;
      first = block->next;
      std::free(block);
    }
  }
  cache.bytes = 0;
}

bool keepsBlocks() {
  if (cache.state == Cache::State::unknown) {
    const bool kept = blocksMayBeKept && !valgrindChecks() && cacheKey.keep(&cache);
    cache.state = kept ? Cache::State::inUse : Cache::State::unused;
  }
  return cache.state == Cache::State::inUse;
}

void *takeBlock(size_t bytes) {
  const size_t wanted = bytes <= kLeastBytes ? 0 : (bytes - kLeastBytes + 15) / 16;
  if (wanted >= kClasses || cache.first[wanted] == nullptr) return std::malloc(bytes);
  Block *const block = cache.first[wanted];
  cache.first[wanted] = block->next;
  cache.bytes -= bytesOf(wanted);
  return block;
}

void giveBlock(void *released) {
  if (released == nullptr) return;
  const size_t size = (malloc_usable_size(released) - kLeastBytes) / 16;
  if (size >= kClasses || cache.bytes >= kMostBytes || !keepsBlocks()) return std::free(released);
  auto *const block = static_cast<Block *>(released);
  block->next = cache.first[size];
  cache.first[size] = block;
  cache.bytes += bytesOf(size);
}
#else
void *takeBlock(size_t bytes) { return std::malloc(bytes); }
void giveBlock(void *block) { std::free(block); }
bool keepsBlocks() { return false; }
void freeKeptBlocks() {}
#endif

}  // namespace wmq
