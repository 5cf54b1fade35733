#include "companion/borrowed_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "companion/block_cache.h"
#include "companion/thread_key.h"

namespace wmq {

struct alignas(std::max_align_t) BorrowedChunk {
  BorrowedChunk *older;
  size_t size;  // behind this

  char *memory() { return reinterpret_cast<char *>(this + 1); }
};

thread_local constinit BorrowedMemory borrowed{};

namespace {

constexpr size_t leastChunk = size_t{64} << 10;
constexpr size_t mostKept = size_t{128} << 20;

void freeChunks() {
  while (BorrowedChunk *const chunk = borrowed.chunks) {
    borrowed.chunks = chunk->older;
    std::free(chunk);
  }
  borrowed.next = borrowed.end = nullptr;
}

const ThreadKey borrowedKey([](void *) { freeChunks(); });

size_t bytesBorrowed() {
  size_t bytes = 0;
  for (BorrowedChunk *chunk = borrowed.chunks; chunk != nullptr; chunk = chunk->older) bytes += chunk->size;
  return bytes - static_cast<size_t>(borrowed.end - borrowed.next);
}

}  // namespace

// A checker of memory is to see each block for itself.
void *borrowMore(size_t bytes) {
  constexpr size_t alignment = alignof(std::max_align_t);
  constexpr size_t most = PTRDIFF_MAX - sizeof(BorrowedChunk) - alignment;
  if (bytes > most) return nullptr;
  bytes = (bytes + alignment - 1) / alignment * alignment;  // what comes next is to be aligned, too
  const size_t size = keepsBlocks() ? std::max(bytes, borrowed.wanted) : bytes;
  auto *const chunk = static_cast<BorrowedChunk *>(std::malloc(sizeof(BorrowedChunk) + size));
  if (chunk == nullptr) return nullptr;
  // A thread of which the end cannot be heard of leaves the chunks of its last record behind.
  if (borrowed.chunks == nullptr) borrowedKey.keep(&borrowed);
  *chunk = {borrowed.chunks, size};
  borrowed.chunks = chunk;
  borrowed.next = chunk->memory() + bytes;
  borrowed.end = chunk->memory() + size;
  return chunk->memory();
}

Borrowing::Borrowing() {
  const size_t taken = bytesBorrowed();
  borrowed.wanted = std::clamp(borrowed.wanted - borrowed.wanted / 1024, leastChunk, mostKept);
  borrowed.wanted = std::clamp(taken, borrowed.wanted, mostKept);
  BorrowedChunk *const chunk = borrowed.chunks;
  const bool kept = chunk != nullptr && chunk->older == nullptr && chunk->size >= leastChunk &&
                    chunk->size / 4 <= borrowed.wanted;
  if (kept)
    borrowed.next = chunk->memory();
  else
    freeChunks();
  borrowed.inUse = true;
}

}  // namespace wmq
