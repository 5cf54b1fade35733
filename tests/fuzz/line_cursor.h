// A place on a line, and what stands there, for the second reader.
#ifndef WMQ_TESTS_LINE_CURSOR_H
#define WMQ_TESTS_LINE_CURSOR_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "wmq/event_types.h"

namespace wmq::testing {

// What the second reader throws where a line is refused.
struct Refusal {
  int error;
};

// Where a line tells how many of something follow; its digits, perhaps with blanks before them.
struct CountPlace {
  std::string path;
  size_t begin;
  size_t end;
};

class LineCursor {
 public:
  explicit LineCursor(const std::string &line) : line_(line) {}

  // What was read from `begin` on is a count.
  void noteCount(const std::string &path, size_t begin) { counts.push_back({path, begin, at_}); }
  // So is the content of the quoted string that was read last.
  void noteQuotedCount(const std::string &path) {
    counts.push_back({path, line_.rfind('"', at_ - 2) + 1, at_ - 1});
  }
  std::vector<CountPlace> counts;

  bool atEnd() const { return at_ == line_.size(); }
  size_t position() const { return at_; }
  size_t bytesLeft() const { return line_.size() - at_; }
  void goTo(size_t position) { at_ = position; }
  void skipOne() {
    if (!atEnd()) ++at_;
  }

  // A number as sscanf converts it by `format`, which ends in "%n"; nothing where it does not, and the cursor
  // stays.
  template <typename T>
  std::optional<T> tryScan(const char *format) {
    T value{};
    int length = 0;
    if (std::sscanf(line_.c_str() + at_, format, &value, &length) != 1) return std::nullopt;
    at_ += static_cast<size_t>(length);
    return value;
  }
  std::optional<int64_t> tryInteger() { return tryScan<long long>("%lld%n"); }
  int64_t integer() { return required(tryInteger()); }
  template <typename T>
  static T required(std::optional<T> value) {
    if (!value) throw Refusal{WMQE_BAD_FORMAT};
    return *value;
  }

  // The content of the next quoted string.
  std::string quoted() {
    size_t at = line_.find('"', at_);
    if (at == std::string::npos) throw Refusal{WMQE_BAD_FORMAT};
    std::string content;
    for (++at; at < line_.size(); ++at) {
      if (line_[at] != '"') {
        content += line_[at];
        continue;
      }
      const char next = at + 1 < line_.size() ? line_[at + 1] : '\0';
      if (next != '"' && next != 'n') {
        at_ = at + 1;
        return content;
      }
      content += next == 'n' ? '\n' : '"';
      ++at;
    }
    throw Refusal{WMQE_BAD_FORMAT};
  }

  // The next word between white space.
  std::string word() {
    static const char blanks[] = " \t\n\v\f\r";
    const size_t begin = line_.find_first_not_of(blanks, at_);
    if (begin == std::string::npos) throw Refusal{WMQE_BAD_FORMAT};
    at_ = std::min(line_.find_first_of(blanks, begin), line_.size());
    return line_.substr(begin, at_ - begin);
  }

 private:
  const std::string &line_;
  size_t at_ = 0;
};

}  // namespace wmq::testing

#endif
