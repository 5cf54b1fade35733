// Printable job ids.
#include "companion/numbers.h"
#include "wmq/companion.h"

namespace wmq {

namespace {

thread_local constinit char arrayIdText[40];
thread_local constinit char plainIdText[24];

}  // namespace

}  // namespace wmq

extern "C" char *wmq_jobid2str(int64_t jobId) {
  const auto bits = static_cast<uint64_t>(jobId);
  const uint32_t index = static_cast<uint32_t>(bits >> 32);
  char *end = wmq::formatInt64(wmq::arrayIdText, static_cast<uint32_t>(bits));
  if (index != 0) {
    *end++ = '[';
    end = wmq::formatInt64(end, index);
    *end++ = ']';
  }
  *end = '\0';
  return wmq::arrayIdText;
}

extern "C" char *wmq_jobidinstr(int64_t jobId) {
  *wmq::formatInt64(wmq::plainIdText, jobId) = '\0';
  return wmq::plainIdText;
}
