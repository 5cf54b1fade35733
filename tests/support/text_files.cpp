#include "support/text_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace wmq::testing {

static void put(const std::string &path, std::string_view content, std::ios::openmode mode) {
  std::ofstream file(path, std::ios::binary | mode);
  file << content;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

std::string contentOf(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "(missing)";
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void makeFile(const std::string &path, std::string_view content) { put(path, content, std::ios::trunc); }

void appendTo(const std::string &path, std::string_view content) { put(path, content, std::ios::app); }

bool exists(const std::string &path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

std::vector<std::string> namesIn(const std::string &directory) {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(directory))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

unsigned permissionsOf(const std::string &path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : ~0U;
}

int openDescriptors() {
  const std::filesystem::directory_iterator listing("/proc/self/fd");
  return static_cast<int>(std::distance(begin(listing), end(listing)));
}

}  // namespace wmq::testing
