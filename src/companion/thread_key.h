// Memory that a thread keeps from call to call, freed when the thread ends.
//
// A key of the threads library and not a thread_local object with a destructor: registering such a destructor
// ends the process when memory runs out.
#ifndef WMQ_COMPANION_THREAD_KEY_H
#define WMQ_COMPANION_THREAD_KEY_H

#include <pthread.h>

#include <atomic>
#include <cerrno>

namespace wmq {

// An object of static storage. Before it is initialized and after it is destroyed nothing can be kept.
class ThreadKey {
 public:
  explicit ThreadKey(void (*release)(void *)) : release_(release) {
    usable_ = pthread_key_create(&key_, release) == 0;
  }
  // Runs when the library is unloaded too, after which no thread may call `release` any more.
  ~ThreadKey() {
    if (!usable_.exchange(false)) return;
    if (void *const kept = pthread_getspecific(key_)) release_(kept);
    pthread_key_delete(key_);
  }
  ThreadKey(const ThreadKey &) = delete;
  ThreadKey &operator=(const ThreadKey &) = delete;

  // What this thread keeps; null when it keeps nothing.
  void *kept() const { return usable_ ? pthread_getspecific(key_) : nullptr; }

  // Hands `memory` to `release` when this thread ends. False where that cannot be promised. errno stays.
  bool keep(void *memory) const {
    const int before = errno;
    const bool promised = usable_ && pthread_setspecific(key_, memory) == 0;
    errno = before;
    return promised;
  }

 private:
  void (*release_)(void *);
  pthread_key_t key_ = 0;
  std::atomic<bool> usable_ = false;
};

}  // namespace wmq

#endif
