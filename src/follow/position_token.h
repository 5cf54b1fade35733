// A place in a stream as a line of text.
#ifndef WMQ_FOLLOW_POSITION_TOKEN_H
#define WMQ_FOLLOW_POSITION_TOKEN_H

#include <string>

#include "follow/file_identity.h"
#include "follow/stream_listing.h"

namespace wmq {

// The newest of the old files that had been there when the current one was begun to be read. What comes
// behind it comes behind the current one, too, when that is gone.
struct FormerFile {
  bool known = false;
  int64_t suffix = kNoSuffix;
  Extract first;
};

struct Position {
  bool hasFile = false;  // false: no file had been there yet
  FileIdentity identity;
  int64_t suffix = kNoSuffix;  // kNoSuffix: it was the current one
  Extract first;               // its first line, as far as it had come
  int64_t offset = 0;
  Extract last;  // what was read last, before the offset
  FormerFile former;
};

// At most WMQ_POSITION_SIZE - 1 characters.
std::string positionText(const Position &position);

// False for a text that is no position.
bool readPosition(const std::string &text, Position &position);

}  // namespace wmq

#endif
