// The lines of an input file.
#ifndef WMQ_TOOL_LINES_H
#define WMQ_TOOL_LINES_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "faults.h"
#include "input.h"
#include "progress.h"

namespace wmq::tool {

// Reads lines of any length. Memory is taken for the longest line, not for the file.
class Lines {
 public:
  // `file` is "-" for standard input.
  explicit Lines(std::string file);

  // Goes to the next line; false when there is none. A last line without line end counts when the file
  // could be read to its end.
  bool next();

  // The current line without its line end. A NUL follows it.
  std::string_view text() const { return {line, length}; }

  // Its number, from 1.
  uint64_t number() const { return count; }

  // Its bytes in the file, the line end included.
  uint64_t size() const { return length + (lineEnd ? 1 : 0); }

  const std::string &file() const { return name; }
  Input &source() { return input; }

  // Reports why the input ended, if it was not its proper end.
  void reportEnd(Faults &faults) const;

 private:
  bool readMore();
  void restoreLineEnd();

  std::string name;
  Input input;
  std::vector<char> buffer;  // one byte more than is ever read into it, for the NUL
  size_t begin = 0;          // of what has not been returned
  size_t end = 0;            // of what was read
  char *line = nullptr;
  size_t length = 0;
  bool lineEnd = false;  // the current line has one; its NUL stands there
  uint64_t count = 0;
};

// Hands every line of every file to `take`, until one of them returns false. Inputs that end badly are
// reported and the next file goes on. "-" stands for standard input; no file at all does too.
void eachLine(const std::vector<std::string> &files, Faults &faults, Progress &progress,
              const std::function<void()> &beforeWaiting, const std::function<bool(const Lines &)> &take);

}  // namespace wmq::tool

#endif
