// Where benchmarks have their files.
#ifndef WMQ_BENCH_PLACES_H
#define WMQ_BENCH_PLACES_H

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace wmq::bench {

// A name for the table, and a path to which nothing else writes.
struct Place {
  const char *name;
  std::string path;
};

// A file system as streams lie on: what WMQ_BENCH_DIRECTORY names is to be one.
inline Place onDisk(const std::string &file) {
  const char *given = std::getenv("WMQ_BENCH_DIRECTORY");
  return {"disk",
          (given != nullptr ? given : "/var/tmp") + ("/wmq-bench-" + file) + std::to_string(getpid())};
}

inline Place inMemory(const std::string &file) {
  return {"shm", "/dev/shm/wmq-bench-" + file + std::to_string(getpid())};
}

}  // namespace wmq::bench

#endif
