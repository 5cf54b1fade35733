// The event stream: the frames of writing and reading.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "wmq.stream/failure.h"
#include "wmq.stream/line_parser.h"
#include "wmq.stream/stream_file.h"
#include "wmq.stream/type_table.h"

namespace wmq {
namespace {

constexpr int kWritesPerCheck = 100;

int nrecord = 0;  // lives as long as the process, whatever is opened and closed

void putHeader(Writer &io, const EventType &type, int32_t eventTime) {
  put(io, "\"");
  put(io, std::string_view(type.name));
  put(io, "\" \"" WMQ_FORMAT_VERSION "\"");
  putInteger(io, eventTime);
}

// Builds the line of a type that the event stream writes. Types without fields leave wmq_errno as it was.
void putLine(Writer &io, const EventType &type, eventRecord &record) {
  nameType(type.name);
  putHeader(io, type, record.eventTime);
  if (type.body == Body::fields || type.body == Body::openLine) {
    type.codec->write(io, &record.eventLog);
    if (type.body == Body::fields) put(io, "\n");
    wmq_errno = io.error;
  } else if (io.error != 0) {
    wmq_errno = io.error;
  }
}

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

}  // namespace wmq

const char *wmq_streamversion(void) { return WMQ_FORMAT_VERSION; }

int wmq_openstream(const streamParams *params) {
  if (params == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  if (wmq::stream != nullptr) return 0;
  wmq::stream = wmq::openFile(wmq::eventStreamKind, params->fileName, *params);
  return wmq::stream != nullptr ? 0 : -1;
}

int wmq_writestream(eventRecord *record) {
  using namespace wmq;
  if (stream == nullptr || stream->fp == nullptr) return -1;
  if (record == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }

  bool filesRemoved = false;
  if (++nrecord == kWritesPerCheck) {
    nrecord = 0;
    if (const int result = resetstream(*stream); result < 0) return result;
    filesRemoved = wmq_errno == WMQE_FILES_REMOVED;
  }

  const EventType &type = eventType(record->type);
  int result = 0;
  if (!isWritable(type, result)) return result;

  Writer &io = beginLine();
  putLine(io, type, *record);
  if (!append(*stream, io.text, io.size)) wmq_errno = WMQE_SYS;
  finishLine(io);

  if (wmq_errno != 0) return -1;
  if (filesRemoved) wmq_errno = WMQE_FILES_REMOVED;
  return 0;
}

int wmq_formatrecord(eventRecord *record, char **text, size_t *length) {
  using namespace wmq;
  if (record == nullptr || text == nullptr || length == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  *text = nullptr;
  *length = 0;
  const EventType &type = eventType(record->type);
  int result = 0;
  if (!isWritable(type, result)) return result;

  Writer &io = beginLine();
  putLine(io, type, *record);
  if (io.size > 0) {
    *text = static_cast<char *>(std::malloc(io.size + 1));
    if (*text != nullptr) {
      std::memcpy(*text, io.text, io.size);
      (*text)[io.size] = '\0';
      *length = io.size;
    } else {
      wmq_errno = WMQE_NO_MEM;
    }
  }
  finishLine(io);
  return wmq_errno == 0 ? 0 : -1;
}

eventRecord *wmq_readstream(int *lineNum) {
  using namespace wmq;
  if (lineNum == nullptr) {
    if (stream != nullptr) resetLines(stream->lines);
    return nullptr;
  }
  if (stream == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return nullptr;
  }
  ++*lineNum;
  const Line line = nextRecordLine(*stream);
  if (line.text == nullptr) return nullptr;
  dropKeptRecord();
  return keepRecord(parsestreamlineMT(line.text, line.length));
}

int wmq_closestream(void) {
  using namespace wmq;
  if (stream == nullptr) return -1;
  if (stream->fp != nullptr) {
    skipToEnd(stream->lines, fileno(stream->fp));
    for (int lineNum = 0; wmq_readstream(&lineNum) != nullptr;) {
    }
  }
  closeFile(stream);
  stream = nullptr;
  return 0;
}
