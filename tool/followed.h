// A follower of the library, and what it tells in words.
#ifndef WMQ_TOOL_FOLLOWED_H
#define WMQ_TOOL_FOLLOWED_H

#include <memory>
#include <string>

#include "wmq/follow.h"

namespace wmq::tool {

struct CloseFollower {
  void operator()(wmqFollower *follower) const { wmq_followclose(follower); }
};
using Follower = std::unique_ptr<wmqFollower, CloseFollower>;

// "rotated", "torn", "gap", ...
const char *noticeName(int32_t notice);

// What a notice says, with the names and bytes that are missing.
std::string noticeText(const wmqFollowDetail &detail);

std::string positionOf(const Follower &follower);

// What errno says of a stream's files.
std::string systemFailure();

// Why the last call for a follower has failed.
std::string followFailure();

// The file or directory at which it has failed, of a stream whose current file is `path`; errno stays.
std::string failedPart(const std::string &path);

}  // namespace wmq::tool

#endif
