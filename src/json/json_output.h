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
#include "json/json_member.h"
#include "json/json_text.h"
#include "json/writing_plan.h"

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

template <std::size_t Size>
char *literalInto(char *out, const char (&literal)[Size]) {
  std::memcpy(out, literal, Size - 1);
  return out + Size - 1;
}

// The end of the shortest decimal: from 100,000 on, notation with an exponent may be shorter. Beyond the
// integers that the type holds exactly, plain notation would show digits that the value does not have. What
// is no number is shown as a text.
template <typename Real>
char *shortestInto(char *first, Real value) {
  constexpr std::size_t longest = 32;
  if (std::fabs(value) < 100'000) {
    if (char *const end = formatShort(first, value)) return end;
  }
  if (std::isnan(value)) return literalInto(first, "\"nan\"");
  if (std::isinf(value)) return value > 0 ? literalInto(first, "\"inf\"") : literalInto(first, "\"-inf\"");
  constexpr Real exact = static_cast<Real>(std::uint64_t{1} << std::numeric_limits<Real>::digits);
  char *const last = first + longest;
  if (std::fabs(value) > exact) return std::to_chars(first, last, value, std::chars_format::scientific).ptr;
  return std::to_chars(first, last, value).ptr;
}

// Room for any number, and for a text that is not long.
inline constexpr std::size_t scalarRoom = 32;

// A number or a text as JSON: its end. Null for a text that takes more than one look.
inline char *scalarInto(char *out, unsigned kind, const char *value, std::size_t size) {
  switch (kind) {
    case WMQ_KIND_INT32:
      return integerInto(out, load<std::int32_t>(value));
    case WMQ_KIND_STRING: {
      const char *const text = load<const char *>(value);
      if (text == nullptr) return literalInto(out, "null");
      return *text == '\0' ? literalInto(out, "\"\"") : shortPlainInto(out, text);
    }
    case WMQ_KIND_INT64:
      return integerInto(out, load<std::int64_t>(value));
    case WMQ_KIND_FLOAT:
      return shortestInto(out, load<float>(value));
    case WMQ_KIND_DOUBLE:
      return shortestInto(out, load<double>(value));
    default:
      return shortPlainInto(out, value, size);
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

  // The name of a member, in quotes and with its colon; WritingPlan::nameRoom bytes from its beginning on can
  // be read.
  void name(std::string_view quoted) {
    if (char *const at = out.room(roomFor(quoted)))
      out.size += static_cast<std::size_t>(nameInto(at, quoted) - at);
  }

  // Where a value goes: room for a scalar and what stands behind it; null without memory.
  char *place() { return out.room(scalarRoom + 1); }

  // Members that take one look, as nearly all do, from `member` on, as far as there is room; returns the
  // first of another kind. The place stays in a register.
  const PlannedMember *writeSimple(const WritingPlan &plan, const PlannedMember *member, const char *base) {
    const PlannedMember *const behind = plan.members.data() + plan.members.size();
    char *at = out.text + out.size;
    const char *const limit = out.text + out.capacity;
    for (; member != behind && member->isScalar; ++member) {
      const std::string_view name = plan.nameOf(*member);
      if (limit - at < static_cast<std::ptrdiff_t>(roomFor(name) + scalarRoom + 1)) break;
      char *const last = scalarInto(nameInto(at, name), member->kind, base + member->offset, member->size);
      if (last == nullptr) break;
      at = end(last);
    }
    out.size = static_cast<std::size_t>(at - out.text);
    return member;
  }

  static char *end(char *at) {
    *at = ',';
    return at + 1;
  }
  void finish() {  // behind the outermost value: ends the text
    if (!out.failed) out.text[out.size - 1] = '\0';
  }

 private:
  static std::size_t roomFor(std::string_view quoted) {
    return std::max(quoted.size(), WritingPlan::nameRoom);
  }
  // Nearly all are no longer than what is copied without a question.
  static char *nameInto(char *at, std::string_view quoted) {
    std::memcpy(at, quoted.data(), WritingPlan::nameRoom);
    if (quoted.size() > WritingPlan::nameRoom) std::memcpy(at, quoted.data(), quoted.size());
    return at + quoted.size();
  }

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

  void name(std::string_view quoted) {
    separate();
    out.append(quoted.data(), quoted.size() - 1);
  }

  char *place() {
    separate();
    return out.room(scalarRoom);
  }
  static const PlannedMember *writeSimple(const WritingPlan &, const PlannedMember *member, const char *) {
    return member;
  }

  static char *end(char *at) { return at; }
  void finish() { out.Put('\0'); }

 private:
  // An empty raw value gives the separators and the indentation that belong before the text.
  void separate() { RawValue("", 0, rapidjson::kStringType); }
};

// With the values that records have. `place` and `end` say what their place asks for.
template <typename Punctuation>
struct TextWriter : Punctuation {
  using Punctuation::out;
  using Punctuation::Punctuation;

  void text(const char *from, std::size_t bytes) {
    if (char *const at = Punctuation::place()) text(at, from, bytes);
  }
  void text(const char *from) { text(from, std::strlen(from)); }

  void null() {
    if (char *const at = Punctuation::place()) ended(literalInto(at, "null"));
  }

  // A member, or an element of an array, that is a number or a text.
  void scalar(unsigned kind, const char *value, std::size_t size) {
    char *const at = Punctuation::place();
    if (at == nullptr) return;
    if (char *const end = scalarInto(at, kind, value, size)) return ended(end);
    if (kind == WMQ_KIND_CHARS) return text(at, value, strnlen(value, size));
    const char *const from = load<const char *>(value);
    text(at, from, std::strlen(from));
  }

 private:
  void text(const char *at, const char *from, std::size_t bytes) {
    out.size = static_cast<std::size_t>(at - out.text);
    out.quote(from, bytes);
    if (char *const end = out.room(1)) ended(end);
  }
  void ended(char *at) { out.size = static_cast<std::size_t>(Punctuation::end(at) - out.text); }
};

using LineWriter = TextWriter<OnOneLine>;
using IndentingWriter = TextWriter<Indented>;

}  // namespace wmq

#endif
