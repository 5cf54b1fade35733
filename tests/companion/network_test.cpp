#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "wmq/companion.h"

namespace {

using Networks = std::vector<std::pair<std::string, int32_t>>;

Networks networksIn(const std::string &text) {
  int32_t count = -1;
  networkAlloc *allocations = nullptr;
  EXPECT_EQ(getNetworkAllocFromString(text.c_str(), &count, &allocations), 0) << text;
  Networks networks;
  for (int32_t i = 0; i < count; ++i) networks.emplace_back(allocations[i].name, allocations[i].numWindows);
  freeNetworkAlloc(count, allocations);
  if (count > 0) {
    EXPECT_EQ(allocations[0].name, nullptr);
  }
  std::free(allocations);
  return networks;
}

std::string textOf(Networks &&networks) {
  std::vector<networkAlloc> allocations;
  for (auto &[name, windows] : networks) allocations.push_back({name.data(), windows});
  char *const text = getNetworkAllocAsString(static_cast<int32_t>(allocations.size()), allocations.data());
  std::string result = text == nullptr ? "none" : text;
  std::free(text);
  return result;
}

TEST(NetworkText, ListsNamesAndWindowCounts) {
  EXPECT_EQ(networksIn("ib0=4;eth1=1"), (Networks{{"ib0", 4}, {"eth1", 1}}));
  EXPECT_EQ(networksIn("=0"), (Networks{{"", 0}}));
  EXPECT_EQ(networksIn("a=-2147483648"), (Networks{{"a", INT32_MIN}}));
  EXPECT_EQ(networksIn("a=2147483647"), (Networks{{"a", INT32_MAX}}));
}

TEST(NetworkText, SeparatesAtTheLastEqualsSign) {
  EXPECT_EQ(networksIn("mode=ip=2"), (Networks{{"mode=ip", 2}}));
}

TEST(NetworkText, HasNoEntriesWhenEmpty) {
  EXPECT_EQ(networksIn(""), Networks{});
  int32_t count = -1;
  networkAlloc *allocations = nullptr;
  EXPECT_EQ(getNetworkAllocFromString(nullptr, &count, &allocations), 0);
  EXPECT_EQ(count, 0);
}

TEST(NetworkText, IsRefusedWhereMalformed) {
  for (const char *const text :
       {"a", "a=", "a=1;", ";a=1", "a=1;;b=2", "a=x", "a=1x", "a= 1", "a=1 ", "a=+1", "a=-", "a=--1",
        "a=2147483648", "a=-2147483649", "a=1;b", "a=99999999999999999999"}) {
    int32_t count = -1;
    networkAlloc placeholder;
    networkAlloc *allocations = &placeholder;
    EXPECT_EQ(getNetworkAllocFromString(text, &count, &allocations), WMQE_BAD_FORMAT) << text;
    EXPECT_EQ(count, 0);
    EXPECT_EQ(allocations, nullptr);
  }
}

TEST(NetworkAllocation, HasATextOnlyWithEntries) {
  EXPECT_EQ(textOf({{"ib0", 4}, {"", -1}}), "ib0=4;=-1");
  EXPECT_EQ(textOf({}), "none");
  EXPECT_EQ(getNetworkAllocAsString(2, nullptr), nullptr);
}

TEST(NetworkAllocation, IsWrittenWithoutAMissingName) {
  const networkAlloc allocation = {nullptr, 3};
  char *const text = getNetworkAllocAsString(1, &allocation);
  EXPECT_STREQ(text, "=3");
  std::free(text);
}

RC_GTEST_PROP(NetworkText, ReadsBackToTheSameAllocations, ()) {
  const auto networks = *rc::gen::nonEmpty(rc::gen::container<Networks>(rc::gen::pair(
      rc::gen::element<std::string>("ib0", "", "a=b", "=", "x y"), rc::gen::arbitrary<int32_t>())));
  RC_ASSERT(networksIn(textOf(Networks(networks))) == networks);
}

}  // namespace
