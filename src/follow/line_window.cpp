#include "follow/line_window.h"

#include <algorithm>
#include <cstring>

#include "follow/file_identity.h"
#include "follow/joined_lines.h"
#include "wmq/follow.h"
#include "wmq/stream.h"

namespace wmq {
namespace {

constexpr size_t kChunk = size_t{256} << 10;

// Bytes that were read already and are read again with what follows, to see that the file is still what it
// was: the line that was taken last with all that was read behind it, but no fewer and no more than these.
// Many lines end with the same fields; it is their beginning that tells them apart.
constexpr size_t kLeastOverlap = 64;
constexpr size_t kMostOverlap = kMostSummed;

}  // namespace

bool LineWindow::moveTo(int fd, int64_t offset) {
  const auto before = static_cast<size_t>(std::min(offset, static_cast<int64_t>(kMostOverlap)));
  if (buffer.size() < kMostOverlap + 1) buffer.resize(kChunk + 1);
  base = offset - static_cast<int64_t>(before);
  begin = end = searched = before;
  lineEnd = 0;
  taken = before;
  return readFully(fd, buffer.data(), before, base) == static_cast<ssize_t>(before);
}

LineWindow::Fill LineWindow::fill(int fd) {
  const size_t kept = std::min(begin, std::clamp(taken, kLeastOverlap, kMostOverlap));
  if (begin > kept) {
    const size_t gone = begin - kept;
    std::memmove(buffer.data(), buffer.data() + gone, end - gone);
    base += static_cast<int64_t>(gone);
    begin -= gone;
    end -= gone;
    searched = searched > gone ? searched - gone : 0;
    lineEnd = 0;
  }
  if (buffer.size() < end + kChunk / 2 + 1) buffer.resize(std::max(kChunk + 1, 2 * buffer.size()));

  char known[kMostOverlap];
  const size_t overlap = std::min(end, std::clamp(taken + (end - begin), kLeastOverlap, kMostOverlap));
  char *const from = buffer.data() + end - overlap;
  std::memcpy(known, from, overlap);
  const ssize_t got =
      readFully(fd, from, buffer.size() - 1 - (end - overlap), base + static_cast<int64_t>(end - overlap));
  const bool same = got >= static_cast<ssize_t>(overlap) && std::memcmp(known, from, overlap) == 0;
  if (!same) std::memcpy(from, known, overlap);
  if (got < 0) return Fill::failed;
  if (got < static_cast<ssize_t>(overlap)) return Fill::truncated;
  if (!same) return Fill::rewritten;
  if (got == static_cast<ssize_t>(overlap)) return Fill::nothing;
  end += static_cast<size_t>(got) - overlap;
  return Fill::more;
}

// A line without an end can hold a whole record only when it begins with one that leaves it open.
bool LineWindow::tailIsJoined() const {
  wmqLineHeader header;
  const int formerError = wmq_errno;
  const bool known = wmq_peekline(buffer.data() + begin, &header) == 0;
  wmq_errno = formerError;
  if (!known) return false;
  return mayLeaveLineOpen(eventType(header.type).body);
}

bool LineWindow::look(LinePart &part, bool finished) {
  if (begin == end) return false;
  char *const text = buffer.data() + begin;
  if (lineEnd <= begin) {
    const size_t from = std::max(begin, searched);
    const void *const found = std::memchr(buffer.data() + from, '\n', end - from);
    lineEnd = found != nullptr ? static_cast<size_t>(static_cast<const char *>(found) - buffer.data()) : 0;
    // A line that begins with its end.
    if (found != nullptr && lineEnd == begin) {
      part = {text, 0, offset(), 1, WMQ_PART_LINE, true};
      lineEnd = 0;
      return true;
    }
    const size_t formerly = searched;
    searched = found != nullptr ? lineEnd : end;
    if (found == nullptr && !finished) {
      if (formerly == end) return false;  // nothing new since
      buffer[end] = '\0';
      if (!tailIsJoined()) return false;
    }
  }
  const bool ended = lineEnd > begin;
  const size_t length = (ended ? lineEnd : end) - begin;
  int kind = WMQ_PART_LINE;
  const size_t first = *text == '#' ? length : wmq_firstrecord(text, length, &kind);
  if (first == 0) {
    searched = begin;
    lineEnd = 0;
    return false;
  }
  if (!ended && !finished && kind != WMQ_PART_JOINED) return false;
  const bool isLine = kind == WMQ_PART_LINE;
  part = {text, first,           offset(), static_cast<int64_t>(first + (isLine && ended ? 1 : 0)),
          kind, ended || !isLine};
  // What follows a part on its line is looked at again.
  if (!ended) searched = begin + first;
  return true;
}

}  // namespace wmq
