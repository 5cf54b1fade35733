#include "wmq.stream/stream_frames.h"

#include "wmq.stream/line_parser.h"

namespace wmq {

constexpr int kWritesPerCheck = 100;

int writeRecord(streamFile *file, int &writes, eventRecord *record, PutLine *putLine, bool &filesRemoved) {
  if (file == nullptr || file->fp == nullptr) return -1;
  if (record == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  if (++writes == kWritesPerCheck) {
    writes = 0;
    if (const int result = resetstream(*file); result < 0) return result;
    filesRemoved = wmq_errno == WMQE_FILES_REMOVED;
  }
  Writer &io = beginLine();
  int result = putLine(io, *record);
  if (io.size == 0) filesRemoved = false;  // nothing to tell it with
  if (io.size > 0 && !append(*file, io.text, io.size)) {
    wmq_errno = WMQE_SYS;
    result = -1;
  }
  finishLine(io);
  return result;
}

eventRecord *readRecord(streamFile *file, int *lineNum) {
  if (lineNum == nullptr) {
    if (file != nullptr) resetLines(file->lines);
    return nullptr;
  }
  if (file == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return nullptr;
  }
  ++*lineNum;
  const Line line = nextRecordLine(*file);
  if (line.text == nullptr) return nullptr;
  dropKeptRecord();
  return keepRecord(parsestreamlineMT(line.text, line.length));
}

// What is no regular file may have no end: a FIFO would be waited for, and a device read for ever.
static void readToEnd(streamFile *file) {
  if (!skipToEnd(file->lines, fileno(file->fp))) {
    wmq_errno = WMQE_EOF;
    return;
  }
  for (int lineNum = 0; readRecord(file, &lineNum) != nullptr;) {
  }
}

int syncStream(streamFile *file) {
  if (file == nullptr || file->fp == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  if (syncFile(*file)) return 0;
  wmq_errno = WMQE_SYS;
  return -1;
}

int closeStream(streamFile *&file) {
  if (file == nullptr) return -1;
  if (file->fp != nullptr) readToEnd(file);
  closeFile(file);
  file = nullptr;
  return 0;
}

}  // namespace wmq
