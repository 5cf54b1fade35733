// Bringing a stream to the disk.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "wmq.stream/stream_file.h"

namespace wmq {
namespace {

bool reachDisk(int fd) {
  while (fsync(fd) != 0)
    if (errno != EINTR) return false;
  return true;
}

// A file that was removed in the meantime need not last.
bool syncOldFile(DIR *directory, const char *entry) {
  const int fd = openat(dirfd(directory), entry, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT;
  const bool synced = reachDisk(fd);
  const int reason = errno;
  close(fd);
  errno = reason;
  return synced;
}

// Rotation has closed them, so that only their names are left to find them by.
bool syncOldFiles(DIR *directory, const char *name, int64_t first) {
  errno = 0;
  for (const dirent *entry = readdir(directory); entry != nullptr; errno = 0, entry = readdir(directory)) {
    const char *const suffix = suffixOf(entry->d_name, name);
    if (suffix == nullptr || std::strtoll(suffix, nullptr, 10) < first) continue;
    if (isOldFile(directory, entry->d_name) && !syncOldFile(directory, entry->d_name)) return false;
  }
  return errno == 0;
}

}  // namespace

// A directory takes the disk as long as a file does, even when nothing in it has changed.
bool syncFile(streamFile &file) {
  if (!reachDisk(fileno(file.fp))) return false;
  if (file.namesSynced) return true;
  DIR *const directory = listDirectoryOf(file.fileName);
  if (directory == nullptr) return false;
  file.namesSynced =
      (file.firstUnsynced == 0 || syncOldFiles(directory, baseName(file.fileName), file.firstUnsynced)) &&
      reachDisk(dirfd(directory));
  const int reason = errno;
  closedir(directory);
  errno = reason;
  if (file.namesSynced) file.firstUnsynced = 0;
  return file.namesSynced;
}

}  // namespace wmq
