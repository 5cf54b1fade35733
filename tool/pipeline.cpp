#include "pipeline.h"

#include <sched.h>

#include <algorithm>

namespace wmq::tool {

unsigned availableThreads() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
    return static_cast<unsigned>(std::max(1, CPU_COUNT(&allowed)));
  return std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace wmq::tool
