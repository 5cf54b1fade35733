// What a stream and its old files hold, told the simplest way: the bytes of every file in memory.
#ifndef WMQ_TESTS_STREAM_MODEL_H
#define WMQ_TESTS_STREAM_MODEL_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace wmq::testing {

class StreamModel {
 public:
  void open(int64_t maxSize, int maxOldFiles);
  void close() { open_ = false; }
  bool isOpen() const { return open_; }

  // A write of which `bytes` would be appended and which is `check` when it looks at the size, at the time
  // `now`. False if it fails: nothing is appended then.
  bool write(const std::string &bytes, bool check, int64_t now);
  bool hasRemovedFiles() const { return removedFiles_; }  // the last write

  // Somebody else appends to the current file, or lays down an old one.
  void append(const std::string &bytes) { current += bytes; }
  void putOldFile(int64_t suffix, const std::string &content) { oldFiles[suffix] = content; }

  // The next line that holds a record; none at the end.
  std::optional<std::string> nextLine();

  std::string current;
  std::map<int64_t, std::string> oldFiles;  // by suffix

 private:
  bool rotate(int64_t now);
  void removeOldest();

  bool open_ = false;
  bool removedFiles_ = false;
  bool readable_ = false;  // not from a rotation on
  int64_t maxSize_ = 0;
  int maxOldFiles_ = 0;
  size_t readTo_ = 0;
};

}  // namespace wmq::testing

#endif
