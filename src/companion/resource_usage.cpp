#include "companion/resource_usage.h"

#include <bit>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "companion/numbers.h"

namespace wmq {

namespace {

// The order on the line.
constexpr double wmxRusage::*usageMembers[WMX_RUSAGE_VALUES] = {
    &wmxRusage::ru_utime,  &wmxRusage::ru_stime,    &wmxRusage::ru_maxrss,  &wmxRusage::ru_ixrss,
    &wmxRusage::ru_idrss,  &wmxRusage::ru_isrss,    &wmxRusage::ru_minflt,  &wmxRusage::ru_majflt,
    &wmxRusage::ru_nswap,  &wmxRusage::ru_inblock,  &wmxRusage::ru_oublock, &wmxRusage::ru_msgsnd,
    &wmxRusage::ru_msgrcv, &wmxRusage::ru_nsignals, &wmxRusage::ru_nvcsw,   &wmxRusage::ru_nivcsw,
    &wmxRusage::ru_rchar,  &wmxRusage::ru_wchar,    &wmxRusage::ru_elapsed};

}  // namespace

const char *scanUsage(const char *text, wmxRusage &usage, int &converted) {
  converted = 0;
  for (const auto member : usageMembers) {
    const char *const behind = scanDouble(text, usage.*member);
    if (behind == nullptr) break;
    text = behind;
    ++converted;
  }
  return text;
}

char *formatUsage(char *out, const wmxRusage &usage) {
  for (const auto member : usageMembers) {
    *out = ' ';
    if (std::bit_cast<uint64_t>(usage.*member) == 0) {  // most of them
      out[1] = '0';
      out += 2;
    } else {
      out = formatShortest(out + 1, usage.*member);
    }
  }
  return out;
}

}  // namespace wmq

extern "C" int wmxRu2Str(FILE *file, const struct wmxRusage *usage, int) {
  if (file == nullptr || usage == nullptr) return -1;
  char text[wmq::usageRoom];
  const auto size = static_cast<size_t>(wmq::formatUsage(text, *usage) - text);
  return fwrite(text, 1, size, file) == size ? 0 : -1;
}

extern "C" int str2wmxRu(const char *text, struct wmxRusage *usage, int *consumed) {
  int converted = 0;
  const char *behind = text;
  if (text != nullptr && usage != nullptr) behind = wmq::scanUsage(text, *usage, converted);
  if (consumed != nullptr) *consumed = behind - text > INT_MAX ? INT_MAX : static_cast<int>(behind - text);
  return converted;
}

extern "C" void freeKeyValue(struct keyValue *pair) {
  if (pair == nullptr) return;
  std::free(pair->key);
  std::free(pair->value);
  *pair = {};
}

extern "C" void freeHostRusage(int32_t count, struct hostRusageEntry *entries) {
  for (int32_t i = 0; entries != nullptr && i < count; ++i) {
    hostRusageEntry &entry = entries[i];
    for (int32_t k = 0; entry.attrs != nullptr && k < entry.numAttrs; ++k) {
      std::free(entry.attrs[k].name);
      std::free(entry.attrs[k].value);
    }
    std::free(entry.attrs);
    std::free(entry.name);
    entry.attrs = nullptr;
    entry.name = nullptr;
    entry.numAttrs = 0;
  }
}

extern "C" void freeGpuRusage(int32_t count, struct gpuRusageEntry *entries) {
  for (int32_t i = 0; entries != nullptr && i < count; ++i) {
    gpuRusageEntry &entry = entries[i];
    for (int32_t k = 0; entry.pairs != nullptr && k < entry.numPairs; ++k) freeKeyValue(&entry.pairs[k]);
    std::free(entry.pairs);
    std::free(entry.hostName);
    entry.pairs = nullptr;
    entry.hostName = nullptr;
    entry.numPairs = 0;
  }
}

extern "C" void freeAllocHostInfo(struct allocHostInfo *info) {
  if (info == nullptr) return;
  for (int32_t i = 0; info->hosts != nullptr && i < info->numHosts; ++i) std::free(info->hosts[i]);
  std::free(info->hosts);
  info->hosts = nullptr;
  info->numHosts = 0;
}
