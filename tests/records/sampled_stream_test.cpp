// Lines of every type in every version, a hundred thousand of them.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "companion/block_cache.h"
#include "support/golden_file.h"
#include "support/parsed.h"
#include "support/temporary_directory.h"
#include "support/text_files.h"
#include "support/user_directory.h"
#include "wmq/schema.h"

namespace wmq::testing {
namespace {

constexpr size_t kLines = 100000;
constexpr size_t kLongestLine = 20000;  // of those drawn; a line of some hosts expands to a million

// Whether reading the line is quick: lists of hosts that expand without measure have tests of their own.
bool isOrdinary(const std::string &line) {
  if (line.size() > kLongestLine) return false;
  for (size_t star = line.find('*'); star != std::string::npos; star = line.find('*', star + 1)) {
    size_t digits = 0;
    while (digits < star && line[star - digits - 1] >= '0' && line[star - digits - 1] <= '9') ++digits;
    if (digits > 3) return false;
  }
  return true;
}

// The lines written by hand that give a record where every user has a name.
std::vector<std::string> goodLines() {
  std::vector<std::string> lines;
  for (const std::string &path : goldenFiles())
    for (const GoldenCase &golden : readGoldenFile(path))
      if (golden.read && (golden.json || golden.error == WMQE_NO_USER) && isOrdinary(*golden.read))
        lines.push_back(*golden.read);
  return lines;
}

class SampledStream : public ::testing::Test {
 protected:
  // The same lines at each run.
  std::vector<const std::string *> sample(size_t count) const {
    std::mt19937 random(20240229);
    std::vector<const std::string *> drawn;
    for (size_t i = 0; i < count; ++i) drawn.push_back(&lines[random() % lines.size()]);
    return drawn;
  }

  // How many of the lines do not give a record.
  static size_t decode(const std::vector<const std::string *> &drawn) {
    size_t failed = 0;
    for (const std::string *line : drawn) {
      wmq_errno = 0;
      eventRecord *record = wmq_readstreamlineMT(line->c_str());
      if (record == nullptr) {
        if (++failed < 5) ADD_FAILURE() << wmq_errno << ' ' << wmq_errdetail() << "\n" << *line;
        continue;
      }
      wmq_freekept(record);
      wmq_freelogrec(record);
    }
    return failed;
  }

  UserDirectory users{{{0, "root"}, {-1, "nobody"}, {2000000001, "somebody"}}};
  const std::vector<std::string> lines = goodLines();
};

TEST_F(SampledStream, HoldsEveryTypeOnBothSidesOfEachOfItsVersions) {
  std::map<int32_t, std::set<float>> versions;
  for (const std::string &line : lines) {
    const OwnedRecord record = parsed(line);
    versions[record->type].insert(wmq_lineversion());
  }
  size_t types = 0;
  for (int32_t type = 1; type <= WMQ_MAX_EVENT_TYPE; ++type) {
    const wmqLayout *layout = wmq_typename(type) != nullptr ? wmq_schema(type) : nullptr;
    if (layout == nullptr || layout->numFields == 0) continue;
    ++types;
    const std::set<float> &seen = versions[type];
    ASSERT_FALSE(seen.empty()) << wmq_typename(type);
    for (size_t i = 0; i < layout->numFields; ++i) {
      const wmqField &field = layout->fields[i];
      const auto open = [&](float version) { return wmq_gateopen(&field, version) != 0; };
      EXPECT_TRUE(std::any_of(seen.begin(), seen.end(), open)) << wmq_typename(type) << ' ' << field.name;
      // Lines too old for a user id have no user to look up, and so are never read.
      const bool alwaysCarried = std::string_view(field.name) == "userId";
      if (field.gate != WMQ_GATE_ALWAYS && !alwaysCarried) {
        EXPECT_FALSE(std::all_of(seen.begin(), seen.end(), open)) << wmq_typename(type) << ' ' << field.name;
      }
    }
  }
  EXPECT_EQ(types, 63U) << "62 types with a body, and the end of a stream";
}

TEST_F(SampledStream, IsReadFromItsFileWithoutAFault) {
  const TemporaryDirectory directory;
  std::string path = directory / "s";
  std::string text;
  for (const std::string *line : sample(kLines)) text += *line + '\n';
  makeFile(path, text);
  const streamParams params{path.data(), 0, 3, 0, nullptr, nullptr, nullptr};
  ASSERT_EQ(wmq_openstream(&params), 0);
  std::set<int32_t> types;
  int lineNum = 0;
  wmq_errno = 0;
  while (eventRecord *record = wmq_readstream(&lineNum)) {
    types.insert(record->type);
    wmq_freekept(record);
  }
  EXPECT_EQ(wmq_errno, WMQE_EOF) << wmq_errdetail();
  EXPECT_EQ(lineNum, static_cast<int>(kLines) + 1);
  EXPECT_EQ(wmq_closestream(), 0);
  wmq_readstreamline("");  // releases the record that the library keeps
  std::set<int32_t> expected;
  for (const std::string &line : lines) expected.insert(parsed(line)->type);
  EXPECT_EQ(types, expected) << "every type was drawn";
}

// The first pass fills what the allocator keeps for quick reuse. From then on each pass leaves the process
// with exactly the bytes that it had: even one string lost in all of them shows.
TEST_F(SampledStream, LeavesNothingInMemory) {
  const std::vector<const std::string *> drawn = sample(kLines);
  EXPECT_EQ(decode(drawn), 0U);
  freeKeptBlocks();
  const size_t before = mallinfo2().uordblks;
  EXPECT_EQ(decode(drawn), 0U);
  freeKeptBlocks();
  EXPECT_EQ(mallinfo2().uordblks, before);
}

}  // namespace
}  // namespace wmq::testing
