// All event types in one list: code, name, layout.
#ifndef WMQ_STREAM_TYPE_TABLE_H
#define WMQ_STREAM_TYPE_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wmq.stream/codec.h"

namespace wmq {

enum class Body {
  unknown,     // no name: neither written nor read
  dropped,     // no name: writing does nothing, with success
  fields,      // header, fields, line end
  openLine,    // header and fields: the next record continues the line
  headerOnly,  // header, and nothing behind it
  sideStream,  // fields on its own stream and when read; the event stream writes the bare header
  elsewhere,   // readable, but the event stream refuses to write it
};

struct EventType {
  int32_t code;
  Body body;
  const char *name;
  const RecordCodec *codec;
  size_t nameLength;

  constexpr EventType(int32_t number, Body what, const char *text, const RecordCodec *fields)
      : code(number),
        body(what),
        name(text),
        codec(fields),
        nameLength(std::string_view(text ? text : "").size()) {}
};

// The row of a code; one with Body::unknown for a code that has none.
const EventType &eventType(int32_t code);

// The row of a name of `length` bytes, null if there is none.
const EventType *eventTypeNamed(const char *name, size_t length);

}  // namespace wmq

#endif
