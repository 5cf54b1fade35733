#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>

#include "json/json_layout.h"
#include "json/specimen.h"
#include "json/structures.h"
#include "wmq/json.h"

namespace wmq::testing {
namespace {

template <typename Writer>
std::string written(const Specimen &specimen) {
  OutputText out{nullptr, 0};
  Writer writer(out);
  EXPECT_TRUE(writeStructure(writer, WritingPlan(specimenLayout()), &specimen));
  writer.finish();
  std::string text(out.text);
  std::free(out.text);
  return text;
}

std::string toJson(const Specimen &specimen) { return written<LineWriter>(specimen); }

// A specimen that was read, if it was, and what reading it stumbled over.
struct FromJson {
  Specimen specimen{};
  bool read = false;
  std::string fault;

  explicit FromJson(const std::string &json) {
    const Place place{nullptr, "s", 0};
    Scratch scratch{};
    read = tokenize(json.data(), json.size(), scratch) &&
           readLayout(scratch, specimenLayout(), scratch.tokens.items, &specimen, &place);
    if (!read) fault = wmq_jsonerror();
    scratch.release();
  }
  FromJson(const FromJson &) = delete;
  ~FromJson() { releaseStructure(specimenLayout(), &specimen); }
};

std::string faultOf(const std::string &json) {
  const FromJson from(json);
  return from.read ? "read" : from.fault;
}

// The members of an object, cut at the commas between them.
std::vector<std::string> membersOf(const std::string &object) {
  std::vector<std::string> members{""};
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 1; i + 1 < object.size(); ++i) {
    const char c = object[i];
    if (quoted && c == '\\') members.back() += object[i++];
    if (c == '"') quoted = !quoted;
    if (!quoted && (c == '[' || c == '{')) ++depth;
    if (!quoted && (c == ']' || c == '}')) --depth;
    if (!quoted && depth == 0 && c == ',')
      members.emplace_back();
    else
      members.back() += object[i];
  }
  return members;
}

std::string objectOf(const std::vector<std::string> &members) {
  std::string object = "{";
  for (const std::string &member : members) object += (object.size() > 1 ? "," : "") + member;
  return object + "}";
}

// Every member has a value, the arrays three elements or two.
const std::string rich =
    R"({"small":-5,"large":9223372036854775807,"single":0.1,"fine":-2.5e-300,"text":"a \"b\"\\c\n\u001f",)"
    R"("name":"sevench","inner":{"name":null,"value":2147483647},"three":[1,2,-3],"twoTexts":["",null],)"
    R"("twoTags":["abc",""],"numTexts":3,"texts":["x",null,"z"],"numLongs":2,)"
    R"("longs":[-9223372036854775808,0],)"
    R"("numEntries":2,"entries":[{"name":"n","value":1},{"name":"m","value":-1}],"rangeCnt":2,)"
    R"("rangeStart":[1,5],)"
    R"("rangeEnd":[4,9],"rangeStep":[1,2],"numCells":3,"cellRows":[11,12,13],"cellColumns":[21,22,23],)"
    R"("pointX":[1.5,"nan"],"pointY":["inf","-inf"],"numPoints":2,)"
    R"("extension":[{"key":7,"value":"v"},{"key":-7,"value":null}],)"
    R"("named":{"count":2,"names":["p",null],"values":[10,20]},"affinity":"h:0-3,8;i:","numNetworks":2,)"
    R"("networks":"a=1;b=c=2"})";

const std::string empty =
    R"({"small":0,"large":0,"single":0,"fine":0,"text":null,"name":"","inner":{"name":null,"value":0},)"
    R"("three":[0,0,0],"twoTexts":[null,null],"twoTags":["",""],"numTexts":0,"texts":null,"numLongs":0,)"
    R"("longs":null,"numEntries":0,"entries":null,"rangeCnt":0,"rangeStart":null,"rangeEnd":null,)"
    R"("rangeStep":null,"numCells":0,"cellRows":null,"cellColumns":null,)"
    R"("pointX":null,"pointY":null,"numPoints":0,"extension":null,"named":null,)"
    R"("affinity":null,"numNetworks":0,"networks":null})";

// ------------------------------------------------------------------------------ both ways

TEST(JsonLayouts, HaveNamesOfAnyLength) {
  for (std::size_t length = 1; length <= 70; ++length) {
    const std::string name(length, 'n');
    wmqField field = stated(name.c_str(), WMQ_KIND_INT32, 0, sizeof(std::int32_t));
    wmqField second = stated("last", WMQ_KIND_STRUCT, 0, sizeof(std::int32_t));
    const wmqLayout inner{"inner", sizeof(std::int32_t), 1, &field};
    second.layout = &inner;
    const wmqField fields[] = {field, second};
    const wmqLayout layout{"named", sizeof(std::int32_t), 2, fields};
    const WritingPlan plan(layout);
    const std::int32_t value = -17;
    OutputText out{nullptr, 0};
    LineWriter writer(out);
    EXPECT_TRUE(writeStructure(writer, plan, &value));
    writer.finish();
    EXPECT_EQ(std::string(out.text), "{\"" + name + "\":-17,\"last\":{\"" + name + "\":-17}}");
    std::free(out.text);
  }
}

TEST(JsonLayouts, ShowEveryMemberOnceInTheOrderOfTheLayout) {
  FromJson from(rich);
  ASSERT_TRUE(from.read) << from.fault;
  EXPECT_EQ(toJson(from.specimen), rich);
  EXPECT_EQ(toJson(Specimen{}), empty);
}

TEST(JsonLayouts, ShowTextsThatEqualTheOneBeforeThem) {
  std::vector<std::string> members = membersOf(rich);
  const auto numTexts = std::find(members.begin(), members.end(), R"("numTexts":3)");
  ASSERT_NE(numTexts, members.end());
  const std::string longText(300, 'l');
  numTexts[0] = R"("numTexts":13)";
  numTexts[1] = R"("texts":["a","a","a",null,"a",null,null,"","","q\"","q\"",")" + longText + R"(",")" +
                longText + R"("])";
  const std::string json = objectOf(members);
  const FromJson from(json);
  ASSERT_TRUE(from.read) << from.fault;
  EXPECT_EQ(toJson(from.specimen), json);
  const FromJson indented(written<IndentingWriter>(from.specimen));
  ASSERT_TRUE(indented.read) << indented.fault;
  EXPECT_EQ(toJson(indented.specimen), json);
}

TEST(JsonLayouts, ShowWholeNumbersPlainlyAsLongAsTheTypeHoldsThemAll) {
  Specimen specimen{};
  const auto shown = [&specimen](float single, double fine) {
    specimen.single = single;
    specimen.fine = fine;
    return membersOf(toJson(specimen));
  };
  EXPECT_THAT(shown(16777216.0F, 9007199254740992.0),
              ::testing::IsSupersetOf({R"("single":16777216)", R"("fine":9007199254740992)"}));
  EXPECT_THAT(shown(16777218.0F, 9007199254740994.0),
              ::testing::IsSupersetOf({R"("single":1.6777218e+07)", R"("fine":9.007199254740994e+15)"}));
}

TEST(JsonLayouts, FillTheStructure) {
  const FromJson from(rich);
  ASSERT_TRUE(from.read) << from.fault;
  const Specimen &s = from.specimen;
  EXPECT_EQ(s.small, -5);
  EXPECT_EQ(s.large, INT64_MAX);
  EXPECT_EQ(s.single, 0.1F);
  EXPECT_EQ(s.fine, -2.5e-300);
  EXPECT_STREQ(s.text, "a \"b\"\\c\n\x1f");
  EXPECT_STREQ(s.name, "sevench");
  EXPECT_EQ(s.inner.name, nullptr);
  EXPECT_EQ(s.three[2], -3);
  EXPECT_STREQ(s.twoTags[0], "abc");
  EXPECT_EQ(s.numTexts, 3);
  EXPECT_EQ(s.texts[1], nullptr);
  EXPECT_EQ(s.numLongs, 2);
  EXPECT_EQ(s.longs[0], INT64_MIN);
  EXPECT_STREQ(s.entries[1].name, "m");
  EXPECT_EQ(s.rangeEnd[1], 9);
  EXPECT_EQ(s.numPoints, 2);
  EXPECT_TRUE(std::isnan(s.pointX[1]));
  EXPECT_EQ(s.pointY[1], -INFINITY);
  EXPECT_EQ(s.extension->numPairs, 2);
  EXPECT_STREQ(s.extension->pairs[0].value, "v");
  EXPECT_EQ(s.named->count, 2);
  EXPECT_EQ(s.named->values[1], 20);
  EXPECT_EQ(s.affinity->hosts[0].numCpus, 5);
  EXPECT_STREQ(s.networks[1].name, "b=c");
}

TEST(JsonLayouts, MayHaveTheirMembersInAnyOrder) {
  const FromJson inOrder(rich);
  std::vector<std::string> members = membersOf(rich);
  std::reverse(members.begin(), members.end());
  const FromJson reversed(objectOf(members));
  std::sort(members.begin(), members.end());
  const FromJson sorted(objectOf(members));
  ASSERT_TRUE(reversed.read) << reversed.fault;
  ASSERT_TRUE(sorted.read) << sorted.fault;
  EXPECT_EQ(structureDifference(specimenLayout(), &inOrder.specimen, &reversed.specimen), "");
  EXPECT_EQ(structureDifference(specimenLayout(), &inOrder.specimen, &sorted.specimen), "");
}

TEST(JsonLayouts, LeaveAbsentMembersZero) {
  const Specimen zero{};
  const FromJson none("{}");
  ASSERT_TRUE(none.read);
  EXPECT_EQ(structureDifference(specimenLayout(), &none.specimen, &zero), "");
  const FromJson one(R"( { "large" : 3 } )");
  ASSERT_TRUE(one.read);
  EXPECT_EQ(one.specimen.large, 3);
  EXPECT_EQ(one.specimen.small, 0);
}

RC_GTEST_PROP(JsonLayouts, KeepWhateverAStructureHolds, ()) {
  Specimen specimen{};
  fillStructure(specimenLayout(), &specimen);
  const std::string json = toJson(specimen);
  FromJson from(json);
  const std::string difference =
      from.read ? structureDifference(specimenLayout(), &specimen, &from.specimen) : from.fault;
  const std::string again = from.read ? toJson(from.specimen) : "";
  releaseStructure(specimenLayout(), &specimen);
  RC_ASSERT(difference == "");
  RC_ASSERT(again == json);
}

RC_GTEST_PROP(JsonLayouts, MeanTheSameIndentedAndOnOneLine, ()) {
  Specimen specimen{};
  fillStructure(specimenLayout(), &specimen);
  const std::string line = toJson(specimen);
  const FromJson indented(written<IndentingWriter>(specimen));
  releaseStructure(specimenLayout(), &specimen);
  RC_ASSERT(indented.read);
  RC_ASSERT(toJson(indented.specimen) == line);
}

TEST(JsonLayouts, AreIndentedByTwoBlanks) {
  const FromJson from(R"({"text":"t","longs":[1,2],"entries":[]})");
  const std::string text = written<IndentingWriter>(from.specimen);
  EXPECT_THAT(text, ::testing::StartsWith("{\n  \"small\": 0,\n  \"large\": 0,\n"));
  EXPECT_THAT(text, ::testing::HasSubstr("\n  \"inner\": {\n    \"name\": null,\n    \"value\": 0\n  },\n"));
  EXPECT_THAT(text, ::testing::HasSubstr("\n  \"longs\": [\n    1,\n    2\n  ],\n"));
  EXPECT_THAT(text, ::testing::HasSubstr("\n  \"entries\": [],\n"));
  EXPECT_THAT(text, ::testing::EndsWith("\n  \"networks\": null\n}"));
}

// ------------------------------------------------------------------------- counts and arrays

TEST(JsonLayouts, TakeTheCountFromTheArrayAlone) {
  const FromJson from(R"({"texts":["a","b"],"longs":[],"rangeStart":[1],"rangeEnd":[2],"rangeStep":[3],)"
                      R"("named":{"names":["n"],"values":[1]},"networks":"a=1"})");
  ASSERT_TRUE(from.read) << from.fault;
  EXPECT_EQ(from.specimen.numTexts, 2);
  EXPECT_EQ(from.specimen.numLongs, 0);
  EXPECT_NE(from.specimen.longs, nullptr);
  EXPECT_EQ(from.specimen.rangeCnt, 1);
  EXPECT_EQ(from.specimen.named->count, 1);
  EXPECT_EQ(from.specimen.numNetworks, 1);
}

TEST(JsonLayouts, LetACountStandBesideNoArray) {
  for (const char *json :
       {R"({"numTexts":3,"texts":null})", R"({"texts":null,"numTexts":3})", R"({"numTexts":3})"}) {
    const FromJson from(json);
    ASSERT_TRUE(from.read) << from.fault;
    EXPECT_EQ(from.specimen.numTexts, 3);
    EXPECT_EQ(from.specimen.texts, nullptr);
  }
  const FromJson negative(R"({"numLongs":-1})");
  EXPECT_EQ(negative.specimen.numLongs, -1);
}

TEST(JsonLayouts, ShowNoArrayForANegativeCount) {
  FromJson from(R"({"texts":["a"]})");
  from.specimen.numTexts = -2;
  EXPECT_THAT(toJson(from.specimen), ::testing::HasSubstr(R"("numTexts":-2,"texts":null)"));
  from.specimen.numTexts = 1;
}

TEST(JsonLayouts, ShowNoElementsOfCountsWithoutThem) {
  affinityAlloc noHosts{};
  noHosts.numHosts = 2;
  submitExtPair pairs[1]{};
  submitExt noPairs{};
  noPairs.numPairs = -1;
  noPairs.pairs = pairs;
  Specimen specimen{};
  specimen.affinity = &noHosts;
  specimen.extension = &noPairs;
  EXPECT_THAT(toJson(specimen), ::testing::HasSubstr(R"("extension":[],"named":null,"affinity":"",)"));
  noPairs.pairs = nullptr;
  noPairs.numPairs = 1;
  EXPECT_THAT(toJson(specimen), ::testing::HasSubstr(R"("extension":[],)"));
}

TEST(JsonLayouts, RefuseACountThatDiffersFromItsArray) {
  EXPECT_EQ(faultOf(R"({"numTexts":3,"texts":["a","b"]})"), "s.texts: 2 elements, but numTexts is 3");
  EXPECT_EQ(faultOf(R"({"numTexts":0,"texts":["a"]})"), "s.texts: 1 elements, but numTexts is 0");
  EXPECT_EQ(faultOf(R"({"numTexts":-1,"texts":[]})"), "s.texts: 0 elements, but numTexts is -1");
  EXPECT_EQ(faultOf(R"({"texts":["a","b"],"numTexts":1})"),
            "s.numTexts: 1 differs from the 2 elements that are given");
  EXPECT_EQ(faultOf(R"({"longs":[1],"numLongs":4294967297})"),
            "s.numLongs: 4294967297 differs from the 1 elements that are given");
  EXPECT_EQ(faultOf(R"({"numNetworks":1,"networks":"a=1;b=2"})"),
            "s.networks: 2 elements, but numNetworks is 1");
  EXPECT_EQ(faultOf(R"({"networks":"a=1;b=2","numNetworks":0})"),
            "s.numNetworks: 0 differs from the 2 elements that are given");
  EXPECT_EQ(faultOf(R"({"named":{"count":0,"names":["n"]}})"), "s.named.names: 1 elements, but count is 0");
}

TEST(JsonLayouts, RefuseACountBehindItsArrayThatIsNoNumber) {
  EXPECT_EQ(faultOf(R"({"texts":["a"],"numTexts":"1"})"), "s.numTexts: must be an integer, not a string");
  EXPECT_EQ(faultOf(R"({"texts":["a"],"numTexts":1})"), "read");
}

TEST(JsonLayouts, RefuseArraysOfOneCountWithDifferentLengths) {
  EXPECT_EQ(faultOf(R"({"pointX":[1,2],"pointY":[1]})"), "s.pointY: 1 elements, but numPoints is 2");
  EXPECT_EQ(faultOf(R"({"pointY":[],"pointX":[1]})"), "s.pointX: 1 elements, but numPoints is 0");
  EXPECT_EQ(faultOf(R"({"rangeStart":[1],"rangeEnd":[1,2],"rangeStep":[1]})"),
            "s.rangeEnd: 2 elements, but rangeCnt is 1");
  EXPECT_EQ(faultOf(R"({"named":{"names":["n"],"values":[1,2]}})"),
            "s.named.values: 2 elements, but count is 1");
}

TEST(JsonLayouts, AllowNullBesideAnArrayOfTheSameCount) {
  const FromJson from(R"({"pointX":[1,2],"pointY":null,"numPoints":2})");
  ASSERT_TRUE(from.read) << from.fault;
  EXPECT_EQ(from.specimen.numPoints, 2);
  EXPECT_EQ(from.specimen.pointY, nullptr);
}

TEST(JsonLayouts, AllocateABlockForArraysThatShareOne) {
  for (const char *json : {R"({"rangeStart":[1,2],"rangeEnd":[3,4],"rangeStep":[5,6]})",
                           R"({"rangeStep":[5,6],"rangeEnd":[3,4],"rangeStart":[1,2]})"}) {
    const FromJson from(json);
    ASSERT_TRUE(from.read) << from.fault;
    EXPECT_EQ(from.specimen.rangeEnd, from.specimen.rangeStart + 2);
    EXPECT_EQ(from.specimen.rangeStep, from.specimen.rangeStart + 4);
    for (std::int32_t i = 0; i < 6; ++i) EXPECT_EQ(from.specimen.rangeStart[i], i + 1);
  }
  const FromJson two(
      R"({"rangeStart":[1],"cellColumns":[3,4],"rangeEnd":[2],"cellRows":[1,2],"rangeStep":[3]})");
  ASSERT_TRUE(two.read) << two.fault;
  EXPECT_EQ(two.specimen.rangeStep, two.specimen.rangeStart + 2);
  EXPECT_EQ(two.specimen.cellColumns, two.specimen.cellRows + 2);
  for (std::int32_t i = 0; i < 3; ++i) EXPECT_EQ(two.specimen.rangeStart[i], i + 1);
  for (std::int32_t i = 0; i < 4; ++i) EXPECT_EQ(two.specimen.cellRows[i], i + 1);
  const FromJson none(R"({"rangeEnd":[],"rangeStart":[],"rangeStep":[]})");
  ASSERT_TRUE(none.read) << none.fault;
  EXPECT_NE(none.specimen.rangeStart, nullptr);
}

TEST(JsonLayouts, RefuseAPartOfABlockWithoutItsBeginning) {
  EXPECT_EQ(faultOf(R"({"rangeEnd":[1],"rangeStep":[1]})"),
            "s.rangeStart: missing beside other arrays of rangeCnt");
  EXPECT_EQ(faultOf(R"({"rangeEnd":[1],"rangeStart":null})"),
            "s.rangeStart: null beside other arrays of rangeCnt");
  EXPECT_EQ(faultOf(R"({"rangeStart":null,"rangeEnd":[1]})"), "s.rangeEnd: must be null, like rangeStart");
  EXPECT_EQ(faultOf(R"({"rangeStart":[1]})"), "read");
  EXPECT_EQ(faultOf(R"({"rangeStart":null,"rangeEnd":null})"), "read");
}

TEST(JsonLayouts, RefuseAFixedArrayOfAnotherLength) {
  EXPECT_EQ(faultOf(R"({"three":[1,2]})"), "s.three: 2 elements, must be 3");
  EXPECT_EQ(faultOf(R"({"three":[1,2,3,4]})"), "s.three: 4 elements, must be 3");
  EXPECT_EQ(faultOf(R"({"three":null})"), "s.three: must be an array, not null");
}

TEST(JsonLayouts, TellAnEmptyAllocationFromNone) {
  FromJson from(R"({"affinity":"","networks":"","extension":[],"named":{}})");
  ASSERT_TRUE(from.read) << from.fault;
  ASSERT_NE(from.specimen.affinity, nullptr);
  EXPECT_EQ(from.specimen.affinity->numHosts, 0);
  EXPECT_NE(from.specimen.networks, nullptr);
  ASSERT_NE(from.specimen.extension, nullptr);
  EXPECT_EQ(from.specimen.extension->numPairs, 0);
  EXPECT_THAT(toJson(from.specimen),
              ::testing::EndsWith(R"("extension":[],"named":{"count":0,"names":null,"values":null},)"
                                  R"("affinity":"","numNetworks":0,"networks":""})"));
}

// --------------------------------------------------------------------------------- numbers

TEST(JsonLayouts, RefuseNumbersOutOfRange) {
  EXPECT_EQ(faultOf(R"({"small":2147483648})"), "s.small: 2147483648 is out of range");
  EXPECT_EQ(faultOf(R"({"small":-2147483649})"), "s.small: -2147483649 is out of range");
  EXPECT_EQ(faultOf(R"({"large":9223372036854775808})"), "s.large: 9223372036854775808 is out of range");
  EXPECT_EQ(faultOf(R"({"single":3.5e38})"), "s.single: 3.5e38 is out of range");
  EXPECT_EQ(faultOf(R"({"fine":-1.8e308})"), "s.fine: -1.8e308 is out of range");
  EXPECT_EQ(faultOf(R"({"entries":[{"name":"","value":3000000000}]})"),
            "s.entries[0].value: 3000000000 is out of range");
  EXPECT_EQ(faultOf(R"({"small":2147483647,"large":-9223372036854775808,"single":3.4028235e38})"), "read");
}

TEST(JsonLayouts, RefuseFractionsWhereIntegersBelong) {
  EXPECT_EQ(faultOf(R"({"small":1.0})"), "s.small: 1.0 is not an integer");
  EXPECT_EQ(faultOf(R"({"large":1e3})"), "s.large: 1e3 is not an integer");
  EXPECT_EQ(faultOf(R"({"small":3000000000.5})"), "s.small: 3000000000.5 is not an integer");
  EXPECT_EQ(faultOf(R"({"numTexts":0.5})"), "s.numTexts: 0.5 is not an integer");
}

TEST(JsonLayouts, TakeTheNearestValueOfTheMembersOwnType) {
  // Through double this would be rounded twice, to 1 + 2^-22.
  const FromJson from(R"({"single":1.000000178813934326171874999999999999999999,"fine":0.1})");
  ASSERT_TRUE(from.read) << from.fault;
  EXPECT_EQ(from.specimen.single, 0x1.000002p0F);
  EXPECT_EQ(from.specimen.fine, 0.1);
}

TEST(JsonLayouts, TakeNumbersThatAreTooSmallAsZero) {
  const FromJson from(R"({"single":-1e-60,"fine":1e-400})");
  ASSERT_TRUE(from.read) << from.fault;
  EXPECT_EQ(from.specimen.single, 0.0F);
  EXPECT_TRUE(std::signbit(from.specimen.single));
  EXPECT_EQ(from.specimen.fine, 0.0);
}

TEST(JsonLayouts, TellTooSmallNumbersFromTooLargeOnesHoweverTheyAreWritten) {
  const std::string zeros(400, '0');
  for (const std::string &small : {"0." + zeros + "1", "0." + zeros + "1e+20", "-0." + zeros + "1e-20",
                                   std::string("123e-400"), std::string("1E-99999999999999999999")}) {
    const FromJson from(R"({"fine":)" + small + "}");
    ASSERT_TRUE(from.read) << small << from.fault;
    EXPECT_EQ(from.specimen.fine, 0.0) << small;
  }
  for (const char *large : {"12e+308", "-12e308", "1e+400", "0.1e400", "1e99999999999999999999"})
    EXPECT_FALSE(FromJson(R"({"fine":)" + std::string(large) + "}").read) << large;
  for (const char *large : {"1e39", "-1e+39", "12345678901234567890123456789012345678901", "0.01e60"})
    EXPECT_EQ(faultOf(R"({"single":)" + std::string(large) + "}"),
              std::string("s.single: ") + large + " is out of range");
}

TEST(JsonLayouts, TakeIntegersForReals) {
  const FromJson from(R"({"single":7,"fine":-0})");
  ASSERT_TRUE(from.read) << from.fault;
  EXPECT_EQ(from.specimen.single, 7.0F);
  EXPECT_TRUE(std::signbit(from.specimen.fine));
}

TEST(JsonLayouts, KnowThreeNamesOfNumbersOnly) {
  EXPECT_EQ(faultOf(R"({"single":"NaN"})"), R"(s.single: must be a number, "nan", "inf" or "-inf")");
  EXPECT_EQ(faultOf(R"({"fine":"1"})"), R"(s.fine: must be a number, "nan", "inf" or "-inf")");
  EXPECT_EQ(faultOf(R"({"small":"nan"})"), "s.small: must be an integer, not a string");
}

// ----------------------------------------------------------------------------- other refusals

TEST(JsonLayouts, RefuseTextThatDoesNotFit) {
  EXPECT_EQ(faultOf(R"({"name":"eightcha"})"), "s.name: a text of 8 bytes, at most 7 fit");
  EXPECT_EQ(faultOf(R"({"name":"1234ää"})"), "s.name: a text of 8 bytes, at most 7 fit");
  EXPECT_EQ(faultOf(R"({"twoTags":["abc","abcd"]})"), "s.twoTags[1]: a text of 4 bytes, at most 3 fit");
}

TEST(JsonLayouts, ShowInlineTextWithoutItsEnd) {
  Specimen specimen{};
  std::memcpy(specimen.name, "12345678", 8);
  EXPECT_THAT(toJson(specimen), ::testing::HasSubstr(R"("name":"12345678",)"));
}

TEST(JsonLayouts, RefuseUnknownAndDoubledMembers) {
  EXPECT_EQ(faultOf(R"({"smal":1})"), "s.smal: no such member");
  EXPECT_EQ(faultOf(R"({"reserved":null})"), "s.reserved: no such member");
  EXPECT_EQ(faultOf(R"({"small":1,"large":1,"small":1})"), "s.small: given twice");
  EXPECT_EQ(faultOf(R"({"texts":["a"],"texts":["b"]})"), "s.texts: given twice");
  EXPECT_EQ(faultOf(R"({"entries":[{},{"value":1,"key":2}]})"), "s.entries[1].key: no such member");
  EXPECT_EQ(faultOf(R"({"extension":[{"key":1,"key":1}]})"), "s.extension[0].key: given twice");
  EXPECT_EQ(faultOf(R"({"named":{"pairs":[]}})"), "s.named.pairs: no such member");
}

TEST(JsonLayouts, RefuseValuesOfTheWrongKind) {
  EXPECT_EQ(faultOf("[]"), "s: must be an object, not an array");
  EXPECT_EQ(faultOf(R"({"small":null})"), "s.small: must be an integer, not null");
  EXPECT_EQ(faultOf(R"({"small":true})"), "s.small: must be an integer, not true");
  EXPECT_EQ(faultOf(R"({"fine":false})"), "s.fine: must be a number, not false");
  EXPECT_EQ(faultOf(R"({"text":1})"), "s.text: must be a string or null, not a number");
  EXPECT_EQ(faultOf(R"({"name":null})"), "s.name: must be a string, not null");
  EXPECT_EQ(faultOf(R"({"inner":null})"), "s.inner: must be an object, not null");
  EXPECT_EQ(faultOf(R"({"texts":"a"})"), "s.texts: must be an array or null, not a string");
  EXPECT_EQ(faultOf(R"({"texts":["a",["b"]]})"), "s.texts[1]: must be a string or null, not an array");
  EXPECT_EQ(faultOf(R"({"entries":[null]})"), "s.entries[0]: must be an object, not null");
  EXPECT_EQ(faultOf(R"({"extension":{}})"), "s.extension: must be an array or null, not an object");
  EXPECT_EQ(faultOf(R"({"named":[]})"), "s.named: must be an object, not an array");
  EXPECT_EQ(faultOf(R"({"affinity":[]})"), "s.affinity: must be a string or null, not an array");
  EXPECT_EQ(faultOf(R"({"networks":[]})"), "s.networks: must be a string or null, not an array");
}

TEST(JsonLayouts, RefuseAllocationTextsOfAnotherForm) {
  EXPECT_EQ(faultOf(R"({"affinity":"no colon"})"), "s.affinity: not an affinity allocation: no colon");
  EXPECT_EQ(faultOf(R"({"networks":"no equals sign"})"),
            "s.networks: not a network allocation: no equals sign");
}

TEST(JsonLayouts, NameTheFirstFaultInTheText) {
  EXPECT_EQ(faultOf(R"({"text":1,"bogus":1})"), "s.text: must be a string or null, not a number");
  EXPECT_EQ(faultOf(R"({"bogus":1,"text":1})"), "s.bogus: no such member");
}

RC_GTEST_PROP(JsonLayouts, LeaveAStructureThatCanBeReleased, ()) {
  // Any value in any other's place, any piece missing: refused or read, never lost.
  std::vector<std::string> members = membersOf(rich);
  const auto any = [&] { return *rc::gen::inRange<std::size_t>(0, members.size()); };
  for (auto n = *rc::gen::inRange(1, 5); n > 0; --n) {
    const std::string from = members[any()];
    std::string &to = members[any()];
    to = to.substr(0, to.find(':') + 1) + from.substr(from.find(':') + 1);
    std::swap(members[any()], members[any()]);
  }
  std::string json = objectOf(members);
  if (*rc::gen::arbitrary<bool>()) {
    const auto at = *rc::gen::inRange<std::size_t>(0, json.size());
    json.erase(at, *rc::gen::inRange<std::size_t>(1, 10));
  }
  const FromJson from(json);
  RC_CLASSIFY(from.read, "read");
  RC_ASSERT(from.read == from.fault.empty());
}

}  // namespace
}  // namespace wmq::testing
