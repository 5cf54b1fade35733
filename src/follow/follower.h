// One follower: which file it reads, how far, and what comes behind it.
#ifndef WMQ_FOLLOW_FOLLOWER_H
#define WMQ_FOLLOW_FOLLOWER_H

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "follow/change_watch.h"
#include "follow/line_window.h"
#include "follow/position_token.h"
#include "follow/stream_listing.h"
#include "wmq/follow.h"

namespace wmq {

// Closes itself.
class OpenFile {
 public:
  OpenFile() = default;
  explicit OpenFile(int descriptor) : fd(descriptor) {}
  OpenFile(OpenFile &&other) noexcept : fd(other.fd) { other.fd = -1; }
  OpenFile &operator=(OpenFile &&other) noexcept {
    std::swap(fd, other.fd);
    return *this;
  }
  ~OpenFile();

  bool isOpen() const { return fd >= 0; }
  int get() const { return fd; }

 private:
  int fd = -1;
};

// The end of what was read: what a position sums up.
struct ReadLast {
  char bytes[256];
  size_t length = 0;

  void take(const LinePart &part);
  bool takeBefore(int fd, int64_t offset);  // false with wmq_errno
};

// Without any null text.
constexpr wmqFollowDetail emptyDetail() {
  wmqFollowDetail detail{};
  detail.file = detail.text = detail.reason = detail.missingFiles = "";
  return detail;
}

}  // namespace wmq

struct wmqFollower {
 public:
  // All of these return false, or WMQ_FOLLOW_FAILED, with wmq_errno.
  bool open(const wmqFollowParams &params);
  int next(eventRecord **record, int timeout);
  void position(char *text);

  void wake() const { watch.wake(); }
  int descriptor() const { return watch.descriptor(); }
  const wmqFollowDetail &lastDetail() const { return detail; }

 private:
  // What follows the file that is read.
  struct Successor {
    bool found = false;
    wmq::StreamEntry entry;
    bool exact = false;  // nothing stands between the two but what `missing` names
    std::vector<wmq::StreamEntry> missing;
  };

  // A notice of what has been done already, until it is given.
  struct Owed {
    int notice = 0;  // 0: none
    std::string reason;
    std::string missing;
    int64_t missingBytes = 0;
  };

  enum class Step {
    given,    // `detail` is to be handed out
    again,    // something has changed: look again
    waiting,  // nothing to do until something changes
    failed    // wmq_errno
  };

  // What is known of the file that is read.
  enum class State {
    live,        // it may grow
    superseded,  // another has taken its place: nothing comes any more but what has not been read yet
    drained,     // all of it has been read
    cut          // what had been read of it is no longer there
  };

  bool list(wmq::StreamListing &listing) const;
  bool openAt(int32_t from);
  bool openOldest();
  bool openCurrent(bool atEnd);
  bool resume(const char *text);
  bool locate(const wmq::Position &wanted, bool &found);
  bool tryEntry(const wmq::StreamEntry &candidate, const wmq::Position &wanted, bool &found);
  bool tryEntries(const wmq::StreamListing &listing, const wmq::Position &wanted, bool &found);
  bool tryPlace(const wmq::StreamListing &listing, const wmq::Position &wanted, bool &found);

  Step step(eventRecord **record);
  Step give(wmq::LinePart &part, eventRecord **record);
  void giveRecord();
  void giveBadLine(int error);
  void giveNotice(int notice, const std::string &why);
  Owed noticeOf(const Successor &successor) const;
  Step payNotice();
  Step goneShort(bool rewritten);
  Step beginAnew();
  Step lookForSuccessor();
  Step lookAtNames();
  Step moveOn();
  Step moveAlong(wmq::OpenFile opened);
  bool knowsNextOld() const;
  bool arrive(wmq::OpenFile opened, const Successor &successor);

  bool begin(wmq::OpenFile opened, const wmq::StreamEntry &found, int64_t offset);
  bool takePlace();
  void takePlaceIn(const wmq::StreamListing &listing);
  bool isSettled();
  wmq::Position currentPosition();
  bool listNewer(const wmq::StreamListing &listing, std::vector<wmq::StreamEntry> &newer, bool &stands) const;
  bool findSuccessor(const wmq::StreamListing &listing, Successor &successor) const;
  void restoreText();

  std::string path;
  wmq::ChangeWatch watch;
  bool isFollowing = false;  // the opening is done

  wmq::OpenFile file;  // what is read; not open while there is none yet
  wmq::StreamEntry entry;
  wmq::LineWindow window;
  State state = State::live;
  bool endSeen = false;   // an END_OF_STREAM line was passed over, and nothing has come behind it yet
  int64_t endOffset = 0;  // behind it
  wmq::ReadLast end;

  bool hasPlace = false;  // `former` and `ahead` tell of the file that is read
  wmq::FormerFile former;
  std::deque<wmq::StreamEntry> ahead;  // files behind the one that is read, when they were listed last
  wmq::FileStatus listedDirectory;     // at that time
  bool wasRewritten = false;           // with State::cut
  bool isLost = false;                 // the file of the position is gone, and nobody has been told yet
  std::string lostFile;
  wmq::FileIdentity lostIdentity;

  wmq::Extract first;  // of the file that is read
  bool firstIsWhole = false;
  int64_t given = 0;        // behind what was handed out last
  wmq::ReadLast last;       // before it
  std::string resumedFrom;  // the position, until something is handed out

  Owed owed;

  // What `detail` points to, beside the last notice that was owed.
  wmqFollowDetail detail = wmq::emptyDetail();
  std::string reason;
  std::string fileName;
  char *restored = nullptr;  // the byte in the window in whose place a NUL stands
  char restoredByte = 0;
};

#endif
