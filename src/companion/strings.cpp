// Small string helpers.
#include <cstdlib>
#include <cstring>

#include "companion/numbers.h"
#include "wmq/companion.h"

extern "C" char *putstr_(const char *text) {
  if (text == nullptr) return nullptr;
  const size_t size = std::strlen(text) + 1;
  void *const copy = std::malloc(size);
  return copy == nullptr ? nullptr : static_cast<char *>(std::memcpy(copy, text, size));
}

extern "C" void subNewLine_(char *text) {
  if (text == nullptr) return;
  while ((text = std::strchr(text, '\n')) != nullptr) *text++ = ' ';
}

extern "C" bool islongint_(const char *text) {
  if (text == nullptr) return false;
  if (*text == '-' || *text == '+') ++text;
  if (!wmq::isDigit(*text)) return false;
  while (wmq::isDigit(*text)) ++text;
  return *text == '\0';
}

extern "C" char *zvt_strrchr(const char *text, int wanted) {
  return text == nullptr ? nullptr : const_cast<char *>(std::strrchr(text, wanted));
}

extern "C" double my_strtodf(const char *text) { return text == nullptr ? 0 : wmq::parseReal(text, nullptr); }
