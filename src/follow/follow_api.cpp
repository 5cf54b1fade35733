// The C interface: what is thrown for lack of memory stops here.
#include <cerrno>
#include <memory>

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
  static const wmqFollowDetail nothing = wmq::emptyDetail();
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
