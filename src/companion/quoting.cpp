// Most strings of a line are a few bytes long and need no escape, some are long scripts: both directions look
// at many bytes at once and stop only at quotes and line ends.
#include "companion/quoting.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "companion/byte_groups.h"
#include "wmq/companion.h"

namespace wmq {

namespace {

bool needsEscape(char c) { return c == '"' || c == '\n'; }

char *escapedInto(char *out, char c) {
  *out++ = '"';
  *out++ = c == '\n' ? 'n' : c;
  return out;
}

char *escapedOneByOne(char *out, const char *text, const char *end) {
  for (; text != end; ++text) {
    if (needsEscape(*text))
      out = escapedInto(out, *text);
    else
      *out++ = *text;
  }
  return out;
}

// Whether one of sixteen bytes needs an escape.
bool needEscapes(uint64_t head, uint64_t tail) {
#ifdef __SSE2__
  return escapesIn(_mm_set_epi64x(static_cast<int64_t>(tail), static_cast<int64_t>(head))) != 0;
#else
  return holdsByte(head, '"') || holdsByte(tail, '"') || holdsByte(head, '\n') || holdsByte(tail, '\n');
#endif
}

// Copies up to 16 bytes when none of them needs an escape: two groups that may overlap.
bool copiedShort(char *out, const char *text, size_t length) {
  if (length >= 8) {
    const auto head = groupAt<uint64_t>(text);
    const auto tail = groupAt<uint64_t>(text + length - 8);
    if (needEscapes(head, tail)) return false;
    std::memcpy(out, &head, 8);
    std::memcpy(out + length - 8, &tail, 8);
    return true;
  }
  if (length >= 4) {
    const auto head = groupAt<uint32_t>(text);
    const auto tail = groupAt<uint32_t>(text + length - 4);
    if (needEscapes(head, tail)) return false;
    std::memcpy(out, &head, 4);
    std::memcpy(out + length - 4, &tail, 4);
    return true;
  }
  return false;
}

}  // namespace

char *quotedInto(char *out, const char *text, size_t length) {
  const char *const end = text + length;
  *out++ = '"';
#ifdef __SSE2__
  while (static_cast<size_t>(end - text) >= groupSize) {
    const __m128i group = loadGroup(text);
    storeGroup(out, group);
    const unsigned escapes = escapesIn(group);
    if (escapes == 0) {
      text += groupSize;
      out += groupSize;
      continue;
    }
    const int plain = __builtin_ctz(escapes);
    out = escapedInto(out + plain, text[plain]);
    text += plain + 1;
  }
#else
  for (; end - text >= 8; text += 8) {
    const auto group = groupAt<uint64_t>(text);
    if (needEscapes(group, group)) {
      out = escapedOneByOne(out, text, text + 8);
      continue;
    }
    std::memcpy(out, &group, 8);
    out += 8;
  }
#endif
  // The last group of a long text begins among bytes that are written. Where it needs no escape, these stand
  // as they do in the text.
  const auto rest = static_cast<size_t>(end - text);
  const size_t last = length < groupSize ? rest : groupSize;
  out = copiedShort(out + rest - last, end - last, last) ? out + rest : escapedOneByOne(out, text, end);
  *out++ = '"';
  return out;
}

const char *findQuoted(const char *text, const char *end, const char **content, size_t *rawLength,
                       size_t *length) {
  const char *opening = text;
  if (opening != end && *opening == ' ') ++opening;
  if (opening == end || *opening != '"') opening = findQuote(opening, end);
  if (opening == end) return nullptr;

  const char *const first = opening + 1;
  size_t escapes = 0;
  const char *quote = findQuote(first, end);
  for (; quote != end; quote = findQuote(quote + 2, end)) {
    if (end - quote < 2 || !isEscape(quote[1])) {
      *content = first;
      *rawLength = static_cast<size_t>(quote - first);
      *length = *rawLength - escapes;
      return quote + 1;
    }
    ++escapes;
  }
  return nullptr;
}

void decodeQuoted(char *out, const char *content, size_t rawLength, size_t length) {
  if (rawLength == length) {
    if (length != 0) std::memcpy(out, content, length);
    return;
  }
  const char *const end = content + rawLength;
  while (content != end) {
    const char *const quote = findQuote(content, end);
    const auto plain = static_cast<size_t>(quote - content);
    std::memcpy(out, content, plain);
    out += plain;
    if (quote == end) return;
    *out++ = quote[1] == 'n' ? '\n' : '"';
    content = quote + 2;
  }
}

}  // namespace wmq

extern "C" int addQStr(FILE *file, const char *text) {
  if (file == nullptr) return -1;
  if (text == nullptr) text = "";
  const size_t length = std::strlen(text);

  char small[512];
  const size_t room = 2 * length + 3;
  char *const buffer = room <= sizeof small ? small : static_cast<char *>(std::malloc(room));
  if (buffer == nullptr) return -1;
  buffer[0] = ' ';
  const auto size = static_cast<size_t>(wmq::quotedInto(buffer + 1, text, length) - buffer);
  const bool written = std::fwrite(buffer, 1, size, file) == size;
  if (buffer != small) std::free(buffer);
  return written ? 0 : -1;
}

extern "C" int stripQStr(const char *text, char *out) {
  if (text == nullptr || out == nullptr) return -1;
  const char *content;
  size_t rawLength;
  size_t length;
  const char *const behind = wmq::findQuoted(text, text + std::strlen(text), &content, &rawLength, &length);
  if (behind == nullptr || behind - text > INT_MAX) return -1;
  wmq::decodeQuoted(out, content, rawLength, length);
  out[length] = '\0';
  return static_cast<int>(behind - text);
}
