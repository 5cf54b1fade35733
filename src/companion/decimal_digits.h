// Writing integers: the digits of eight places are found at once.
#ifndef WMQ_COMPANION_DECIMAL_DIGITS_H
#define WMQ_COMPANION_DECIMAL_DIGITS_H

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace wmq {

// Eight bytes that are the decimal digits of a number below 10^8 with leading zeros, the first in the lowest
// byte. Halves, quarters, eighths are split off side by side: with `upper` parts in the low halves of groups
// of `bits`, what `size` times them leaves of the number moves to the high halves.
inline uint64_t eightDecimals(uint32_t value) {
  const auto split = [](uint64_t groups, uint64_t upper, uint64_t size, int bits) {
    return (groups << bits) - upper * ((size << bits) - 1);
  };
  const uint64_t fours = split(value, value / 10000, 10000, 32);
  const uint64_t twos = split(fours, (fours * 5243 >> 19) & 0x0000007f0000007f, 100, 16);
  return split(twos, (twos * 103 >> 10) & 0x000f000f000f000f, 10, 8);
}

inline constexpr uint64_t eightZeros = 0x3030303030303030;

// Eight bytes, of which those behind the number mean nothing. `value` is not 0.
inline char *withoutZerosInto(char *out, uint32_t value) {
  const uint64_t decimals = eightDecimals(value);
  const auto leadingZeros = static_cast<unsigned>(__builtin_ctzll(decimals)) / 8;
  const uint64_t text = (decimals + eightZeros) >> (8 * leadingZeros);
  std::memcpy(out, &text, sizeof text);
  return out + sizeof text - leadingZeros;
}

inline char *eightDigitsInto(char *out, uint32_t value) {
  const uint64_t text = eightDecimals(value) + eightZeros;
  std::memcpy(out, &text, sizeof text);
  return out + sizeof text;
}

inline constexpr uint32_t hundredMillion = 100'000'000;

inline constexpr uint64_t tenQuadrillion = uint64_t{hundredMillion} * hundredMillion;

// From ten quadrillion on.
[[gnu::cold]] inline char *longestInto(char *out, uint64_t value) {
  out = withoutZerosInto(out, static_cast<uint32_t>(value / tenQuadrillion));
  value %= tenQuadrillion;
  out = eightDigitsInto(out, static_cast<uint32_t>(value / hundredMillion));
  return eightDigitsInto(out, static_cast<uint32_t>(value % hundredMillion));
}

inline constexpr uint64_t shortLimit = 1000;

// `value` is below the limit, as most numbers are.
inline char *shortInto(char *out, uint32_t value) {
  if (value >= 10) {
    uint32_t tens = value * 103 >> 10;
    if (value >= 100) {
      const uint32_t hundreds = value * 41 >> 12;
      *out++ = static_cast<char>('0' + hundreds);
      value -= hundreds * 100;
      tens = value * 103 >> 10;
    }
    *out++ = static_cast<char>('0' + tens);
    value -= tens * 10;
  }
  *out = static_cast<char>('0' + value);
  return out + 1;
}

inline char *unsignedInto(char *out, uint64_t value) {
  if constexpr (std::endian::native != std::endian::little) return std::to_chars(out, out + 20, value).ptr;
  if (value < shortLimit) return shortInto(out, static_cast<uint32_t>(value));
  if (value < hundredMillion) return withoutZerosInto(out, static_cast<uint32_t>(value));
  if (value >= tenQuadrillion) return longestInto(out, value);
  const uint64_t high = value / hundredMillion;
  // Times of events have two digits more than eight.
  out = high < shortLimit ? shortInto(out, static_cast<uint32_t>(high))
                          : withoutZerosInto(out, static_cast<uint32_t>(high));
  return eightDigitsInto(out, static_cast<uint32_t>(value - high * hundredMillion));
}

// `out` has room for 24 bytes, all of which may be overwritten.
inline char *integerInto(char *out, int64_t value) {
  auto magnitude = static_cast<uint64_t>(value);
  if (value < 0) [[unlikely]] {
    *out++ = '-';
    magnitude = uint64_t{0} - magnitude;
  }
  return unsignedInto(out, magnitude);
}

}  // namespace wmq

#endif
