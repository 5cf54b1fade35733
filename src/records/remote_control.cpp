// The functions for embedded remote job control records.
#include "records/remote_control_layouts.h"
#include "wmq.stream/line_parser.h"

namespace wmq {
namespace {

template <typename R>
int writeEmbedded(FILE *file, const R *record) {
  static constexpr RecordCodec codec = recordCodec<R>();
  return writeFields(file, codec, record, false);
}

template <typename R>
int readEmbedded(char **position, R *record) {
  if (position == nullptr || *position == nullptr || record == nullptr) return WMQE_BAD_ARG;
  Reader io{.line = *position,
            .fields = *position,
            .cursor = *position,
            .end = *position + std::strlen(*position),
            .gates = openGatesOf(version),
            .eventTime = 0};
  record->ctrlName2 = nullptr;
  layout(io, *record);
  if (record->ctrlName2 != nullptr) *position += io.cursor - io.line;  // behind the two names, or further
  return resultOf(io);
}

template <typename R>
void releaseEmbedded(R *record) {
  Releaser io{};
  if (record != nullptr) layout(io, *record);
}

}  // namespace
}  // namespace wmq

int writeRmtJobCtrlRecord2File(FILE *file, const oldRmtJobCtrlRecord *record) {
  return wmq::writeEmbedded(file, record);
}

int writeNewRmtJobCtrlRecord2File(FILE *file, const newRmtJobCtrlRecord *record) {
  return wmq::writeEmbedded(file, record);
}

int readRmtJobCtrlRecordFromLine(char **position, oldRmtJobCtrlRecord *record) {
  return wmq::readEmbedded(position, record);
}

int readNewRmtJobCtrlRecordFromLine(char **position, newRmtJobCtrlRecord *record) {
  return wmq::readEmbedded(position, record);
}

void freeRmtJobCtrlRecord(oldRmtJobCtrlRecord *record) { wmq::releaseEmbedded(record); }

void freeRmtJobCtrlRecord2(newRmtJobCtrlRecord *record) { wmq::releaseEmbedded(record); }
