// The memory of a record that nobody releases: all that is allocated while a thread borrows lies in a few
// long chunks, stays until the thread borrows anew, and goes without anybody looking for its parts.
#ifndef WMQ_COMPANION_BORROWED_MEMORY_H
#define WMQ_COMPANION_BORROWED_MEMORY_H

#include <cstddef>

namespace wmq {

struct BorrowedChunk;

struct BorrowedMemory {
  char *next;  // free bytes of the first chunk
  char *end;
  BorrowedChunk *chunks;  // the newest first
  size_t wanted;          // for the next chunk
  bool inUse;             // what is allocated now comes from here

  // From the first chunk; null when it has no such room.
  void *take(size_t bytes) {
    constexpr size_t alignment = alignof(std::max_align_t);
    const size_t room = (bytes + alignment - 1) / alignment * alignment;
    if (room > static_cast<size_t>(end - next)) return nullptr;
    void *const taken = next;
    next += room;
    return taken;
  }
};

extern thread_local constinit BorrowedMemory borrowed;

// From a new chunk; null when memory runs out.
void *borrowMore(size_t bytes);

// Memory for anything; null when memory runs out.
inline void *borrow(size_t bytes) {
  void *const taken = borrowed.take(bytes);
  return taken != nullptr ? taken : borrowMore(bytes);
}

// Gives up what the thread has borrowed before; while it lives, takeBlock borrows and giveBlock does nothing.
// Between records the thread keeps as much as the longest of late has taken, 64 KiB at least and 128 MiB at
// most, of which each further record gives back a 1,024th.
class Borrowing {
 public:
  Borrowing();
  ~Borrowing() { borrowed.inUse = false; }
  Borrowing(const Borrowing &) = delete;
  Borrowing &operator=(const Borrowing &) = delete;
};

}  // namespace wmq

#endif
