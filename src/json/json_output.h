// JSON text in a buffer from malloc.
#ifndef WMQ_JSON_OUTPUT_H
#define WMQ_JSON_OUTPUT_H

// RapidJSON's stack compares beyond a null pointer before it has memory, which sanitizers would stop at.
#ifdef __clang__
#pragma clang attribute push(__attribute__((no_sanitize("pointer-overflow"))), apply_to = function)
#endif
#include <rapidjson/prettywriter.h>
#ifdef __clang__
#pragma clang attribute pop
#endif

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <type_traits>

namespace wmq {

// Grows like getline(3). Memory that runs out makes it `failed` for good: the text is cut off, never written
// beyond its buffer.
struct OutputText {
  using Ch = char;
  char *text;
  std::size_t capacity;
  std::size_t size = 0;
  bool failed = false;

  bool reserve(std::size_t more) { return more <= capacity - size || grow(more); }

  void Put(char c) {
    if (reserve(1)) text[size++] = c;
  }
  void Flush() {}

  void append(const char *from, std::size_t bytes) {
    if (bytes == 0 || !reserve(bytes)) return;
    std::memcpy(text + size, from, bytes);
    size += bytes;
  }

  // The text between double quotes, with what JSON wants escaped; a byte that is not part of well-formed
  // UTF-8 as the lone surrogate U+DC00 plus the byte.
  void quote(const char *from, std::size_t bytes);

 private:
  bool grow(std::size_t more);
};

// Where a writer keeps the levels that are open. Log structures nest a handful deep.
struct LevelMemory {
  static constexpr std::size_t levels = 64;
  alignas(std::max_align_t) char memory[1024];

  void *Realloc(void *, std::size_t, std::size_t bytes) { return bytes <= sizeof memory ? memory : nullptr; }
  static void Free(void *) {}
};

// Beyond the integers that the type holds exactly, plain notation would show digits that the value does not
// have.
template <typename T>
std::to_chars_result shortest(char *first, char *last, T value) {
  if constexpr (std::is_floating_point_v<T>) {
    constexpr T exact = static_cast<T>(std::uint64_t{1} << std::numeric_limits<T>::digits);
    if (std::fabs(value) > exact) return std::to_chars(first, last, value, std::chars_format::scientific);
  }
  return std::to_chars(first, last, value);
}

// RapidJSON's writers over that buffer, with the values that records need besides.
template <typename Writer>
struct TextWriter : LevelMemory, Writer {
  OutputText &out;

  explicit TextWriter(OutputText &where) : Writer(where, this, levels), out(where) {
    if constexpr (requires { Writer::SetIndent(' ', 2); }) Writer::SetIndent(' ', 2);
  }

  // An empty raw value gives the separators and the indentation that belong before the text.
  void text(const char *from, std::size_t bytes) {
    Writer::RawValue("", 0, rapidjson::kStringType);
    out.quote(from, bytes);
  }
  void text(const char *from) { text(from, std::strlen(from)); }

  // The shortest decimal that reads back to the same value of this very type.
  template <typename T>
  void number(T value) {
    if constexpr (std::is_floating_point_v<T>) {
      if (!std::isfinite(value)) {
        text(std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf");
        return;
      }
    }
    char digits[32];
    const std::to_chars_result result = shortest(digits, std::end(digits), value);
    Writer::RawValue(digits, static_cast<std::size_t>(result.ptr - digits), rapidjson::kNumberType);
  }
};

using LineWriter =
    TextWriter<rapidjson::Writer<OutputText, rapidjson::UTF8<>, rapidjson::UTF8<>, LevelMemory>>;
using IndentingWriter =
    TextWriter<rapidjson::PrettyWriter<OutputText, rapidjson::UTF8<>, rapidjson::UTF8<>, LevelMemory>>;

}  // namespace wmq

#endif
