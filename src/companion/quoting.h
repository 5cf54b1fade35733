// Quoted strings on a line: a double quote inside is doubled, a line end is a double quote and the letter n,
// and a double quote before anything else ends the string. All other bytes stand as they are.
#ifndef WMQ_COMPANION_QUOTING_H
#define WMQ_COMPANION_QUOTING_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "companion/byte_groups.h"
#include "companion/checked_memory.h"

namespace wmq {

// Whether a double quote before this character does not end a string.
inline bool isEscape(char c) { return c == '"' || c == 'n'; }

constexpr size_t groupSize = 16;
constexpr unsigned groupMask = (1U << groupSize) - 1;

#ifdef __SSE2__
inline __m128i loadGroup(const char *text) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
}

inline void storeGroup(char *out, __m128i group) {
  _mm_storeu_si128(reinterpret_cast<__m128i *>(out), group);
}

// The first bytes of a group, and zeros behind them.
inline __m128i firstOf(__m128i group, unsigned count) {
  alignas(2 * groupSize) static constexpr unsigned char mask[2 * groupSize] = {
      255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
  return _mm_and_si128(group, loadGroup(reinterpret_cast<const char *>(mask) + groupSize - count));
}

inline unsigned quotesIn(__m128i group) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(group, _mm_set1_epi8('"'))));
}

// The bytes that need an escape.
inline unsigned escapesIn(__m128i group) {
  const __m128i quotes = _mm_cmpeq_epi8(group, _mm_set1_epi8('"'));
  const __m128i lineEnds = _mm_cmpeq_epi8(group, _mm_set1_epi8('\n'));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(quotes, lineEnds)));
}

inline unsigned endsIn(__m128i group) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(group, _mm_setzero_si128())));
}

// A group at a multiple of its size may be loaded where only its beginning belongs to a text: it lies in one
// page, and what stands behind the text is not looked at. Sanitizers cannot know.
#ifndef WMQ_CHECKED_MEMORY
#define WMQ_LOADS_GROUPS
#endif
#endif

// The first double quote from `text` on; `end` when there is none. Nothing from `end` on is looked at.
inline const char *findQuote(const char *text, const char *end) {
#ifdef __SSE2__
  for (; static_cast<size_t>(end - text) >= groupSize; text += groupSize) {
    if (const unsigned quotes = quotesIn(loadGroup(text)); quotes != 0) return text + __builtin_ctz(quotes);
  }
  while (text != end && *text != '"') ++text;
  return text;
#else
  if (text == end) return end;
  const void *const quote = std::memchr(text, '"', static_cast<size_t>(end - text));
  return quote == nullptr ? end : static_cast<const char *>(quote);
#endif
}

// Writes `text` in double quotes, without a blank before it and without a NUL, and returns the end. `out` has
// room for 2 * length + 2 bytes; all of them may be overwritten.
char *quotedInto(char *out, const char *text, size_t length);

// The same for a text as most are, which ends in the group in which it begins and needs no escape: `out` has
// room for groupSize + 2 bytes. Null for any other, of which nothing is written that means anything.
inline char *shortQuotedInto(char *out, const char *text) {
#ifdef WMQ_LOADS_GROUPS
  if (reinterpret_cast<uintptr_t>(text) % groupSize != 0) return nullptr;
  const __m128i group = loadGroup(text);
  const unsigned ends = endsIn(group);
  if (ends == 0) return nullptr;
  const auto length = static_cast<unsigned>(__builtin_ctz(ends));
  const unsigned escapes = escapesIn(group) << (groupSize - length);  // those behind the text leave the mask
  if ((escapes & groupMask) != 0) return nullptr;
  *out++ = '"';
  storeGroup(out, group);
  out[length] = '"';
  return out + length + 1;
#else
  (void)out, (void)text;
  return nullptr;
#endif
}

// Whether two texts are the same.
inline bool areSame(const char *left, const char *right) {
#ifdef WMQ_LOADS_GROUPS
  if ((reinterpret_cast<uintptr_t>(left) | reinterpret_cast<uintptr_t>(right)) % groupSize == 0) {
    const __m128i group = loadGroup(left);
    if (const unsigned ends = endsIn(group); ends != 0) {
      const auto equal = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(group, loadGroup(right))));
      const unsigned unequal = ~equal << (groupSize - 1 - static_cast<unsigned>(__builtin_ctz(ends)));
      return (unequal & groupMask) == 0;
    }
  }
#endif
  return std::strcmp(left, right) == 0;
}

// Finds the first double quote from `text` on and the end of the string that it opens. Returns the position
// behind the closing quote, or null when one of the two is missing. `*content` is the first byte inside,
// `*rawLength` the number of bytes up to the closing quote, `*length` what they decode to. Nothing from `end`
// on is looked at.
const char *findQuoted(const char *text, const char *end, const char **content, size_t *rawLength,
                       size_t *length);

// Decodes what findQuoted found into exactly `length` bytes, without a NUL.
void decodeQuoted(char *out, const char *content, size_t rawLength, size_t length);

// A string as findQuoted finds it.
struct Quoted {
  const char *content;
  size_t length;      // decoded
  const char *after;  // null: there is none
  bool escapes;

  // Decodes into `length` bytes and a NUL.
  void decodeInto(char *out) const {
    if (escapes) {
      decodeQuoted(out, content, static_cast<size_t>(after - 1 - content), length);
    } else {
      copyBytes(out, content, length);
    }
    out[length] = '\0';
  }
};

// The same at once for strings as nearly all are: right here, and without an escape. `*end` can be read, and
// may be anything: where only the beginning of a line is looked at, it is some byte of it.
inline Quoted quotedAt(const char *text, const char *end) {
  if (text < end && *text == '"') {
    const char *const first = text + 1;
    const char *const quote = findQuote(first, end);
    if (quote != end && !isEscape(quote[1]))
      return {first, static_cast<size_t>(quote - first), quote + 1, false};
  }
  const char *content = nullptr;
  size_t rawLength = 0;
  size_t length = 0;
  const char *const after = findQuoted(text, end, &content, &rawLength, &length);
  return {content, length, after, length != rawLength};
}

// A string as nearly all are: right here, without an escape, and not the last of its line. It is found and
// decoded group by group.
struct PlainQuoted {
  const char *after;  // null: it is another one
#ifdef __SSE2__
  const char *content;
  size_t wholeGroups;
  __m128i last;  // zeros behind the string

  size_t length() const { return static_cast<size_t>(after - 1 - content); }
  size_t room() const { return (wholeGroups + 1) * groupSize; }  // bytes that decodeInto writes
  void decodeInto(char *out) const {
    for (size_t i = 0; i < wholeGroups; ++i)
      storeGroup(out + i * groupSize, loadGroup(content + i * groupSize));
    storeGroup(out + wholeGroups * groupSize, last);
  }
#else
  size_t wholeGroups;
  size_t length() const { return 0; }
  size_t room() const { return groupSize; }
  void decodeInto(char *) const {}
#endif
};

inline PlainQuoted plainQuotedAt(const char *text, const char *end) {
#ifdef __SSE2__
  if (*text == '"') {
    const char *const content = text + 1;
    size_t wholeGroups = 0;
    for (const char *at = content; end - at > static_cast<ptrdiff_t>(groupSize);
         at += groupSize, ++wholeGroups) {
      const __m128i group = loadGroup(at);
      const unsigned quotes = quotesIn(group);
      if (quotes == 0) continue;
      const auto inLast = static_cast<unsigned>(__builtin_ctz(quotes));
      const char *const after = at + inLast + 1;
      if (isEscape(*after)) break;
      return {after, content, wholeGroups, firstOf(group, inLast)};
    }
  }
#else
  (void)text;
  (void)end;
#endif
  return PlainQuoted{};
}

}  // namespace wmq

#endif
