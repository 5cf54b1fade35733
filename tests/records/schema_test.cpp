// The schema: that it accounts for every byte of every structure, and that it says what the layouts say.
#include "wmq/schema.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/sampler.h"
#include "wmq.stream/codec.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Names = std::vector<std::string>;

struct Bare {
  int32_t number;
};
void layout(auto &io, Bare &) { trailingBlank(io); }

// By structure, what is no plain statement of one member. Written by hand from the public headers: a member
// that a layout forgets shows up as a gap that is not listed here.

// The members behind which the compiler leaves room, so that the next one stands where its type wants it.
const std::map<std::string, Names> kPaddingBehind = {
    {"attrGroup", {"numPairs"}},
    {"chkpntLog", {"jobId"}},
    {"gpuRusageEntry", {"numPairs"}},
    {"hostPowerStatusLog", {"powerInt3"}},
    {"hostRusageEntry", {"numAttrs"}},
    {"jgrpAddLog", {"grpField1", "grpName", "grpField9"}},
    {"jgrpModLog", {"grpField1", "grpName", "grpField9"}},
    {"jobAcceptAckLog", {"acceptAckInt2"}},
    {"jobAcceptLog", {"jobId"}},
    {"jobAttaDataLog", {"attaInt3", "attaInt4"}},
    {"jobChunkLog", {"chunkInt"}},
    {"jobCleanLog", {"indexRangeCnt"}},
    {"jobExceptionLog", {"exceptField3"}},
    {"jobExecuteLog", {"execInt2", "execInt7", "execInt8"}},
    {"jobExternalMsgLog", {"extMsgInt3", "userId"}},
    {"jobFinish2Log",
     {"jStatus", "queue", "numExHosts", "exitInfo", "numhRusages", "avgMem", "totalProvisionTime",
      "dcJobFlags", "numNetworkAllocs", "numAllocSlots", "ineligiblePendingTime", "options2", "exceptMask",
      "indexRangeCnt", "numGPURusages"}},
    {"jobFinishLog",
     {"queue", "numNameList", "numExHosts", "cpuTime", "hostFactor", "finInt3", "finInt4", "finInt5",
      "finInt6", "finInt7", "finInt8", "numhRusages", "finInt11", "finInt12", "numStrIntPairs",
      "numAllocSlots"}},
    {"jobForwardLog", {"jobId", "numHosts"}},
    {"jobModLog",
     {"modInt2", "modInt9", "numNameList", "modInt10", "numStrPairs", "modInt14", "newInt8", "modInt16",
      "numNameList2", "modInt24", "numNewRmtJobCtrls"}},
    {"jobMoveLog", {"indexRangeCnt", "numNewRmtJobCtrl"}},
    {"jobMsgAckLog", {"msgInt5"}},
    {"jobMsgLog", {"msgInt5"}},
    {"jobNewLog", {"numNameList", "numStrPairs", "newInt8", "newInt9", "options3", "newInt10", "newInt16"}},
    {"jobPendingReasonsLog", {"num_processors", "sumDetailReasonHosts", "detailedReason"}},
    {"jobProvHostLog", {"numProvHosts"}},
    {"jobProvisionEndLog", {"numProvHosts", "numProvHosts2"}},
    {"jobResizeLog", {"resizeInt2", "numResizeHosts", "numAllocSlots", "numResizeSlots"}},
    {"jobRunRusageLog", {"numRusageEntries", "numRusageValues", "runRusageInt5"}},
    {"jobSigActLog", {"jobId"}},
    {"jobSignalLog", {"userName", "indexRangeCnt"}},
    {"jobStartAcceptLog", {"acceptInt4"}},
    {"jobStartLimitLog", {"jobRlimits"}},
    {"jobStartLog", {"startInt4", "startInt5", "startInt6", "numNamedInts", "numAllocHosts", "startInt9"}},
    {"jobStatus2Log",
     {"queue", "numExHosts", "numhRusages", "avgMem", "indexRangeCnt", "numGPURusages", "interactive"}},
    {"jobStatusLog", {"cpuTime", "ru", "indexRangeCnt", "numAttrGroups"}},
    {"jobSwitch2Log", {"indexRangeCnt"}},
    {"jobSwitchLog", {"userName", "indexRangeCnt"}},
    {"loadIndexLog", {"numLoadIndex"}},
    {"migLog", {"userName"}},
    {"namedInt", {"value"}},
    {"newRmtJobCtrlRecord", {"numEntries", "numEntries2"}},
    {"oldRmtJobCtrlRecord", {"numIds", "numPairs"}},
    {"perfmonMetricsLog", {"metricInt11", "metricInt16"}},
    {"retiredAllocationLog", {"numHosts"}},
    {"retiredListLog", {"numNames"}},
    {"rsvEntry", {"entryValue"}},
    {"rsvFinishLog", {"numRsvEntries"}},
    {"sbdJobStatusLog", {"sbdField14"}},
    {"slaLog", {"slaValues"}},
    {"statusAckLog", {"statusAckInt2"}},
    {"strPair", {"flags"}},
    {"unfulfillLog", {"unfulfillField5"}},
};

// Members that stand at a second place of the line.
const std::map<std::string, Names> kStatedAgain = {
    {"jobNewLog", {"newInt5", "rlimits"}},
    {"jobModLog", {"rlimits"}},
};

// Members that nothing is known of but their room.
const std::map<std::string, Names> kReserved = {
    {"jobModLog", {"reserved1", "reserved2"}},
    {"jobStartLog", {"reserved1", "reserved2"}},
};

// Members that no line carries, beside the reserved ones.
const std::map<std::string, Names> kOffLine = {
    {"eventLog", {"endOfStream"}},
    {"jobFinishLog", {"endTime", "cpuTime"}},
    {"jobStatusLog", {"numhRusages", "hostRusage", "numRangeJobs"}},
    {"retiredAllocationLog", {"numHosts", "hosts"}},
    {"retiredListLog", {"numNames", "names"}},
};

Names listedFor(const wmqLayout &layout, const std::map<std::string, Names> &lists) {
  const auto found = lists.find(layout.name);
  return found != lists.end() ? found->second : Names{};
}

std::vector<wmqField> fieldsOf(const wmqLayout &layout) {
  return {layout.fields, layout.fields + layout.numFields};
}

Names namesWith(const wmqLayout &layout, unsigned flag, unsigned without = 0) {
  Names names;
  for (const wmqField &field : fieldsOf(layout))
    if ((field.flags & flag) != 0 && (field.flags & without) == 0) names.emplace_back(field.name);
  return names;
}

// ---------------------------------------------------------------------- bytes of a structure

size_t alignmentOf(const wmqLayout &layout);

size_t alignmentOf(const wmqField &field) {
  if (field.shape == WMQ_SHAPE_COUNTED || (field.flags & WMQ_FIELD_RESERVED) != 0) return alignof(void *);
  switch (field.kind) {
    case WMQ_KIND_INT32:
    case WMQ_KIND_FLOAT:
      return alignof(int32_t);
    case WMQ_KIND_CHARS:
      return 1;
    case WMQ_KIND_STRUCT:
      return alignmentOf(*field.layout);
    default:
      return alignof(int64_t);
  }
}

size_t alignmentOf(const wmqLayout &layout) {
  size_t alignment = 1;
  for (const wmqField &field : fieldsOf(layout)) alignment = std::max(alignment, alignmentOf(field));
  return alignment;
}

size_t bytesOf(const wmqField &field) {
  return field.shape == WMQ_SHAPE_COUNTED ? sizeof(void *) : field.size * field.length;
}

size_t roundedUp(size_t offset, size_t alignment) { return (offset + alignment - 1) / alignment * alignment; }

// The fields that state a member for the first time, as they stand in memory.
std::vector<wmqField> membersOf(const wmqLayout &layout) {
  std::vector<wmqField> members = fieldsOf(layout);
  std::erase_if(members, [](const wmqField &field) { return (field.flags & WMQ_FIELD_AGAIN) != 0; });
  std::stable_sort(members.begin(), members.end(),
                   [](const wmqField &a, const wmqField &b) { return a.offset < b.offset; });
  return members;
}

// The layouts of all types and of everything that is in them.
void collect(const wmqLayout &layout, std::map<std::string, const wmqLayout *> &layouts) {
  if (!layouts.emplace(layout.name, &layout).second) return;
  for (const wmqField &field : fieldsOf(layout))
    if (field.layout != nullptr) collect(*field.layout, layouts);
}

std::vector<const wmqLayout *> allLayouts() {
  std::map<std::string, const wmqLayout *> byName;
  for (const int32_t type : typesWithSchema())
    if (wmq_schema(type)->numFields > 0) collect(*wmq_schema(type), byName);
  std::vector<const wmqLayout *> layouts;
  layouts.reserve(byName.size());
  for (const auto &[name, layout] : byName) layouts.push_back(layout);
  return layouts;
}

class EveryStructure : public ::testing::TestWithParam<const wmqLayout *> {
 protected:
  const wmqLayout &layout = *GetParam();
};

INSTANTIATE_TEST_SUITE_P(Of, EveryStructure, ::testing::ValuesIn(allLayouts()),
                         [](const auto &tested) { return std::string(tested.param->name); });

TEST_P(EveryStructure, HasEveryByteStatedOnce) {
  Names padded;
  size_t end = 0;
  const auto reach = [&](size_t offset, size_t alignment, const char *before, const std::string &next) {
    EXPECT_EQ(offset, roundedUp(end, alignment)) << "between " << before << " and " << next;
    if (offset > end) padded.emplace_back(before);
  };
  const char *before = "the beginning";
  for (const wmqField &member : membersOf(layout)) {
    reach(member.offset, alignmentOf(member), before, member.name);
    end = member.offset + bytesOf(member);
    before = member.name;
  }
  reach(layout.size, alignmentOf(layout), before, "the end");
  EXPECT_EQ(padded, listedFor(layout, kPaddingBehind));
}

TEST_P(EveryStructure, StatesAMemberTwiceOnlyForASecondPlaceOnTheLine) {
  EXPECT_EQ(namesWith(layout, WMQ_FIELD_AGAIN), listedFor(layout, kStatedAgain));
  for (const std::string &name : namesWith(layout, WMQ_FIELD_AGAIN)) {
    const auto isNamed = [&name](const wmqField &field) { return field.name == name; };
    const std::vector<wmqField> fields = fieldsOf(layout);
    const auto first = std::find_if(fields.begin(), fields.end(), isNamed);
    EXPECT_EQ(first->flags & WMQ_FIELD_AGAIN, 0U) << name;
  }
}

TEST_P(EveryStructure, KnowsNothingOfReservedMembersOnly) {
  EXPECT_EQ(namesWith(layout, WMQ_FIELD_RESERVED), listedFor(layout, kReserved));
}

TEST_P(EveryStructure, LeavesMembersOffTheLineOnlyWhereListed) {
  EXPECT_EQ(namesWith(layout, WMQ_FIELD_OFF_LINE, WMQ_FIELD_RESERVED), listedFor(layout, kOffLine));
  for (const wmqField &field : fieldsOf(layout))
    EXPECT_EQ(field.position == 0, (field.flags & WMQ_FIELD_OFF_LINE) != 0) << field.name;
}

TEST_P(EveryStructure, HasACountForEveryCountedArray) {
  const std::vector<wmqField> fields = fieldsOf(layout);
  for (const wmqField &array : fields) {
    if (array.shape != WMQ_SHAPE_COUNTED) continue;
    const auto count = std::find_if(fields.begin(), fields.end(), [&array](const wmqField &field) {
      return std::strcmp(field.name, array.countName) == 0;
    });
    ASSERT_NE(count, fields.end()) << array.name;
    EXPECT_EQ(count->offset, array.countOffset) << array.name;
    EXPECT_EQ(count->kind, array.countKind) << array.name;
    EXPECT_NE(count->flags & WMQ_FIELD_COUNT, 0U) << count->name << " is the count of " << array.name;
  }
}

TEST_P(EveryStructure, HasTextsForEverythingThatIsNotThere) {
  for (const wmqField &field : fieldsOf(layout)) {
    for (const char *text : {field.name, field.form, field.condition, field.absent, field.note})
      EXPECT_NE(text, nullptr) << field.name;
    EXPECT_EQ(field.layout != nullptr, field.kind == WMQ_KIND_STRUCT) << field.name;
    EXPECT_EQ(field.countName != nullptr, field.shape == WMQ_SHAPE_COUNTED) << field.name;
  }
}

TEST_P(EveryStructure, TellsHowLongNamesAre) {
  for (const wmqField &field : fieldsOf(layout)) EXPECT_EQ(field.nameLength, std::strlen(field.name));
}

TEST_P(EveryStructure, GoesAlongTheLine) {
  int position = 0;
  for (const wmqField &field : fieldsOf(layout)) {
    if (field.position == 0) continue;
    EXPECT_THAT(field.position - position, ::testing::AnyOf(0, 1, 2)) << field.name;
    position = field.position;
  }
}

// ------------------------------------------------------------------------------------- types

TEST(Schema, IsThereForEveryTypeWithAName) {
  for (int32_t type = 0; type <= WMQ_MAX_EVENT_TYPE; ++type) {
    const bool retired = type >= 60 && type <= 64;
    EXPECT_EQ(wmq_schema(type) != nullptr, wmq_typename(type) != nullptr || retired) << type;
  }
}

TEST(Schema, IsNotThereForCodesBeyondAllTypes) {
  for (const int32_t type : {-1, WMQ_MAX_EVENT_TYPE + 1, INT32_MIN, INT32_MAX})
    EXPECT_EQ(wmq_schema(type), nullptr);
}

TEST(Schema, HasNoFieldsForTypesThatAreAHeaderOnly) {
  for (const int32_t type : {EVENT_JOB_OCCUPY_REQ, EVENT_JOB_VACATED}) {
    ASSERT_NE(wmq_schema(type), nullptr);
    EXPECT_EQ(wmq_schema(type)->numFields, 0U);
  }
}

TEST(Schema, IsOneForTypesThatShareAStructure) {
  EXPECT_EQ(wmq_schema(EVENT_JOB_NEW), wmq_schema(EVENT_JOB_MODIFY));
  EXPECT_EQ(wmq_schema(EVENT_JOB_START), wmq_schema(EVENT_PRE_EXEC_START));
  EXPECT_EQ(wmq_schema(EVENT_JOB_START), wmq_schema(EVENT_JOB_ROUTE));
}

TEST(Schema, BearsTheNameAndSizeOfItsStructure) {
  const struct {
    int32_t type;
    const char *name;
    size_t size;
  } structures[] = {{EVENT_JOB_NEW, "jobNewLog", sizeof(jobNewLog)},
                    {EVENT_JOB_START, "jobStartLog", sizeof(jobStartLog)},
                    {EVENT_JOB_STATUS, "jobStatusLog", sizeof(jobStatusLog)},
                    {EVENT_SBD_JOB_STATUS, "sbdJobStatusLog", sizeof(sbdJobStatusLog)},
                    {EVENT_JOB_FINISH, "jobFinishLog", sizeof(jobFinishLog)},
                    {EVENT_GRP_MOD, "jgrpModLog", sizeof(jgrpModLog)},
                    {EVENT_LOG_SWITCH, "logSwitchLog", sizeof(logSwitchLog)}};
  for (const auto &[type, name, size] : structures) {
    EXPECT_STREQ(wmq_schema(type)->name, name);
    EXPECT_EQ(wmq_schema(type)->size, size) << name;
  }
}

// ---------------------------------------------------------------------------- gates, conditions

// The field of a type that states the member, the last one if there are more.
wmqField fieldOf(int32_t type, const char *name) {
  wmqField found{};
  for (const wmqField &field : fieldsOf(*wmq_schema(type)))
    if (std::strcmp(field.name, name) == 0) found = field;
  EXPECT_NE(found.name, nullptr) << "no field " << name;
  return found;
}

const wmqLayout &entriesOf(const wmqField &field) {
  if (field.layout == nullptr) throw std::invalid_argument(std::string(field.name) + " has no entries");
  return *field.layout;
}

struct Presence {
  int32_t type;
  const char *member;
  wmqGate gate;
  float version;
  const char *condition;
  const char *absent;
};

TEST(Schema, SaysWhichLinesCarryAField) {
  const Presence presences[] = {
      {EVENT_JOB_NEW, "jobId", WMQ_GATE_ALWAYS, 0, "", ""},
      {EVENT_JOB_NEW, "projectName", WMQ_GATE_AT_LEAST, 2.2F, "", "\"\""},
      {EVENT_JOB_NEW, "maxNumProcessors", WMQ_GATE_AT_LEAST, 3.0F, "", "numProcessors"},
      {EVENT_JOB_NEW, "newStr7", WMQ_GATE_ABOVE, 3.0F, "", "\"\""},
      {EVENT_JOB_NEW, "options2", WMQ_GATE_ABOVE, 3.0F, "", "unchanged"},
      {EVENT_JOB_NEW, "newInt5", WMQ_GATE_AT_LEAST, 3.1F, "options2 & 0x4", "unchanged"},
      {EVENT_JOB_NEW, "newInt7", WMQ_GATE_AT_LEAST, 4.0F, "", "-1"},
      {EVENT_JOB_NEW, "rsvId", WMQ_GATE_AT_LEAST, 5.0F, "options2 & 0x8000", "\"\""},
      {EVENT_JOB_NEW, "newInt8", WMQ_GATE_AT_LEAST, 6.0F, "options2 & 0x2000", "-1"},
      {EVENT_JOB_NEW, "licenseProject", WMQ_GATE_ALWAYS, 0, "options2 & 0x200000", "\"\""},
      {EVENT_JOB_NEW, "newStr19", WMQ_GATE_AT_LEAST, 9.11F, "", "null"},
      {EVENT_JOB_MODIFY2, "licenseProject", WMQ_GATE_ABOVE, 6.0F, "options2 & 0x200000", "\"\""},
      {EVENT_JOB_MODIFY2, "modStr9", WMQ_GATE_ALWAYS, 0, "options & 0x8 or options2 & 0x80", "\"\""},
      {EVENT_JOB_START, "startInt6", WMQ_GATE_ABOVE, 6.1F, "", "2147483647"},
      {EVENT_JOB_START, "startInt9", WMQ_GATE_AT_LEAST, 9.13F, "", "unchanged"},
      {EVENT_JOB_START, "allocHosts", WMQ_GATE_AT_LEAST, 9.13F, "", "copy of execHosts"},
      {EVENT_JOB_STATUS, "idx", WMQ_GATE_ABOVE, 3.0F, "", "0"},
      {EVENT_JOB_STATUS, "wmxRusage", WMQ_GATE_ALWAYS, 0, "ru is not 0", "0"},
      {EVENT_SBD_JOB_STATUS, "sbdField13", WMQ_GATE_ABOVE, 5.0F, "", "-65535"},
      {EVENT_JOB_FINISH, "finInt8", WMQ_GATE_AT_LEAST, 7.04F, "", "0"},
      {EVENT_JOB_FINISH, "gpuRusages", WMQ_GATE_AT_LEAST, 10.1F, "", "null"},
      {EVENT_GRP_ADD, "grpField13", WMQ_GATE_ABOVE, 7.02F, "", "1"},
      {EVENT_GRP_MOD, "grpName2", WMQ_GATE_AT_LEAST, 10.1F, "grpOptions & 0x4 (reader only)", "\"\""},
      {EVENT_JOB_SIGNAL, "userName", WMQ_GATE_ABOVE, 4.0F, "", "looked up from userId, \"unknown\" for -1"}};
  for (const Presence &expected : presences) {
    SCOPED_TRACE(std::string(wmq_typename(expected.type)) + ' ' + expected.member);
    const wmqField field = fieldOf(expected.type, expected.member);
    EXPECT_EQ(field.gate, expected.gate);
    EXPECT_EQ(field.gateVersion, expected.version);
    EXPECT_STREQ(field.condition, expected.condition);
    EXPECT_STREQ(field.absent, expected.absent);
  }
}

TEST(Schema, SaysHowAFieldStandsOnTheLine) {
  EXPECT_STREQ(fieldOf(EVENT_JOB_NEW, "jobId").form, "%d");
  EXPECT_STREQ(fieldOf(EVENT_JOB_NEW, "hostFactor").form, "%6.2f");
  EXPECT_STREQ(fieldOf(EVENT_JOB_NEW, "srcJobId").form, "%lld");
  EXPECT_STREQ(fieldOf(EVENT_JOB_NEW, "cwd").form, "quoted");
  EXPECT_STREQ(fieldOf(EVENT_JOB_START, "execHosts").form, "host list");
  EXPECT_STREQ(fieldOf(EVENT_JOB_STATUS, "cpuTime").form, "%4.4f");
  EXPECT_EQ(fieldOf(EVENT_JOB_NEW, "userName").minLength, 1U);
  EXPECT_EQ(fieldOf(EVENT_JOB_NEW, "newHost").minLength, 0U);
}

TEST(Schema, SaysWhatIsPeculiarToAField) {
  EXPECT_STREQ(fieldOf(EVENT_JOB_NEW, "userName").note, "1 to 59 bytes");
  EXPECT_STREQ(fieldOf(EVENT_JOB_STARTLIMIT, "wmxRlimits").note,
               "12 pairs, WMX_RLIMIT_CPU to WMX_RLIMIT_THREAD");
  std::vector<std::string> notesOfLimits;
  for (const wmqField &field : fieldsOf(*wmq_schema(EVENT_JOB_NEW)))
    if (std::strcmp(field.name, "rlimits") == 0) notesOfLimits.emplace_back(field.note);
  EXPECT_THAT(notesOfLimits, ElementsAre("slots 0 to 10", "slot 11"));
  EXPECT_STREQ(fieldOf(EVENT_LOG_SWITCH, "lastJobId").note, "a blank follows");
  EXPECT_STREQ(fieldOf(EVENT_JOB_NEW, "jobId").note, "");
}

TEST(Schema, SaysWhatReleaseKeeps) {
  EXPECT_THAT(namesWith(*wmq_schema(EVENT_JOB_STATUS), WMQ_FIELD_KEPT),
              ElementsAre("indexRangeCnt", "indexRangeStart", "indexRangeEnd", "indexRangeStep",
                          "numAttrGroups", "attrGroups"));
  EXPECT_THAT(namesWith(*wmq_schema(EVENT_JOB_CLEAN), WMQ_FIELD_KEPT),
              ElementsAre("indexRangeCnt", "indexRangeStart", "indexRangeEnd", "indexRangeStep"));
  EXPECT_THAT(namesWith(*wmq_schema(EVENT_JOB_MSG_ACK), WMQ_FIELD_KEPT),
              ElementsAre("msgStr1", "msgStr2", "msgStr3"));
  for (const int32_t type : typesWithSchema()) {
    if (type == EVENT_JOB_STATUS || type == EVENT_JOB_CLEAN || type == EVENT_JOB_MSG_ACK) continue;
    EXPECT_THAT(namesWith(*wmq_schema(type), WMQ_FIELD_KEPT), IsEmpty()) << type;
  }
}

TEST(Schema, HasNoFieldToNoteABlankOfAtTheBeginning) { EXPECT_EQ(layoutOf<Bare>()->numFields, 0U); }

TEST(Schema, SaysWhatGoesOneWayOnly) {
  EXPECT_THAT(namesWith(*wmq_schema(EVENT_JOB_STATUS), WMQ_FIELD_READ_ONLY), ElementsAre("attrGroups"));
  EXPECT_THAT(namesWith(entriesOf(fieldOf(EVENT_JOB_FINISH, "hostRusage")), WMQ_FIELD_READ_ONLY),
              ElementsAre("attrs"));
  EXPECT_THAT(namesWith(*wmq_schema(EVENT_JOB_SWITCH), WMQ_FIELD_WRITTEN_ONLY),
              ElementsAre("indexRangeCnt", "indexRangeStart", "indexRangeEnd", "indexRangeStep"));
}

TEST(Schema, SaysWhatPairsAreNeverFoundOrNeverWritten) {
  EXPECT_THAT(namesWith(*wmq_schema(EVENT_JOB_STATUS2), WMQ_FIELD_WRITTEN_ONLY), ElementsAre("interactive"));
  EXPECT_THAT(namesWith(*wmq_schema(EVENT_JOB_STATUS2), WMQ_FIELD_READ_ONLY),
              ElementsAre("numGPURusages", "gpuRusages"));
  for (const int32_t type : {EVENT_JOB_FINISH2, EVENT_JOB_PENDING_REASONS, EVENT_JOB_STARTLIMIT})
    EXPECT_THAT(namesWith(*wmq_schema(type), WMQ_FIELD_WRITTEN_ONLY | WMQ_FIELD_READ_ONLY), IsEmpty())
        << type;
}

TEST(Schema, GivesTheGroupsOfNamedRecordsAsPairs) {
  const auto formsIn = [](const wmqLayout &layout) {
    Names forms;
    for (const wmqField &field : fieldsOf(layout)) forms.emplace_back(field.form);
    return forms;
  };
  for (const int32_t type : {EVENT_JOB_FINISH2, EVENT_JOB_STATUS2}) {
    EXPECT_STREQ(fieldOf(type, "indexRangeCnt").condition, "indexRangeCnt > 0");
    EXPECT_STREQ(fieldOf(type, "indexRangeCnt").form, "\"%d\"");
    EXPECT_STREQ(fieldOf(type, "numGPURusages").condition, "numGPURusages > 0");
    EXPECT_THAT(formsIn(entriesOf(fieldOf(type, "gpuRusages"))),
                ElementsAre(R"("GPUhostname" "string")", R"("numGPUkvs" "%d")", "pairs"));
    const wmqLayout &hosts = entriesOf(fieldOf(type, "hostRusage"));
    const bool energy = type == EVENT_JOB_FINISH2;
    EXPECT_THAT(formsIn(hosts), ElementsAre(R"("hu_name" "string")", R"("hu_mem" "%d")", R"("hu_swap" "%d")",
                                            R"("hu_utime" "%lld")", R"("hu_stime" "%lld")", "",
                                            energy ? R"("hu_energy" "string")" : ""));
    EXPECT_THAT(formsIn(entriesOf(fieldsOf(hosts).back())), ElementsAre("", energy ? R"("string")" : ""));
  }
}

TEST(Schema, SaysHowLongAWordMayBe) {
  const std::vector<wmqField> entry = fieldsOf(entriesOf(fieldOf(EVENT_JOB_FINISH, "hostRusage")));
  EXPECT_STREQ(entry.front().note, "a bare word of at most 63 bytes");
  EXPECT_STREQ(fieldsOf(entriesOf(entry.back())).front().note, "a bare word");
}

TEST(Schema, SaysWhatIsConvertedTogether) {
  const Names together = namesWith(*wmq_schema(EVENT_UNFULFILL), WMQ_FIELD_TOGETHER);
  EXPECT_THAT(together, ElementsAre("unfulfillField2", "unfulfillField3", "unfulfillField4",
                                    "unfulfillField5", "unfulfillTime", "unfulfillField7"));
  const Names usage = namesWith(entriesOf(fieldOf(EVENT_JOB_FINISH, "wmxRusage")), WMQ_FIELD_TOGETHER);
  ASSERT_EQ(usage.size(), WMX_RUSAGE_VALUES - 1U);
  EXPECT_EQ(usage.front(), "ru_stime");
}

TEST(GateOpen, GoesByTheVersionWithinItsTolerance) {
  const wmqField atLeast = fieldOf(EVENT_JOB_STATUS, "srcCluster");  // 9.1
  EXPECT_EQ(wmq_gateopen(&atLeast, 9.0F), 0);
  EXPECT_EQ(wmq_gateopen(&atLeast, 9.0999F), 0);
  EXPECT_NE(wmq_gateopen(&atLeast, 9.09995F), 0);
  EXPECT_NE(wmq_gateopen(&atLeast, 9.1F), 0);
  EXPECT_NE(wmq_gateopen(&atLeast, 10.1F), 0);

  const wmqField above = fieldOf(EVENT_JOB_STATUS, "idx");  // 3.0
  EXPECT_EQ(wmq_gateopen(&above, 2.9F), 0);
  EXPECT_EQ(wmq_gateopen(&above, 3.0F), 0);
  EXPECT_EQ(wmq_gateopen(&above, 3.00001F), 0);
  EXPECT_NE(wmq_gateopen(&above, 3.0001F), 0);

  const wmqField always = fieldOf(EVENT_JOB_STATUS, "jobId");
  EXPECT_NE(wmq_gateopen(&always, 0.1F), 0);
  EXPECT_EQ(wmq_gateopen(nullptr, 10.1F), 0);
}

}  // namespace
}  // namespace wmq::testing
