// JOB_PROVISION_START, JOB_PROVISION_END, HOST_POWER_STATUS and JOB_PROV_HOST.
//
// Asymmetries, each with its own test in tests/records/provisioning_test.cpp:
//   - behind an embedded start, provStr2 of JOB_PROVISION_START is read where the start began: it becomes the
//     start's first string;
//   - HOST_POWER_STATUS and JOB_PROV_HOST write their hosts compressed and leave them so when reading;
//   - JOB_PROV_HOST writes neither count nor hosts when there are none, a value for each uncompressed host,
//     and a start for hasJobStart 1 only; the reader expects a count, a value for each name on the line, and
//     a start for any hasJobStart that is not 0.
#include "wmq/records/provisioning.h"

#include "records/job_start_layout.h"
#include "records/record_codecs.h"

namespace wmq {

static void layout(auto &io, jobProvisionStartLog &log) {
  using L = jobProvisionStartLog;
  numbers<&L::jobId, &L::provInt1>(io, log);
  text<&L::provStr1>(io, log);
  numbers<&L::provFlags, &L::hasJobStart>(io, log);
  embedded<&L::jobStart>(io, log, notZero<&L::hasJobStart>());
  text<&L::provStr2>(io, log, atLeast(9.1F) && given<&L::provFlags>(PROVISION_FLAG_STR2));
}

static void layout(auto &io, jobProvisionEndLog &log) {
  using L = jobProvisionEndLog;
  numbers<&L::jobId, &L::provInt1>(io, log);
  text<&L::provStr1>(io, log);
  numbers<&L::provFlags, &L::provInt2, hostCount<&L::numProvHosts>>(io, log);
  hosts<&L::numProvHosts, &L::provHosts, HostRule{.countBefore = true}>(io, log);
  hosts<&L::numProvHosts2, &L::provHosts2>(io, log);
  text<&L::provStr2>(io, log, given<&L::provFlags>(PROVISION_FLAG_STR2));
}

static void layout(auto &io, hostPowerStatusLog &log) {
  using L = hostPowerStatusLog;
  number<&L::powerInt1>(io, log);
  number<&L::powerInt2>(io, log);
  number<&L::powerInt3>(io, log);
  text<&L::powerStr1>(io, log);
  text<&L::powerStr2>(io, log);
  number<&L::powerInt4>(io, log);
  hosts<&L::numPowerHosts, &L::powerHosts, HostRule{.none = NoHosts::emptyArray, .expanded = false}>(io, log);
}

// ----------------------------------------------------------------- JOB_PROV_HOST

static void provHosts(Writer &io, jobProvHostLog &log) {
  if (log.numProvHosts <= 0) return;
  putHosts(io, log.numProvHosts, log.provHosts, "provHosts");
  using L = jobProvHostLog;
  elements<&L::numProvHosts, &L::provHostValues>(io, log);
}
static void provHosts(Reader &io, jobProvHostLog &log) {
  using L = jobProvHostLog;
  hosts<&L::numProvHosts, &L::provHosts, HostRule{.countBefore = true, .expanded = false}>(io, log);
  if (io.error != 0 || log.numProvHosts <= 0) return;
  const int32_t names = log.numProvHosts;
  elements<&L::numProvHosts, &L::provHostValues>(io, log);
  for (int32_t i = log.numProvHosts; log.provHosts != nullptr && i < names; ++i) release(log.provHosts[i]);
  if (log.provHostValues == nullptr) release(log.provHosts);
}
static void provHosts(Releaser &io, jobProvHostLog &log) {
  using L = jobProvHostLog;
  const int32_t names = log.numProvHosts;
  elements<&L::numProvHosts, &L::provHosts>(io, log);
  log.numProvHosts = names;
  elements<&L::numProvHosts, &L::provHostValues>(io, log);
}
static void provHosts(Describer &io, const jobProvHostLog &log) {
  using L = jobProvHostLog;
  hosts<&L::numProvHosts, &L::provHosts, HostRule{.countBefore = true, .expanded = false}>(io, log);
  elements<&L::numProvHosts, &L::provHostValues>(io, log);
  io.out.fields.back().note = "as many as the count says; hosts may be fewer by compression";
}

static void onlyForOne(Writer &io, jobProvHostLog &log) {
  if (log.hasJobStart != 1 || io.error != 0) return;
  layout(io, log.jobStart);
  if (!io.full) io.error = 0;  // by design: what could be written of it stands
}
static void onlyForOne(auto &io, auto &log) {
  using L = jobProvHostLog;
  embedded<&L::jobStart>(io, log, notZero<&L::hasJobStart>());
}

static void layout(auto &io, jobProvHostLog &log) {
  using L = jobProvHostLog;
  numbers<&L::jobId, &L::provHostInt1, &L::provHostInt2, hostCount<&L::numProvHosts>>(io, log);
  provHosts(io, log);
  number<&L::hasJobStart>(io, log);
  onlyForOne(io, log);
}

constinit const RecordCodec jobProvisionStartCodec = recordCodec<jobProvisionStartLog>();
constinit const RecordCodec jobProvisionEndCodec = recordCodec<jobProvisionEndLog>();
constinit const RecordCodec hostPowerStatusCodec = recordCodec<hostPowerStatusLog>();
constinit const RecordCodec jobProvHostCodec = recordCodec<jobProvHostLog>();

}  // namespace wmq

int writeJobProvisionStart(FILE *file, jobProvisionStartLog *log) {
  return wmq::writeFields(file, wmq::jobProvisionStartCodec, log, true);
}

int readJobProvisionStart(const char *fields, jobProvisionStartLog *log) {
  return wmq::readFields(fields, wmq::jobProvisionStartCodec, log);
}

int writeJobProvisionEnd(FILE *file, jobProvisionEndLog *log) {
  return wmq::writeFields(file, wmq::jobProvisionEndCodec, log, true);
}

int readJobProvisionEnd(const char *fields, jobProvisionEndLog *log) {
  return wmq::readFields(fields, wmq::jobProvisionEndCodec, log);
}

int writeHostPowerStatusLog(FILE *file, hostPowerStatusLog *log) {
  return wmq::writeFields(file, wmq::hostPowerStatusCodec, log, true);
}

int readHostPowerStatusLog(const char *fields, hostPowerStatusLog *log) {
  return wmq::readFields(fields, wmq::hostPowerStatusCodec, log);
}

int readJobProvHostLog(const char *fields, jobProvHostLog *log) {
  return wmq::readFields(fields, wmq::jobProvHostCodec, log);
}

void free_jobProvisionStartLog(jobProvisionStartLog *log) {
  wmq::releaseFields(wmq::jobProvisionStartCodec, log);
}

void free_jobProvisionEndLog(jobProvisionEndLog *log) { wmq::releaseFields(wmq::jobProvisionEndCodec, log); }

void free_hostPowerStatusLog(hostPowerStatusLog *log) { wmq::releaseFields(wmq::hostPowerStatusCodec, log); }

void free_jobProvHostLog(jobProvHostLog *log) { wmq::releaseFields(wmq::jobProvHostCodec, log); }
