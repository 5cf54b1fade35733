#include "json/json_values.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "json/json_member.h"

namespace wmq {

static const char *nameOfKind(TokenKind kind) {
  switch (kind) {
    case TokenKind::Null:
      return "null";
    case TokenKind::False:
      return "false";
    case TokenKind::True:
      return "true";
    case TokenKind::Number:
      return "a number";
    case TokenKind::String:
      return "a string";
    case TokenKind::Object:
      return "an object";
    case TokenKind::Array:
      break;
  }
  return "an array";
}

bool wrongKind(const Token &token, const char *wanted, const Place *place) {
  return fault(WMQE_BAD_FORMAT, place, "must be %s, not %s", wanted, nameOfKind(token.kind));
}

bool noMemory(const Place *place) { return fault(WMQE_NO_MEM, place, "out of memory"); }

static bool badNumber(const Token &token, const char *what, const Place *place) {
  return fault(WMQE_BAD_FORMAT, place, "%s is %s", Excerpt(token.text, token.length).text, what);
}

template <typename T>
bool readWhole(const Token &token, T &value, const Place *place) {
  if (token.kind != TokenKind::Number) return wrongKind(token, "an integer", place);
  const char *end = token.text + token.length;
  const std::from_chars_result result = std::from_chars(token.text, end, value);
  if (result.ptr != end) return badNumber(token, "not an integer", place);
  return result.ec == std::errc{} || badNumber(token, "out of range", place);
}

template bool readWhole(const Token &, std::int32_t &, const Place *);
template bool readWhole(const Token &, std::int64_t &, const Place *);

// True for a number nearer to zero than 1, told from its digits: for numbers that no type holds.
static bool isBelowOne(const Token &token) {
  const char *end = token.text + token.length;
  const char *at = token.text + (*token.text == '-' ? 1 : 0);
  const auto isDigit = [end](const char *c) { return c < end && *c >= '0' && *c <= '9'; };
  std::ptrdiff_t digits = 0;  // before the point; negative: zeros behind it
  if (*at != '0')
    for (; isDigit(at); ++at) ++digits;
  else if (at + 1 < end && at[1] == '.')
    for (at += 2; at < end && *at == '0'; ++at) --digits;

  while (at < end && *at != 'e' && *at != 'E') ++at;
  if (at == end) return digits <= 0;
  if (*++at == '+') ++at;
  std::int64_t exponent = 0;
  const std::from_chars_result result = std::from_chars(at, end, exponent);
  return result.ec == std::errc{} ? digits + exponent <= 0 : *at == '-';
}

template <typename T>
bool readReal(const Token &token, T &value, const Place *place) {
  if (token.kind == TokenKind::String) {
    constexpr T infinity = std::numeric_limits<T>::infinity();
    if (std::strcmp(token.text, "nan") == 0)
      value = std::numeric_limits<T>::quiet_NaN();
    else if (std::strcmp(token.text, "inf") == 0)
      value = infinity;
    else if (std::strcmp(token.text, "-inf") == 0)
      value = -infinity;
    else
      return fault(WMQE_BAD_FORMAT, place, "must be a number, \"nan\", \"inf\" or \"-inf\"");
    return true;
  }
  if (token.kind != TokenKind::Number) return wrongKind(token, "a number", place);
  const std::from_chars_result result = std::from_chars(token.text, token.text + token.length, value);
  if (result.ec == std::errc{}) return true;
  value = *token.text == '-' ? -T{} : T{};
  return isBelowOne(token) || badNumber(token, "out of range", place);
}

template bool readReal(const Token &, float &, const Place *);
template bool readReal(const Token &, double &, const Place *);

bool readOwnedText(const Token &token, char *at, const Place *place) {
  if (token.kind == TokenKind::Null) return true;
  if (token.kind != TokenKind::String) return wrongKind(token, "a string or null", place);
  char *copy = static_cast<char *>(std::malloc(std::size_t{token.length} + 1));
  if (copy == nullptr) return noMemory(place);
  std::memcpy(copy, token.text, std::size_t{token.length} + 1);
  store(at, copy);
  return true;
}

bool readInlineText(const Token &token, char *at, std::size_t size, const Place *place) {
  if (token.kind != TokenKind::String) return wrongKind(token, "a string", place);
  if (token.length >= size)
    return fault(WMQE_BAD_FORMAT, place, "a text of %zu bytes, at most %zu fit", std::size_t{token.length},
                 size - 1);
  std::memcpy(at, token.text, std::size_t{token.length} + 1);
  return true;
}

}  // namespace wmq
