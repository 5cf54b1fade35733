// The layout functions that the public headers declare: they read and write what stands on the stream's line
// behind its header.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "support/asymmetries.h"
#include "support/record_text.h"
#include "support/sampler.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

struct LayoutFunctions {
  const char *name;
  int32_t type;
  int (*read)(const char *fields, eventRecord &record);
  int (*readNowhere)(const char *fields);
  int (*write)(FILE *file, eventRecord &record);  // null: there is none
};

template <auto kFunction, auto kLog>
int reading(const char *fields, eventRecord &record) {
  return kFunction(fields, &(record.eventLog.*kLog));
}

template <auto kFunction, auto kLog>
int writing(FILE *file, eventRecord &record) {
  return kFunction(file, &(record.eventLog.*kLog));
}

template <auto kFunction>
int readingNowhere(const char *fields) {
  return kFunction(fields, nullptr);
}

template <auto kLog, auto kRead>
constexpr LayoutFunctions only(const char *name, int32_t type) {
  return {name, type, reading<kRead, kLog>, readingNowhere<kRead>, nullptr};
}

template <auto kLog, auto kRead, auto kWrite>
constexpr LayoutFunctions both(const char *name, int32_t type) {
  return {name, type, reading<kRead, kLog>, readingNowhere<kRead>, writing<kWrite, kLog>};
}

int readFinish(const char *fields, jobFinishLog *log) { return readJobFinish(fields, log, kEventTime); }
int writeStart(FILE *file, jobStartLog *log) { return writeJobStart_ex(file, log, 1); }

using L = eventLog;
const LayoutFunctions kFunctions[] = {
    both<&L::jobRunRusageLog, readJobRunRusage, writeJobRunRusage>("JobRunRusage", EVENT_JOB_RUN_RUSAGE),
    both<&L::jobResizeLog, readJobResize, writeJobResize>("JobResize", EVENT_JOB_RESIZE),
    both<&L::rsvFinishLog, readRsvFinish, writeRsvFinish>("RsvFinish", EVENT_ADRSV_FINISH),
    only<&L::cpuProfileLog, readCpuProfile>("CpuProfile", EVENT_CPUPROFILE_STATUS),
    only<&L::slaLog, readSLALog>("SLALog", EVENT_SLA_RECOMPUTE),
    only<&L::perfmonMetricsLog, readPerfmonMetrics>("PerfmonMetrics", EVENT_METRIC_LOG),
    both<&L::jobForwardLog, readJobForward, writeJobForward>("JobForward", EVENT_JOB_FORWARD),
    both<&L::jobAcceptLog, readJobAccept, writeJobAccept>("JobAccept", EVENT_JOB_ACCEPT),
    both<&L::jobAcceptAckLog, readJobAcceptAck, writeJobAcceptAck>("JobAcceptAck", EVENT_JOB_ACCEPTACK),
    only<&L::statusAckLog, readStatusAck>("StatusAck", EVENT_JOB_STAT_ACK),
    only<&L::mbdStartLog, readMbdStart>("MbdStart", EVENT_MBD_START),
    only<&L::mbdDieLog, readMbdDie>("MbdDie", EVENT_MBD_DIE),
    only<&L::queueCtrlLog, readQueueCtrl>("QueueCtrl", EVENT_QUEUE_CTRL),
    only<&L::hostCtrlLog, readHostCtrl>("HostCtrl", EVENT_HOST_CTRL),
    both<&L::hgHostCtrlLog, readHgHostCtrl, writeHgHostCtrl>("HgHostCtrl", EVENT_HGHOST_CTRL),
    only<&L::loadIndexLog, readLoadIndex>("LoadIndex", EVENT_LOAD_INDEX),
    only<&L::calendarLog, readCalendar>("Calendar", EVENT_CAL_NEW),
    both<&L::jobSignalLog, readJobSignal, writeJobSignal>("JobSignal", EVENT_JOB_SIGNAL),
    both<&L::jobMoveLog, readJobMove, writeJobMove>("JobMove", EVENT_JOB_MOVE),
    both<&L::jobSwitchLog, readJobSwitch, writeJobSwitch>("JobSwitch", EVENT_JOB_SWITCH),
    both<&L::jobSwitch2Log, readJobSwitch2, writeJobSwitch2>("JobSwitch2", EVENT_JOB_SWITCH2),
    only<&L::jobSigActLog, readJobSigAct>("JobSigAct", EVENT_JOB_SIGACT),
    only<&L::jobRequeueLog, readJobRequeue>("JobRequeue", EVENT_JOB_REQUEUE),
    both<&L::jobForceLog, readJobForce, writeJobForce>("JobForce", EVENT_JOB_FORCE),
    only<&L::chkpntLog, readChkpnt>("Chkpnt", EVENT_CHKPNT),
    both<&L::migLog, readMig, writeMig>("Mig", EVENT_MIG),
    both<&L::jobStartAcceptLog, readJobStartAccept, writeJobStartAccept>("JobStartAccept",
                                                                         EVENT_JOB_START_ACCEPT),
    both<&L::jobExecuteLog, readJobExecute, writeJobExecute>("JobExecute", EVENT_JOB_EXECUTE),
    both<&L::jobFinishLog, readFinish, writeJobFinish>("JobFinish", EVENT_JOB_FINISH),
    only<&L::jgrpModLog, readJgrpMod>("JgrpMod", EVENT_GRP_MOD),
    only<&L::jobMsgLog, readJobMsg>("JobMsg", EVENT_JOB_MSG),
    only<&L::jobMsgAckLog, readJobMsgAck>("JobMsgAck", EVENT_JOB_MSG_ACK),
    only<&L::jobExternalMsgLog, readJobExternalMsg>("JobExternalMsg", EVENT_JOB_EXT_MSG),
    only<&L::jobAttaDataLog, readJobAttaData>("JobAttaData", EVENT_JOB_ATTA_DATA),
    only<&L::jobChunkLog, readJobChunk>("JobChunk", EVENT_JOB_CHUNK),
    both<&L::jobModLog, readJobMod, writeJobMod>("JobMod", EVENT_JOB_MODIFY2),
    both<&L::jobStartLog, readJobStart, writeStart>("JobStart", EVENT_JOB_START),
    both<&L::jobStatusLog, readJobStatus, writeJobStatus>("JobStatus", EVENT_JOB_STATUS),
    only<&L::sbdJobStatusLog, readSbdJobStatus>("SbdJobStatus", EVENT_SBD_JOB_STATUS),
    both<&L::jobFinish2Log, readJobFinish2, writeJobFinish2>("JobFinish2", EVENT_JOB_FINISH2),
    both<&L::jobStatus2Log, readJobStatus2, writeJobStatus2>("JobStatus2", EVENT_JOB_STATUS2),
    both<&L::jobPendingReasonsLog, readJobPendingReasons, writeJobPendingReasons>("JobPendingReasons",
                                                                                  EVENT_JOB_PENDING_REASONS),
    both<&L::jobStartLimitLog, readJobStartLimit, writeJobStartLimit>("JobStartLimit", EVENT_JOB_STARTLIMIT),
    both<&L::jobProvisionStartLog, readJobProvisionStart, writeJobProvisionStart>("JobProvisionStart",
                                                                                  EVENT_JOB_PROVISION_START),
    both<&L::jobProvisionEndLog, readJobProvisionEnd, writeJobProvisionEnd>("JobProvisionEnd",
                                                                            EVENT_JOB_PROVISION_END),
    both<&L::hostPowerStatusLog, readHostPowerStatusLog, writeHostPowerStatusLog>("HostPowerStatus",
                                                                                  EVENT_HOST_POWER_STATUS),
    only<&L::jobProvHostLog, readJobProvHostLog>("JobProvHost", EVENT_JOB_PROV_HOST),
};

std::ostream &operator<<(std::ostream &out, const LayoutFunctions &functions) {
  return out << functions.name;
}

class ALayoutFunction : public ::testing::TestWithParam<LayoutFunctions> {
 protected:
  static constexpr uint64_t kRecords = 20;

  static OwnedRecord sample(uint64_t value) {
    OwnedRecord record = sampleRecord(GetParam().type, {.value = value});
    avoidAsymmetries(*record);
    record->eventTime = kEventTime;
    return record;
  }

  // What stands behind the header, its blank included.
  static std::string fieldsOf(const std::string &line) {
    size_t place = 0;
    for (int field = 0; field < 3; ++field) place = line.find(' ', place + 1);
    return line.substr(place);
  }
};

class ALayoutReader : public ALayoutFunction {};
class ALayoutWriter : public ALayoutFunction {};

std::vector<LayoutFunctions> functionsWithWriter() {
  std::vector<LayoutFunctions> functions;
  std::copy_if(std::begin(kFunctions), std::end(kFunctions), std::back_inserter(functions),
               [](const LayoutFunctions &candidate) { return candidate.write != nullptr; });
  return functions;
}

std::string nameOf(const ::testing::TestParamInfo<LayoutFunctions> &tested) { return tested.param.name; }

INSTANTIATE_TEST_SUITE_P(Of, ALayoutReader, ::testing::ValuesIn(kFunctions), nameOf);
INSTANTIATE_TEST_SUITE_P(Of, ALayoutWriter, ::testing::ValuesIn(functionsWithWriter()), nameOf);

TEST_P(ALayoutReader, ReadsWhatTheLineCarries) {
  for (uint64_t value = 1; value <= kRecords; ++value) {
    const std::string line = written(*sample(value));
    SCOPED_TRACE(line);
    const OwnedRecord expected = parse(line);
    ASSERT_NE(expected, nullptr) << wmq_errdetail();

    OwnedRecord record(static_cast<eventRecord *>(std::calloc(1, sizeof(eventRecord))));
    record->type = GetParam().type;
    record->eventTime = kEventTime;
    std::memcpy(record->version, wmq_streamversion(), std::strlen(wmq_streamversion()) + 1);
    wmq_setlineversion(10.1F);
    wmq_errno = 0;
    ASSERT_EQ(GetParam().read(fieldsOf(line).c_str(), *record), 0) << wmq_errdetail();
    EXPECT_EQ(jsonOf(*record), jsonOf(*expected));
  }
}

TEST_P(ALayoutWriter, WritesWhatTheLineCarries) {
  for (uint64_t value = 1; value <= kRecords; ++value) {
    const OwnedRecord record = sample(value);
    const std::string line = written(*record);
    char *text = nullptr;
    size_t length = 0;
    FILE *const file = open_memstream(&text, &length);
    ASSERT_NE(file, nullptr);
    eventRecord copy = *record;  // writers clear counts whose arrays release frees
    EXPECT_EQ(GetParam().write(file, copy), 0);
    std::fclose(file);
    EXPECT_EQ(std::string(text, length), fieldsOf(line));
    std::free(text);
  }
}

TEST_P(ALayoutReader, RefusesWhatIsNotThere) {
  eventRecord record{};
  EXPECT_NE(GetParam().read(nullptr, record), 0);
  EXPECT_NE(GetParam().readNowhere(" 1"), 0);
}

TEST_P(ALayoutWriter, RefusesWhatIsNotThere) {
  eventRecord record{};
  EXPECT_NE(GetParam().write(nullptr, record), 0);
}

}  // namespace
}  // namespace wmq::testing
