#include "input.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "unpacker.h"

namespace wmq::tool {

namespace {

constexpr size_t bufferSize = size_t{128} << 10;

}  // namespace

Input::Input(const std::string &name) : buffer(new char[bufferSize]) {
  descriptor = name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) {
    fail(Trouble::system, std::strerror(errno));
    return;
  }
  struct stat status {};
  mayWait = fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode);
}

Input::~Input() {
  if (descriptor > STDIN_FILENO) close(descriptor);
}

void Input::fail(Trouble kind, std::string text) {
  kindOfTrouble = kind;
  textOfTrouble = std::move(text);
  ended = true;
}

bool Input::wouldWait() const {
  if (!mayWait || ended || next != end) return false;
  pollfd waiting{descriptor, POLLIN, 0};
  return poll(&waiting, 1, 0) == 0;
}

size_t Input::readRaw(char *into, size_t room) {
  if (ended) return 0;
  if (mayWait && onWait) {
    pollfd waiting{descriptor, POLLIN, 0};
    if (poll(&waiting, 1, 0) == 0) onWait();
  }
  ssize_t count = 0;
  while ((count = ::read(descriptor, into, room)) < 0 && (errno == EINTR || errno == EAGAIN)) {
    // Whoever shares the pipe has set it not to block.
    pollfd ready{descriptor, POLLIN, 0};
    if (errno == EAGAIN) poll(&ready, 1, -1);
  }
  if (count < 0) {
    fail(Trouble::system, std::strerror(errno));
    return 0;
  }
  ended = count == 0;
  taken += static_cast<uint64_t>(count);
  return static_cast<size_t>(count);
}

bool Input::refill() {
  next = 0;
  end = readRaw(buffer.get(), bufferSize);
  return end > 0;
}

void Input::chooseUnpacker() {
  chosen = true;
  // A pipe may hand over the first bytes one by one. Plain text is not kept waiting for them: no line of
  // text begins like packed data.
  while (end < signatureSize) {
    bool undecided = end == 0 || std::memchr("\x1f\x28", buffer[0], 2) || (buffer[0] & 0xf0) == 0x50;
    size_t count = undecided ? readRaw(buffer.get() + end, bufferSize - end) : 0;
    if (count == 0) break;
    end += count;
  }
  unpacker = unpackerFor(buffer.get(), end);
}

size_t Input::read(char *into, size_t room) {
  if (!chosen) chooseUnpacker();
  if (!unpacker) {
    if (next == end) return readRaw(into, room);
    size_t count = std::min(room, end - next);
    std::memcpy(into, buffer.get() + next, count);
    next += count;
    return count;
  }

  while (kindOfTrouble != Trouble::damaged) {
    // Without new bytes the unpacker may still hold text that had no room before.
    bool dry = next == end && !refill();
    Unpacker::Step done = unpacker->step(buffer.get() + next, end - next, into, room);
    next += done.consumed;
    if (done.fault) {
      fail(Trouble::damaged, std::string(unpacker->name()) + " data: " + done.fault);
    } else if (dry && done.produced == 0) {
      if (kindOfTrouble == Trouble::none && !unpacker->complete())
        fail(Trouble::damaged, std::string(unpacker->name()) + " data is cut short");
      return 0;
    }
    if (done.produced > 0) return done.produced;
  }
  return 0;
}

}  // namespace wmq::tool
