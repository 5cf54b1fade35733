// Quantiles of any number of samples in bounded memory.
#ifndef WMQ_TOOL_QUANTILES_H
#define WMQ_TOOL_QUANTILES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wmq::tool {

// Exact up to 4096 samples below 2^32. Beyond, samples are counted in classes whose width is at most 1/128 of
// their lower end, and a quantile is the middle of its class: exact below 256, within 0.4 % above. At most
// 64 KB are taken, whatever comes, and 16 KB as long as it is exact.
class Quantiles {
 public:
  static constexpr size_t exactSamples = 4096;

  void add(uint64_t sample);

  uint64_t count() const { return numSamples; }
  bool isExact() const { return classes.empty(); }

  // Whether a quantile of that value is exact.
  bool isExact(uint64_t quantile) const;

  // The smallest sample that at least `share` (above 0, at most 1) of all samples do not exceed; 0 when there
  // are none.
  uint64_t at(double share) const;

 private:
  uint64_t numSamples = 0;
  std::vector<uint32_t> samples;  // as long as they are few
  std::vector<uint64_t> classes;  // number of samples in each class, once they are many
};

}  // namespace wmq::tool

#endif
