// "1:DEVICE:INODE:BIRTH:SUFFIX:LENGTH.SUM:OFFSET:LENGTH.SUM:SUFFIX.LENGTH.SUM", the 1 being the number of
// this form. Device, inode, birth and sums are hexadecimal, the rest is decimal, and what is not there is
// "-".
#include "follow/position_token.h"

#include <array>
#include <charconv>
#include <string_view>

namespace wmq {
namespace {

void put(std::string &text, uint64_t number, int base) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number, base).ptr;
  text.append(digits, end);
}

void putSuffix(std::string &text, int64_t suffix) {
  if (suffix == kNoSuffix)
    text += '-';
  else
    text += std::to_string(suffix);
}

void putExtract(std::string &text, const Extract &extract) {
  text += std::to_string(extract.length) + '.';
  put(text, extract.sum, 16);
}

// Takes the text apart; the first that is not as it should be makes all that follows fail.
struct Scanner {
  std::string_view rest;
  bool good = true;

  template <typename Number>
  void number(Number &value, int base) {
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value, base);
    good = good && error == std::errc();
    if (good) rest.remove_prefix(static_cast<size_t>(end - rest.data()));
  }
  bool has(char c) {
    if (!good || rest.empty() || rest.front() != c) return false;
    rest.remove_prefix(1);
    return true;
  }
  void expect(char c) { good = has(c); }
  void suffix(int64_t &value) {
    value = kNoSuffix;
    if (rest.starts_with("-:"))
      has('-');
    else
      number(value, 10);
  }
  void extract(Extract &value) {
    number(value.length, 10);
    expect('.');
    number(value.sum, 16);
    good = good && value.length >= 0 && value.length <= kMostSummed;
  }
};

}  // namespace

std::string positionText(const Position &position) {
  std::string text = "1:";
  if (position.hasFile) {
    for (const uint64_t number : {position.identity.device, position.identity.inode,
                                  static_cast<uint64_t>(position.identity.birth)}) {
      put(text, number, 16);
      text += ':';
    }
    putSuffix(text, position.suffix);
    text += ':';
    putExtract(text, position.first);
    text += ':' + std::to_string(position.offset) + ':';
    putExtract(text, position.last);
  } else {
    text += '-';
  }
  text += ':';
  if (position.former.known) {
    putSuffix(text, position.former.suffix);
    text += '.';
    putExtract(text, position.former.first);
  } else {
    text += '-';
  }
  return text;
}

bool readPosition(const std::string &text, Position &position) {
  position = {};
  Scanner scan{text};
  scan.expect('1');
  scan.expect(':');
  position.hasFile = !scan.has('-');
  if (position.hasFile) {
    scan.number(position.identity.device, 16);
    scan.expect(':');
    scan.number(position.identity.inode, 16);
    scan.expect(':');
    scan.number(position.identity.birth, 16);
    scan.expect(':');
    scan.suffix(position.suffix);
    scan.expect(':');
    scan.extract(position.first);
    scan.expect(':');
    scan.number(position.offset, 10);
    scan.expect(':');
    scan.extract(position.last);
  }
  scan.expect(':');
  position.former.known = scan.rest != "-";
  if (!position.former.known) {
    scan.expect('-');
  } else {
    scan.number(position.former.suffix, 10);
    scan.expect('.');
    scan.extract(position.former.first);
  }
  return scan.good && scan.rest.empty() && position.offset >= 0 && position.last.length <= position.offset;
}

}  // namespace wmq
