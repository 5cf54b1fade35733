// JOB_MODIFY2.
//
// Asymmetries, each with its own test in tests/records/job_modify2_test.cpp:
//   - licenseProject stands on lines above 6.0 only, unlike in JOB_NEW;
//   - limits travel as held: nothing is converted;
//   - the second list of a new remote job control record is written and cannot be read back.
#include "wmq/records/job_modify2.h"

#include "records/record_codecs.h"
#include "records/remote_control_layouts.h"
#include "wmq/records/job_new.h"

namespace wmq {

// Both words of bits announce strings and numbers in the order of the line, not of the bits.
static void layout(auto &io, jobModLog &log) {
  using L = jobModLog;
  text<&L::modJobIdStr>(io, log);
  numbers<&L::options, &L::options2, &L::modInt1, &L::modInt2>(io, log);
  text<&L::modStr1>(io, log);
  numbers<&L::modInt3, &L::modInt4, &L::modInt5, &L::modInt6, &L::modInt7, &L::modInt8, &L::modInt9>(io, log);
  text<&L::modStr2>(io, log, given<&L::options>(0x1));
  text<&L::modStr3>(io, log, given<&L::options>(0x2));
  list<&L::numNameList, &L::nameList>(io, log, given<&L::options>(0x4));
  text<&L::modStr4>(io, log, given<&L::options>(0x40000));
  limits<&L::rlimits, WMX_RLIMIT_CPU, WMX_RLIMIT_THREAD>(io, log);
  text<&L::modStr5>(io, log, given<&L::options>(0x10000));
  newlinesToBlanks<&L::modStr6>(io, log, given<&L::options>(0x20000));
  text<&L::modStr6>(io, log, given<&L::options>(0x20000));
  text<&L::modStr7>(io, log, given<&L::options>(0x40000000));
  text<&L::modStr8>(io, log);
  text<&L::modStr9>(io, log, given<&L::options>(0x8) || given<&L::options2>(0x80));
  text<&L::modStr10>(io, log, given<&L::options>(0x10));
  text<&L::modStr11>(io, log, given<&L::options>(0x20));
  text<&L::modStr12>(io, log, given<&L::options2>(0x2));
  number<&L::modInt10>(io, log, given<&L::options>(0x400));
  text<&L::modStr13>(io, log, given<&L::options>(0x800));
  list<&L::numStrPairs, &L::strPairs>(io, log, given<&L::options>(0x80000));
  text<&L::modStr14>(io, log);
  text<&L::modStr15>(io, log);
  text<&L::modStr16>(io, log);
  newlinesToBlanks<&L::modStr17>(io, log, given<&L::options>(0x100000));
  text<&L::modStr17>(io, log, given<&L::options>(0x100000));
  text<&L::modStr18>(io, log, given<&L::options>(0x400000));
  text<&L::modStr19>(io, log, given<&L::options>(0x2000000));
  numbers<&L::modInt11, &L::modInt12>(io, log);
  text<&L::modStr20>(io, log, given<&L::options>(0x200000));
  text<&L::modStr21>(io, log);
  text<&L::modStr22>(io, log, given<&L::options>(0x200));
  text<&L::modStr23>(io, log, given<&L::options>(0x20000000));
  number<&L::modInt13>(io, log, atLeast(4.0F));
  text<&L::modStr24>(io, log, given<&L::options2>(0x80));
  text<&L::modStr25>(io, log, given<&L::options2>(0x100));
  number<&L::modInt14>(io, log, given<&L::options2>(0x200));
  text<&L::rsvId>(io, log, atLeast(5.0F) && given<&L::options2>(JOB_OPTION2_RSV));
  text<&L::jgroup>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_JGROUP));
  text<&L::sla>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_SLA));
  text<&L::newStr12>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_STR12));
  text<&L::newStr13>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_STR13));
  number<&L::newInt8>(io, log, atLeast(6.0F) && given<&L::options2>(JOB_OPTION2_INT8), -1);
  text<&L::licenseProject>(io, log, above(6.0F) && given<&L::options2>(JOB_OPTION2_LICENSE));
  numbers<&L::options3, &L::modInt15>(io, log, atLeast(7.0F));
  text<&L::modStr26>(io, log, above(7.0F) && given<&L::options3>(0x1));
  text<&L::modStr27>(io, log, above(7.01F) && given<&L::options3>(0x4));
  newlinesToBlanks<&L::modStr28>(io, log, given<&L::options3>(0x10));
  text<&L::modStr28>(io, log, atLeast(7.02F) && given<&L::options3>(0x10));
  number<&L::modInt16>(io, log, atLeast(7.02F) && given<&L::options3>(0x80), -1);
  limits<&L::rlimits, WMX_RLIMIT_THREAD, WMX_RLIM_NLIMITS>(io, log, atLeast(7.02F));
  newlinesToBlanks<&L::modStr29>(io, log, given<&L::options3>(0x200));
  text<&L::modStr29>(io, log, above(7.03F) && given<&L::options3>(0x200));
  number<&L::modInt17>(io, log, atLeast(7.03F) && given<&L::options3>(0x400));
  number<&L::modInt18>(io, log, atLeast(7.03F) && given<&L::options3>(0x800), -1);
  unset<&L::reserved1>(io, log);
  text<&L::modStr30>(io, log, atLeast(7.06F));
  extension<&L::submitExt>(io, log, atLeast(7.06F));
  clusterGroup(io, log);
  numbers<&L::modInt19, &L::modInt20>(io, log, atLeast(8.02F));
  list<&L::numNameList2, &L::nameList2>(io, log, given<&L::modInt19>(JOB_INT13_NAME_LIST2));
  number<&L::modInt21>(io, log, atLeast(9.1F), -1);
  list<&L::numRmtJobCtrls, &L::rmtJobCtrls>(io, log, atLeast(9.1F));
  text<&L::modStr31>(io, log, atLeast(9.1F));
  text<&L::modStr32>(io, log, atLeast(9.1F));
  text<&L::modStr33>(io, log, atLeast(9.1F));
  numbers<&L::modInt22, &L::modInt23, &L::modInt24>(io, log, atLeast(9.11F));
  text<&L::modStr34>(io, log, atLeast(9.11F), null);
  text<&L::modStr35>(io, log, atLeast(9.13F));
  namedList<&L::namedValues>(io, log, atLeast(9.13F));
  unset<&L::reserved2>(io, log);
  list<&L::numNewRmtJobCtrls, &L::newRmtJobCtrls>(io, log, atLeast(10.1F));
}

constinit const RecordCodec jobModCodec = recordCodec<jobModLog>();

}  // namespace wmq

int writeJobMod(FILE *file, jobModLog *log) { return wmq::writeFields(file, wmq::jobModCodec, log, true); }

int readJobMod(const char *fields, jobModLog *log) { return wmq::readFields(fields, wmq::jobModCodec, log); }
