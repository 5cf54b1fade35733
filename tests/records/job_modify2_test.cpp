// JOB_MODIFY2.
#include "wmq/records/job_modify2.h"

#include <gmock/gmock.h>

#include <cstring>
#include <map>
#include <stdexcept>

#include "companion/written_text.h"
#include "support/parsed.h"
#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

// A field and the bit that announces it; without a bit it stands on every line.
struct Position {
  std::string name;
  std::string text;
  char word = ' ';  // '1', '2', '3' for options, options2, options3; 'n' for modInt19
  uint32_t bit = 0;
};

// The positions of a line in their order. The three words and modInt19 are filled in with what is announced.
const std::vector<Position> kPositions = {
    {"modJobIdStr", "\"job\""},
    {"numbers", ""},
    {"modStr1", "\"s1\""},
    {"sevenNumbers", "3 4 5 6 7 8 9"},
    {"modStr2", "\"s2\"", '1', 0x1},
    {"modStr3", "\"s3\"", '1', 0x2},
    {"nameList", "2 \"n1\" \"n2\"", '1', 0x4},
    {"modStr4", "\"s4\"", '1', 0x40000},
    {"rlimits", "100 101 102 103 104 105 106 107 108 109 110"},
    {"modStr5", "\"s5\"", '1', 0x10000},
    {"modStr6", "\"s6\"", '1', 0x20000},
    {"modStr7", "\"s7\"", '1', 0x40000000},
    {"modStr8", "\"s8\""},
    {"modStr9", "\"s9\"", '1', 0x8},
    {"modStr10", "\"s10\"", '1', 0x10},
    {"modStr11", "\"s11\"", '1', 0x20},
    {"modStr12", "\"s12\"", '2', 0x2},
    {"modInt10", "310", '1', 0x400},
    {"modStr13", "\"s13\"", '1', 0x800},
    {"strPairs", "1 \"a\" \"b\" 5", '1', 0x80000},
    {"modStr14", "\"s14\""},
    {"modStr15", "\"s15\""},
    {"modStr16", "\"s16\""},
    {"modStr17", "\"s17\"", '1', 0x100000},
    {"modStr18", "\"s18\"", '1', 0x400000},
    {"modStr19", "\"s19\"", '1', 0x2000000},
    {"modInt11", "311 312"},
    {"modStr20", "\"s20\"", '1', 0x200000},
    {"modStr21", "\"s21\""},
    {"modStr22", "\"s22\"", '1', 0x200},
    {"modStr23", "\"s23\"", '1', 0x20000000},
    {"modInt13", "313"},
    {"modStr24", "\"s24\"", '2', 0x80},
    {"modStr25", "\"s25\"", '2', 0x100},
    {"modInt14", "314", '2', 0x200},
    {"rsvId", "\"rsv\"", '2', 0x8000},
    {"jgroup", "\"jgroup\"", '2', 0x40000},
    {"sla", "\"sla\"", '2', 0x80000},
    {"newStr12", "\"new12\"", '2', 0x100000},
    {"newStr13", "\"new13\"", '2', 0x4000},
    {"newInt8", "308", '2', 0x2000},
    {"licenseProject", "\"license\"", '2', 0x200000},
    {"options3", ""},
    {"modStr26", "\"s26\"", '3', 0x1},
    {"modStr27", "\"s27\"", '3', 0x4},
    {"modStr28", "\"s28\"", '3', 0x10},
    {"modInt16", "316", '3', 0x80},
    {"threadLimit", "111"},
    {"modStr29", "\"s29\"", '3', 0x200},
    {"modInt17", "317", '3', 0x400},
    {"modInt18", "318", '3', 0x800},
    {"modStr30", "\"s30\""},
    {"submitExt", "1 7 \"value\""},
    {"clusters", "\"src\" 9000000000001 \"dst\" -9000000000002"},
    {"modInt19", ""},
    {"nameList2", "2 \"n3\" \"n4\"", 'n', 0x80},
    {"modInt21", "321"},
    {"rmtJobCtrls", "1 \"old1\" \"old2\" 1 5 1 6 7"},
    {"modStr31", "\"s31\""},
    {"modStr32", "\"s32\""},
    {"modStr33", "\"s33\""},
    {"modInt22", "322 323 324"},
    {"modStr34", "\"s34\""},
    {"modStr35", "\"s35\""},
    {"namedValues", "1 \"value\" 9"},
    {"newRmtJobCtrls", "1 \"new1\" \"new2\" 1 5 1 6 7 8 0"},
};

// What a line announces.
struct Announced {
  uint32_t options = 0;
  uint32_t options2 = 0;
  uint32_t options3 = 0;
  uint32_t names = 0;

  uint32_t &word(char which) {
    return which == '1' ? options : which == '2' ? options2 : which == '3' ? options3 : names;
  }
  bool announces(const Position &position) {
    if (position.bit == 0 || (word(position.word) & position.bit) != 0) return true;
    return position.name == "modStr9" && (options2 & 0x80) != 0;
  }
};

Announced everything() {
  Announced all;
  for (const Position &position : kPositions)
    if (position.bit != 0) all.word(position.word) |= position.bit;
  return all;
}

std::string number(uint32_t bits) { return std::to_string(static_cast<int32_t>(bits)); }

// Texts of positions that a test has otherwise; an empty one leaves the position out.
using Changes = std::map<std::string, std::string>;

// The fields of a line with these bits.
std::string fieldsWith(Announced bits, const Changes &changes = {}) {
  std::string fields;
  for (const Position &position : kPositions) {
    if (!bits.announces(position)) continue;
    std::string text = position.text;
    if (position.name == "numbers") text = number(bits.options) + ' ' + number(bits.options2) + " 1 2";
    if (position.name == "options3") text = number(bits.options3) + " 315";
    if (position.name == "modInt19") text = number(bits.names) + " 320";
    if (const auto change = changes.find(position.name); change != changes.end()) text = change->second;
    if (!text.empty()) fields += (fields.empty() ? "" : " ") + text;
  }
  return fields;
}

// Leaves out all positions from that one on.
Changes from(const std::string &name) {
  Changes changes;
  bool found = false;
  for (const Position &position : kPositions) {
    found = found || position.name == name;
    if (found) changes[position.name] = "";
  }
  if (!found) throw std::invalid_argument("no position " + name);
  return changes;
}

std::string modify(const std::string &version, const std::string &fields) {
  return line("JOB_MODIFY2", version, fields);
}

const jobModLog &logOf(const OwnedRecord &record) { return record->eventLog.jobModLog; }

// A record that a test gives members of its own; nothing of it is released.
class JobModify2Writing : public ::testing::Test {
 protected:
  eventRecord record = bareRecord(EVENT_JOB_MODIFY2);
  jobModLog &log = record.eventLog.jobModLog;
};

// ------------------------------------------------------------------- what bits announce

TEST(JobModify2, WithoutBitsCarriesNoneOfTheFieldsThatBitsAnnounce) {
  const std::string fields = fieldsWith({});
  const OwnedRecord record = parse(modify("10.1", fields));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  const jobModLog &log = logOf(record);
  for (const char *text :
       {log.modStr2,        log.modStr3,  log.modStr4,  log.modStr5,  log.modStr6,  log.modStr7,
        log.modStr9,        log.modStr10, log.modStr11, log.modStr12, log.modStr13, log.modStr17,
        log.modStr18,       log.modStr19, log.modStr20, log.modStr22, log.modStr23, log.modStr24,
        log.modStr25,       log.rsvId,    log.jgroup,   log.sla,      log.newStr12, log.newStr13,
        log.licenseProject, log.modStr26, log.modStr27, log.modStr28, log.modStr29})
    EXPECT_STREQ(text, "");
  EXPECT_EQ(log.nameList, nullptr);
  EXPECT_EQ(log.strPairs, nullptr);
  EXPECT_EQ(log.nameList2, nullptr);
  for (const int32_t value :
       {log.numNameList, log.modInt10, log.numStrPairs, log.modInt14, log.modInt17, log.numNameList2})
    EXPECT_EQ(value, 0);
  for (const int32_t value : {log.newInt8, log.modInt16, log.modInt18}) EXPECT_EQ(value, -1);
  EXPECT_EQ(fieldsOf(*record), ' ' + fields + '\n');
}

TEST(JobModify2, WithAllBitsIsReadBackWhole) {
  const std::string fields = fieldsWith(everything());
  const OwnedRecord record = parse(modify("10.1", fields));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(fieldsOf(*record), ' ' + fields + '\n');
}

TEST(JobModify2, HasEachFieldAnnouncedByItsOwnBit) {
  for (const Position &position : kPositions) {
    if (position.bit == 0) continue;
    Announced bits;
    bits.word(position.word) = position.bit;
    const std::string fields = fieldsWith(bits);
    const OwnedRecord record = parse(modify("10.1", fields));
    ASSERT_NE(record, nullptr) << position.name << ": " << wmq_errdetail();
    EXPECT_EQ(fieldsOf(*record), ' ' + fields + '\n') << position.name;
    EXPECT_THAT(fields, HasSubstr(' ' + position.text + ' ')) << position.name;
  }
}

TEST(JobModify2, HasNoFieldForAnyOtherBit) {
  const Announced all = everything();
  const Announced others{~all.options, ~all.options2, ~all.options3, ~all.names};
  const std::string fields = fieldsWith(others);
  const OwnedRecord record = parse(modify("10.1", fields));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(fieldsOf(*record), ' ' + fields + '\n');
  EXPECT_STREQ(logOf(record).modStr2, "");
}

TEST(JobModify2, HasTwoBitsForTheNinthString) {
  for (const Announced bits : {Announced{.options = 0x8}, Announced{.options2 = 0x80}}) {
    const OwnedRecord record = parse(modify("10.1", fieldsWith(bits)));
    ASSERT_NE(record, nullptr);
    EXPECT_STREQ(logOf(record).modStr9, "s9");
    EXPECT_STREQ(logOf(record).modStr24, bits.options2 != 0 ? "s24" : "")
        << "announced by the second bit too";
  }
}

TEST(JobModify2, TakesItsSecondListOfNamesFromALowByteOnly) {
  const OwnedRecord record = parse(modify("10.1", fieldsWith({.names = 0x8000})));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).nameList2, nullptr);
  EXPECT_EQ(logOf(parsed(modify("10.1", fieldsWith({.names = 0x180})))).numNameList2, 2);
}

// ------------------------------------------------------------------- versions of the line

TEST(JobModify2, CarriesItsLicenseProjectAbove6_0OnlyUnlikeANewJob) {
  const Announced license{.options2 = 0x200000};
  EXPECT_STREQ(logOf(parsed(modify("6.0", fieldsWith(license)))).licenseProject, "");
  EXPECT_STREQ(logOf(parsed(modify("6.01", fieldsWith(license)))).licenseProject, "license");
}

TEST(JobModify2, CarriesAnnouncedFieldsWithoutAVersionOnTheOldestLines) {
  const OwnedRecord record = parse(modify("2.1", fieldsWith({.options2 = 0x380}, {{"modInt13", ""}})));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_STREQ(logOf(record).modStr24, "s24");
  EXPECT_STREQ(logOf(record).modStr25, "s25");
  EXPECT_EQ(logOf(record).modInt14, 314);
  EXPECT_EQ(logOf(record).modInt13, 0);
}

TEST(JobModify2, TellsVersionsThatReachAFieldFromThoseAboveIt) {
  const auto read = [](const char *version, const Changes &changes) {
    return parsed(modify(version, fieldsWith({.options3 = ~0U}, changes)));
  };
  OwnedRecord record = read("7.0", {});
  EXPECT_EQ(logOf(record).modInt15, 315);
  EXPECT_STREQ(logOf(record).modStr26, "");
  record = read("7.01", {});
  EXPECT_STREQ(logOf(record).modStr26, "s26");
  EXPECT_STREQ(logOf(record).modStr27, "");
  record = read("7.02", {});
  EXPECT_STREQ(logOf(record).modStr27, "s27");
  EXPECT_STREQ(logOf(record).modStr28, "s28");
  EXPECT_EQ(logOf(record).modInt16, 316);
  EXPECT_EQ(logOf(record).rlimits[WMX_RLIMIT_THREAD], 111);
  record = read("7.03", {{"modStr29", ""}});
  EXPECT_STREQ(logOf(record).modStr29, "");
  EXPECT_EQ(logOf(record).modInt17, 317);
  EXPECT_EQ(logOf(record).modInt18, 318);
  EXPECT_STREQ(logOf(read("7.04", {})).modStr29, "s29");
}

TEST(JobModify2, HasOnlyItsLatestStringsMissing) {
  const OwnedRecord older = parse(modify("9.1", fieldsWith({})));
  ASSERT_NE(older, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(older).modStr34, nullptr) << "this one has no text";
  EXPECT_STREQ(logOf(older).modStr35, "");
  const OwnedRecord oldest = parse(modify("7.0", fieldsWith({})));
  ASSERT_NE(oldest, nullptr) << wmq_errdetail();
  for (const char *text : {logOf(oldest).modStr30, logOf(oldest).modStr31, logOf(oldest).modStr32,
                           logOf(oldest).modStr33, logOf(oldest).srcCluster, logOf(oldest).dstCluster})
    EXPECT_STREQ(text, "");
  EXPECT_EQ(logOf(oldest).modInt21, -1);
  EXPECT_EQ(logOf(oldest).rlimits[WMX_RLIMIT_THREAD], -1);
  EXPECT_EQ(logOf(oldest).submitExt, nullptr);
}

TEST(JobModify2, MustHaveEveryFieldThatIsAnnounced) {
  const Announced all = everything();
  for (const auto &position : kPositions)
    EXPECT_EQ(faultOf(modify("10.1", fieldsWith(all, from(position.name)))).error, WMQE_BAD_FORMAT)
        << position.name;
}

// ------------------------------------------------------------------------------ asymmetries

TEST(JobModify2, ConvertsNoLimits) {
  const int unit = rlimitUnit;
  rlimitUnit = 1024;
  const std::string fields = fieldsWith({});
  const OwnedRecord record = parse(modify("10.1", fields));
  const std::string again = record == nullptr ? "" : fieldsOf(*record);
  rlimitUnit = unit;
  ASSERT_NE(record, nullptr);
  for (int slot = 0; slot < WMX_RLIM_NLIMITS; ++slot) EXPECT_EQ(logOf(record).rlimits[slot], 100 + slot);
  EXPECT_EQ(again, ' ' + fields + '\n');
}

TEST_F(JobModify2Writing, TurnsLineEndsIntoBlanksInTheCallersOwnStrings) {
  char six[] = "a\nb";
  char seventeen[] = "c\nd\n";
  char twentyEight[] = "\n";
  char twentyNine[] = "e\nf";
  log.options = 0x20000 | 0x100000;
  log.options3 = 0x10 | 0x200;
  log.modStr6 = six;
  log.modStr17 = seventeen;
  log.modStr28 = twentyEight;
  log.modStr29 = twentyNine;
  const std::string fields = fieldsOf(record);
  EXPECT_STREQ(six, "a b");
  EXPECT_STREQ(seventeen, "c d ");
  EXPECT_STREQ(twentyEight, " ");
  EXPECT_STREQ(twentyNine, "e f");
  for (const char *text : {"\"a b\"", "\"c d \"", "\" \"", "\"e f\""}) EXPECT_THAT(fields, HasSubstr(text));
}

TEST_F(JobModify2Writing, LeavesLineEndsInStringsThatItDoesNotWrite) {
  char text[] = "a\nb";
  log.modStr6 = text;
  fieldsOf(record);
  EXPECT_STREQ(text, "a\nb");
}

TEST_F(JobModify2Writing, KeepsLineEndsOfOtherStrings) {
  char text[] = "a\nb";
  log.options = 0x1;
  log.modStr2 = text;
  EXPECT_THAT(fieldsOf(record), HasSubstr("\"a\"nb\""));
  EXPECT_STREQ(text, "a\nb");
}

TEST_F(JobModify2Writing, EscapesNothingInPairsOfStrings) {
  char first[] = "a\"b";
  char second[] = "c\nd";
  strPair pair{first, second, 5};
  log.options = 0x80000;
  log.numStrPairs = 1;
  log.strPairs = &pair;
  EXPECT_THAT(fieldsOf(record), HasSubstr(" 1 \"a\"b\" \"c\nd\" 5 "));
}

TEST_F(JobModify2Writing, WritesMissingStringsAsEmptyOnes) {
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( "" "" "" 0 0 0 "" "" 0 0)"
                                         "\n"));
}

// ------------------------------------------------------------------------------------ lists

TEST(JobModify2, CutsTheCountOfAListToTheNamesThatAreComplete) {
  wmq_setlineversion(10.1F);
  const OwnedRecord record = emptyRecord(EVENT_JOB_MODIFY2);
  jobModLog &log = record->eventLog.jobModLog;
  const std::string fields = fieldsWith(
      {.options = 0x4}, {{"nameList", "3 \"n1\" \"n2\" none and no more quotes"}, {"modStr8", ""}});
  EXPECT_EQ(readJobMod(fields.substr(0, fields.find("none")).c_str(), &log), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numNameList, log.nameList), ::testing::ElementsAre("n1", "n2"));
}

TEST(JobModify2, EndsWithTheFailureOfARecordThatItHolds) {
  for (const char *broken : {"2 \"old1\" \"old2\" 1 5 1 6 7 \"no\"", "1 \"old1\" \"old2\" 1 x 0"}) {
    Changes changes = from("modStr31");
    changes["rmtJobCtrls"] = broken;
    EXPECT_EQ(faultOf(modify("10.1", fieldsWith({}, changes))).error, WMQE_BAD_FORMAT) << broken;
  }
  EXPECT_EQ(faultOf(modify("10.1", fieldsWith({}, {{"newRmtJobCtrls", "1 \"a\" \"b\" 1 5 1 6 7"}}))),
            (Fault{WMQE_BAD_FORMAT, "a"}));
}

TEST(JobModify2, LosesTheSecondListOfItsLastNewRecord) {
  const OwnedRecord record =
      parse(modify("10.1", fieldsWith({}, {{"newRmtJobCtrls", R"(1 "a" "b" 0 1 7 31 32 33 70)"}})));
  ASSERT_NE(record, nullptr);
  const newRmtJobCtrlRecord &held = logOf(record).newRmtJobCtrls[0];
  EXPECT_EQ(held.numEntries2, 0);
  EXPECT_EQ(held.entries2, nullptr);
  EXPECT_THAT(fieldsOf(*record), EndsWith(" 1 \"a\" \"b\" 0 0\n"));
}

TEST(JobModify2, GoesOnBeforeTheCountOfAnEmptySecondList) {
  const OwnedRecord record =
      parse(modify("10.1", fieldsWith({}, {{"newRmtJobCtrls", R"(2 "a" "b" 1 5 0 0 "c" "d" 0 0)"}})));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  ASSERT_EQ(logOf(record).numNewRmtJobCtrls, 2);
  EXPECT_STREQ(logOf(record).newRmtJobCtrls[1].ctrlName1, "c");
}

TEST(JobModify2, CannotBeWrittenWithAListThatIsNotThere) {
  const auto faultWith = [](auto member, auto count) {
    eventRecord record = bareRecord(EVENT_JOB_MODIFY2);
    jobModLog &log = record.eventLog.jobModLog;
    log.options = 0x4 | 0x80000;
    log.modInt19 = 0x80;
    log.*member = count;
    return faultOf(record);
  };
  EXPECT_EQ(faultWith(&jobModLog::numNameList, 1), (Fault{WMQE_SYS, "nameList"}));
  EXPECT_EQ(faultWith(&jobModLog::numStrPairs, 1), (Fault{WMQE_SYS, "strPairs"}));
  EXPECT_EQ(faultWith(&jobModLog::numNameList2, 1), (Fault{WMQE_SYS, "nameList2"}));
  EXPECT_EQ(faultWith(&jobModLog::numRmtJobCtrls, 1), (Fault{WMQE_SYS, "rmtJobCtrls"}));
  EXPECT_EQ(faultWith(&jobModLog::numNewRmtJobCtrls, 1), (Fault{WMQE_SYS, "newRmtJobCtrls"}));
}

TEST_F(JobModify2Writing, ReturnsTheFailureOfARecordThatItHolds) {
  oldRmtJobCtrlRecord held{.numIds = 1};
  log.numRmtJobCtrls = 1;
  log.rmtJobCtrls = &held;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "ids"}));
}

TEST_F(JobModify2Writing, FailsToReachAFullFile) {
  EXPECT_EQ(test::resultOnAFullDevice([&](FILE *full) { return writeJobMod(full, &log); }), WMQE_SYS);
}

// ---------------------------------------------------------------------------------- release

TEST(JobModify2, IsReleasedWholeWhateverItsBitsSayByThen) {
  const OwnedRecord record = parse(modify("10.1", fieldsWith(everything())));
  ASSERT_NE(record, nullptr);
  jobModLog &log = record->eventLog.jobModLog;
  log.options = log.options2 = log.options3 = log.modInt19 = 0;
  freeLogRec(record.get());
  EXPECT_EQ(log.modStr2, nullptr);
  EXPECT_EQ(log.nameList, nullptr);
  EXPECT_EQ(log.strPairs, nullptr);
  EXPECT_EQ(log.nameList2, nullptr);
  EXPECT_EQ(log.newRmtJobCtrls, nullptr);
  const eventRecord once = *record;
  freeLogRec(record.get());
  EXPECT_EQ(std::memcmp(&once, record.get(), sizeof once), 0);
}

}  // namespace
}  // namespace wmq::testing
