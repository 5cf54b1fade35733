// GRP_ADD, GRP_MOD, GRP_CTRL and GRP_STATUS.
#include "wmq/records/job_group.h"

#include <gmock/gmock.h>

#include <cstring>

#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::StartsWith;

const Fields kAdded = {{"grpField1", "101"},     {"grpTime", "1600000102"}, {"grpOptions", "0"},
                       {"grpStr1", "\"str 1\""}, {"grpStr2", "\"str 2\""},  {"grpName", "\"/group\""},
                       {"grpStr4", "\"str 4\""}, {"grpStr5", "\"str 5\""},  {"grpField9", "109"},
                       {"grpField10", "110"},    {"grpStr6", "\"str 6\""},  {"grpField12", "112"},
                       {"grpField13", "113"}};

const Fields kModified = {{"grpField1", "101"},     {"grpTime", "1600000102"}, {"grpOptions", "4"},
                          {"grpStr1", "\"str 1\""}, {"grpStr2", "\"str 2\""},  {"grpName", "\"/group\""},
                          {"grpStr4", "\"str 4\""}, {"grpStr5", "\"str 5\""},  {"grpField9", "109"},
                          {"grpField10", "110"},    {"grpStr6", "\"str 6\""},  {"grpField12", "112"},
                          {"grpField13", "113"},    {"grpField14", "114"},     {"grpName2", "\"/renamed\""}};

const std::string kLongestName(59, 'n');
const std::string kTooLongName(60, 'n');

std::string quoted(const std::string &text) { return '"' + text + '"'; }

std::string added(const std::string &version, const std::string &fields) {
  return line("GRP_ADD", version, fields);
}

std::string modified(const std::string &version, const std::string &fields) {
  return line("GRP_MOD", version, fields);
}

const jgrpAddLog &addedIn(const OwnedRecord &record) { return record->eventLog.jgrpAddLog; }
const jgrpModLog &modifiedIn(const OwnedRecord &record) { return record->eventLog.jgrpModLog; }

// -------------------------------------------------------------------------------- GRP_ADD

TEST(GroupAdd, HasAnOrderOnTheLineThatIsNotThatOfTheStructure) {
  const OwnedRecord record = parse(added("10.1", kAdded.with("grpOptions", "7")));
  ASSERT_NE(record, nullptr);
  const jgrpAddLog &log = addedIn(record);
  EXPECT_EQ(log.grpField1, 101);
  EXPECT_EQ(log.grpTime, 1600000102);
  EXPECT_EQ(log.grpOptions, 7);
  EXPECT_STREQ(log.grpStr1, "str 1");
  EXPECT_STREQ(log.grpStr2, "str 2");
  EXPECT_STREQ(log.grpName, "/group");
  EXPECT_STREQ(log.grpStr4, "str 4");
  EXPECT_STREQ(log.grpStr5, "str 5");
  EXPECT_EQ(log.grpField9, 109);
  EXPECT_EQ(log.grpField10, 110);
  EXPECT_STREQ(log.grpStr6, "str 6");
  EXPECT_EQ(log.grpField12, 112);
  EXPECT_EQ(log.grpField13, 113);
  EXPECT_EQ(fieldsOf(*record), ' ' + kAdded.with("grpOptions", "7").text() + '\n');
}

TEST(GroupAdd, RefusesAnEmptyName) {
  EXPECT_EQ(faultOf(added("10.1", kAdded.with("grpName", "\"\""))), (Fault{WMQE_BAD_FORMAT, "grpName"}));
}

TEST(GroupAdd, RefusesANameOf60Characters) {
  EXPECT_EQ(faultOf(added("10.1", kAdded.with("grpName", quoted(kTooLongName)))),
            (Fault{WMQE_BAD_FORMAT, "grpName"}));
  const OwnedRecord longest = parse(added("10.1", kAdded.with("grpName", quoted(kLongestName))));
  ASSERT_NE(longest, nullptr);
  EXPECT_EQ(addedIn(longest).grpName, kLongestName);
}

TEST(GroupAdd, Of7_02Has1ForItsLastNumber) {
  const OwnedRecord record = parse(added("7.02", kAdded));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(addedIn(record).grpField12, 112) << "7.02 is above 7.01";
  EXPECT_EQ(addedIn(record).grpField13, 1);
}

TEST(GroupAdd, Of7_03CarriesItsLastNumber) {
  const OwnedRecord record = parse(added("7.03", kAdded));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(addedIn(record).grpField13, 113);
}

TEST(GroupAdd, Of7_01HasNoTwelfthFieldYet) {
  const OwnedRecord record = parse(added("7.01", kAdded));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(addedIn(record).grpField12, 0);
  EXPECT_EQ(addedIn(record).grpField13, 1);
}

TEST(GroupAdd, CarriesItsNinthFieldAbove3_1) {
  const OwnedRecord older = parse(added("3.1", kAdded));
  const OwnedRecord newer = parse(added("3.11", kAdded));
  ASSERT_TRUE(older != nullptr && newer != nullptr);
  EXPECT_EQ(addedIn(older).grpField9, 0);
  EXPECT_EQ(addedIn(newer).grpField9, 109);
}

TEST(GroupAdd, CarriesItsTenthFieldFrom4_0On) {
  const OwnedRecord older = parse(added("3.9", kAdded));
  const OwnedRecord newer = parse(added("4.0", kAdded));
  ASSERT_TRUE(older != nullptr && newer != nullptr);
  EXPECT_EQ(addedIn(older).grpField10, 0);
  EXPECT_EQ(addedIn(newer).grpField10, 110);
}

TEST(GroupAdd, OwnsAnEmptySixthStringBefore7_0) {
  const OwnedRecord older = parse(added("6.9", kAdded));
  const OwnedRecord newer = parse(added("7.0", kAdded));
  ASSERT_TRUE(older != nullptr && newer != nullptr);
  EXPECT_STREQ(addedIn(older).grpStr6, "");
  EXPECT_STREQ(addedIn(newer).grpStr6, "str 6");
}

TEST(GroupAdd, MustHaveEveryFieldOfItsVersion) {
  const auto faultBehind = [](const char *version, const char *last) {
    return faultOf(added(version, kAdded.upTo(last)));
  };
  EXPECT_EQ(faultBehind("10.1", "grpTime"), (Fault{WMQE_BAD_FORMAT, "grpOptions"}));
  EXPECT_EQ(faultBehind("10.1", "grpOptions"), (Fault{WMQE_BAD_FORMAT, "grpStr1"}));
  EXPECT_EQ(faultBehind("10.1", "grpStr1"), (Fault{WMQE_BAD_FORMAT, "grpStr2"}));
  EXPECT_EQ(faultBehind("10.1", "grpStr2"), (Fault{WMQE_BAD_FORMAT, "grpName"}));
  EXPECT_EQ(faultBehind("10.1", "grpName"), (Fault{WMQE_BAD_FORMAT, "grpStr4"}));
  EXPECT_EQ(faultBehind("10.1", "grpStr4"), (Fault{WMQE_BAD_FORMAT, "grpStr5"}));
  EXPECT_EQ(faultBehind("3.1", "grpStr5"), Fault{});
  EXPECT_EQ(faultBehind("3.11", "grpStr5"), (Fault{WMQE_BAD_FORMAT, "grpField9"}));
  EXPECT_EQ(faultBehind("4.0", "grpField9"), (Fault{WMQE_BAD_FORMAT, "grpField10"}));
  EXPECT_EQ(faultBehind("7.0", "grpField10"), (Fault{WMQE_BAD_FORMAT, "grpStr6"}));
  EXPECT_EQ(faultBehind("7.02", "grpStr6"), (Fault{WMQE_BAD_FORMAT, "grpField12"}));
  EXPECT_EQ(faultBehind("7.03", "grpField12"), (Fault{WMQE_BAD_FORMAT, "grpField13"}));
}

TEST(GroupAdd, CutsItsTimeTo32BitsAndWidensItWithItsSign) {
  eventRecord record = bareRecord(EVENT_GRP_ADD);
  record.eventLog.jgrpAddLog.grpTime = (int64_t{1} << 33) + (int64_t{1} << 31) + 5;
  EXPECT_THAT(fieldsOf(record), StartsWith(" 0 -2147483643 0 "));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(addedIn(read).grpTime, -2147483643LL);
}

TEST(GroupAdd, WritesAnEmptyNameThatItCannotReadBack) {
  eventRecord record = bareRecord(EVENT_GRP_ADD);
  record.eventLog.jgrpAddLog.grpName[0] = '\0';
  EXPECT_EQ(fieldsOf(record), R"( 0 0 0 "" "" "" "" "" 0 0 "" 0 0)"
                              "\n");
  EXPECT_EQ(readBack(record), nullptr);
}

// -------------------------------------------------------------------------------- GRP_MOD

TEST(GroupMod, WritesItsNewNameWhateverItsOptions) {
  eventRecord record = bareRecord(EVENT_GRP_MOD);
  record.eventLog.jgrpModLog.grpField14 = 14;
  std::strcpy(record.eventLog.jgrpModLog.grpName2, "/new");
  for (const int32_t options : {0, GRP_OPTION_RENAMED, ~GRP_OPTION_RENAMED}) {
    record.eventLog.jgrpModLog.grpOptions = options;
    EXPECT_EQ(fieldsOf(record), " 0 0 " + std::to_string(options) +
                                    R"( "" "" "/group" "" "" 0 0 "" 0 0 14 "/new")"
                                    "\n");
  }
}

TEST(GroupMod, ReadsItsNewNameUnderTheOptionOnly) {
  const OwnedRecord renamed = parse(modified("10.1", kModified.with("grpOptions", "4")));
  ASSERT_NE(renamed, nullptr);
  EXPECT_EQ(modifiedIn(renamed).grpField14, 114);
  EXPECT_STREQ(modifiedIn(renamed).grpName2, "/renamed");

  const OwnedRecord same = parse(modified("10.1", kModified.with("grpOptions", "-5")));
  ASSERT_NE(same, nullptr);
  EXPECT_EQ(modifiedIn(same).grpField14, 0);
  EXPECT_STREQ(modifiedIn(same).grpName2, "");
}

TEST(GroupMod, NeedsNoNewNameWithoutTheOption) {
  EXPECT_EQ(faultOf(modified("10.1", kModified.with("grpOptions", "0").upTo("grpField13"))), Fault{});
  EXPECT_EQ(faultOf(modified("10.1", kModified.upTo("grpField13"))), (Fault{WMQE_BAD_FORMAT, "grpField14"}));
  EXPECT_EQ(faultOf(modified("10.1", kModified.upTo("grpField14"))), (Fault{WMQE_BAD_FORMAT, "grpName2"}));
}

TEST(GroupMod, HasNoNewNameBefore10_1EvenUnderTheOption) {
  const OwnedRecord record = parse(modified("10.0", kModified));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(modifiedIn(record).grpField13, 113);
  EXPECT_EQ(modifiedIn(record).grpField14, 0);
  EXPECT_STREQ(modifiedIn(record).grpName2, "");
}

TEST(GroupMod, MayHaveAnEmptyNewName) {
  const OwnedRecord record = parse(modified("10.1", kModified.with("grpName2", "\"\"")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(modifiedIn(record).grpField14, 114);
  EXPECT_STREQ(modifiedIn(record).grpName2, "");
}

TEST(GroupMod, RefusesANewNameOf60Characters) {
  EXPECT_EQ(faultOf(modified("10.1", kModified.with("grpName2", quoted(kTooLongName)))),
            (Fault{WMQE_BAD_FORMAT, "grpName2"}));
  EXPECT_EQ(faultOf(modified("10.1", kModified.with("grpName2", quoted(kLongestName)))), Fault{});
}

TEST(GroupMod, RefusesAnEmptyNameOfTheGroupItself) {
  EXPECT_EQ(faultOf(modified("10.1", kModified.with("grpName", "\"\""))),
            (Fault{WMQE_BAD_FORMAT, "grpName"}));
}

TEST(GroupMod, SharesTheVersionsOfGroupAdd) {
  const OwnedRecord record = parse(modified("3.1", kModified.upTo("grpStr5")));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(modifiedIn(record).grpStr5, "str 5");
  EXPECT_EQ(modifiedIn(record).grpField9, 0);
  EXPECT_EQ(modifiedIn(record).grpField10, 0);
  EXPECT_STREQ(modifiedIn(record).grpStr6, "");
  EXPECT_EQ(modifiedIn(record).grpField12, 0);
  EXPECT_EQ(modifiedIn(record).grpField13, 1);
}

TEST(GroupMod, IsReadByItsLayoutFunctionToo) {
  const OwnedRecord record = emptyRecord(EVENT_GRP_MOD);
  jgrpModLog &log = record->eventLog.jgrpModLog;
  wmq_setlineversion(10.1F);
  EXPECT_EQ(readJgrpMod(kModified.text().c_str(), &log), 0);
  EXPECT_STREQ(log.grpName2, "/renamed");
  freeLogRec(record.get());
  EXPECT_EQ(readJgrpMod(kModified.upTo("grpStr4").text().c_str(), &log), WMQE_BAD_FORMAT);
  EXPECT_STREQ(log.grpStr4, "str 4") << "what was read before stays";
}

// --------------------------------------------------------------------- GRP_CTRL, GRP_STATUS

TEST(GroupCtrl, HasItsNameLast) {
  const OwnedRecord record = parse(line("GRP_CTRL", "10.1", R"(1 2 3 "text" "/group")"));
  ASSERT_NE(record, nullptr);
  const jgrpCtrlLog &log = record->eventLog.jgrpCtrlLog;
  EXPECT_EQ(log.grpField1, 1);
  EXPECT_EQ(log.grpCtrlField2, 2);
  EXPECT_EQ(log.grpCtrlField3, 3);
  EXPECT_STREQ(log.grpCtrlStr, "text");
  EXPECT_STREQ(log.grpName, "/group");
  EXPECT_EQ(fieldsOf(*record), R"( 1 2 3 "text" "/group")"
                               "\n");
}

TEST(GroupCtrl, RefusesANameThatIsEmptyOrOf60Characters) {
  const auto faultOfName = [](const std::string &name) {
    return faultOf(line("GRP_CTRL", "10.1", "1 2 3 \"text\" " + quoted(name)));
  };
  EXPECT_EQ(faultOfName(""), (Fault{WMQE_BAD_FORMAT, "grpName"}));
  EXPECT_EQ(faultOfName(kTooLongName), (Fault{WMQE_BAD_FORMAT, "grpName"}));
  EXPECT_EQ(faultOfName(kLongestName), Fault{});
}

TEST(GroupCtrl, MustHaveThreeNumbersAndTwoStrings) {
  EXPECT_EQ(faultOf(line("GRP_CTRL", "10.1", R"(1 2 "text" "/group")")),
            (Fault{WMQE_BAD_FORMAT, "grpCtrlField3"}));
  EXPECT_EQ(faultOf(line("GRP_CTRL", "10.1", "1 2 3")), (Fault{WMQE_BAD_FORMAT, "grpCtrlStr"}));
  EXPECT_EQ(faultOf(line("GRP_CTRL", "10.1", "1 2 3 \"text\"")), (Fault{WMQE_BAD_FORMAT, "grpName"}));
}

TEST(GroupStatus, HasItsStringFirst) {
  const OwnedRecord record = parse(line("GRP_STATUS", "10.1", R"("text" 2 3)"));
  ASSERT_NE(record, nullptr);
  const jgrpStatusLog &log = record->eventLog.jgrpStatusLog;
  EXPECT_STREQ(log.grpStatusStr, "text");
  EXPECT_EQ(log.grpStatusField2, 2);
  EXPECT_EQ(log.grpStatusField3, 3);
  EXPECT_EQ(fieldsOf(*record), R"( "text" 2 3)"
                               "\n");
}

TEST(GroupStatus, MustHaveAStringAndTwoNumbers) {
  EXPECT_EQ(faultOf(line("GRP_STATUS", "10.1", "2 3")), (Fault{WMQE_BAD_FORMAT, "grpStatusStr"}));
  EXPECT_EQ(faultOf(line("GRP_STATUS", "10.1", R"("text" 2)")), (Fault{WMQE_BAD_FORMAT, "grpStatusField3"}));
}

// --------------------------------------------------------------------------------- release

// The second release must find nothing left to do.
void expectReleasedOnce(eventRecord &record) {
  const eventRecord before = record;
  freeLogRec(&record);
  EXPECT_EQ(std::memcmp(&before, &record, sizeof before), 0);
}

TEST(GroupRelease, FreesTheFiveStringsOfGroupAdd) {
  const OwnedRecord record = parse(added("10.1", kAdded));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jgrpAddLog &log = addedIn(record);
  for (const char *string : {log.grpStr1, log.grpStr2, log.grpStr4, log.grpStr5, log.grpStr6})
    EXPECT_EQ(string, nullptr);
  EXPECT_STREQ(log.grpName, "/group") << "inline, nothing to free";
  EXPECT_EQ(log.grpField13, 113);
  expectReleasedOnce(*record);
}

TEST(GroupRelease, FreesTheFiveStringsOfGroupMod) {
  const OwnedRecord record = parse(modified("10.1", kModified));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jgrpModLog &log = modifiedIn(record);
  for (const char *string : {log.grpStr1, log.grpStr2, log.grpStr4, log.grpStr5, log.grpStr6})
    EXPECT_EQ(string, nullptr);
  expectReleasedOnce(*record);
}

TEST(GroupRelease, FreesTheStringsOfGroupCtrlAndGroupStatus) {
  const OwnedRecord control = parse(line("GRP_CTRL", "10.1", R"(1 2 3 "text" "/group")"));
  const OwnedRecord status = parse(line("GRP_STATUS", "10.1", R"("text" 2 3)"));
  ASSERT_TRUE(control != nullptr && status != nullptr);
  freeLogRec(control.get());
  freeLogRec(status.get());
  EXPECT_EQ(control->eventLog.jgrpCtrlLog.grpCtrlStr, nullptr);
  EXPECT_EQ(status->eventLog.jgrpStatusLog.grpStatusStr, nullptr);
  expectReleasedOnce(*control);
  expectReleasedOnce(*status);
}

}  // namespace
}  // namespace wmq::testing
