// What holds for every record of every type, tried on random ones.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "support/asymmetries.h"
#include "support/record_text.h"
#include "support/sampler.h"
#include "support/user_directory.h"
#include "wmq/json.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

// The tests of a type bear its name.
class EveryRecord : public ::testing::TestWithParam<int32_t> {};
class EveryLine : public ::testing::TestWithParam<int32_t> {};

std::string testName(const ::testing::TestParamInfo<int32_t> &tested) {
  const char *name = wmq_typename(tested.param);
  return name != nullptr ? name : "code_" + std::to_string(tested.param);
}

INSTANTIATE_TEST_SUITE_P(OfType, EveryRecord, ::testing::ValuesIn(typesWithSchema()), testName);
INSTANTIATE_TEST_SUITE_P(OfType, EveryLine, ::testing::ValuesIn(typesWithLine()), testName);

rc::Gen<Seed> anySeed() {
  return rc::gen::build<Seed>(rc::gen::set(&Seed::value), rc::gen::set(&Seed::size, rc::gen::inRange(0, 6)));
}

// Where the first difference of two lines is, for messages.
std::string difference(const std::string &expected, const std::string &actual) {
  const auto [at, end] = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  if (at == expected.end() && end == actual.end()) return "";
  const auto byte = static_cast<size_t>(at - expected.begin());
  const size_t from = byte - std::min<size_t>(byte, 40);
  return "at byte " + std::to_string(byte) + ":\n" + expected.substr(from, 120) + '\n' +
         actual.substr(from, 120);
}

template <typename Property>
void holds(const Property &property) {
  EXPECT_TRUE(rc::check(property));
}

// ----------------------------------------------------------------------------------- samples

TEST(Samples, AreTheSameForTheSameSeed) {
  for (const int32_t type : typesWithSchema()) {
    const Seed seed = {.value = 4711, .size = 5};
    EXPECT_EQ(jsonOf(*sampleRecord(type, seed)), jsonOf(*sampleRecord(type, seed)));
  }
}

TEST(Samples, DifferFromSeedToSeed) {
  for (const int32_t type : typesWithSchema())
    EXPECT_NE(jsonOf(*sampleRecord(type, {.value = 1})), jsonOf(*sampleRecord(type, {.value = 2}))) << type;
}

TEST(Samples, AreNotThereForTypesWithoutASchema) {
  EXPECT_EQ(sampleRecord(0, {}), nullptr);
  EXPECT_EQ(sampleRecord(WMQ_MAX_EVENT_TYPE + 1, {}), nullptr);
}

// -------------------------------------------------------------------------------- there and back

TEST_P(EveryLine, ReadsBackToARecordThatWritesTheSameBytes) {
  holds([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    avoidAsymmetries(*record);
    const std::string line = written(*record);
    RC_ASSERT(wmq_errno == 0);
    const OwnedRecord read = parse(line);
    RC_LOG() << (read == nullptr ? line + wmq_errdetail() : difference(line, written(*read))) << '\n';
    RC_ASSERT(read != nullptr);
    RC_ASSERT(written(*read) == line);
  });
}

// What is not lost needs no exemption.
TEST(Asymmetries, AreAllReal) {
  const auto comesBack = [](const eventRecord &record) {
    const std::string line = written(record);
    const OwnedRecord read = parse(line);
    return read != nullptr && written(*read) == line;
  };
  for (const Asymmetry &asymmetry : asymmetries()) {
    for (const int32_t type : asymmetry.types) {
      bool lost = false;
      for (uint64_t value = 1; !lost && value <= 1000; ++value) {
        const OwnedRecord record = sampleRecord(type, {.value = value});
        avoidAsymmetries(*record, &asymmetry);
        lost = !comesBack(*record);
      }
      EXPECT_TRUE(lost) << wmq_typename(type) << ": " << asymmetry.loss;
    }
  }
}

TEST_P(EveryRecord, ComesBackFromItsJsonAsItWas) {
  holds([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    const std::string json = jsonOf(*record);
    RC_ASSERT(!json.empty());
    const OwnedRecord read(wmq_json2record(json.data(), json.size()));
    RC_LOG() << (read == nullptr ? json + wmq_jsonerror() : difference(json, jsonOf(*read))) << '\n';
    RC_ASSERT(read != nullptr);
    RC_ASSERT(read->eventTime == record->eventTime);
    RC_ASSERT(jsonOf(*read) == json);
  });
}

TEST_P(EveryLine, TellsTheSameAsTheRecordThatItIsReadTo) {
  holds([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    avoidAsymmetries(*record);
    const OwnedRecord read = parse(written(*record));
    RC_ASSERT(read != nullptr);
    const OwnedRecord again = parse(written(*read));
    RC_ASSERT(again != nullptr);
    RC_LOG() << difference(jsonOf(*read), jsonOf(*again)) << '\n';
    RC_ASSERT(jsonOf(*again) == jsonOf(*read));
  });
}

// --------------------------------------------------------------------------------------- release

TEST_P(EveryRecord, OwnsNothingAnyMoreWhenReleased) {
  holds([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    const std::vector<std::string> kept = ownedMembers(*record, {.freed = false});
    freeLogRec(record.get());
    RC_ASSERT(ownedMembers(*record, {.kept = false}) == std::vector<std::string>{});
    RC_ASSERT(ownedMembers(*record) == kept);
    wmq_freekept(record.get());
    RC_ASSERT(ownedMembers(*record) == std::vector<std::string>{});
  });
}

TEST_P(EveryRecord, IsReleasedOnce) {
  holds([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    for (const auto release : {freeLogRec, wmq_freekept}) {
      release(record.get());
      const eventRecord before = *record;
      release(record.get());
      RC_ASSERT(std::memcmp(&before, record.get(), sizeof before) == 0);
    }
  });
}

// ---------------------------------------------------------------------------------------- damage

// One byte, or a few, changed, lost, added, doubled or cut off.
void damage(std::string &line) {
  static const std::string meaningful = "\" \n0123456789-+.*:;=n";
  const auto at = *rc::gen::inRange<size_t>(0, line.size() + 1);
  const auto length = *rc::gen::inRange<size_t>(0, 10);
  switch (*rc::gen::inRange(0, 6)) {
    case 0:
      line.resize(at);
      break;
    case 1:
      line.erase(at, length);
      break;
    case 2:
      line.insert(at, line.substr(at, length));
      break;
    case 3:
      line.insert(at, 1, *rc::gen::elementOf(meaningful));
      break;
    case 4:
      line.replace(at, 1, 1, *rc::gen::elementOf(meaningful));
      break;
    default:
      line.replace(at, 1, 1, *rc::gen::arbitrary<char>());
  }
}

std::string damaged(std::string line) {
  static const char *const versions[] = {"2.1", "2.2", "3.0",  "3.01", "3.1",  "4.0",
                                         "4.1", "5.0", "6.0",  "6.11", "7.0",  "7.02",
                                         "8.0", "9.1", "9.11", "9.12", "9.13", "10.0"};
  if (*rc::gen::arbitrary<bool>())
    line.replace(line.find("10.1"), 4,
                 *rc::gen::elementOf(std::vector<std::string>(std::begin(versions), std::end(versions))));
  for (int times = *rc::gen::inRange(0, 4); times > 0; --times) damage(line);
  return line;
}

class EveryDamagedLine : public EveryLine {
 protected:
  const UserDirectory users{{{0, "root"}, {2, "two"}, {4, "four"}}};  // those that old lines do not name
};

INSTANTIATE_TEST_SUITE_P(OfType, EveryDamagedLine, ::testing::ValuesIn(typesWithLine()), testName);

TEST_P(EveryDamagedLine, IsRefusedOrReadToARecordThatCanBeReleased) {
  holds([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    const std::string line = damaged(written(*record));
    RC_LOG() << line << '\n';
    const OwnedRecord read = parse(line);
    if (read == nullptr) {
      RC_ASSERT(wmq_errno != 0);
      return;
    }
    RC_ASSERT(wmq_errno == 0);
    RC_ASSERT(!jsonOf(*read).empty());
    written(*read);
    wmq_freekept(read.get());
    freeLogRec(read.get());
    RC_ASSERT(ownedMembers(*read) == std::vector<std::string>{});
  });
}

}  // namespace
}  // namespace wmq::testing
