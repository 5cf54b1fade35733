#include "json/json_output.h"

#include <cstdint>

#include "json/json_text.h"

namespace wmq {

bool OutputText::grow(std::size_t more) {
  if (failed || more > SIZE_MAX / 2 - size) {
    failed = true;
    return false;
  }
  std::size_t larger = capacity < 1024 ? 1024 : capacity + capacity / 2;
  if (larger < size + more) larger = size + more;
  void *moved = std::realloc(text, larger);
  if (moved == nullptr) {
    failed = true;
    return false;
  }
  text = static_cast<char *>(moved);
  capacity = larger;
  return true;
}

static std::size_t escape(char *out, unsigned char byte) {
  static const char digits[] = "0123456789abcdef";
  static const char controls[] = "btn\0fr";  // from backspace, 8, on
  out[0] = '\\';
  if (byte == '"' || byte == '\\') {
    out[1] = static_cast<char>(byte);
    return 2;
  }
  if (byte >= 8 && byte < 8 + sizeof controls - 1 && controls[byte - 8] != '\0') {
    out[1] = controls[byte - 8];
    return 2;
  }
  std::memcpy(out + 1, byte < 0x80 ? "u00" : "udc", 3);
  out[4] = digits[byte >> 4];
  out[5] = digits[byte & 15];
  return 6;
}

void OutputText::quote(const char *from, std::size_t bytes) {
  char *const at = room(bytes + 2);
  if (at == nullptr) return;
  if (!copyPlain(at + 1, from, bytes)) return quoteWithEscapes(from, bytes);
  at[0] = at[bytes + 1] = '"';
  size += bytes + 2;
}

void OutputText::quoteWithEscapes(const char *from, std::size_t bytes) {
  const char *end = from + bytes;
  Put('"');
  while (from < end) {
    const char *at = skipPlain(from, end);
    std::size_t sequence = 0;
    while (at < end && static_cast<unsigned char>(*at) >= 0x80 && (sequence = sequenceLength(at, end)) != 0)
      at = skipPlain(at + sequence, end);
    append(from, static_cast<std::size_t>(at - from));
    if (at < end) {
      char escaped[6];
      append(escaped, escape(escaped, static_cast<unsigned char>(*at++)));
    }
    from = at;
  }
  Put('"');
}

}  // namespace wmq
