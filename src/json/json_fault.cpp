#include "json/json_fault.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "json/json_text.h"
#include "wmq/json.h"

namespace wmq {

static thread_local char faultText[512];

static std::size_t addPath(std::size_t length, const Place *place) {
  if (place == nullptr) return length;
  length = addPath(length, place->up);
  if (length >= sizeof faultText) return length;

  char *end = faultText + length;
  const std::size_t room = sizeof faultText - length;
  int added = 0;
  if (place->name == nullptr) {
    added = std::snprintf(end, room, "[%zu]", place->index);
  } else {
    const Excerpt name(place->name, std::strlen(place->name));
    added = std::snprintf(end, room, "%s%s", length == 0 ? "" : ".", name.text);
  }
  return length + static_cast<std::size_t>(added);
}

bool fault(int number, const Place *place, const char *format, ...) {
  std::size_t length = addPath(0, place);
  if (length > 0 && length < sizeof faultText)
    length += static_cast<std::size_t>(std::snprintf(faultText + length, sizeof faultText - length, ": "));
  if (length < sizeof faultText) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(faultText + length, sizeof faultText - length, format, arguments);
    va_end(arguments);
  }
  wmq_errno = number;
  return false;
}

Excerpt::Excerpt(const char *from, std::size_t length) {
  static const char more[] = "...";
  const char *end = from + length;
  std::size_t used = 0;
  while (from < end) {
    const std::size_t bytes = static_cast<unsigned char>(*from) < 0x80 ? 1 : sequenceLength(from, end);
    if (used + std::max<std::size_t>(bytes, 1) + sizeof more > sizeof text) {
      std::memcpy(text + used, more, sizeof more);
      return;
    }
    // The characters U+0080 to U+009F steer terminals like those below U+0020.
    const bool control = bytes == 1 ? static_cast<unsigned char>(*from) < 0x20 || *from == 0x7F
                                    : bytes == 2 && std::memcmp(from, "\xC2\xA0", 2) < 0;
    if (bytes == 0 || control) {
      text[used++] = '?';
      from += bytes == 0 ? 1 : bytes;
    } else {
      std::memcpy(text + used, from, bytes);
      used += bytes;
      from += bytes;
    }
  }
  text[used] = '\0';
}

}  // namespace wmq

const char *wmq_jsonerror(void) { return wmq::faultText; }
