#include "companion/limits.h"

#include <algorithm>

#include "wmq/companion.h"

namespace wmq {

void (*limitConverter)(int32_t *limits, int direction) = nullptr;

namespace {

constexpr int sizeLimits[] = {WMX_RLIMIT_FSIZE, WMX_RLIMIT_DATA, WMX_RLIMIT_STACK,
                              WMX_RLIMIT_CORE,  WMX_RLIMIT_RSS,  WMX_RLIMIT_SWAP};

bool isUnlimited(int32_t limit) { return limit == -1 || limit == INT32_MAX; }

int32_t saturated(int64_t limit) {
  return static_cast<int32_t>(std::clamp<int64_t>(limit, INT32_MIN, INT32_MAX));
}

}  // namespace

}  // namespace wmq

extern "C" {

int unifiedUnit = 0;
int rlimitUnit = 1;

const char *const wmxRlimitsStr[WMX_RLIM_NLIMITS + 1] = {"WMX_RLIMIT_CPU",
                                                         "WMX_RLIMIT_FSIZE",
                                                         "WMX_RLIMIT_DATA",
                                                         "WMX_RLIMIT_STACK",
                                                         "WMX_RLIMIT_CORE",
                                                         "WMX_RLIMIT_RSS",
                                                         "WMX_RLIMIT_NOFILE",
                                                         "WMX_RLIMIT_OPEN_MAX",
                                                         "WMX_RLIMIT_SWAP",
                                                         "WMX_RLIMIT_RUN",
                                                         "WMX_RLIMIT_PROCESS",
                                                         "WMX_RLIMIT_THREAD",
                                                         nullptr};

const char *const jobRlimitsStr[WMX_RLIM_NLIMITS + 1] = {"JOB_RLIMIT_CPU",
                                                         "JOB_RLIMIT_FSIZE",
                                                         "JOB_RLIMIT_DATA",
                                                         "JOB_RLIMIT_STACK",
                                                         "JOB_RLIMIT_CORE",
                                                         "JOB_RLIMIT_RSS",
                                                         "JOB_RLIMIT_NOFILE",
                                                         "JOB_RLIMIT_OPEN_MAX",
                                                         "JOB_RLIMIT_SWAP",
                                                         "JOB_RLIMIT_RUN",
                                                         "JOB_RLIMIT_PROCESS",
                                                         "JOB_RLIMIT_THREAD",
                                                         nullptr};

void convertRLimit(int32_t *limits, int direction) {
  if (wmq::limitConverter != nullptr) {
    wmq::limitConverter(limits, direction);
    return;
  }
  const int64_t unit = rlimitUnit;
  if (limits == nullptr || unit <= 1 || (direction != 0 && direction != 1)) return;
  for (const int slot : wmq::sizeLimits) {
    int32_t &limit = limits[slot];
    if (!wmq::isUnlimited(limit)) limit = wmq::saturated(direction == 0 ? limit * unit : limit / unit);
  }
}
}
