// What holds for every record of every type, tried on random ones.
#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cstdlib>
#include <cstring>

#include "support/asymmetries.h"
#include "support/sampler.h"
#include "wmq/json.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

using ::testing::IsEmpty;

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

// Writers change counts of the record that they are given: a copy takes that.
std::string written(const eventRecord &record) {
  eventRecord copy = record;
  return format(copy);
}

std::string jsonOf(const eventRecord &record) {
  char *buffer = nullptr;
  size_t capacity = 0;
  const ssize_t length = wmq_record2json(&record, 0, &buffer, &capacity);
  std::string json = length < 0 ? "" : std::string(buffer, static_cast<size_t>(length));
  std::free(buffer);
  return json;
}

TEST_P(EveryLine, ReadsBackToARecordThatWritesTheSameBytes) {
  rc::check([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    avoidAsymmetries(*record);
    const std::string line = written(*record);
    RC_ASSERT(wmq_errno == 0);
    const OwnedRecord read = parse(line);
    RC_LOG() << line << wmq_errdetail() << '\n';
    RC_ASSERT(read != nullptr);
    RC_ASSERT(written(*read) == line);
  });
}

TEST_P(EveryRecord, ComesBackFromItsJsonAsItWas) {
  rc::check([type = GetParam()] {
    const OwnedRecord record = sampleRecord(type, *anySeed());
    const std::string json = jsonOf(*record);
    RC_ASSERT(!json.empty());
    const OwnedRecord read(wmq_json2record(json.data(), json.size()));
    RC_LOG() << json << '\n' << wmq_jsonerror() << '\n';
    RC_ASSERT(read != nullptr);
    RC_ASSERT(read->eventTime == record->eventTime);
    RC_ASSERT(jsonOf(*read) == json);
  });
}

}  // namespace
}  // namespace wmq::testing
