#include "state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "wmq/follow.h"

namespace wmq::tool {

namespace {

bool writeAll(int fd, const std::string &text) {
  size_t written = 0;
  while (written < text.size()) {
    ssize_t count = write(fd, text.data() + written, text.size() - written);
    if (count >= 0)
      written += static_cast<size_t>(count);
    else if (errno != EINTR)
      return false;
  }
  return true;
}

}  // namespace

std::optional<std::string> StateFile::load(int &error) {
  error = 0;
  // Nobody waits for the other end of a pipe, nor deaf to signals.
  int fd = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) {
    if (errno != ENOENT) error = errno;
    return std::nullopt;
  }
  struct stat status {};
  char text[WMQ_POSITION_SIZE + 1];
  ssize_t length = -1;
  if (fstat(fd, &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)))
    length = read(fd, text, sizeof text);
  else
    errno = EINVAL;
  if (length < 0) error = errno;
  close(fd);
  if (length < 0) return std::nullopt;
  std::string position(text, static_cast<size_t>(length));
  if (!position.empty() && position.back() == '\n') position.pop_back();
  saved = position;
  return position;
}

bool StateFile::save(const std::string &position) {
  if (position == saved) return true;
  std::string fresh = name + ".new";
  int fd = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0644);
  if (fd < 0) return false;
  bool done = writeAll(fd, position + "\n") && fsync(fd) == 0;
  int reason = errno;
  if (close(fd) != 0 && done) {
    done = false;
    reason = errno;
  }
  errno = reason;
  if (!done || std::rename(fresh.c_str(), name.c_str()) != 0) return false;
  saved = position;
  return true;
}

}  // namespace wmq::tool
