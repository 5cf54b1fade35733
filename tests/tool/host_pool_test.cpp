#include "tool/host_pool.h"

#include <gtest/gtest.h>

#include <string>

namespace wmq::tool {
namespace {

std::string namesOf(HostPool &pool, const std::vector<HostShare> &shares) {
  std::vector<char *> names;
  pool.listNames(shares, names);
  std::string text;
  for (const char *name : names) text += (text.empty() ? "" : " ") + std::string(name);
  return text;
}

TEST(HostPool, TakesTheSizeOfAHostFromTheMachine) {
  EXPECT_EQ(HostPool(144, 1152).processorsOfHost(), 8U);
  EXPECT_EQ(HostPool(128, 128).processorsOfHost(), 1U);
  EXPECT_EQ(HostPool(5544, 93312).processorsOfHost(), 16U);
  EXPECT_EQ(HostPool(0, 0).processorsOfHost(), 16U);
  EXPECT_EQ(HostPool(100, 50).processorsOfHost(), 1U);
  EXPECT_EQ(HostPool(1, 1000000).processorsOfHost(), 1024U);
}

TEST(HostPool, GivesWholeHostsFirstAndNamesThemOnceForEachProcessor) {
  HostPool pool(10, 20);
  EXPECT_EQ(namesOf(pool, pool.take(5)), "node00001 node00001 node00002 node00002 node00003");
}

TEST(HostPool, ListsHostsWithTheirSlots) {
  HostPool pool(10, 20);
  HostSlots list;
  pool.listHosts(pool.take(5), list);
  ASSERT_EQ(list.hosts.size(), 3U);
  EXPECT_STREQ(list.hosts[2], "node00003");
  EXPECT_EQ(list.slots, (std::vector<int32_t>{2, 2, 1}));
}

TEST(HostPool, PutsARestWhereItFitsBest) {
  HostPool pool(10, 40);
  pool.take(2);
  pool.take(3);
  EXPECT_EQ(namesOf(pool, pool.take(1)), "node00002");
  EXPECT_EQ(namesOf(pool, pool.take(2)), "node00001 node00001");
  EXPECT_EQ(namesOf(pool, pool.take(1)), "node00003");
}

TEST(HostPool, GivesOutAgainWhatCameBack) {
  HostPool pool(4, 8);
  std::vector<HostShare> first = pool.take(4);
  pool.take(2);
  pool.giveBack(first);
  EXPECT_EQ(namesOf(pool, pool.take(3)), "node00001 node00001 node00002");
  EXPECT_EQ(pool.numHosts(), 3U);
}

TEST(HostPool, GrowsBeyondTheMachineThatTheTraceTellsOf) {
  HostPool pool(2, 4);
  EXPECT_EQ(pool.take(100).size(), 50U);
  EXPECT_EQ(pool.numHosts(), 50U);
}

}  // namespace
}  // namespace wmq::tool
