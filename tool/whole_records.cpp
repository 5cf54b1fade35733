#include "whole_records.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

namespace wmq::tool {

namespace {

constexpr int patience = 1000;  // milliseconds, with a reader that takes nothing when the end has come

// Files and devices that are no terminals.
bool takesWithoutWaiting(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) return true;
  return S_ISREG(status.st_mode) || (S_ISCHR(status.st_mode) && isatty(fd) == 0);
}

}  // namespace

WholeRecords::WholeRecords(StopSignals &stopping)
    : signals(stopping), takesAll(takesWithoutWaiting(STDOUT_FILENO)) {}

void WholeRecords::append(std::string_view record, std::string position) {
  output.append(record);
  output.append("\n");
  appended += record.size() + 1;
  ends.push_back({appended, std::move(position)});
}

// A pipe that poll calls writable is sure to take so much in one piece, and no more.
size_t WholeRecords::nextPiece() const {
  if (takesAll) return output.size();
  size_t records = 0;
  for (const End &end : ends) {
    if (end.offset - handedOver > PIPE_BUF) break;
    records = end.offset - handedOver;
  }
  return records > 0 ? records : PIPE_BUF;
}

void WholeRecords::passEnds() {
  for (; !ends.empty() && ends.front().offset <= handedOver; ends.pop_front()) {
    whole = ends.front().offset;
    reached = std::move(ends.front().position);
  }
}

// The reader is waited for where signals are heard.
WholeRecords::Outcome WholeRecords::flush() {
  while (output.size() > 0) {
    const bool isBegun = handedOver > whole;
    const bool stopping = signals.haveCome();
    pollfd waited{STDOUT_FILENO, POLLOUT, 0};
    const int ready = signals.poll(&waited, 1, stopping && !isBegun ? patience : -1);
    if (ready < 0 && errno == EINTR) {
      if (stopping && isBegun) return Outcome::cut;
      continue;
    }
    if (ready == 0) return Outcome::left;
    const size_t before = output.size();
    const bool fine = output.flush(nextPiece());
    handedOver += before - output.size();
    passEnds();
    if (!fine) return Outcome::failed;
  }
  return Outcome::handedOver;
}

}  // namespace wmq::tool
