// A limit of the process (setrlimit(2)), for as long as it stands.
#ifndef WMQ_TESTS_RESOURCE_LIMIT_H
#define WMQ_TESTS_RESOURCE_LIMIT_H

#include <sys/resource.h>

#include <csignal>

namespace wmq::testing {

class ResourceLimit {
 public:
  ResourceLimit(decltype(RLIMIT_FSIZE) resource, rlim_t value)
      : resource_(resource), formerAction_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(resource_, &former_);
    const rlimit lowered{value, former_.rlim_max};
    setrlimit(resource_, &lowered);
  }
  ~ResourceLimit() {
    setrlimit(resource_, &former_);
    std::signal(SIGXFSZ, formerAction_);
  }
  ResourceLimit(const ResourceLimit &) = delete;
  ResourceLimit &operator=(const ResourceLimit &) = delete;

 private:
  decltype(RLIMIT_FSIZE) resource_;
  void (*formerAction_)(int);  // a file beyond its limit is an error here, not the end of the program
  rlimit former_{};
};

}  // namespace wmq::testing

#endif
