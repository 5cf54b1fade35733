// Writing numbers.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "companion/numbers.h"
#include "companion/short_decimal.h"

namespace wmq {

namespace {

constexpr uint64_t wholePowersOfTen[] = {1,      10,      100,      1000,      10000,
                                         100000, 1000000, 10000000, 100000000, 1000000000};
constexpr int maxQuickPrecision = 9;

// Eight bytes that are the decimal digits of a number below 10^8 with leading zeros, the first in the lowest
// byte: halves, quarters and eighths are split off side by side.
inline uint64_t eightDecimals(uint32_t value) {
  const uint64_t fours = uint64_t{value % 10000} << 32 | value / 10000;
  const uint64_t hundreds = (fours * 5243 >> 19) & 0x0000007f0000007f;
  const uint64_t twos = (fours - 100 * hundreds) << 16 | hundreds;
  const uint64_t tens = (twos * 103 >> 10) & 0x000f000f000f000f;
  return (twos - 10 * tens) << 8 | tens;
}

// Writes eight bytes or two, of which those behind the number mean nothing.
inline char *formatBelow100Million(char *out, uint32_t value) {
  constexpr uint64_t zeros = 0x3030303030303030;
  if (value < 100) {
    const uint32_t tens = value * 103 >> 10;
    *out = static_cast<char>('0' + tens);
    out += tens != 0;
    *out = static_cast<char>('0' + value - 10 * tens);
    return out + 1;
  }
  const uint64_t decimals = eightDecimals(value);
  const int leadingBits = std::countr_zero(decimals) & 0b111000;  // of whole bytes
  const uint64_t text = (decimals + zeros) >> leadingBits;
  std::memcpy(out, &text, sizeof text);
  return out + 8 - leadingBits / 8;
}

char *formatUint64(char *out, uint64_t value) {
  constexpr uint32_t hundredMillion = 100'000'000;
  if constexpr (std::endian::native != std::endian::little) return std::to_chars(out, out + 20, value).ptr;
  if (value < hundredMillion) return formatBelow100Million(out, static_cast<uint32_t>(value));
  const uint64_t high = value / hundredMillion;
  out = high < hundredMillion ? formatBelow100Million(out, static_cast<uint32_t>(high))
                              : formatUint64(out, high);
  const uint64_t text = eightDecimals(static_cast<uint32_t>(value % hundredMillion)) + 0x3030303030303030;
  std::memcpy(out, &text, sizeof text);
  return out + sizeof text;
}

char *formatDigits(char *out, uint64_t value, int numDigits) {
  for (int place = numDigits - 1; place >= 0; --place) {
    out[place] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  return out + numDigits;
}

#ifdef __SIZEOF_INT128__
// The fraction times a power of ten up to 10^9 stays exact in 128 bits, so that rounding half to even is a
// matter of looking at the bits that fall off. Null when `magnitude` is beyond this.
char *formatFixedQuickly(char *out, double magnitude, int precision) {
  __extension__ typedef unsigned __int128 Wide;
  if (!(magnitude < 0x1p63) || precision > maxQuickPrecision) return nullptr;

  constexpr int mantissaBits = 52;
  constexpr int exponentOfUnits = 1075;  // biased exponent of a double whose mantissa counts units
  const auto bits = std::bit_cast<uint64_t>(magnitude);
  const auto exponent = static_cast<int>(bits >> mantissaBits);
  const uint64_t leadingBit = uint64_t{exponent != 0} << mantissaBits;
  const uint64_t mantissa = (bits & ((uint64_t{1} << mantissaBits) - 1)) | leadingBit;
  const int fractionBits = exponentOfUnits - std::max(exponent, 1);

  uint64_t whole = 0;
  uint64_t decimals = 0;
  if (fractionBits <= 0) {
    whole = mantissa << -fractionBits;
  } else if (fractionBits < 127) {
    const uint64_t power = wholePowersOfTen[precision];
    whole = fractionBits < 64 ? mantissa >> fractionBits : 0;
    const Wide fraction = fractionBits < 64 ? mantissa & ((uint64_t{1} << fractionBits) - 1) : mantissa;
    const Wide scaled = fraction * power;
    const Wide half = Wide{1} << (fractionBits - 1);
    const Wide rest = scaled & ((half << 1) - 1);
    decimals = static_cast<uint64_t>(scaled >> fractionBits);
    const uint64_t lastDigit = precision == 0 ? whole : decimals;
    if (rest > half || (rest == half && (lastDigit & 1) != 0)) ++decimals;
    if (decimals == power) {
      decimals = 0;
      ++whole;
    }
  }

  out = formatUint64(out, whole);
  if (precision == 0) return out;
  *out++ = '.';
  return formatDigits(out, decimals, precision);
}
#else
char *formatFixedQuickly(char *, double, int) { return nullptr; }
#endif

template <class Real>
char *formatShortestReal(char *out, Real value) {
  if (std::isnan(value)) {
    std::memcpy(out, "nan", 3);
    return out + 3;
  }
  if (char *const end = formatShort(out, value)) return end;
  constexpr Real largest = 0x1p53;
  if (std::fabs(value) <= largest && value == std::trunc(value) && (value != 0 || !std::signbit(value)))
    return formatInt64(out, static_cast<int64_t>(value));
  return std::to_chars(out, out + 32, value).ptr;
}

}  // namespace

char *formatInt64(char *out, int64_t value) {
  if (value >= 0) return formatUint64(out, static_cast<uint64_t>(value));
  *out++ = '-';
  return formatUint64(out, uint64_t{0} - static_cast<uint64_t>(value));
}

char *formatInt32(char *out, int32_t value) { return std::to_chars(out, out + 11, value).ptr; }

char *formatFixed(char *out, double value, int width, int precision) {
  char *const start = out;
  if (std::signbit(value)) *out++ = '-';
  const double magnitude = std::fabs(value);
  char *end;
  if (!std::isfinite(value)) {
    std::memcpy(out, std::isnan(value) ? "nan" : "inf", 3);
    end = out + 3;
  } else if ((end = formatFixedQuickly(out, magnitude, precision)) == nullptr) {
    end = std::to_chars(out, start + 400, magnitude, std::chars_format::fixed, precision).ptr;
  }

  const auto length = end - start;
  if (length >= width) return end;
  const auto padding = static_cast<size_t>(width - length);
  std::memmove(start + padding, start, static_cast<size_t>(length));
  std::memset(start, ' ', padding);
  return end + padding;
}

char *formatShortest(char *out, double value) { return formatShortestReal(out, value); }

char *formatShortest(char *out, float value) { return formatShortestReal(out, value); }

}  // namespace wmq
