// JOB_NEW and JOB_MODIFY.
#include "wmq/records/job_new.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "companion/limits.h"
#include "companion/written_text.h"
#include "records/record_codecs.h"
#include "support/record_lines.h"

namespace wmq::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kAllBits[] = "3989508";  // of options2

// Everything that a line can carry. newInt5 has two places, the limits stand at two places.
const Fields kSubmission = {
    {"jobId", "1001"},
    {"userId", "1002"},
    {"options", "67108864"},
    {"numProcessors", "1004"},
    {"submitTime", "1600001005"},
    {"beginTime", "1600001006"},
    {"termTime", "1600001007"},
    {"newInt1", "1008"},
    {"newInt2", "-1009"},
    {"newInt3", "1010"},
    {"userName", "\"user\""},
    {"rlimits", "100 101 102 103 104 105 106 107 108 109 110"},
    {"newHost", "\"new host\""},
    {"hostFactor", " 24.25"},  // six characters wide
    {"newInt4", "1025"},
    {"queue", "\"queue\""},
    {"resReq", "\"res req\""},
    {"fromHost", "\"from.host\""},
    {"cwd", "\"/cwd\""},
    {"newStr1", "\"new str 1\""},
    {"inFile", "\"in file\""},
    {"outFile", "\"out file\""},
    {"newStr2", "\"new str 2\""},
    {"newStr3", "\"new str 3\""},
    {"jobFile", "\"job file\""},
    {"nameList", R"(2 "name a" "name b")"},
    {"dependCond", "\"depend\""},
    {"preExecCmd", "\"pre exec\""},
    {"jobName", "\"job name\""},
    {"command", "\"command\""},
    {"strPairs", R"(2 "first" "second" 1041 "third" "fourth" -1)"},
    {"newStr4", "\"new str 4\""},
    {"projectName", "\"project\""},
    {"newInt5", "1044"},
    {"maxNumProcessors", "1045"},
    {"newStr5", "\"new str 5\""},
    {"newStr6", "\"new str 6\""},
    {"newStr7", "\"new str 7\""},
    {"userGroup", "\"user group\""},
    {"newStr8", "\"new str 8\""},
    {"options2", kAllBits},
    {"newInt6", "1052"},
    {"newInt5 again", "1044"},
    {"newStr9", "\"new str 9\""},
    {"newStr10", "\"new str 10\""},
    {"newStr11", "\"new str 11\""},
    {"newInt7", "1057"},
    {"rsvId", "\"rsv\""},
    {"jgroup", "\"job group\""},
    {"sla", "\"sla\""},
    {"last rlimit", "111"},
    {"newStr12", "\"new str 12\""},
    {"newStr13", "\"new str 13\""},
    {"newInt8", "1064"},
    {"newInt9", "1065"},
    {"licenseProject", "\"license\""},
    {"options3", "1067"},
    {"app", "\"app\""},
    {"postExecCmd", "\"post exec\""},
    {"newInt10", "1070"},
    {"requeueEValues", "\"requeue\""},
    {"newInt11", "1072"},
    {"newInt12", "1073"},
    {"jobDescription", "\"description\""},
    {"submitExt", R"(2 7 "value a" -8 "value b")"},
    {"newInt13", "128"},
    {"nameList2", R"(2 "x" "y")"},
    {"srcCluster", "\"src\""},
    {"srcJobId", "9000000000079"},
    {"dstCluster", "\"dst\""},
    {"dstJobId", "-9000000000081"},
    {"newStr14", "\"new str 14\""},
    {"newStr15", "\"new str 15\""},
    {"newStr16", "\"new str 16\""},
    {"newStr17", "\"new str 17\""},
    {"newStr18", "\"new str 18\""},
    {"newInt14", "1087"},
    {"newInt15", "1088"},
    {"newInt16", "1089"},
    {"newStr19", "\"new str 19\""},
    {"newStr20", "\"new str 20\""},
    {"namedValues", R"(2 "one" 1 "minus two" -2)"},
    {"newStr21", "\"new str 21\""},
};

// What stands on the line under an option bit only.
struct Optional {
  const char *field;
  int32_t bit;  // of options2
  char *jobNewLog::*text;
  const char *value;
};
const Optional kOptionalTexts[] = {
    {"rsvId", JOB_OPTION2_RSV, &jobNewLog::rsvId, "rsv"},
    {"jgroup", JOB_OPTION2_JGROUP, &jobNewLog::jgroup, "job group"},
    {"sla", JOB_OPTION2_SLA, &jobNewLog::sla, "sla"},
    {"newStr12", JOB_OPTION2_STR12, &jobNewLog::newStr12, "new str 12"},
    {"newStr13", JOB_OPTION2_STR13, &jobNewLog::newStr13, "new str 13"},
    {"licenseProject", JOB_OPTION2_LICENSE, &jobNewLog::licenseProject, "license"}};
const std::vector<std::string> kOptional = {"newInt5",  "newInt5 again", "rsvId",   "jgroup",        "sla",
                                            "newStr12", "newStr13",      "newInt8", "licenseProject"};

// The submission with these bits of options2 and no bit of options, and of the fields that stand under a bit
// only `present`.
Fields under(int32_t bits, const std::string &present = "") {
  Fields fields = kSubmission.with("options", "0").with("options2", std::to_string(bits));
  for (const std::string &name : kOptional)
    if (name != present) fields = fields.without(name);
  return fields;
}

const Fields kPlain = under(0);

std::string submission(const std::string &version, const std::string &fields) {
  return line("JOB_NEW", version, fields);
}

std::string quoted(const std::string &text) { return '"' + text + '"'; }

jobNewLog &logOf(const OwnedRecord &record) { return record->eventLog.jobNewLog; }

// A record that a test gives members of its own; nothing of it is released.
class JobNewWriting : public ::testing::Test {
 protected:
  eventRecord record = bareRecord(EVENT_JOB_NEW);
  jobNewLog &log = record.eventLog.jobNewLog;
};

// What reading leaves in a structure, whatever it comes to.
class JobNewReading : public ::testing::Test {
 protected:
  int read(const std::string &fields, float version = 10.1F) {
    wmq_setlineversion(version);
    return readFields(fields.c_str(), jobNewCodec, &log);
  }

  OwnedRecord record = emptyRecord(EVENT_JOB_NEW);
  jobNewLog &log = record->eventLog.jobNewLog;
};

// ---------------------------------------------------------------------- versions of the line

TEST(JobNew, ReadsAndWritesEverythingThatALineCanCarry) {
  const OwnedRecord record = parse(submission("10.1", kSubmission));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(fieldsOf(*record), ' ' + kSubmission.text() + '\n');
}

TEST(JobModify, HasTheLineOfJobNew) {
  const OwnedRecord record = parse(line("JOB_MODIFY", "10.1", kSubmission));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(record->type, EVENT_JOB_MODIFY);
  EXPECT_EQ(format(*record), line("JOB_MODIFY", "10.1", kSubmission) + '\n');
  freeLogRec(record.get());
  EXPECT_EQ(logOf(record).command, nullptr);
}

TEST(JobNew, Of2_1EndsBehindItsPairsOfStrings) {
  const OwnedRecord record = parse(submission("2.1", kSubmission.upTo("strPairs")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  const jobNewLog &log = logOf(record);
  EXPECT_EQ(log.numStrPairs, 2);
  EXPECT_EQ(log.maxNumProcessors, log.numProcessors);
  EXPECT_THAT((std::array{log.newInt7, log.newInt8, log.newInt9, log.newInt10, log.newInt12,
                          log.rlimits[WMX_RLIMIT_THREAD]}),
              Each(-1));
  EXPECT_THAT((std::array{log.options3, log.newInt11, log.newInt13, log.newInt5, log.newInt6, log.newInt14,
                          log.newInt15, log.newInt16, log.options2}),
              Each(0));
  EXPECT_EQ(log.srcJobId, 0);
  EXPECT_EQ(log.dstJobId, 0);
  EXPECT_EQ(log.submitExt, nullptr);
  EXPECT_EQ(log.namedValues, nullptr);
  EXPECT_EQ(log.newStr19, nullptr);
  EXPECT_EQ(log.nameList2, nullptr);
}

TEST(JobNew, Of2_1OwnsAnEmptyStringForEveryOneThatIsAbsent) {
  const OwnedRecord record = parse(submission("2.1", kSubmission.upTo("strPairs")));
  ASSERT_NE(record, nullptr);
  const jobNewLog &log = logOf(record);
  for (char *text :
       {log.newStr4,        log.projectName, log.newStr5,     log.newStr6,        log.newStr7,
        log.userGroup,      log.newStr8,     log.newStr9,     log.newStr10,       log.newStr11,
        log.rsvId,          log.jgroup,      log.sla,         log.newStr12,       log.newStr13,
        log.licenseProject, log.app,         log.postExecCmd, log.requeueEValues, log.jobDescription,
        log.srcCluster,     log.dstCluster,  log.newStr14,    log.newStr15,       log.newStr16,
        log.newStr17,       log.newStr18,    log.newStr20,    log.newStr21})
    EXPECT_STREQ(text, "");
}

TEST(JobNew, Of3_0CarriesNothingThatCameAbove3_0) {
  for (const char *version : {"3.0", "3.00001"}) {
    const OwnedRecord record = parse(submission(version, kSubmission.upTo("newStr6")));
    ASSERT_NE(record, nullptr) << version;
    EXPECT_EQ(logOf(record).newInt5, 1044) << version;
    EXPECT_EQ(logOf(record).maxNumProcessors, 1045) << version;
    EXPECT_STREQ(logOf(record).newStr5, "new str 5") << version;
    EXPECT_STREQ(logOf(record).newStr6, "new str 6") << version;
    EXPECT_STREQ(logOf(record).newStr7, "") << version;
    EXPECT_STREQ(logOf(record).newStr8, "") << version;
    EXPECT_EQ(logOf(record).newInt6, 0) << version;
  }
}

TEST(JobNew, Of3_05IsAbove3_0) {
  const OwnedRecord record = parse(submission("3.05", kPlain.upTo("newInt6")));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(logOf(record).newStr7, "new str 7");
  EXPECT_STREQ(logOf(record).userGroup, "user group");
  EXPECT_STREQ(logOf(record).newStr8, "new str 8");
  EXPECT_EQ(logOf(record).newInt6, 1052);
}

TEST(JobNew, EndsWhereItsVersionEndsAndNotBefore) {
  const std::pair<const char *, const char *> lastFields[] = {
      {"2.1", "strPairs"},  {"2.2", "projectName"}, {"3.0", "newStr6"},  {"3.01", "newInt6"},
      {"4.0", "newInt7"},   {"6.0", "newInt9"},     {"7.0", "app"},      {"7.02", "newInt10"},
      {"7.03", "newInt12"}, {"7.06", "submitExt"},  {"9.1", "newStr18"}, {"9.11", "newStr19"},
      {"9.13", "newStr21"}, {"10.1", "newStr21"},   {"10.2", "newStr21"}};
  const std::vector<std::string> names = kPlain.names();
  for (const auto &[version, last] : lastFields) {
    EXPECT_EQ(faultOf(submission(version, kPlain.upTo(last))), Fault{}) << version;
    const auto at = std::find(names.begin(), names.end(), last);
    EXPECT_EQ(faultOf(submission(version, kPlain.upTo(at[-1]))).error, WMQE_BAD_FORMAT) << version;
  }
}

TEST(JobNew, MustHaveEveryFieldOfItsVersion) {
  const std::vector<std::string> names = kSubmission.names();
  for (size_t last = 0; last + 1 < names.size(); ++last)
    EXPECT_EQ(faultOf(submission("10.1", kSubmission.upTo(names[last]))).error, WMQE_BAD_FORMAT)
        << "behind " << names[last];
}

TEST_F(JobNewReading, LeavesOptions2AsItIsWhereTheLineHasNone) {
  log.options2 = 12345;
  EXPECT_EQ(read(kSubmission.upTo("newStr6"), 3.0F), 0);
  EXPECT_EQ(log.options2, 12345);
}

// ------------------------------------------------------------------------------- lists

TEST_F(JobNewWriting, Writes0ForAnEmptyListOfNames) {
  EXPECT_THAT(fieldsOf(record), HasSubstr(R"( "queue" "" "submit" "" "" "" "" "" "" "" 0 "" "" "" "" 0 )"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(logOf(read).numNameList, 0);
  EXPECT_EQ(logOf(read).nameList, nullptr);
  EXPECT_EQ(logOf(read).strPairs, nullptr);
}

TEST_F(JobNewWriting, PutsNegativeCountsDownAsTheyAre) {
  log.numNameList = -1;
  log.numStrPairs = -2;
  log.numNameList2 = -3;
  EXPECT_THAT(fieldsOf(record), HasSubstr(R"( "" "" "" "" "" "" "" -1 "" "" "" "" -2 "" "" 0 )"));
  log.newInt13 = JOB_INT13_NAME_LIST2;
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(logOf(read).numNameList, -1);
  EXPECT_EQ(logOf(read).nameList, nullptr);
  EXPECT_EQ(logOf(read).numStrPairs, -2);
  EXPECT_EQ(logOf(read).strPairs, nullptr);
  EXPECT_EQ(logOf(read).numNameList2, -3);
  EXPECT_EQ(logOf(read).nameList2, nullptr);
}

TEST_F(JobNewWriting, FailsForCountsWithoutArrays) {
  log.numNameList2 = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "nameList2"}));
  log.numStrPairs = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "strPairs"}));
  log.numNameList = 1;
  EXPECT_EQ(faultOf(record), (Fault{WMQE_SYS, "nameList"}));
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( "" "" "" "" "" "" "" 1)")) << "the partial line";
}

TEST_F(JobNewReading, CutsTheCountOfNamesToThoseThatAreComplete) {
  EXPECT_EQ(read(kSubmission.upTo("nameList").with("nameList", R"(3 "name a" "name b" c)")), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numNameList, log.nameList), ElementsAre("name a", "name b"));
}

TEST_F(JobNewReading, CutsTheCountOfPairsToThoseThatAreComplete) {
  const Fields fields =
      kSubmission.upTo("strPairs").with("strPairs", R"(2 "first" "second" 3 "fourth" "fifth")");
  EXPECT_EQ(read(fields), WMQE_BAD_FORMAT);
  ASSERT_EQ(log.numStrPairs, 1);
  EXPECT_STREQ(log.strPairs[0].second, "second");
}

TEST_F(JobNewReading, CutsTheCountOfTheSecondNamesToThoseThatAreComplete) {
  EXPECT_EQ(read(kSubmission.upTo("nameList2").with("nameList2", R"(2 "name x" y)")), WMQE_BAD_FORMAT);
  EXPECT_THAT(listed(log.numNameList2, log.nameList2), ElementsAre("name x"));
}

TEST_F(JobNewReading, CutsTheCountOfNamedValuesToThoseThatAreComplete) {
  const Fields fields = kSubmission.upTo("namedValues").with("namedValues", R"(2 "one" 1 "without value")");
  EXPECT_EQ(read(fields), WMQE_BAD_FORMAT);
  ASSERT_NE(log.namedValues, nullptr);
  ASSERT_EQ(log.namedValues->count, 1);
  EXPECT_STREQ(log.namedValues->names[0], "one");
  EXPECT_EQ(log.namedValues->values[0], 1);
}

TEST_F(JobNewReading, KeepsThePairsOfAnExtensionThatIsBroken) {
  EXPECT_EQ(read(kSubmission.upTo("submitExt").with("submitExt", R"(2 7 "value a" -8)")), WMQE_BAD_FORMAT);
  ASSERT_NE(log.submitExt, nullptr);
  ASSERT_EQ(log.submitExt->numPairs, 1);
  EXPECT_EQ(log.submitExt->pairs[0].key, 7);
  EXPECT_STREQ(log.submitExt->pairs[0].value, "value a");
}

TEST_F(JobNewReading, HasNoArrayForMoreElementsThanTheLineCanHold) {
  EXPECT_EQ(read(kSubmission.upTo("nameList").with("nameList", R"(1000000 "name")")), WMQE_BAD_FORMAT);
  EXPECT_EQ(log.numNameList, 0);
  EXPECT_EQ(log.nameList, nullptr);
}

// -------------------------------------------------------------------- pairs without escaping

TEST_F(JobNewWriting, DoesNotEscapeTheStringsOfAPair) {
  char first[] = R"(a"b)";
  char second[] = "c\nd";
  strPair pair = {first, second, 7};
  log.numStrPairs = 1;
  log.strPairs = &pair;
  EXPECT_THAT(fieldsOf(record), HasSubstr(" 1 \"a\"b\" \"c\nd\" 7 "));
}

TEST_F(JobNewWriting, DoesNotReadBackAPairThatHoldsAQuote) {
  char first[] = R"(a"b)";
  char second[] = "c";
  strPair pair = {first, second, 7};
  log.numStrPairs = 1;
  log.strPairs = &pair;
  EXPECT_EQ(faultOf(format(record)), (Fault{WMQE_BAD_FORMAT, "flags"}));

  char balanced[] = R"(a" "b)";
  pair.first = balanced;
  EXPECT_EQ(faultOf(format(record)), (Fault{WMQE_BAD_FORMAT, "flags"}));
}

TEST_F(JobNewWriting, WritesANullStringOfAPairAsAnEmptyOne) {
  strPair pair = {nullptr, nullptr, 7};
  log.numStrPairs = 1;
  log.strPairs = &pair;
  EXPECT_THAT(fieldsOf(record), HasSubstr(R"( 1 "" "" 7 )"));
}

// --------------------------------------------------------------------------- newlines

char *jobNewLog::*const kWithoutNewlines[] = {
    &jobNewLog::resReq,      &jobNewLog::dependCond,     &jobNewLog::preExecCmd,
    &jobNewLog::command,     &jobNewLog::newStr4,        &jobNewLog::newStr7,
    &jobNewLog::postExecCmd, &jobNewLog::requeueEValues, &jobNewLog::newStr14};

char *jobNewLog::*const kWithNewlines[] = {&jobNewLog::cwd,
                                           &jobNewLog::newStr1,
                                           &jobNewLog::inFile,
                                           &jobNewLog::outFile,
                                           &jobNewLog::newStr2,
                                           &jobNewLog::newStr9,
                                           &jobNewLog::newStr10,
                                           &jobNewLog::newStr11,
                                           &jobNewLog::newStr3,
                                           &jobNewLog::jobFile,
                                           &jobNewLog::jobName,
                                           &jobNewLog::projectName,
                                           &jobNewLog::newStr5,
                                           &jobNewLog::newStr6,
                                           &jobNewLog::userGroup,
                                           &jobNewLog::newStr8,
                                           &jobNewLog::rsvId,
                                           &jobNewLog::jgroup,
                                           &jobNewLog::newStr12,
                                           &jobNewLog::newStr13,
                                           &jobNewLog::sla,
                                           &jobNewLog::licenseProject,
                                           &jobNewLog::app,
                                           &jobNewLog::newStr21,
                                           &jobNewLog::srcCluster,
                                           &jobNewLog::dstCluster,
                                           &jobNewLog::jobDescription,
                                           &jobNewLog::newStr15,
                                           &jobNewLog::newStr16,
                                           &jobNewLog::newStr17,
                                           &jobNewLog::newStr18,
                                           &jobNewLog::newStr19,
                                           &jobNewLog::newStr20};

TEST(JobNew, TurnsNewlinesToBlanksInNineOfTheCallersStrings) {
  const OwnedRecord record = emptyRecord(EVENT_JOB_NEW);
  record->eventLog = bareRecord(EVENT_JOB_NEW).eventLog;
  for (const auto member : kWithoutNewlines) logOf(record).*member = ownedCopy("a\nb\n\nc");
  const OwnedRecord read = readBack(*record);
  ASSERT_NE(read, nullptr) << wmq_errdetail();
  for (const auto member : kWithoutNewlines) {
    EXPECT_STREQ(logOf(record).*member, "a b  c");
    EXPECT_STREQ(logOf(read).*member, "a b  c");
  }
}

TEST(JobNew, LeavesNewlinesInAllOtherStrings) {
  const OwnedRecord record = emptyRecord(EVENT_JOB_NEW);
  record->eventLog = bareRecord(EVENT_JOB_NEW).eventLog;
  logOf(record).options2 = std::atoi(kAllBits);
  for (const auto member : kWithNewlines) logOf(record).*member = ownedCopy("a\nb");
  for (char *name :
       {logOf(record).userName, logOf(record).newHost, logOf(record).queue, logOf(record).fromHost})
    std::memcpy(name, "a\nb", sizeof "a\nb");
  const OwnedRecord read = readBack(*record);
  ASSERT_NE(read, nullptr) << wmq_errdetail();
  for (const auto member : kWithNewlines) {
    EXPECT_STREQ(logOf(record).*member, "a\nb");
    EXPECT_STREQ(logOf(read).*member, "a\nb");
  }
  for (const char *name :
       {logOf(read).userName, logOf(read).newHost, logOf(read).queue, logOf(read).fromHost})
    EXPECT_STREQ(name, "a\nb");
}

// ------------------------------------------------------------------------------- limits

// Every slot is changed, by another amount in each direction.
void shiftLimits(int32_t *limits, int direction) {
  for (int slot = 0; slot < WMX_RLIM_NLIMITS; ++slot) limits[slot] += direction == 0 ? 1000 : 5000;
}

class JobNewLimits : public ::testing::Test {
 protected:
  JobNewLimits() { limitConverter = shiftLimits; }
  ~JobNewLimits() override {
    limitConverter = nullptr;
    unifiedUnit = 0;
  }

  // The limits of a line with the numbers 100 to 111, when read.
  static std::vector<int32_t> read(const Fields &fields = kSubmission, const char *version = "10.1") {
    const OwnedRecord record = parse(submission(version, fields));
    if (record == nullptr) return {};
    return {logOf(record).rlimits, logOf(record).rlimits + WMX_RLIM_NLIMITS};
  }

  // The limits on the line of a record with these options and the limits 100 to 111.
  static std::vector<std::string> written(int32_t options = 0) {
    eventRecord record = bareRecord(EVENT_JOB_NEW);
    record.eventLog.jobNewLog.options = options;
    record.eventLog.jobNewLog.newInt7 = 777;  // stands before the last limit
    for (int slot = 0; slot < WMX_RLIM_NLIMITS; ++slot) record.eventLog.jobNewLog.rlimits[slot] = 100 + slot;
    const std::string text = fieldsOf(record);
    const size_t head = text.find("\"user\" ") + 7;
    const size_t last = text.find(" 777 ", head) + 5;
    return {text.substr(head, text.find(" \"", head) - head), text.substr(last, text.find(' ', last) - last)};
  }
};

TEST_F(JobNewLimits, AreAllConvertedWhenWriting) {
  EXPECT_THAT(written(), ElementsAre("1100 1101 1102 1103 1104 1105 1106 1107 1108 1109 1110", "1111"));
}

TEST_F(JobNewLimits, AreConvertedWhenReadingButForTheLast) {
  EXPECT_THAT(read(), ElementsAre(5100, 5101, 5102, 5103, 5104, 5105, 5106, 5107, 5108, 5109, 5110, 111));
}

TEST_F(JobNewLimits, OfTheCallerAreNotChangedByWriting) {
  eventRecord record = bareRecord(EVENT_JOB_NEW);
  format(record);
  EXPECT_THAT(record.eventLog.jobNewLog.rlimits, Each(0));
}

TEST_F(JobNewLimits, AreConvertedWhileTheUnifiedUnitIs0OrMinus1Only) {
  for (const int unit : {-1, 0}) {
    unifiedUnit = unit;
    EXPECT_EQ(written()[1], "1111") << unit;
    EXPECT_EQ(read()[0], 5100) << unit;
  }
  for (const int unit : {1, 2, -2}) {
    unifiedUnit = unit;
    EXPECT_THAT(written(), ElementsAre("100 101 102 103 104 105 106 107 108 109 110", "111")) << unit;
    EXPECT_THAT(read(), ElementsAre(100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111)) << unit;
  }
}

TEST_F(JobNewLimits, AreNotConvertedOnEitherSideWhenTheOptionsAreNegative) {
  EXPECT_THAT(written(INT32_MIN), ElementsAre("100 101 102 103 104 105 106 107 108 109 110", "111"));
  EXPECT_THAT(read(kSubmission.with("options", "-2147483648").without("newInt5")),
              ElementsAre(100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111));
}

TEST_F(JobNewLimits, OfOldLinesAreConvertedTooButForTheLastWhichIsAbsent) {
  EXPECT_THAT(read(kSubmission.upTo("strPairs"), "2.1"),
              ElementsAre(5100, 5101, 5102, 5103, 5104, 5105, 5106, 5107, 5108, 5109, 5110, -1));
}

// ------------------------------------------------------------------------- option bits

TEST(JobNew, CarriesATextUnderItsOptionBitOnly) {
  for (const Optional &optional : kOptionalTexts) {
    SCOPED_TRACE(optional.field);
    const Fields with = under(optional.bit, optional.field);
    const OwnedRecord record = parse(submission("10.1", with));
    ASSERT_NE(record, nullptr) << wmq_errdetail();
    EXPECT_STREQ(logOf(record).*optional.text, optional.value);
    EXPECT_EQ(fieldsOf(*record), ' ' + with.text() + '\n');

    logOf(record).options2 = 0;
    EXPECT_EQ(fieldsOf(*record), ' ' + kPlain.text() + '\n');
    EXPECT_STREQ(logOf(readBack(*record)).*optional.text, "");
  }
}

TEST(JobNew, CarriesItsEighthNumberUnderItsOptionBitOnly) {
  const Fields with = under(JOB_OPTION2_INT8, "newInt8");
  const OwnedRecord record = parse(submission("10.1", with));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).newInt8, 1064);
  EXPECT_EQ(fieldsOf(*record), ' ' + with.text() + '\n');
  logOf(record).options2 = 0;
  EXPECT_EQ(fieldsOf(*record), ' ' + kPlain.text() + '\n');
  EXPECT_EQ(logOf(readBack(*record)).newInt8, -1);
}

TEST(JobNew, TakesNoNoticeOfOptionBitsInVersionsBeforeTheirFields) {
  const OwnedRecord record = parse(submission("4.9", under(JOB_OPTION2_RSV).upTo("newInt7")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_STREQ(logOf(record).rsvId, "");
  EXPECT_EQ(faultOf(submission("5.0", under(JOB_OPTION2_RSV).upTo("newInt7"))),
            (Fault{WMQE_BAD_FORMAT, "rsvId"}));

  const int32_t sixth =
      JOB_OPTION2_JGROUP | JOB_OPTION2_SLA | JOB_OPTION2_STR12 | JOB_OPTION2_STR13 | JOB_OPTION2_INT8;
  EXPECT_EQ(faultOf(submission("5.9", under(sixth).upTo("newInt7"))), Fault{});
}

TEST(JobNew, CarriesTheLicenseProjectInAnyVersionThatHasItsBit) {
  const Fields fields = under(JOB_OPTION2_LICENSE, "licenseProject");
  const OwnedRecord record = parse(submission("3.01", fields.upTo("newInt6").text() + " \"license\""));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_STREQ(logOf(record).licenseProject, "license");
  EXPECT_EQ(faultOf(submission("3.01", fields.upTo("newInt6"))), (Fault{WMQE_BAD_FORMAT, "licenseProject"}));
}

// ------------------------------------------------------------------- the two places of newInt5

constexpr char kFirstPlaceBit[] = "67108864";

TEST(JobNew, CarriesNewInt5UnderItsOptionBitFrom3_0On) {
  const Fields fields = kSubmission.upTo("newStr6");
  EXPECT_EQ(logOf(parse(submission("3.0", fields))).newInt5, 1044);
  EXPECT_EQ(logOf(parse(submission("2.9", fields))).newInt5, 0);
  EXPECT_EQ(logOf(parse(submission("3.0", fields.with("options", "0").without("newInt5")))).newInt5, 0);
}

TEST(JobNew, TakesNewInt5FromItsSecondPlace) {
  const Fields both = under(JOB_OPTION2_INT5, "newInt5 again").with("newInt5 again", "7");
  const OwnedRecord record = parse(submission("10.1", both));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).newInt5, 7);
}

TEST(JobNew, LetsTheSecondPlaceOfNewInt5Win) {
  const OwnedRecord record =
      parse(submission("10.1", kSubmission.with("newInt5", "6").with("newInt5 again", "7")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).newInt5, 7);
  EXPECT_EQ(fieldsOf(*record),
            ' ' + kSubmission.with("newInt5", "7").with("newInt5 again", "7").text() + '\n');
}

TEST(JobNew, HasNoSecondPlaceOfNewInt5Before3_1) {
  const Fields fields = under(JOB_OPTION2_INT5).upTo("newInt6");
  const OwnedRecord record = parse(submission("3.05", fields.text() + " 7"));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).newInt5, 0);
}

TEST(JobNew, LooksAtTheSecondPlaceOfNewInt5OnlyIfTextRemains) {
  Fields fields = kSubmission.upTo("newInt6").with("options2", "4");
  const OwnedRecord first = parse(submission("3.1", fields));
  ASSERT_NE(first, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(first).newInt5, 1044) << "the first place stands";

  const OwnedRecord second = parse(submission("3.1", fields.text() + " 7"));
  ASSERT_NE(second, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(second).newInt5, 7);
}

TEST(JobNew, TakesALineEndForTextAtTheSecondPlaceOfNewInt5) {
  const std::string fields = kSubmission.upTo("newInt6").with("options2", "4");
  for (const char *rest : {"\n", " ", " x"})
    EXPECT_EQ(faultOf(submission("3.1", fields + rest)), (Fault{WMQE_BAD_FORMAT, "newInt5"}));
}

// ------------------------------------------------------------- where the reader does not move on

TEST(JobNew, FindsTheStringBehindNewInt6WhateverStandsBetween) {
  const OwnedRecord record = parse(submission("10.1", kPlain.with("newInt6", "1052 98 99")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).newInt6, 1052);
  EXPECT_STREQ(logOf(record).newStr9, "new str 9");
}

TEST(JobNew, FindsTheStringBehindTheSecondPlaceOfNewInt5WhateverStandsBetween) {
  const OwnedRecord record = parse(submission("10.1", kSubmission.with("newInt5 again", "7 98 99")));
  ASSERT_NE(record, nullptr) << wmq_errdetail();
  EXPECT_EQ(logOf(record).newInt5, 7);
  EXPECT_STREQ(logOf(record).newStr9, "new str 9");
}

TEST(JobNew, NeitherReadsNorNeedsTheCountOfSecondNamesWithoutItsBit) {
  for (const char *count : {"0", "77", "rubbish"}) {
    const OwnedRecord record =
        parse(submission("10.1", kSubmission.with("newInt13", "127").with("nameList2", count)));
    ASSERT_NE(record, nullptr) << count;
    EXPECT_EQ(logOf(record).numNameList2, 0);
    EXPECT_STREQ(logOf(record).srcCluster, "src");
  }
  EXPECT_EQ(faultOf(submission("10.1", kSubmission.with("newInt13", "0").without("nameList2"))), Fault{});
}

TEST(JobNew, ReadsTheSecondNamesUnderTheBitInTheLowByteOfNewInt13) {
  for (const char *word : {"128", "384", "-1"}) {
    const OwnedRecord record = parse(submission("10.1", kSubmission.with("newInt13", word)));
    ASSERT_NE(record, nullptr) << word;
    EXPECT_THAT(listed(logOf(record).numNameList2, logOf(record).nameList2), ElementsAre("x", "y")) << word;
  }
}

TEST_F(JobNewWriting, WritesTheSecondNamesWithoutTheirBitToo) {
  Names names = {"x", "y"};
  log.numNameList2 = names.count();
  log.nameList2 = names;
  EXPECT_THAT(fieldsOf(record), HasSubstr(R"( 0 2 "x" "y" "" 0 "" 0 )"));
}

TEST_F(JobNewReading, TakesSecondNamesWithoutTheirBitForTheCluster) {
  EXPECT_EQ(read(kSubmission.with("newInt13", "0")), WMQE_BAD_FORMAT);
  EXPECT_STREQ(log.srcCluster, "x");
  EXPECT_EQ(log.numNameList2, 0);
  EXPECT_EQ(lastFault(WMQE_BAD_FORMAT).field, "srcJobId") << "where the next name stands";
}

// ------------------------------------------------------------------------- numbers, names

TEST_F(JobNewWriting, CutsItsTimesToTheirLow32Bits) {
  log.submitTime = (int64_t{1} << 32) + 5;
  log.beginTime = int64_t{1} << 31;
  log.termTime = -(int64_t{1} << 32) - 7;
  EXPECT_THAT(fieldsOf(record), StartsWith(" 0 0 0 0 5 -2147483648 -7 0 0 0 "));
}

TEST(JobNew, WidensItsTimesWithTheirSign) {
  const OwnedRecord record =
      parse(submission("2.1", kSubmission.with("beginTime", "-2147483648").with("termTime", "-7")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).beginTime, -2147483648LL);
  EXPECT_EQ(logOf(record).termTime, -7);
}

TEST(JobNew, MustHaveItsTenNumbersAtTheHead) {
  EXPECT_EQ(faultOf(submission("2.1", kSubmission.upTo("newInt2"))), (Fault{WMQE_BAD_FORMAT, "newInt3"}));
  EXPECT_EQ(faultOf(submission("2.1", kSubmission.with("newInt1", "x"))),
            (Fault{WMQE_BAD_FORMAT, "newInt1"}));
}

TEST(JobNew, MustHaveItsElevenLimits) {
  EXPECT_EQ(faultOf(submission("2.1", kSubmission.with("rlimits", "1 2 3 4 5 6 7 8 9 10"))),
            (Fault{WMQE_BAD_FORMAT, "rlimits"}));
}

TEST(JobNew, MustHaveAllThreeOfItsLateNumbers) {
  EXPECT_EQ(faultOf(submission("10.1", kSubmission.without("newInt16"))),
            (Fault{WMQE_BAD_FORMAT, "newInt16"}));
}

TEST(JobNew, RefusesNamesThatAreEmptyOrTooLong) {
  const struct {
    const char *field;
    size_t longest;
    bool mayBeEmpty;
  } names[] = {{"userName", 59, false}, {"newHost", 63, true}, {"queue", 59, false}, {"fromHost", 63, false}};
  for (const auto &[field, longest, mayBeEmpty] : names) {
    const auto faultWith = [name = field](size_t length) {
      return faultOf(submission("10.1", kSubmission.with(name, quoted(std::string(length, 'n')))));
    };
    EXPECT_EQ(faultWith(longest), Fault{});
    EXPECT_EQ(faultWith(longest + 1), (Fault{WMQE_BAD_FORMAT, field}));
    EXPECT_EQ(faultWith(1), Fault{});
    EXPECT_EQ(faultWith(0), mayBeEmpty ? Fault{} : (Fault{WMQE_BAD_FORMAT, field}));
  }
}

// ------------------------------------------------------------- newStr19, namedValues, submitExt

TEST_F(JobNewWriting, WritesANullNewStr19AsAnEmptyStringThatReadsBackAsOne) {
  ASSERT_EQ(log.newStr19, nullptr);
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( 0 0 0 "" "" 0 "")"
                                         "\n"));
  const OwnedRecord read = readBack(record);
  ASSERT_NE(read, nullptr);
  EXPECT_STREQ(logOf(read).newStr19, "");
}

TEST(JobNew, HasANullNewStr19Before9_11) {
  EXPECT_EQ(logOf(parse(submission("9.1", kPlain.upTo("newStr18")))).newStr19, nullptr);
  EXPECT_STREQ(logOf(parse(submission("9.11", kPlain.upTo("newStr19")))).newStr19, "new str 19");
}

TEST_F(JobNewWriting, TakesNamedValuesForEmptyUnlessBothArraysAreThere) {
  Names names = {"one"};
  int32_t values[] = {1};
  namedValueList list = {1, names, nullptr};
  log.namedValues = &list;
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( "" 0 "")"
                                         "\n"));
  list = {1, nullptr, values};
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( "" 0 "")"
                                         "\n"));
  list = {1, names, values};
  EXPECT_THAT(fieldsOf(record), EndsWith(R"( "" 1 "one" 1 "")"
                                         "\n"));
}

TEST(JobNew, HasNoNamedValuesForACountOf0) {
  const OwnedRecord record = parse(submission("10.1", kSubmission.with("namedValues", "0")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).namedValues, nullptr);
  EXPECT_STREQ(logOf(record).newStr21, "new str 21");
}

TEST_F(JobNewWriting, Writes0ForAnExtensionThatIsNotThere) {
  EXPECT_THAT(fieldsOf(record), HasSubstr(R"( 0 0 "" 0 0 0 "" 0 "" 0 )"));
  EXPECT_EQ(logOf(readBack(record)).submitExt, nullptr);
}

TEST(JobNew, HasNoExtensionForACountOf0) {
  const OwnedRecord record = parse(submission("10.1", kSubmission.with("submitExt", "0")));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(logOf(record).submitExt, nullptr);
  EXPECT_EQ(logOf(record).newInt13, 128);
}

// ----------------------------------------------------------------------------- writing fails

TEST_F(JobNewWriting, SaysThatTheFileTookNothing) {
  EXPECT_EQ(test::resultOnAFullDevice([&](FILE *file) { return writeJobNew(file, &log); }), WMQE_SYS);
}

TEST_F(JobNewWriting, EndsItsLine) {
  int result = -1;
  EXPECT_EQ(test::writtenBy([&](FILE *file) { result = writeJobNew(file, &log); }), fieldsOf(record));
  EXPECT_EQ(result, 0);
}

// --------------------------------------------------------------------------------- release

TEST(JobNewRelease, FreesEveryListAndExtension) {
  const OwnedRecord record = parse(submission("10.1", kSubmission));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const jobNewLog &log = logOf(record);
  EXPECT_EQ(log.numNameList, 0);
  EXPECT_EQ(log.nameList, nullptr);
  EXPECT_EQ(log.numStrPairs, 0);
  EXPECT_EQ(log.strPairs, nullptr);
  EXPECT_EQ(log.numNameList2, 0);
  EXPECT_EQ(log.nameList2, nullptr);
  EXPECT_EQ(log.submitExt, nullptr);
  EXPECT_EQ(log.namedValues, nullptr);
  EXPECT_STREQ(log.userName, "user") << "inline, nothing to free";
}

TEST(JobNewRelease, FreesEveryString) {
  const OwnedRecord record = parse(submission("10.1", kSubmission));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  for (const auto member : kWithoutNewlines) EXPECT_EQ(logOf(record).*member, nullptr);
  for (const auto member : kWithNewlines) EXPECT_EQ(logOf(record).*member, nullptr);
}

TEST(JobNewRelease, FreesWhatOptionBitsAnnouncedEvenIfTheyAreClearedNow) {
  const OwnedRecord record = parse(submission("10.1", kSubmission));
  ASSERT_NE(record, nullptr);
  logOf(record).options = logOf(record).options2 = logOf(record).newInt13 = 0;
  freeLogRec(record.get());
  for (const Optional &optional : kOptionalTexts)
    EXPECT_EQ(logOf(record).*optional.text, nullptr) << optional.field;
  EXPECT_EQ(logOf(record).nameList2, nullptr);
}

TEST(JobNewRelease, DoesNothingTheSecondTime) {
  const OwnedRecord record = parse(submission("10.1", kSubmission));
  ASSERT_NE(record, nullptr);
  freeLogRec(record.get());
  const eventRecord before = *record;
  freeLogRec(record.get());
  EXPECT_EQ(std::memcmp(&before, record.get(), sizeof before), 0);
}

}  // namespace
}  // namespace wmq::testing
