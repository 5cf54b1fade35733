#include "wmq.stream/stream_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include "companion/numbers.h"
#include "wmq.stream/failure.h"

namespace wmq {
namespace {

constexpr int32_t kDefaultSize = 1000000000;
constexpr mode_t kMode = 0644;
constexpr int32_t kRemoved = INT32_MAX;  // marks a suffix that is not, or no longer, to be removed

char tracebuf[8192];
char path[4096];

__attribute__((format(printf, 2, 3))) void report(const streamFile *file, const char *format, ...) {
  if (file == nullptr || file->trace == 0) return;
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(tracebuf, sizeof tracebuf, format, arguments);
  va_end(arguments);
  if (file->traceFunc != nullptr) file->traceFunc(tracebuf);
}

void reportState(const streamFile &file, const char *label, const char *what) {
  report(&file, "%s: %s %s %s all right maxsize %d", label, file.kind->noun, file.fileName, what,
         file.maxStreamSize);
}

// What a rotation could not do, and with which file.
int failRotation(const char *what, const char *name = "", int error = WMQE_SYS) {
  noteRotationFailure(what, name);
  wmq_errno = error;
  return -1;
}

int failRemoval(const char *what, const char *name = "") {
  failRotation(what, name);
  return -2;
}

int failList() { return failRotation("no memory for the list of old files", "", WMQE_NO_MEM); }

// A file that a rotation opens belongs to nobody whom the program starts.
void protect(FILE *fp) { fcntl(fileno(fp), F_SETFD, FD_CLOEXEC); }

// ------------------------------------------------------------------- old files

// Directory of old files as they are counted: a name without a directory part stands in ".", and then nothing
// that is found there ever matches it.
struct Directory {
  size_t length;  // of the part of the file name
  bool none;
};

Directory directoryOf(const char *fileName) {
  const char *cut = std::strrchr(fileName, '/');
  if (cut == nullptr) cut = std::strrchr(fileName, '\\');
  return cut == nullptr ? Directory{0, true} : Directory{static_cast<size_t>(cut - fileName), false};
}

DIR *openDirectory(const char *fileName, const Directory &directory) {
  if (directory.none) return opendir(".");
  if (directory.length == 0) return opendir("/");
  if (directory.length >= sizeof path) {
    errno = ENAMETOOLONG;
    return nullptr;
  }
  std::memcpy(path, fileName, directory.length);
  path[directory.length] = '\0';
  return opendir(path);
}

struct OldFile {
  int32_t suffix;
  bool named;  // by the very text that the number is written with: only such a file can be removed by number
  char written[24];  // that text, or as much of it as a message needs

  bool operator<(const OldFile &other) const {
    return std::pair(suffix, !named) < std::pair(other.suffix, !other.named);
  }
};

struct OldFiles {
  OldFile *files = nullptr;
  size_t count = 0;
  size_t capacity = 0;
  ~OldFiles() { std::free(files); }

  bool reserve(size_t wanted) {
    auto *grown = static_cast<OldFile *>(std::realloc(files, wanted * sizeof *files));
    if (grown == nullptr) return false;
    files = grown;
    capacity = wanted;
    return true;
  }
  bool add(const char *text) {
    if (count == capacity && !reserve(2 * capacity)) return false;
    const long value = std::strtol(text, nullptr, 10);
    const int32_t suffix = value >= kRemoved ? kRemoved : static_cast<int32_t>(value);
    char plain[24];
    *formatInt64(plain, suffix) = '\0';
    OldFile &added = files[count++];
    added = {suffix, std::strcmp(text, plain) == 0, {}};
    std::strncpy(added.written, text, sizeof added.written - 1);
    return true;
  }
};

constexpr char kUnlisted[] = "cannot list the directory of the old files";

int findOldFiles(const char *fileName, OldFiles &found) {
  const Directory directory = directoryOf(fileName);
  DIR *const listing = openDirectory(fileName, directory);
  if (listing == nullptr) return failRotation(kUnlisted);
  // Only "DIRECTORY/NAME" can equal the file name, so its last part is all that has to be compared. A bare
  // name, or one whose directory ends in a backslash, equals no such path.
  const bool comparable = !directory.none && fileName[directory.length] == '/';
  const char *const base = comparable ? fileName + directory.length + 1 : nullptr;
  int result = 0;
  errno = 0;
  for (const dirent *entry = readdir(listing); entry != nullptr; errno = 0, entry = readdir(listing)) {
    const char *suffix = comparable ? suffixOf(entry->d_name, base) : nullptr;
    if (suffix == nullptr || !isOldFile(listing, entry->d_name)) continue;
    if (!found.add(suffix)) {
      result = failList();
      break;
    }
  }
  if (result == 0 && errno != 0) result = failRotation(kUnlisted);
  closedir(listing);
  return result;
}

// False, with errno, when the name is longer than any file's can be: a name cut short would be another
// file's.
bool nameOldFile(char (&name)[sizeof path], const char *fileName, int64_t suffix) {
  const int length = std::snprintf(name, sizeof path, "%s.%ld", fileName, static_cast<long>(suffix));
  if (length >= 0 && static_cast<size_t>(length) < sizeof path) return true;
  errno = ENAMETOOLONG;
  return false;
}

// One pass: the file of the smallest suffix that is left. Where the number was told by a name written in
// another way, what bears the plain name is no file that was counted (a link, a directory), if anything.
int removeOldest(const char *fileName, const OldFile &oldest) {
  if (!nameOldFile(path, fileName, oldest.suffix)) return failRemoval("the name of an old file is too long");
  report(stream, "%s: Removing oldest stream file %s ", "deleteoldfiles()", path);
  if (!oldest.named)
    errno = ENOENT;
  else if (unlink(path) == 0)
    return 0;
  const int reason = errno;
  report(stream, "%s: Failed to remove file %s, errno= %d", "deleteoldfiles()", path, reason);
  errno = reason;
  if (oldest.named) return failRemoval("cannot remove", baseName(path));
  char names[256];
  std::snprintf(names, sizeof names, "%.200s.%s by the suffix %d", baseName(fileName), oldest.written,
                oldest.suffix);
  errno = reason;
  return failRemoval("cannot remove", names);
}

// ---------------------------------------------------------------------- rotation

bool writeEndOfStream(const streamFile &file) {
  char line[64];
  const int length = std::snprintf(line, sizeof line, "\"END_OF_STREAM\" \"%s\" %d\n", WMQ_FORMAT_VERSION,
                                   static_cast<int32_t>(currentTime()));
  return append(file, line, static_cast<size_t>(length)) == static_cast<size_t>(length);
}

// A copy, but for a default path that is used as it is.
char *pathOf(const StreamKind &kind, const char *fileName) {
  if (fileName != nullptr) return putstr_(fileName);
  return kind.keepsDefaultPath ? const_cast<char *>(kind.defaultPath) : putstr_(kind.defaultPath);
}

int64_t systemTime() { return std::time(nullptr); }

}  // namespace

constinit Clock *currentTime = systemTime;

const StreamKind eventStreamKind{.noun = "stream",
                                 .defaultPath = "/tmp/wmq.stream",
                                 .openLabel = "wmq_openstream()",
                                 .resetLabel = "resetstream()",
                                 .closeLabel = "wmq_closestream()",
                                 .type = 0,
                                 .keepsDefaultPath = false};

constinit streamFile *stream = nullptr;

DIR *listDirectoryOf(const char *fileName) {
  const char *const slash = std::strrchr(fileName, '/');
  if (slash == nullptr) return openDirectory(fileName, Directory{0, true});
  return openDirectory(fileName, Directory{static_cast<size_t>(slash - fileName), false});
}

const char *baseName(const char *fileName) {
  const char *const slash = std::strrchr(fileName, '/');
  return slash == nullptr ? fileName : slash + 1;
}

const char *suffixOf(const char *name, const char *prefix) {
  const char *dot = std::strrchr(name, '.');
  if (dot == nullptr || !islongint_(dot + 1)) return nullptr;
  const auto length = static_cast<size_t>(dot - name);
  return std::strlen(prefix) == length && std::memcmp(name, prefix, length) == 0 ? dot + 1 : nullptr;
}

bool isOldFile(DIR *directory, const char *entry) {
  struct stat status;
  return fstatat(dirfd(directory), entry, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode);
}

bool nextSuffix(const char *fileName, int64_t now, int64_t &suffix) {
  DIR *const listing = listDirectoryOf(fileName);
  if (listing == nullptr) return false;
  suffix = now;
  errno = 0;
  for (const dirent *entry = readdir(listing); entry != nullptr; errno = 0, entry = readdir(listing)) {
    const char *text = suffixOf(entry->d_name, baseName(fileName));
    if (text == nullptr) continue;
    const int64_t value = std::strtoll(text, nullptr, 10);
    if (value <= kLastSuffix) suffix = std::max(suffix, value + 1);
  }
  const bool complete = errno == 0;
  closedir(listing);
  return complete;
}

int checkstreamfilenum(const char *fileName, int32_t maxFileNum) {
  if (maxFileNum < 1 || fileName == nullptr) return -1;
  OldFiles found;
  // The limit may be any number: its list is taken in steps all the same.
  if (!found.reserve(static_cast<size_t>(std::min(maxFileNum, 1024)))) return failList();
  if (const int result = findOldFiles(fileName, found); result != 0) return result;
  if (found.count < static_cast<size_t>(maxFileNum)) return 0;

  std::sort(found.files, found.files + found.count);
  const size_t passes = found.count - static_cast<size_t>(maxFileNum) + 1;
  size_t next = 0;
  for (size_t pass = 0; pass < passes; ++pass) {
    if (next == found.count || found.files[next].suffix == kRemoved) break;
    const OldFile &oldest = found.files[next];
    if (const int result = removeOldest(fileName, oldest); result != 0) return result;
    while (next < found.count && found.files[next].suffix == oldest.suffix) ++next;
  }
  wmq_errno = WMQE_FILES_REMOVED;
  return 0;
}

streamFile *openFile(const StreamKind &kind, const char *fileName, const streamParams &params) {
  auto *file = static_cast<streamFile *>(std::calloc(1, sizeof(streamFile)));
  char *const name = file == nullptr ? nullptr : pathOf(kind, fileName);
  if (name == nullptr) {
    std::free(file);
    wmq_errno = WMQE_NO_MEM;
    return nullptr;
  }
  file->kind = &kind;
  file->fileName = name;
  file->maxStreamSize = params.maxStreamSize > 0 ? params.maxStreamSize : kDefaultSize;
  file->maxStreamFileNum = params.maxStreamFileNum;
  file->trace = params.trace;
  file->traceFunc = params.traceFunc;
  file->fp = std::fopen(name, "a+");
  if (file->fp == nullptr || chmod(name, kMode) != 0) {
    const int reason = errno;
    if (file->fp != nullptr) std::fclose(file->fp);
    if (fileName != nullptr || !kind.keepsDefaultPath) std::free(name);
    std::free(file);
    errno = reason;
    wmq_errno = WMQE_SYS;
    return nullptr;
  }
  protect(file->fp);
  reportState(*file, kind.openLabel, "open");
  return file;
}

void closeFile(streamFile *file) {
  if (file->fp != nullptr) std::fclose(file->fp);
  reportState(*file, file->kind->closeLabel, "closed");
  std::memset(tracebuf, 0, sizeof tracebuf);
  resetLines(file->lines);
  if (!file->kind->keepsDefaultPath || std::strcmp(file->fileName, file->kind->defaultPath) != 0)
    std::free(file->fileName);
  std::free(file);
}

// The file is written past its buffer: a line reaches the system in one piece or fails with the system's
// reason, and nothing of a failed line can come out later.
size_t append(const streamFile &file, const char *bytes, size_t length) {
  const int fd = fileno(file.fp);
  size_t taken = 0;
  while (taken < length) {
    const ssize_t written = write(fd, bytes + taken, length - taken);
    if (written >= 0) {
      taken += static_cast<size_t>(written);
    } else if (errno != EINTR) {
      break;
    }
  }
  return taken;
}

// Suffixes that count for nothing may still be taken. A name is free when the system says so, and not when it
// cannot say.
static bool nameRotated(const char *fileName, char (&rotated)[sizeof path], int64_t &suffix) {
  if (!nextSuffix(fileName, currentTime(), suffix)) return false;
  struct stat status;
  while (nameOldFile(rotated, fileName, suffix)) {
    if (lstat(rotated, &status) != 0) return errno == ENOENT;
    ++suffix;
  }
  return false;
}

int isFull(const streamFile &file, size_t waiting) {
  struct stat status;
  if (fstat(fileno(file.fp), &status) != 0)
    return failRotation("cannot tell the size of", baseName(file.fileName));
  return status.st_size + static_cast<off_t>(waiting) >= file.maxStreamSize ? 1 : 0;
}

int resetstream(streamFile &file) {
  if (const int result = checkstreamfilenum(file.fileName, file.maxStreamFileNum); result < 0) return result;

  char rotated[sizeof path];
  int64_t suffix = 0;
  const char *const name = baseName(file.fileName);
  if (!nameRotated(file.fileName, rotated, suffix))
    return failRotation("cannot find a free name for an old file of", name);
  if (!writeEndOfStream(file)) return failRotation("cannot append to", name);
  // What the system kept back until now may be refused here: on a network, the disk may be full.
  const bool closed = std::fclose(file.fp) == 0;
  file.fp = nullptr;
  resetLines(file.lines);
  file.lines.nextRead = 0;

  if (!closed) return failRotation("cannot close", name);
  if (std::rename(file.fileName, rotated) != 0) return failRotation("cannot rename to", baseName(rotated));
  // What somebody has put in this place meanwhile is not emptied, and a link is not followed.
  FILE *const fresh = std::fopen(file.fileName, "wx");
  if (fresh == nullptr) return failRotation("cannot create a new", name);
  if (fchmod(fileno(fresh), kMode) != 0) {
    const int reason = errno;
    std::fclose(fresh);
    errno = reason;
    return failRotation("cannot set the permissions of the new", name);
  }
  protect(fresh);
  fcntl(fileno(fresh), F_SETFL, O_APPEND);
  file.fp = fresh;
  file.namesSynced = false;
  if (file.firstUnsynced == 0 || suffix < file.firstUnsynced) file.firstUnsynced = suffix;
  reportState(file, file.kind->resetLabel, "reset");
  return 0;
}

Line nextRecordLine(streamFile &file) {
  if (file.fp == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return {};
  }
  Line line = nextLine(file.lines, fileno(file.fp));
  if (line.text == nullptr) {
    wmq_errno = wmc_errno == WMCE_NO_MEM ? WMQE_NO_MEM : WMQE_EOF;
    return line;
  }
  while (*line.text == '#') {
    line = nextLine(file.lines, fileno(file.fp));
    if (line.text == nullptr) {
      wmq_errno = WMQE_EOF;
      return line;
    }
  }
  return line;
}

}  // namespace wmq
