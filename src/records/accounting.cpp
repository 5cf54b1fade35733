// JOB_RUN_RUSAGE, JOB_RESIZE, EVENT_ADRSV_FINISH, CPUPROFILE_STATUS, SLA_RECOMPUTE and METRIC_LOG.
//
// Asymmetries, each with its own test in tests/records/accounting_test.cpp:
//   - JOB_RUN_RUSAGE is read up to its first empty list, whatever was written behind it;
//   - JOB_RESIZE logs what is wrong with its host counts, one message with sixteen leading blanks;
//   - EVENT_ADRSV_FINISH is malformed when its entries cannot be allocated;
//   - CPUPROFILE_STATUS carries cpuInt4 before cpuInt3, and one number is enough;
//   - METRIC_LOG is read from the first field again for metricLong2, and once more for metricInt16.
#include "wmq/records/accounting.h"

#include <syslog.h>

#include "records/record_codecs.h"

namespace wmq {

template <>
inline constexpr size_t leastBytes<rusageEntry> = 8;
template <>
inline constexpr size_t leastBytes<rsvEntry> = 5;

// ---------------------------------------------------------------- JOB_RUN_RUSAGE

static void layout(auto &io, rusageEntry &entry) {
  using E = rusageEntry;
  numbers<&E::entryInt1, &E::entryInt2, &E::entryInt3, &E::entryInt4>(io, entry);
}

static void layout(auto &io, jobRunRusageLog &log) {
  using L = jobRunRusageLog;
  withoutSkips(io);
  numbers<&L::runRusageInt1, &L::runRusageInt2>(io, log);
  numbers<&L::runRusageInt3, &L::runRusageInt4, &L::runRusageLong1, &L::runRusageLong2, &L::numRusageEntries>(
      io, log);
  stopIfZero<&L::numRusageEntries>(io, log);
  negativeFails<&L::numRusageEntries>(io, log);
  elements<&L::numRusageEntries, &L::rusageEntries>(io, log);
  number<&L::numRusageValues>(io, log);
  stopIfZero<&L::numRusageValues>(io, log);
  negativeFails<&L::numRusageValues>(io, log);
  elements<&L::numRusageValues, &L::rusageValues>(io, log);
  number<&L::runRusageInt5>(io, log);
}

// -------------------------------------------------------------------- JOB_RESIZE

// What the system log hears of a host list, before the reader fails. Null: nothing.
struct Complaints {
  const char *unconverted;
  const char *none;
  bool byJobId;  // the job as a number, not as the text that carries its index
};

static void complain(const char *format, const jobResizeLog &log, bool byJobId) {
  if (format == nullptr) return;
  if (byJobId) return wmc_syslog(LOG_ERR, format, "readJobResize", log.jobId);
  const auto high = static_cast<uint64_t>(static_cast<uint32_t>(log.jobIndex)) << 32;
  const auto job = static_cast<int64_t>(high | static_cast<uint32_t>(log.jobId));
  wmc_syslog(LOG_ERR, format, "readJobResize", wmq_jobid2str(job));
}

template <auto Count, auto Array, HostRule Rule>
static void resizeHosts(auto &io, jobResizeLog &log, const Gate &when, const Complaints & /*complaints*/) {
  hosts<Count, Array, Rule>(io, log, when);
}

template <auto Count, auto Array, HostRule Rule>
static void resizeHosts(Reader &io, jobResizeLog &log, const Gate &when, const Complaints &complaints) {
  if (io.error != 0 || !isOnLine(io.gates, log, when)) return;
  if constexpr (!Rule.countBefore) {
    number<Count>(io, log);
    if (io.error != 0) return complain(complaints.unconverted, log, complaints.byJobId);
  }
  if (log.*Count == 0) complain(complaints.none, log, complaints.byJobId);
  readHosts(io, nameOf<Count>, nameOf<Array>, log.*Count, log.*Array, Rule);
}

static void layout(auto &io, jobResizeLog &log) {
  using L = jobResizeLog;
  constexpr HostRule before{.countBefore = true, .none = NoHosts::refused};
  constexpr HostRule some{.none = NoHosts::refused};
  constexpr HostRule any{.none = NoHosts::nullUnlessNegative};
  numbers<&L::jobId, &L::jobIndex, low32<&L::resizeLong1>, &L::resizeInt1>(io, log);
  name<&L::resizeName>(io, log);
  numbers<&L::resizeInt2, low32<&L::resizeLong2>, &L::resizeInt3, hostCount<&L::numExHosts>>(io, log);
  resizeHosts<&L::numExHosts, &L::execHosts, before>(
      io, log, always, {nullptr, "%s: The number of execution hosts is zero for job <%d>", true});
  resizeHosts<&L::numResizeHosts, &L::resizeHosts, some>(
      io, log, always, {nullptr, "%s: The numResizeHosts for JOB_RESIZE is zero for job <%d>", true});
  resizeHosts<&L::numAllocSlots, &L::allocSlots, some>(
      io, log, atLeast(9.13F),
      {"%s: OFFSET numAllocSlots <%s>", "%s: The number of slot execution hosts is zero for job <%s>",
       false});
  resizeHosts<&L::numResizeSlots, &L::resizeSlots, any>(
      io, log, atLeast(9.13F),
      {"                %s: The number of resized slot hosts is zero for job <%s>", nullptr, false});
}

// ------------------------------------------------------------ EVENT_ADRSV_FINISH

static void layout(auto &io, rsvEntry &entry) {
  text<&rsvEntry::entryName>(io, entry);
  number<&rsvEntry::entryValue>(io, entry);
}

static void layout(auto &io, rsvFinishLog &log) {
  using L = rsvFinishLog;
  numbers<low32<&L::rsvLong1>, &L::rsvInt1, &L::rsvInt2>(io, log);
  text<&L::rsvStr1>(io, log);
  text<&L::rsvStr2>(io, log);
  text<&L::rsvStr3>(io, log);
  text<&L::rsvStr4>(io, log);
  numbers<low32<&L::rsvLong2>, &L::numRsvEntries>(io, log);
  elements<&L::numRsvEntries, &L::rsvEntries>(io, log, WMQE_BAD_FORMAT);
  text<&L::rsvStr5>(io, log, atLeast(9.13F));
  text<&L::rsvStr6>(io, log, atLeast(9.13F), copyOf<&L::rsvStr2>);
}

// ------------------------------------------------------------- CPUPROFILE_STATUS

template <auto... Fs>
static void allOrFirst(auto &io, cpuProfileLog &log) {
  numbers<Fs...>(io, log);
}

template <auto First, auto... Rest>
static void allOrFirst(Reader &io, cpuProfileLog &log) {
  if (io.error != 0) return;
  if (!scan(io, log.*First)) return fail(io, WMQE_BAD_FORMAT, nameOf<First>, "a number");
  Reader rest = io;
  int converted = 0;
  const auto takes = [&](int32_t &number) {
    const bool taken = scan(rest, number);
    converted += taken ? 1 : 0;
    return taken;
  };
  (void)(takes(log.*Rest) && ...);
  if (converted == 0) {
    ((log.*Rest = 0), ...);
    log.cpuInt2 = log.cpuInt1;
    return;
  }
  io.cursor = rest.cursor;
  if (converted != sizeof...(Rest)) fail(io, WMQE_BAD_FORMAT, nameOf<First>, "one number or four");
}

static void layout(auto &io, cpuProfileLog &log) {
  using L = cpuProfileLog;
  name<&L::cpuProfileName>(io, log);
  allOrFirst<&L::cpuInt1, &L::cpuInt2, &L::cpuInt4, &L::cpuInt3>(io, log);
}

// ------------------------------------------------------ SLA_RECOMPUTE, METRIC_LOG

static void layout(auto &io, slaLog &log) {
  using L = slaLog;
  text<&L::slaStr1>(io, log);
  text<&L::slaStr2>(io, log);
  numbers<&L::slaInt1, &L::slaInt2, &L::slaInt3>(io, log);
  fixedNumbers<&L::slaValues, 8>(io, log, above(7.01F));
  trailingBlank(io);
}

static void layout(auto &io, perfmonMetricsLog &log) {
  using L = perfmonMetricsLog;
  numbers<low32<&L::metricLong1>, &L::metricInt1, &L::metricInt2, &L::metricInt3, &L::metricInt4,
          &L::metricInt5, &L::metricInt6, &L::metricInt7, &L::metricInt8, &L::metricInt9, &L::metricInt10,
          &L::metricInt11>(io, log);
  fromFirstField(io);
  numbers<&L::metricLong2, &L::metricInt12, &L::metricInt13, &L::metricInt14, &L::metricInt15>(io, log,
                                                                                               atLeast(9.1F));
  fromFirstField(io);
  number<&L::metricInt16>(io, log, atLeast(9.2F));
}

constinit const RecordCodec jobRunRusageCodec = recordCodec<jobRunRusageLog>();
constinit const RecordCodec jobResizeCodec = recordCodec<jobResizeLog>();
constinit const RecordCodec rsvFinishCodec = recordCodec<rsvFinishLog>();
constinit const RecordCodec cpuProfileCodec = recordCodec<cpuProfileLog>();
constinit const RecordCodec slaCodec = recordCodec<slaLog>();
constinit const RecordCodec perfmonMetricsCodec = recordCodec<perfmonMetricsLog>();

}  // namespace wmq

int writeJobRunRusage(FILE *file, jobRunRusageLog *log) {
  return wmq::writeFields(file, wmq::jobRunRusageCodec, log, true);
}

int readJobRunRusage(const char *fields, jobRunRusageLog *log) {
  return wmq::readFields(fields, wmq::jobRunRusageCodec, log);
}

int writeJobResize(FILE *file, jobResizeLog *log) {
  return wmq::writeFields(file, wmq::jobResizeCodec, log, true);
}

int readJobResize(const char *fields, jobResizeLog *log) {
  return wmq::readFields(fields, wmq::jobResizeCodec, log);
}

int writeRsvFinish(FILE *file, rsvFinishLog *log) {
  if (file == nullptr || log == nullptr) return WMQE_SYS;
  return wmq::writeFields(file, wmq::rsvFinishCodec, log, true);
}

int readRsvFinish(const char *fields, rsvFinishLog *log) {
  if (fields == nullptr || log == nullptr) return WMQE_SYS;
  return wmq::readFields(fields, wmq::rsvFinishCodec, log);
}

int readCpuProfile(const char *fields, cpuProfileLog *log) {
  return wmq::readFields(fields, wmq::cpuProfileCodec, log);
}

int readSLALog(const char *fields, slaLog *log) { return wmq::readFields(fields, wmq::slaCodec, log); }

int readPerfmonMetrics(const char *fields, perfmonMetricsLog *log) {
  return wmq::readFields(fields, wmq::perfmonMetricsCodec, log);
}

void freeRsvFinishLog(rsvFinishLog *log) { wmq::releaseFields(wmq::rsvFinishCodec, log); }

void free_jobResizeLog(jobResizeLog *log) { wmq::releaseFields(wmq::jobResizeCodec, log); }
