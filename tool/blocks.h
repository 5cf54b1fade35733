// The lines of an input file in blocks, for work that is shared among threads.
#ifndef WMQ_TOOL_BLOCKS_H
#define WMQ_TOOL_BLOCKS_H

#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "faults.h"
#include "input.h"

namespace wmq::tool {

// Whole lines that follow each other. Only the last one of a file that could be read to its end may lack its
// line end.
class Block {
 public:
  // Hands each line to `take` without its line end, which a NUL stands for meanwhile, with its number from 1
  // and its bytes in the file, until one call returns false. Returns the number of lines handed out.
  template <typename Take>  // bool (std::string_view text, uint64_t number, uint64_t bytes)
  uint64_t eachLine(Take take);

  bool empty() const { return size == 0; }

 private:
  friend class Blocks;

  std::vector<char> bytes;  // one more than are ever in use, for the NUL
  size_t size = 0;
};

template <typename Take>
uint64_t Block::eachLine(Take take) {
  char *next = bytes.data();
  char *const end = next + size;
  uint64_t number = 0;
  while (next != end) {
    auto *lineEnd = static_cast<char *>(std::memchr(next, '\n', static_cast<size_t>(end - next)));
    const bool ended = lineEnd != nullptr;
    if (!ended) lineEnd = end;
    *lineEnd = '\0';
    const auto length = static_cast<size_t>(lineEnd - next);
    const bool goOn = take({next, length}, ++number, length + (ended ? 1 : 0));
    if (ended) *lineEnd = '\n';
    if (!goOn) break;
    next = lineEnd + (ended ? 1 : 0);
  }
  return number;
}

class Blocks {
 public:
  // `name` is "-" for standard input.
  explicit Blocks(std::string name);

  // Fills `block` with the next lines: as many as it has room for, but those at hand when waiting for more
  // would keep them back, and at least one. False at the end.
  bool next(Block &block);

  // Lets `look` see the blocks from the first on, until it returns true. next() begins with the first all the
  // same.
  void lookAhead(const std::function<bool(Block &)> &look);

  const std::string &name() const { return file; }
  Input &source() { return input; }

  // Reports why the input ended behind so many lines, if it was not its proper end.
  void reportEnd(uint64_t lines, Faults &faults) const;

 private:
  bool read(Block &block);

  std::string file;
  Input input;
  std::vector<char> rest;  // the beginning of a line that the last block had no end of
  std::deque<Block> seen;  // read by lookAhead
};

}  // namespace wmq::tool

#endif
