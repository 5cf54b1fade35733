// The files of a stream in their order: old ones by suffix, then the current one.
#ifndef WMQ_FOLLOW_STREAM_LISTING_H
#define WMQ_FOLLOW_STREAM_LISTING_H

#include <cstdint>
#include <string>
#include <vector>

#include "follow/file_identity.h"

namespace wmq {

inline constexpr int64_t kNoSuffix = INT64_MIN;  // of the current file

struct StreamEntry {
  int64_t suffix = kNoSuffix;
  std::string path;
  FileIdentity identity;
  int64_t size = 0;
};

struct StreamListing {
  std::vector<StreamEntry> old;  // ascending
  bool hasCurrent = false;
  StreamEntry current;

  const StreamEntry *oldFile(const FileIdentity &identity) const;
};

// Lists old files ("PATH.NUMBER", regular ones) and looks for the current one. Each name that was there from
// the beginning of the call to its end is found. False with errno.
bool listStream(const std::string &path, StreamListing &listing);

// Directory part of a path, "." for none, and what stands behind it.
std::string directoryPart(const std::string &path);
std::string namePart(const std::string &path);

}  // namespace wmq

#endif
