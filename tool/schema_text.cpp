#include "schema_text.h"

#include <array>
#include <charconv>
#include <string_view>
#include <utility>
#include <vector>

#include "json_printer.h"
#include "table.h"
#include "wmq/wmq.h"

namespace wmq::tool {

namespace {

bool isOnLine(const wmqField &field) { return (field.flags & WMQ_FIELD_OFF_LINE) == 0; }

bool isShown(const wmqField &field, std::optional<float> version) {
  return !version || (isOnLine(field) && wmq_gateopen(&field, *version));
}

// "9.11", "3.0".
std::string versionText(float version) {
  std::array<char, 64> digits{};
  auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), version);
  std::string text(digits.data(), error == std::errc() ? end : digits.data());
  if (text.find('.') == std::string::npos) text += ".0";
  return text;
}

std::string gateText(const wmqField &field) {
  switch (field.gate) {
    case WMQ_GATE_ALWAYS:
      return "";
    case WMQ_GATE_AT_LEAST:
      return "from " + versionText(field.gateVersion);
    case WMQ_GATE_ABOVE:
      return "above " + versionText(field.gateVersion);
  }
  return "";
}

// Flags that matter to who reads lines, then the field's own note.
std::string noteText(const wmqField &field) {
  static constexpr std::array<std::pair<unsigned, const char *>, 3> flags{
      {{WMQ_FIELD_AGAIN, "another place of the member"},
       {WMQ_FIELD_WRITTEN_ONLY, "never read"},
       {WMQ_FIELD_READ_ONLY, "never written"}}};
  std::string text;
  auto add = [&](std::string_view part) {
    if (!text.empty() && !part.empty()) text += "; ";
    text += part;
  };
  for (const auto &[flag, words] : flags)
    if (field.flags & flag) add(words);
  if (!isOnLine(field) && !(field.flags & WMQ_FIELD_RESERVED)) add("not on the line");
  add(field.note);
  return text;
}

// A field in its place: fields of entries stand indented below their array.
struct Row {
  const wmqField *field;
  size_t depth;
  std::string position;
};

void addRows(const wmqLayout &layout, std::optional<float> version, size_t depth, const std::string &within,
             std::vector<Row> &rows) {
  for (size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!isShown(field, version)) continue;
    std::string position = isOnLine(field) ? within + std::to_string(field.position) : "-";
    rows.push_back({&field, depth, position});
    if (field.layout && isOnLine(field)) addRows(*field.layout, version, depth + 1, position + ".", rows);
  }
}

std::vector<Row> rowsOf(const wmqLayout &layout, std::optional<float> version) {
  std::vector<Row> rows;
  addRows(layout, version, 0, "", rows);
  return rows;
}

std::string fieldText(const wmqField &field) {
  std::string text = field.name;
  if (field.shape == WMQ_SHAPE_FIXED) text += "[" + std::to_string(field.length) + "]";
  if (field.shape == WMQ_SHAPE_COUNTED) text += std::string("[") + field.countName + "]";
  return text;
}

std::string formText(const wmqField &field) {
  // What stands in one conversion is read whole or not at all.
  return field.flags & WMQ_FIELD_TOGETHER ? std::string("+ ") + field.form : field.form;
}

const char *kindText(const wmqField &field) {
  static constexpr std::array<const char *, 12> names{
      "reserved", "int32",  "int64",     "float",          "double",        "string",
      "chars",    "struct", "submitExt", "namedValueList", "affinityAlloc", "networkAlloc"};
  return names.at(static_cast<size_t>(field.kind));
}

const char *shapeText(const wmqField &field) {
  return field.shape == WMQ_SHAPE_FIXED ? "fixed" : field.shape == WMQ_SHAPE_COUNTED ? "counted" : "one";
}

std::string headline(int32_t type, const wmqLayout &layout) {
  std::string text = std::string(wmq_typename(type)) + " (" + std::to_string(type) + ")";
  if (*layout.name) text += std::string(", ") + layout.name;
  return text;
}

void jsonFlags(JsonPrinter &json, unsigned flags) {
  static constexpr std::array<std::pair<unsigned, const char *>, 10> names{
      {{WMQ_FIELD_AGAIN, "again"},
       {WMQ_FIELD_COUNT, "count"},
       {WMQ_FIELD_KEPT, "kept"},
       {WMQ_FIELD_BLOCK, "block"},
       {WMQ_FIELD_WRITTEN_ONLY, "writtenOnly"},
       {WMQ_FIELD_READ_ONLY, "readOnly"},
       {WMQ_FIELD_OFF_LINE, "offLine"},
       {WMQ_FIELD_TOGETHER, "together"},
       {WMQ_FIELD_EMPTY_ARRAY, "emptyArray"},
       {WMQ_FIELD_RESERVED, "reserved"}}};
  json.key("flags");
  json.beginArray();
  for (const auto &[flag, name] : names)
    if (flags & flag) json.string(name);
  json.endArray();
}

void jsonGate(JsonPrinter &json, const wmqField &field) {
  json.key("gate");
  if (field.gate == WMQ_GATE_ALWAYS) {
    json.null();
    return;
  }
  json.beginObject();
  json.key(field.gate == WMQ_GATE_ABOVE ? "above" : "atLeast");
  json.string(versionText(field.gateVersion));
  json.endObject();
}

void jsonFields(JsonPrinter &json, const wmqLayout &layout, std::optional<float> version);

void jsonField(JsonPrinter &json, const wmqField &field, std::optional<float> version) {
  auto member = [&](const char *name, std::string_view text) {
    json.key(name);
    json.string(text);
  };
  json.beginObject();
  json.key("position");
  if (isOnLine(field)) {
    json.integer(field.position);
  } else {
    json.null();
  }
  member("field", field.name);
  member("kind", kindText(field));
  member("shape", shapeText(field));
  if (field.shape == WMQ_SHAPE_FIXED || field.kind == WMQ_KIND_CHARS) {
    json.key("length");
    json.count(field.kind == WMQ_KIND_CHARS ? field.size : field.length);
  }
  if (field.shape == WMQ_SHAPE_COUNTED) member("count", field.countName);
  member("form", field.form);
  jsonGate(json, field);
  member("condition", field.condition);
  member("default", field.absent);
  member("note", field.note);
  jsonFlags(json, field.flags);
  if (field.layout) {
    member("structure", field.layout->name);
    jsonFields(json, *field.layout, version);
  }
  json.endObject();
}

void jsonFields(JsonPrinter &json, const wmqLayout &layout, std::optional<float> version) {
  json.key("fields");
  json.beginArray();
  for (size_t i = 0; i < layout.numFields; ++i)
    if (isShown(layout.fields[i], version)) jsonField(json, layout.fields[i], version);
  json.endArray();
}

std::string markdownCell(std::string_view text) {
  std::string cell;
  for (char c : text) {
    if (c == '|') cell += '\\';
    cell += c;
  }
  return cell;
}

std::string markdownCode(const std::string &text) {
  return text.empty() ? "" : "`" + markdownCell(text) + "`";
}

std::string markdownRow(const Row &row) {
  const wmqField &field = *row.field;
  std::string indent;
  for (size_t i = 0; i < row.depth; ++i) indent += "&nbsp;&nbsp;";
  std::string text = "|";
  for (const std::string &cell :
       {row.position, indent + markdownCode(fieldText(field)), std::string(kindText(field)),
        markdownCell(formText(field)), gateText(field), markdownCode(field.condition),
        markdownCode(field.absent), markdownCell(noteText(field))})
    text += cell.empty() ? " |" : " " + cell + " |";
  return text + "\n";
}

}  // namespace

bool hasLineLayout(int32_t type) { return wmq_typename(type) && wmq_schema(type); }

std::vector<int32_t> typesWithLayout() {
  std::vector<int32_t> types;
  for (int32_t type = 1; type <= WMQ_MAX_EVENT_TYPE; ++type)
    if (hasLineLayout(type)) types.push_back(type);
  return types;
}

std::string schemaTable(int32_t type, std::optional<float> version, bool coloured) {
  const wmqLayout &layout = *wmq_schema(type);
  std::string text = headline(type, layout);
  if (version) text += ", lines of version " + versionText(*version);
  text += "\n\n";
  std::vector<Row> rows = rowsOf(layout, version);
  if (rows.empty()) return text + "nothing behind the header\n";
  Table table({{"Position"}, {"Field"}, {"Form"}, {"Gate"}, {"Condition"}, {"Default"}, {"Note"}});
  for (const Row &row : rows)
    table.row({row.position, std::string(2 * row.depth, ' ') + fieldText(*row.field), formText(*row.field),
               gateText(*row.field), row.field->condition, row.field->absent, noteText(*row.field)});
  return text + table.text(coloured);
}

std::string schemaJson(int32_t type, std::optional<float> version) {
  const wmqLayout &layout = *wmq_schema(type);
  JsonPrinter json;
  json.beginObject();
  json.key("type");
  json.string(wmq_typename(type));
  json.key("code");
  json.integer(type);
  json.key("structure");
  json.string(layout.name);
  if (version) {
    json.key("version");
    json.string(versionText(*version));
  }
  jsonFields(json, layout, version);
  json.endObject();
  return json.text();
}

std::string schemaPage(int32_t type) {
  const wmqLayout &layout = *wmq_schema(type);
  std::string name = wmq_typename(type);
  std::string text = "# " + name + "\n\nEvent type " + std::to_string(type);
  if (*layout.name) text += ", structure `" + std::string(layout.name) + "`";
  text +=
      ". This page is made by `wmq schema --markdown` from the statement that writers\n"
      "and readers are made from; [the list of types](index.md) says how to read it.\n\n";
  std::vector<Row> rows = rowsOf(layout, std::nullopt);
  if (rows.empty()) return text + "Nothing stands behind the header.\n";
  text += "| Position | Field | Kind | Form | Gate | Condition | Default | Note |\n";
  text += "| --- | --- | --- | --- | --- | --- | --- | --- |\n";
  for (const Row &row : rows) text += markdownRow(row);
  return text;
}

std::string schemaIndex() {
  std::string text =
      "# Line layouts\n\n"
      "These pages are made by `wmq schema --markdown docs/layout`; do not edit them.\n\n"
      "Every line begins with a header: the type name in double quotes, the version in double quotes, the "
      "time\n"
      "of the event in seconds. The fields of the type follow, each behind one blank.\n\n"
      "| Column | Meaning |\n"
      "| --- | --- |\n"
      "| Position | place behind the header, from 1; `2.1` is the first field of each entry at place 2; `-`: "
      "not on the line |\n"
      "| Field | member of the structure; `[n]`: an array, as long as the member `n` or the number says |\n"
      "| Form | how it is written; `+`: read together with the field before it, all or none |\n"
      "| Gate | lines that carry it: `from` a version on, or of versions `above` one only; empty: all |\n"
      "| Condition | on other members of the same record |\n"
      "| Default | value when the line does not carry it |\n\n"
      "| Type | Code | Structure |\n"
      "| --- | --- | --- |\n";
  for (int32_t type : typesWithLayout()) {
    const wmqLayout *layout = wmq_schema(type);
    std::string name = wmq_typename(type);
    text += "| [" + name + "](" + name + ".md) | " + std::to_string(type) + " | " +
            markdownCode(layout->name) + " |\n";
  }
  return text;
}

}  // namespace wmq::tool
