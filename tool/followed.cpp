#include "followed.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "text.h"

namespace wmq::tool {

const char *noticeName(int32_t notice) {
  switch (notice) {
    case WMQ_NOTICE_ROTATED:
      return "rotated";
    case WMQ_NOTICE_END_IN_MIDDLE:
      return "end in the middle";
    case WMQ_NOTICE_TORN:
      return "torn";
    case WMQ_NOTICE_GAP:
      return "gap";
    default:
      return "truncated";
  }
}

std::string noticeText(const wmqFollowDetail &detail) {
  std::string text = detail.reason;
  std::string names = detail.missingFiles;
  std::replace(names.begin(), names.end(), '\n', ' ');
  if (!names.empty()) text += ": " + names;
  if (detail.notice == WMQ_NOTICE_GAP)
    text += detail.missingBytes < 0
                ? " (how much is not known)"
                : " (" + counted(static_cast<uint64_t>(detail.missingBytes), "byte") + ")";
  return text;
}

std::string positionOf(const Follower &follower) {
  char position[WMQ_POSITION_SIZE];
  return wmq_followposition(follower.get(), position) == 0 ? position : "";
}

std::string systemFailure() { return errno == EINVAL ? "Not a regular file" : std::strerror(errno); }

std::string followFailure() { return wmq_errno == WMQE_SYS ? systemFailure() : wmq_strerror(wmq_errno); }

std::string failedPart(const std::string &path) {
  const int reason = errno;
  std::string failed = path;
  size_t count = 0;
  const std::unique_ptr<wmqStreamFile, decltype(&std::free)> files(wmq_streamfiles(path.c_str(), &count),
                                                                   std::free);
  // Files need not be there.
  if (!files && reason == ENOENT) failed = std::filesystem::path(path).parent_path();
  for (size_t i = 0; files && i < count; ++i) {
    const int fd = open(files.get()[i].path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0 && errno == reason) {
      failed = files.get()[i].path;
      break;
    }
    if (fd >= 0) close(fd);
  }
  errno = reason;
  return failed;
}

}  // namespace wmq::tool
