#include "output.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace wmq::tool {

namespace {

constexpr size_t bufferSize = size_t{64} << 10;

}  // namespace

bool Output::write(std::string_view bytes) {
  if (bytes.size() >= bufferSize) return flush() && handOver(bytes);
  waiting += bytes;
  return size() < bufferSize ? error == 0 : flush();
}

bool Output::flush() {
  handOver(std::string_view(waiting).substr(written));
  waiting.clear();
  written = 0;
  return error == 0;
}

bool Output::handOver(std::string_view rest) {
  while (error == 0 && !rest.empty()) {
    ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (count >= 0) {
      rest.remove_prefix(static_cast<size_t>(count));
    } else if (errno == EAGAIN) {
      // Whoever shares the pipe has set it not to block.
      pollfd ready{STDOUT_FILENO, POLLOUT, 0};
      poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      error = errno;
    }
  }
  return error == 0;
}

bool Output::flush(size_t most) {
  const ssize_t count = ::write(STDOUT_FILENO, waiting.data() + written, std::min(most, size()));
  if (count >= 0)
    written += static_cast<size_t>(count);
  else if (errno != EAGAIN && errno != EINTR)
    error = errno;
  if (size() == 0) {
    waiting.clear();
    written = 0;
  }
  return error == 0;
}

void Output::finish(Faults &faults) {
  flush();
  // Some file systems tell only on closing that there was no room.
  if (error == 0 && close(STDOUT_FILENO) != 0) error = errno;
  if (error != 0) faults.failure("standard output", std::strerror(error));
}

}  // namespace wmq::tool
