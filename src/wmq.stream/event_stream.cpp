// The event stream.
#include "wmq.stream/stream_frames.h"

namespace wmq {

static int nrecord = 0;  // lives as long as the process, whatever is opened and closed
static constexpr Writing writing{.putLine = putEventLine, .writes = nrecord, .tellsRemoval = true};

}  // namespace wmq

const char *wmq_streamversion(void) { return WMQ_FORMAT_VERSION; }

int wmq_openstream(const streamParams *params) {
  if (params == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  if (wmq::stream != nullptr) return 0;
  wmq::stream = wmq::openFile(wmq::eventStreamKind, params->fileName, *params);
  return wmq::stream != nullptr ? 0 : -1;
}

int wmq_writestream(eventRecord *record) { return wmq::writeRecord(wmq::stream, wmq::writing, record); }

int wmq_writestreambatch(eventRecord *const *records, size_t count, size_t *written) {
  return wmq::writeBatch(wmq::stream, wmq::writing, records, count, written);
}

int wmq_syncstream(void) { return wmq::syncStream(wmq::stream); }

int wmq_formatrecord(eventRecord *record, char **text, size_t *length) {
  return wmq::formatLine(record, text, length, wmq::putEventLine);
}

eventRecord *wmq_readstream(int *lineNum) { return wmq::readRecord(wmq::stream, lineNum); }

int wmq_closestream(void) { return wmq::closeStream(wmq::stream); }
