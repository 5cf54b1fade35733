#include "wmq.stream/stream_frames.h"

#include <algorithm>

#include "wmq.stream/failure.h"
#include "wmq.stream/line_parser.h"

namespace wmq {

namespace {

constexpr int kWritesPerCheck = 100;

// Lines of a batch that are built and not yet in the file. There is a bound to them: however many records a
// batch has, it takes no more memory than this and one line.
struct WaitingLines {
  static constexpr size_t most = 1024;
  Writer &io;
  int writesBefore;  // the counter when the first of them was begun
  size_t count = 0;
  size_t ends[most];

  explicit WaitingLines(int writes) : io(beginLine()), writesBefore(writes) {}
  void add() { ends[count++] = io.size; }
  bool areEnough() const { return count == most || io.size >= kKeptCapacity / 2; }
};

// Where only `taken` bytes of the lines reached the file: `written` counts the whole ones, and the counter is
// set to what it would be had the record of the line that is not whole been the last to be written.
[[gnu::cold]] void tellLoss(const WaitingLines &lines, size_t taken, int &writes, size_t &written) {
  const size_t *const behind = std::upper_bound(lines.ends, lines.ends + lines.count, taken);
  const auto whole = static_cast<size_t>(behind - lines.ends);
  written += whole;
  forgetFailure();
  wmq_errno = WMQE_SYS;
  writes = static_cast<int>((static_cast<size_t>(lines.writesBefore) + whole + 1) % kWritesPerCheck);
}

// Puts what waits into the file.
bool handOver(const streamFile &file, WaitingLines &lines, int &writes, size_t &written) {
  const size_t taken = lines.io.size > 0 ? append(file, lines.io.text, lines.io.size) : 0;
  const bool all = taken == lines.io.size;
  if (all) {
    written += lines.count;
    lines.writesBefore = writes;
  } else {
    tellLoss(lines, taken, writes, written);
  }
  lines.io.size = 0;
  lines.count = 0;
  return all;
}

// Counts a write; true before every 100th, which looks at the size of the file first.
bool isCheckDue(const Writing &how) {
  if (++how.writes < kWritesPerCheck) return false;
  how.writes = 0;
  return true;
}

// That look, which rotates a file that is full.
[[gnu::cold]] int rotateIfFull(streamFile &file) {
  const int full = isFull(file, 0);
  return full > 0 ? resetstream(file) : full;
}

// The same with lines that wait, which go into the file before it is rotated.
[[gnu::cold]] int rotateIfFull(streamFile &file, WaitingLines &lines, int &writes, size_t &written) {
  const int full = isFull(file, lines.io.size);
  if (full <= 0) return full;
  if (!handOver(file, lines, writes, written)) return -1;
  lines.writesBefore = kWritesPerCheck - 1;  // the record that the look is for is counted already
  return resetstream(file);
}

int writeRecords(streamFile &file, const Writing &how, eventRecord *const *records, size_t count,
                 WaitingLines &lines, size_t &written, bool &anyRemoved) {
  for (size_t i = 0; i < count; ++i) {
    bool filesRemoved = false;
    if (isCheckDue(how)) {
      if (const int result = rotateIfFull(file, lines, how.writes, written); result < 0) return result;
      filesRemoved = wmq_errno == WMQE_FILES_REMOVED;
    }
    if (records[i] == nullptr) {
      wmq_errno = WMQE_BAD_ARG;
      return -1;
    }
    beginNextLine(lines.io);
    if (const int result = how.putLine(lines.io, *records[i]); result != 0) return result;
    if (filesRemoved && how.tellsRemoval && lines.io.size > lines.io.begin) {
      wmq_errno = WMQE_FILES_REMOVED;
      anyRemoved = true;
    }
    lines.add();
    if (lines.areEnough() && !handOver(file, lines, how.writes, written)) return -1;
  }
  return 0;
}

}  // namespace

// With nothing that waits: behind a write to a file system little code is left in the nearest cache, and a
// batch of one would pass through more of it.
int writeRecord(streamFile *file, const Writing &how, eventRecord *record) {
  if (file == nullptr || file->fp == nullptr) return -1;
  bool filesRemoved = false;
  if (isCheckDue(how)) {
    if (const int result = rotateIfFull(*file); result < 0) return result;
    filesRemoved = how.tellsRemoval && wmq_errno == WMQE_FILES_REMOVED;
  }
  if (record == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  Writer &io = beginLine();
  int result = how.putLine(io, *record);
  if (io.size > 0 && append(*file, io.text, io.size) < io.size) {
    forgetFailure();
    wmq_errno = WMQE_SYS;
    result = -1;
  } else if (filesRemoved && result == 0 && io.size > 0) {
    wmq_errno = WMQE_FILES_REMOVED;
  }
  finishLine(io);
  return result;
}

int writeBatch(streamFile *file, const Writing &how, eventRecord *const *records, size_t count,
               size_t *written) {
  size_t ignored = 0;
  size_t &whole = written != nullptr ? *written : ignored;
  whole = 0;
  if (file == nullptr || file->fp == nullptr) return -1;
  if (records == nullptr && count > 0) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  WaitingLines lines(how.writes);
  bool anyRemoved = false;
  int result = writeRecords(*file, how, records, count, lines, whole, anyRemoved);
  // What a record that failed came to goes into the file too.
  if (!handOver(*file, lines, how.writes, whole)) result = -1;
  if (result == 0 && anyRemoved) wmq_errno = WMQE_FILES_REMOVED;
  finishLine(lines.io);
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
  return keepRecord(line.holdsNul ? parsestreamlineMT(line.text, line.length)
                                  : parseText(line.text, line.length));
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
