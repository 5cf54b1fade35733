// The status and pending-reasons streams: each carries one type only, and drops most others without a word.
#include <cstring>

#include "wmq.stream/failure.h"
#include "wmq.stream/line_format.h"
#include "wmq.stream/stream_frames.h"
#include "wmq.stream/type_table.h"

namespace wmq {
namespace {

constexpr StreamKind statusKind{.noun = "status",
                                .defaultPath = "/tmp/wmq.status",
                                .openLabel = "wmq_openstatus()",
                                .resetLabel = "resetstatus()",
                                .closeLabel = "wmq_closestatus()",
                                .type = EVENT_JOB_STATUS2,
                                .keepsDefaultPath = false};
constexpr StreamKind pendingReasonsKind{.noun = "pendingreasons",
                                        .defaultPath = "/tmp/wmq.pendingreasons",
                                        .openLabel = "wmq_openpendingreasons()",
                                        .resetLabel = "resetpendingreasons()",
                                        .closeLabel = "wmq_closependingreasons()",
                                        .type = EVENT_JOB_PENDING_REASONS,
                                        .keepsDefaultPath = true};

PutLine putStatusLine;
PutLine putPendingReasonsLine;

struct SideStream {
  const StreamKind &kind;
  PutLine *putLine;
  streamFile *file = nullptr;
  int writes = 0;  // since the last check; lives as long as the process

  Writing writing() { return {.putLine = putLine, .writes = writes, .tellsRemoval = false}; }
};

SideStream status{.kind = statusKind, .putLine = putStatusLine};
SideStream pendingreasons{.kind = pendingReasonsKind, .putLine = putPendingReasonsLine};

// Unlike the event stream, another path, or none, closes what is open and opens anew.
int open(SideStream &side, const streamParams *params, char *streamParams::*pathMember) {
  if (params == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  const char *const path = params->*pathMember;
  if (side.file != nullptr) {
    if (path != nullptr && std::strcmp(path, side.file->fileName) == 0) return 0;
    closeStream(side.file);
  }
  side.file = openFile(side.kind, path, *params);
  return side.file != nullptr ? 0 : -1;
}

// Types that a side stream refuses. All others but its own are dropped with success.
bool isRefused(int32_t type, const StreamKind &kind) {
  switch (type) {
    case 0:
    case EVENT_JOB_STATUS:
    case 31:
    case 33:
    case 50:
    case EVENT_END_OF_STREAM:
    case 59:
    case EVENT_JOB_RESIZE:
    case 66:
    case 67:
    case EVENT_JOB_PENDING_REASONS:
    case 76:
      return type != kind.type;
    default:
      return type < 0 || type > WMQ_MAX_EVENT_TYPE;
  }
}

int putSideLine(Writer &io, eventRecord &record, const StreamKind &kind) {
  if (isRefused(record.type, kind)) {
    nameType(eventType(record.type).name);
    noteFailure(nullptr, 0, "a type that this stream does not refuse");
    wmq_errno = WMQE_BAD_EVENT;
    return -1;
  }
  if (record.type != kind.type) {
    wmq_errno = 0;
    return 0;
  }
  putFields(io, eventType(record.type), record);
  wmq_errno = io.error;
  return io.error == 0 ? 0 : -1;
}

int putStatusLine(Writer &io, eventRecord &record) { return putSideLine(io, record, statusKind); }
int putPendingReasonsLine(Writer &io, eventRecord &record) {
  return putSideLine(io, record, pendingReasonsKind);
}

}  // namespace
}  // namespace wmq

int wmq_openstatus(const streamParams *params) {
  return wmq::open(wmq::status, params, &streamParams::statusFileName);
}

int wmq_writestatus(eventRecord *record) {
  return wmq::writeRecord(wmq::status.file, wmq::status.writing(), record);
}

int wmq_writestatusbatch(eventRecord *const *records, size_t count, size_t *written) {
  return wmq::writeBatch(wmq::status.file, wmq::status.writing(), records, count, written);
}

int wmq_syncstatus(void) { return wmq::syncStream(wmq::status.file); }

eventRecord *wmq_readstatus(int *lineNum) { return wmq::readRecord(wmq::status.file, lineNum); }

int wmq_closestatus(void) { return wmq::closeStream(wmq::status.file); }

int wmq_checkstatusfilenum(const char *path, int32_t fileCount) {
  return wmq::checkstreamfilenum(path, fileCount);
}

int wmq_formatstatus(eventRecord *record, char **text, size_t *length) {
  return wmq::formatLine(record, text, length, wmq::putStatusLine);
}

int wmq_openpendingreasons(const streamParams *params) {
  return wmq::open(wmq::pendingreasons, params, &streamParams::pendingReasonsFileName);
}

int wmq_writependingreasons(eventRecord *record) {
  return wmq::writeRecord(wmq::pendingreasons.file, wmq::pendingreasons.writing(), record);
}

int wmq_writependingreasonsbatch(eventRecord *const *records, size_t count, size_t *written) {
  return wmq::writeBatch(wmq::pendingreasons.file, wmq::pendingreasons.writing(), records, count, written);
}

int wmq_syncpendingreasons(void) { return wmq::syncStream(wmq::pendingreasons.file); }

eventRecord *wmq_readpendingreasons(int *lineNum) {
  return wmq::readRecord(wmq::pendingreasons.file, lineNum);
}

int wmq_closependingreasons(void) { return wmq::closeStream(wmq::pendingreasons.file); }

int wmq_formatpendingreasons(eventRecord *record, char **text, size_t *length) {
  return wmq::formatLine(record, text, length, wmq::putPendingReasonsLine);
}
