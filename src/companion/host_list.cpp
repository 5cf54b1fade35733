#include "companion/host_list.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "companion/block_cache.h"
#include "companion/byte_groups.h"
#include "companion/list_text.h"
#include "companion/numbers.h"
#include "companion/quoting.h"
#include "companion/zeroed_memory.h"
#include "wmq/companion.h"

namespace wmq {

namespace {

bool looksCompressed(const char *name) {
  int64_t times;
  const char *plain;
  return compressedName(name, times, plain);
}

// Number of equal names from `first` on, before `count`.
int32_t runLength(int32_t first, int32_t count, char *const *hosts) {
  const char *const name = textOrEmpty(hosts[first]);
  int32_t next = first + 1;
  while (next < count && areSame(name, textOrEmpty(hosts[next]))) ++next;
  return next - first;
}

// Whether nothing stands before a name in the compressed list.
bool standsAlone(const char *name, int32_t times) { return times == 1 && !looksCompressed(name); }

// What stands before it: nothing, or "N*".
char *multiplierInto(char *out, const char *name, int32_t times) {
  if (standsAlone(name, times)) return out;
  out = formatInt32(out, times);
  *out++ = '*';
  return out;
}

char *compressedCopy(const char *name, int32_t times) {
  char multiplier[16];
  const auto prefix = static_cast<size_t>(multiplierInto(multiplier, name, times) - multiplier);
  const size_t size = std::strlen(name) + 1;
  auto *const copy = static_cast<char *>(std::malloc(prefix + size));
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, multiplier, prefix);
  std::memcpy(copy + prefix, name, size);
  return copy;
}

void freeNames(int64_t count, char **names) {
  for (int64_t i = 0; i < count; ++i) giveBlock(names[i]);
}

bool worthCompressing(int32_t count, char *const *hosts) {
  for (int32_t i = 0; i < count; ++i) {
    const char *const name = textOrEmpty(hosts[i]);
    if (looksCompressed(name) || (i + 1 < count && std::strcmp(name, textOrEmpty(hosts[i + 1])) == 0))
      return true;
  }
  return false;
}

// How often a name of a list stands for `plain`, which is the name itself unless it is compressed.
int64_t timesOf(const char *host, const char *&plain) {
  int64_t times = 1;
  plain = host;
  if (host != nullptr) compressedName(host, times, plain);
  return times;
}

// Nobody will release these names one by one: a compressed name itself ends in what it stands for.
void shareExpanded(char **expanded, int32_t count, char *const *hosts) {
  for (int32_t i = 0; i < count; ++i) {
    const char *plain;
    const int64_t times = timesOf(hosts[i], plain);
    expanded = std::fill_n(expanded, times, const_cast<char *>(plain));
  }
}

// Fills the places of compressed names with copies; the others stay null until nothing can fail any more.
bool copyExpanded(char **expanded, int32_t count, char *const *hosts) {
  for (int32_t i = 0; i < count; ++i) {
    const char *plain;
    const int64_t times = timesOf(hosts[i], plain);
    if (plain == hosts[i]) {
      ++expanded;
      continue;
    }
    const size_t length = std::strlen(plain);
    for (char **const end = expanded + times; expanded != end; ++expanded) {
      *expanded = static_cast<char *>(takeBlock(bytesForText(length)));
      if (*expanded == nullptr) return false;
      copyBytes(*expanded, plain, length + 1);
    }
  }
  return true;
}

// Moves the plain names over and releases the compressed ones.
void moveOver(char **expanded, int32_t count, char **hosts) {
  for (int32_t i = 0; i < count; ++i) {
    const char *plain;
    const int64_t times = timesOf(hosts[i], plain);
    if (plain == hosts[i])
      *expanded = hosts[i];
    else
      giveBlock(hosts[i]);
    expanded += times;
  }
  giveBlock(hosts);
}

}  // namespace

bool compressedName(const char *name, int64_t &times, const char *&plain) {
  if (*name < '1' || *name > '9') return false;
  const char *end = name;
  while (isDigit(*end)) ++end;
  if (*end != '*') return false;
  scanInt64(name, times);
  plain = end + 1;
  return true;
}

int expandHosts(int32_t &count, char **&hosts, int64_t limit) {
  if (count < 1 || hosts == nullptr) return 0;

  bool anyCompressed = false;
  int64_t total = 0;
  for (int32_t i = 0; i < count; ++i) {
    const char *plain;
    const int64_t times = timesOf(hosts[i], plain);
    anyCompressed = anyCompressed || plain != hosts[i];
    if (times > limit - total) return WMQE_BAD_FORMAT;
    total += times;
  }
  if (!anyCompressed) return 0;
  if (total > INT32_MAX) return WMQE_BAD_FORMAT;

  auto **const expanded = static_cast<char **>(zeroed(static_cast<size_t>(total), sizeof(char *)));
  if (expanded == nullptr) return WMQE_NO_MEM;
  if (borrowed.inUse) {
    shareExpanded(expanded, count, hosts);
  } else if (copyExpanded(expanded, count, hosts)) {
    moveOver(expanded, count, hosts);
  } else {
    freeNames(total, expanded);
    giveBlock(expanded);
    return WMQE_NO_MEM;
  }
  hosts = expanded;
  count = static_cast<int32_t>(total);
  return 0;
}

int32_t HostListWriter::endOfPart() const { return at_ + std::min(count_ - at_, hostsOfPart_); }

size_t HostListWriter::roomForPart() const {
  constexpr size_t besideName = 3 + groupSize;  // blank, quotes, multiplier or what is written behind a name
  const int32_t end = endOfPart();
  size_t room = 0;
  for (int32_t i = at_; i < end; ++i) room += 2 * std::strlen(textOrEmpty(hosts_[i])) + besideName;
  return room;
}

// The last run of a part may go on behind its end.
char *HostListWriter::partInto(char *out) {
  const int32_t end = endOfPart();
  while (at_ < end) {
    const char *const name = textOrEmpty(hosts_[at_]);
    const int32_t times = runLength(at_, count_, hosts_);
    at_ += times;
    ++runs_;

    *out++ = ' ';
    if (standsAlone(name, times)) {
      char *const nameEnd = shortQuotedInto(out, name);
      out = nameEnd != nullptr ? nameEnd : quotedInto(out, name, std::strlen(name));
      continue;
    }
    // The multiplier goes inside the quotes, where the opening quote of the name has just been written.
    char *const opening = out;
    char *const nameStart = multiplierInto(opening + 1, name, times);
    out = quotedInto(nameStart - 1, name, std::strlen(name));
    nameStart[-1] = '*';
    *opening = '"';
  }
  return out;
}

char *hostCountInto(char *out, int32_t runs) {
  *out = ' ';
  return formatInt32(out + 1, runs);
}

int32_t numRuns(int32_t count, char *const *hosts) {
  int32_t runs = 0;
  for (int32_t at = 0; at < count; at += runLength(at, count, hosts)) ++runs;
  return runs;
}

}  // namespace wmq

extern "C" int compressHostList(int count, char *const *hosts, int *outCount, char ***outHosts) {
  *outCount = 0;
  *outHosts = nullptr;
  if (count < 1 || hosts == nullptr || !wmq::worthCompressing(count, hosts)) return 0;

  const int32_t runs = wmq::numRuns(count, hosts);
  auto **const compressed = static_cast<char **>(std::calloc(static_cast<size_t>(runs), sizeof(char *)));
  if (compressed == nullptr) return WMQE_NO_MEM;
  int32_t at = 0;
  for (int32_t run = 0; run < runs; ++run) {
    const int32_t times = wmq::runLength(at, count, hosts);
    compressed[run] = wmq::compressedCopy(wmq::textOrEmpty(hosts[at]), times);
    if (compressed[run] == nullptr) {
      wmq::freeNames(run, compressed);
      std::free(compressed);
      return WMQE_NO_MEM;
    }
    at += times;
  }
  *outCount = runs;
  *outHosts = compressed;
  return 0;
}

extern "C" int uncompressHostList(int *count, char ***hosts) {
  if (count == nullptr || hosts == nullptr) return 0;
  return wmq::expandHosts(*count, *hosts, wmq::maxHosts);
}

extern "C" int writeHostList(FILE *file, int count, char *const *hosts) {
  if (file == nullptr || count < 0 || (count > 0 && hosts == nullptr)) return -1;
  wmq::HostListWriter list(count, hosts, count);
  auto *const buffer = static_cast<char *>(std::malloc(wmq::kHostCountRoom + list.roomForPart()));
  if (buffer == nullptr) return -1;
  char *const names = buffer + wmq::kHostCountRoom;
  const char *const end = list.partInto(names);
  // The number is known behind the names, and stands right before them.
  char number[wmq::kHostCountRoom];
  const auto numberLength = static_cast<size_t>(wmq::hostCountInto(number, list.runs()) - number);
  char *const start = names - numberLength;
  std::memcpy(start, number, numberLength);
  const auto length = static_cast<size_t>(end - start);
  const bool written = std::fwrite(start, 1, length, file) == length;
  std::free(buffer);
  return written ? 0 : -1;
}
