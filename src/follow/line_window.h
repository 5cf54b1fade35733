// A file that grows, record by record, at a position of its own.
#ifndef WMQ_FOLLOW_LINE_WINDOW_H
#define WMQ_FOLLOW_LINE_WINDOW_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wmq {

// What stands between two places where records may begin.
struct LinePart {
  char *text = nullptr;  // `length` bytes; they may be changed until the next call
  size_t length = 0;
  int64_t offset = 0;    // of its first byte in the file
  int64_t size = 0;      // its bytes in the file, with the line end
  int part = 0;          // WMQ_PART_...
  bool lineEnd = false;  // a line end, or another part, stands behind it
};

class LineWindow {
 public:
  enum class Fill {
    more,       // there is something new
    nothing,    // the end of the file
    truncated,  // the file is shorter than what has been read of it
    rewritten,  // other bytes stand where bytes have been read
    failed      // errno
  };

  // Goes to a byte of a file, with nothing read from there on. False when the file does not reach so far, or
  // cannot be read.
  bool moveTo(int fd, int64_t offset);

  // Reads on.
  Fill fill(int fd);

  // The next part, without leaving it. False when it has not all come yet; `finished` tells that nothing more
  // will come. Without memory false, with wmq_errno.
  bool look(LinePart &part, bool finished);

  // Leaves the part that look() has given.
  void take(const LinePart &part) {
    taken = static_cast<size_t>(part.size);
    begin += taken;
  }

  // Of the first byte that was not taken.
  int64_t offset() const { return base + static_cast<int64_t>(begin); }

 private:
  bool tailIsJoined() const;

  std::vector<char> buffer;  // one byte more than is ever filled
  int64_t base = 0;          // where in the file the buffer begins
  size_t begin = 0;          // of what was not taken
  size_t end = 0;
  size_t searched = 0;  // no line end stands between `begin` and here
  size_t lineEnd = 0;   // of the current line, if it is known; else 0
  size_t taken = 0;     // bytes of the part before `begin`
};

}  // namespace wmq

#endif
