#include "companion/host_list.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "companion/written_text.h"
#include "wmq/companion.h"

namespace {

using Names = std::vector<std::string>;

// An array of owned strings, as records hold them.
class HostArray {
 public:
  HostArray() = default;
  explicit HostArray(const Names &names) : count(static_cast<int>(names.size())) {
    if (names.empty()) return;
    hosts = static_cast<char **>(std::malloc(names.size() * sizeof(char *)));
    for (size_t i = 0; i < names.size(); ++i) hosts[i] = strdup(names[i].c_str());
  }
  ~HostArray() {
    for (int i = 0; hosts != nullptr && i < count; ++i) std::free(hosts[i]);
    std::free(hosts);
  }
  HostArray(const HostArray &) = delete;
  HostArray &operator=(const HostArray &) = delete;

  Names names() const { return hosts == nullptr ? Names{} : Names(hosts, hosts + count); }

  int count = 0;
  char **hosts = nullptr;
};

Names compressed(const Names &names) {
  const HostArray list(names);
  HostArray shorter;
  EXPECT_EQ(compressHostList(list.count, list.hosts, &shorter.count, &shorter.hosts), 0);
  EXPECT_EQ(list.names(), names);
  EXPECT_EQ(shorter.hosts == nullptr, shorter.count == 0);
  return shorter.names();
}

Names expanded(const Names &names) {
  HostArray list(names);
  EXPECT_EQ(uncompressHostList(&list.count, &list.hosts), 0);
  return list.names();
}

std::string listText(const Names &names) {
  const HostArray list(names);
  return wmq::test::writtenBy([&](FILE *file) { EXPECT_EQ(writeHostList(file, list.count, list.hosts), 0); });
}

rc::Gen<Names> listWithRuns() {
  return rc::gen::container<Names>(
      rc::gen::element<std::string>("a", "a", "b", "", "2*a", "1*", "*", "02*a", "3*3*b", "h\"q", "12"));
}

TEST(CompressedHostLists, HoldARunOnce) {
  EXPECT_EQ(compressed({"a", "a", "a", "b", "c", "c"}), (Names{"3*a", "b", "2*c"}));
  EXPECT_EQ(compressed({"", ""}), (Names{"2*"}));
  EXPECT_EQ(compressed(Names(120, "node")), (Names{"120*node"}));
}

TEST(CompressedHostLists, DoNotExistWhereNothingGetsShorter) {
  EXPECT_EQ(compressed({}), Names{});
  EXPECT_EQ(compressed({"a"}), Names{});
  EXPECT_EQ(compressed({"a", "b", "a"}), Names{});
}

TEST(CompressedHostLists, ProtectNamesThatLookCompressed) {
  EXPECT_EQ(compressed({"3*h"}), (Names{"1*3*h"}));
  EXPECT_EQ(compressed({"a", "3*h", "3*h"}), (Names{"a", "2*3*h"}));
  EXPECT_EQ(compressed({"1*1*h"}), (Names{"1*1*1*h"}));
  EXPECT_EQ(compressed({"*h", "0*h", "03*h", "+3*h", " 3*h", "3"}), Names{});
}

TEST(CompressedHostLists, TakeAMissingNameForAnEmptyOne) {
  char *hosts[] = {nullptr, nullptr};
  HostArray shorter;
  ASSERT_EQ(compressHostList(2, hosts, &shorter.count, &shorter.hosts), 0);
  EXPECT_EQ(shorter.names(), (Names{"2*"}));
}

TEST(CompressedHostLists, DoNotExistForAMissingArray) {
  HostArray shorter;
  EXPECT_EQ(compressHostList(3, nullptr, &shorter.count, &shorter.hosts), 0);
  EXPECT_EQ(compressHostList(-1, nullptr, &shorter.count, &shorter.hosts), 0);
  EXPECT_EQ(shorter.hosts, nullptr);
}

TEST(ExpandingAHostList, RepeatsNames) {
  EXPECT_EQ(expanded({"2*a", "b", "3*c"}), (Names{"a", "a", "b", "c", "c", "c"}));
  EXPECT_EQ(expanded({"1*a"}), (Names{"a"}));
  EXPECT_EQ(expanded({"2*"}), (Names{"", ""}));
}

TEST(ExpandingAHostList, ExpandsOnlyOnce) { EXPECT_EQ(expanded({"2*3*h"}), (Names{"3*h", "3*h"})); }

TEST(ExpandingAHostList, LeavesPlainNamesAlone) {
  const Names plain = {"a", "*a", "0*a", "02*a", "-2*a", "+2*a", " 2*a", "2 *a", "2a*", "12", ""};
  EXPECT_EQ(expanded(plain), plain);
}

TEST(ExpandingAHostList, LeavesNothingToExpandAlone) {
  int count = -3;
  char **none = nullptr;
  EXPECT_EQ(uncompressHostList(&count, &none), 0);
  EXPECT_EQ(uncompressHostList(nullptr, &none), 0);
  EXPECT_EQ(uncompressHostList(&count, nullptr), 0);
  EXPECT_EQ(count, -3);
  count = 4;
  EXPECT_EQ(uncompressHostList(&count, &none), 0);
  EXPECT_EQ(count, 4);
}

TEST(ExpandingAHostList, KeepsAMissingName) {
  HostArray list({"2*a", "b"});
  std::free(list.hosts[1]);
  list.hosts[1] = nullptr;
  ASSERT_EQ(uncompressHostList(&list.count, &list.hosts), 0);
  ASSERT_EQ(list.count, 3);
  EXPECT_STREQ(list.hosts[1], "a");
  EXPECT_EQ(list.hosts[2], nullptr);
}

TEST(ExpandingAHostList, RefusesTooManyHostsAndLeavesTheListAsItWas) {
  for (const char *const name : {"16777217*h", "9223372036854775807*h", "99999999999999999999999999*h"}) {
    HostArray list({"2*a", name});
    EXPECT_EQ(uncompressHostList(&list.count, &list.hosts), WMQE_BAD_FORMAT) << name;
    EXPECT_EQ(list.names(), (Names{"2*a", name}));
  }
}

TEST(ExpandingAHostList, ObeysTheLimitToTheHost) {
  HostArray list({"3*a", "b"});
  EXPECT_EQ(wmq::expandHosts(list.count, list.hosts, 3), WMQE_BAD_FORMAT);
  EXPECT_EQ(wmq::expandHosts(list.count, list.hosts, 4), 0);
  EXPECT_EQ(list.count, 4);
  EXPECT_EQ(wmq::expandHosts(list.count, list.hosts, 3), WMQE_BAD_FORMAT);
  EXPECT_EQ(wmq::expandHosts(list.count, list.hosts, 0), WMQE_BAD_FORMAT);
  EXPECT_EQ(list.names(), (Names{"a", "a", "a", "b"}));
}

TEST(ExpandingAHostList, MakesTwoMillionHosts) {
  HostArray list({"2000000*h"});
  ASSERT_EQ(uncompressHostList(&list.count, &list.hosts), 0);
  ASSERT_EQ(list.count, 2'000'000);
  EXPECT_STREQ(list.hosts[1'999'999], "h");
}

RC_GTEST_PROP(ExpandingAHostList, UndoesCompressing, ()) {
  const Names names = *listWithRuns();
  const Names shorter = compressed(names);
  RC_ASSERT(expanded(shorter.empty() ? names : shorter) == names);
}

RC_GTEST_PROP(CompressedHostLists, AreNeverLongerAndHoldNoRun, ()) {
  const Names names = *listWithRuns();
  const Names shorter = compressed(names);
  RC_ASSERT(shorter.size() <= names.size());
  for (size_t i = 1; i < shorter.size(); ++i) RC_ASSERT(shorter[i] != shorter[i - 1]);
}

TEST(WritingAHostList, WritesTheCountAndTheQuotedNames) {
  EXPECT_EQ(listText({}), " 0");
  EXPECT_EQ(listText({"a", "b"}), " 2 \"a\" \"b\"");
  EXPECT_EQ(listText({"a", "a", "b"}), " 2 \"2*a\" \"b\"");
  EXPECT_EQ(listText({"h\"q", "3*h", "h\nl"}), " 3 \"h\"\"q\" \"1*3*h\" \"h\"nl\"");
}

// Room and text of a list that is nothing but escapes and multipliers: the most that a byte can become.
TEST(WritingAHostList, HasRoomForTheLongestForm) {
  const std::string quotes(300, '"');
  EXPECT_EQ(listText({quotes, quotes, "\n", "\n"}), " 2 \"2*" + quotes + quotes + "\" \"2*\"n\"");
}

TEST(WritingAHostList, IsMinusOneWhenNothingCanBeWritten) {
  char *hosts[] = {nullptr};
  EXPECT_EQ(writeHostList(nullptr, 1, hosts), -1);
  const std::string text = wmq::test::writtenBy([&](FILE *file) {
    EXPECT_EQ(writeHostList(file, -1, hosts), -1);
    EXPECT_EQ(writeHostList(file, 1, nullptr), -1);
  });
  EXPECT_EQ(text, "");
}

TEST(WritingAHostList, IsMinusOneWhenTheWriteFails) {
  EXPECT_EQ(wmq::test::resultOnAFullDevice([](FILE *file) { return writeHostList(file, 0, nullptr); }), -1);
}

RC_GTEST_PROP(WritingAHostList, WritesWhatCompressingGives, ()) {
  const Names names = *listWithRuns();
  const Names shorter = compressed(names);
  const Names &written = shorter.empty() ? names : shorter;
  const std::string expected = wmq::test::writtenBy([&](FILE *file) {
    std::fprintf(file, " %zu", written.size());
    for (const std::string &name : written) addQStr(file, name.c_str());
  });
  RC_ASSERT(listText(names) == expected);
}

}  // namespace
