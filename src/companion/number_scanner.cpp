// Reading numbers.
//
// Nearly every real number in a stream is a short plain decimal. Up to 2^53 over a power of ten up to 10^22,
// both are exact doubles and one division rounds correctly. All other forms go the long way.
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "companion/numbers.h"

namespace wmq {

bool addUpDigits(const char *first, const char *last, uint64_t &value) {
  uint64_t sum = 0;
  for (; first != last; ++first) {
    if (__builtin_mul_overflow(sum, uint64_t{10}, &sum) ||
        __builtin_add_overflow(sum, uint64_t{digitValue(*first)}, &sum)) {
      value = UINT64_MAX;
      return false;
    }
  }
  value = sum;
  return true;
}

namespace {

constexpr double powersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr int64_t farAway = 100'000'000'000'000'000;  // beyond any exponent that a text's length can undo

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// 0 to 15, or 16 for a byte that is no hexadecimal digit.
unsigned hexDigitValue(char c) {
  if (isDigit(c)) return digitValue(c);
  const char letter = lower(c);
  return letter >= 'a' && letter <= 'f' ? static_cast<unsigned>(letter - 'a') + 10 : 16;
}

// Position behind `word` at `text`, whatever its case; null when it does not stand there.
const char *behindWord(const char *text, const char *word) {
  for (; *word != '\0'; ++text, ++word) {
    if (lower(*text) != *word) return nullptr;
  }
  return text;
}

bool isHexPrefix(const char *text) { return text[0] == '0' && lower(text[1]) == 'x'; }

bool narrow(double exact, double &value) {
  value = exact;
  return true;
}

// Rounding twice goes wrong only where the double is exactly half way between two floats.
bool narrow(double rounded, float &value) {
  constexpr uint64_t belowFloat = (uint64_t{1} << 29) - 1;
  if ((std::bit_cast<uint64_t>(rounded) & belowFloat) == uint64_t{1} << 28) return false;
  value = static_cast<float>(rounded);
  return true;
}

// A decimal without exponent that one division converts; null for all else.
template <class Real>
const char *scanPlainDecimal(const char *text, Real &value) {
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;

  uint64_t digits = 0;
  const char *const first = text;
  for (; isDigit(*text); ++text) digits = digits * 10 + digitValue(*text);
  int64_t numDigits = text - first;
  int64_t decimals = 0;
  if (*text == '.') {
    const char *const point = text++;
    for (; isDigit(*text); ++text) digits = digits * 10 + digitValue(*text);
    decimals = text - point - 1;
    numDigits += decimals;
  }

  constexpr uint64_t exactInDouble = uint64_t{1} << 53;
  if (numDigits == 0 || numDigits > 19 || digits > exactInDouble || lower(*text) == 'e' ||
      lower(*text) == 'x')
    return nullptr;
  const auto whole = static_cast<double>(digits);
  const double quotient = decimals == 0 ? whole : whole / powersOfTen[decimals];
  return narrow(negative ? -quotient : quotient, value) ? text : nullptr;
}

// The exponent behind `mark` ('e' or 'p') at `text`, which moves behind it. Without digits there is none.
int64_t takeExponent(const char *&text, char mark) {
  if (lower(*text) != mark) return 0;
  const char *digit = text + 1;
  const bool negative = *digit == '-';
  if (negative || *digit == '+') ++digit;
  if (!isDigit(*digit)) return 0;
  int64_t exponent = 0;
  for (; isDigit(*digit); ++digit) {
    if (exponent < farAway) exponent = exponent * 10 + digitValue(*digit);
  }
  text = digit;
  return negative ? -exponent : exponent;
}

// Significant digits of a decimal and the power of ten of the last of them. No double needs more than 767
// digits to be told from its neighbours; a final 1 stands for whatever not only zeros follows.
struct Decimal {
  static constexpr int maxDigits = 780;
  char digits[maxDigits + 32];
  int numDigits = 0;
  int64_t exponent = 0;
  bool more = false;

  void add(char digit, bool fraction) {
    if (numDigits == maxDigits) {
      more = more || digit != '0';
      exponent += fraction ? 0 : 1;
      return;
    }
    exponent -= fraction ? 1 : 0;
    if (numDigits > 0 || digit != '0') digits[numDigits++] = digit;
  }
};

template <class Real>
Real fromDecimal(Decimal &decimal) {
  if (decimal.numDigits == 0) return 0;
  if (decimal.more) {
    decimal.digits[decimal.numDigits++] = '1';
    --decimal.exponent;
  }
  constexpr Real infinite = std::numeric_limits<Real>::infinity();
  const int64_t firstPlace = decimal.exponent + decimal.numDigits;
  if (firstPlace > 400) return infinite;
  if (firstPlace < -400) return 0;

  char *end = decimal.digits + decimal.numDigits;
  *end++ = 'e';
  end = formatInt64(end, decimal.exponent);
  Real value = 0;
  if (std::from_chars(decimal.digits, end, value).ec == std::errc::result_out_of_range)
    return firstPlace > 0 ? infinite : 0;
  return value;
}

// mantissa * 2^exponent, rounded once, half to even; `more` says that a bit below the mantissa is set.
template <class Real>
Real fromBinary(uint64_t mantissa, int64_t exponent, bool more) {
  if (mantissa == 0) return 0;
  const int shift = std::countl_zero(mantissa);
  mantissa <<= shift;
  exponent -= shift;

  using Limits = std::numeric_limits<Real>;
  if (exponent > Limits::max_exponent) return Limits::infinity();
  constexpr int64_t smallest = Limits::min_exponent - Limits::digits;
  int64_t surplus = 64 - Limits::digits;
  if (exponent + surplus < smallest) surplus = smallest - exponent;
  if (surplus > 64) return 0;

  const uint64_t half = uint64_t{1} << (surplus - 1);
  const uint64_t rest = mantissa & (half - 1);
  const bool halfSet = (mantissa & half) != 0;
  uint64_t kept = surplus == 64 ? 0 : mantissa >> surplus;
  if (halfSet && (rest != 0 || more || (kept & 1) != 0)) ++kept;
  return std::ldexp(static_cast<Real>(kept), static_cast<int>(exponent + surplus));
}

template <class Real>
const char *readHex(const char *text, Real &value) {
  uint64_t mantissa = 0;
  int64_t exponent = 0;
  bool more = false;
  bool anyDigit = false;
  bool fraction = false;
  for (;; ++text) {
    const unsigned digit = hexDigitValue(*text);
    if (digit > 15) {
      if (*text != '.' || fraction) break;
      fraction = true;
      continue;
    }
    anyDigit = true;
    if (mantissa >> 60 == 0) {
      mantissa = mantissa << 4 | digit;
      exponent -= fraction ? 4 : 0;
    } else {
      more = more || digit != 0;
      exponent += fraction ? 0 : 4;
    }
  }
  if (!anyDigit) return nullptr;
  exponent += takeExponent(text, 'p');
  value = fromBinary<Real>(mantissa, exponent, more);
  return text;
}

template <class Real>
const char *readDecimal(const char *text, Real &value) {
  Decimal decimal;
  const char *const first = text;
  for (; isDigit(*text); ++text) decimal.add(*text, false);
  bool anyDigit = text != first;
  if (*text == '.') {
    const char *const point = text++;
    for (; isDigit(*text); ++text) decimal.add(*text, true);
    anyDigit = anyDigit || text != point + 1;
  }
  if (!anyDigit) return nullptr;
  decimal.exponent += takeExponent(text, 'e');
  value = fromDecimal<Real>(decimal);
  return text;
}

// strtod behind the white space: position behind the longest valid prefix, null without one.
template <class Real>
const char *readReal(const char *text, Real &value) {
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;

  const char *end;
  Real magnitude = 0;
  if ((end = behindWord(text, "nan")) != nullptr) {
    magnitude = std::numeric_limits<Real>::quiet_NaN();
    if (*end == '(') {
      const char *payload = end + 1;
      while (isDigit(*payload) || (lower(*payload) >= 'a' && lower(*payload) <= 'z') || *payload == '_')
        ++payload;
      if (*payload == ')') end = payload + 1;
    }
  } else if ((end = behindWord(text, "inf")) != nullptr) {
    magnitude = std::numeric_limits<Real>::infinity();
    if (const char *const whole = behindWord(end, "inity")) end = whole;
  } else {
    if (isHexPrefix(text)) end = readHex(text + 2, magnitude);
    if (end == nullptr) end = readDecimal(text, magnitude);
  }
  if (end != nullptr) value = negative ? -magnitude : magnitude;
  return end;
}

// Position behind the characters that a scan takes; null where it fails before it converts. A scan looks at
// one character at a time and cannot go back, so it takes more than the number and fails in the middle of a
// word.
const char *behindScanned(const char *text) {
  if (*text == '-' || *text == '+') ++text;
  if (lower(*text) == 'n') return behindWord(text, "nan");
  if (lower(*text) == 'i') {
    const char *const end = behindWord(text, "inf");
    return end != nullptr && lower(*end) == 'i' ? behindWord(end, "inity") : end;
  }

  const bool hex = isHexPrefix(text);
  const char exponentMark = hex ? 'p' : 'e';
  text += hex ? 2 : 0;
  const char *const first = text;
  bool anyDigit = false;
  bool point = false;
  bool exponent = false;
  for (;; ++text) {
    if (isDigit(*text) || (hex && !exponent && hexDigitValue(*text) < 16))
      anyDigit = true;
    else if (exponent && lower(text[-1]) == exponentMark && (*text == '-' || *text == '+'))
      continue;
    else if (anyDigit && !exponent && lower(*text) == exponentMark)
      exponent = point = true;
    else if (*text == '.' && !point)
      point = true;
    else
      break;
  }
  return text == first ? nullptr : text;
}

template <class Real>
const char *scanReal(const char *text, Real &value) {
  text = skipSpace(text);
  if (const char *const end = scanPlainDecimal(text, value)) return end;
  const char *const end = behindScanned(text);
  return end != nullptr && readReal(text, value) != nullptr ? end : nullptr;
}

}  // namespace

// Up to nine digits, a point and four more, as "%.4f" writes most numbers, right here and with a blank behind
// them; null for all else.
static const char *scanFourDecimals(const char *text, float &value) {
  const char *const first = text;
  uint64_t digits = 0;
  for (unsigned digit; (digit = digitValue(*text)) <= 9; ++text) digits = digits * 10 + digit;
  if (*text != '.' || text == first || text - first > 9) return nullptr;
  for (int place = 1; place <= 4; ++place) {
    const unsigned digit = digitValue(text[place]);
    if (digit > 9) return nullptr;
    digits = digits * 10 + digit;
  }
  if (text[5] != ' ') return nullptr;
  return narrow(static_cast<double>(digits) / 1e4, value) ? text + 5 : nullptr;
}

const char *scanFloat(const char *text, float &value) {
  if (const char *const end = scanFourDecimals(text + (*text == ' '), value)) return end;
  return scanReal(text, value);
}

const char *scanAnyDouble(const char *text, double &value) { return scanReal(text, value); }

double parseReal(const char *text, const char **end) {
  double value = 0;
  const char *const number = skipSpace(text);
  const char *behind = scanPlainDecimal(number, value);
  if (behind == nullptr) behind = readReal(number, value);
  if (end != nullptr) *end = behind == nullptr ? text : behind;
  return value;
}

}  // namespace wmq
