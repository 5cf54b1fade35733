#include "wmq.stream/line_source.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "wmq/companion.h"

namespace wmq {
namespace {

constexpr size_t kFirstCapacity = size_t{128} << 10;

// Makes room behind `end` for at least one byte and a NUL.
bool makeRoom(LineSource &source) {
  if (source.begin > 0) {
    std::memmove(source.buffer, source.buffer + source.begin, source.end - source.begin + 1);  // with its NUL
    source.end -= source.begin;
    source.begin = 0;
  }
  if (source.end + 1 < source.capacity) return true;
  const size_t capacity = source.capacity > 0 ? 2 * source.capacity : kFirstCapacity;
  auto *buffer = static_cast<char *>(std::realloc(source.buffer, capacity));
  if (buffer == nullptr) {
    wmc_errno = WMCE_NO_MEM;
    return false;
  }
  source.buffer = buffer;
  source.capacity = capacity;
  return true;
}

// Bytes read, 0 at the end, negative on failure. What cannot be positioned (a FIFO) is read as it comes.
ssize_t readMore(LineSource &source, int fd) {
  char *const to = source.buffer + source.end;
  const size_t space = source.capacity - source.end - 1;
  ssize_t got = 0;
  do {
    got = pread(fd, to, space, source.nextRead);
    if (got < 0 && errno == ESPIPE) got = read(fd, to, space);
  } while (got < 0 && errno == EINTR);
  if (got > 0) {
    source.nextRead += got;
    source.end += static_cast<size_t>(got);
    source.buffer[source.end] = '\0';
  }
  return got;
}

// The next line end behind the first `searched` bytes, or null. Tells whether there is a NUL before it, or
// before the end of the bytes; one search for both is as fast as one for the line end, and a record is parsed
// without another.
char *findLineEnd(const LineSource &source, size_t searched, bool &holdsNul) {
  if (searched == source.end) return nullptr;
  char *const from = source.buffer + searched;
  const size_t length = source.end - searched;
  if (char *const lineEnd = std::strchr(from, '\n'); lineEnd != nullptr) return lineEnd;
  auto *const lineEnd = static_cast<char *>(std::memchr(from, '\n', length));
  holdsNul |= lineEnd != nullptr || std::strlen(from) < length;
  return lineEnd;
}

}  // namespace

Line nextLine(LineSource &source, int fd) {
  wmc_errno = 0;
  size_t searched = source.begin;
  bool holdsNul = false;
  for (;;) {
    char *const lineEnd = findLineEnd(source, searched, holdsNul);
    if (lineEnd != nullptr) {
      char *const text = source.buffer + source.begin;
      source.begin = static_cast<size_t>(lineEnd - source.buffer) + 1;
      searched = source.begin;
      if (lineEnd == text) continue;
      *lineEnd = '\0';
      return {text, static_cast<size_t>(lineEnd - text), holdsNul};
    }
    const size_t seen = source.end - source.begin;
    if (!makeRoom(source)) return {};
    searched = seen;
    const ssize_t got = readMore(source, fd);
    if (got > 0) continue;
    // What has come of a line whose rest cannot be read waits for it: a part could be taken for the whole.
    if (got < 0 || seen == 0) return {};
    source.begin = source.end;
    return {source.buffer, seen, holdsNul};
  }
}

void resetLines(LineSource &source) {
  source.nextRead -= static_cast<off_t>(source.end - source.begin);
  std::free(source.buffer);
  source = LineSource{.nextRead = source.nextRead};
}

bool skipToEnd(LineSource &source, int fd) {
  resetLines(source);
  struct stat status;
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  source.nextRead = status.st_size;
  return true;
}

}  // namespace wmq
