// Text form of affinity allocations: "host:LIST;host:LIST", LIST as in cpuset(7).
#include "companion/affinity.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "companion/list_text.h"
#include "companion/numbers.h"
#include "companion/zeroed_memory.h"

namespace wmq {

namespace {

constexpr int64_t maxCpus = 1 << 20;

// The next CPU or range of a list, `text` behind it; false when there is none before `end`.
bool takeRange(const char *&text, const char *end, int32_t &first, int32_t &last) {
  int64_t numbers[2] = {};
  int count = 0;
  for (;; ++count) {
    if (text == end || !isDigit(*text)) return false;
    text = scanInt64(text, numbers[count]);
    if (numbers[count] > INT32_MAX) return false;
    if (count == 1 || text == end || *text != '-') break;
    ++text;
  }
  first = static_cast<int32_t>(numbers[0]);
  last = static_cast<int32_t>(numbers[count]);
  return first <= last;
}

// Calls `use` for each range of the list; false when the list is malformed.
template <class Use>
bool forEachRange(const char *text, const char *end, Use use) {
  if (text == end) return true;
  for (;;) {
    int32_t first;
    int32_t last;
    if (!takeRange(text, end, first, last)) return false;
    use(first, last);
    if (text == end) return true;
    if (*text++ != ',') return false;
  }
}

bool readCpus(const char *text, const char *end, affinityHost &host, int64_t &cpusLeft) {
  int64_t numCpus = 0;
  const bool wellFormed =
      forEachRange(text, end, [&](int32_t first, int32_t last) { numCpus += int64_t{last} - first + 1; });
  if (!wellFormed || numCpus > cpusLeft) return false;
  cpusLeft -= numCpus;
  if (numCpus == 0) return true;

  host.cpus = static_cast<int32_t *>(takeBlock(static_cast<size_t>(numCpus) * sizeof(int32_t)));
  if (host.cpus == nullptr) return false;
  int32_t *out = host.cpus;
  forEachRange(text, end, [&](int32_t first, int32_t last) {
    for (int64_t cpu = first; cpu <= last; ++cpu) *out++ = static_cast<int32_t>(cpu);
  });
  if (!std::is_sorted(host.cpus, out)) std::sort(host.cpus, out);
  host.numCpus = static_cast<int32_t>(std::unique(host.cpus, out) - host.cpus);
  return true;
}

bool readHost(const char *text, const char *end, affinityHost &host, int64_t &cpusLeft) {
  const char *const colon = findLast(text, end, ':');
  if (colon == nullptr) return false;
  host.host = copyOf(text, colon);
  return host.host != nullptr && readCpus(colon + 1, end, host, cpusLeft);
}

bool readHosts(const char *text, affinityAlloc &allocation, int64_t &cpusLeft) {
  const char *const textEnd = text + std::strlen(text);
  const auto numHosts = std::count(text, textEnd, ';') + 1;
  if (numHosts > INT32_MAX) return false;
  allocation.hosts = static_cast<affinityHost *>(zeroed(static_cast<size_t>(numHosts), sizeof(affinityHost)));
  if (allocation.hosts == nullptr) return false;

  while (allocation.numHosts < numHosts) {
    const char *const end = std::find(text, textEnd, ';');
    if (!readHost(text, end, allocation.hosts[allocation.numHosts++], cpusLeft)) return false;
    text = end + 1;
  }
  return true;
}

int32_t numCpusOf(const affinityHost &host) { return host.cpus == nullptr ? 0 : host.numCpus; }

char *cpusInto(char *out, const affinityHost &host) {
  const int32_t numCpus = numCpusOf(host);
  for (int32_t at = 0; at < numCpus;) {
    const int32_t first = at;
    while (at + 1 < numCpus && int64_t{host.cpus[at]} + 1 == host.cpus[at + 1]) ++at;
    if (first > 0) *out++ = ',';
    out = formatInt32(out, host.cpus[first]);
    if (at > first) {
      *out++ = '-';
      out = formatInt32(out, host.cpus[at]);
    }
    ++at;
  }
  return out;
}

}  // namespace

affinityAlloc *parseAffinity(const char *text, int64_t &cpusLeft) {
  if (text == nullptr || *text == '\0') return nullptr;
  auto *const allocation = static_cast<affinityAlloc *>(zeroed(1, sizeof(affinityAlloc)));
  if (allocation == nullptr) return nullptr;
  const int64_t allowed = std::min(maxCpus, cpusLeft);
  int64_t left = allowed;
  const bool wellFormed = readHosts(text, *allocation, left);
  cpusLeft -= allowed - left;
  if (wellFormed) return allocation;
  freeupAffinityJobData(allocation);
  giveBlock(allocation);
  return nullptr;
}

}  // namespace wmq

extern "C" struct affinityAlloc *parseAffinityAllocField(const char *text) {
  int64_t cpusLeft = wmq::maxCpus;
  return wmq::parseAffinity(text, cpusLeft);
}

extern "C" char *convertAffinityAlloc2Str(const struct affinityAlloc *allocation) {
  if (allocation == nullptr || allocation->numHosts < 1 || allocation->hosts == nullptr) return nullptr;

  constexpr size_t cpuRoom = 12;
  size_t room = 1;
  for (int32_t i = 0; i < allocation->numHosts; ++i) {
    const affinityHost &host = allocation->hosts[i];
    const int32_t numCpus = std::max(wmq::numCpusOf(host), 0);
    room += std::strlen(wmq::textOrEmpty(host.host)) + 2 + static_cast<size_t>(numCpus) * cpuRoom;
  }
  auto *const text = static_cast<char *>(std::malloc(room));
  if (text == nullptr) return nullptr;

  char *out = text;
  for (int32_t i = 0; i < allocation->numHosts; ++i) {
    const affinityHost &host = allocation->hosts[i];
    if (i > 0) *out++ = ';';
    out = stpcpy(out, wmq::textOrEmpty(host.host));
    *out++ = ':';
    out = wmq::cpusInto(out, host);
  }
  *out = '\0';
  return text;
}

extern "C" void freeupAffinityJobData(struct affinityAlloc *allocation) {
  if (allocation == nullptr) return;
  for (int32_t i = 0; allocation->hosts != nullptr && i < allocation->numHosts; ++i) {
    wmq::giveBlock(allocation->hosts[i].host);
    wmq::giveBlock(allocation->hosts[i].cpus);
  }
  wmq::giveBlock(allocation->hosts);
  allocation->hosts = nullptr;
  allocation->numHosts = 0;
}
