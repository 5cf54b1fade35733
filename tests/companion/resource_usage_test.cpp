#include "companion/resource_usage.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>

#include "companion/written_text.h"

namespace {

using Values = std::array<double, WMX_RUSAGE_VALUES>;
static_assert(sizeof(Values) == sizeof(wmxRusage));

wmxRusage usageOf(const Values &values) { return std::bit_cast<wmxRusage>(values); }

Values counting() {
  Values values;
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i + 1);
  return values;
}

std::string textOf(const wmxRusage &usage) {
  return wmq::test::writtenBy([&](FILE *file) { EXPECT_EQ(wmxRu2Str(file, &usage, 0), 0); });
}

TEST(ResourceUsage, IsNineteenNumbersBehindBlanks) {
  EXPECT_EQ(textOf(usageOf(counting())), " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19");
}

TEST(ResourceUsage, IsWrittenAsShortAsItReadsBack) {
  Values values{};
  values[0] = 0.1;
  values[1] = 12345678.25;
  values[2] = -1;
  values[18] = 0x1p53;
  EXPECT_EQ(textOf(usageOf(values)), " 0.1 12345678.25 -1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 9007199254740992");
}

TEST(ResourceUsage, HasRoomForNineteenOfTheLongestNumbers) {
  Values values;
  values.fill(-2.2250738585072014e-308);
  const std::string text = textOf(usageOf(values));
  EXPECT_LE(text.size(), static_cast<size_t>(wmq::usageRoom));
  EXPECT_EQ(text.substr(0, 25), " -2.2250738585072014e-308");
}

TEST(ResourceUsage, IsReadInAnyFormOfANumber) {
  wmxRusage usage{};
  int consumed = -1;
  const char text[] = " 1.500000 2e3 0x10 4 5 6 7 8 9 10 11 12 13 14 15 16 17\t18   19.000000 20";
  EXPECT_EQ(str2wmxRu(text, &usage, &consumed), 19);
  EXPECT_STREQ(text + consumed, " 20");
  EXPECT_EQ(usage.ru_utime, 1.5);
  EXPECT_EQ(usage.ru_stime, 2000);
  EXPECT_EQ(usage.ru_maxrss, 16);
  EXPECT_EQ(usage.ru_elapsed, 19);
}

TEST(ResourceUsage, CountsTheNumbersOfAShortText) {
  const wmxRusage before = usageOf(counting());
  wmxRusage usage = before;
  int consumed = -1;
  EXPECT_EQ(str2wmxRu(" 50 60.5 \"x\" 70", &usage, &consumed), 2);
  EXPECT_EQ(consumed, 8);
  EXPECT_EQ(usage.ru_utime, 50);
  EXPECT_EQ(usage.ru_stime, 60.5);
  EXPECT_EQ(std::memcmp(&usage.ru_maxrss, &before.ru_maxrss, 17 * sizeof(double)), 0);

  EXPECT_EQ(str2wmxRu("", &usage, &consumed), 0);
  EXPECT_EQ(consumed, 0);
  EXPECT_EQ(str2wmxRu(" x", &usage, nullptr), 0);
  EXPECT_EQ(str2wmxRu(nullptr, &usage, &consumed), 0);
  EXPECT_EQ(str2wmxRu("1 2", nullptr, &consumed), 0);
  EXPECT_EQ(consumed, 0);
}

TEST(ResourceUsage, IsNegativeWhenItCannotBeWritten) {
  const wmxRusage usage{};
  EXPECT_LT(wmxRu2Str(nullptr, &usage, 0), 0);
  EXPECT_LT(wmq::test::resultOnAFullDevice([](FILE *file) { return wmxRu2Str(file, nullptr, 0); }), 0);
  EXPECT_LT(wmq::test::resultOnAFullDevice([&](FILE *file) { return wmxRu2Str(file, &usage, 0); }), 0);
}

RC_GTEST_PROP(ResourceUsage, ComesBackBitForBit, ()) {
  Values values;
  for (double &value : values) {
    value = std::bit_cast<double>(*rc::gen::arbitrary<uint64_t>());
    RC_PRE(!std::isnan(value));
  }
  const wmxRusage usage = usageOf(values);
  const std::string text = textOf(usage);
  wmxRusage read{};
  int consumed = 0;
  RC_ASSERT(str2wmxRu(text.c_str(), &read, &consumed) == WMX_RUSAGE_VALUES);
  RC_ASSERT(consumed == static_cast<int>(text.size()));
  RC_ASSERT(std::memcmp(&read, &usage, sizeof usage) == 0);
}

TEST(ReleasingUsage, EmptiesHostEntries) {
  hostRusageEntry entries[2] = {};
  entries[0] = {putstr_("host"), 1, 2, 3, 4, 2, nullptr};
  entries[0].attrs = static_cast<attribute *>(std::calloc(2, sizeof(attribute)));
  entries[0].attrs[0] = {putstr_("name"), putstr_("value")};
  freeHostRusage(2, entries);
  EXPECT_EQ(entries[0].name, nullptr);
  EXPECT_EQ(entries[0].attrs, nullptr);
  EXPECT_EQ(entries[0].numAttrs, 0);
  EXPECT_EQ(entries[0].stime, 4);
  freeHostRusage(2, entries);
  freeHostRusage(2, nullptr);
}

TEST(ReleasingUsage, EmptiesGpuEntries) {
  gpuRusageEntry entry = {putstr_("host"), 2, nullptr};
  entry.pairs = static_cast<keyValue *>(std::calloc(2, sizeof(keyValue)));
  entry.pairs[1] = {putstr_("key"), putstr_("value")};
  freeGpuRusage(1, &entry);
  EXPECT_EQ(entry.hostName, nullptr);
  EXPECT_EQ(entry.pairs, nullptr);
  EXPECT_EQ(entry.numPairs, 0);
  freeGpuRusage(1, nullptr);
}

TEST(ReleasingUsage, NeedsNoArrayForACount) {
  hostRusageEntry entry{};
  entry.numAttrs = 2;
  freeHostRusage(1, &entry);
  EXPECT_EQ(entry.numAttrs, 0);
  gpuRusageEntry gpu{};
  gpu.numPairs = 2;
  freeGpuRusage(1, &gpu);
  EXPECT_EQ(gpu.numPairs, 0);
  allocHostInfo info = {2, nullptr};
  freeAllocHostInfo(&info);
  EXPECT_EQ(info.numHosts, 0);
}

TEST(ReleasingUsage, EmptiesAPairAndAllocatedHosts) {
  keyValue pair = {putstr_("key"), nullptr};
  freeKeyValue(&pair);
  EXPECT_EQ(pair.key, nullptr);
  freeKeyValue(nullptr);

  allocHostInfo info = {2, static_cast<char **>(std::calloc(2, sizeof(char *)))};
  info.hosts[0] = putstr_("host");
  freeAllocHostInfo(&info);
  EXPECT_EQ(info.hosts, nullptr);
  EXPECT_EQ(info.numHosts, 0);
  freeAllocHostInfo(nullptr);
}

}  // namespace
