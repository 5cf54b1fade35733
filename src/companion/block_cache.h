// Short blocks that a thread has released, kept for the strings that it reads next.
//
// A record of an event line owns some forty short strings, each a block of its own from malloc. A reader that
// releases one record and reads the next gives back the very blocks that it then asks for: taking them from
// here costs a third of what malloc and free do. All blocks are malloc's, whoever made them and whoever frees
// them in the end. Nothing is kept where a checker of memory is at work: it is to see every use of a released
// block.
#ifndef WMQ_COMPANION_BLOCK_CACHE_H
#define WMQ_COMPANION_BLOCK_CACHE_H

#include <cstddef>

namespace wmq {

// As malloc and free.
void *takeBlock(size_t bytes);
void giveBlock(void *block);

// Whether this thread keeps blocks. Tests that count allocations switch it off before a thread has kept any.
bool keepsBlocks();
void freeKeptBlocks();
extern bool blocksMayBeKept;

}  // namespace wmq

#endif
