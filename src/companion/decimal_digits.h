// Writing integers: the digits of eight places are found at once.
#ifndef WMQ_COMPANION_DECIMAL_DIGITS_H
#define WMQ_COMPANION_DECIMAL_DIGITS_H

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace wmq {

// Eight bytes that are the decimal digits of a number below 10^8 with leading zeros, the first in the lowest
// byte: halves, quarters and eighths are split off side by side.
inline uint64_t eightDecimals(uint32_t value) {
  const uint64_t fours = uint64_t{value % 10000} << 32 | value / 10000;
  const uint64_t hundreds = (fours * 5243 >> 19) & 0x0000007f0000007f;
  const uint64_t twos = (fours - 100 * hundreds) << 16 | hundreds;
  const uint64_t tens = (twos * 103 >> 10) & 0x000f000f000f000f;
  return (twos - 10 * tens) << 8 | tens;
}

// The same of four.
inline uint32_t fourDecimals(uint32_t value) {
  const uint32_t hundreds = value * 5243 >> 19;
  const uint32_t twos = (value - 100 * hundreds) << 16 | hundreds;
  const uint32_t tens = (twos * 103 >> 10) & 0x000f000f;
  return (twos - 10 * tens) << 8 | tens;
}

inline constexpr uint64_t eightZeros = 0x3030303030303030;

// Decimals without their leading zeros, written with as many bytes behind them that mean nothing.
template <class Decimals>
inline char *withoutZerosInto(char *out, Decimals decimals) {
  const int leadingBits = std::countr_zero(decimals) & ~0b111;  // of whole bytes
  const Decimals text = (decimals + static_cast<Decimals>(eightZeros)) >> leadingBits;
  std::memcpy(out, &text, sizeof text);
  return out + sizeof text - leadingBits / 8;
}

inline char *eightDigitsInto(char *out, uint32_t value) {
  const uint64_t text = eightDecimals(value) + eightZeros;
  std::memcpy(out, &text, sizeof text);
  return out + sizeof text;
}

inline constexpr uint32_t hundredMillion = 100'000'000;

// From 10^16 on.
[[gnu::cold]] inline char *longestInto(char *out, uint64_t value) {
  constexpr uint64_t tenQuadrillion = uint64_t{hundredMillion} * hundredMillion;
  out = withoutZerosInto(out, eightDecimals(static_cast<uint32_t>(value / tenQuadrillion)));
  value %= tenQuadrillion;
  out = eightDigitsInto(out, static_cast<uint32_t>(value / hundredMillion));
  return eightDigitsInto(out, static_cast<uint32_t>(value % hundredMillion));
}

// What follows a write to a file finds little of its code in the nearest cache: less code is faster than more
// cases.
inline char *unsignedInto(char *out, uint64_t value) {
  if constexpr (std::endian::native != std::endian::little) return std::to_chars(out, out + 20, value).ptr;
  if (value < 10) {
    *out = static_cast<char>('0' + value);
    return out + 1;
  }
  if (value < 10000) return withoutZerosInto(out, fourDecimals(static_cast<uint32_t>(value)));
  if (value < hundredMillion) return withoutZerosInto(out, eightDecimals(static_cast<uint32_t>(value)));
  const uint64_t high = value / hundredMillion;
  if (high >= hundredMillion) return longestInto(out, value);
  out = withoutZerosInto(out, eightDecimals(static_cast<uint32_t>(high)));
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
