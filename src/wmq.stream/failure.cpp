#include "wmq.stream/failure.h"

#include <cstdio>

#include "wmq/event_types.h"

WMQ_THREAD_LOCAL int wmq_errno = 0;

namespace wmq {
namespace {

// Texts are put together only when somebody asks: failing must stay cheap on streams full of bad lines.
struct Failure {
  const char *typeName;
  const char *field;
  const char *expected;
  size_t position;
};

thread_local const char *currentType = nullptr;
thread_local Failure last{};
thread_local char detailText[256];

}  // namespace

void nameType(const char *typeName) { currentType = typeName; }

void noteFailure(const char *field, size_t position, const char *expected) {
  last = {currentType, field, expected, position};
}

}  // namespace wmq

extern "C" const char *wmq_errdetail(void) {
  using wmq::detailText;
  using wmq::last;
  if (last.expected == nullptr) return "";
  std::snprintf(detailText, sizeof detailText, "%s%s%s%s at byte %zu: %s",
                last.typeName ? last.typeName : "header", last.field ? ", field " : "",
                last.field ? last.field : "", last.field || last.typeName ? "" : " of the line",
                last.position, last.expected);
  return detailText;
}
