#include "host_pool.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace wmq::tool {

namespace {

// What a node commonly holds, where the trace does not tell, and the most that is believed.
constexpr int64_t usualProcessors = 16;
constexpr int64_t mostProcessors = 1024;

}  // namespace

HostPool::HostPool(int64_t hosts, int64_t processors) {
  int64_t each = hosts > 0 && processors > 0 ? processors / hosts : usualProcessors;
  perHost = static_cast<uint32_t>(std::clamp<int64_t>(each, 1, mostProcessors));
}

uint32_t HostPool::addHost() {
  auto host = static_cast<uint32_t>(names.size());
  std::array<char, 24> name{};
  std::snprintf(name.data(), name.size(), "node%05u", host + 1);
  names.emplace_back(name.data());
  freeOf.push_back(perHost);
  available.emplace(perHost, host);
  return host;
}

void HostPool::setFree(uint32_t host, uint32_t processors) {
  available.erase({freeOf[host], host});
  freeOf[host] = processors;
  if (processors > 0) available.emplace(processors, host);
}

std::vector<HostShare> HostPool::take(int64_t processors) {
  std::vector<HostShare> shares;
  while (processors > 0) {
    auto wanted = static_cast<uint32_t>(std::min<int64_t>(processors, perHost));
    auto fitting = available.lower_bound({wanted, 0});
    uint32_t host = fitting != available.end() ? fitting->second : addHost();
    setFree(host, freeOf[host] - wanted);
    shares.push_back({host, wanted});
    processors -= wanted;
  }
  return shares;
}

void HostPool::giveBack(const std::vector<HostShare> &shares) {
  for (const HostShare &share : shares) setFree(share.host, freeOf[share.host] + share.processors);
}

void HostPool::listNames(const std::vector<HostShare> &shares, std::vector<char *> &list) {
  list.clear();
  for (const HostShare &share : shares) list.insert(list.end(), share.processors, names[share.host].data());
}

void HostPool::listHosts(const std::vector<HostShare> &shares, HostSlots &list) {
  list.hosts.clear();
  list.slots.clear();
  for (const HostShare &share : shares) {
    list.hosts.push_back(names[share.host].data());
    list.slots.push_back(static_cast<int32_t>(share.processors));
  }
}

}  // namespace wmq::tool
