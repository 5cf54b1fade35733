#include "wmq.stream/release.h"

#include "companion/block_cache.h"
#include "wmq.stream/type_table.h"
#include "wmq/stream.h"

namespace wmq {

void releaseFields(const RecordCodec &codec, void *log) {
  Releaser io{};
  if (log != nullptr) codec.release(io, log);
}

static void releaseRecord(eventRecord *record, Releaser how) {
  if (record == nullptr) return;
  const RecordCodec *codec = eventType(record->type).codec;
  if (codec != nullptr) codec->release(how, &record->eventLog);
}

void releaseAllButFigures(eventRecord *record) {
  const KeepingAll all;
  for (const bool kept : {true, false}) releaseRecord(record, {.kept = kept, .leavesCounts = true});
}

}  // namespace wmq

void freeLogRec(eventRecord *record) {
  const wmq::KeepingAll all;
  wmq::releaseRecord(record, {.kept = false});
}

// Seldom anything, and never so much that the thread would have to make room for it.
void wmq_freekept(eventRecord *record) { wmq::releaseRecord(record, {.kept = true}); }

void wmq_freelogrec(eventRecord *record) {
  const wmq::KeepingAll all;
  wmq::releaseRecord(record, {.kept = false});
  wmq::giveBlock(record);
}
