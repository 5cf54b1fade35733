#include "wmq.stream/line_format.h"

#include <cstdlib>
#include <cstring>

#include "companion/byte_groups.h"
#include "wmq.stream/failure.h"

namespace wmq {
namespace {

bool hasFields(const EventType &type) { return type.body == Body::fields || type.body == Body::openLine; }

// Whether the event stream writes this type of which it writes no fields; if not, `result` is what the call
// returns.
[[gnu::cold]] bool isHeaderWritten(const EventType &type, int &result) {
  switch (type.body) {
    case Body::headerOnly:
    case Body::sideStream:
      return true;
    case Body::dropped:
      wmq_errno = 0;
      result = 0;
      return false;
    default:
      nameType(type.name);
      noteFailure(nullptr, 0, "a type that the event stream writes");
      wmq_errno = WMQE_BAD_EVENT;
      result = -1;
      return false;
  }
}

}  // namespace

void putHeader(Writer &io, const EventType &type, int32_t eventTime) {
  constexpr std::string_view version = "\" \"" WMQ_FORMAT_VERSION "\"";
  nameType(type.name);
  char *out = room(io, 1 + type.nameLength + version.size() + kIntegerRoom);
  if (out == nullptr) return;
  *out++ = '"';
  copyBytes(out, type.name, type.nameLength);
  out += type.nameLength;
  std::memcpy(out, version.data(), version.size());
  io.size = static_cast<size_t>(integerBehindBlank(out + version.size(), eventTime) - io.text);
}

void putFields(Writer &io, const EventType &type, eventRecord &record) {
  putHeader(io, type, record.eventTime);
  type.codec->write(io, &record.eventLog);
  if (type.body != Body::openLine) putByte(io, '\n');
}

// Types of which only the header is written leave wmq_errno as it was, and succeed only if it was 0.
int putEventLine(Writer &io, eventRecord &record) {
  const EventType &type = eventType(record.type);
  int result = 0;
  if (hasFields(type)) {
    putFields(io, type, record);
    wmq_errno = io.error;
  } else {
    if (!isHeaderWritten(type, result)) return result;
    putHeader(io, type, record.eventTime);
    if (io.error != 0) wmq_errno = io.error;
  }
  return wmq_errno == 0 ? 0 : -1;
}

int writeFields(FILE *file, const RecordCodec &codec, const void *log, bool lineEnd) {
  if (file == nullptr || log == nullptr) return WMQE_BAD_ARG;
  nameType(nullptr);
  Writer &io = beginLine();
  codec.write(io, const_cast<void *>(log));
  if (lineEnd) putByte(io, '\n');
  const int result = handOver(io, file);
  finishLine(io);
  return result;
}

int formatLine(eventRecord *record, char **text, size_t *length, PutLine *putLine) {
  if (record == nullptr || text == nullptr || length == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  *text = nullptr;
  *length = 0;
  Writer &io = beginLine();
  int result = putLine(io, *record);
  if (io.size > 0) {
    *text = static_cast<char *>(std::malloc(io.size + 1));
    if (*text != nullptr) {
      std::memcpy(*text, io.text, io.size);
      (*text)[io.size] = '\0';
      *length = io.size;
    } else {
      wmq_errno = WMQE_NO_MEM;
      result = -1;
    }
  }
  finishLine(io);
  return result;
}

}  // namespace wmq
