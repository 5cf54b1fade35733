// Line layouts for people, for programs and as documentation.
#ifndef WMQ_TOOL_SCHEMA_TEXT_H
#define WMQ_TOOL_SCHEMA_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wmq::tool {

// Whether there are lines of that type, and the library knows what stands on them. Retired types have a
// structure, but no name and no line.
bool hasLineLayout(int32_t type);
std::vector<int32_t> typesWithLayout();

// A type's layout as a table, or its JSON object on one line. With `version`, only the fields that a line of
// that version carries; else all members. The type must have a layout.
std::string schemaTable(int32_t type, std::optional<float> version, bool coloured);
std::string schemaJson(int32_t type, std::optional<float> version);

// A page of documentation about one type, and the list of these pages.
std::string schemaPage(int32_t type);
std::string schemaIndex();

}  // namespace wmq::tool

#endif
