#include "json/json_scratch.h"

#include "companion/thread_key.h"

namespace wmq {

static constexpr std::size_t keptBytes = std::size_t{1} << 20;

static void destroyScratch(void *scratch) {
  static_cast<Scratch *>(scratch)->release();
  std::free(scratch);
}

static const ThreadKey scratchKey(destroyScratch);

void Scratch::release() {
  text.release();
  tokens.release();
  seen.release();
  knownCounts.release();
}

Scratch *takeScratch() {
  auto *scratch = static_cast<Scratch *>(scratchKey.kept());
  if (scratch == nullptr) {
    scratch = static_cast<Scratch *>(std::calloc(1, sizeof(Scratch)));
    if (scratch == nullptr) return nullptr;
  }
  scratch->text.size = 0;
  scratch->tokens.size = 0;
  scratch->seen.size = 0;
  scratch->knownCounts.size = 0;
  return scratch;
}

void giveBackScratch(Scratch *scratch) {
  if (!scratchKey.keep(scratch))
    destroyScratch(scratch);
  else if (scratch->bytes() > keptBytes)
    scratch->release();
}

}  // namespace wmq
