// JOB_FINISH2, JOB_STATUS2, JOB_PENDING_REASONS and JOB_STARTLIMIT.
//
// Asymmetries, each with its own test in tests/records/named_records_test.cpp:
//   - 64-bit numbers are written whole or cut, and always read as 32 bits;
//   - the pairs of index ranges and GPUs are not counted, those of the other groups are;
//   - a negative serial_job_energy or numAllocSlots is written and not counted, so the reader loses the last
//     pair;
//   - JOB_STATUS2 reads GPU usage and never writes it: writing sets the caller's count to 0;
//   - "interactive" is written, and never found when reading.
#include "wmq/records/named_records.h"

#include "records/record_codecs.h"
#include "wmq.stream/named_codec.h"

namespace wmq {

static void attributes(
    auto &io, auto &&log) requires std::is_same_v<std::remove_cvref_t<decltype(log)>, jobFinish2Log> {
  using L = jobFinish2Log;
  attribute<&L::userId>(io, log);
  attribute<&L::userName>(io, log);
  attribute<&L::numProcessors>(io, log);
  attribute<&L::options>(io, log, Put::notZero);
  attribute<&L::jStatus>(io, log);
  attribute<&L::submitTime>(io, log);
  attribute<&L::termTime>(io, log);
  attribute<&L::startTime>(io, log);
  attribute<&L::endTime>(io, log);
  attribute<&L::queue>(io, log);
  attribute<&L::resReq>(io, log);
  attribute<&L::fromHost>(io, log);
  attribute<&L::cwd>(io, log);
  attribute<&L::inFile>(io, log);
  attribute<&L::outFile>(io, log);
  attribute<&L::jobFile>(io, log);
  execHostGroup(io, log, Put::whatever);
  attribute<decimals<&L::cpuTime, 6>>(io, log);
  attribute<&L::jobName>(io, log);
  attribute<&L::command>(io, log);
  attribute<decimals<&L::ru_utime, 6>>(io, log);
  attribute<decimals<&L::ru_stime, 6>>(io, log);
  attribute<decimals<&L::ru_maxrss, 0>>(io, log);
  attribute<decimals<&L::ru_nswap, 0>>(io, log);
  attribute<&L::preExecCmd>(io, log);
  attribute<&L::projectName>(io, log);
  attribute<&L::exitStatus>(io, log);
  attribute<&L::maxNumProcessors>(io, log);
  attribute<&L::sla>(io, log);
  attribute<&L::exitInfo>(io, log);
  attribute<&L::chargedSAAP>(io, log);
  attribute<&L::licenseProject>(io, log);
  attribute<&L::app>(io, log);
  attribute<&L::postExecCmd>(io, log);
  attribute<&L::jgroup>(io, log);
  hostUsageGroup<true>(io, log, Put::whatever);
  attribute<&L::execRusage>(io, log);
  attribute<&L::clusterName>(io, log);
  attribute<&L::userGroup>(io, log);
  attribute<&L::runtime>(io, log);
  attribute<&L::maxMem>(io, log);
  attribute<&L::avgMem>(io, log);
  attribute<&L::effectiveResReq>(io, log);
  attribute<&L::srcCluster>(io, log);
  attribute<whole<&L::srcJobId>>(io, log, Put::positive);
  attribute<&L::dstCluster>(io, log);
  attribute<whole<&L::dstJobId>>(io, log, Put::positive);
  attribute<&L::forwardTime>(io, log, Put::positive);
  attribute<&L::runLimit>(io, log, Put::positive);
  attribute<&L::options3>(io, log, Put::notZero);
  attribute<&L::flow_id>(io, log);
  attribute<&L::totalProvisionTime>(io, log, Put::positive);
  attribute<&L::outdir>(io, log);
  attribute<&L::dcJobFlags>(io, log, Put::positive);
  attribute<&L::subcwd>(io, log);
  affinityAttribute<&L::affinityAllocInfo>(io, log);
  networkAttribute<&L::numNetworkAllocs, &L::networkAllocInfo>(io, log);
  attributeCountedFromZero<decimals<&L::serial_job_energy, 6>>(io, log);
  allocSlotGroup(io, log);
  attribute<&L::jobDescription>(io, log);
  attribute<&L::ineligiblePendingTime>(io, log);
  attribute<&L::dependCond>(io, log);
  attribute<&L::options2>(io, log, Put::notZero);
  attribute<&L::beginTime>(io, log, Put::positive);
  attribute<decimals<&L::hostFactor, 6>>(io, log, Put::positive);
  attribute<&L::exceptMask>(io, log, Put::positive);
  attribute<&L::rsvId>(io, log);
  attribute<&L::requeueEValues>(io, log);
  rangeGroup(io, log);
  gpuGroup(io, log);
  attribute<&L::effectiveRunTime>(io, log, Put::positive);
  attribute<&L::effectiveRunLimit>(io, log, Put::positive);
}

static void attributes(
    auto &io, auto &&log) requires std::is_same_v<std::remove_cvref_t<decltype(log)>, jobStatus2Log> {
  using L = jobStatus2Log;
  attribute<&L::expectedLogTime>(io, log, Put::positive);
  attribute<&L::sampleInterval>(io, log, Put::positive);
  attribute<&L::userName>(io, log);
  attribute<&L::jobRmtAttr>(io, log, Put::positive);
  attribute<&L::numProcessors>(io, log, Put::positive);
  attribute<&L::num_processors>(io, log, Put::positive);
  attribute<&L::numJobs>(io, log, Put::positive);
  attribute<&L::jStatus>(io, log, Put::positive);
  attribute<&L::submitTime>(io, log, Put::positive);
  attribute<&L::startTime>(io, log, Put::positive);
  attribute<&L::endTime>(io, log, Put::positive);
  attribute<&L::queue>(io, log);
  attribute<&L::resReq>(io, log);
  execHostGroup(io, log, Put::positive);
  attribute<decimals<&L::ru_utime, 6>>(io, log, Put::positive);
  attribute<decimals<&L::ru_stime, 6>>(io, log, Put::positive);
  attribute<decimals<&L::ru_maxrss, 0>>(io, log, Put::positive);
  attribute<decimals<&L::ru_nswap, 0>>(io, log, Put::positive);
  attribute<&L::projectName>(io, log);
  attribute<&L::app>(io, log);
  attribute<&L::jgroup>(io, log);
  hostUsageGroup<false>(io, log, Put::positive);
  attribute<&L::execRusage>(io, log);
  attribute<&L::clusterName>(io, log);
  attribute<&L::userGroup>(io, log);
  attribute<&L::runtimeDelta>(io, log, Put::positive);
  attribute<&L::provtimeDelta>(io, log, Put::positive);
  attribute<&L::reason>(io, log, Put::positive);
  attribute<&L::maxMem>(io, log, Put::positive);
  attribute<&L::avgMem>(io, log, Put::positive);
  attribute<&L::srcCluster>(io, log);
  attribute<whole<&L::srcJobId>>(io, log, Put::positive);
  attribute<&L::dstCluster>(io, log);
  attribute<whole<&L::dstJobId>>(io, log, Put::positive);
  attribute<&L::dcJobFlags>(io, log, Put::positive);
  attribute<&L::ineligiblePendingTime>(io, log);
  rangeGroup(io, log);
  gpuGroup(io, log);
  attribute<&L::interactive>(io, log, Put::positive);
}

static void attributes(
    auto &io, auto &&log) requires std::is_same_v<std::remove_cvref_t<decltype(log)>, jobPendingReasonsLog> {
  using L = jobPendingReasonsLog;
  attribute<&L::userName>(io, log);
  attribute<&L::queue>(io, log);
  attribute<&L::projectName>(io, log);
  attribute<&L::licenseProject>(io, log);
  attribute<&L::resReq>(io, log);
  attribute<&L::app>(io, log);
  attribute<&L::num_processors>(io, log, Put::positive);
  attribute<&L::combinedResReq>(io, log);
  attribute<&L::mainReason>(io, log, Put::positive);
  attribute<&L::subReason>(io, log, Put::positive);
  attribute<&L::sumDetailReasonHosts>(io, log, Put::positive);
  attribute<&L::detail>(io, log);
  attribute<&L::numJobs>(io, log, Put::positive);
  attribute<&L::pendingTime>(io, log, Put::positive);
  attribute<&L::averagePendingTime>(io, log, Put::positive);
  attribute<&L::sampleInterval>(io, log, Put::positive);
  attribute<&L::detailedReason>(io, log, Put::positive);
  attribute<&L::clusterName>(io, log);
  attribute<&L::pendingTimeRanking>(io, log);
  attribute<&L::hostType>(io, log);
  attribute<&L::expectedLogTime>(io, log, Put::positive);
}

static void attributes(
    auto &io, auto &&log) requires std::is_same_v<std::remove_cvref_t<decltype(log)>, jobStartLimitLog> {
  using L = jobStartLimitLog;
  attribute<&L::clusterName>(io, log);
  attribute<&L::options>(io, log);
  limitAttributes<&L::wmxRlimits>(io, log, wmxRlimitsStr);
  limitAttributes<&L::jobRlimits>(io, log, jobRlimitsStr);
}

// GPU usage is never written: before counting, the caller's count becomes 0 and the array stays.
static void beforeWriting(Writer &, jobStatus2Log &log) { log.numGPURusages = 0; }
static void beforeWriting(Describer &io, const jobStatus2Log &) {
  for (wmqField &field : io.out.fields) {
    const std::string_view name = field.name;
    if (name != nameOf<&jobStatus2Log::numGPURusages> && name != nameOf<&jobStatus2Log::gpuRusages>) continue;
    field.flags |= WMQ_FIELD_READ_ONLY;
    field.note = "the caller's count becomes 0";
  }
}

static void layout(auto &io, jobFinish2Log &log) {
  namedPairs<&jobFinish2Log::jobId>(io, log, jobFinish2LogAttrNames);
}
static void layout(auto &io, jobStatus2Log &log) {
  namedPairs<&jobStatus2Log::jobId>(io, log, jobStatus2LogAttrNames);
}
static void layout(auto &io, jobPendingReasonsLog &log) {
  namedPairs<>(io, log, jobPendingReasonsLogAttrNames);
}
static void layout(auto &io, jobStartLimitLog &log) {
  namedPairs<&jobStartLimitLog::limitJobId>(io, log, nullptr);
}

constinit const RecordCodec jobFinish2Codec = recordCodec<jobFinish2Log>();
constinit const RecordCodec jobStatus2Codec = recordCodec<jobStatus2Log>();
constinit const RecordCodec jobPendingReasonsCodec = recordCodec<jobPendingReasonsLog>();
constinit const RecordCodec jobStartLimitCodec = recordCodec<jobStartLimitLog>();

}  // namespace wmq

const char *const jobFinish2LogAttrNames[89] = {"affinityAllocInfo",
                                                "allocSlots",
                                                "app",
                                                "avgMem",
                                                "beginTime",
                                                "chargedSAAP",
                                                "clusterName",
                                                "command",
                                                "cpuTime",
                                                "cwd",
                                                "dcJobFlags",
                                                "dependCond",
                                                "dstCluster",
                                                "dstJobId",
                                                "effectiveResReq",
                                                "effectiveRunLimit",
                                                "effectiveRunTime",
                                                "endTime",
                                                "exceptMask",
                                                "execHosts",
                                                "execRusage",
                                                "exitInfo",
                                                "exitStatus",
                                                "flow_id",
                                                "forwardTime",
                                                "fromHost",
                                                "hostFactor",
                                                "hostRusage",
                                                "hu_energy",
                                                "hu_mem",
                                                "hu_name",
                                                "hu_stime",
                                                "hu_swap",
                                                "hu_utime",
                                                "inFile",
                                                "indexRangeCnt",
                                                "indexRangeEnd",
                                                "indexRangeStart",
                                                "indexRangeStep",
                                                "ineligiblePendingTime",
                                                "jStatus",
                                                "jgroup",
                                                "jobDescription",
                                                "jobFile",
                                                "jobId",
                                                "jobName",
                                                "licenseProject",
                                                "maxMem",
                                                "maxNumProcessors",
                                                "networkAllocInfo",
                                                "numAllocSlots",
                                                "numExHosts",
                                                "numGPURusages",
                                                "numHRusageAttrs",
                                                "numProcessors",
                                                "numhRusages",
                                                "options",
                                                "options2",
                                                "options3",
                                                "outFile",
                                                "outdir",
                                                "postExecCmd",
                                                "preExecCmd",
                                                "projectName",
                                                "queue",
                                                "requeueEValues",
                                                "resReq",
                                                "rsvId",
                                                "ru_maxrss",
                                                "ru_nswap",
                                                "ru_stime",
                                                "ru_utime",
                                                "runLimit",
                                                "runtime",
                                                "serial_job_energy",
                                                "sla",
                                                "slotUsages",
                                                "srcCluster",
                                                "srcJobId",
                                                "startTime",
                                                "subcwd",
                                                "submitTime",
                                                "termTime",
                                                "totalProvisionTime",
                                                "userGroup",
                                                "userId",
                                                "userName",
                                                "wmxRusage",
                                                nullptr};

const char *const jobStatus2LogAttrNames[54] = {"app",
                                                "avgMem",
                                                "clusterName",
                                                "dcJobFlags",
                                                "dstCluster",
                                                "dstJobId",
                                                "endTime",
                                                "execHosts",
                                                "execRusage",
                                                "expectedLogTime",
                                                "hostRusage",
                                                "hu_mem",
                                                "hu_name",
                                                "hu_stime",
                                                "hu_swap",
                                                "hu_utime",
                                                "indexRangeCnt",
                                                "indexRangeEnd",
                                                "indexRangeStart",
                                                "indexRangeStep",
                                                "ineligiblePendingTime",
                                                "jStatus",
                                                "jgroup",
                                                "jobId",
                                                "jobRmtAttr",
                                                "wmxRusage",
                                                "maxMem",
                                                "numExHosts",
                                                "numGPURusages",
                                                "numHRusageAttrs",
                                                "numJobs",
                                                "numProcessors",
                                                "num_processors",
                                                "numhRusages",
                                                "projectName",
                                                "provtimeDelta",
                                                "queue",
                                                "reason",
                                                "resReq",
                                                "ru_maxrss",
                                                "ru_nswap",
                                                "ru_stime",
                                                "ru_utime",
                                                "runtimeDelta",
                                                "sampleInterval",
                                                "slotUsages",
                                                "srcCluster",
                                                "srcJobId",
                                                "startTime",
                                                "submitTime",
                                                "userGroup",
                                                "userName",
                                                "interactive",
                                                nullptr};

const char *const jobPendingReasonsLogAttrNames[22] = {"app",
                                                       "averagePendingTime",
                                                       "clusterName",
                                                       "combinedResReq",
                                                       "detail",
                                                       "detailedReason",
                                                       "expectedLogTime",
                                                       "hostType",
                                                       "licenseProject",
                                                       "mainReason",
                                                       "numJobs",
                                                       "num_processors",
                                                       "pendingTime",
                                                       "pendingTimeRanking",
                                                       "projectName",
                                                       "queue",
                                                       "resReq",
                                                       "sampleInterval",
                                                       "subReason",
                                                       "sumDetailReasonHosts",
                                                       "userName",
                                                       nullptr};

int writeJobFinish2(FILE *file, jobFinish2Log *log) {
  return wmq::writeFields(file, wmq::jobFinish2Codec, log, true);
}

int readJobFinish2(const char *fields, jobFinish2Log *log) {
  return wmq::readFields(fields, wmq::jobFinish2Codec, log);
}

int writeJobStatus2(FILE *file, jobStatus2Log *log) {
  return wmq::writeFields(file, wmq::jobStatus2Codec, log, true);
}

int readJobStatus2(const char *fields, jobStatus2Log *log) {
  return wmq::readFields(fields, wmq::jobStatus2Codec, log);
}

int writeJobPendingReasons(FILE *file, jobPendingReasonsLog *log) {
  return wmq::writeFields(file, wmq::jobPendingReasonsCodec, log, true);
}

int readJobPendingReasons(const char *fields, jobPendingReasonsLog *log) {
  return wmq::readFields(fields, wmq::jobPendingReasonsCodec, log);
}

int writeJobStartLimit(FILE *file, jobStartLimitLog *log) {
  return wmq::writeFields(file, wmq::jobStartLimitCodec, log, true);
}

int readJobStartLimit(const char *fields, jobStartLimitLog *log) {
  return wmq::readFields(fields, wmq::jobStartLimitCodec, log);
}
