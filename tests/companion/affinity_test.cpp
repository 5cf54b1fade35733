#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "wmq/companion.h"

namespace {

// Hosts and their CPUs in the order of the allocation.
using Hosts = std::vector<std::pair<std::string, std::vector<int32_t>>>;

struct ReleaseAllocation {
  void operator()(affinityAlloc *allocation) const {
    freeupAffinityJobData(allocation);
    std::free(allocation);
  }
};
using OwnedAllocation = std::unique_ptr<affinityAlloc, ReleaseAllocation>;

OwnedAllocation parsed(const std::string &text) {
  return OwnedAllocation(parseAffinityAllocField(text.c_str()));
}

Hosts hostsOf(const affinityAlloc &allocation) {
  Hosts hosts;
  for (int32_t i = 0; i < allocation.numHosts; ++i) {
    const affinityHost &host = allocation.hosts[i];
    hosts.emplace_back(host.host, std::vector(host.cpus, host.cpus + host.numCpus));
  }
  return hosts;
}

Hosts hostsIn(const std::string &text) {
  const OwnedAllocation allocation = parsed(text);
  if (allocation == nullptr) {
    ADD_FAILURE() << "refused: " << text;
    return {};
  }
  return hostsOf(*allocation);
}

std::string textOf(const affinityAlloc *allocation) {
  char *const text = convertAffinityAlloc2Str(allocation);
  std::string result = text == nullptr ? "none" : text;
  std::free(text);
  return result;
}

std::string textOf(Hosts &&hosts) {
  std::vector<affinityHost> entries;
  for (auto &[name, cpus] : hosts)
    entries.push_back({name.data(), static_cast<int32_t>(cpus.size()), cpus.data()});
  const affinityAlloc allocation = {static_cast<int32_t>(entries.size()), entries.data()};
  return textOf(&allocation);
}

TEST(AffinityText, ListsTheCpusOfEachHost) {
  EXPECT_EQ(hostsIn("a:0-3,8;b:1"), (Hosts{{"a", {0, 1, 2, 3, 8}}, {"b", {1}}}));
  EXPECT_EQ(hostsIn("a:"), (Hosts{{"a", {}}}));
  EXPECT_EQ(hostsIn("a:5-5"), (Hosts{{"a", {5}}}));
  EXPECT_EQ(hostsIn("a:2147483646-2147483647"), (Hosts{{"a", {2147483646, 2147483647}}}));
}

TEST(AffinityText, SeparatesAtTheLastColon) {
  EXPECT_EQ(hostsIn("fe80::1:7"), (Hosts{{"fe80::1", {7}}}));
  EXPECT_EQ(hostsIn(":7"), (Hosts{{"", {7}}}));
}

TEST(AffinityText, MayListCpusInAnyOrderAndTwice) {
  EXPECT_EQ(hostsIn("a:8,0-3,2-4,8"), (Hosts{{"a", {0, 1, 2, 3, 4, 8}}}));
}

TEST(AffinityText, IsRefusedWhereMalformed) {
  for (const char *const text :
       {"",     "a",    "a;b:1",  "a:1;",   ";a:1",         "a:1;;b:2",       "a:x",
        "a:1,", "a:,1", "a:1,,2", "a:1-",   "a:-1",         "a:1-2-3",        "a:3-1",
        "a: 1", "a:1 ", "a:+1",   "a:1,+2", "a:2147483648", "a:1-2147483648", "a:99999999999999999999",
        "a:0x1"})
    EXPECT_EQ(parsed(text), nullptr) << text;
  EXPECT_EQ(parseAffinityAllocField(nullptr), nullptr);
}

TEST(AffinityText, HasAtMost1048576Cpus) {
  EXPECT_NE(parsed("a:0-1048575"), nullptr);
  EXPECT_EQ(parsed("a:0-1048576"), nullptr);
  EXPECT_EQ(parsed("a:0-1048574;b:0-1"), nullptr);
  EXPECT_EQ(parsed("a:0-2147483647,0-2147483647"), nullptr);
}

TEST(AffinityAllocation, IsWrittenInRanges) {
  EXPECT_EQ(textOf(Hosts{{"a", {0, 1, 2, 3, 8}}, {"b", {}}, {"c", {1, 2}}}), "a:0-3,8;b:;c:1-2");
  EXPECT_EQ(textOf(Hosts{{"a", {2147483646, 2147483647}}}), "a:2147483646-2147483647");
}

TEST(AffinityAllocation, IsWrittenAsItStandsWhenItIsNotAscending) {
  EXPECT_EQ(textOf(Hosts{{"a", {3, 2, 2147483647, -2147483647 - 1, 5}}}), "a:3,2,2147483647,-2147483648,5");
}

TEST(AffinityAllocation, HasNoTextWithoutHosts) {
  const affinityAlloc empty = {};
  const affinityAlloc missing = {2, nullptr};
  EXPECT_EQ(textOf(&empty), "none");
  EXPECT_EQ(textOf(&missing), "none");
  EXPECT_EQ(textOf(static_cast<const affinityAlloc *>(nullptr)), "none");
}

TEST(AffinityAllocation, IsWrittenWithoutWhatIsMissing) {
  affinityHost host = {nullptr, 3, nullptr};
  const affinityAlloc allocation = {1, &host};
  EXPECT_EQ(textOf(&allocation), ":");
}

TEST(AffinityAllocation, IsEmptyAfterItsRelease) {
  const OwnedAllocation allocation = parsed("a:1");
  freeupAffinityJobData(allocation.get());
  EXPECT_EQ(allocation->hosts, nullptr);
  EXPECT_EQ(allocation->numHosts, 0);
  freeupAffinityJobData(nullptr);
}

RC_GTEST_PROP(AffinityText, ReadsBackToTheSameAllocation, ()) {
  const auto names = *rc::gen::nonEmpty(rc::gen::container<std::vector<std::string>>(
      rc::gen::element<std::string>("a", "host:1", "", "x-y", "fe80::1%eth0")));
  Hosts hosts;
  for (const std::string &name : names) {
    const auto drawn = *rc::gen::container<std::vector<int32_t>>(rc::gen::inRange(0, 40));
    const std::set<int32_t> cpus(drawn.begin(), drawn.end());
    hosts.emplace_back(name, std::vector(cpus.begin(), cpus.end()));
  }
  RC_ASSERT(hostsIn(textOf(Hosts(hosts))) == hosts);
}

}  // namespace
