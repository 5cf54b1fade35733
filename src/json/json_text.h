// The bytes of JSON strings: what stands for itself between the quotes, and what is well-formed UTF-8.
#ifndef WMQ_JSON_TEXT_H
#define WMQ_JSON_TEXT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "companion/byte_groups.h"
#include "companion/quoting.h"

namespace wmq {

inline bool isPlain(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

// Flags the lowest of eight bytes that is not plain, if there is one. Above it a borrow can raise a false
// flag.
inline std::uint64_t flagNotPlain(std::uint64_t bytes) {
  constexpr std::uint64_t ones = 0x0101010101010101;
  constexpr std::uint64_t tops = 0x80 * ones;
  const std::uint64_t quote = bytes ^ ('"' * ones);
  const std::uint64_t backslash = bytes ^ ('\\' * ones);
  return (((bytes - 0x20 * ones) | (quote - ones) | (backslash - ones)) & ~bytes & tops) | (bytes & tops);
}

// Copies the text, as long as it is plain all through; false when it is not.
inline bool copyPlain(char *out, const char *text, std::size_t bytes) {
  const auto copy = [&]<typename T>(T group, std::size_t at) {
    std::memcpy(out + at, &group, sizeof group);
    return group;
  };
  if (bytes >= 8) {
    // The last group overlaps the one before it.
    std::size_t at = 0;
    for (; bytes - at > 8; at += 8)
      if (flagNotPlain(copy(groupAt<std::uint64_t>(text + at), at)) != 0) return false;
    return flagNotPlain(copy(groupAt<std::uint64_t>(text + bytes - 8), bytes - 8)) == 0;
  }
  if (bytes >= 4) {
    const std::uint64_t first = copy(groupAt<std::uint32_t>(text), 0);
    const std::uint64_t last = copy(groupAt<std::uint32_t>(text + bytes - 4), bytes - 4);
    return flagNotPlain(last << 32 | first) == 0;
  }
  bool plain = true;
  for (std::size_t at = 0; at < bytes; ++at) plain &= isPlain(out[at] = text[at]);
  return plain;
}

#ifdef __SSE2__
// Writes a text in double quotes that ends in this group and is plain: groupSize + 2 bytes, of which those
// behind the end that is returned mean nothing. Null for any other.
inline char *plainGroupInto(char *out, __m128i group) {
  const __m128i ascii = _mm_cmpgt_epi8(group, _mm_set1_epi8(0x1f));  // a byte beyond is negative
  const __m128i escaped =
      _mm_or_si128(_mm_cmpeq_epi8(group, _mm_set1_epi8('"')), _mm_cmpeq_epi8(group, _mm_set1_epi8('\\')));
  const auto plain = static_cast<unsigned>(_mm_movemask_epi8(_mm_andnot_si128(escaped, ascii)));
  const auto length = static_cast<unsigned>(std::countr_one(plain));
  if ((endsIn(group) >> length & 1) == 0) return nullptr;
  out[0] = '"';
  storeGroup(out + 1, group);
  out[length + 1] = '"';
  return out + length + 2;
}
#endif

// The same for a text wherever it lies; null also where a group of it cannot be looked at.
inline char *shortPlainInto(char *out, const char *text) {
#ifdef WMQ_LOADS_GROUPS
  if (reinterpret_cast<std::uintptr_t>(text) % groupSize == 0) return plainGroupInto(out, loadGroup(text));
#endif
  (void)out, (void)text;
  return nullptr;
}

// And for one in an array of so many bytes.
inline char *shortPlainInto(char *out, const char *array, std::size_t size) {
#ifdef __SSE2__
  if (size >= groupSize) return plainGroupInto(out, loadGroup(array));
#endif
  (void)out, (void)array, (void)size;
  return nullptr;
}

// The first byte in [at, end) that is not plain: a control character, a double quote, a backslash, or a byte
// beyond ASCII; `end` when there is none.
inline const char *skipPlain(const char *at, const char *end) {
  if constexpr (std::endian::native == std::endian::little) {
    while (end - at >= 8) {
      const std::uint64_t flags = flagNotPlain(groupAt<std::uint64_t>(at));
      if (flags != 0) return at + std::countr_zero(flags) / 8;
      at += 8;
    }
  }
  while (at < end && isPlain(*at)) ++at;
  return at;
}

// Length of the well-formed UTF-8 sequence of two to four bytes that begins at `at`; 0 when there is none.
inline std::size_t sequenceLength(const char *at, const char *end) {
  const auto byte = [at](std::size_t i) { return static_cast<unsigned char>(at[i]); };
  const auto follows = [&](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
    return end - at > static_cast<std::ptrdiff_t>(i) && byte(i) >= low && byte(i) <= high;
  };
  const unsigned lead = byte(0);
  if (lead >= 0xC2 && lead <= 0xDF) return follows(1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF)
    return follows(1, lead == 0xE0 ? 0xA0 : 0x80, lead == 0xED ? 0x9F : 0xBF) && follows(2) ? 3 : 0;
  if (lead >= 0xF0 && lead <= 0xF4)
    return follows(1, lead == 0xF0 ? 0x90 : 0x80, lead == 0xF4 ? 0x8F : 0xBF) && follows(2) && follows(3) ? 4
                                                                                                          : 0;
  return 0;
}

}  // namespace wmq

#endif
