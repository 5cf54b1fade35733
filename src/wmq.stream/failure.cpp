#include "wmq.stream/failure.h"

#include <cerrno>
#include <cstdio>

#include "wmq/event_types.h"

WMQ_THREAD_LOCAL int wmq_errno = 0;

namespace wmq {
namespace {

// Texts are put together only when somebody asks: failing must stay cheap on streams full of bad lines. That
// of a rotation, whose file names are gone by then, is made at once.
struct Failure {
  const char *typeName;
  const char *field;
  const char *expected;
  size_t position;
  bool isTextReady;
};

thread_local const char *currentType = nullptr;
thread_local Failure last{};
thread_local char detailText[256];

}  // namespace

void nameType(const char *typeName) { currentType = typeName; }

void noteFailure(const char *field, size_t position, const char *expected) {
  last = {currentType, field, expected, position, false};
}

void noteRotationFailure(const char *what, const char *fileName) {
  const int reason = errno;
  std::snprintf(detailText, sizeof detailText, "rotation: %s%s%s", what, *fileName == '\0' ? "" : " ",
                fileName);
  last = {nullptr, nullptr, nullptr, 0, true};
  errno = reason;
}

void forgetFailure() { last = {}; }

}  // namespace wmq

extern "C" const char *wmq_errdetail(void) {
  using wmq::detailText;
  using wmq::last;
  if (last.isTextReady) return detailText;
  if (last.expected == nullptr) return "";
  std::snprintf(detailText, sizeof detailText, "%s%s%s%s at byte %zu: %s",
                last.typeName ? last.typeName : "header", last.field ? ", field " : "",
                last.field ? last.field : "", last.field || last.typeName ? "" : " of the line",
                last.position, last.expected);
  return detailText;
}
