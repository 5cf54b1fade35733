// Numbers from text and back, byte for byte as printf, scanf and strtod in the C locale do it, without their
// cost and without looking at the locale of the process.
//
// `text` is NUL-terminated. A scan skips leading white space (space \t \n \v \f \r) and returns the position
// behind the number, or null, with `value` untouched, when nothing converts. A format function returns the
// end of what it wrote and writes no NUL.
#ifndef WMQ_COMPANION_NUMBERS_H
#define WMQ_COMPANION_NUMBERS_H

#include <bit>
#include <cstdint>

#include "companion/byte_groups.h"

namespace wmq {

inline bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// 0 to 9, or something greater for a byte that is no digit.
inline unsigned digitValue(char c) { return static_cast<unsigned char>(c) - unsigned{'0'}; }

inline bool isDigit(char c) { return digitValue(c) <= 9; }

// The value of eight bytes that are all digits, computed at once; false when one of them is none.
inline bool eightDigits(const char *text, uint32_t &value) {
  if constexpr (std::endian::native != std::endian::little) return false;
  uint64_t group = groupAt<uint64_t>(text);
  constexpr uint64_t zeros = 0x3030303030303030;
  constexpr uint64_t highHalves = 0xf0f0f0f0f0f0f0f0;
  // A digit keeps its high half when 6 is added to it; the bytes behind the digits do not.
  if ((group & highHalves) != zeros || ((group + 0x0606060606060606) & highHalves) != zeros) return false;
  group -= zeros;
  group = group * 10 + (group >> 8);  // pairs of digits, in every other byte
  constexpr uint64_t pairs = 0x000000ff000000ff;
  constexpr uint64_t hundredAndMillion = 0x000f424000000064;
  constexpr uint64_t oneAndTenThousand = 0x0000271000000001;
  value = static_cast<uint32_t>(
      ((group & pairs) * hundredAndMillion + (group >> 16 & pairs) * oneAndTenThousand) >> 32);
  return true;
}

inline const char *skipSpace(const char *text) {
  while (isSpace(*text)) ++text;
  return text;
}

// Value of the digits from `first` to `last`; false, with the largest value, when it needs more than 64 bits.
bool addUpDigits(const char *first, const char *last, uint64_t &value);

// An optional sign and digits. Null without a digit; `fits` is false when the digits need more than 64 bits.
inline const char *scanMagnitude(const char *text, uint64_t &magnitude, bool &negative, bool &fits) {
  text = skipSpace(text);
  negative = *text == '-';
  if (negative || *text == '+') ++text;
  unsigned digit = digitValue(*text);
  if (digit > 9) return nullptr;

  const char *const first = text;
  uint64_t sum = 0;
  do {
    sum = sum * 10 + digit;
    digit = digitValue(*++text);
  } while (digit <= 9);
  magnitude = sum;

  // 18 digits always fit; nearly all numbers end here, so that the careful addition stays out of line.
  fits = text - first <= 18 || addUpDigits(first, text, magnitude);
  return text;
}

// strtoll in base 10: saturating.
inline const char *scanInt64(const char *text, int64_t &value) {
  uint64_t magnitude;
  bool negative;
  bool fits;
  const char *const end = scanMagnitude(text, magnitude, negative, fits);
  if (end == nullptr) return nullptr;
  constexpr uint64_t largest = INT64_MAX;
  if (negative)
    value = magnitude > largest ? INT64_MIN : -static_cast<int64_t>(magnitude);
  else
    value = magnitude > largest ? INT64_MAX : static_cast<int64_t>(magnitude);
  return end;
}

// strtoull in base 10: saturating, a minus sign negates.
inline const char *scanUint64(const char *text, uint64_t &value) {
  uint64_t magnitude;
  bool negative;
  bool fits;
  const char *const end = scanMagnitude(text, magnitude, negative, fits);
  if (end != nullptr) value = negative && fits ? uint64_t{0} - magnitude : magnitude;
  return end;
}

// "%f" and "%lf" of glibc's scanf, the characters that it takes without a use for them included: all of "1e"
// is taken for 1, "0x" alone is an error.
const char *scanFloat(const char *text, float &value);
const char *scanAnyDouble(const char *text, double &value);
inline const char *scanDouble(const char *text, double &value) {
  const char *const digit = text + (*text == ' ');
  if (!isDigit(*digit) || digit[1] != ' ') return scanAnyDouble(text, value);
  value = digitValue(*digit);  // most of the numbers of a usage are 0
  return digit + 1;
}

// strtod: value of the longest valid prefix, 0 without one. `*end` is the position behind it, or `text`
// itself; `end` may be null. The payload of a "nan(...)" is passed over.
double parseReal(const char *text, const char **end);

// `out` has room for 24 bytes, all of which may be overwritten.
char *formatInt64(char *out, int64_t value);
// Writes nothing behind the number.
char *formatInt32(char *out, int32_t value);

// printf("%*.*f"), with 0 decimal places or more. `out` has room for 400 bytes: enough for any value up to 80
// of them and any width up to 400.
char *formatFixed(char *out, double value, int width, int precision);

// The shortest decimal that reads back to the same number; whole numbers up to 2^53 without exponent or
// point; "nan", "inf" and "-inf". `out` has room for 32 bytes.
char *formatShortest(char *out, double value);
char *formatShortest(char *out, float value);

}  // namespace wmq

#endif
