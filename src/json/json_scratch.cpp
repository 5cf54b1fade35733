#include "json/json_scratch.h"

#include <pthread.h>

#include <atomic>

namespace wmq {

static constexpr std::size_t keptBytes = std::size_t{1} << 20;

static void destroyScratch(void *scratch) {
  if (scratch == nullptr) return;
  static_cast<Scratch *>(scratch)->release();
  std::free(scratch);
}

// A key of the threads library and not a thread_local object with a destructor: registering such a destructor
// ends the process when memory runs out.
namespace {
struct ScratchKey {
  pthread_key_t key = 0;
  std::atomic<bool> usable = false;

  ScratchKey() { usable = pthread_key_create(&key, destroyScratch) == 0; }

  // Runs when the library is unloaded too, after which no thread may call destroyScratch any more.
  ~ScratchKey() {
    if (!usable.exchange(false)) return;
    destroyScratch(pthread_getspecific(key));
    pthread_key_delete(key);
  }
};
}  // namespace

static ScratchKey scratchKey;

void Scratch::release() {
  text.release();
  tokens.release();
  seen.release();
  knownCounts.release();
}

Scratch *takeScratch() {
  auto *scratch = static_cast<Scratch *>(scratchKey.usable ? pthread_getspecific(scratchKey.key) : nullptr);
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
  if (!scratchKey.usable || pthread_setspecific(scratchKey.key, scratch) != 0)
    destroyScratch(scratch);
  else if (scratch->bytes() > keptBytes)
    scratch->release();
}

}  // namespace wmq
