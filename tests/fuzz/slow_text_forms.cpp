#include "fuzz/slow_text_forms.h"

#include <climits>
#include <cstdlib>
#include <set>

#include "fuzz/line_cursor.h"

namespace wmq::testing {
namespace {

bool isDigits(const std::string &text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

int64_t smallNumber(const std::string &text) {
  if (!isDigits(text)) throw Refusal{WMQE_BAD_FORMAT};
  const long long value = std::strtoll(text.c_str(), nullptr, 10);
  if (value > INT32_MAX) throw Refusal{WMQE_BAD_FORMAT};
  return value;
}

// 1 and the name itself for one that is not compressed.
std::pair<int64_t, std::string> timesAndName(const std::string &host) {
  const size_t star = host.find('*');
  if (star == std::string::npos || host[0] == '0' || !isDigits(host.substr(0, star))) return {1, host};
  return {std::strtoll(host.c_str(), nullptr, 10), host.substr(star + 1)};
}

}  // namespace

std::vector<std::string> splitAt(char separator, const std::string &text) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator)
      parts.emplace_back();
    else
      parts.back() += c;
  }
  return parts;
}

std::vector<std::string> expandedHosts(const std::vector<std::string> &names, int64_t &left) {
  std::vector<std::string> hosts;
  for (const std::string &name : names) {
    const auto [times, plain] = timesAndName(name);
    if (times > left) throw Refusal{WMQE_BAD_FORMAT};
    left -= times;
  }
  for (const std::string &name : names) {
    const auto [times, plain] = timesAndName(name);
    hosts.insert(hosts.end(), static_cast<size_t>(times), plain);
  }
  return hosts;
}

void flattenAffinityText(const std::string &text, const std::string &path, FlatRecord &flat) {
  if (text.empty()) return;
  constexpr int64_t most = 1048576;
  int64_t numCpus = 0;
  FlatRecord entries;
  int64_t index = 0;
  for (const std::string &entry : splitAt(';', text)) {
    const size_t colon = entry.rfind(':');
    if (colon == std::string::npos) throw Refusal{WMQE_BAD_FORMAT};
    std::set<int64_t> cpus;
    const std::string list = entry.substr(colon + 1);
    for (const std::string &range : list.empty() ? std::vector<std::string>{} : splitAt(',', list)) {
      const size_t dash = range.find('-');
      const int64_t first = smallNumber(range.substr(0, dash));
      const int64_t last = dash == std::string::npos ? first : smallNumber(range.substr(dash + 1));
      numCpus += last - first + 1;
      if (last < first || numCpus > most) throw Refusal{WMQE_BAD_FORMAT};
      for (int64_t cpu = first; cpu <= last; ++cpu) cpus.insert(cpu);
    }
    std::string &written = entries[elementPath(path, index++)];
    written = flatText(entry.substr(0, colon)) + ':';
    for (const int64_t cpu : cpus) written += std::to_string(cpu) + ',';
  }
  flat[path] = kFlatArray;
  flat.insert(entries.begin(), entries.end());
}

std::vector<std::string> networksOf(const std::string &text) {
  std::vector<std::string> networks;
  if (text.empty()) return networks;
  for (const std::string &entry : splitAt(';', text)) {
    const size_t equals = entry.rfind('=');
    if (equals == std::string::npos) throw Refusal{WMQE_BAD_FORMAT};
    const std::string number = entry.substr(equals + 1);
    const bool negative = !number.empty() && number[0] == '-';
    if (!isDigits(number.substr(negative ? 1 : 0))) throw Refusal{WMQE_BAD_FORMAT};
    const long long value = std::strtoll(number.c_str(), nullptr, 10);
    if (value < INT32_MIN || value > INT32_MAX) throw Refusal{WMQE_BAD_FORMAT};
    networks.push_back(flatText(entry.substr(0, equals)) + '=' + std::to_string(value));
  }
  return networks;
}

}  // namespace wmq::testing
