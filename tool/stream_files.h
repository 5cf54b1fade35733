// The files of a stream, old ones and the current one.
#ifndef WMQ_TOOL_STREAM_FILES_H
#define WMQ_TOOL_STREAM_FILES_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "blocks.h"

namespace wmq::tool {

struct StreamFile {
  std::string path;
  bool isCurrent = false;
  int64_t suffix = 0;              // of an old file
  std::shared_ptr<Blocks> opened;  // the current file, which stays the same when it is renamed

  bool operator==(const StreamFile &other) const { return path == other.path; }
};

// Finds the files of the stream whose current file is `path`, in their order. False with errno when that is
// impossible, or there are none.
bool findStream(const std::string &path, std::vector<StreamFile> &files);

// The current file, which ends with END_OF_STREAM now, has become an old one since they were found.
bool wasRotatedSince(const std::string &path, const std::vector<StreamFile> &files);

}  // namespace wmq::tool

#endif
