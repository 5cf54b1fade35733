// The C interface: what is thrown for lack of memory stops here.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "follow/follower.h"

namespace wmq {
namespace {

template <typename Result>
Result withoutThrowing(Result failed, auto &&work) {
  try {
    return work();
  } catch (...) {
    wmq_errno = WMQE_NO_MEM;
    return failed;
  }
}

bool areUsable(const wmqFollowParams *params) {
  if (params == nullptr || params->path == nullptr || *params->path == '\0') return false;
  if (params->from == WMQ_FROM_POSITION) return params->position != nullptr;
  return params->from >= WMQ_FROM_OLDEST && params->from < WMQ_FROM_POSITION;
}

// One piece of memory: the elements, then their paths.
wmqStreamFile *copyOf(const std::vector<StreamEntry> &entries) {
  size_t size = std::max<size_t>(entries.size(), 1) * sizeof(wmqStreamFile);
  for (const StreamEntry &entry : entries) size += entry.path.size() + 1;
  auto *const files = static_cast<wmqStreamFile *>(std::malloc(size));
  if (files == nullptr) throw std::bad_alloc();
  char *text = reinterpret_cast<char *>(files + entries.size());
  for (size_t i = 0; i < entries.size(); ++i) {
    const bool isCurrent = entries[i].suffix == kNoSuffix;
    files[i] = {text, isCurrent ? 1 : 0, isCurrent ? 0 : entries[i].suffix};
    std::memcpy(text, entries[i].path.c_str(), entries[i].path.size() + 1);
    text += entries[i].path.size() + 1;
  }
  return files;
}

wmqStreamFile *listFiles(const char *path, size_t &count) {
  StreamListing listing;
  FileStatus status;
  // The current file may be gone by now, as after any listing.
  const bool listed = listStream(path, listing) &&
                      (!listing.hasCurrent || (statusOf(path, status) ? isUsable(status) : errno == ENOENT));
  if (!listed) {
    wmq_errno = WMQE_SYS;
    return nullptr;
  }
  if (listing.hasCurrent) listing.old.push_back(listing.current);
  wmqStreamFile *const files = copyOf(listing.old);
  count = listing.old.size();
  return files;
}

}  // namespace
}  // namespace wmq

wmqFollower *wmq_followopen(const wmqFollowParams *params) {
  if (!wmq::areUsable(params)) {
    wmq_errno = WMQE_BAD_ARG;
    return nullptr;
  }
  return wmq::withoutThrowing<wmqFollower *>(nullptr, [&]() -> wmqFollower * {
    auto follower = std::make_unique<wmqFollower>();
    if (follower->open(*params)) return follower.release();
    const int why = errno;
    follower.reset();
    errno = why;
    return nullptr;
  });
}

int wmq_follownext(wmqFollower *follower, eventRecord **record, int timeout) {
  if (follower == nullptr || record == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return WMQ_FOLLOW_FAILED;
  }
  return wmq::withoutThrowing<int>(WMQ_FOLLOW_FAILED, [&] { return follower->next(record, timeout); });
}

const wmqFollowDetail *wmq_followdetail(const wmqFollower *follower) {
  static constexpr wmqFollowDetail nothing = wmq::emptyDetail();
  return follower != nullptr ? &follower->lastDetail() : &nothing;
}

int wmq_followposition(wmqFollower *follower, char position[WMQ_POSITION_SIZE]) {
  if (follower == nullptr || position == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  return wmq::withoutThrowing<int>(-1, [&] {
    follower->position(position);
    return 0;
  });
}

void wmq_followclose(wmqFollower *follower) { delete follower; }

void wmq_followwake(wmqFollower *follower) {
  if (follower != nullptr) follower->wake();
}

int wmq_followdescriptor(const wmqFollower *follower) {
  return follower != nullptr ? follower->descriptor() : -1;
}

wmqStreamFile *wmq_streamfiles(const char *path, size_t *count) {
  if (path == nullptr || *path == '\0' || count == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return nullptr;
  }
  return wmq::withoutThrowing<wmqStreamFile *>(nullptr, [&] { return wmq::listFiles(path, *count); });
}
