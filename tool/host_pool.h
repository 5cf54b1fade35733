// Hosts of a machine whose names nobody knows any more: invented, but the same ones at every replay.
#ifndef WMQ_TOOL_HOST_POOL_H
#define WMQ_TOOL_HOST_POOL_H

#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace wmq::tool {

// Processors of one host.
struct HostShare {
  uint32_t host = 0;
  uint32_t processors = 0;
};

// Hosts by name, and the slots that are used on each.
struct HostSlots {
  std::vector<char *> hosts;
  std::vector<int32_t> slots;
};

class HostPool {
 public:
  // Hosts like those of a machine of `hosts` hosts with `processors` in all; 0 where one is not known. There
  // are as many as are asked for: traces do not tell of all parts of their machine.
  HostPool(int64_t hosts, int64_t processors);

  // Takes that many processors: whole hosts first, the rest from the host where it fits best, in both cases
  // the one with the lowest number.
  std::vector<HostShare> take(int64_t processors);

  void giveBack(const std::vector<HostShare> &shares);

  // Replaces `list` by the shares' host names, one for each processor. The names belong to the pool.
  void listNames(const std::vector<HostShare> &shares, std::vector<char *> &list);

  // Replaces `list` by the hosts of the shares, each with its processors.
  void listHosts(const std::vector<HostShare> &shares, HostSlots &list);

  uint32_t processorsOfHost() const { return perHost; }
  size_t numHosts() const { return names.size(); }

 private:
  uint32_t addHost();
  void setFree(uint32_t host, uint32_t processors);

  uint32_t perHost;
  std::deque<std::string> names;                      // a deque, because names must not move
  std::vector<uint32_t> freeOf;                       // free processors of each host
  std::set<std::pair<uint32_t, uint32_t>> available;  // (free processors, host), where any are free
};

}  // namespace wmq::tool

#endif
