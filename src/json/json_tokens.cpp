#include "json/json_tokens.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include "json/json_fault.h"
#include "json/json_scratch.h"
#include "json/json_text.h"
#include "wmq/event_types.h"

namespace wmq {

// Far deeper than any log structure, and little for the stack: the reader recurses once per level.
static constexpr std::size_t maxDepth = 32;

namespace {

// The text, decoded in place: what has been decoded is never longer than what it was decoded from.
struct TextStream {
  using Ch = char;
  char *begin;
  char *end;
  char *from;
  char *to;
  const char *refusal;

  char Peek() const { return *from; }
  char Take() { return *from++; }
  std::size_t Tell() const { return static_cast<std::size_t>(from - begin); }
  void Put(char c) { *to++ = c; }
  void Flush() {}
  char *PutBegin() { return to = from; }
  std::size_t PutEnd(char *head) { return static_cast<std::size_t>(to - head); }

  void move(std::size_t bytes) {
    if (to != from) std::memmove(to, from, bytes);
    to += bytes;
    from += bytes;
  }
};

// UTF-8 in which a lone surrogate from U+DC80 to U+DCFF stands for a byte that is not part of well-formed
// UTF-8.
struct RecordText {
  using Ch = char;
  enum { supportUnicode = 1 };

  static void Encode(TextStream &out, unsigned codepoint) {
    const auto put = [&out](unsigned byte) { out.Put(static_cast<char>(byte)); };
    const auto putRest = [&](int shift) { put(0x80 | ((codepoint >> shift) & 0x3F)); };
    if (codepoint == 0) {
      out.refusal = "a string holds \\u0000";
    } else if (codepoint < 0x80) {
      put(codepoint);
    } else if (codepoint < 0x800) {
      put(0xC0 | (codepoint >> 6));
      putRest(0);
    } else if (codepoint >= 0xDC80 && codepoint <= 0xDCFF) {
      put(codepoint & 0xFF);
    } else if (codepoint >= 0xD800 && codepoint <= 0xDFFF) {
      out.refusal = "a string holds a lone surrogate that stands for no byte";
    } else if (codepoint < 0x10000) {
      put(0xE0 | (codepoint >> 12));
      putRest(6);
      putRest(0);
    } else {
      put(0xF0 | (codepoint >> 18));
      putRest(12);
      putRest(6);
      putRest(0);
    }
  }

  // Compiled for readers that do not work in place, which this one is not: nothing is ever transcoded.
  static bool Decode(TextStream &, unsigned *) { return false; }

  // Takes as much as stands for itself, not only the one character that the reader asks for.
  static bool Validate(TextStream &in, TextStream &) {
    const char *at = in.from;
    const char *const end = in.end;
    for (;;) {
      at = skipPlain(at, end);
      if (static_cast<unsigned char>(*at) < 0x80) break;
      const std::size_t bytes = sequenceLength(at, end);
      if (bytes == 0) return false;
      at += bytes;
    }
    in.move(static_cast<std::size_t>(at - in.from));
    return true;
  }
};

class TokenSink : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, TokenSink> {
 public:
  TokenSink(Growing<Token> &where, TextStream &text) : tokens(where), in(text) {}

  bool noMemory = false;

  bool Null() { return add(TokenKind::Null); }
  bool Bool(bool value) { return add(value ? TokenKind::True : TokenKind::False); }
  // The text that the reader hands over is only right for streams that it copies.
  bool RawNumber(const char *, rapidjson::SizeType length, bool) {
    return add(TokenKind::Number, in.from - length, length);
  }
  bool String(const char *text, rapidjson::SizeType length, bool) {
    return in.refusal == nullptr && add(TokenKind::String, text, length);
  }
  bool Key(const char *text, rapidjson::SizeType length, bool copy) { return String(text, length, copy); }
  bool StartObject() { return open(TokenKind::Object); }
  bool EndObject(rapidjson::SizeType members) { return close(members); }
  bool StartArray() { return open(TokenKind::Array); }
  bool EndArray(rapidjson::SizeType elements) { return close(elements); }

 private:
  bool add(TokenKind kind, const char *text = nullptr, std::uint32_t length = 0) {
    Token token;
    token.text = text;
    token.length = length;
    token.kind = kind;
    if (tokens.push(token)) return true;
    noMemory = true;
    return false;
  }

  bool open(TokenKind kind) {
    if (depth == maxDepth) {
      in.refusal = "nested too deeply";
      return false;
    }
    opened[depth++] = tokens.size;
    return add(kind);
  }

  bool close(std::uint32_t length) {
    Token &token = tokens.items[opened[--depth]];
    token.end = tokens.size;
    token.length = length;
    return true;
  }

  Growing<Token> &tokens;
  TextStream &in;
  std::size_t opened[maxDepth];
  std::size_t depth = 0;
};

}  // namespace

// The reader's positions and lengths have 32 bits.
static constexpr std::size_t maxText = UINT32_MAX - 1;

bool tokenize(const char *text, std::size_t length, Scratch &scratch) {
  if (length > maxText)
    return fault(WMQE_BAD_FORMAT, nullptr, "the text has %zu bytes, at most %zu can be read", length,
                 maxText);
  if (!scratch.text.reserve(length + 1)) return fault(WMQE_NO_MEM, nullptr, "out of memory");
  char *begin = scratch.text.items;
  std::memcpy(begin, text, length);
  begin[length] = '\0';

  TextStream in{begin, begin + length, begin, begin, nullptr};
  TokenSink sink(scratch.tokens, in);
  constexpr unsigned flags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag |
                             rapidjson::kParseValidateEncodingFlag;
  rapidjson::GenericReader<RecordText, rapidjson::UTF8<>> reader;
  const rapidjson::ParseResult result = reader.Parse<flags>(in, sink);

  if (sink.noMemory) return fault(WMQE_NO_MEM, nullptr, "out of memory");
  if (in.refusal != nullptr)
    return fault(WMQE_BAD_FORMAT, nullptr, "byte %zu: %s", result.Offset(), in.refusal);
  if (result.IsError())
    return fault(WMQE_BAD_FORMAT, nullptr, "byte %zu: %s", result.Offset(),
                 rapidjson::GetParseError_En(result.Code()));
  // To the reader a NUL is the end of the text.
  if (in.from != in.end) return fault(WMQE_BAD_FORMAT, nullptr, "byte %zu: a NUL", in.Tell());
  return true;
}

}  // namespace wmq
