#include "named_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <system_error>

namespace wmq::tool {

namespace {

namespace fs = std::filesystem;

constexpr int mostLinks = 40;

// Of a path of which not all exists: as far as it does.
fs::path resolved(const fs::path &path) {
  std::error_code error;
  fs::path whole = fs::weakly_canonical(path, error);
  return error ? path : whole;
}

// Follows also a link to what does not exist: opening creates that.
fs::path behindLinks(fs::path path) {
  std::error_code error;
  for (int i = 0; i < mostLinks && fs::is_symlink(path, error); ++i) {
    const fs::path target = fs::read_symlink(path, error);
    if (error) break;
    path = path.parent_path() / target;
  }
  return resolved(path);
}

bool isWholeNumber(const std::string &text) {
  const size_t begin = text.find_first_of("+-") == 0 ? 1 : 0;
  return text.size() > begin && text.find_first_not_of("0123456789", begin) == std::string::npos;
}

std::string shown(const std::string &name, const char *standard) { return name == "-" ? standard : name; }

}  // namespace

NamedFile::NamedFile(const std::string &name, int standardDescriptor) {
  struct stat status {};
  const bool standard = name == "-";
  const int result = standard ? fstat(standardDescriptor, &status) : stat(name.c_str(), &status);
  if (result == 0 && S_ISREG(status.st_mode)) file = {status.st_dev, status.st_ino};
  special = result == 0 && !file;
  if (standard) {
    path = "-" + std::to_string(standardDescriptor);
    return;
  }
  std::error_code error;
  fs::path whole = fs::absolute(name, error);
  if (error) whole = name;
  path = behindLinks(whole).string();
  directory = resolved(whole.parent_path()).string();
  base = whole.filename().string();
}

bool NamedFile::operator==(const NamedFile &other) const {
  return file && other.file ? file == other.file : path == other.path;
}

bool NamedFile::isOldFileOf(const NamedFile &stream) const {
  const std::string beginning = stream.base + ".";
  return !base.empty() && !stream.base.empty() && directory == stream.directory &&
         base.compare(0, beginning.size(), beginning) == 0 && isWholeNumber(base.substr(beginning.size()));
}

void refuseInputAsOutput(const std::string &input, const std::string &output) {
  const NamedFile in(input, STDIN_FILENO);
  const NamedFile out(output, STDOUT_FILENO);
  if (in.isSpecial() || !(in == out)) return;
  throw CLI::ValidationError(shown(input, "standard input") + " and " + shown(output, "standard output") +
                             " are the same file, which cannot be read and written at once");
}

}  // namespace wmq::tool
