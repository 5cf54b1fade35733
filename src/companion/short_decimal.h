// Writing most numbers: those with three places behind the point at most, and few digits in all.
#ifndef WMQ_COMPANION_SHORT_DECIMAL_H
#define WMQ_COMPANION_SHORT_DECIMAL_H

#include <cmath>
#include <cstdint>
#include <limits>

#include "companion/decimal_digits.h"

namespace wmq {

// The shortest decimal that reads back to the same number, without exponent, if it is such a one: its end, or
// null with nothing written. `out` has room for 32 bytes.
//
// Of the decimals with so few digits no two read back to the same number: one that does is the shortest.
template <class Real>
char *formatShort(char *out, Real value) {
  static_assert(std::numeric_limits<Real>::digits10 == 15 || std::numeric_limits<Real>::digits10 == 6);
  constexpr Real tooMany = std::numeric_limits<Real>::digits10 == 15 ? Real(1e15) : Real(1e6);
  const bool negative = std::signbit(value);
  if (value == 0 && !negative) {  // most of all
    *out = '0';
    return out + 1;
  }
  const Real magnitude = std::fabs(value);
  if (!(magnitude * 1000 < tooMany)) return nullptr;
  const auto thousandths = static_cast<uint64_t>(magnitude * 1000 + Real(0.5));
  if (static_cast<Real>(thousandths) / 1000 != magnitude) return nullptr;

  if (negative) *out++ = '-';
  out = unsignedInto(out, thousandths / 1000);
  const auto places = static_cast<unsigned>(thousandths % 1000);
  if (places == 0) return out;
  *out++ = '.';
  *out++ = static_cast<char>('0' + places / 100);
  if (places % 100 == 0) return out;
  *out++ = static_cast<char>('0' + places / 10 % 10);
  if (places % 10 == 0) return out;
  *out++ = static_cast<char>('0' + places % 10);
  return out;
}

}  // namespace wmq

#endif
