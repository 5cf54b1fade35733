// Which file comes next, and where a position is found again.
//
// Rotation gives an old file a suffix that is above all that are there, and removes old files from the oldest
// on. So while the file that was read is still there under its old name, all files behind it are there, too,
// in the order of their suffixes. Every choice is made by a list that shows that, taken after the chosen file
// was opened: what was chosen by an older list may have been passed by. Only between two old files an older
// list will do: what stood next to each other once does so for as long as both are there.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "follow/follower.h"
#include "wmq/stream.h"

using wmq::FileStatus;
using wmq::OpenFile;
using wmq::Position;
using wmq::StreamEntry;
using wmq::StreamListing;

namespace wmq {
namespace {

bool failSystem() {
  wmq_errno = WMQE_SYS;
  return false;
}

// Opens what was listed. Not open, without an error, when it is gone or another file stands there.
bool openEntry(const StreamEntry &entry, OpenFile &opened) {
  // Nobody waits for the other end of a pipe that somebody may have put there.
  OpenFile file(open(entry.path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) return errno == ENOENT || failSystem();
  FileStatus status;
  if (!statusOf(file.get(), status) || !isUsable(status)) return failSystem();
  if (status.identity == entry.identity) opened = std::move(file);
  return true;
}

// Where the last line that has its end, ends.
bool findLastEnd(int fd, int64_t size, int64_t &offset) {
  char bytes[4096];
  for (offset = size; offset > 0;) {
    const int64_t from = std::max<int64_t>(0, offset - static_cast<int64_t>(sizeof bytes));
    const auto length = static_cast<size_t>(offset - from);
    if (readFully(fd, bytes, length, from) != static_cast<ssize_t>(length)) return failSystem();
    const void *const found = memrchr(bytes, '\n', length);
    if (found != nullptr) {
      offset = from + (static_cast<const char *>(found) - bytes) + 1;
      return true;
    }
    offset = from;
  }
  return true;
}

// What can be known of a file that is not to be read: nothing, if it cannot be opened.
Extract firstOf(const StreamEntry &entry) {
  const int formerError = wmq_errno;
  OpenFile opened;
  Extract first;
  bool whole = false;
  if (openEntry(entry, opened) && opened.isOpen()) extractFirstLine(opened.get(), first, whole);
  wmq_errno = formerError;
  return first;
}

// What was listed before, if it is still there. Without a time of creation that no later file can have, its
// inode may be another file's by now, but hardly one of the same suffix.
const StreamEntry *findAgain(const StreamListing &listing, const StreamEntry &known) {
  const bool certain = hasBirth(known.identity) && known.settled;
  const StreamEntry *const old = listing.oldFile(known.identity);
  if (old != nullptr && (certain || old->suffix == known.suffix)) return old;
  return certain && listing.hasCurrent && listing.current.identity == known.identity ? &listing.current
                                                                                     : nullptr;
}

}  // namespace
}  // namespace wmq

// ------------------------------------------------------------------------------- opening

bool wmqFollower::open(const wmqFollowParams &params) {
  path = params.path;
  if (!watch.open(path, params.pollMilliseconds)) return wmq::failSystem();
  isFollowing = params.from == WMQ_FROM_POSITION ? resume(params.position) : openAt(params.from);
  return isFollowing;
}

// Where following has begun, a directory that is not there has no files: another may take its place.
bool wmqFollower::list(StreamListing &listing) const {
  if (wmq::listStream(path, listing)) return true;
  if (!isFollowing || errno != ENOENT) return wmq::failSystem();
  listing = {};
  return true;
}

bool wmqFollower::openAt(int32_t from) {
  return from == WMQ_FROM_OLDEST ? openOldest() : openCurrent(from == WMQ_FROM_END);
}

bool wmqFollower::openOldest() {
  for (int tries = 0; tries < wmq::kMostTries; ++tries) {
    StreamListing before;
    StreamListing after;
    if (!list(before)) return false;
    if (before.old.empty() && !before.hasCurrent) return true;
    const StreamEntry &oldest = before.old.empty() ? before.current : before.old.front();
    OpenFile opened;
    if (!wmq::openEntry(oldest, opened)) return false;
    if (!opened.isOpen() || !list(after) || before != after) continue;
    if (!begin(std::move(opened), oldest, 0)) return false;
    takePlaceIn(after);
    return true;
  }
  errno = EBUSY;
  return wmq::failSystem();
}

bool wmqFollower::openCurrent(bool atEnd) {
  for (int tries = 0; tries < wmq::kMostTries; ++tries) {
    StreamListing listing;
    if (!list(listing)) return false;
    if (!listing.hasCurrent) {
      takePlaceIn(listing);
      return true;
    }
    OpenFile opened;
    FileStatus status;
    if (!wmq::openEntry(listing.current, opened)) return false;
    if (!opened.isOpen()) continue;
    int64_t offset = 0;
    if (atEnd &&
        (!wmq::statusOf(opened.get(), status) || !wmq::findLastEnd(opened.get(), status.size, offset)))
      return wmq::failSystem();
    return begin(std::move(opened), listing.current, offset) && takePlace();
  }
  errno = EBUSY;
  return wmq::failSystem();
}

// With a failure, the file that is read stays.
bool wmqFollower::begin(OpenFile opened, const StreamEntry &found, int64_t offset) {
  wmq::LineWindow fresh;
  StreamEntry itself = found;
  wmq::Extract firstLine;
  bool whole = false;
  if (!fresh.moveTo(opened.get(), offset) || !wmq::extractFirstLine(opened.get(), firstLine, whole))
    return wmq::failSystem();
  wmq::ReadLast before;
  if (!before.takeBefore(opened.get(), offset)) return false;
  window = std::move(fresh);
  file = std::move(opened);
  entry = std::move(itself);
  first = firstLine;
  last = before;
  firstIsWhole = whole;
  state = State::live;
  endSeen = false;
  given = offset;
  hasPlace = false;
  watch.watchFile(file.get());
  return true;
}

bool wmqFollower::takePlace() {
  StreamListing listing;
  if (!list(listing)) return false;
  takePlaceIn(listing);
  return true;
}

// Where the file that is read stands among the others. While it is the current one, none is behind it, and
// the newest old one is the one before.
void wmqFollower::takePlaceIn(const StreamListing &listing) {
  hasPlace = false;
  const StreamEntry *const renamed = file.isOpen() ? listing.oldFile(entry.identity) : nullptr;
  const bool isCurrent = file.isOpen() && listing.hasCurrent && listing.current.identity == entry.identity;
  if (renamed != nullptr && !isCurrent) {
    entry = *renamed;
    former = {true, entry.suffix, first};
    ahead.clear();
    listedDirectory = listing.directory;
    for (const StreamEntry &other : listing.old)
      if (other.suffix > entry.suffix) ahead.push_back(other);
    if (listing.hasCurrent) ahead.push_back(listing.current);
  } else if (isCurrent || !file.isOpen()) {
    entry.suffix = wmq::kNoSuffix;
    entry.path = path;
    ahead.clear();
    former = {};
    if (!listing.old.empty()) former = {true, listing.old.back().suffix, wmq::firstOf(listing.old.back())};
  }
  hasPlace = true;
}

// -------------------------------------------------------------------------------- resuming

bool wmqFollower::resume(const char *text) {
  Position wanted;
  if (!wmq::readPosition(text, wanted)) {
    wmq_errno = WMQE_BAD_FORMAT;
    return false;
  }
  resumedFrom = text;
  former = wanted.former;
  if (!wanted.hasFile) {
    StreamListing listing;
    return list(listing);
  }
  bool found = false;
  if (!locate(wanted, found)) return false;
  if (found) return true;
  if (wanted.suffix != wmq::kNoSuffix) former = {true, wanted.suffix, wanted.first};
  isLost = true;
  lostFile = wanted.suffix != wmq::kNoSuffix ? path + "." + std::to_string(wanted.suffix) : "";
  lostIdentity = wanted.identity;
  return true;
}

// Renaming while the files are tried can hide one: only what two lists agree on is not there.
bool wmqFollower::locate(const Position &wanted, bool &found) {
  StreamListing before;
  StreamListing after;
  for (int tries = 0; tries < wmq::kMostTries; ++tries) {
    if (!list(before) || !tryEntries(before, wanted, found)) return false;
    if (found) return takePlace();
    if (!list(after)) return false;
    if (before == after) return true;
  }
  return true;
}

bool wmqFollower::tryEntries(const StreamListing &listing, const Position &wanted, bool &found) {
  std::vector<StreamEntry> candidates = listing.old;
  if (listing.hasCurrent) candidates.push_back(listing.current);
  const bool hasContent = wanted.first.length > 0 || wanted.offset > 0;
  // First what the system says is the file, then what has its name, then whatever has its content.
  const auto rank = [&](const StreamEntry &candidate) {
    if (candidate.identity == wanted.identity) return 0;
    return candidate.suffix == wanted.suffix ? 1 : 2;
  };
  std::stable_sort(candidates.begin(), candidates.end(),
                   [&](const StreamEntry &a, const StreamEntry &b) { return rank(a) < rank(b); });
  for (const StreamEntry &candidate : candidates) {
    if (!hasContent && !wmq::isCertain(candidate.identity, wanted.identity)) continue;
    if (!tryEntry(candidate, wanted, found)) return false;
    if (found) return true;
  }
  return hasContent || tryPlace(listing, wanted, found);
}

bool wmqFollower::tryEntry(const StreamEntry &candidate, const Position &wanted, bool &found) {
  OpenFile opened;
  FileStatus status;
  if (!wmq::openEntry(candidate, opened)) return false;
  if (!opened.isOpen()) return true;
  if (!wmq::statusOf(opened.get(), status)) return wmq::failSystem();
  // What the system cannot vouch for has to have the whole of the line: many lines begin with the same bytes.
  const bool certain = wmq::isCertain(candidate.identity, wanted.identity);
  const auto compare = certain || wanted.first.length == 0 ? wmq::compareFirst : wmq::compareFirstLine;
  bool same = false;
  if (status.size < wanted.offset) return true;
  if (!compare(opened.get(), wanted.first, same)) return wmq::failSystem();
  if (same && !wmq::compareBefore(opened.get(), wanted.offset, wanted.last, same)) return wmq::failSystem();
  // A writer that dies over an empty file leaves a line there that says nothing of the file.
  const bool mayBeEnd = !certain && wanted.first.length > 0 && wanted.offset <= wanted.first.length;
  bool isEnd = false;
  if (same && mayBeEnd && !wmq::beginsWithEnd(opened.get(), isEnd)) return wmq::failSystem();
  if (!same || isEnd) return true;
  found = begin(std::move(opened), candidate, wanted.offset);
  return found;
}

// An empty file has nothing to be known by but its place: it is the first behind the one before it. On the
// same device, another file in this place has replaced it.
bool wmqFollower::tryPlace(const StreamListing &listing, const Position &wanted, bool &found) {
  bool stands = false;
  std::vector<StreamEntry> newer;
  if (!listNewer(listing, newer, stands)) return false;
  if (!stands && (wanted.former.known || !newer.empty())) return true;
  if (newer.empty() && !listing.hasCurrent) return true;
  const StreamEntry &inPlace = newer.empty() ? listing.current : newer.front();
  const bool moved = inPlace.identity.device != wanted.identity.device;
  // With no file before it, and old ones removed, nothing tells its inode from another file's.
  if (!stands && !moved) return true;
  return !(moved || inPlace.identity == wanted.identity) || tryEntry(inPlace, wanted, found);
}

// ------------------------------------------------------------------------------ what follows

// Old files behind the one that was the newest before the file that is read. `stands`: that one is still
// there, and so none of them is missing. False with wmq_errno.
bool wmqFollower::listNewer(const StreamListing &listing, std::vector<StreamEntry> &newer,
                            bool &stands) const {
  stands = false;
  for (const StreamEntry &old : listing.old) {
    if (former.known && old.suffix < former.suffix) continue;
    if (former.known && old.suffix == former.suffix) {
      OpenFile opened;
      if (!wmq::openEntry(old, opened)) return false;
      if (opened.isOpen() && !wmq::compareFirst(opened.get(), former.first, stands)) return wmq::failSystem();
      if (stands) continue;
    }
    newer.push_back(old);
  }
  // With all of them gone and the clock set back, suffixes may have begun again further down.
  if (newer.empty() && !stands) newer = listing.old;
  return true;
}

// False with wmq_errno; that there is none is no failure.
bool wmqFollower::findSuccessor(const StreamListing &listing, Successor &successor) const {
  successor = {};
  const bool isCurrent = file.isOpen() && listing.hasCurrent && listing.current.identity == entry.identity;
  if (isCurrent) return true;
  if (const StreamEntry *own = file.isOpen() ? listing.oldFile(entry.identity) : nullptr; own != nullptr) {
    const auto next = std::find_if(listing.old.begin(), listing.old.end(),
                                   [&](const StreamEntry &old) { return old.suffix > own->suffix; });
    successor.found = next != listing.old.end() || listing.hasCurrent;
    successor.entry = next != listing.old.end() ? *next : listing.current;
    successor.exact = true;
    return true;
  }
  // It is gone. One that was behind it when it was still there is known to be the next that is left.
  for (const StreamEntry &known : ahead) {
    if (const StreamEntry *const still = wmq::findAgain(listing, known); still != nullptr) {
      successor.found = successor.exact = true;
      successor.entry = *still;
      return true;
    }
    successor.missing.push_back(known);
  }
  bool stands = false;
  std::vector<StreamEntry> newer;
  if (!listNewer(listing, newer, stands)) return false;
  successor.found = !newer.empty() || listing.hasCurrent;
  successor.entry = newer.empty() ? listing.current : newer.front();
  // A follower that has waited for the stream begins with what it finds first.
  const bool beginsHere = resumedFrom.empty() && listing.old.empty();
  successor.exact = !file.isOpen() && !isLost && (former.known ? stands : beginsHere);
  return true;
}

// An old file was listed behind the one that is read, and nothing suggests that another list would say more.
bool wmqFollower::knowsNextOld() const {
  return file.isOpen() && !ahead.empty() && ahead.front().suffix != wmq::kNoSuffix &&
         wmq::looksUnchanged(path, listedDirectory);
}

// What could not be looked at to the end is looked at again.
wmqFollower::Step wmqFollower::lookForSuccessor() {
  if (knowsNextOld()) {
    state = State::superseded;
    return Step::again;
  }
  if (!watch.namesChanged()) return Step::waiting;
  const Step done = lookAtNames();
  if (done == Step::waiting) watch.namesSeen();
  return done;
}

wmqFollower::Step wmqFollower::lookAtNames() {
  FileStatus status;
  if (entry.suffix == wmq::kNoSuffix && wmq::statusOf(path.c_str(), status) &&
      status.identity == entry.identity)
    return Step::waiting;
  StreamListing listing;
  if (!list(listing)) return Step::failed;
  takePlaceIn(listing);
  Successor successor;
  if (!findSuccessor(listing, successor)) return Step::failed;
  if (!successor.found) return Step::waiting;
  // What has taken its place may be a copy of it.
  if (listing.oldFile(entry.identity) == nullptr && first.length > 0) {
    bool found = false;
    if (!locate(currentPosition(), found)) return Step::failed;
    if (found) return Step::again;
  }
  state = State::superseded;
  return Step::again;
}

wmqFollower::Step wmqFollower::moveOn() {
  // A list for each step would make the way through many old files as long as the square of their number.
  if (knowsNextOld()) {
    OpenFile opened;
    if (!wmq::openEntry(ahead.front(), opened)) return Step::failed;
    if (opened.isOpen()) return moveAlong(std::move(opened));
  }
  for (int tries = 0; tries < wmq::kMostTries; ++tries) {
    StreamListing listing;
    if (!list(listing)) return Step::failed;
    Successor chosen;
    if (!findSuccessor(listing, chosen)) return Step::failed;
    if (!chosen.found) {
      if (!isLost) return Step::waiting;
      owed = {WMQ_NOTICE_GAP, "the file of the position is gone, and there is no other", lostFile, -1};
      isLost = false;
      return Step::again;
    }
    OpenFile opened;
    if (!wmq::openEntry(chosen.entry, opened)) return Step::failed;
    if (!opened.isOpen()) continue;
    if (!list(listing)) return Step::failed;
    Successor confirmed;
    if (!findSuccessor(listing, confirmed)) return Step::failed;
    if (!confirmed.found || !(confirmed.entry.identity == chosen.entry.identity)) continue;
    if (!arrive(std::move(opened), confirmed)) return Step::failed;
    takePlaceIn(listing);
    return Step::again;
  }
  return Step::waiting;
}

// To the old file that was listed behind the one that is read.
wmqFollower::Step wmqFollower::moveAlong(OpenFile opened) {
  Successor next;
  next.found = next.exact = true;
  next.entry = ahead.front();
  if (!arrive(std::move(opened), next)) return Step::failed;
  ahead.pop_front();
  former = {true, entry.suffix, first};
  hasPlace = true;
  return Step::again;
}

wmqFollower::Step wmqFollower::payNotice() {
  giveNotice(owed.notice, owed.reason);
  detail.missingFiles = owed.missing.c_str();
  detail.missingBytes = owed.missingBytes;
  owed.notice = 0;
  return Step::given;
}

// What is to be told when the successor takes the place of the file that is read.
wmqFollower::Owed wmqFollower::noticeOf(const Successor &successor) const {
  std::string names;
  int64_t bytes = 0;
  for (const StreamEntry &gone : successor.missing) {
    if (gone.suffix == wmq::kNoSuffix) continue;
    names += (names.empty() ? "" : "\n") + gone.path;
    bytes += gone.size;
  }
  if (isLost && wmq::isCertain(successor.entry.identity, lostIdentity))
    return {WMQ_NOTICE_TRUNCATED,
            "the file of the position was cut or written anew; it is read from its first byte", lostFile, -1};
  if (isLost)
    return {WMQ_NOTICE_GAP,
            "the file of the position is gone; what came behind the position, up to this file, is missing",
            lostFile, -1};
  if (!successor.exact)
    return {WMQ_NOTICE_GAP,
            file.isOpen() ? "the file that was read is gone; files between it and this one may be missing"
                          : "files may have come and gone before this one",
            names, -1};
  if (!successor.missing.empty())
    return {WMQ_NOTICE_GAP, "files were removed before they were read", names, bytes};
  if (!file.isOpen()) return {};
  return {WMQ_NOTICE_ROTATED, endSeen ? "" : entry.path + " has no END_OF_STREAM line at its end", "", 0};
}

// All that may fail comes before the one step from file to file. Its place among the others is not taken yet.
bool wmqFollower::arrive(OpenFile opened, const Successor &successor) {
  Owed notice = noticeOf(successor);
  // Until the notice is given, the follower stands before what it tells of.
  std::string before = resumedFrom;
  if (notice.notice != 0 && before.empty()) before = wmq::positionText(currentPosition());
  if (!begin(std::move(opened), successor.entry, 0)) return false;
  owed = std::move(notice);
  resumedFrom = std::move(before);
  isLost = false;
  return true;
}
