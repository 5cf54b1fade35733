// Reads the files of a stream, and tells a check what they hold.
#ifndef WMQ_TOOL_CHECKED_FILES_H
#define WMQ_TOOL_CHECKED_FILES_H

#include <vector>

#include "faults.h"
#include "progress.h"
#include "stream_check.h"
#include "stream_files.h"

namespace wmq::tool {

// What cannot be read is told to `faults`, and ends it.
void checkFiles(const std::vector<StreamFile> &files, unsigned threads, StreamCheck &check, Faults &faults,
                Progress &progress);

}  // namespace wmq::tool

#endif
