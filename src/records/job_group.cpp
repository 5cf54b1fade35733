// GRP_ADD, GRP_MOD, GRP_CTRL and GRP_STATUS.
//
// Asymmetries, each with its own test in tests/records/job_group_test.cpp:
//   - GRP_MOD writes its new name always and reads it only under GRP_OPTION_RENAMED.
#include "wmq/records/job_group.h"

#include "records/record_codecs.h"

namespace wmq {

template <typename L>
static void groupFields(auto &io, L &log) {
  numbers<&L::grpField1, low32<&L::grpTime>, &L::grpOptions>(io, log);
  text<&L::grpStr1>(io, log);
  text<&L::grpStr2>(io, log);
  name<&L::grpName>(io, log);
  text<&L::grpStr4>(io, log);
  text<&L::grpStr5>(io, log);
  number<&L::grpField9>(io, log, above(3.1F));
  number<&L::grpField10>(io, log, atLeast(4.0F));
  text<&L::grpStr6>(io, log, atLeast(7.0F));
  number<&L::grpField12>(io, log, above(7.01F));
  number<&L::grpField13>(io, log, above(7.02F), 1);
}

static void layout(auto &io, jgrpAddLog &log) { groupFields(io, log); }

static void layout(auto &io, jgrpModLog &log) {
  using L = jgrpModLog;
  groupFields(io, log);
  const auto renamed = readWhen(atLeast(10.1F) && given<&L::grpOptions>(GRP_OPTION_RENAMED));
  number<&L::grpField14>(io, log, renamed);
  nameOrEmpty<&L::grpName2>(io, log, renamed);
}

static void layout(auto &io, jgrpCtrlLog &log) {
  using L = jgrpCtrlLog;
  numbers<&L::grpField1, &L::grpCtrlField2, &L::grpCtrlField3>(io, log);
  text<&L::grpCtrlStr>(io, log);
  name<&L::grpName>(io, log);
}

static void layout(auto &io, jgrpStatusLog &log) {
  using L = jgrpStatusLog;
  text<&L::grpStatusStr>(io, log);
  numbers<&L::grpStatusField2, &L::grpStatusField3>(io, log);
}

constinit const RecordCodec jgrpAddCodec = recordCodec<jgrpAddLog>();
constinit const RecordCodec jgrpModCodec = recordCodec<jgrpModLog>();
constinit const RecordCodec jgrpCtrlCodec = recordCodec<jgrpCtrlLog>();
constinit const RecordCodec jgrpStatusCodec = recordCodec<jgrpStatusLog>();

}  // namespace wmq

int readJgrpMod(const char *fields, jgrpModLog *log) {
  return wmq::readFields(fields, wmq::jgrpModCodec, log);
}
