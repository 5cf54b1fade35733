#include "companion/block_cache.h"
#include "wmq.stream/type_table.h"
#include "wmq/stream.h"

namespace wmq {

void releaseFields(const RecordCodec &codec, void *log) {
  Releaser io{};
  if (log != nullptr) codec.release(io, log);
}

static void releaseRecord(eventRecord *record, bool kept) {
  if (record == nullptr) return;
  const RecordCodec *codec = eventType(record->type).codec;
  if (codec == nullptr) return;
  Releaser io{.kept = kept};
  codec->release(io, &record->eventLog);
}

}  // namespace wmq

void freeLogRec(eventRecord *record) { wmq::releaseRecord(record, false); }

void wmq_freekept(eventRecord *record) { wmq::releaseRecord(record, true); }

void wmq_freelogrec(eventRecord *record) {
  freeLogRec(record);
  wmq::giveBlock(record);
}
