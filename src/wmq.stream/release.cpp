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
  const KeepingAll all;
  const RecordCodec *codec = eventType(record->type).codec;
  if (codec != nullptr) codec->release(how, &record->eventLog);
}

void releaseAllButFigures(eventRecord *record) {
  for (const bool kept : {true, false}) releaseRecord(record, {.kept = kept, .leavesCounts = true});
}

}  // namespace wmq

void freeLogRec(eventRecord *record) { wmq::releaseRecord(record, {.kept = false}); }

void wmq_freekept(eventRecord *record) { wmq::releaseRecord(record, {.kept = true}); }

void wmq_freelogrec(eventRecord *record) {
  freeLogRec(record);
  wmq::giveBlock(record);
}
