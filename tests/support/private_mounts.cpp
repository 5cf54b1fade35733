#include "support/private_mounts.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

#include "support/temporary_directory.h"

namespace wmq::testing {
namespace {

constexpr int kNotAllowed = 77;

bool writeText(const char *path, const std::string &text) {
  const int fd = ::open(path, O_WRONLY);
  const bool written = fd >= 0 && ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  if (fd >= 0) ::close(fd);
  return written;
}

// Root may have mounts of its own, and everybody may who is root in a world of his own.
bool detachMounts() {
  const auto uid = geteuid();
  const auto gid = getegid();
  if (unshare(CLONE_NEWNS) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    writeText("/proc/self/setgroups", "deny");
    if (!writeText("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1") ||
        !writeText("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1"))
      return false;
  }
  return mount("none", "/", "none", MS_REC | MS_PRIVATE, "") == 0;
}

void mustMount(const std::string &directory, unsigned long flags, const std::string &options) {
  if (mount("tmpfs", directory.c_str(), "tmpfs", flags, options.c_str()) != 0)
    throw std::system_error(errno, std::generic_category(), "mount on " + directory);
}

bool canMount() {
  if (!detachMounts()) return false;
  const TemporaryDirectory probe;
  if (mount("tmpfs", probe.path().c_str(), "tmpfs", 0, "size=64k") != 0) return false;
  umount(probe.path().c_str());
  return true;
}

[[noreturn]] void runAndExit(const std::function<void()> &body) {
  int status = 0;
  if (!canMount()) {
    status = kNotAllowed;
  } else {
    try {
      body();
    } catch (const std::exception &error) {
      ADD_FAILURE() << error.what();
    }
    status = ::testing::Test::HasFailure() ? 1 : 0;
  }
  std::fflush(nullptr);
  _exit(status);
}

}  // namespace

bool withPrivateMounts(const std::function<void()> &body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) runAndExit(body);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) {
    ADD_FAILURE() << "no child process";
    return true;
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNotAllowed) return false;
  EXPECT_EQ(status, 0) << "the child process fails";
  return true;
}

void mountDisk(const std::string &directory, const std::string &options) { mustMount(directory, 0, options); }

void makeReadOnly(const std::string &directory) { mustMount(directory, MS_REMOUNT | MS_RDONLY, ""); }

}  // namespace wmq::testing
