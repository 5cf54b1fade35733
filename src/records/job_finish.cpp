// JOB_FINISH.
//
// Asymmetries, each with its own test in tests/records/job_finish_test.cpp:
//   - lines from 2.2 to below 3.0 carry preExecCmd, projectName and exitStatus, which reading drops;
//   - endTime is never on the line: the reader takes it from the header;
//   - extra attributes of host usage entries are read, never written;
//   - a failed allocation of the host usage entries gives 98 instead of 55.
#include "wmq/records/job_finish.h"

#include "records/record_codecs.h"

namespace wmq {

static float cpuTimeOf(const Reader & /*reader*/, const jobFinishLog &log) {
  const double used = log.wmxRusage.ru_utime + log.wmxRusage.ru_stime;
  return used < 0 ? 0.0F : static_cast<float>(used);
}

static void layout(auto &io, jobFinishLog &log) {
  using L = jobFinishLog;
  numbers<&L::jobId, &L::userId, &L::options, &L::numProcessors, low32<&L::submitTime>, low32<&L::beginTime>,
          low32<&L::termTime>, low32<&L::startTime>>(io, log);
  fromHeader<&L::endTime>(io, log);
  name<&L::userName>(io, log);
  name<&L::queue>(io, log);
  text<&L::resReq>(io, log);
  text<&L::finStr1>(io, log);
  text<&L::finStr2>(io, log);
  name<&L::fromHost>(io, log);
  text<&L::cwd>(io, log);
  text<&L::inFile>(io, log);
  text<&L::outFile>(io, log);
  text<&L::finStr3>(io, log);
  text<&L::finStr4>(io, log);
  list<&L::numNameList, &L::nameList>(io, log);
  hosts<&L::numExHosts, &L::execHosts>(io, log);
  numbers<&L::jStatus, fixed<&L::hostFactor, 3, 1>>(io, log);
  text<&L::jobName>(io, log);
  text<&L::command>(io, log);
  usage<&L::wmxRusage>(io, log);
  computed<&L::cpuTime>(io, log, cpuTimeOf);

  text<&L::preExecCmd>(io, log, atLeast(2.2F));
  text<&L::projectName>(io, log, atLeast(2.2F));
  number<&L::exitStatus>(io, log, atLeast(2.2F));
  forgottenUnless<&L::preExecCmd, &L::projectName, &L::exitStatus>(io, log, atLeast(3.0F));
  number<&L::maxNumProcessors>(io, log, atLeast(3.0F), valueOf<&L::numProcessors>);
  text<&L::finStr5>(io, log, atLeast(3.0F));

  text<&L::finStr6>(io, log, above(3.0F));
  number<&L::finInt1>(io, log, above(3.0F));
  numbers<&L::finInt2, &L::finInt3>(io, log, above(3.0F));
  text<&L::finStr7>(io, log, atLeast(4.0F));
  text<&L::finStr8>(io, log, atLeast(4.0F));
  text<&L::finStr9>(io, log, atLeast(5.0F));
  text<&L::finStr10>(io, log, atLeast(6.0F));
  number<&L::finInt4>(io, log, atLeast(6.0F));
  text<&L::finStr11>(io, log, atLeast(6.0F));
  number<&L::finInt5>(io, log, atLeast(6.0F));
  text<&L::finStr12>(io, log, atLeast(6.0F));
  number<&L::finInt6>(io, log, atLeast(6.0F));
  text<&L::finStr13>(io, log, atLeast(6.0F));
  text<&L::finStr14>(io, log, atLeast(6.0F));
  text<&L::finStr15>(io, log, atLeast(7.0F));
  text<&L::finStr16>(io, log, atLeast(7.02F));
  number<&L::finInt7>(io, log, atLeast(7.02F));
  text<&L::finStr17>(io, log, atLeast(7.02F));
  text<&L::finStr18>(io, log, atLeast(7.03F));
  number<&L::finInt8>(io, log, atLeast(7.04F));
  trailingBlank(io);
  text<&L::finStr19>(io, log, atLeast(7.06F));
  extension<&L::submitExt>(io, log, atLeast(7.06F));
  list<&L::numhRusages, &L::hostRusage>(io, log, atLeast(8.0F), WMCE_NO_MEM);
  number<&L::finInt9>(io, log, atLeast(8.3F));
  number<&L::finInt10>(io, log, atLeast(8.3F));
  number<&L::finInt11>(io, log, atLeast(9.1F));
  text<&L::finStr20>(io, log, atLeast(9.1F));
  clusterGroup(io, log);
  number<low32<&L::forwardTime>>(io, log, atLeast(9.1F));
  text<&L::finStr21>(io, log, atLeast(9.1F));
  text<&L::finStr22>(io, log, atLeast(9.1F));
  number<&L::finInt12>(io, log, atLeast(9.1F));
  text<&L::finStr23>(io, log, atLeast(9.1F));
  list<&L::numStrIntPairs, &L::strIntPairs>(io, log, atLeast(9.11F));
  slotsOrCopy<&L::numAllocSlots, &L::allocSlots, &L::numExHosts, &L::execHosts>(io, log, atLeast(9.13F));
  number<&L::finInt13>(io, log, atLeast(9.13F));
  list<&L::numGPURusages, &L::gpuRusages>(io, log, atLeast(10.1F));
}

constinit const RecordCodec jobFinishCodec = recordCodec<jobFinishLog>();

}  // namespace wmq

int writeJobFinish(FILE *file, jobFinishLog *log) {
  return wmq::writeFields(file, wmq::jobFinishCodec, log, true);
}

int readJobFinish(const char *fields, jobFinishLog *log, int32_t eventTime) {
  return wmq::readFields(fields, wmq::jobFinishCodec, log, eventTime);
}
