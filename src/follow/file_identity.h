// Which file is which: what the system knows of a file, and checksums of what it holds.
#ifndef WMQ_FOLLOW_FILE_IDENTITY_H
#define WMQ_FOLLOW_FILE_IDENTITY_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace wmq {

struct FileIdentity {
  uint64_t device = 0;
  uint64_t inode = 0;
  uint32_t birth = 0;  // stands for the time of creation; 0 where the file system keeps none
};

inline bool hasBirth(const FileIdentity &identity) { return identity.birth != 0; }

// The same file, as far as the system can say: without a time of creation an inode may have been used again.
inline bool operator==(const FileIdentity &a, const FileIdentity &b) {
  return a.device == b.device && a.inode == b.inode && (a.birth == b.birth || a.birth == 0 || b.birth == 0);
}

// The same file without a doubt.
inline bool isCertain(const FileIdentity &a, const FileIdentity &b) {
  return a == b && hasBirth(a) && hasBirth(b);
}

struct FileStatus {
  FileIdentity identity;
  bool settled = false;  // no file that is created from now on can have this identity
  int64_t size = 0;
  int64_t modified = 0;  // nanoseconds since 1970
  bool regular = false;
  bool directory = false;
};

// False with errno for what has no lines to follow.
bool isUsable(const FileStatus &status);

// All return false with errno.
bool statusOf(int fd, FileStatus &status);
bool statusOf(const char *path, FileStatus &status);
bool statusOfEntry(int directory, const char *name, FileStatus &status);  // a link is not followed

// Bytes read, which are fewer than wanted only at the end of the file; negative on failure, with errno.
ssize_t readFully(int fd, char *to, size_t length, int64_t offset);

uint32_t checksum(const char *bytes, size_t length);

// The checksum of some bytes of a file. None is a checksum, too.
struct Extract {
  int64_t length = 0;
  uint32_t sum = 0;
};

// Longest run of bytes that is summed up.
inline constexpr int64_t kMostSummed = 4096;

// All that follow return false with errno when the file cannot be read.

// The first line, as far as it has come: at most kMostSummed bytes. `whole`: it will never be more.
bool extractFirstLine(int fd, Extract &extract, bool &whole);

// `same`: the first line is whole, and it is the one that was summed up.
bool compareFirstLine(int fd, const Extract &first, bool &same);

// `begins`: the first line is one that ends a stream.
bool beginsWithEnd(int fd, bool &begins);

// `same`: the file begins with, or holds before `end`, what was summed up.
bool compareFirst(int fd, const Extract &first, bool &same);
bool compareBefore(int fd, int64_t end, const Extract &last, bool &same);

}  // namespace wmq

#endif
