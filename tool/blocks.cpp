#include "blocks.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "wmq/wmq.h"

namespace wmq::tool {

namespace {

// Long enough to make handing over cheap, short enough to have many at work in little memory.
constexpr size_t blockSize = size_t{128} << 10;

}  // namespace

Blocks::Blocks(std::string name) : file(std::move(name)), input(file) {}

bool Blocks::read(Block &block) {
  std::vector<char> &bytes = block.bytes;
  bytes.resize(std::max({bytes.size(), blockSize + 1, rest.size() + 1}));
  std::copy(rest.begin(), rest.end(), bytes.begin());
  size_t end = rest.size();
  size_t whole = 0;  // bytes of whole lines
  bool more = true;
  while (more) {
    if (end == bytes.size() - 1) {
      if (whole > 0) break;
      bytes.resize(2 * bytes.size());
    }
    if (whole > 0 && input.wouldWait()) break;
    const size_t got = input.read(bytes.data() + end, bytes.size() - 1 - end);
    more = got > 0;
    if (const void *last = memrchr(bytes.data() + end, '\n', got))
      whole = static_cast<size_t>(static_cast<const char *>(last) - bytes.data()) + 1;
    end += got;
  }
  // What stands behind the last line end of an input that is cut short was not read to its end.
  block.size = more || input.trouble() != Input::Trouble::none ? whole : end;
  rest.assign(bytes.begin() + static_cast<std::ptrdiff_t>(block.size),
              bytes.begin() + static_cast<std::ptrdiff_t>(end));
  return !block.empty();
}

bool Blocks::next(Block &block) {
  if (seen.empty()) return read(block);
  std::swap(block, seen.front());
  seen.pop_front();
  return true;
}

void Blocks::lookAhead(const std::function<bool(Block &)> &look) {
  do {
    Block block;
    if (!read(block)) return;
    seen.push_back(std::move(block));
  } while (!look(seen.back()));
}

void Blocks::reportEnd(uint64_t lines, Faults &faults) const {
  if (input.trouble() == Input::Trouble::system)
    faults.failure(file == "-" ? "standard input" : file, input.troubleText());
  if (input.trouble() == Input::Trouble::damaged)
    faults.badInput(file, lines + 1, WMQE_BAD_FORMAT, input.troubleText());
}

}  // namespace wmq::tool
