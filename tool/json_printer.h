// JSON for programs that read what the commands print.
#ifndef WMQ_TOOL_JSON_PRINTER_H
#define WMQ_TOOL_JSON_PRINTER_H

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "text.h"

namespace wmq::tool {

class JsonPrinter {
 public:
  void beginObject() { writer.StartObject(); }
  void endObject() { writer.EndObject(); }
  void beginArray() { writer.StartArray(); }
  void endArray() { writer.EndArray(); }

  void key(std::string_view name) { string(name); }
  // Names in event lines may hold any bytes, which the writer itself would pass on as they are.
  void string(std::string_view bytes) {
    std::string quoted = jsonString(bytes);
    writer.RawValue(quoted.data(), quoted.size(), rapidjson::kStringType);
  }
  void null() { writer.Null(); }
  void boolean(bool value) { writer.Bool(value); }
  void integer(int64_t value) { writer.Int64(value); }
  void count(uint64_t value) { writer.Uint64(value); }
  // JSON has no number that is not finite.
  void real(double value) {
    if (std::isfinite(value))
      writer.Double(value);
    else
      writer.Null();
  }

  // The document and a line end.
  std::string text() const { return std::string(buffer.GetString(), buffer.GetSize()) + "\n"; }

 private:
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
};

}  // namespace wmq::tool

#endif
