#include "support/collected_lines.h"

#include "support/golden_file.h"
#include "support/record_text.h"
#include "support/sampler.h"

namespace wmq::testing {
namespace {

// What `textOf` makes of samples of the types, poor ones and rich ones.
template <typename TextOf>
std::vector<std::string> sampled(const std::vector<int32_t> &types, TextOf textOf) {
  std::vector<std::string> texts;
  for (const int32_t type : types)
    for (const int size : {1, 3}) texts.push_back(textOf(*sampleRecord(type, {.value = 1, .size = size})));
  return texts;
}

template <typename Use>
void forEachGoldenCase(Use use) {
  for (const std::string &path : goldenFiles())
    for (const GoldenCase &golden : readGoldenFile(path)) use(golden);
}

}  // namespace

std::vector<std::string> goldenLines() {
  std::vector<std::string> lines;
  forEachGoldenCase([&](const GoldenCase &golden) {
    if (golden.read) lines.push_back(*golden.read);
  });
  return lines;
}

std::vector<std::string> sampledLines() {
  return sampled(typesWithLine(), [](const eventRecord &record) {
    std::string line = written(record);
    if (line.ends_with('\n')) line.pop_back();
    return line;
  });
}

std::vector<std::string> goldenJson() {
  std::vector<std::string> texts;
  forEachGoldenCase([&](const GoldenCase &golden) {
    if (golden.json) texts.push_back(*golden.json);
  });
  return texts;
}

std::vector<std::string> sampledJson() { return sampled(typesWithSchema(), jsonOf); }

}  // namespace wmq::testing
