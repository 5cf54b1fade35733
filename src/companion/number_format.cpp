// Writing numbers.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "companion/decimal_digits.h"
#include "companion/numbers.h"
#include "companion/short_decimal.h"

namespace wmq {

namespace {

constexpr uint64_t wholePowersOfTen[] = {1,      10,      100,      1000,      10000,
                                         100000, 1000000, 10000000, 100000000, 1000000000};
constexpr int maxQuickPrecision = 9;

// What single precision can hold, times a power of ten up to 10^8, double precision holds exactly, and adding
// 2^52 rounds it half to even. Null for other numbers. Writes eight bytes behind the point, of which those
// behind the number mean nothing.
char *formatSingleFixed(char *out, double magnitude, int precision) {
  if constexpr (std::endian::native != std::endian::little) return nullptr;
  constexpr uint64_t beyondSingle = (uint64_t{1} << 29) - 1;  // of the mantissa
  if (precision < 1 || precision > 8 || !(magnitude < 0x1p21)) return nullptr;
  if ((std::bit_cast<uint64_t>(magnitude) & beyondSingle) != 0) return nullptr;
  const auto power = static_cast<uint32_t>(wholePowersOfTen[precision]);
  const double rounded = magnitude * power + 0x1p52 - 0x1p52;
  auto whole = static_cast<uint32_t>(magnitude);
  auto decimals = static_cast<uint32_t>(static_cast<uint64_t>(rounded) - uint64_t{whole} * power);
  if (decimals == power) {
    decimals = 0;
    ++whole;
  }
  out = formatInt64(out, whole);
  *out = '.';
  const uint64_t text = (eightDecimals(decimals) + eightZeros) >> (64 - 8 * precision);
  std::memcpy(out + 1, &text, sizeof text);
  return out + 1 + precision;
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
[[gnu::noinline]] char *formatFixedQuickly(char *out, double magnitude, int precision) {
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

  out = formatInt64(out, static_cast<int64_t>(whole));
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

char *formatInt64(char *out, int64_t value) { return integerInto(out, value); }

char *formatInt32(char *out, int32_t value) { return std::to_chars(out, out + 11, value).ptr; }

// Numbers that are not finite, and those that no quick way is made for.
[[gnu::noinline]] static char *formatAnyFixed(char *out, double magnitude, int precision) {
  if (!std::isfinite(magnitude)) {
    std::memcpy(out, std::isnan(magnitude) ? "nan" : "inf", 3);
    return out + 3;
  }
  if (char *const end = formatFixedQuickly(out, magnitude, precision)) return end;
  return std::to_chars(out, out + 399, magnitude, std::chars_format::fixed, precision).ptr;
}

char *formatFixed(char *out, double value, int width, int precision) {
  char *const start = out;
  if (std::signbit(value)) *out++ = '-';
  const double magnitude = std::fabs(value);
  char *end = formatSingleFixed(out, magnitude, precision);
  if (end == nullptr) end = formatAnyFixed(out, magnitude, precision);

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
