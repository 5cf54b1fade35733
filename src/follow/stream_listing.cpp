#include "follow/stream_listing.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "wmq.stream/stream_file.h"

namespace wmq {
namespace {

struct CloseDirectory {
  void operator()(DIR *directory) const { closedir(directory); }
};

bool hasSuffix(const char *entry, const std::string &name, int64_t &suffix) {
  const char *const text = suffixOf(entry, name.c_str());
  if (text == nullptr) return false;
  suffix = std::strtoll(text, nullptr, 10);
  return suffix <= kLastSuffix && suffix > kNoSuffix;
}

bool bySuffix(const StreamEntry &a, const StreamEntry &b) {
  return a.suffix != b.suffix ? a.suffix < b.suffix : a.path < b.path;
}

}  // namespace

std::string directoryPart(const std::string &path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string namePart(const std::string &path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

const StreamEntry *StreamListing::oldFile(const FileIdentity &identity) const {
  for (const StreamEntry &entry : old)
    if (entry.identity == identity) return &entry;
  return nullptr;
}

bool operator==(const StreamListing &a, const StreamListing &b) {
  const auto isSame = [](const StreamEntry &one, const StreamEntry &other) {
    return one.path == other.path && one.identity == other.identity;
  };
  return std::equal(a.old.begin(), a.old.end(), b.old.begin(), b.old.end(), isSame) &&
         a.hasCurrent == b.hasCurrent && (!a.hasCurrent || isSame(a.current, b.current));
}

// What is renamed or removed meanwhile may be on the list or not, each file for itself.
static bool listOnce(const std::string &path, StreamListing &listing) {
  listing = {};
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir(directoryPart(path).c_str()));
  if (directory == nullptr) return false;
  const std::string name = namePart(path);
  const std::string before = path.substr(0, path.size() - name.size());
  for (;;) {
    errno = 0;
    const dirent *const entry = readdir(directory.get());
    if (entry == nullptr) break;
    StreamEntry found;
    FileStatus status;
    if (!hasSuffix(entry->d_name, name, found.suffix)) continue;
    if (!statusOfEntry(dirfd(directory.get()), entry->d_name, status)) {
      if (errno == ENOENT) continue;  // removed meanwhile
      return false;
    }
    if (!status.regular) continue;
    found.path = before + entry->d_name;
    found.identity = status.identity;
    found.size = status.size;
    found.settled = status.settled;
    listing.old.push_back(std::move(found));
  }
  if (errno != 0) return false;
  std::sort(listing.old.begin(), listing.old.end(), bySuffix);

  FileStatus status;
  if (statusOf(path.c_str(), status)) {
    listing.hasCurrent = true;
    listing.current = {kNoSuffix, path, status.identity, status.size, status.settled};
  } else if (errno != ENOENT) {
    return false;
  }
  return true;
}

bool listStream(const std::string &path, StreamListing &listing) {
  StreamListing before;
  FileStatus directory;
  if (!statusOf(directoryPart(path).c_str(), directory) || !listOnce(path, before)) return false;
  for (int tries = 0; tries < kMostTries; ++tries) {
    if (!listOnce(path, listing)) return false;
    if (before == listing) {
      listing.directory = directory;
      return true;
    }
    std::swap(before, listing);
  }
  errno = EBUSY;
  return false;
}

bool looksUnchanged(const std::string &path, const FileStatus &directory) {
  FileStatus now;
  return statusOf(directoryPart(path).c_str(), now) && now.identity == directory.identity &&
         now.modified == directory.modified;
}

}  // namespace wmq
