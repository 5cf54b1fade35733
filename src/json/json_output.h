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

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>

#include "companion/byte_groups.h"
#include "companion/decimal_digits.h"
#include "companion/short_decimal.h"

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

  // Where `bytes` more may be written, which count once `size` says so; null without memory for them.
  char *room(std::size_t bytes) { return reserve(bytes) ? text + size : nullptr; }

  void Put(char c) {
    if (reserve(1)) text[size++] = c;
  }
  void Flush() {}

  void append(const char *from, std::size_t bytes) {
    if (bytes == 0 || !reserve(bytes)) return;
    std::memcpy(text + size, from, bytes);
    size += bytes;
  }

  // What was written last, `bytes` of it, again and again: what has been repeated is copied along.
  void repeat(std::size_t bytes, std::size_t times) {
    char *const at = room(bytes * times);
    if (at == nullptr) return;
    const char *const first = at - bytes;
    const char *const end = at + bytes * times;
    for (char *next = at; next != end;) {
      const auto copied = std::min(next - first, end - next);
      copyBytes(next, first, static_cast<std::size_t>(copied));
      next += copied;
    }
    size += bytes * times;
  }

  // The text between double quotes, with what JSON wants escaped; a byte that is not part of well-formed
  // UTF-8 as the lone surrogate U+DC00 plus the byte.
  void quote(const char *from, std::size_t bytes);

 private:
  bool grow(std::size_t more);
  void quoteWithEscapes(const char *from, std::size_t bytes);
};

// Where a writer keeps the levels that are open. Log structures nest a handful deep.
struct LevelMemory {
  static constexpr std::size_t levels = 64;
  alignas(std::max_align_t) char memory[1024];

  void *Realloc(void *, std::size_t, std::size_t bytes) { return bytes <= sizeof memory ? memory : nullptr; }
  static void Free(void *) {}
};

// The end of the shortest decimal: from 100,000 on, notation with an exponent may be shorter. Beyond the
// integers that the type holds exactly, plain notation would show digits that the value does not have.
template <typename T>
char *shortest(char *first, char *last, T value) {
  if constexpr (std::is_floating_point_v<T>) {
    if (std::fabs(value) < 100'000) {
      if (char *const end = formatShort(first, value)) return end;
    }
    constexpr T exact = static_cast<T>(std::uint64_t{1} << std::numeric_limits<T>::digits);
    if (std::fabs(value) > exact) return std::to_chars(first, last, value, std::chars_format::scientific).ptr;
    return std::to_chars(first, last, value).ptr;
  } else {
    static_assert(sizeof(T) < 8 || std::is_signed_v<T>);
    return integerInto(first, value);
  }
}

// Objects and arrays on one line. Each value has a comma behind it, which a closing bracket replaces: what is
// written does not depend on what was written before.
struct OnOneLine {
  static constexpr bool equalsLookAlike = true;  // equal values, wherever they stand
  OutputText &out;

  explicit OnOneLine(OutputText &where) : out(where) {}

  void StartObject() { out.Put('{'); }
  void EndObject() { close('}'); }
  void StartArray() { out.Put('['); }
  void EndArray() { close(']'); }

  // Of a member of a structure: nothing in it needs to be escaped.
  void name(std::string_view member) {
    char *const at = out.room(member.size() + 3);
    if (at == nullptr) return;
    at[0] = '"';
    copyBytes(at + 1, member.data(), member.size());
    std::memcpy(at + 1 + member.size(), "\":", 2);
    out.size += member.size() + 3;
  }

  static void begin() {}
  static char *end(char *at) {
    *at = ',';
    return at + 1;
  }
  void finish() {  // behind the outermost value: ends the text
    if (!out.failed) out.text[out.size - 1] = '\0';
  }

 private:
  void close(char bracket) {
    char *const at = out.room(2);
    if (at == nullptr) return;
    char *const last = at[-1] == ',' ? at - 1 : at;
    last[0] = bracket;
    last[1] = ',';
    out.size += static_cast<std::size_t>(last + 2 - at);
  }
};

// And over several lines, as RapidJSON indents them.
struct Indented : LevelMemory,
                  rapidjson::PrettyWriter<OutputText, rapidjson::UTF8<>, rapidjson::UTF8<>, LevelMemory> {
  static constexpr bool equalsLookAlike = false;
  OutputText &out;

  explicit Indented(OutputText &where) : PrettyWriter(where, this, levels), out(where) { SetIndent(' ', 2); }

  void name(std::string_view member) {
    begin();
    out.quote(member.data(), member.size());
  }

  // An empty raw value gives the separators and the indentation that belong before the text.
  void begin() { RawValue("", 0, rapidjson::kStringType); }
  static char *end(char *at) { return at; }
  void finish() { out.Put('\0'); }
};

// With the values that records have. `begin` and `end` say what their place asks for.
template <typename Punctuation>
struct TextWriter : Punctuation {
  using Punctuation::out;
  using Punctuation::Punctuation;

  void text(const char *from, std::size_t bytes) {
    Punctuation::begin();
    out.quote(from, bytes);
    ended();
  }
  void text(const char *from) {
    if (*from == '\0')  // half of all
      plain("\"\"");
    else
      text(from, std::strlen(from));
  }

  void null() { plain("null"); }

  // The shortest decimal that reads back to the same value of this very type.
  template <typename T>
  void number(T value) {
    if constexpr (std::is_floating_point_v<T>) {
      if (!std::isfinite(value)) {
        text(std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf");
        return;
      }
    }
    Punctuation::begin();
    constexpr std::size_t longest = 32;
    if (char *const digits = out.room(longest + 1))
      out.size +=
          static_cast<std::size_t>(Punctuation::end(shortest(digits, digits + longest, value)) - digits);
  }

 private:
  template <std::size_t Size>
  void plain(const char (&value)[Size]) {
    Punctuation::begin();
    char *const at = out.room(Size);
    if (at == nullptr) return;
    std::memcpy(at, value, Size - 1);
    out.size += static_cast<std::size_t>(Punctuation::end(at + Size - 1) - at);
  }

  void ended() {
    if (char *const at = out.room(1)) out.size += static_cast<std::size_t>(Punctuation::end(at) - at);
  }
};

using LineWriter = TextWriter<OnOneLine>;
using IndentingWriter = TextWriter<Indented>;

}  // namespace wmq

#endif
