#include "hostile/system_calls.h"

#include <dirent.h>
#include <sys/stat.h>

namespace wmq::testing {
DirectoryCalls directoryCalls;
}

using wmq::testing::directoryCalls;

// The linker turns calls of opendir into calls of __wrap_opendir, and __real_opendir into opendir.
extern "C" {
DIR *__real_opendir(const char *name);
int __real_fstatat(int directory, const char *name, struct stat *status, int flags);
int __real_lstat(const char *name, struct stat *status);
int __real_unlink(const char *name);
DIR *__wrap_opendir(const char *name);
int __wrap_fstatat(int directory, const char *name, struct stat *status, int flags);
int __wrap_lstat(const char *name, struct stat *status);
int __wrap_unlink(const char *name);
}

DIR *__wrap_opendir(const char *name) {
  ++directoryCalls.opened;
  return __real_opendir(name);
}

int __wrap_fstatat(int directory, const char *name, struct stat *status, int flags) {
  ++directoryCalls.looks;
  return __real_fstatat(directory, name, status, flags);
}

int __wrap_lstat(const char *name, struct stat *status) {
  ++directoryCalls.looks;
  return __real_lstat(name, status);
}

int __wrap_unlink(const char *name) {
  ++directoryCalls.removed;
  return __real_unlink(name);
}
