// A reader as most would write it: sscanf for numbers, and for each string a scratch buffer as long as the
// rest of the line, into which it is unquoted byte by byte, and from which it is copied.
#include <cstdio>
#include <cstring>

#include "peers.h"

namespace wmq::bench {
namespace {

struct Cursor {
  const char *next;

  int32_t number() {
    int value = 0;
    int length = 0;
    if (std::sscanf(next, "%d%n", &value, &length) != 1) throw std::runtime_error("no number");
    next += length + 1;
    return value;
  }

  void unquote(char *out) {
    while (*next != '\0' && *next != '"') ++next;
    if (*next == '\0') throw std::runtime_error("no string");
    for (++next; *next != '\0'; ++next) {
      if (*next != '"') {
        *out++ = *next;
      } else if (next[1] == '"') {
        *out++ = '"';
        ++next;
      } else if (next[1] == 'n') {
        *out++ = '\n';
        ++next;
      } else {
        ++next;
        break;
      }
    }
    *out = '\0';
    if (*next != '\0') ++next;
  }

  char *text() {
    auto *scratch = static_cast<char *>(std::malloc(std::strlen(next) + 1));
    unquote(scratch);
    char *copy = copyOf(scratch);
    std::free(scratch);
    return copy;
  }

  void name(char *array, size_t size) {
    auto *scratch = static_cast<char *>(std::malloc(std::strlen(next) + 1));
    unquote(scratch);
    const bool fits = std::strlen(scratch) < size;
    if (fits) std::strcpy(array, scratch);
    std::free(scratch);
    if (!fits) throw std::runtime_error("a name is too long");
  }

  void texts(int32_t &count, char **&array) {
    count = number();
    array = newArray(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) array[i] = text();
  }

  void usage(wmxRusage &usage) {
    double *v = valuesOf(usage).data();
    int length = 0;
    if (std::sscanf(next, "%lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf%n", v,
                    v + 1, v + 2, v + 3, v + 4, v + 5, v + 6, v + 7, v + 8, v + 9, v + 10, v + 11, v + 12,
                    v + 13, v + 14, v + 15, v + 16, v + 17, v + 18, &length) != WMX_RUSAGE_VALUES)
      throw std::runtime_error("no usage");
    next += length + 1;
  }
};

void read(Cursor &line, jobStatusLog &log) {
  int length = 0;
  long long endTime = 0;
  if (std::sscanf(line.next, "%d %d %d %d %f %lld %d%n", &log.jobId, &log.jStatus, &log.reason,
                  &log.subreasons, &log.cpuTime, &endTime, &log.ru, &length) != 7)
    throw std::runtime_error("no status");
  log.endTime = endTime;
  line.next += length + 1;
  if (log.ru != 0) line.usage(log.wmxRusage);
  log.jFlags = line.number();
  log.idx = line.number();
  log.exitStatus = line.number();
  log.srcCluster = line.text();
  log.srcJobId = line.number();
  log.dstCluster = line.text();
  log.dstJobId = line.number();
  log.dcJobFlags = line.number();
  log.indexRangeCnt = line.number();
  log.numAttrGroups = line.number();
}

void read(Cursor &line, jobNewLog &log) {
  int length = 0;
  long long submit = 0;
  long long begin = 0;
  long long term = 0;
  if (std::sscanf(line.next, "%d %d %d %d %lld %lld %lld %d %d %d%n", &log.jobId, &log.userId, &log.options,
                  &log.numProcessors, &submit, &begin, &term, &log.newInt1, &log.newInt2, &log.newInt3,
                  &length) != 10)
    throw std::runtime_error("no job");
  log.submitTime = submit;
  log.beginTime = begin;
  log.termTime = term;
  line.next += length + 1;
  line.name(log.userName, sizeof log.userName);
  for (int i = WMX_RLIMIT_CPU; i < WMX_RLIMIT_THREAD; ++i) log.rlimits[i] = line.number();
  line.name(log.newHost, sizeof log.newHost);
  if (std::sscanf(line.next, "%f %d%n", &log.hostFactor, &log.newInt4, &length) != 2)
    throw std::runtime_error("no factor");
  line.next += length + 1;
  line.name(log.queue, sizeof log.queue);
  log.resReq = line.text();
  line.name(log.fromHost, sizeof log.fromHost);
  for (char **text :
       {&log.cwd, &log.newStr1, &log.inFile, &log.outFile, &log.newStr2, &log.newStr3, &log.jobFile})
    *text = line.text();
  line.texts(log.numNameList, log.nameList);
  for (char **text : {&log.dependCond, &log.preExecCmd, &log.jobName, &log.command}) *text = line.text();
  log.numStrPairs = line.number();
  log.newStr4 = line.text();
  log.projectName = line.text();
  log.maxNumProcessors = line.number();
  for (char **text : {&log.newStr5, &log.newStr6, &log.newStr7, &log.userGroup, &log.newStr8})
    *text = line.text();
  log.options2 = line.number();
  log.newInt6 = line.number();
  for (char **text : {&log.newStr9, &log.newStr10, &log.newStr11}) *text = line.text();
  log.newInt7 = line.number();
  for (char **text : {&log.rsvId, &log.jgroup, &log.sla}) *text = line.text();
  for (int i = WMX_RLIMIT_THREAD; i < WMX_RLIM_NLIMITS; ++i) log.rlimits[i] = line.number();
  log.newStr12 = line.text();
  log.newStr13 = line.text();
  log.newInt8 = line.number();
  log.newInt9 = line.number();
  log.licenseProject = line.text();
  log.options3 = line.number();
  log.app = line.text();
  log.postExecCmd = line.text();
  log.newInt10 = line.number();
  log.requeueEValues = line.text();
  log.newInt11 = line.number();
  log.newInt12 = line.number();
  log.jobDescription = line.text();
  line.number();  // pairs of the submission extension: the sample has none
  log.newInt13 = line.number();
  line.number();  // second name list: likewise
  log.srcCluster = line.text();
  log.srcJobId = line.number();
  log.dstCluster = line.text();
  log.dstJobId = line.number();
  for (char **text : {&log.newStr14, &log.newStr15, &log.newStr16, &log.newStr17, &log.newStr18})
    *text = line.text();
  log.newInt14 = line.number();
  log.newInt15 = line.number();
  log.newInt16 = line.number();
  log.newStr19 = line.text();
  log.newStr20 = line.text();
  line.number();  // named values: likewise
  log.newStr21 = line.text();
}

void read(Cursor &line, jobFinishLog &log) {
  int length = 0;
  long long submit = 0;
  long long begin = 0;
  long long term = 0;
  long long start = 0;
  if (std::sscanf(line.next, "%d %d %d %d %lld %lld %lld %lld%n", &log.jobId, &log.userId, &log.options,
                  &log.numProcessors, &submit, &begin, &term, &start, &length) != 8)
    throw std::runtime_error("no job");
  log.submitTime = submit;
  log.beginTime = begin;
  log.termTime = term;
  log.startTime = start;
  line.next += length + 1;
  line.name(log.userName, sizeof log.userName);
  line.name(log.queue, sizeof log.queue);
  for (char **text : {&log.resReq, &log.finStr1, &log.finStr2}) *text = line.text();
  line.name(log.fromHost, sizeof log.fromHost);
  for (char **text : {&log.cwd, &log.inFile, &log.outFile, &log.finStr3, &log.finStr4}) *text = line.text();
  line.texts(log.numNameList, log.nameList);
  line.texts(log.numExHosts, log.execHosts);
  if (std::sscanf(line.next, "%d %f%n", &log.jStatus, &log.hostFactor, &length) != 2)
    throw std::runtime_error("no status");
  line.next += length + 1;
  log.jobName = line.text();
  log.command = line.text();
  line.usage(log.wmxRusage);
  log.cpuTime = static_cast<float>(log.wmxRusage.ru_utime + log.wmxRusage.ru_stime);
  log.preExecCmd = line.text();
  log.projectName = line.text();
  log.exitStatus = line.number();
  log.maxNumProcessors = line.number();
  log.finStr5 = line.text();
  log.finStr6 = line.text();
  log.finInt1 = line.number();
  if (std::sscanf(line.next, "%d %d%n", &log.finInt2, &log.finInt3, &length) != 2)
    throw std::runtime_error("no numbers");
  line.next += length + 1;
  for (char **text : {&log.finStr7, &log.finStr8, &log.finStr9, &log.finStr10}) *text = line.text();
  log.finInt4 = line.number();
  log.finStr11 = line.text();
  log.finInt5 = line.number();
  log.finStr12 = line.text();
  log.finInt6 = line.number();
  for (char **text : {&log.finStr13, &log.finStr14, &log.finStr15, &log.finStr16}) *text = line.text();
  log.finInt7 = line.number();
  log.finStr17 = line.text();
  log.finStr18 = line.text();
  log.finInt8 = line.number();
  log.finStr19 = line.text();
  line.number();  // pairs of the submission extension: the sample has none
  log.numhRusages = line.number();
  log.finInt9 = line.number();
  log.finInt10 = line.number();
  log.finInt11 = line.number();
  log.finStr20 = line.text();
  log.srcCluster = line.text();
  log.srcJobId = line.number();
  log.dstCluster = line.text();
  log.dstJobId = line.number();
  log.forwardTime = line.number();
  log.finStr21 = line.text();
  log.finStr22 = line.text();
  log.finInt12 = line.number();
  log.finStr23 = line.text();
  log.numStrIntPairs = line.number();
  line.texts(log.numAllocSlots, log.allocSlots);
  log.finInt13 = line.number();
  log.numGPURusages = line.number();
}

}  // namespace

Reader sscanfReader(const eventRecord &sample) {
  auto text = std::make_shared<std::string>(lineOf(sample));
  return [text] {
    Cursor line{text->c_str()};
    char typeName[64];
    line.name(typeName, sizeof typeName);
    const int32_t type = wmq_typecode(typeName);
    Record record = newRecord(type);
    line.name(record->version, sizeof record->version);
    record->eventTime = line.number();
    withLog(*record, [&](auto &log) { read(line, log); });
    if (type == EVENT_JOB_FINISH) record->eventLog.jobFinishLog.endTime = record->eventTime;
    if (type == EVENT_JOB_STATUS) record->eventLog.jobStatusLog.numRangeJobs = 0;
    return record;
  };
}

}  // namespace wmq::bench
