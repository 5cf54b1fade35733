#include "stream_files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "wmq/follow.h"

namespace wmq::tool {

namespace {

// A stream that is rotated while its files are listed is listed again.
constexpr int mostTries = 100;

// A writer that is alive is done with a rotation long before. One that is not has left its files as they are.
constexpr auto stepTime = std::chrono::milliseconds(100);

bool list(const std::string &path, std::vector<StreamFile> &files) {
  size_t count = 0;
  const std::unique_ptr<wmqStreamFile, decltype(&std::free)> found(wmq_streamfiles(path.c_str(), &count),
                                                                   std::free);
  files.clear();
  if (!found && wmq_errno == WMQE_NO_MEM) errno = ENOMEM;
  for (size_t i = 0; i < count; ++i) {
    const wmqStreamFile &file = found.get()[i];
    files.push_back({file.path, file.isCurrent != 0, file.suffix, nullptr});
  }
  return found != nullptr;
}

}  // namespace

bool findStream(const std::string &path, std::vector<StreamFile> &files) {
  for (int tries = 0; tries < mostTries; ++tries) {
    if (!list(path, files)) return false;
    errno = ENOENT;
    if (files.empty()) return false;
    if (StreamFile &last = files.back(); last.isCurrent)
      last.opened = std::make_shared<Blocks>(last.path);
    else
      std::this_thread::sleep_for(stepTime);
    std::vector<StreamFile> after;
    if (!list(path, after)) return false;
    if (after == files) return true;
  }
  errno = EBUSY;
  return false;
}

bool wasRotatedSince(const std::string &path, const std::vector<StreamFile> &files) {
  const auto isNew = [&](const StreamFile &file) {
    return !file.isCurrent && std::find(files.begin(), files.end(), file) == files.end();
  };
  std::this_thread::sleep_for(stepTime);
  std::vector<StreamFile> now;
  return list(path, now) && std::any_of(now.begin(), now.end(), isNew);
}

}  // namespace wmq::tool
