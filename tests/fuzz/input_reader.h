// An input taken apart into choices.
#ifndef WMQ_TESTS_INPUT_READER_H
#define WMQ_TESTS_INPUT_READER_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace wmq::testing {

class InputReader {
 public:
  explicit InputReader(std::string_view input) : left_(input) {}

  bool atEnd() const { return left_.empty(); }

  // 0 at the end.
  uint8_t byte() {
    if (left_.empty()) return 0;
    const auto value = static_cast<uint8_t>(left_.front());
    left_.remove_prefix(1);
    return value;
  }
  uint32_t below(uint32_t limit) { return byte() % limit; }

  uint32_t number() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return value;
  }

  // A length of one byte and as many bytes, or what is left.
  std::string text() {
    const size_t length = byte();
    return take(length);
  }
  std::string rest() { return take(left_.size()); }

 private:
  std::string take(size_t length) {
    std::string taken(left_.substr(0, length));
    left_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view left_;
};

}  // namespace wmq::testing

#endif
