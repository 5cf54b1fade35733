// A directory of a test's own, removed with all it holds.
#ifndef WMQ_TESTS_TEMPORARY_DIRECTORY_H
#define WMQ_TESTS_TEMPORARY_DIRECTORY_H

#include <string>

namespace wmq::testing {

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory &) = delete;
  TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

  const std::string &path() const { return directory_; }

 private:
  std::string directory_;
};

// "DIRECTORY/NAME".
std::string operator/(const TemporaryDirectory &directory, const std::string &name);

// Makes a directory the current one for as long as it stands.
class CurrentDirectory {
 public:
  explicit CurrentDirectory(const std::string &directory);
  ~CurrentDirectory();
  CurrentDirectory(const CurrentDirectory &) = delete;
  CurrentDirectory &operator=(const CurrentDirectory &) = delete;

 private:
  std::string former_;
};

}  // namespace wmq::testing

#endif
