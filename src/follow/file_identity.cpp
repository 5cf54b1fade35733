#include "follow/file_identity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string_view>

namespace wmq {
namespace {

// CRC-32 of IEEE 802.3, low bit first.
constexpr auto kRemainders = [] {
  std::array<uint32_t, 256> table{};
  for (uint32_t byte = 0; byte < table.size(); ++byte) {
    uint32_t rest = byte;
    for (int bit = 0; bit < 8; ++bit) rest = (rest & 1) != 0 ? rest >> 1 ^ 0xedb88320U : rest >> 1;
    table[byte] = rest;
  }
  return table;
}();

int64_t nanoseconds(const auto &time) {
  return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + static_cast<int64_t>(time.tv_nsec);
}

#ifdef STATX_BTIME
bool askFor(int directory, const char *name, int flags, FileStatus &status) {
  // Times of creation are never before this clock, which stands still for some milliseconds. In these an
  // inode can go from one file to another, and with it the time.
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  struct statx found {};
  if (statx(directory, name, flags, STATX_BASIC_STATS | STATX_BTIME, &found) != 0) return false;
  status.identity.device = uint64_t{found.stx_dev_major} << 32 | found.stx_dev_minor;
  status.identity.inode = found.stx_ino;
  status.identity.birth = 0;
  status.settled = false;
  if ((found.stx_mask & STATX_BTIME) != 0) {
    const int64_t birth[2] = {found.stx_btime.tv_sec, found.stx_btime.tv_nsec};
    char bytes[sizeof birth];
    std::memcpy(bytes, birth, sizeof birth);
    status.identity.birth = checksum(bytes, sizeof bytes);
    status.settled = birth[0] < now.tv_sec || (birth[0] == now.tv_sec && birth[1] < now.tv_nsec);
  }
  status.size = static_cast<int64_t>(found.stx_size);
  status.modified = nanoseconds(found.stx_mtime);
  status.regular = S_ISREG(found.stx_mode);
  status.directory = S_ISDIR(found.stx_mode);
  return true;
}
constexpr int kOfDescriptor = AT_EMPTY_PATH;
#else
bool askFor(int directory, const char *name, int flags, FileStatus &status) {
  struct stat found {};
  const bool asked =
      *name == '\0' ? fstat(directory, &found) == 0 : fstatat(directory, name, &found, flags) == 0;
  if (!asked) return false;
  status.identity = {.device = found.st_dev, .inode = found.st_ino};
  status.size = found.st_size;
  status.modified = nanoseconds(found.st_mtim);
  status.regular = S_ISREG(found.st_mode);
  status.directory = S_ISDIR(found.st_mode);
  return true;
}
constexpr int kOfDescriptor = 0;
#endif

}  // namespace

bool isUsable(const FileStatus &status) {
  if (!status.regular) errno = status.directory ? EISDIR : EINVAL;
  return status.regular;
}

bool statusOf(int fd, FileStatus &status) { return askFor(fd, "", kOfDescriptor, status); }
bool statusOf(const char *path, FileStatus &status) { return askFor(AT_FDCWD, path, 0, status); }
bool statusOfEntry(int directory, const char *name, FileStatus &status) {
  return askFor(directory, name, AT_SYMLINK_NOFOLLOW, status);
}

ssize_t readFully(int fd, char *to, size_t length, int64_t offset) {
  size_t got = 0;
  while (got < length) {
    const ssize_t more = pread(fd, to + got, length - got, offset + static_cast<int64_t>(got));
    if (more == 0) break;
    if (more > 0)
      got += static_cast<size_t>(more);
    else if (errno != EINTR)
      return -1;
  }
  return static_cast<ssize_t>(got);
}

uint32_t checksum(const char *bytes, size_t length) {
  uint32_t rest = ~uint32_t{0};
  for (size_t i = 0; i < length; ++i)
    rest = rest >> 8 ^ kRemainders[(rest ^ static_cast<unsigned char>(bytes[i])) & 0xff];
  return ~rest;
}

bool extractFirstLine(int fd, Extract &extract, bool &whole) {
  char bytes[kMostSummed];
  const ssize_t got = readFully(fd, bytes, sizeof bytes, 0);
  if (got < 0) return false;
  const auto length = static_cast<size_t>(got);
  const void *const lineEnd = std::memchr(bytes, '\n', length);
  const size_t line =
      lineEnd != nullptr ? static_cast<size_t>(static_cast<const char *>(lineEnd) - bytes) + 1 : length;
  extract = {static_cast<int64_t>(line), checksum(bytes, line)};
  whole = lineEnd != nullptr || length == sizeof bytes;
  return true;
}

bool compareFirstLine(int fd, const Extract &first, bool &same) {
  Extract found;
  bool whole = false;
  if (!extractFirstLine(fd, found, whole)) return false;
  same = whole && found.length == first.length && found.sum == first.sum;
  return true;
}

bool beginsWithEnd(int fd, bool &begins) {
  constexpr std::string_view end = "\"END_OF_STREAM\" ";
  char bytes[end.size()];
  const ssize_t got = readFully(fd, bytes, sizeof bytes, 0);
  if (got < 0) return false;
  begins = std::string_view(bytes, static_cast<size_t>(got)) == end;
  return true;
}

bool compareFirst(int fd, const Extract &first, bool &same) {
  return compareBefore(fd, first.length, first, same);
}

bool compareBefore(int fd, int64_t end, const Extract &last, bool &same) {
  char bytes[kMostSummed];
  const auto length = static_cast<size_t>(last.length);
  const ssize_t got = readFully(fd, bytes, length, end - last.length);
  if (got < 0) return false;
  same = got == last.length && (length == 0 || checksum(bytes, length) == last.sum);
  return true;
}

}  // namespace wmq
