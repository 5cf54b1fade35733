#include "fuzz/corpus_file.h"

#include <fstream>
#include <stdexcept>

namespace wmq::testing {

static constexpr char kHexDigits[] = "0123456789abcdef";

// An input that begins with "#" is no comment.
static bool standsAsItIs(char c, bool first) {
  return c >= ' ' && c <= '~' && c != '\\' && !(first && c == '#');
}

std::string escaped(std::string_view input) {
  std::string text;
  for (size_t at = 0; at < input.size(); ++at) {
    const char c = input[at];
    if (standsAsItIs(c, at == 0)) {
      text += c;
    } else if (c == '\n') {
      text += "\\n";
    } else if (c == '\\') {
      text += "\\\\";
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += {'\\', 'x', kHexDigits[byte / 16], kHexDigits[byte % 16]};
    }
  }
  return text;
}

static unsigned hexDigit(char c) {
  const std::string_view digits = kHexDigits;
  const size_t value = digits.find(c);
  if (value == std::string_view::npos) throw std::runtime_error("no hexadecimal digit in an escape");
  return static_cast<unsigned>(value);
}

std::string unescaped(std::string_view text) {
  std::string input;
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      input += text[at];
      continue;
    }
    if (++at == text.size()) throw std::runtime_error("a backslash at the end of a line");
    if (text[at] == '\\') {
      input += '\\';
    } else if (text[at] == 'n') {
      input += '\n';
    } else if (text[at] == 'x' && text.size() - at > 2) {
      input += static_cast<char>(hexDigit(text[at + 1]) * 16 + hexDigit(text[at + 2]));
      at += 2;
    } else {
      throw std::runtime_error("an unknown escape");
    }
  }
  return input;
}

std::vector<std::string> readCorpus(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot open " + path);
  std::vector<std::string> inputs;
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && line[0] != '#') inputs.push_back(unescaped(line));
  return inputs;
}

}  // namespace wmq::testing
