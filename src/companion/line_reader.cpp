// The next line of a file that may still grow.
#include <sys/types.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "companion/thread_key.h"
#include "wmq/companion.h"

namespace wmq {

namespace {

struct LineStorage {
  char *text = nullptr;
  size_t size = 0;
};

thread_local constinit LineStorage lineStorage;

void dropStorage(void *kept) {
  auto &storage = *static_cast<LineStorage *>(kept);
  std::free(storage.text);
  storage = LineStorage{};
}

const ThreadKey storageKey(dropStorage);

// Whether the line can be freed with the thread or not, it is the caller's to read; what cannot be promised
// now is tried again with the next line.
void keepStorage() {
  if (storageKey.kept() == nullptr) storageKey.keep(&lineStorage);
}

}  // namespace

}  // namespace wmq

extern "C" {
WMQ_THREAD_LOCAL int wmc_errno = 0;
}

extern "C" char *_getNextLine_(FILE *file, int *lineNum, int) {
  wmq::LineStorage &storage = wmq::lineStorage;
  wmc_errno = 0;
  if (file == nullptr) {
    wmq::dropStorage(&storage);
    return nullptr;
  }

  // Someone may have appended since the end was seen; the mark would hide it.
  if (feof(file) != 0) clearerr(file);
  for (;;) {
    errno = 0;
    const ssize_t length = getline(&storage.text, &storage.size, file);
    wmq::keepStorage();
    if (length < 0) {
      if (errno == ENOMEM) wmc_errno = WMCE_NO_MEM;
      return nullptr;
    }
    if (lineNum != nullptr && *lineNum < INT_MAX) ++*lineNum;
    char *const last = storage.text + length - 1;
    if (*last != '\n') return storage.text;
    *last = '\0';
    if (length > 1) return storage.text;
  }
}
