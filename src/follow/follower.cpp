// Reading: records, lines, notices, and the wait for more.
#include "follow/follower.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>

#include "wmq.stream/line_parser.h"
#include "wmq.stream/type_table.h"
#include "wmq/stream.h"

wmq::OpenFile::~OpenFile() {
  if (fd >= 0) ::close(fd);
}

namespace wmq {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kMostWaits = 20;  // on a network the clock of the files may be ahead of the own one

// Milliseconds that are left, for poll(2).
int timeLeft(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::max<int64_t>(left, 0));
}

struct ReleaseRecord {
  void operator()(eventRecord *record) const {
    wmq_freekept(record);
    wmq_freelogrec(record);
  }
};

}  // namespace

void ReadLast::take(const LinePart &part) {
  const bool hasEnd = part.size > static_cast<int64_t>(part.length);
  const size_t fromText = std::min(part.length, sizeof bytes - 1);
  std::memcpy(bytes, part.text + part.length - fromText, fromText);
  bytes[fromText] = '\n';
  length = fromText + (hasEnd ? 1 : 0);
}

bool ReadLast::takeBefore(int fd, int64_t offset) {
  length = static_cast<size_t>(std::min(offset, static_cast<int64_t>(sizeof bytes)));
  const int64_t from = offset - static_cast<int64_t>(length);
  if (readFully(fd, bytes, length, from) == static_cast<ssize_t>(length)) return true;
  wmq_errno = WMQE_SYS;
  return false;
}

}  // namespace wmq

using wmq::LinePart;
using wmq::LineWindow;

void wmqFollower::restoreText() {
  if (restored != nullptr) *restored = restoredByte;
  restored = nullptr;
}

int wmqFollower::next(eventRecord **record, int timeout) {
  restoreText();
  detail = wmq::emptyDetail();
  *record = nullptr;
  const auto deadline = wmq::Clock::now() + std::chrono::milliseconds(std::max(timeout, 0));
  bool collected = false;
  for (;;) {
    Step done = Step::again;
    while (done == Step::again) done = step(record);
    if (done == Step::given) return detail.kind;
    if (done == Step::failed) return detail.kind = WMQ_FOLLOW_FAILED;
    // News that is taken before a last look cannot be missed: what comes later ends the wait.
    if (!collected) {
      watch.collect();
      collected = true;
      continue;
    }
    const int left = timeout < 0 ? -1 : wmq::timeLeft(deadline);
    if (left == 0 || !watch.wait(left)) return WMQ_FOLLOW_NOTHING;
    collected = false;
  }
}

wmqFollower::Step wmqFollower::step(eventRecord **record) {
  if (file.isOpen() && !hasPlace && !takePlace()) return Step::failed;
  if (owed.notice != 0) return payNotice();
  if (!file.isOpen()) return moveOn();
  LinePart part;
  const int formerError = wmq_errno;
  wmq_errno = 0;
  if (window.look(part, state == State::drained || state == State::cut)) return give(part, record);
  if (wmq_errno != 0) return Step::failed;
  wmq_errno = formerError;
  if (state == State::cut) return beginAnew();
  switch (window.fill(file.get())) {
    case LineWindow::Fill::more:
      return Step::again;
    case LineWindow::Fill::truncated:
      return goneShort(false);
    case LineWindow::Fill::rewritten:
      return goneShort(true);
    case LineWindow::Fill::failed:
      wmq_errno = WMQE_SYS;
      return Step::failed;
    default:
      break;
  }
  if (state == State::live) return lookForSuccessor();
  if (state == State::drained) return moveOn();
  state = State::drained;
  return Step::again;
}

// All that may fail comes first: what has been taken from the window must reach the caller.
wmqFollower::Step wmqFollower::give(LinePart &part, eventRecord **record) {
  if (part.length == 0 || *part.text == '#') {
    window.take(part);
    return Step::again;
  }
  if (endSeen) {
    detail.offset = endOffset;
    giveNotice(
        WMQ_NOTICE_END_IN_MIDDLE,
        "lines follow the end of the stream: it was written by a writer that could not rename the file");
    last = end;
    endSeen = false;
    given = endOffset;
    return Step::given;
  }
  restored = part.text + part.length;
  restoredByte = *restored;
  *restored = '\0';

  std::unique_ptr<eventRecord, wmq::ReleaseRecord> parsed;
  if (part.part != WMQ_PART_TORN) {
    wmq_errno = 0;
    bool lacked = false;
    parsed.reset(wmq::parseLine(part.text, part.length, lacked));
    if (lacked) {
      wmq_errno = WMQE_NO_MEM;
      return Step::failed;
    }
  }
  if (parsed != nullptr && parsed->type == EVENT_END_OF_STREAM) {
    end.take(part);
    restoreText();
    window.take(part);
    endSeen = true;
    endOffset = window.offset();
    return Step::again;
  }
  detail.offset = part.offset;
  detail.length = part.size;
  detail.text = part.text;
  detail.textLength = static_cast<int64_t>(part.length);
  detail.lineEnd = part.lineEnd ? 1 : 0;
  // Of a line that never got its end only a type that leaves it open is whole.
  const bool whole = part.lineEnd || (parsed != nullptr && wmq_leavesopen(parsed->type) != 0);
  if (part.part == WMQ_PART_TORN || !whole)
    giveNotice(WMQ_NOTICE_TORN, "a record that was not written to its end");
  else if (parsed != nullptr)
    giveRecord();
  else
    giveBadLine(wmq_errno);

  if (detail.kind == WMQ_FOLLOW_RECORD) *record = parsed.release();
  last.take(part);
  window.take(part);
  given = window.offset();
  return Step::given;
}

void wmqFollower::giveRecord() {
  fileName = entry.path;
  detail.file = fileName.c_str();
  resumedFrom.clear();
  detail.kind = WMQ_FOLLOW_RECORD;
}

void wmqFollower::giveBadLine(int error) {
  reason = wmq_errdetail();
  giveRecord();
  detail.kind = WMQ_FOLLOW_LINE;
  detail.error = error;
  detail.reason = reason.c_str();
}

void wmqFollower::giveNotice(int notice, const std::string &why) {
  reason = why;
  fileName = file.isOpen() ? entry.path : path;
  resumedFrom.clear();
  detail.kind = WMQ_FOLLOW_NOTICE;
  detail.notice = notice;
  detail.file = fileName.c_str();
  detail.reason = reason.c_str();
}

// Somebody has cut the file, or written it anew. If a copy of it has become an old file before, it is whole.
wmqFollower::Step wmqFollower::goneShort(bool rewritten) {
  const wmq::Position position = currentPosition();
  wmq::StreamListing listing;
  if (!list(listing)) return Step::failed;
  if (position.offset > 0)
    for (const wmq::StreamEntry &copy : listing.old) {
      bool found = false;
      if (copy.identity == entry.identity) continue;
      if (!tryEntry(copy, position, found)) return Step::failed;
      if (found) return takePlace() ? Step::again : Step::failed;
    }
  state = State::cut;
  wasRewritten = rewritten;
  return Step::again;
}

wmqFollower::Step wmqFollower::beginAnew() {
  giveNotice(WMQ_NOTICE_TRUNCATED, std::string("the file was ") + (wasRewritten ? "written anew" : "cut") +
                                       "; it is read from its first byte");
  detail.offset = given;
  detail.missingBytes = -1;
  window.moveTo(file.get(), 0);  // nothing stands before it that would have to be read
  state = State::live;
  endSeen = false;
  given = 0;
  last.length = 0;
  firstIsWhole = false;
  first = {};
  return Step::given;
}

// The file that is read keeps its inode for as long as it is open, and waiting for some milliseconds makes
// sure that none after it can have both its inode and its time of creation.
bool wmqFollower::isSettled() {
  wmq::FileStatus status;
  for (int waits = 0; !entry.settled && waits < wmq::kMostWaits; ++waits) {
    if (waits > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (!wmq::statusOf(file.get(), status) || !wmq::hasBirth(status.identity)) return false;
    entry.settled = status.settled;
  }
  return entry.settled;
}

wmq::Position wmqFollower::currentPosition() {
  if (file.isOpen() && !firstIsWhole) wmq::extractFirstLine(file.get(), first, firstIsWhole);
  wmq::FileIdentity identity = entry.identity;
  // Nothing but its identity tells an empty file from another.
  if (file.isOpen() && first.length == 0 && !isSettled()) identity.birth = 0;
  return {.hasFile = file.isOpen(),
          .identity = identity,
          .suffix = entry.suffix,
          .first = first,
          .offset = given,
          .last = {static_cast<int64_t>(last.length), wmq::checksum(last.bytes, last.length)},
          .former = former};
}

void wmqFollower::position(char *text) {
  const std::string told = resumedFrom.empty() ? wmq::positionText(currentPosition()) : resumedFrom;
  text[told.copy(text, WMQ_POSITION_SIZE - 1)] = '\0';
}
