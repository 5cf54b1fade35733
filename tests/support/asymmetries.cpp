#include "support/asymmetries.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include "support/small_records.h"

namespace wmq::testing {
namespace {

void replace(char *&text, const std::string &content) {
  std::free(text);
  text = ownedCopy(content);
}

// Null and empty texts get a content.
void name(char *&text) {
  if (text == nullptr || *text == '\0') replace(text, "name");
}

void nameAll(int32_t count, char **texts) {
  for (int32_t i = 0; i < count; ++i) name(texts[i]);
}

// No two are equal, and none looks like a compressed one.
void nameApart(int32_t count, char **hosts) {
  for (int32_t i = 0; i < count; ++i) replace(hosts[i], "host" + std::to_string(i));
}

void needsHost(int32_t &count, char **&hosts) {
  if (count > 0) return;
  std::free(hosts);  // an empty array perhaps
  hosts = static_cast<char **>(std::calloc(1, sizeof(char *)));
  hosts[0] = ownedCopy("host");
  count = 1;
}

// Neither quotes nor newlines.
void makeRaw(char *text) {
  for (; text != nullptr && *text != '\0'; ++text)
    if (*text == '"' || *text == '\n') *text = '_';
}

void makeRaw(int32_t count, strPair *pairs) {
  for (int32_t i = 0; i < count; ++i) {
    makeRaw(pairs[i].first);
    makeRaw(pairs[i].second);
  }
}

// A word of 1 to 63 bytes without white space.
void makeWord(char *&text) {
  name(text);
  for (char *c = text; *c != '\0'; ++c)
    if (*c == ' ' || (*c >= '\t' && *c <= '\r')) *c = '_';
  text[std::min<size_t>(std::strlen(text), WMQ_HOST_SIZE - 1)] = '\0';
}

void dropSecondLists(int32_t count, newRmtJobCtrlRecord *records) {
  for (int32_t i = 0; i < count; ++i) {
    newRmtJobCtrlRecord &record = records[i];
    for (int32_t k = 0; k < record.numEntries2; ++k) {
      std::free(record.entries2[k].a);
      std::free(record.entries2[k].b);
      std::free(record.entries2[k].c);
    }
    std::free(record.entries2);
    std::free(record.values2);
    record.entries2 = nullptr;
    record.values2 = nullptr;
    record.numEntries2 = 0;
  }
}

template <typename L>
void dropRanges(L &log) {
  std::free(log.indexRangeStart);
  std::free(log.indexRangeEnd);
  std::free(log.indexRangeStep);
  log.indexRangeStart = log.indexRangeEnd = log.indexRangeStep = nullptr;
  log.indexRangeCnt = 0;
}

template <typename L>
void needsRange(L &log) {
  if (log.indexRangeCnt > 0) return;
  for (int32_t **array : {&log.indexRangeStart, &log.indexRangeEnd, &log.indexRangeStep})
    *array = static_cast<int32_t *>(std::calloc(1, sizeof(int32_t)));
  log.indexRangeCnt = 1;
}

template <typename L>
void narrow(L &log, std::initializer_list<int64_t L::*> members) {
  for (const auto member : members) log.*member = static_cast<int32_t>(log.*member);
}

// Positive numbers that are written as 0 are not positive when read.
template <typename L>
void dropTiny(L &log, std::initializer_list<double L::*> members) {
  for (const auto member : members)
    if (std::fabs(log.*member) < 1) log.*member = 0;
}

void narrowUsage(int32_t count, hostRusageEntry *entries) {
  for (int32_t i = 0; i < count; ++i) narrow(entries[i], {&hostRusageEntry::utime, &hostRusageEntry::stime});
}

}  // namespace

const std::vector<Asymmetry> &asymmetries() {
  static const std::vector<Asymmetry> all = {
      {{EVENT_JOB_NEW, EVENT_JOB_MODIFY},
       "pairs of strings are not escaped",
       [](eventLog &log) { makeRaw(log.jobNewLog.numStrPairs, log.jobNewLog.strPairs); }},
      {{EVENT_JOB_NEW, EVENT_JOB_MODIFY},
       "the second list of names is always written, and read under its bit",
       [](eventLog &log) {
         if (log.jobNewLog.numNameList2 > 0) log.jobNewLog.newInt13 |= JOB_INT13_NAME_LIST2;
       }},
      {{EVENT_JOB_START, EVENT_PRE_EXEC_START, EVENT_JOB_ROUTE},
       "a start without hosts is written, and refused when read",
       [](eventLog &log) { needsHost(log.jobStartLog.numExHosts, log.jobStartLog.execHosts); }},
      {{EVENT_JOB_FINISH},
       "host usage names are bare words",
       [](eventLog &log) {
         for (int32_t i = 0; i < log.jobFinishLog.numhRusages; ++i)
           makeWord(log.jobFinishLog.hostRusage[i].name);
       }},
      {{EVENT_JOB_FINISH},
       "a slot without a name cannot be written",
       [](eventLog &log) { nameAll(log.jobFinishLog.numAllocSlots, log.jobFinishLog.allocSlots); }},
      {{EVENT_GRP_MOD},
       "the new name is always written, and read under its option",
       [](eventLog &log) {
         if ((log.jgrpModLog.grpOptions & GRP_OPTION_RENAMED) != 0) return;
         log.jgrpModLog.grpField14 = 0;
         *log.jgrpModLog.grpName2 = '\0';
       }},
      {{EVENT_JOB_MODIFY2},
       "pairs of strings are not escaped",
       [](eventLog &log) { makeRaw(log.jobModLog.numStrPairs, log.jobModLog.strPairs); }},
      {{EVENT_JOB_MODIFY2},
       "the second list of a new remote job control record cannot be read back",
       [](eventLog &log) { dropSecondLists(log.jobModLog.numNewRmtJobCtrls, log.jobModLog.newRmtJobCtrls); }},
      {{EVENT_JOB_MOVE},
       "the second list of a new remote job control record cannot be read back",
       [](eventLog &log) {
         dropSecondLists(log.jobMoveLog.numNewRmtJobCtrl, log.jobMoveLog.newRmtJobCtrls);
       }},
      {{EVENT_JOB_SWITCH},
       "index ranges are written and never read",
       [](eventLog &log) { dropRanges(log.jobSwitchLog); }},
      {{EVENT_JOB_SWITCH2},
       "a record without index ranges is written, and refused when read",
       [](eventLog &log) { needsRange(log.jobSwitch2Log); }},
      {{EVENT_JOB_RUN_RUSAGE},
       "reading ends at the first empty list",
       [](eventLog &log) {
         jobRunRusageLog &usage = log.jobRunRusageLog;
         if (usage.numRusageEntries == 0) {
           std::free(usage.rusageValues);
           usage.rusageValues = nullptr;
           usage.numRusageValues = 0;
         }
         if (usage.numRusageValues == 0) usage.runRusageInt5 = 0;
       }},
      {{EVENT_METRIC_LOG},
       "the later numbers are read from the first field on again",
       [](eventLog &log) {
         perfmonMetricsLog &metrics = log.perfmonMetricsLog;
         metrics.metricLong1 = static_cast<int32_t>(metrics.metricLong1);
         metrics.metricLong2 = metrics.metricLong1;
         metrics.metricInt12 = metrics.metricInt1;
         metrics.metricInt13 = metrics.metricInt2;
         metrics.metricInt14 = metrics.metricInt3;
         metrics.metricInt15 = metrics.metricInt4;
         metrics.metricInt16 = static_cast<int32_t>(metrics.metricLong1);
       }},
      {{EVENT_JOB_RESIZE},
       "lists of no hosts are written, and three of the four are refused when read",
       [](eventLog &log) {
         jobResizeLog &resize = log.jobResizeLog;
         needsHost(resize.numExHosts, resize.execHosts);
         needsHost(resize.numResizeHosts, resize.resizeHosts);
         needsHost(resize.numAllocSlots, resize.allocSlots);
       }},
      {{EVENT_JOB_FINISH2},
       "64-bit numbers are read as 32 bits, and those that are then not positive are not written again",
       [](eventLog &log) {
         using L = jobFinish2Log;
         narrow(log.jobFinish2Log, {&L::srcJobId, &L::dstJobId, &L::forwardTime, &L::beginTime});
       }},
      {{EVENT_JOB_FINISH2},
       "a positive hostFactor that is written as 0 is not written again",
       [](eventLog &log) { dropTiny(log.jobFinish2Log, {&jobFinish2Log::hostFactor}); }},
      {{EVENT_JOB_FINISH2},
       "a negative serial_job_energy or numAllocSlots makes the count of pairs fall short",
       [](eventLog &log) {
         int32_t &slots = log.jobFinish2Log.numAllocSlots;
         slots = std::max(slots, 0);
         double &energy = log.jobFinish2Log.serial_job_energy;
         energy = std::isnan(energy) ? 0 : std::fabs(energy);
       }},
      {{EVENT_JOB_FINISH2},
       "a slot without a name cannot be written",
       [](eventLog &log) { nameAll(log.jobFinish2Log.numAllocSlots, log.jobFinish2Log.allocSlots); }},
      {{EVENT_JOB_FINISH2},
       "GPU pairs with an empty name or value are left out when read",
       [](eventLog &log) {
         for (int32_t i = 0; i < log.jobFinish2Log.numGPURusages; ++i) {
           gpuRusageEntry &entry = log.jobFinish2Log.gpuRusages[i];
           for (int32_t k = 0; k < entry.numPairs; ++k) {
             name(entry.pairs[k].key);
             name(entry.pairs[k].value);
           }
         }
       }},
      {{EVENT_JOB_FINISH2},
       "a host without a name cannot be written",
       [](eventLog &log) { nameAll(log.jobFinish2Log.numExHosts, log.jobFinish2Log.execHosts); }},
      {{EVENT_JOB_FINISH2},
       "64-bit numbers of host usage are read as 32 bits",
       [](eventLog &log) { narrowUsage(log.jobFinish2Log.numhRusages, log.jobFinish2Log.hostRusage); }},
      {{EVENT_JOB_STATUS2},
       "64-bit numbers are read as 32 bits, and those that are then not positive are not written again",
       [](eventLog &log) {
         using L = jobStatus2Log;
         narrow(log.jobStatus2Log, {&L::submitTime, &L::startTime, &L::endTime, &L::srcJobId, &L::dstJobId});
       }},
      {{EVENT_JOB_STATUS2},
       "positive resource usage that is written as 0 is not written again",
       [](eventLog &log) {
         using L = jobStatus2Log;
         dropTiny(log.jobStatus2Log, {&L::ru_utime, &L::ru_stime, &L::ru_maxrss, &L::ru_nswap});
       }},
      {{EVENT_JOB_STATUS2},
       "\"interactive\" is written and never found",
       [](eventLog &log) { log.jobStatus2Log.interactive = 0; }},
      {{EVENT_JOB_STATUS2},
       "a host without a name cannot be written",
       [](eventLog &log) { nameAll(log.jobStatus2Log.numExHosts, log.jobStatus2Log.execHosts); }},
      {{EVENT_JOB_STATUS2},
       "64-bit numbers of host usage are read as 32 bits",
       [](eventLog &log) { narrowUsage(log.jobStatus2Log.numhRusages, log.jobStatus2Log.hostRusage); }},
      {{EVENT_JOB_PENDING_REASONS},
       "a 64-bit number is read as 32 bits, and one that is then not positive is not written again",
       [](eventLog &log) { narrow(log.jobPendingReasonsLog, {&jobPendingReasonsLog::expectedLogTime}); }},
      {{EVENT_JOB_PROVISION_START},
       "an embedded start without hosts is written, and refused when read",
       [](eventLog &log) {
         jobStartLog &start = log.jobProvisionStartLog.jobStart;
         needsHost(start.numExHosts, start.execHosts);
       }},
      {{EVENT_JOB_PROVISION_START},
       "provStr2 behind an embedded start becomes that one's first string when read",
       [](eventLog &log) {
         if (log.jobProvisionStartLog.hasJobStart != 0)
           log.jobProvisionStartLog.provFlags &= ~PROVISION_FLAG_STR2;
       }},
      {{EVENT_HOST_POWER_STATUS},
       "hosts are compressed when written and not expanded when read",
       [](eventLog &log) {
         nameApart(log.hostPowerStatusLog.numPowerHosts, log.hostPowerStatusLog.powerHosts);
       }},
      {{EVENT_JOB_PROV_HOST},
       "hosts are compressed when written and not expanded when read",
       [](eventLog &log) { nameApart(log.jobProvHostLog.numProvHosts, log.jobProvHostLog.provHosts); }},
      {{EVENT_JOB_PROV_HOST},
       "neither count nor hosts are written where there are none, and both are expected when read",
       [](eventLog &log) {
         jobProvHostLog &hosts = log.jobProvHostLog;
         if (hosts.numProvHosts > 0) return;
         needsHost(hosts.numProvHosts, hosts.provHosts);
         hosts.provHostValues = static_cast<int32_t *>(std::calloc(1, sizeof(int32_t)));
       }},
      {{EVENT_JOB_PROV_HOST},
       "a start is written for a hasJobStart of 1 and read for any but 0",
       [](eventLog &log) {
         int32_t &hasJobStart = log.jobProvHostLog.hasJobStart;
         hasJobStart = hasJobStart == 0 ? 0 : 1;
       }},
      {{EVENT_JOB_PROV_HOST},
       "an embedded start without hosts is written, and refused when read",
       [](eventLog &log) {
         jobStartLog &start = log.jobProvHostLog.jobStart;
         needsHost(start.numExHosts, start.execHosts);
       }},
  };
  return all;
}

void avoidAsymmetries(eventRecord &record, const Asymmetry *butFor) {
  for (const Asymmetry &asymmetry : asymmetries()) {
    const auto &types = asymmetry.types;
    if (&asymmetry != butFor && std::find(types.begin(), types.end(), record.type) != types.end())
      asymmetry.avoid(record.eventLog);
  }
}

}  // namespace wmq::testing
