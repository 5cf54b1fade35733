#include "support/user_directory.h"

#include <syslog.h>

#include <cstring>
#include <utility>

#include "companion/log.h"
#include "companion/users.h"

namespace wmq::testing {

static UserDirectory *current = nullptr;

UserDirectory::UserDirectory(std::map<int32_t, std::string> known)
    : names(std::move(known)), systemLookup_(userLookup), systemLog_(logSink) {
  current = this;
  userLookup = lookUp;
  logSink = hear;
  forgetUsers();
}

UserDirectory::~UserDirectory() {
  userLookup = systemLookup_;
  logSink = systemLog_;
  forgetUsers();
  current = nullptr;
}

int UserDirectory::lookUp(int32_t userId, char *name, size_t size) {
  {
    const std::lock_guard lock(current->mutex_);
    current->asked.push_back(userId);
  }
  const auto found = current->names.find(userId);
  if (found == current->names.end()) return current->reason;
  if (found->second.size() >= size) return ERANGE;
  std::memcpy(name, found->second.c_str(), found->second.size() + 1);
  return 0;
}

void UserDirectory::hear(int priority, const char *message) {
  const std::lock_guard lock(current->mutex_);
  current->messages.push_back({priority, message});
}

UserDirectory::Message UserDirectory::failureOf(const std::string &reader) const {
  return {LOG_ERR, reader + ": getWMXUserByUid_() failed. " + std::strerror(reason) + "."};
}

}  // namespace wmq::testing
