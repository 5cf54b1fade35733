#include "companion/log.h"

#include <syslog.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "wmq/companion.h"

namespace wmq {

void (*logSink)(int priority, const char *message) = nullptr;

namespace {

// Every "%M" becomes the "%m" of the C library; "%%M" is a percent sign and a letter.
void translateFormat(char *format) {
  for (; (format = std::strchr(format, '%')) != nullptr && format[1] != '\0'; format += 2) {
    if (format[1] == 'M') format[1] = 'm';
  }
}

void emit(int priority, const char *message) {
  if (logSink != nullptr)
    logSink(priority, message);
  else
    syslog(priority, "%s", message);
}

// Room from the stack where that is enough, else from malloc; where that fails the message is cut.
struct Room {
  char small[1024];
  char *text = small;
  size_t size = sizeof small;

  explicit Room(size_t needed) {
    if (needed <= sizeof small) return;
    if (auto *const big = static_cast<char *>(std::malloc(needed))) {
      text = big;
      size = needed;
    }
  }
  ~Room() {
    if (text != small) std::free(text);
  }
  Room(const Room &) = delete;
  Room &operator=(const Room &) = delete;
};

}  // namespace

}  // namespace wmq

extern "C" void wmc_syslog(int priority, const char *format, ...) {
  if (format == nullptr) return;
  const int savedErrno = errno;

  const size_t formatSize = std::strlen(format) + 1;
  const wmq::Room translated(formatSize);
  const size_t kept = formatSize < translated.size ? formatSize : translated.size;
  std::memcpy(translated.text, format, kept);
  translated.text[kept - 1] = '\0';
  wmq::translateFormat(translated.text);

  va_list arguments;
  va_start(arguments, format);
  va_list measured;
  va_copy(measured, arguments);
  errno = savedErrno;
  const int length = std::vsnprintf(nullptr, 0, translated.text, measured);
  va_end(measured);
  if (length >= 0) {
    const wmq::Room message(static_cast<size_t>(length) + 1);
    errno = savedErrno;
    std::vsnprintf(message.text, message.size, translated.text, arguments);
    wmq::emit(priority, message.text);
  }
  va_end(arguments);
  errno = savedErrno;
}
