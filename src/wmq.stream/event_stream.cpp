// The event stream: the frames of writing and reading.
#include "wmq.stream/failure.h"
#include "wmq.stream/line_format.h"
#include "wmq.stream/line_parser.h"
#include "wmq.stream/stream_file.h"

namespace wmq {
namespace {

int nrecord = 0;  // lives as long as the process, whatever is opened and closed

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

  Writer &io = beginLine();
  int result = putEventLine(io, *record);
  const bool lineWritten = io.size > 0;
  if (lineWritten && !append(*stream, io.text, io.size)) {
    wmq_errno = WMQE_SYS;
    result = -1;
  }
  finishLine(io);
  if (result == 0 && lineWritten && filesRemoved) wmq_errno = WMQE_FILES_REMOVED;
  return result;
}

int wmq_formatrecord(eventRecord *record, char **text, size_t *length) {
  return wmq::formatLine(record, text, length, wmq::putEventLine);
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
