#include "quantiles.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace wmq::tool {

namespace {

// Classes of one power of two. Samples below twice this number have a class each.
constexpr unsigned classBits = 7;
constexpr uint64_t classesPerPower = uint64_t{1} << classBits;

size_t classOf(uint64_t sample) {
  if (sample < 2 * classesPerPower) return static_cast<size_t>(sample);
  unsigned shift = static_cast<unsigned>(std::bit_width(sample)) - 1 - classBits;
  return static_cast<size_t>(shift * classesPerPower + (sample >> shift));
}

uint64_t middleOf(size_t number) {
  if (number < 2 * classesPerPower) return number;
  uint64_t shift = number / classesPerPower - 1;
  uint64_t lowest = (number - shift * classesPerPower) << shift;
  return lowest + (uint64_t{1} << shift) / 2;
}

void countIn(std::vector<uint64_t> &classes, uint64_t sample) {
  size_t number = classOf(sample);
  if (number >= classes.size()) {
    classes.reserve((number / classesPerPower + 1) * classesPerPower);
    classes.resize(number + 1);
  }
  ++classes[number];
}

}  // namespace

void Quantiles::add(uint64_t sample) {
  ++numSamples;
  if (isExact() && samples.size() < exactSamples && sample <= UINT32_MAX) {
    // There are as many of these as users: half of the room in them would be most of what a run takes.
    if (samples.size() == samples.capacity())
      samples.reserve(std::min(exactSamples, samples.size() + samples.size() / 8 + 4));
    samples.push_back(static_cast<uint32_t>(sample));
    return;
  }
  for (uint32_t earlier : samples) countIn(classes, earlier);
  samples = std::vector<uint32_t>();  // an empty list would keep the memory
  countIn(classes, sample);
}

bool Quantiles::isExact(uint64_t quantile) const { return isExact() || quantile < 2 * classesPerPower; }

uint64_t Quantiles::at(double share) const {
  if (numSamples == 0) return 0;
  auto rank = static_cast<uint64_t>(std::ceil(share * static_cast<double>(numSamples)));
  rank = std::clamp<uint64_t>(rank, 1, numSamples);
  if (isExact()) {
    std::vector<uint32_t> sorted = samples;
    auto wanted = sorted.begin() + static_cast<std::ptrdiff_t>(rank - 1);
    std::nth_element(sorted.begin(), wanted, sorted.end());
    return *wanted;
  }
  uint64_t seen = 0;
  for (size_t number = 0; number < classes.size(); ++number) {
    seen += classes[number];
    if (seen >= rank) return middleOf(number);
  }
  return middleOf(classes.size() - 1);
}

}  // namespace wmq::tool
