// What reading costs in memory: at most in proportion to the line, but for hosts that a name stands for.
#include <gtest/gtest.h>

#include <string>

#include "hostile/allocation_meter.h"
#include "hostile/hostile_lines.h"
#include "support/small_records.h"

namespace wmq::testing {
namespace {

struct Cost {
  int error;
  Allocated taken;
};

Cost costOf(const std::string &line) {
  resetMeter();
  const OwnedRecord record = parse(line);
  return {record == nullptr ? wmq_errno : 0, allocated()};
}

TEST(HostileLines, OfUpToAMillionBytesEndAsTheyShouldAtACostInProportion) {
  constexpr size_t perByte = 32;
  for (const HostileLine &hostile : hostileLines()) {
    // A small line may stand for a million CPUs, once: its cost is that of a larger one.
    const bool cpus = std::string(hostile.name) == "affinity-texts";
    const size_t fixed = cpus ? size_t{64} << 20 : sizeof(eventRecord);
    for (const size_t bytes : {size_t{10000}, size_t{100000}, size_t{1000000}}) {
      const std::string line = hostile.ofSize(bytes);
      const Cost cost = costOf(line);
      EXPECT_EQ(cost.error, hostile.error) << hostile.name << ' ' << bytes << ' ' << wmq_errdetail();
      EXPECT_LE(cost.taken.total, fixed + perByte * line.size()) << hostile.name << ' ' << bytes;
    }
  }
}

TEST(HostileLines, MayNotStandForMoreThanSixteenMillionHosts) {
  EXPECT_EQ(costOf(lineOfTimes("1000")).error, 0);
  for (const char *times : {"16777217", "1000000000", "2147483648", "99999999999999999999999"}) {
    const Cost cost = costOf(lineOfTimes(times));
    EXPECT_EQ(cost.error, WMQE_BAD_FORMAT) << times;
    EXPECT_LE(cost.taken.total, size_t{100000}) << times;
  }
}

TEST(HostileLines, MayNotStandForMoreThanSixteenMillionCpusInAllTheirTexts) {
  const auto line = [](int texts) {
    std::string pairs;
    for (int i = 0; i < texts; ++i) pairs += " \"affinityAllocInfo\" \"h:0-1048575\"";
    return "\"JOB_FINISH2\" \"10.1\" 1700000000 7 " + std::to_string(texts) + pairs;
  };
  EXPECT_EQ(costOf(line(16)).error, 0);
  EXPECT_EQ(costOf(line(17)).error, WMQE_BAD_FORMAT);
}

// A start of an old version has its hosts twice: as execution hosts and, copied, as allocated ones.
TEST(HostileLines, NameHostsAtACostInProportionToTheirNumber) {
  constexpr size_t hosts = 100000;
  constexpr size_t twice = 2 * hosts;
  const Cost named = costOf(lineOfHosts(hosts));
  EXPECT_EQ(named.error, 0);
  EXPECT_LE(named.taken.total, 2 * sizeof(eventRecord) + twice * (sizeof(char *) + sizeof("h")));
  const Cost multiplied = costOf(lineOfTimes(std::to_string(hosts)));
  EXPECT_EQ(multiplied.error, 0);
  EXPECT_LE(multiplied.taken.total, 2 * sizeof(eventRecord) + twice * (sizeof(char *) + sizeof("host")));
}

}  // namespace
}  // namespace wmq::testing
