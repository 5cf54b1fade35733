// Lines that announce more than they hold, or fewer than nothing, in every place where a line tells a count.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "fuzz/second_reader.h"
#include "hostile/allocation_meter.h"
#include "support/collected_lines.h"
#include "support/sampler.h"
#include "support/small_records.h"
#include "support/user_directory.h"
#include "wmq/schema.h"

namespace wmq::testing {
namespace {

std::string withoutIndices(const std::string &path) {
  std::string plain;
  for (const char c : path)
    if (plain.empty() || plain.back() != '[' || c < '0' || c > '9') plain += c;
  return plain;
}

bool isRead(const wmqField &field) {
  return (field.flags & (WMQ_FIELD_WRITTEN_ONLY | WMQ_FIELD_OFF_LINE)) == 0 && *field.form != '\0';
}

// Every count that lines of a layout carry, by its path. Where pairs carry the members of entries, these have
// names of their own.
void addCounts(const wmqLayout &layout, const std::string &path, bool pairs, std::set<std::string> &paths) {
  for (size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!isRead(field)) continue;
    const std::string name = path + field.name;
    if (field.shape == WMQ_SHAPE_COUNTED && field.kind != WMQ_KIND_NETWORK)
      paths.insert(path + field.countName);
    if (field.kind == WMQ_KIND_SUBMIT_EXT || field.kind == WMQ_KIND_NAMED_VALUES) paths.insert(name);
    if (field.kind != WMQ_KIND_STRUCT) continue;
    if (pairs && std::strcmp(field.name, "hostRusage") == 0) {
      paths.insert("hostRusage[].numHRusageAttrs");
    } else {
      addCounts(*field.layout, name + (field.shape == WMQ_SHAPE_COUNTED ? "[]." : "."), pairs, paths);
    }
  }
}

std::set<std::string> countsOf(int32_t type) {
  const wmqLayout &layout = *wmq_schema(type);
  const std::set<int32_t> ofPairs = {EVENT_JOB_FINISH2, EVENT_JOB_STATUS2, EVENT_JOB_PENDING_REASONS,
                                     EVENT_JOB_STARTLIMIT};
  const bool pairs = ofPairs.contains(type);
  std::set<std::string> paths;
  if (pairs) paths.insert("pairs");
  addCounts(layout, "", pairs, paths);
  return paths;
}

class EveryCountOfALine : public ::testing::Test {
 protected:
  // Calls `use` with each good line, its reading and each count on it.
  template <typename Use>
  void forEachCount(Use use) const {
    std::vector<std::string> lines = goldenLines();
    for (std::string &line : sampledLines()) lines.push_back(std::move(line));
    for (const std::string &line : lines) {
      const SecondReading reading = readSecondly(line, names);
      if (reading.error != 0) continue;
      for (const CountPlace &place : reading.counts) use(line, reading, place);
    }
  }

  static std::string replaced(const std::string &line, const CountPlace &place, const std::string &count) {
    const bool bare = line[place.begin] == ' ';
    return line.substr(0, place.begin) + (bare ? " " : "") + count + line.substr(place.end);
  }

  // The library's error, with what it took measured.
  static int errorOf(const std::string &line, Allocated &taken) {
    resetMeter();
    const OwnedRecord record = parse(line);
    taken = allocated();
    return record == nullptr ? wmq_errno : 0;
  }

  const UserNames names = {{0, "root"}, {2, "two"}, {1001, "anna"}};
  const UserDirectory users{names};
};

TEST_F(EveryCountOfALine, IsAmongThoseTried) {
  std::map<int32_t, std::set<std::string>> tried;
  forEachCount([&](const std::string &, const SecondReading &reading, const CountPlace &place) {
    tried[reading.type].insert(withoutIndices(place.path));
  });
  for (const int32_t type : typesWithLine())
    for (const std::string &path : countsOf(type))
      EXPECT_TRUE(tried[type].contains(path)) << wmq_typename(type) << ": " << path;
}

TEST_F(EveryCountOfALine, MayBeHugeOrNegativeAtNoCost) {
  size_t tried = 0;
  forEachCount([&](const std::string &good, const SecondReading &, const CountPlace &place) {
    Allocated needed;  // the line may stand for more hosts than it has bytes
    errorOf(good, needed);
    for (const char *count : {"2147483647", "-1", "99999999999999999999"}) {
      const std::string line = replaced(good, place, count);
      Allocated taken;
      const int error = errorOf(line, taken);
      const size_t bound = 64 * line.size();
      ASSERT_EQ(error, readSecondly(line, names).error) << place.path << '\n' << line;
      ASSERT_LE(taken.largest, needed.largest + bound) << place.path << '\n' << line;
      ASSERT_LE(taken.total, needed.total + bound) << place.path << '\n' << line;
      ++tried;
    }
  });
  EXPECT_GT(tried, 3000U);
}

// A list that cannot be there fails as a short line does, before its entries can fail otherwise.
TEST(ListsOfEntries, AreNotLookedAtWhenTheLineCannotHoldThem) {
  const auto errorWith = [](const std::string &count) {
    const OwnedRecord record =
        parse("\"JOB_MOVE\" \"10.1\" 5 1 2 3 4 5 \"ann\" 6 0 0 " + count + " \"n1\" \"n2\" 1 66 -1");
    return record == nullptr ? wmq_errno : 0;
  };
  EXPECT_EQ(errorWith("1"), WMQE_NO_MEM) << "the count of the first entry is negative";
  EXPECT_EQ(errorWith("99"), WMQE_BAD_FORMAT);
}

// The one case in which a line may ask for more than it holds.
TEST_F(EveryCountOfALine, MayBeAMillionWhereRangesAreNotChecked) {
  constexpr size_t most = 3 * sizeof(int32_t) * 1048576;
  size_t believed = 0;
  forEachCount([&](const std::string &good, const SecondReading &reading, const CountPlace &place) {
    if (place.path != "indexRangeCnt") return;
    Allocated taken;
    const int atLimit = errorOf(replaced(good, place, "1048576"), taken);
    EXPECT_LE(taken.total, most + sizeof(eventRecord) + 64 * good.size()) << good;
    believed += atLimit == 0 ? 1 : 0;
    const std::set<int32_t> checked = {EVENT_JOB_SWITCH2, EVENT_JOB_FINISH2, EVENT_JOB_STATUS2};
    EXPECT_EQ(errorOf(replaced(good, place, "1048577"), taken),
              checked.contains(reading.type) ? WMQE_BAD_FORMAT : WMQE_NO_MEM)
        << good;
  });
  EXPECT_GT(believed, 0U);
}

}  // namespace
}  // namespace wmq::testing
