// JSON text as a flat array of values.
#ifndef WMQ_JSON_TOKENS_H
#define WMQ_JSON_TOKENS_H

#include <cstddef>
#include <cstdint>

namespace wmq {

enum class TokenKind : unsigned char { Null, False, True, Number, String, Object, Array };

struct Token {
  union {
    const char *text;  // Number: as it stands in the JSON; String: decoded, a NUL behind it
    std::size_t end;   // Object, Array: index of the token behind the whole
  };
  std::uint32_t length;  // Number, String: bytes; Array: elements; Object: members, a key and a value each
  TokenKind kind;
};

struct Scratch;

// Fills `scratch` with the tokens of one JSON text of any kind. False with a fault told for text that is not
// JSON, that is nested deeper than any record, whose strings hold a NUL or a lone surrogate that stands
// for no byte, and when memory runs out.
bool tokenize(const char *text, std::size_t length, Scratch &scratch);

}  // namespace wmq

#endif
