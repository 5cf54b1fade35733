#include "tool/quantiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace wmq::tool {
namespace {

Quantiles quantilesOf(const std::vector<uint64_t> &samples) {
  Quantiles quantiles;
  for (uint64_t sample : samples) quantiles.add(sample);
  return quantiles;
}

uint64_t trueQuantile(std::vector<uint64_t> samples, double share) {
  std::sort(samples.begin(), samples.end());
  auto rank = static_cast<size_t>(std::ceil(share * static_cast<double>(samples.size())));
  return samples[rank - 1];
}

// Spread evenly over the orders of magnitude, as waiting times are.
std::vector<uint64_t> manySamples(size_t count) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> exponent(0, 31);
  std::vector<uint64_t> samples;
  for (size_t i = 0; i < count; ++i)
    samples.push_back(static_cast<uint64_t>(std::exp2(exponent(random))) - 1);
  return samples;
}

TEST(QuantilesOfFewSamples, AreTheSmallestThatSoManyDoNotExceed) {
  Quantiles quantiles = quantilesOf({40, 10, 30, 20});
  EXPECT_EQ(quantiles.at(0.5), 20U);
  EXPECT_EQ(quantiles.at(0.51), 30U);
  EXPECT_EQ(quantiles.at(0.95), 40U);
  EXPECT_EQ(quantiles.at(1), 40U);
  EXPECT_TRUE(quantiles.isExact());
}

TEST(QuantilesOfFewSamples, AreZeroWhenThereAreNone) { EXPECT_EQ(Quantiles().at(0.5), 0U); }

TEST(QuantilesOfFewSamples, AreExactUpToTheLimit) {
  std::vector<uint64_t> samples = manySamples(Quantiles::exactSamples);
  Quantiles quantiles = quantilesOf(samples);
  EXPECT_TRUE(quantiles.isExact());
  EXPECT_EQ(quantiles.at(0.5), trueQuantile(samples, 0.5));
  EXPECT_EQ(quantiles.at(0.95), trueQuantile(samples, 0.95));
}

TEST(QuantilesOfFewSamples, AreExactBelowTheLargestThatIsKept) {
  constexpr uint64_t largest = UINT32_MAX;
  Quantiles quantiles = quantilesOf({1, largest});
  EXPECT_TRUE(quantiles.isExact());
  EXPECT_EQ(quantiles.at(1), largest);
  quantiles.add(largest + 1);
  EXPECT_FALSE(quantiles.isExact());
  EXPECT_EQ(quantiles.count(), 3U);
  EXPECT_EQ(quantiles.at(0.3), 1U);
  EXPECT_NEAR(static_cast<double>(quantiles.at(1)), static_cast<double>(largest), 0.004 * largest);
}

TEST(QuantilesOfManySamples, AreAsCloseAsPromised) {
  std::vector<uint64_t> samples = manySamples(100000);
  Quantiles quantiles = quantilesOf(samples);
  EXPECT_FALSE(quantiles.isExact());
  for (double share : {0.01, 0.1, 0.25, 0.5, 0.75, 0.95, 0.99, 1.0}) {
    auto expected = static_cast<double>(trueQuantile(samples, share));
    EXPECT_NEAR(static_cast<double>(quantiles.at(share)), expected, 0.004 * expected) << share;
  }
}

TEST(QuantilesOfManySamples, AreExactWhereClassesAreOneWide) {
  Quantiles quantiles;
  for (uint64_t i = 0; i < 10000; ++i) quantiles.add(i % 256);
  EXPECT_FALSE(quantiles.isExact());
  EXPECT_EQ(quantiles.at(0.5), 127U);
  EXPECT_TRUE(quantiles.isExact(127));
  EXPECT_TRUE(quantiles.isExact(255));
  EXPECT_FALSE(quantiles.isExact(256));
}

TEST(QuantilesOfManySamples, HoldTheLargestNumber) {
  Quantiles quantiles;
  for (size_t i = 0; i <= Quantiles::exactSamples; ++i) quantiles.add(UINT64_MAX);
  auto largest = static_cast<double>(UINT64_MAX);
  EXPECT_NEAR(static_cast<double>(quantiles.at(1)), largest, 0.004 * largest);
}

}  // namespace
}  // namespace wmq::tool
