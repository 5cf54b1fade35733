// JOB_NEW and JOB_MODIFY.
//
// Asymmetries, each with its own test in tests/records/job_new_test.cpp:
//   - line ends in nine of the strings become blanks in the caller's record before writing;
//   - the strings of strPairs are written without any escaping;
//   - newInt5 has two places on the line, under different option bits; the second wins;
//   - nameList2 is always written and read only under JOB_INT13_NAME_LIST2;
//   - all 12 limits are converted when writing, the last one is not when reading;
//   - newStr19 is "" on the line when it is null.
#include "wmq/records/job_new.h"

#include "records/record_codecs.h"

namespace wmq {

static bool limitsAreConverted(const jobNewLog &log) {
  return (unifiedUnit == -1 || unifiedUnit == 0) && log.options >= 0;
}

static void layout(auto &io, jobNewLog &log) {
  using L = jobNewLog;
  numbers<&L::jobId, &L::userId, &L::options, &L::numProcessors, low32<&L::submitTime>, low32<&L::beginTime>,
          low32<&L::termTime>, &L::newInt1, &L::newInt2, &L::newInt3>(io, log);
  name<&L::userName>(io, log);
  limits<&L::rlimits, WMX_RLIMIT_CPU, WMX_RLIMIT_THREAD>(io, log, always, limitsAreConverted(log));
  nameOrEmpty<&L::newHost>(io, log);
  numbers<fixed<&L::hostFactor, 6, 2>, &L::newInt4>(io, log);
  name<&L::queue>(io, log);
  newlinesToBlanks<&L::resReq>(io, log);
  text<&L::resReq>(io, log);
  name<&L::fromHost>(io, log);
  text<&L::cwd>(io, log);
  text<&L::newStr1>(io, log);
  text<&L::inFile>(io, log);
  text<&L::outFile>(io, log);
  text<&L::newStr2>(io, log);
  text<&L::newStr3>(io, log);
  text<&L::jobFile>(io, log);
  list<&L::numNameList, &L::nameList>(io, log);
  newlinesToBlanks<&L::dependCond>(io, log);
  text<&L::dependCond>(io, log);
  newlinesToBlanks<&L::preExecCmd>(io, log);
  text<&L::preExecCmd>(io, log);
  text<&L::jobName>(io, log);
  newlinesToBlanks<&L::command>(io, log);
  text<&L::command>(io, log);
  list<&L::numStrPairs, &L::strPairs>(io, log);

  newlinesToBlanks<&L::newStr4>(io, log);
  text<&L::newStr4>(io, log, atLeast(2.2F));
  text<&L::projectName>(io, log, atLeast(2.2F));
  number<&L::newInt5>(io, log, atLeast(3.0F) && given<&L::options>(JOB_OPTION_INT5));
  number<&L::maxNumProcessors>(io, log, atLeast(3.0F), valueOf<&L::numProcessors>);
  text<&L::newStr5>(io, log, atLeast(3.0F));
  text<&L::newStr6>(io, log, atLeast(3.0F));

  newlinesToBlanks<&L::newStr7>(io, log);
  text<&L::newStr7>(io, log, above(3.0F));
  text<&L::userGroup>(io, log, above(3.0F));
  text<&L::newStr8>(io, log, above(3.0F));
  numbersWithoutSkip<kept<&L::options2>, &L::newInt6>(io, log, above(3.0F));
  numberAgainIfTextRemains<&L::newInt5>(io, log, atLeast(3.1F) && given<&L::options2>(JOB_OPTION2_INT5));
  limitsFromLine<&L::rlimits>(io, log, limitsAreConverted(log));

  text<&L::newStr9>(io, log, atLeast(4.0F));
  text<&L::newStr10>(io, log, atLeast(4.0F));
  text<&L::newStr11>(io, log, atLeast(4.0F));
  number<&L::newInt7>(io, log, atLeast(4.0F), -1);
  text<&L::rsvId>(io, log, atLeast(5.0F) && given<&L::options2>(JOB_OPTION2_RSV));
  text<&L::jgroup>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_JGROUP));
  text<&L::sla>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_SLA));
  limits<&L::rlimits, WMX_RLIMIT_THREAD, WMX_RLIM_NLIMITS>(io, log, atLeast(6.0F), limitsAreConverted(log));
  text<&L::newStr12>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_STR12));
  text<&L::newStr13>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_STR13));
  number<&L::newInt8>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_INT8), -1);
  number<&L::newInt9>(io, log, atLeast(6.0F), -1);
  text<&L::licenseProject>(io, log, given<&L::options2>(JOB_OPTION2_LICENSE));  // of any version
  number<&L::options3>(io, log, atLeast(7.0F));
  text<&L::app>(io, log, atLeast(7.0F));
  newlinesToBlanks<&L::postExecCmd>(io, log);
  text<&L::postExecCmd>(io, log, atLeast(7.02F));
  number<&L::newInt10>(io, log, atLeast(7.02F), -1);
  newlinesToBlanks<&L::requeueEValues>(io, log);
  text<&L::requeueEValues>(io, log, atLeast(7.03F));
  number<&L::newInt11>(io, log, atLeast(7.03F));
  number<&L::newInt12>(io, log, atLeast(7.03F), -1);
  text<&L::jobDescription>(io, log, atLeast(7.06F));
  extension<&L::submitExt>(io, log, atLeast(7.06F));

  number<&L::newInt13>(io, log, atLeast(9.1F));
  list<&L::numNameList2, &L::nameList2>(io, log, readWhen(given<&L::newInt13>(JOB_INT13_NAME_LIST2)));
  clusterGroup(io, log);
  newlinesToBlanks<&L::newStr14>(io, log);
  text<&L::newStr14>(io, log, atLeast(9.1F));
  text<&L::newStr15>(io, log, atLeast(9.1F));
  text<&L::newStr16>(io, log, atLeast(9.1F));
  text<&L::newStr17>(io, log, atLeast(9.1F));
  text<&L::newStr18>(io, log, atLeast(9.1F));
  numbers<&L::newInt14, &L::newInt15, &L::newInt16>(io, log, atLeast(9.11F));
  text<&L::newStr19>(io, log, atLeast(9.11F), null);
  text<&L::newStr20>(io, log, atLeast(9.13F));
  namedList<&L::namedValues>(io, log, atLeast(9.13F));
  text<&L::newStr21>(io, log, atLeast(9.13F));
}

constinit const RecordCodec jobNewCodec = recordCodec<jobNewLog>();

}  // namespace wmq

int writeJobNew(FILE *file, jobNewLog *log) { return wmq::writeFields(file, wmq::jobNewCodec, log, true); }
