#include "lines.h"

#include <cstring>
#include <utility>

#include "wmq/wmq.h"

namespace wmq::tool {

namespace {

constexpr size_t startSize = size_t{256} << 10;

}  // namespace

Lines::Lines(std::string file) : name(std::move(file)), input(name), buffer(startSize + 1) {}

bool Lines::readMore() {
  if (begin > 0) {
    std::memmove(buffer.data(), buffer.data() + begin, end - begin);
    end -= begin;
    begin = 0;
  }
  if (end == buffer.size() - 1) buffer.resize(2 * buffer.size());
  size_t got = input.read(buffer.data() + end, buffer.size() - 1 - end);
  end += got;
  return got > 0;
}

void Lines::restoreLineEnd() {
  if (line && lineEnd) line[length] = '\n';
}

bool Lines::next() {
  restoreLineEnd();
  line = nullptr;
  size_t searched = 0;  // bytes from `begin` on that hold no line end
  void *found = nullptr;
  while (!(found = std::memchr(buffer.data() + begin + searched, '\n', end - begin - searched))) {
    searched = end - begin;
    if (!readMore()) break;
  }
  // What stands behind the last line end of an input that is cut short was not read to its end.
  if (!found && (begin == end || input.trouble() != Input::Trouble::none)) return false;

  line = buffer.data() + begin;
  lineEnd = found != nullptr;
  length = lineEnd ? static_cast<size_t>(static_cast<char *>(found) - line) : end - begin;
  line[length] = '\0';
  begin += size();
  ++count;
  return true;
}

void Lines::reportEnd(Faults &faults) const {
  if (input.trouble() == Input::Trouble::system)
    faults.failure(name == "-" ? "standard input" : name, input.troubleText());
  if (input.trouble() == Input::Trouble::damaged)
    faults.badInput(name, count + 1, WMQE_BAD_FORMAT, input.troubleText());
}

void eachLine(const std::vector<std::string> &files, Faults &faults, Progress &progress,
              const std::function<void()> &beforeWaiting, const std::function<bool(const Lines &)> &take) {
  static const std::vector<std::string> standardInput{"-"};
  for (const std::string &file : files.empty() ? standardInput : files) {
    Lines lines(file);
    lines.source().beforeWaiting(beforeWaiting);
    while (lines.next()) {
      progress.step(lines.source().bytesTaken());
      if (!take(lines)) return;
    }
    lines.reportEnd(faults);
    progress.fileDone(lines.source().bytesTaken());
  }
}

}  // namespace wmq::tool
