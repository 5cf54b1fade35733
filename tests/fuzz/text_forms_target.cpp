// The helpers' text forms, each with its inverse. The first byte of an input chooses the form.
#include <bit>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>

#include "companion/numbers.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/input_reader.h"
#include "fuzz/record_checks.h"
#include "fuzz/requirement.h"
#include "support/sampler.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

std::string upToNul(const std::string &text) { return text.substr(0, text.find('\0')); }

struct Free {
  void operator()(void *memory) const { std::free(memory); }
};
using OwnedText = std::unique_ptr<char, Free>;

template <typename Write>
std::string printed(Write write) {
  char *text = nullptr;
  size_t length = 0;
  FILE *const file = open_memstream(&text, &length);
  const int result = write(file);
  std::fclose(file);
  const OwnedText owner(text);
  require(result >= 0, "writing into memory succeeds");
  return {text, length};
}

// Copies on the heap, so that no byte behind the end is read unseen.
OwnedText onHeap(const std::string &text) { return OwnedText(ownedCopy(text)); }

// ----------------------------------------------------------------------------------- quoting

std::string quoted(const std::string &text) {
  return printed([&](FILE *file) { return addQStr(file, text.c_str()); });
}

// -1, or the bytes consumed.
int unquoted(const std::string &text, std::string &content) {
  const OwnedText line = onHeap(text);
  const auto out = std::make_unique<char[]>(text.size() + 1);
  const int consumed = stripQStr(line.get(), out.get());
  if (consumed >= 0) content = out.get();
  return consumed;
}

void tryQuoting(const std::string &text) {
  const std::string line = quoted(text);
  std::string content;
  require(unquoted(line, content) == static_cast<int>(line.size()) && content == text,
          "what was quoted comes back", line);
  require(line.find('\n') == std::string::npos, "no line end is in a quoted string", line);

  const int consumed = unquoted(text, content);
  if (consumed < 0) return;
  require(static_cast<size_t>(consumed) <= text.size(), "no more is consumed than there is", text);
  std::string again;
  unquoted(quoted(content), again);
  require(again == content, "what was read is written and read the same", text);
}

// -------------------------------------------------------------------------------- host lists

struct Hosts {
  int count = 0;
  char **names = nullptr;

  explicit Hosts(const std::vector<std::string> &texts) : count(static_cast<int>(texts.size())) {
    names = static_cast<char **>(std::calloc(texts.size() + 1, sizeof(char *)));
    for (size_t i = 0; i < texts.size(); ++i) names[i] = ownedCopy(texts[i]);
  }
  Hosts(int numNames, char **taken) : count(numNames), names(taken) {}
  Hosts(const Hosts &) = delete;
  Hosts &operator=(const Hosts &) = delete;
  ~Hosts() {
    for (int i = 0; i < count; ++i) std::free(names[i]);
    std::free(names);
  }

  std::vector<std::string> texts() const { return {names, names + count}; }
};

std::vector<std::string> lines(const std::string &text) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == '\n')
      parts.emplace_back();
    else
      parts.back() += c;
  }
  return parts;
}

// What is written without compression is what the compressed list expands to.
void tryHostLists(const std::string &text) {
  if (isHuge(text)) return;
  const std::vector<std::string> names = lines(text);
  const Hosts plain(names);
  int count = -1;
  char **compressedNames = nullptr;
  require(compressHostList(plain.count, plain.names, &count, &compressedNames) == 0, "compressing succeeds");
  Hosts compressed(count, compressedNames);
  if (compressedNames != nullptr) {
    require(uncompressHostList(&compressed.count, &compressed.names) == 0, "expanding succeeds");
    require(compressed.texts() == names, "a compressed list expands to what it was", text);
  } else {
    for (const std::string &name : names) {
      Hosts alone({name});
      require(uncompressHostList(&alone.count, &alone.names) == 0 && alone.texts().front() == name,
              "a list is left alone only if no name looks compressed", text);
    }
  }

  std::string line = printed([&](FILE *file) { return writeHostList(file, plain.count, plain.names); });
  int numWritten = 0;
  int at = 0;
  require(std::sscanf(line.c_str(), "%d%n", &numWritten, &at) == 1, "a list begins with its count", line);
  line.erase(0, static_cast<size_t>(at));
  std::vector<std::string> readNames(static_cast<size_t>(numWritten));
  for (std::string &name : readNames) line.erase(0, static_cast<size_t>(unquoted(line, name)));
  Hosts read(readNames);
  require(line.empty(), "a list ends behind its last name", line);
  require(uncompressHostList(&read.count, &read.names) == 0 && read.texts() == names,
          "a list that was written is read back", text);

  Hosts expanded(names);
  if (uncompressHostList(&expanded.count, &expanded.names) != 0)
    require(expanded.texts() == names, "a list that cannot be expanded is as it was", text);
}

// ----------------------------------------------------------------------------- resource usage

constexpr size_t kUsageBytes = sizeof(wmxRusage);
static_assert(kUsageBytes == WMX_RUSAGE_VALUES * sizeof(double));

void tryUsageValues(const std::string &bytes) {
  double values[WMX_RUSAGE_VALUES] = {};
  std::memcpy(values, bytes.data(), std::min(bytes.size(), kUsageBytes));
  wmxRusage usage;
  std::memcpy(&usage, values, kUsageBytes);
  const std::string text = printed([&](FILE *file) { return wmxRu2Str(file, &usage, 0); });
  wmxRusage read{};
  int consumed = -1;
  require(str2wmxRu(text.c_str(), &read, &consumed) == WMX_RUSAGE_VALUES, "all values are read back", text);
  require(consumed == static_cast<int>(text.size()), "all text is consumed", text);
  double again[WMX_RUSAGE_VALUES];
  std::memcpy(again, &read, kUsageBytes);
  for (int i = 0; i < WMX_RUSAGE_VALUES; ++i)
    require(std::isnan(values[i]) ? std::isnan(again[i])
                                  : std::bit_cast<uint64_t>(values[i]) == std::bit_cast<uint64_t>(again[i]),
            "every value is the same bit for bit", text);
}

// As the C library's scanf takes one value after the other.
void tryUsageText(const std::string &text) {
  double expected[WMX_RUSAGE_VALUES] = {};
  int converted = 0;
  size_t at = 0;
  for (; converted < WMX_RUSAGE_VALUES; ++converted) {
    int length = 0;
    if (std::sscanf(text.c_str() + at, "%lf%n", &expected[converted], &length) != 1) break;
    at += static_cast<size_t>(length);
  }
  wmxRusage usage{};
  int consumed = -1;
  const OwnedText line = onHeap(text);
  require(str2wmxRu(line.get(), &usage, &consumed) == converted, "as many values as scanf converts", text);
  require(consumed == static_cast<int>(at), "as many bytes as scanf takes", text);
  double values[WMX_RUSAGE_VALUES];
  std::memcpy(values, &usage, kUsageBytes);
  for (int i = 0; i < converted; ++i)
    require(std::isnan(expected[i])
                ? std::isnan(values[i])
                : std::bit_cast<uint64_t>(values[i]) == std::bit_cast<uint64_t>(expected[i]),
            "the values that scanf finds", text);
}

// ------------------------------------------------------------------------------- allocations

void tryAffinity(const std::string &text) {
  if (isHuge(text)) return;
  const OwnedText field = onHeap(text);
  const auto release = [](affinityAlloc *allocation) {
    freeupAffinityJobData(allocation);
    std::free(allocation);
  };
  using Allocation = std::unique_ptr<affinityAlloc, decltype(release)>;
  const Allocation allocation(parseAffinityAllocField(field.get()), release);
  if (allocation == nullptr) return;
  for (int32_t i = 0; i < allocation->numHosts; ++i) {
    const affinityHost &host = allocation->hosts[i];
    for (int32_t k = 1; k < host.numCpus; ++k) require(host.cpus[k - 1] < host.cpus[k], "CPUs ascend", text);
  }
  const OwnedText written(convertAffinityAlloc2Str(allocation.get()));
  require(written != nullptr, "an allocation that was read has a text", text);
  const Allocation again(parseAffinityAllocField(written.get()), release);
  require(again != nullptr && again->numHosts == allocation->numHosts, "that text is read", written.get());
  for (int32_t i = 0; i < allocation->numHosts; ++i) {
    const affinityHost &one = allocation->hosts[i];
    const affinityHost &other = again->hosts[i];
    require(std::strcmp(one.host, other.host) == 0 && one.numCpus == other.numCpus &&
                std::equal(one.cpus, one.cpus + one.numCpus, other.cpus),
            "and is the same allocation", text);
  }
}

void tryNetwork(const std::string &text) {
  const OwnedText field = onHeap(text);
  int32_t count = -1;
  networkAlloc *networks = nullptr;
  const int result = getNetworkAllocFromString(field.get(), &count, &networks);
  require(result == 0 || (count == 0 && networks == nullptr), "nothing is left of a refused text", text);
  if (count > 0) {
    const OwnedText written(getNetworkAllocAsString(count, networks));
    require(written != nullptr, "an allocation that was read has a text", text);
    int32_t again = -1;
    networkAlloc *same = nullptr;
    require(getNetworkAllocFromString(written.get(), &again, &same) == 0 && again == count,
            "that text is read", text);
    for (int32_t i = 0; i < count; ++i)
      require(
          std::strcmp(networks[i].name, same[i].name) == 0 && networks[i].numWindows == same[i].numWindows,
          "and is the same allocation", text);
    freeNetworkAlloc(again, same);
    std::free(same);
  }
  freeNetworkAlloc(count, networks);
  std::free(networks);
}

// ----------------------------------------------------------------------------------- numbers

// `scan` against scanf's `format`, bit for bit.
template <typename Value>
void tryScan(const std::string &text, const char *format, const char *(*scan)(const char *, Value &)) {
  Value expected{};
  Value value{};
  int length = 0;
  const OwnedText line = onHeap(text);
  const bool converts = std::sscanf(text.c_str(), format, &expected, &length) == 1;
  const char *const behind = scan(line.get(), value);
  require((behind != nullptr) == converts, "converts where scanf does", text);
  if (!converts) return;
  require(behind - line.get() == length, "takes what scanf takes", text);
  if constexpr (std::is_floating_point_v<Value>)
    if (std::isnan(expected)) return require(std::isnan(value), "not a number for scanf", text);
  require(std::memcmp(&value, &expected, sizeof value) == 0, "the value that scanf finds", text);
}

void tryNumbers(const std::string &text) {
  tryScan<int64_t>(text, "%ld%n", scanInt64);
  tryScan<uint64_t>(text, "%lu%n", scanUint64);
  tryScan<float>(text, "%f%n", scanFloat);
  tryScan<double>(text, "%lf%n", scanDouble);

  const OwnedText line = onHeap(text);
  char *expectedEnd = nullptr;
  const double expected = std::strtod(line.get(), &expectedEnd);
  const char *end = nullptr;
  const double value = parseReal(line.get(), &end);
  require(end == expectedEnd, "takes what strtod takes", text);
  require(std::isnan(expected) ? std::isnan(value)
                               : std::bit_cast<uint64_t>(value) == std::bit_cast<uint64_t>(expected),
          "the value that strtod finds", text);

  char shortest[40];
  *formatShortest(shortest, value) = '\0';
  require(std::isnan(value) || std::strtod(shortest, nullptr) == value, "reads back to the same", shortest);
  for (const int precision : {1, 2, 4, 6}) {
    char fixed[400];
    char printedText[400];
    *formatFixed(fixed, value, 6, precision) = '\0';
    std::snprintf(printedText, sizeof printedText, "%6.*f", precision, value);
    if (!std::isnan(value)) require(std::strcmp(fixed, printedText) == 0, "formats as printf does", fixed);
  }
}

using Form = void (*)(const std::string &text);
constexpr Form kForms[] = {tryQuoting,  tryHostLists, tryUsageValues, tryUsageText,
                           tryAffinity, tryNetwork,   tryNumbers};

}  // namespace

void tryInput(std::string_view input) {
  InputReader reader(input);
  const uint8_t form = reader.byte();
  const std::string bytes = reader.rest();
  const Form tried = kForms[form % std::size(kForms)];
  tried(tried == tryUsageValues ? bytes : upToNul(bytes));
}

std::vector<std::string> seeds() {
  const auto input = [](char form, const std::string &text) { return form + text; };
  return {input('\0', "plain"),
          input('\0', " \"one\"ntwo\"\"three\" \"next\""),
          input('\1', "a\na\na\nb\n3*c\n1*1*d\n0*e\n"),
          input('\1', "99999999999*a\nb"),
          input('\2', std::string(kUsageBytes, '\x3f')),
          input('\3', " 1 2.5 -3e10 0x1p3 inf nan 7 8 9 10 11 12 13 14 15 16 17 18 19 20"),
          input('\4', "host:0-3,8;other:;third:7,5,6-9"),
          input('\4', "a:b:0-1048575"),
          input('\5', "net=3;other=-4;a=b=5"),
          input('\6', "-00123456789012345678901234567890.5e-3xyz"),
          input('\6', "  0x1.fffffffffffff8p-1074"),
          input('\6', "2.2250738585072011e-308"),
          input('\6', "1e"),
          input('\6', "nan(12)")};
}

}  // namespace wmq::testing
