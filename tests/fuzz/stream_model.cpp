#include "fuzz/stream_model.h"

#include <algorithm>

#include "wmq/event_types.h"

namespace wmq::testing {

// Larger suffixes are no times: such files are counted, but neither removed nor followed by a larger one.
static constexpr int64_t kLargestSuffix = INT32_MAX - 1;

void StreamModel::open(int64_t maxSize, int maxOldFiles) {
  if (open_) return;
  open_ = readable_ = true;
  maxSize_ = maxSize;
  maxOldFiles_ = maxOldFiles;
  readTo_ = 0;
}

void StreamModel::removeOldest() {
  while (oldFiles.size() >= static_cast<size_t>(maxOldFiles_) && oldFiles.begin()->first <= kLargestSuffix)
    oldFiles.erase(oldFiles.begin());
}

bool StreamModel::rotate(int64_t now) {
  if (static_cast<int64_t>(current.size()) < maxSize_) return true;
  if (maxOldFiles_ < 1) return false;
  removedFiles_ = oldFiles.size() >= static_cast<size_t>(maxOldFiles_);  // told so even if none could go
  removeOldest();
  int64_t suffix = now;
  for (const auto &[taken, content] : oldFiles)
    if (taken < kLargestSuffix) suffix = std::max(suffix, taken + 1);
  while (oldFiles.contains(suffix)) ++suffix;
  oldFiles[suffix] = current + "\"END_OF_STREAM\" \"" WMQ_FORMAT_VERSION "\" " +
                     std::to_string(static_cast<int32_t>(now)) + '\n';
  current.clear();
  readable_ = false;
  return true;
}

bool StreamModel::write(const std::string &bytes, bool check, int64_t now) {
  removedFiles_ = false;
  if (check && !rotate(now)) return false;
  current += bytes;
  return true;
}

std::optional<std::string> StreamModel::nextLine() {
  while (readable_ && readTo_ < current.size()) {
    const size_t end = std::min(current.find('\n', readTo_), current.size());
    const std::string line = current.substr(readTo_, end - readTo_);
    readTo_ = std::min(end + 1, current.size());
    if (!line.empty() && line[0] != '#') return line;
  }
  return std::nullopt;
}

}  // namespace wmq::testing
