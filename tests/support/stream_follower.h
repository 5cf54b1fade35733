// A follower of a test's own, and what it gives in words.
#ifndef WMQ_TESTS_STREAM_FOLLOWER_H
#define WMQ_TESTS_STREAM_FOLLOWER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "wmq/follow.h"

namespace wmq::testing {

struct CloseFollower {
  void operator()(wmqFollower *follower) const { wmq_followclose(follower); }
};

class StreamFollower {
 public:
  explicit StreamFollower(const std::string &path, int32_t from = WMQ_FROM_OLDEST, int poll = 0);

  // One that was opened elsewhere.
  explicit StreamFollower(wmqFollower *opened) : follower(opened) {}

  // Goes on at a position.
  StreamFollower(const std::string &path, const std::string &position, int poll = 0);

  bool isOpen() const { return follower != nullptr; }
  wmqFollower *get() const { return follower.get(); }

  // What comes next: the number of a LOG_SWITCH, the type's name for other records, "line: ...", "torn: ...",
  // "rotated", "end in the middle", "truncated", "gap", "gap of FILE,...: BYTES"; "" when nothing comes
  // within `timeout` milliseconds, "failed ERROR".
  std::string next(int timeout = 0);

  // The same for what a call of the library has come upon.
  std::string inWords(int result, const eventRecord *record) const;

  // All that comes, up to nothing.
  std::vector<std::string> rest(int timeout = 0);

  std::string position() const;
  const wmqFollowDetail &detail() const { return *wmq_followdetail(follower.get()); }

 private:
  std::string noticeInWords() const;

  std::unique_ptr<wmqFollower, CloseFollower> follower;
};

}  // namespace wmq::testing

#endif
