#include "wmq.stream/line_format.h"

#include <cstdlib>
#include <cstring>

#include "wmq.stream/failure.h"

namespace wmq {
namespace {

// Whether the event stream writes this type; if not, `result` is what the call returns.
bool isWritable(const EventType &type, int &result) {
  switch (type.body) {
    case Body::fields:
    case Body::openLine:
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
  nameType(type.name);
  put(io, "\"");
  put(io, std::string_view(type.name));
  put(io, "\" \"" WMQ_FORMAT_VERSION "\"");
  putInteger(io, eventTime);
}

void putFields(Writer &io, const EventType &type, eventRecord &record) {
  putHeader(io, type, record.eventTime);
  type.codec->write(io, &record.eventLog);
  if (type.body != Body::openLine) put(io, "\n");
}

// Types of which only the header is written leave wmq_errno as it was, and succeed only if it was 0.
int putEventLine(Writer &io, eventRecord &record) {
  const EventType &type = eventType(record.type);
  int result = 0;
  if (!isWritable(type, result)) return result;
  if (type.body == Body::fields || type.body == Body::openLine) {
    putFields(io, type, record);
    wmq_errno = io.error;
  } else {
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
  if (lineEnd) put(io, "\n");
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
