// Text as people and programs can take it.
#ifndef WMQ_TOOL_TEXT_H
#define WMQ_TOOL_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace wmq::tool {

// Length in bytes of the well-formed UTF-8 character at the start of `bytes`, 0 when there is none.
size_t characterLength(std::string_view bytes);

// `bytes` as valid UTF-8 without control characters: such bytes become "\xNN". Event lines come from
// anywhere, and a terminal obeys escape sequences.
std::string printable(std::string_view bytes);

// At most 60 bytes of `bytes`, whole characters of them, and "..." where there is more: a part of
// an input that a message quotes.
std::string excerpt(std::string_view bytes);

// Number of characters of a UTF-8 text.
size_t characterCount(std::string_view text);

// `bytes` as a JSON string with its quotes; a byte that is not part of well-formed UTF-8 becomes the lone
// surrogate \udc80 to \udcff, as in the JSON form of records.
std::string jsonString(std::string_view bytes);

// 1234567 as "1,234,567".
std::string grouped(uint64_t number);

// Seconds as hours, minutes, seconds: "0:00:31", "577:41:48".
std::string clockText(int64_t seconds);

// "1 file", "2 files".
std::string counted(uint64_t number, std::string_view thing);

}  // namespace wmq::tool

#endif
