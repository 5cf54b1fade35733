#include "support/small_records.h"

#include <cstdlib>
#include <cstring>

namespace wmq::testing {

eventRecord logSwitch(int32_t number) {
  eventRecord record = bareRecord(EVENT_LOG_SWITCH);
  record.eventLog.logSwitchLog.lastJobId = number;
  return record;
}

std::string logSwitchLine(int32_t number) {
  return "\"LOG_SWITCH\" \"10.1\" " + std::to_string(kEventTime) + ' ' + std::to_string(number) + " \n";
}

eventRecord bareRecord(int32_t type) {
  static char hostName[] = "host";
  static char *hostNames[] = {hostName};

  eventRecord record{};
  record.type = type;
  record.eventTime = kEventTime;
  eventLog &log = record.eventLog;
  switch (type) {
    case EVENT_JOB_NEW:
    case EVENT_JOB_MODIFY:
      std::strcpy(log.jobNewLog.userName, "user");
      std::strcpy(log.jobNewLog.queue, "queue");
      std::strcpy(log.jobNewLog.fromHost, "submit");
      break;
    case EVENT_JOB_START:
    case EVENT_PRE_EXEC_START:
    case EVENT_JOB_ROUTE:
      log.jobStartLog.numExHosts = 1;
      log.jobStartLog.execHosts = hostNames;
      break;
    case EVENT_JOB_FINISH:
      std::strcpy(log.jobFinishLog.userName, "user");
      std::strcpy(log.jobFinishLog.queue, "queue");
      std::strcpy(log.jobFinishLog.fromHost, "submit");
      break;
    case EVENT_GRP_ADD:
    case EVENT_GRP_MOD:
      std::strcpy(log.jgrpAddLog.grpName, "/group");
      break;
    case EVENT_GRP_CTRL:
      std::strcpy(log.jgrpCtrlLog.grpName, "/group");
      break;
    default:
      break;
  }
  return record;
}

void ReleaseRecord::operator()(eventRecord *record) const {
  wmq_freekept(record);
  wmq_freelogrec(record);
}

OwnedRecord parse(const std::string &line) {
  wmq_errno = 0;
  return OwnedRecord(wmq_readstreamlineMT(line.c_str()));
}

std::string format(eventRecord &record) {
  char *text = nullptr;
  size_t length = 0;
  wmq_errno = 0;
  wmq_formatrecord(&record, &text, &length);
  std::string line(text != nullptr ? text : "", length);
  std::free(text);
  return line;
}

char *ownedCopy(const std::string &text) { return strdup(text.c_str()); }

}  // namespace wmq::testing
