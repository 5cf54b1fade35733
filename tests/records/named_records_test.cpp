// JOB_FINISH2, JOB_STATUS2, JOB_PENDING_REASONS and JOB_STARTLIMIT.
#include "wmq/records/named_records.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "companion/written_text.h"
#include "support/record_lines.h"
#include "wmq.stream/named_codec.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using wmq::test::resultOnAFullDevice;
using wmq::test::writtenBy;

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::string textOf(const Pairs &pairs) {
  std::string text;
  for (const auto &[name, value] : pairs) text += " \"" + name + "\" \"" + value + '"';
  return text;
}

// A line that was written: the numbers before its pairs, and the pairs. No value in here holds a double
// quote.
struct Written {
  explicit Written(const std::string &line) {
    size_t quote = line.find('"');
    head = line.substr(0, quote);
    std::vector<std::string> strings;
    while (quote != std::string::npos) {
      const size_t end = line.find('"', quote + 1);
      strings.push_back(line.substr(quote + 1, end - quote - 1));
      quote = line.find('"', end + 1);
    }
    for (size_t i = 0; i + 1 < strings.size(); i += 2) pairs.emplace_back(strings[i], strings[i + 1]);
  }

  // The value of the first pair of that name.
  std::string operator[](const std::string &name) const {
    for (const auto &pair : pairs)
      if (pair.first == name) return pair.second;
    return "(none)";
  }
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto &pair : pairs) names.push_back(pair.first);
    return names;
  }

  std::string head;
  Pairs pairs;
};

// One of the records: a structure to be read into or written from, and how.
template <typename Log, Log eventLog::*Member, int32_t Type, int Read(const char *, Log *),
          int Write(FILE *, Log *)>
class NamedRecord : public ::testing::Test {
 protected:
  int read(const std::string &fields) {
    wmq_setlineversion(10.1F);
    const int result = Read(fields.c_str(), &log);
    fault = lastFault(result);
    return result;
  }

  // Releases what was read before.
  int readAnew(const std::string &fields) {
    freeLogRec(record.get());
    std::memset(&log, 0, sizeof log);
    return read(fields);
  }

  static Written written(Log &from) {
    return Written(writtenBy([&](FILE *file) { EXPECT_EQ(Write(file, &from), 0); }));
  }
  static std::string lineOf(Log from) {
    return writtenBy([&](FILE *file) { EXPECT_EQ(Write(file, &from), 0); });
  }
  static int resultOf(Log from) {
    int result = 0;
    writtenBy([&](FILE *file) { result = Write(file, &from); });
    return result;
  }
  static int resultOnFullDevice() {
    Log empty{};
    return resultOnAFullDevice([&](FILE *full) { return Write(full, &empty); });
  }

  void releaseTwice() {
    freeLogRec(record.get());
    const eventRecord once = *record;
    freeLogRec(record.get());
    EXPECT_EQ(std::memcmp(&once, record.get(), sizeof once), 0);
  }

  OwnedRecord record = emptyRecord(Type);
  Log &log = record->eventLog.*Member;
  Log given{};  // of the test's own: nothing of it is released
  Fault fault{};
};

using JobFinish2 =
    NamedRecord<jobFinish2Log, &eventLog::jobFinish2Log, EVENT_JOB_FINISH2, readJobFinish2, writeJobFinish2>;
using JobStatus2 =
    NamedRecord<jobStatus2Log, &eventLog::jobStatus2Log, EVENT_JOB_STATUS2, readJobStatus2, writeJobStatus2>;
using JobPendingReasons =
    NamedRecord<jobPendingReasonsLog, &eventLog::jobPendingReasonsLog, EVENT_JOB_PENDING_REASONS,
                readJobPendingReasons, writeJobPendingReasons>;
using JobStartLimit = NamedRecord<jobStartLimitLog, &eventLog::jobStartLimitLog, EVENT_JOB_STARTLIMIT,
                                  readJobStartLimit, writeJobStartLimit>;

// -------------------------------------------------------------------------------- name tables

std::vector<std::string> namesIn(const char *const *table, size_t size) {
  EXPECT_EQ(table[size - 1], nullptr) << "a null pointer ends the table";
  return {table, table + size - 1};
}

TEST(AttributeNames, OfAFinishedJobAre88InAscendingOrder) {
  const std::vector<std::string> names = namesIn(jobFinish2LogAttrNames, std::size(jobFinish2LogAttrNames));
  EXPECT_EQ(names.size(), 88U);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  EXPECT_THAT(
      names,
      ElementsAre("affinityAllocInfo", "allocSlots", "app", "avgMem", "beginTime", "chargedSAAP",
                  "clusterName", "command", "cpuTime", "cwd", "dcJobFlags", "dependCond", "dstCluster",
                  "dstJobId", "effectiveResReq", "effectiveRunLimit", "effectiveRunTime", "endTime",
                  "exceptMask", "execHosts", "execRusage", "exitInfo", "exitStatus", "flow_id", "forwardTime",
                  "fromHost", "hostFactor", "hostRusage", "hu_energy", "hu_mem", "hu_name", "hu_stime",
                  "hu_swap", "hu_utime", "inFile", "indexRangeCnt", "indexRangeEnd", "indexRangeStart",
                  "indexRangeStep", "ineligiblePendingTime", "jStatus", "jgroup", "jobDescription", "jobFile",
                  "jobId", "jobName", "licenseProject", "maxMem", "maxNumProcessors", "networkAllocInfo",
                  "numAllocSlots", "numExHosts", "numGPURusages", "numHRusageAttrs", "numProcessors",
                  "numhRusages", "options", "options2", "options3", "outFile", "outdir", "postExecCmd",
                  "preExecCmd", "projectName", "queue", "requeueEValues", "resReq", "rsvId", "ru_maxrss",
                  "ru_nswap", "ru_stime", "ru_utime", "runLimit", "runtime", "serial_job_energy", "sla",
                  "slotUsages", "srcCluster", "srcJobId", "startTime", "subcwd", "submitTime", "termTime",
                  "totalProvisionTime", "userGroup", "userId", "userName", "wmxRusage"));
}

TEST(AttributeNames, OfARunningJobAre53WithTwoOutOfOrder) {
  EXPECT_THAT(
      namesIn(jobStatus2LogAttrNames, std::size(jobStatus2LogAttrNames)),
      ElementsAre("app", "avgMem", "clusterName", "dcJobFlags", "dstCluster", "dstJobId", "endTime",
                  "execHosts", "execRusage", "expectedLogTime", "hostRusage", "hu_mem", "hu_name", "hu_stime",
                  "hu_swap", "hu_utime", "indexRangeCnt", "indexRangeEnd", "indexRangeStart",
                  "indexRangeStep", "ineligiblePendingTime", "jStatus", "jgroup", "jobId", "jobRmtAttr",
                  "wmxRusage", "maxMem", "numExHosts", "numGPURusages", "numHRusageAttrs", "numJobs",
                  "numProcessors", "num_processors", "numhRusages", "projectName", "provtimeDelta", "queue",
                  "reason", "resReq", "ru_maxrss", "ru_nswap", "ru_stime", "ru_utime", "runtimeDelta",
                  "sampleInterval", "slotUsages", "srcCluster", "srcJobId", "startTime", "submitTime",
                  "userGroup", "userName", "interactive"));
}

TEST(AttributeNames, OfPendingReasonsAre21InAscendingOrder) {
  const std::vector<std::string> names =
      namesIn(jobPendingReasonsLogAttrNames, std::size(jobPendingReasonsLogAttrNames));
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  EXPECT_THAT(names, ElementsAre("app", "averagePendingTime", "clusterName", "combinedResReq", "detail",
                                 "detailedReason", "expectedLogTime", "hostType", "licenseProject",
                                 "mainReason", "numJobs", "num_processors", "pendingTime",
                                 "pendingTimeRanking", "projectName", "queue", "resReq", "sampleInterval",
                                 "subReason", "sumDetailReasonHosts", "userName"));
}

// --------------------------------------------------------------------- what stands on a line

constexpr char kAlwaysWritten[] =
    R"( "userId" "0" "numProcessors" "0" "jStatus" "0" "submitTime" "0" "termTime" "0" "startTime" "0")"
    R"( "endTime" "0" "numExHosts" "0" "cpuTime" "0.000000" "ru_utime" "0.000000" "ru_stime" "0.000000")"
    R"( "ru_maxrss" "0" "ru_nswap" "0" "exitStatus" "0" "maxNumProcessors" "0" "exitInfo" "0")"
    R"( "numhRusages" "0" "runtime" "0" "maxMem" "0" "avgMem" "0" "serial_job_energy" "0.000000")"
    R"( "numAllocSlots" "0" "ineligiblePendingTime" "0")";

// What is not published is written and never read.
TEST(AttributeTables, FindTheirPublishedNamesAndNoOthers) {
  static constexpr const char *published[] = {"a", "c", nullptr};
  PairTable table;
  table.published = published;
  for (table.count = 0; published[table.count] != nullptr; ++table.count)
    table.entries[table.count].name = published[table.count];
  const PairTable::Handler handler = [](PairReader &, void *, int) {};
  for (const char *name : {"a", "b", "c"}) addHandler(table, name, handler);
  EXPECT_EQ(table.count, 2);
  EXPECT_EQ(table.entries[0].handler, handler);
  EXPECT_EQ(table.entries[1].handler, handler);
}

TEST(AttributeTables, TakeANameAsOftenAsItIsStated) {
  PairTable table;
  for (int slot = 0; slot < 2 * PairTable::most; ++slot) addHandler(table, "a", nullptr, slot);
  EXPECT_EQ(table.count, 1);
  EXPECT_EQ(table.entries[0].slot, 2 * PairTable::most - 1) << "the last statement holds";
  EXPECT_EQ(table.numInOrder, PairTable::most);
}

TEST_F(JobFinish2, OfNothingHasTheAttributesThatAreAlwaysWritten) {
  EXPECT_EQ(lineOf(given), std::string(" 0 23") + kAlwaysWritten + '\n');
}

// A record in which every attribute is written.
class WholeJobFinish2 : public JobFinish2 {
 protected:
  WholeJobFinish2() {
    jobFinish2Log &whole = given;
    whole.jobId = 9000000000001;
    for (char *text : {whole.userName, whole.queue, whole.fromHost})
      std::memcpy(text, "inline", sizeof "inline");
    for (char **text : {&whole.resReq,
                        &whole.cwd,
                        &whole.inFile,
                        &whole.outFile,
                        &whole.jobFile,
                        &whole.jobName,
                        &whole.command,
                        &whole.preExecCmd,
                        &whole.projectName,
                        &whole.sla,
                        &whole.chargedSAAP,
                        &whole.licenseProject,
                        &whole.app,
                        &whole.postExecCmd,
                        &whole.jgroup,
                        &whole.execRusage,
                        &whole.clusterName,
                        &whole.userGroup,
                        &whole.effectiveResReq,
                        &whole.srcCluster,
                        &whole.dstCluster,
                        &whole.flow_id,
                        &whole.outdir,
                        &whole.subcwd,
                        &whole.jobDescription,
                        &whole.dependCond,
                        &whole.rsvId,
                        &whole.requeueEValues})
      *text = string;
    for (int32_t *number :
         {&whole.options, &whole.options2, &whole.options3, &whole.runLimit, &whole.totalProvisionTime,
          &whole.dcJobFlags, &whole.exceptMask, &whole.effectiveRunTime, &whole.effectiveRunLimit})
      *number = 5;
    for (int64_t *number : {&whole.srcJobId, &whole.dstJobId, &whole.forwardTime, &whole.beginTime})
      *number = 6;
    whole.hostFactor = 1.5;
    whole.numExHosts = 2;
    whole.execHosts = hosts;
    whole.slotUsages = numbers;
    whole.numhRusages = 1;
    whole.hostRusage = &usage;
    whole.affinityAllocInfo = &affinity;
    whole.numNetworkAllocs = 1;
    whole.networkAllocInfo = &network;
    whole.numAllocSlots = 1;
    whole.allocSlots = hosts;
    whole.indexRangeCnt = 1;
    whole.indexRangeStart = whole.indexRangeEnd = whole.indexRangeStep = numbers;
    whole.numGPURusages = 1;
    whole.gpuRusages = &gpu;
  }

  char string[7] = "string";
  char energyName[24] = "HOST_ENERGY_CONSUMPTION";
  Names hosts{"h", "i"};
  int32_t numbers[2] = {7, 8};
  ::attribute energy{energyName, string};
  hostRusageEntry usage{string, 1, 2, 3, 4, 1, &energy};
  int32_t cpus[2] = {0, 1};
  affinityHost affinityOfHost{string, 2, cpus};
  affinityAlloc affinity{1, &affinityOfHost};
  networkAlloc network{string, 3};
  keyValue gpuPair{string, string};
  gpuRusageEntry gpu{string, 1, &gpuPair};
};

TEST_F(WholeJobFinish2, HasAllAttributesInTheirOrder) {
  const Written line = written(given);
  EXPECT_THAT(line.names(), ElementsAreArray({"userId",
                                              "userName",
                                              "numProcessors",
                                              "options",
                                              "jStatus",
                                              "submitTime",
                                              "termTime",
                                              "startTime",
                                              "endTime",
                                              "queue",
                                              "resReq",
                                              "fromHost",
                                              "cwd",
                                              "inFile",
                                              "outFile",
                                              "jobFile",
                                              "numExHosts",
                                              "execHosts",
                                              "execHosts",
                                              "slotUsages",
                                              "slotUsages",
                                              "cpuTime",
                                              "jobName",
                                              "command",
                                              "ru_utime",
                                              "ru_stime",
                                              "ru_maxrss",
                                              "ru_nswap",
                                              "preExecCmd",
                                              "projectName",
                                              "exitStatus",
                                              "maxNumProcessors",
                                              "sla",
                                              "exitInfo",
                                              "chargedSAAP",
                                              "licenseProject",
                                              "app",
                                              "postExecCmd",
                                              "jgroup",
                                              "numhRusages",
                                              "numHRusageAttrs",
                                              "hu_name",
                                              "hu_mem",
                                              "hu_swap",
                                              "hu_utime",
                                              "hu_stime",
                                              "hu_energy",
                                              "execRusage",
                                              "clusterName",
                                              "userGroup",
                                              "runtime",
                                              "maxMem",
                                              "avgMem",
                                              "effectiveResReq",
                                              "srcCluster",
                                              "srcJobId",
                                              "dstCluster",
                                              "dstJobId",
                                              "forwardTime",
                                              "runLimit",
                                              "options3",
                                              "flow_id",
                                              "totalProvisionTime",
                                              "outdir",
                                              "dcJobFlags",
                                              "subcwd",
                                              "affinityAllocInfo",
                                              "networkAllocInfo",
                                              "serial_job_energy",
                                              "numAllocSlots",
                                              "allocSlots",
                                              "jobDescription",
                                              "ineligiblePendingTime",
                                              "dependCond",
                                              "options2",
                                              "beginTime",
                                              "hostFactor",
                                              "exceptMask",
                                              "rsvId",
                                              "requeueEValues",
                                              "indexRangeCnt",
                                              "indexRangeStart",
                                              "indexRangeEnd",
                                              "indexRangeStep",
                                              "numGPURusages",
                                              "GPUhostname",
                                              "numGPUkvs",
                                              "string",
                                              "effectiveRunTime",
                                              "effectiveRunLimit"}));
  // All of them but three for the range and three for the GPU host.
  EXPECT_EQ(line.head, " 9000000000001 " + std::to_string(line.pairs.size() - 6) + ' ');
}

TEST_F(WholeJobFinish2, IsReadBackWhole) {
  EXPECT_EQ(read(lineOf(given)), 0);
  EXPECT_EQ(lineOf(log), lineOf(given));
  EXPECT_EQ(log.jobId, 9000000000001);
  EXPECT_EQ(log.effectiveRunLimit, 5) << "the last pair";
}

TEST_F(WholeJobFinish2, HasNothingToReleaseTheSecondTime) {
  EXPECT_EQ(read(lineOf(given)), 0);
  releaseTwice();
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(log.slotUsages, nullptr);
  EXPECT_EQ(log.hostRusage, nullptr);
  EXPECT_EQ(log.affinityAllocInfo, nullptr);
  EXPECT_EQ(log.networkAllocInfo, nullptr);
  EXPECT_EQ(log.allocSlots, nullptr);
  EXPECT_EQ(log.indexRangeStep, nullptr);
  EXPECT_EQ(log.gpuRusages, nullptr);
  EXPECT_EQ(log.requeueEValues, nullptr);
  for (const int32_t count : {log.numExHosts, log.numhRusages, log.numNetworkAllocs, log.numAllocSlots,
                              log.indexRangeCnt, log.numGPURusages})
    EXPECT_EQ(count, 0);
}

TEST_F(JobFinish2, HasEachNumberOnlyWhenItsConditionHolds) {
  const std::pair<const char *, int32_t jobFinish2Log::*> positive[] = {
      {"runLimit", &jobFinish2Log::runLimit},
      {"totalProvisionTime", &jobFinish2Log::totalProvisionTime},
      {"dcJobFlags", &jobFinish2Log::dcJobFlags},
      {"exceptMask", &jobFinish2Log::exceptMask},
      {"indexRangeCnt", &jobFinish2Log::indexRangeCnt},
      {"numGPURusages", &jobFinish2Log::numGPURusages},
      {"effectiveRunTime", &jobFinish2Log::effectiveRunTime},
      {"effectiveRunLimit", &jobFinish2Log::effectiveRunLimit}};
  for (const auto &[name, member] : positive) {
    given.*member = -1;
    EXPECT_EQ(written(given)[name], "(none)") << name;
    given.*member = 0;
  }
  const std::pair<const char *, int32_t jobFinish2Log::*> notZero[] = {
      {"options", &jobFinish2Log::options},
      {"options2", &jobFinish2Log::options2},
      {"options3", &jobFinish2Log::options3}};
  for (const auto &[name, member] : notZero) {
    EXPECT_EQ(written(given)[name], "(none)") << name;
    given.*member = -1;
    EXPECT_EQ(written(given)[name], "-1") << name;
  }
  given.hostFactor = -0.5;
  EXPECT_EQ(written(given)["hostFactor"], "(none)");
}

TEST_F(JobFinish2, HasEmptyStringsLeftOut) {
  char empty[] = "";
  given.resReq = empty;
  EXPECT_EQ(lineOf(given), std::string(" 0 23") + kAlwaysWritten + '\n');
}

TEST_F(JobFinish2, EndsWithItsRunLimitWhenThatIsPositive) {
  given.effectiveRunLimit = 7;
  EXPECT_EQ(lineOf(given), std::string(" 0 24") + kAlwaysWritten + " \"effectiveRunLimit\" \"7\"\n");
}

TEST_F(JobFinish2, RoundsSizesToWholeNumbersAndTimesToSixDecimals) {
  given.ru_maxrss = 2.5;
  given.ru_nswap = 3.5;
  given.ru_utime = 1.0000005;
  given.cpuTime = 1e15;
  const Written line = written(given);
  EXPECT_EQ(line["ru_maxrss"], "2") << "half to even";
  EXPECT_EQ(line["ru_nswap"], "4");
  EXPECT_EQ(line["ru_utime"], "1.000001") << "the double lies above the half";
  EXPECT_EQ(line["cpuTime"], "1000000000000000.000000");
}

// ------------------------------------------------------------------------------- reading pairs

TEST_F(JobFinish2, PassesOverNamesThatItDoesNotKnow) {
  EXPECT_EQ(read("1 3" + textOf({{"jobName", "before"}, {"invented", "x"}, {"command", "behind"}})), 0);
  EXPECT_STREQ(log.jobName, "before");
  EXPECT_STREQ(log.command, "behind");
}

TEST_F(JobFinish2, PassesOverPairsWithAnEmptyNameOrValue) {
  EXPECT_EQ(read("1 4" + textOf({{"jobName", ""}, {"", "x"}, {"userId", ""}, {"command", "behind"}})), 0);
  EXPECT_EQ(log.jobName, nullptr);
  EXPECT_EQ(log.userId, 0);
  EXPECT_STREQ(log.command, "behind") << "each counts as a pair";
}

TEST_F(JobFinish2, MustHaveAsManyPairsAsItAnnounces) {
  EXPECT_EQ(read("1 3" + textOf({{"jobName", ""}, {"command", "x"}})), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("1 1 \"command\""), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("1 1 \"command\" \"x"), WMQE_BAD_FORMAT);
}

TEST_F(JobFinish2, IgnoresWhatStandsBehindTheLastPairAnnounced) {
  EXPECT_EQ(read("1 1" + textOf({{"command", "x"}, {"jobName", "ignored"}}) + " rubbish"), 0);
  EXPECT_EQ(log.jobName, nullptr);
  for (const char *count : {"0", "-5"}) {
    EXPECT_EQ(readAnew(std::string("1 ") + count + textOf({{"command", "ignored"}})), 0);
    EXPECT_EQ(log.command, nullptr);
  }
}

TEST_F(JobFinish2, MustHaveItsJobNumberAndTheNumberOfPairs) {
  EXPECT_EQ(read(""), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("1"), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("1 \"command\" \"x\""), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("x 0"), WMQE_BAD_FORMAT);
}

TEST_F(JobFinish2, TakesAttributesInAnyOrderAndTheLaterOfTwo) {
  EXPECT_EQ(read("1 4" + textOf({{"command", "one"}, {"userId", "5"}, {"command", "two"}, {"userId", "6"}})),
            0);
  EXPECT_STREQ(log.command, "two");
  EXPECT_EQ(log.userId, 6);
}

TEST_F(JobFinish2, TakesWhatIsNoNumberFor0) {
  log.userId = 77;
  EXPECT_EQ(read("1 3" + textOf({{"userId", "many"}, {"exitStatus", " 12 and more"}, {"cpuTime", "fast"}})),
            0);
  EXPECT_EQ(log.userId, 0);
  EXPECT_EQ(log.exitStatus, 12);
  EXPECT_EQ(log.cpuTime, 0);
}

TEST_F(JobFinish2, DecodesNamesAndValues) {
  EXPECT_EQ(read("1 2 \"command\" \"say \"\"hi\"\"\"nbye\" \"job\"\"Name\" \"x\""), 0);
  EXPECT_STREQ(log.command, "say \"hi\"\nbye");
}

TEST_F(JobFinish2, CutsInlineStringsToTheirArrays) {
  const std::string longest(59, 'u');
  EXPECT_EQ(read("1 3" + textOf({{"userName", longest + 'u'},
                                 {"queue", std::string(600, 'q')},
                                 {"fromHost", std::string(64, 'h')}})),
            0);
  EXPECT_EQ(log.userName, longest);
  EXPECT_EQ(log.queue, std::string(59, 'q'));
  EXPECT_EQ(log.fromHost, std::string(63, 'h'));
}

TEST_F(JobFinish2, TakesNoNoticeOfNamesThatOnlyStandInItsTable) {
  log.jobId = 5;
  EXPECT_EQ(read("1 6" + textOf({{"hostRusage", "1"},
                                 {"wmxRusage", "1"},
                                 {"jobId", "9"},
                                 {"hu_mem", "1"},
                                 {"execHosts", "h"},
                                 {"command", "x"}})),
            0);
  EXPECT_EQ(log.jobId, 1);
  EXPECT_EQ(log.hostRusage, nullptr);
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_STREQ(log.command, "x");
}

// ---------------------------------------------------------------------- 32 bits of every number

TEST_F(JobFinish2, ReadsEveryWideAttributeAs32Bits) {
  const std::pair<const char *, int64_t jobFinish2Log::*> wide[] = {
      {"submitTime", &jobFinish2Log::submitTime}, {"termTime", &jobFinish2Log::termTime},
      {"startTime", &jobFinish2Log::startTime},   {"endTime", &jobFinish2Log::endTime},
      {"beginTime", &jobFinish2Log::beginTime},   {"forwardTime", &jobFinish2Log::forwardTime},
      {"srcJobId", &jobFinish2Log::srcJobId},     {"dstJobId", &jobFinish2Log::dstJobId}};
  const std::pair<const char *, int64_t> values[] = {{"4294967301", 5},
                                                     {"2147483648", -2147483648LL},
                                                     {"-1", -1},
                                                     {"99999999999999999999", -1},
                                                     {"-99999999999999999999", 0}};
  for (const auto &[name, member] : wide) {
    for (const auto &[text, value] : values) {
      EXPECT_EQ(read("1 1" + textOf({{name, text}})), 0);
      EXPECT_EQ(log.*member, value) << name << ' ' << text;
    }
  }
}

TEST_F(JobFinish2, WritesJobNumbersWholeAndTimesCut) {
  given.jobId = int64_t{5} << 32;
  given.srcJobId = (int64_t{1} << 32) + 5;
  given.dstJobId = int64_t{1} << 40;
  given.submitTime = (int64_t{1} << 32) + 5;
  given.endTime = int64_t{1} << 31;
  const Written line = written(given);
  EXPECT_EQ(line.head, " 21474836480 25 ");
  EXPECT_EQ(line["srcJobId"], "4294967301");
  EXPECT_EQ(line["dstJobId"], "1099511627776");
  EXPECT_EQ(line["submitTime"], "5");
  EXPECT_EQ(line["endTime"], "-2147483648");
  EXPECT_EQ(read(lineOf(given)), 0);
  EXPECT_EQ(log.jobId, int64_t{5} << 32);
  EXPECT_EQ(log.srcJobId, 5);
  EXPECT_EQ(log.dstJobId, 0);
}

TEST_F(JobFinish2, LooksAtAllOfANumberBeforeItWritesItsLowHalf) {
  given.beginTime = int64_t{1} << 32;
  given.forwardTime = int64_t{1} << 31;
  const Written line = written(given);
  EXPECT_EQ(line["beginTime"], "0");
  EXPECT_EQ(line["forwardTime"], "-2147483648");
}

// ------------------------------------------------------------------------------------- groups

TEST_F(JobFinish2, CountsThePairsOfHostsSlotsAndUsageAndNotThoseOfRangesAndGpus) {
  Names hosts{"h", "i"};
  int32_t numbers[] = {7, 8};
  char name[] = "h";
  hostRusageEntry usage[] = {{name, 1, 2, 3, 4, 0, nullptr}, {name, 1, 2, 3, 4, 0, nullptr}};
  gpuRusageEntry gpu{name, 0, nullptr};
  const auto countWith = [](const jobFinish2Log &filled) {
    jobFinish2Log copy = filled;
    return written(copy).head;
  };
  EXPECT_EQ(countWith({}), " 0 23 ");
  jobFinish2Log one{};
  one.numExHosts = 2;
  one.execHosts = hosts;
  one.slotUsages = numbers;
  EXPECT_EQ(countWith(one), " 0 27 ");
  one = {};
  one.numAllocSlots = 2;
  one.allocSlots = hosts;
  EXPECT_EQ(countWith(one), " 0 25 ");
  one = {};
  one.numhRusages = 2;
  one.hostRusage = usage;
  EXPECT_EQ(countWith(one), " 0 35 ");
  one = {};
  one.indexRangeCnt = 2;
  one.indexRangeStart = one.indexRangeEnd = one.indexRangeStep = numbers;
  EXPECT_EQ(countWith(one), " 0 24 ");
  one = {};
  one.numGPURusages = 1;
  one.gpuRusages = &gpu;
  EXPECT_EQ(countWith(one), " 0 24 ");
}

TEST_F(JobFinish2, ReadsRangesAndGpusBeyondTheNumberOfPairs) {
  EXPECT_EQ(read("1 3" + textOf({{"indexRangeCnt", "2"},
                                 {"indexRangeStart", "1"},
                                 {"indexRangeEnd", "10"},
                                 {"indexRangeStep", "2"},
                                 {"indexRangeStep", "5"},  // in any order within a range
                                 {"indexRangeStart", "30"},
                                 {"another", "40"},
                                 {"numGPURusages", "1"},
                                 {"GPUhostname", "h"},
                                 {"numGPUkvs", "1"},
                                 {"key", "value"},
                                 {"command", "x"},
                                 {"jobName", "ignored"}})),
            0);
  EXPECT_THAT(std::vector<int32_t>(log.indexRangeStart, log.indexRangeStart + 2), ElementsAre(1, 30));
  EXPECT_THAT(std::vector<int32_t>(log.indexRangeEnd, log.indexRangeEnd + 2), ElementsAre(10, 0));
  EXPECT_THAT(std::vector<int32_t>(log.indexRangeStep, log.indexRangeStep + 2), ElementsAre(2, 5));
  ASSERT_EQ(log.numGPURusages, 1);
  EXPECT_STREQ(log.gpuRusages[0].hostName, "h");
  EXPECT_STREQ(log.gpuRusages[0].pairs[0].key, "key");
  EXPECT_STREQ(log.command, "x");
  EXPECT_EQ(log.jobName, nullptr);
}

TEST_F(JobFinish2, HoldsItsRangesInThreeArrays) {
  EXPECT_EQ(read("1 1" + textOf({{"indexRangeCnt", "1"},
                                 {"indexRangeStart", "1"},
                                 {"indexRangeEnd", "10"},
                                 {"indexRangeStep", "2"}})),
            0);
  for (int32_t **array : {&log.indexRangeStep, &log.indexRangeEnd, &log.indexRangeStart}) {
    std::free(*array);
    *array = nullptr;
  }
}

TEST_F(JobFinish2, UsesAPairOfAnotherNameUpInListsOfHostsAndSlots) {
  EXPECT_EQ(read("1 9" + textOf({{"numExHosts", "2"},
                                 {"execHosts", "h"},
                                 {"command", "not a host"},
                                 {"slotUsages", ""},
                                 {"slotUsages", "8"},
                                 {"numAllocSlots", "2"},
                                 {"allocSlots", ""},
                                 {"allocSlots", "i"},
                                 {"jobName", "x"}})),
            0);
  ASSERT_EQ(log.numExHosts, 2);
  EXPECT_STREQ(log.execHosts[0], "h");
  EXPECT_EQ(log.execHosts[1], nullptr);
  EXPECT_THAT(std::vector<int32_t>(log.slotUsages, log.slotUsages + 2), ElementsAre(0, 8));
  ASSERT_EQ(log.numAllocSlots, 2);
  EXPECT_EQ(log.allocSlots[0], nullptr);
  EXPECT_STREQ(log.allocSlots[1], "i");
  EXPECT_EQ(log.command, nullptr);
  EXPECT_STREQ(log.jobName, "x");
}

TEST_F(JobFinish2, HasRoomForAsManySlotsAsThereArePairs) {
  std::string fields = "1 1001 \"numAllocSlots\" \"1000\"";
  for (int i = 0; i < 1000; ++i) fields += " \"\" \"\"";
  EXPECT_EQ(read(fields), 0);
  EXPECT_EQ(log.numAllocSlots, 1000);
}

TEST_F(JobFinish2, TakesOnePairForAHostUsageEntryWithoutAGroup) {
  EXPECT_EQ(read("1 10" + textOf({{"numhRusages", "2"},
                                  {"hu_mem", "no group"},
                                  {"numHRusageAttrs", "6"},
                                  {"hu_name", "h"},
                                  {"hu_mem", "1"},
                                  {"invented", "x"},
                                  {"hu_swap", "2"},
                                  {"hu_utime", "4294967301"},
                                  {"hu_stime", "2147483648"},
                                  {"jobName", "x"}})),
            0);
  ASSERT_EQ(log.numhRusages, 2);
  EXPECT_STREQ(log.hostRusage[0].name, "");
  EXPECT_EQ(log.hostRusage[0].mem, 0);
  EXPECT_STREQ(log.hostRusage[1].name, "h");
  EXPECT_EQ(log.hostRusage[1].swap, 2);
  EXPECT_EQ(log.hostRusage[1].utime, 5);
  EXPECT_EQ(log.hostRusage[1].stime, -2147483648LL);
  EXPECT_STREQ(log.jobName, "x");
}

TEST_F(JobFinish2, TakesTheLastOfSeveralEnergiesOfAHost) {
  EXPECT_EQ(read("1 5" + textOf({{"numhRusages", "1"},
                                 {"numHRusageAttrs", "3"},
                                 {"hu_energy", "1.5"},
                                 {"hu_name", "h"},
                                 {"hu_energy", "2.5"}})),
            0);
  ASSERT_EQ(log.numhRusages, 1);
  ASSERT_EQ(log.hostRusage[0].numAttrs, 1);
  EXPECT_STREQ(log.hostRusage[0].attrs[0].name, "HOST_ENERGY_CONSUMPTION");
  EXPECT_STREQ(log.hostRusage[0].attrs[0].value, "2.5");
}

TEST_F(JobFinish2, HasNoArraysForGroupsOf0OrLess) {
  for (const char *count : {"0", "-1", "x"}) {
    EXPECT_EQ(readAnew("1 5" + textOf({{"numExHosts", count},
                                       {"numhRusages", count},
                                       {"numAllocSlots", count},
                                       {"indexRangeCnt", count},
                                       {"numGPURusages", count}})),
              0)
        << count;
    EXPECT_EQ(log.execHosts, nullptr);
    EXPECT_EQ(log.hostRusage, nullptr);
    EXPECT_EQ(log.allocSlots, nullptr);
    EXPECT_EQ(log.indexRangeStart, nullptr);
    EXPECT_EQ(log.gpuRusages, nullptr);
  }
}

TEST_F(JobFinish2, MustHaveEveryPairOfAGroup) {
  for (const Pairs &pairs :
       {Pairs{{"numExHosts", "2"}, {"execHosts", "h"}, {"execHosts", "i"}, {"slotUsages", "1"}},
        Pairs{{"numAllocSlots", "2"}, {"allocSlots", "h"}},
        Pairs{{"numhRusages", "1"}, {"numHRusageAttrs", "2"}, {"hu_name", "h"}},
        Pairs{{"indexRangeCnt", "1"}, {"indexRangeStart", "1"}, {"indexRangeEnd", "2"}},
        Pairs{{"numGPURusages", "1"}, {"GPUhostname", "h"}},
        Pairs{{"numGPURusages", "1"}, {"GPUhostname", "h"}, {"numGPUkvs", "2"}, {"k", "v"}}})
    EXPECT_EQ(readAnew("1 1" + textOf(pairs)), WMQE_BAD_FORMAT) << pairs[0].first;
}

TEST_F(JobFinish2, LeavesGpuPairsWithAnEmptyKeyOrValueOut) {
  EXPECT_EQ(read("1 2" + textOf({{"numGPURusages", "1"},
                                 {"GPUhostname", "h"},
                                 {"numGPUkvs", "3"},
                                 {"k1", ""},
                                 {"", "v2"},
                                 {"k3", "v3"},
                                 {"jobName", "x"}})),
            0);
  ASSERT_EQ(log.gpuRusages[0].numPairs, 1) << "as many as are there";
  EXPECT_STREQ(log.gpuRusages[0].pairs[0].key, "k3");
  EXPECT_STREQ(log.gpuRusages[0].pairs[0].value, "v3");
  EXPECT_STREQ(log.jobName, "x");
}

TEST_F(JobFinish2, WritesGpuHostsWithoutPairsWithACountOf0) {
  char name[] = "h";
  gpuRusageEntry gpu{name, 3, nullptr};
  given.numGPURusages = 1;
  given.gpuRusages = &gpu;
  EXPECT_EQ(written(given)["numGPUkvs"], "0");
}

// ------------------------------------------------------------------------------- host energy

class HostEnergy : public JobFinish2 {
 protected:
  HostEnergy() {
    given.numhRusages = 1;
    given.hostRusage = &usage;
  }

  char host[2] = "h";
  char energyName[24] = "HOST_ENERGY_CONSUMPTION";
  char longerName[25] = "HOST_ENERGY_CONSUMPTION2";
  char shorterName[23] = "HOST_ENERGY_CONSUMPTIO";
  char first[4] = "1.5";
  char second[4] = "2.5";
  ::attribute attributes[3] = {{energyName, first}, {longerName, first}, {energyName, second}};
  hostRusageEntry usage{host, 1, 2, 3, 4, 3, attributes};
};

TEST_F(HostEnergy, TravelsAsASixthAttributeAndTheLastOneWins) {
  const Written line = written(given);
  EXPECT_EQ(line["numHRusageAttrs"], "6");
  EXPECT_EQ(line["hu_energy"], "2.5");
}

TEST_F(HostEnergy, IsTheOnlyExtraAttributeThatIsReadBack) {
  EXPECT_EQ(read(lineOf(given)), 0);
  ASSERT_EQ(log.hostRusage[0].numAttrs, 1);
  EXPECT_STREQ(log.hostRusage[0].attrs[0].name, "HOST_ENERGY_CONSUMPTION");
  EXPECT_STREQ(log.hostRusage[0].attrs[0].value, "2.5");
  EXPECT_EQ(log.hostRusage[0].utime, 3);
}

TEST_F(HostEnergy, IsTheExactNameAndNoOther) {
  attributes[0].name = longerName;
  attributes[2].name = shorterName;
  const Written line = written(given);
  EXPECT_EQ(line["numHRusageAttrs"], "5");
  EXPECT_EQ(line["hu_energy"], "(none)");
}

// -------------------------------------------------------- written and not counted

TEST_F(JobFinish2, LosesItsLastPairWithANegativeEnergy) {
  given.serial_job_energy = -0.5;
  given.effectiveRunLimit = 7;
  const Written line = written(given);
  EXPECT_EQ(line.head, " 0 23 ") << "of 24 pairs";
  EXPECT_EQ(line.pairs.size(), 24U);
  EXPECT_EQ(line["serial_job_energy"], "-0.500000");
  EXPECT_EQ(read(lineOf(given)), 0);
  EXPECT_EQ(log.serial_job_energy, -0.5);
  EXPECT_EQ(log.effectiveRunLimit, 0) << "the last pair of the line";
}

TEST_F(JobFinish2, CountsAnEnergyOf0WhateverItsSign) {
  given.serial_job_energy = -0.0;
  EXPECT_EQ(written(given).head, " 0 23 ");
  given.serial_job_energy = 1e-9;
  EXPECT_EQ(written(given).head, " 0 23 ");
}

TEST_F(JobFinish2, LosesItsLastPairWithANegativeCountOfSlots) {
  given.numAllocSlots = -1;
  given.effectiveRunLimit = 7;
  const Written line = written(given);
  EXPECT_EQ(line.head, " 0 23 ") << "of 24 pairs";
  EXPECT_EQ(line["numAllocSlots"], "-1");
  EXPECT_EQ(read(lineOf(given)), 0);
  EXPECT_EQ(log.effectiveRunLimit, 0);
}

// ------------------------------------------------------------------------------------ failures

TEST_F(WholeJobFinish2, CannotBeWrittenWithAHostOrASlotWithoutAName) {
  Names nameless{"h", ""};
  given.execHosts = nameless;
  EXPECT_EQ(resultOf(given), WMQE_SYS);
  char *missing[] = {nullptr, nullptr};
  given.execHosts = missing;
  EXPECT_EQ(resultOf(given), WMQE_SYS);
  given.execHosts = hosts;
  EXPECT_EQ(resultOf(given), 0);
  given.allocSlots = missing;
  EXPECT_EQ(resultOf(given), WMQE_SYS);
}

TEST_F(WholeJobFinish2, CannotBeWrittenWithoutTheArraysOfItsCounts) {
  const auto resultWithout = [this](auto member) {
    jobFinish2Log copy = given;
    copy.*member = nullptr;
    return resultOf(copy);
  };
  EXPECT_EQ(resultWithout(&jobFinish2Log::execHosts), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::slotUsages), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::hostRusage), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::networkAllocInfo), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::allocSlots), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::indexRangeStart), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::indexRangeEnd), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::indexRangeStep), WMQE_SYS);
  EXPECT_EQ(resultWithout(&jobFinish2Log::gpuRusages), WMQE_SYS);
}

TEST_F(WholeJobFinish2, CannotBeWrittenWithAnAffinityThatHasNoText) {
  affinity.numHosts = 0;
  EXPECT_EQ(resultOf(given), WMQE_SYS);
}

TEST_F(JobFinish2, RefusesANetworkTextThatIsNone) {
  EXPECT_EQ(read("1 1" + textOf({{"networkAllocInfo", "no equals sign"}})), WMQE_BAD_FORMAT);
  EXPECT_EQ(fault.field, "networkAllocInfo");
  EXPECT_EQ(log.numNetworkAllocs, 0);
  EXPECT_EQ(log.networkAllocInfo, nullptr);
}

TEST_F(JobFinish2, HasNoNetworkForAnEmptyText) {
  EXPECT_EQ(read("1 1" + textOf({{"networkAllocInfo", ""}})), 0);
  EXPECT_EQ(log.numNetworkAllocs, 0);
  EXPECT_EQ(log.networkAllocInfo, nullptr);
}

TEST_F(JobFinish2, KeepsWhatItReadBeforeAFailure) {
  EXPECT_EQ(read("1 2" + textOf({{"command", "x"}})), WMQE_BAD_FORMAT);
  EXPECT_STREQ(log.command, "x");
}

TEST_F(JobFinish2, FailsToReachAFullFile) { EXPECT_EQ(resultOnFullDevice(), WMQE_SYS); }

// -------------------------------------------------------------------------------- JOB_STATUS2

TEST_F(JobStatus2, OfNothingHasOnlyItsIneligibleTime) {
  EXPECT_EQ(lineOf(given), " 0 1 \"ineligiblePendingTime\" \"0\"\n");
  given.ineligiblePendingTime = -5;
  EXPECT_EQ(lineOf(given), " 0 1 \"ineligiblePendingTime\" \"-5\"\n");
}

// A record in which every attribute is written.
class WholeJobStatus2 : public JobStatus2 {
 protected:
  WholeJobStatus2() {
    jobStatus2Log &whole = given;
    whole.jobId = 9000000000001;
    for (char *text : {whole.userName, whole.queue}) std::memcpy(text, "inline", sizeof "inline");
    for (char **text : {&whole.resReq, &whole.projectName, &whole.app, &whole.jgroup, &whole.execRusage,
                        &whole.clusterName, &whole.userGroup, &whole.srcCluster, &whole.dstCluster})
      *text = string;
    for (int32_t *number :
         {&whole.expectedLogTime, &whole.sampleInterval, &whole.jobRmtAttr, &whole.numProcessors,
          &whole.num_processors, &whole.numJobs, &whole.jStatus, &whole.runtimeDelta, &whole.provtimeDelta,
          &whole.reason, &whole.maxMem, &whole.avgMem, &whole.dcJobFlags, &whole.ineligiblePendingTime,
          &whole.interactive})
      *number = 5;
    for (int64_t *number :
         {&whole.submitTime, &whole.startTime, &whole.endTime, &whole.srcJobId, &whole.dstJobId})
      *number = 6;
    for (double *number : {&whole.ru_utime, &whole.ru_stime, &whole.ru_maxrss, &whole.ru_nswap})
      *number = 1.5;
    whole.numExHosts = 1;
    whole.execHosts = hosts;
    whole.slotUsages = numbers;
    whole.numhRusages = 1;
    whole.hostRusage = &usage;
    whole.indexRangeCnt = 1;
    whole.indexRangeStart = whole.indexRangeEnd = whole.indexRangeStep = numbers;
    whole.numGPURusages = 3;
    whole.gpuRusages = gpus;
  }

  char string[7] = "string";
  char energyName[24] = "HOST_ENERGY_CONSUMPTION";
  Names hosts{"h"};
  int32_t numbers[1] = {7};
  ::attribute energy{energyName, string};
  hostRusageEntry usage{string, 1, 2, 3, 4, 1, &energy};
  gpuRusageEntry gpus[3] = {{string, 0, nullptr}, {string, 0, nullptr}, {string, 0, nullptr}};
};

TEST_F(WholeJobStatus2, HasAllAttributesInTheirOrder) {
  const Written line = written(given);
  EXPECT_THAT(line.names(), ElementsAreArray({"expectedLogTime", "sampleInterval",
                                              "userName",        "jobRmtAttr",
                                              "numProcessors",   "num_processors",
                                              "numJobs",         "jStatus",
                                              "submitTime",      "startTime",
                                              "endTime",         "queue",
                                              "resReq",          "numExHosts",
                                              "execHosts",       "slotUsages",
                                              "ru_utime",        "ru_stime",
                                              "ru_maxrss",       "ru_nswap",
                                              "projectName",     "app",
                                              "jgroup",          "numhRusages",
                                              "numHRusageAttrs", "hu_name",
                                              "hu_mem",          "hu_swap",
                                              "hu_utime",        "hu_stime",
                                              "execRusage",      "clusterName",
                                              "userGroup",       "runtimeDelta",
                                              "provtimeDelta",   "reason",
                                              "maxMem",          "avgMem",
                                              "srcCluster",      "srcJobId",
                                              "dstCluster",      "dstJobId",
                                              "dcJobFlags",      "ineligiblePendingTime",
                                              "indexRangeCnt",   "indexRangeStart",
                                              "indexRangeEnd",   "indexRangeStep",
                                              "interactive"}));
  EXPECT_EQ(line.head, " 9000000000001 " + std::to_string(line.pairs.size() - 3) + ' ');
  EXPECT_EQ(line["numHRusageAttrs"], "5") << "host energy does not travel here";
}

TEST_F(WholeJobStatus2, NeverWritesItsGpusAndClearsTheirCount) {
  const Written line = written(given);
  EXPECT_EQ(line["numGPURusages"], "(none)");
  EXPECT_EQ(line["GPUhostname"], "(none)");
  EXPECT_EQ(given.numGPURusages, 0) << "the caller's own count";
  EXPECT_EQ(given.gpuRusages, gpus) << "the array is left as it is";
}

TEST_F(WholeJobStatus2, IsReadBackButForWhetherItIsInteractive) {
  const std::string line = lineOf(given);
  EXPECT_THAT(line, ::testing::EndsWith(" \"interactive\" \"5\"\n"));
  EXPECT_EQ(read(line), 0);
  EXPECT_EQ(log.interactive, 0);
  EXPECT_EQ(log.dcJobFlags, 5);
  EXPECT_EQ(log.indexRangeStep[0], 7);
  given.interactive = 0;
  EXPECT_EQ(lineOf(log), lineOf(given));
}

TEST_F(JobStatus2, NeverFindsInteractiveWhereverItStands) {
  EXPECT_EQ(read("1 3" + textOf({{"interactive", "1"}, {"wmxRusage", "1"}, {"numJobs", "2"}})), 0);
  EXPECT_EQ(log.interactive, 0);
  EXPECT_EQ(log.numJobs, 2);
}

TEST_F(JobStatus2, FindsEveryOtherNameThatItWrites) {
  const std::pair<const char *, int32_t jobStatus2Log::*> numbers[] = {
      {"expectedLogTime", &jobStatus2Log::expectedLogTime},
      {"sampleInterval", &jobStatus2Log::sampleInterval},
      {"jobRmtAttr", &jobStatus2Log::jobRmtAttr},
      {"numProcessors", &jobStatus2Log::numProcessors},
      {"num_processors", &jobStatus2Log::num_processors},
      {"numJobs", &jobStatus2Log::numJobs},
      {"jStatus", &jobStatus2Log::jStatus},
      {"runtimeDelta", &jobStatus2Log::runtimeDelta},
      {"provtimeDelta", &jobStatus2Log::provtimeDelta},
      {"reason", &jobStatus2Log::reason},
      {"maxMem", &jobStatus2Log::maxMem},
      {"avgMem", &jobStatus2Log::avgMem},
      {"dcJobFlags", &jobStatus2Log::dcJobFlags},
      {"ineligiblePendingTime", &jobStatus2Log::ineligiblePendingTime}};
  for (const auto &[name, member] : numbers) {
    EXPECT_EQ(read("1 1" + textOf({{name, "4294967301"}})), 0);
    EXPECT_EQ(log.*member, 5) << name;
    EXPECT_EQ(read("1 1" + textOf({{name, "-7"}})), 0);
    EXPECT_EQ(log.*member, -7) << name;
  }
}

TEST_F(JobStatus2, TakesGpusThatALineCarries) {
  EXPECT_EQ(read("1 2" + textOf({{"numGPURusages", "2"},
                                 {"GPUhostname", "h"},
                                 {"numGPUkvs", "1"},
                                 {"k", "v"},
                                 {"GPUhostname", "i"},
                                 {"numGPUkvs", "0"},
                                 {"numJobs", "5"}})),
            0);
  ASSERT_EQ(log.numGPURusages, 2);
  EXPECT_STREQ(log.gpuRusages[0].pairs[0].value, "v");
  EXPECT_STREQ(log.gpuRusages[1].hostName, "i");
  EXPECT_EQ(log.numJobs, 5);
}

TEST_F(JobStatus2, DropsTheEnergyOfAHost) {
  EXPECT_EQ(
      read("1 4" +
           textOf({{"numhRusages", "1"}, {"numHRusageAttrs", "2"}, {"hu_name", "h"}, {"hu_energy", "1.5"}})),
      0);
  EXPECT_STREQ(log.hostRusage[0].name, "h");
  EXPECT_EQ(log.hostRusage[0].numAttrs, 0);
}

TEST_F(JobStatus2, ReadsEveryWideAttributeAs32BitsAndWritesTimesCut) {
  const std::pair<const char *, int64_t jobStatus2Log::*> wide[] = {
      {"submitTime", &jobStatus2Log::submitTime},
      {"startTime", &jobStatus2Log::startTime},
      {"endTime", &jobStatus2Log::endTime},
      {"srcJobId", &jobStatus2Log::srcJobId},
      {"dstJobId", &jobStatus2Log::dstJobId}};
  for (const auto &[name, member] : wide) {
    EXPECT_EQ(read("1 1" + textOf({{name, "4294967301"}})), 0);
    EXPECT_EQ(log.*member, 5) << name;
    given.*member = (int64_t{1} << 32) + 5;
    EXPECT_EQ(written(given)[name],
              std::string(name).find("JobId") != std::string::npos ? "4294967301" : "5");
    given.*member = int64_t{1} << 32;
    EXPECT_NE(written(given)[name], "(none)") << "0 is written of what is greater than 0: " << name;
    given.*member = -1;
    EXPECT_EQ(written(given)[name], "(none)") << name;
    given.*member = 0;
  }
}

TEST_F(WholeJobStatus2, CannotBeWrittenWithAHostWithoutAName) {
  Names nameless{""};
  given.execHosts = nameless;
  EXPECT_EQ(resultOf(given), WMQE_SYS);
  given.execHosts = nullptr;
  EXPECT_EQ(resultOf(given), WMQE_SYS);
}

TEST_F(WholeJobStatus2, HasNothingToReleaseTheSecondTime) {
  EXPECT_EQ(read(lineOf(given)), 0);
  releaseTwice();
  EXPECT_EQ(log.execHosts, nullptr);
  EXPECT_EQ(log.hostRusage, nullptr);
  EXPECT_EQ(log.indexRangeStart, nullptr);
  EXPECT_EQ(log.userGroup, nullptr);
}

TEST_F(JobStatus2, FailsToReachAFullFile) { EXPECT_EQ(resultOnFullDevice(), WMQE_SYS); }

// ------------------------------------------------------------------------ JOB_PENDING_REASONS

TEST_F(JobPendingReasons, OfNothingHasACountOf0AndNoPairs) { EXPECT_EQ(lineOf(given), " 0\n"); }

// A record in which every attribute is written.
class WholeJobPendingReasons : public JobPendingReasons {
 protected:
  WholeJobPendingReasons() {
    jobPendingReasonsLog &whole = given;
    for (char *text : {whole.userName, whole.queue}) std::memcpy(text, "inline", sizeof "inline");
    for (char **text :
         {&whole.projectName, &whole.licenseProject, &whole.resReq, &whole.app, &whole.combinedResReq,
          &whole.detail, &whole.clusterName, &whole.pendingTimeRanking, &whole.hostType})
      *text = string;
    for (int32_t *number : {&whole.num_processors, &whole.mainReason, &whole.subReason,
                            &whole.sumDetailReasonHosts, &whole.numJobs, &whole.pendingTime,
                            &whole.averagePendingTime, &whole.sampleInterval, &whole.detailedReason})
      *number = 5;
    whole.expectedLogTime = 6;
  }

  char string[7] = "string";
};

TEST_F(WholeJobPendingReasons, HasAllAttributesInTheirOrderAndNoJobNumber) {
  const Written line = written(given);
  EXPECT_THAT(line.names(), ElementsAre("userName", "queue", "projectName", "licenseProject", "resReq", "app",
                                        "num_processors", "combinedResReq", "mainReason", "subReason",
                                        "sumDetailReasonHosts", "detail", "numJobs", "pendingTime",
                                        "averagePendingTime", "sampleInterval", "detailedReason",
                                        "clusterName", "pendingTimeRanking", "hostType", "expectedLogTime"));
  EXPECT_EQ(line.head, " 21 ");
}

TEST_F(WholeJobPendingReasons, IsReadBackWhole) {
  EXPECT_EQ(read(lineOf(given)), 0);
  EXPECT_EQ(lineOf(log), lineOf(given));
  releaseTwice();
  EXPECT_EQ(log.hostType, nullptr);
}

TEST_F(JobPendingReasons, HasItsLastTimeReadAndWrittenAs32Bits) {
  EXPECT_EQ(read("1" + textOf({{"expectedLogTime", "4294967301"}})), 0);
  EXPECT_EQ(log.expectedLogTime, 5);
  given.expectedLogTime = (int64_t{1} << 32) + 7;
  EXPECT_EQ(lineOf(given), " 1 \"expectedLogTime\" \"7\"\n");
  given.expectedLogTime = -1;
  EXPECT_EQ(lineOf(given), " 0\n");
}

TEST_F(JobPendingReasons, MustHaveItsCount) {
  EXPECT_EQ(read(textOf({{"queue", "night"}})), WMQE_BAD_FORMAT);
  EXPECT_EQ(read(""), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("2" + textOf({{"queue", "night"}})), WMQE_BAD_FORMAT);
}

TEST_F(JobPendingReasons, CutsInlineStringsToTheirArrays) {
  EXPECT_EQ(read("2" + textOf({{"userName", std::string(600, 'u')}, {"queue", std::string(60, 'q')}})), 0);
  EXPECT_EQ(log.userName, std::string(59, 'u'));
  EXPECT_EQ(log.queue, std::string(59, 'q'));
}

TEST_F(JobPendingReasons, LeavesNumbersOf0OrLessOut) {
  given.numJobs = -1;
  given.pendingTime = 0;
  EXPECT_EQ(lineOf(given), " 0\n");
}

TEST_F(JobPendingReasons, FailsToReachAFullFile) { EXPECT_EQ(resultOnFullDevice(), WMQE_SYS); }

// ----------------------------------------------------------------------------- JOB_STARTLIMIT

Pairs limits(int32_t first) {
  Pairs pairs;
  for (const char *prefix : {"WMX_RLIMIT_", "JOB_RLIMIT_"})
    for (const char *slot : {"CPU", "FSIZE", "DATA", "STACK", "CORE", "RSS", "NOFILE", "OPEN_MAX", "SWAP",
                             "RUN", "PROCESS", "THREAD"})
      pairs.emplace_back(std::string(prefix) + slot, std::to_string(first++));
  return pairs;
}

TEST_F(JobStartLimit, Declares25AttributesWithoutAClusterAnd26WithOne) {
  given.limitJobId = 9000000000001;
  given.options = -3;
  for (int32_t i = 0; i < WMX_RLIM_NLIMITS; ++i) {
    given.wmxRlimits[i] = 100 + i;
    given.jobRlimits[i] = 112 + i;
  }
  const std::string rest = " \"options\" \"-3\"" + textOf(limits(100)) + '\n';
  EXPECT_EQ(lineOf(given), " 9000000000001 25" + rest);
  char empty[] = "";
  given.clusterName = empty;
  EXPECT_EQ(lineOf(given), " 9000000000001 25" + rest);
  char cluster[] = "north";
  given.clusterName = cluster;
  EXPECT_EQ(lineOf(given), " 9000000000001 26 \"clusterName\" \"north\"" + rest);
}

TEST_F(JobStartLimit, PutsEachLimitIntoItsSlot) {
  EXPECT_EQ(
      read("9000000000001 26" + textOf({{"clusterName", "north"}, {"options", "5"}}) + textOf(limits(100))),
      0);
  EXPECT_EQ(log.limitJobId, 9000000000001);
  EXPECT_STREQ(log.clusterName, "north");
  EXPECT_EQ(log.options, 5);
  for (int32_t i = 0; i < WMX_RLIM_NLIMITS; ++i) {
    EXPECT_EQ(log.wmxRlimits[i], 100 + i);
    EXPECT_EQ(log.jobRlimits[i], 112 + i);
  }
}

TEST_F(JobStartLimit, PassesOverUnknownNamesAndEmptyValues) {
  EXPECT_EQ(
      read("1 4" +
           textOf({{"invented", "x"}, {"options", ""}, {"WMX_RLIMIT_", "7"}, {"clusterName", "north"}})),
      0);
  EXPECT_STREQ(log.clusterName, "north");
  EXPECT_EQ(log.options, 0);
  EXPECT_EQ(log.wmxRlimits[0], 0);
}

TEST_F(JobStartLimit, EndsWithSuccessAtACountOf0OrLess) {
  for (const char *fields : {"1 0 rubbish", "1 -1 rubbish", "1 0"}) EXPECT_EQ(read(fields), 0) << fields;
  EXPECT_EQ(read("1"), WMQE_BAD_FORMAT);
  EXPECT_EQ(read("1 1"), WMQE_BAD_FORMAT);
}

TEST_F(JobStartLimit, ReleasesItsClusterNameOnce) {
  EXPECT_EQ(read("1 1" + textOf({{"clusterName", "north"}})), 0);
  releaseTwice();
  EXPECT_EQ(log.clusterName, nullptr);
}

TEST_F(JobStartLimit, FailsToReachAFullFile) { EXPECT_EQ(resultOnFullDevice(), WMQE_SYS); }

// ---------------------------------------------------------------------------- versions

TEST(NamedRecords, AreTheSameInEveryVersion) {
  const std::pair<const char *, std::string> lines[] = {
      {"JOB_FINISH2", "1 1" + textOf({{"beginTime", "5"}})},
      {"JOB_STATUS2", "1 1" + textOf({{"numJobs", "5"}})},
      {"JOB_PENDING_REASONS", "1" + textOf({{"numJobs", "5"}})},
      {"JOB_STARTLIMIT", "1 1" + textOf({{"options", "5"}})}};
  for (const auto &[type, fields] : lines)
    for (const char *version : {"2.1", "9.1", "10.1", "11.0"})
      EXPECT_EQ(faultOf(line(type, version, fields)), Fault{}) << type << ' ' << version;
}

}  // namespace
}  // namespace wmq::testing
