// Reads a file line by line, at its own position: writing to the same file does not move it.
#ifndef WMQ_STREAM_LINE_SOURCE_H
#define WMQ_STREAM_LINE_SOURCE_H

#include <sys/types.h>

#include <cstddef>

namespace wmq {

struct LineSource {
  off_t nextRead = 0;  // where in the file the bytes behind the buffer begin
  char *buffer = nullptr;
  size_t capacity = 0;
  size_t begin = 0;  // of the bytes not yet given out
  size_t end = 0;
};

struct Line {
  char *text = nullptr;  // NUL-terminated, without its line end; stands until the next call. Null: no line
  size_t length = 0;
  bool holdsNul = false;
};

// The next line of `fd` that has at least one character; at the end of the file what stands there without a
// line end is a line too. When reading fails: no line, and the next call reads on. Memory exhausted: no line,
// with wmc_errno 98.
Line nextLine(LineSource &source, int fd);

// Gives back the storage; reading goes on behind the last line given out.
void resetLines(LineSource &source);

// Goes on at the end of the file. False for what is no regular file and so may have none.
bool skipToEnd(LineSource &source, int fd);

}  // namespace wmq

#endif
