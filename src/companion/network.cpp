// Text form of network allocations: "name=count;name=count".
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "companion/list_text.h"
#include "companion/numbers.h"
#include "companion/zeroed_memory.h"
#include "wmq/companion.h"

namespace wmq {

namespace {

bool readWindows(const char *text, const char *end, int32_t &numWindows) {
  const char *const digit = text + (text != end && *text == '-' ? 1 : 0);
  int64_t value = 0;
  if (digit == end || !isDigit(*digit) || scanInt64(text, value) != end) return false;
  numWindows = static_cast<int32_t>(value);
  return numWindows == value;
}

int readNetwork(const char *text, const char *end, networkAlloc &network) {
  const char *const equals = findLast(text, end, '=');
  if (equals == nullptr || !readWindows(equals + 1, end, network.numWindows)) return WMQE_BAD_FORMAT;
  network.name = copyOf(text, equals);
  return network.name == nullptr ? WMQE_NO_MEM : 0;
}

// Fills one entry after another; `count` says how many have been begun.
int readNetworks(const char *text, const char *textEnd, int32_t numNetworks, networkAlloc *networks,
                 int32_t &count) {
  while (count < numNetworks) {
    const char *const end = std::find(text, textEnd, ';');
    if (const int error = readNetwork(text, end, networks[count++]); error != 0) return error;
    text = end + 1;
  }
  return 0;
}

}  // namespace

}  // namespace wmq

extern "C" char *getNetworkAllocAsString(int32_t count, const struct networkAlloc *allocations) {
  if (count < 1 || allocations == nullptr) return nullptr;
  constexpr size_t countRoom = 13;  // equals sign, sign and digits, semicolon
  size_t room = 1;
  for (int32_t i = 0; i < count; ++i) room += std::strlen(wmq::textOrEmpty(allocations[i].name)) + countRoom;
  auto *const text = static_cast<char *>(std::malloc(room));
  if (text == nullptr) return nullptr;

  char *out = text;
  for (int32_t i = 0; i < count; ++i) {
    if (i > 0) *out++ = ';';
    out = stpcpy(out, wmq::textOrEmpty(allocations[i].name));
    *out++ = '=';
    out = wmq::formatInt32(out, allocations[i].numWindows);
  }
  *out = '\0';
  return text;
}

extern "C" int getNetworkAllocFromString(const char *text, int32_t *count,
                                         struct networkAlloc **allocations) {
  *count = 0;
  *allocations = nullptr;
  if (text == nullptr || *text == '\0') return 0;

  const char *const end = text + std::strlen(text);
  const auto numNetworks = std::count(text, end, ';') + 1;
  if (numNetworks > INT32_MAX) return WMQE_BAD_FORMAT;
  auto *const networks =
      static_cast<networkAlloc *>(wmq::zeroed(static_cast<size_t>(numNetworks), sizeof(networkAlloc)));
  if (networks == nullptr) return WMQE_NO_MEM;
  int32_t begun = 0;
  const int error = wmq::readNetworks(text, end, static_cast<int32_t>(numNetworks), networks, begun);
  if (error != 0) {
    freeNetworkAlloc(begun, networks);
    wmq::giveBlock(networks);
    return error;
  }
  *count = begun;
  *allocations = networks;
  return 0;
}

extern "C" void freeNetworkAlloc(int32_t count, struct networkAlloc *allocations) {
  for (int32_t i = 0; allocations != nullptr && i < count; ++i) {
    wmq::giveBlock(allocations[i].name);
    allocations[i].name = nullptr;
  }
}
