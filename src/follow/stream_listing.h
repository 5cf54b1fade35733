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
  bool settled = false;  // see FileStatus
};

struct StreamListing {
  std::vector<StreamEntry> old;  // ascending
  bool hasCurrent = false;
  StreamEntry current;
  FileStatus directory;  // before it was read

  const StreamEntry *oldFile(const FileIdentity &identity) const;
};

// The same files under the same names. They may have grown.
bool operator==(const StreamListing &a, const StreamListing &b);

// What changes faster than it can be looked at is looked at so often.
inline constexpr int kMostTries = 100;

// Old files ("PATH.NUMBER", regular ones) and the current one, as they stood at one moment: files are renamed
// and removed while they are listed, so that it takes two lists that agree. False with errno, which is EBUSY
// when no two do.
bool listStream(const std::string &path, StreamListing &listing);

// The directory is the one that was listed, and as far as it tells nothing has been created, renamed or
// removed in it since. Its clock may stand still for some milliseconds: this only decides what is worth a
// look.
bool looksUnchanged(const std::string &path, const FileStatus &directory);

// Directory part of a path, "." for none, and what stands behind it.
std::string directoryPart(const std::string &path);
std::string namePart(const std::string &path);

}  // namespace wmq

#endif
