#include "support/temporary_directory.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace wmq::testing {

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = std::filesystem::temp_directory_path() / "wmq-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no directory like " + pattern);
  directory_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

std::string operator/(const TemporaryDirectory &directory, const std::string &name) {
  return directory.path() + "/" + name;
}

CurrentDirectory::CurrentDirectory(const std::string &directory)
    : former_(std::filesystem::current_path().string()) {
  std::filesystem::current_path(directory);
}

CurrentDirectory::~CurrentDirectory() {
  std::error_code ignored;
  std::filesystem::current_path(former_, ignored);
}

}  // namespace wmq::testing
