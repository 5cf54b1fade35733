// User names as a test wants them, and what the system log hears.
#ifndef WMQ_TESTS_USER_DIRECTORY_H
#define WMQ_TESTS_USER_DIRECTORY_H

#include <cerrno>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace wmq::testing {

// Stands in for the user database and for the system log for as long as it stands. Any thread may ask and be
// heard meanwhile.
class UserDirectory {
 public:
  explicit UserDirectory(std::map<int32_t, std::string> known = {});
  ~UserDirectory();
  UserDirectory(const UserDirectory &) = delete;
  UserDirectory &operator=(const UserDirectory &) = delete;

  std::map<int32_t, std::string> names;
  int reason = ENOENT;              // of a lookup that fails: of any user that is not in `names`
  std::vector<int32_t> asked = {};  // the user ids that were looked up

  struct Message {
    int priority;
    std::string text;

    bool operator==(const Message &) const = default;
  };
  std::vector<Message> messages = {};

  // The message of a reader whose lookup failed.
  Message failureOf(const std::string &reader) const;

 private:
  static int lookUp(int32_t userId, char *name, size_t size);
  static void hear(int priority, const char *message);

  std::mutex mutex_;  // of what was asked and heard
  int (*systemLookup_)(int32_t, char *, size_t);
  void (*systemLog_)(int, const char *);
};

}  // namespace wmq::testing

#endif
