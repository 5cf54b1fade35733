// A reader looks at the gates of a line by two thresholds, found once for its version: the answers are those
// of the definition.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "wmq.stream/presence.h"

namespace wmq {
namespace {

std::vector<float> thresholds() {
  std::vector<float> all;
  for (int hundredths = 1; hundredths <= 1200; ++hundredths)
    all.push_back(static_cast<float>(hundredths) / 100);
  for (const float written : {2.2F, 3.0F, 4.0F, 5.0F, 6.0F, 6.1F, 7.03F, 9.1F, 9.11F, 9.13F, 10.1F})
    all.push_back(written);
  return all;
}

void expectSameGates(float version) {
  static const std::vector<float> all = thresholds();
  for (const float threshold : all)
    for (const Gate gate : {atLeast(threshold), above(threshold), Gate{WMQ_GATE_ALWAYS, threshold}})
      ASSERT_EQ(gateOpen(gate, openGatesOf(version)), gateOpen(gate, version))
          << "version " << version << ", threshold " << threshold << ", kind " << gate.kind;
}

TEST(Gates, AreOpenAsDefinedAroundEveryThreshold) {
  for (const float threshold : thresholds()) {
    const auto bits = std::bit_cast<int32_t>(threshold);
    for (const int away :
         {-1000, -101, -100, -99, -85, -84, -83, -42, -2, -1, 0, 1, 2, 42, 83, 84, 85, 99, 100, 101, 1000})
      ASSERT_NO_FATAL_FAILURE(expectSameGates(std::bit_cast<float>(bits + away)));
  }
}

RC_GTEST_PROP(Gates, AreOpenAsDefinedForAnyVersion, ()) {
  const auto fromHalfTo16 = *rc::gen::inRange<uint32_t>(0x3f000000, 0x41800000);  // the bits of a float
  const auto any = *rc::gen::arbitrary<uint32_t>();
  for (const uint32_t bits : {fromHalfTo16, any}) expectSameGates(std::bit_cast<float>(bits));
  RC_ASSERT(!::testing::Test::HasFailure());
}

TEST(Gates, AreOpenAsDefinedForVersionsThatAreNone) {
  constexpr float infinite = std::numeric_limits<float>::infinity();
  for (const float version : {0.0F, -0.0F, -1.0F, -10.1F, infinite, -infinite, std::nanf(""), 1e-45F, 3e38F})
    for (const float before : {10.1F, version}) {
      openGatesOf(before);
      expectSameGates(version);
    }
}

TEST(Gates, AreClosedBeforeAThreadHasAVersion) {
  std::thread([] { expectSameGates(0); }).join();
}

}  // namespace
}  // namespace wmq
