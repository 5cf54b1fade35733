#include "text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace wmq::tool {

namespace {

unsigned byteAt(std::string_view bytes, size_t index) { return static_cast<unsigned char>(bytes[index]); }

bool isControl(unsigned byte) { return byte < 0x20 || byte == 0x7f; }

void appendEscape(std::string &out, const char *format, unsigned value) {
  std::array<char, 16> escape{};
  std::snprintf(escape.data(), escape.size(), format, value);
  out += escape.data();
}

}  // namespace

size_t characterLength(std::string_view bytes) {
  if (bytes.empty()) return 0;
  unsigned first = byteAt(bytes, 0);
  if (first < 0x80) return 1;

  // The second byte's range excludes overlong forms, surrogates and what lies beyond U+10FFFF.
  size_t length = 0;
  unsigned lowest = 0x80;
  unsigned highest = 0xbf;
  if (first >= 0xc2 && first <= 0xdf) {
    length = 2;
  } else if (first >= 0xe0 && first <= 0xef) {
    length = 3;
    if (first == 0xe0) lowest = 0xa0;
    if (first == 0xed) highest = 0x9f;
  } else if (first >= 0xf0 && first <= 0xf4) {
    length = 4;
    if (first == 0xf0) lowest = 0x90;
    if (first == 0xf4) highest = 0x8f;
  }
  if (length == 0 || bytes.size() < length) return 0;
  if (byteAt(bytes, 1) < lowest || byteAt(bytes, 1) > highest) return 0;
  for (size_t i = 2; i < length; ++i)
    if (byteAt(bytes, i) < 0x80 || byteAt(bytes, i) > 0xbf) return 0;
  return length;
}

std::string printable(std::string_view bytes) {
  std::string out;
  while (!bytes.empty()) {
    size_t length = characterLength(bytes);
    // U+0080 to U+009F are control characters as well.
    bool control = length == 1 ? isControl(byteAt(bytes, 0))
                               : length == 2 && byteAt(bytes, 0) == 0xc2 && byteAt(bytes, 1) < 0xa0;
    if (length == 0) length = 1;
    if (control || characterLength(bytes) == 0) {
      for (size_t i = 0; i < length; ++i) appendEscape(out, "\\x%02x", byteAt(bytes, i));
    } else {
      out += bytes.substr(0, length);
    }
    bytes.remove_prefix(length);
  }
  return out;
}

std::string excerpt(std::string_view bytes) {
  constexpr size_t most = 60;
  if (bytes.size() <= most) return std::string(bytes);
  size_t end = 0;
  for (size_t next = 0; next <= most; next += std::max<size_t>(characterLength(bytes.substr(next)), 1))
    end = next;
  return std::string(bytes.substr(0, end)) + "...";
}

size_t characterCount(std::string_view text) {
  size_t count = 0;
  for (char c : text) count += (static_cast<unsigned char>(c) & 0xc0) != 0x80;
  return count;
}

std::string jsonString(std::string_view bytes) {
  std::string out = "\"";
  while (!bytes.empty()) {
    size_t length = characterLength(bytes);
    unsigned first = byteAt(bytes, 0);
    if (length == 0) {
      appendEscape(out, "\\u%04x", 0xdc00 + first);
      length = 1;
    } else if (first == '"' || first == '\\') {
      out += '\\';
      out += bytes[0];
    } else if (isControl(first)) {
      appendEscape(out, "\\u%04x", first);
    } else {
      out += bytes.substr(0, length);
    }
    bytes.remove_prefix(length);
  }
  out += '"';
  return out;
}

std::string grouped(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t end = text.size(); end > 3; end -= 3) text.insert(end - 3, ",");
  return text;
}

std::string clockText(int64_t seconds) {
  std::array<char, 40> text{};
  const char *sign = seconds < 0 ? "-" : "";
  uint64_t magnitude = seconds < 0 ? 0 - static_cast<uint64_t>(seconds) : static_cast<uint64_t>(seconds);
  std::snprintf(text.data(), text.size(), "%s%llu:%02u:%02u", sign,
                static_cast<unsigned long long>(magnitude / 3600), static_cast<unsigned>(magnitude / 60 % 60),
                static_cast<unsigned>(magnitude % 60));
  return text.data();
}

std::string counted(uint64_t number, std::string_view thing) {
  std::string text = grouped(number) + " ";
  text += thing;
  if (number != 1) text += 's';
  return text;
}

}  // namespace wmq::tool
