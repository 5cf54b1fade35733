#include "support/failing_calls.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <utility>

namespace wmq::testing {
namespace {

struct Plan {
  std::string_view name;
  int until = 0;  // 0: nothing is planned any more
  std::function<int()> act;
  AtCall::Later later = AtCall::work;
  int lastError = 0;
  std::string happened;
};
Plan plan;

int allCallsFailed = 0;
int allWritesFailed = 0;

bool writesEnd = false;
size_t bytesTaken = 0;
int endOfWrites = 0;

long fileSystem = 0;  // 0: what it is
bool hideTimesOfCreation = false;

// Whether the call is to fail, with errno set.
bool fails(const char *name) {
  if (!plan.name.empty() && plan.name != name) return false;
  if (plan.until > 0) {
    if (--plan.until > 0) return false;
    plan.happened = name;
    plan.lastError = plan.act();
  } else if (plan.later == AtCall::work) {
    return false;
  } else if (plan.later == AtCall::actAgain) {
    plan.lastError = plan.act();
  }
  if (plan.lastError == 0) return false;
  ++allCallsFailed;
  errno = plan.lastError;
  return true;
}

}  // namespace

AtCall::AtCall(const char *name, int nth, std::function<int()> act, Later later) {
  plan = {name, nth, std::move(act), later, 0, ""};
}

AtCall::~AtCall() { plan = {}; }

bool AtCall::happened() const { return !plan.happened.empty(); }

std::string AtCall::name() const { return plan.happened; }

int callsFailed() { return allCallsFailed; }
int writesFailed() { return allWritesFailed; }

WritesEndAfter::WritesEndAfter(size_t bytes, int error) {
  bytesTaken = bytes;
  endOfWrites = error;
  writesEnd = true;
}

WritesEndAfter::~WritesEndAfter() { writesEnd = false; }

OnFileSystem::OnFileSystem(long type) { fileSystem = type; }
OnFileSystem::~OnFileSystem() { fileSystem = 0; }

WithoutTimesOfCreation::WithoutTimesOfCreation() { hideTimesOfCreation = true; }
WithoutTimesOfCreation::~WithoutTimesOfCreation() { hideTimesOfCreation = false; }

}  // namespace wmq::testing

// A call that fails has not been made, but for those that close: they never leave anything open.
#define WMQ_TESTS_WRAP(result, name, parameters, arguments, failure) \
  result __real_##name parameters;                                   \
  result __wrap_##name parameters;                                   \
  result __wrap_##name parameters { return wmq::testing::fails(#name) ? (failure) : __real_##name arguments; }
#define WMQ_TESTS_WRAP_CLOSING(name, type, failure)         \
  int __real_##name(type open);                             \
  int __wrap_##name(type open);                             \
  int __wrap_##name(type open) {                            \
    const int result = __real_##name(open);                 \
    return wmq::testing::fails(#name) ? (failure) : result; \
  }

extern "C" {
WMQ_TESTS_WRAP(FILE *, fopen, (const char *path, const char *mode), (path, mode), nullptr)
WMQ_TESTS_WRAP(int, chmod, (const char *path, mode_t mode), (path, mode), -1)
WMQ_TESTS_WRAP(int, fchmod, (int fd, mode_t mode), (fd, mode), -1)
WMQ_TESTS_WRAP(int, fcntl, (int fd, int command, long argument), (fd, command, argument), -1)
WMQ_TESTS_WRAP(int, fstat, (int fd, struct stat *status), (fd, status), -1)
WMQ_TESTS_WRAP(int, fstatat, (int fd, const char *path, struct stat *status, int flags),
               (fd, path, status, flags), -1)
WMQ_TESTS_WRAP(int, lstat, (const char *path, struct stat *status), (path, status), -1)
WMQ_TESTS_WRAP(int, rename, (const char *from, const char *to), (from, to), -1)
WMQ_TESTS_WRAP(int, unlink, (const char *path), (path), -1)
WMQ_TESTS_WRAP(DIR *, opendir, (const char *path), (path), nullptr)
WMQ_TESTS_WRAP(dirent *, readdir, (DIR * directory), (directory), nullptr)
WMQ_TESTS_WRAP(ssize_t, pread, (int fd, void *to, size_t size, off_t at), (fd, to, size, at), -1)
WMQ_TESTS_WRAP(ssize_t, read, (int fd, void *to, size_t size), (fd, to, size), -1)
WMQ_TESTS_WRAP(int, open, (const char *path, int flags, unsigned mode), (path, flags, mode), -1)
WMQ_TESTS_WRAP(int, pipe, (int *ends), (ends), -1)
WMQ_TESTS_WRAP(int, poll, (pollfd * waited, nfds_t count, int timeout), (waited, count, timeout), -1)
WMQ_TESTS_WRAP(int, inotify_init1, (int flags), (flags), -1)
WMQ_TESTS_WRAP(int, inotify_add_watch, (int fd, const char *path, uint32_t mask), (fd, path, mask), -1)
WMQ_TESTS_WRAP(int, inotify_rm_watch, (int fd, int watch), (fd, watch), -1)
WMQ_TESTS_WRAP_CLOSING(fclose, FILE *, EOF)
WMQ_TESTS_WRAP_CLOSING(closedir, DIR *, -1)

int __real_statfs(const char *path, struct statfs *status);
int __wrap_statfs(const char *path, struct statfs *status);
int __wrap_statfs(const char *path, struct statfs *status) {
  using namespace wmq::testing;
  if (fails("statfs")) return -1;
  const int result = __real_statfs(path, status);
  if (fileSystem != 0) status->f_type = fileSystem;
  return result;
}

int __real_statx(int fd, const char *path, int flags, unsigned mask, struct statx *status);
int __wrap_statx(int fd, const char *path, int flags, unsigned mask, struct statx *status);
int __wrap_statx(int fd, const char *path, int flags, unsigned mask, struct statx *status) {
  using namespace wmq::testing;
  if (fails("statx")) return -1;
  const int result = __real_statx(fd, path, flags, mask, status);
  if (hideTimesOfCreation) status->stx_mask &= ~STATX_BTIME;
  return result;
}

ssize_t __real_write(int fd, const void *from, size_t size);
ssize_t __wrap_write(int fd, const void *from, size_t size);
ssize_t __wrap_write(int fd, const void *from, size_t size) {
  using namespace wmq::testing;
  if (fails("write")) return -1;
  if (!writesEnd) return __real_write(fd, from, size);
  if (bytesTaken == 0) {
    ++allWritesFailed;
    errno = endOfWrites;
    return -1;
  }
  const ssize_t written = __real_write(fd, from, std::min(size, bytesTaken));
  if (written > 0) bytesTaken -= static_cast<size_t>(written);
  return written;
}
}
