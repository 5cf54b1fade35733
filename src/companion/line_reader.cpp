// The next line of a file that may still grow.
#include <sys/types.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "wmq/companion.h"

namespace wmq {

namespace {

struct LineStorage {
  char *text = nullptr;
  size_t size = 0;

  ~LineStorage() { drop(); }

  void drop() {
    std::free(text);
    text = nullptr;
    size = 0;
  }
};

thread_local LineStorage lineStorage;

}  // namespace

}  // namespace wmq

extern "C" {
WMQ_THREAD_LOCAL int wmc_errno = 0;
}

extern "C" char *_getNextLine_(FILE *file, int *lineNum, int) {
  wmq::LineStorage &storage = wmq::lineStorage;
  wmc_errno = 0;
  if (file == nullptr) {
    storage.drop();
    return nullptr;
  }

  // Someone may have appended since the end was seen; the mark would hide it.
  if (feof(file) != 0) clearerr(file);
  for (;;) {
    errno = 0;
    const ssize_t length = getline(&storage.text, &storage.size, file);
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
