// The releasing codec: frees what a record owns, sets pointers to null and counts to 0.
//
// With `kept` set it frees instead what release keeps by design, and nothing else. Counts can be left to tell
// how many there were.
#ifndef WMQ_STREAM_RELEASER_H
#define WMQ_STREAM_RELEASER_H

#include <cstdlib>

#include "companion/block_cache.h"
#include "wmq.stream/presence.h"
#include "wmq/records/shapes.h"

namespace wmq {

struct Releaser {
  bool kept = false;
  bool leavesCounts = false;
};

template <typename T>
void release(T *&owned) {
  if (owned == nullptr) return;
  giveBlock(owned);
  owned = nullptr;
}

template <auto Count>
void resetCount(const Releaser &io, auto &log) {
  if (!io.leavesCounts) log.*Count = 0;
}

void releaseStrings(int64_t count, char **&array);
void releaseNamedValues(namedValueList *&list);
void releaseAffinity(affinityAlloc *&allocation);
void releaseSubmitExt(submitExt *&extension);
void releaseNetwork(int32_t count, networkAlloc *&allocations);

// ----------------------------------------------------------------------- verbs

template <auto... Fs>
void numbers(Releaser &, const auto &, const auto &...) {}
template <auto F>
void number(Releaser &, const auto &, const auto &...) {}
template <auto F>
void numberAgainIfTextRemains(Releaser &, const auto &, const auto &) {}
template <auto... Fs>
void numbersWithoutSkip(Releaser &, const auto &, const auto &...) {}
template <auto F>
void lenientNumber(Releaser &, const auto &, const auto &) {}

template <auto M>
void text(Releaser &io, auto &log, const auto &...) {
  if (!io.kept) release(log.*M);
}
template <auto M>
void name(Releaser &, const auto &, const auto &...) {}
template <auto M>
void nameOrEmpty(Releaser &, const auto &, const auto &...) {}
template <auto M>
void cutText(Releaser &, const auto &, const auto & /*when*/) {}
template <auto M>
void boundedText(Releaser &io, auto &log, const auto & /*when*/, size_t /*limit*/) {
  text<M>(io, log);
}
template <auto M>
void keptText(Releaser &io, auto &log) {
  if (io.kept) release(log.*M);
}
template <auto M, auto UserId>
void userName(Releaser &, const auto &, const auto &...) {}
template <auto M>
void rawText(Releaser &io, auto &log) {
  text<M>(io, log);
}
template <auto M>
void rawWord(Releaser &io, auto &log, size_t /*limit*/) {
  text<M>(io, log);
}
template <auto M>
void newlinesToBlanks(Releaser &, const auto &, const auto &...) {}

inline void releaseElements(int64_t count, char **&array) { releaseStrings(count, array); }
inline void releaseElements(int64_t, int32_t *&array) { release(array); }
inline void releaseElements(int64_t, int64_t *&array) { release(array); }
template <typename Element>
void releaseElements(int64_t count, Element *&array) {
  Releaser io{.kept = false};
  for (int64_t i = 0; array != nullptr && i < count; ++i) layout(io, array[i]);
  release(array);
}

template <auto Count, auto Array>
void elements(Releaser &io, auto &log, int /*noMemory*/ = 0) {
  if (io.kept) return;
  if (log.*Array != nullptr) releaseElements(log.*Count, log.*Array);
  resetCount<Count>(io, log);
}
template <auto Count, auto Array>
void list(Releaser &io, auto &log, const auto &...) {
  elements<Count, Array>(io, log);
}
template <auto Count, auto Array>
void readList(Releaser &io, auto &log, const auto & /*when*/) {
  if (!io.kept) return;
  if (log.*Array != nullptr) releaseElements(log.*Count, log.*Array);
  resetCount<Count>(io, log);
}
template <auto Count, auto Array>
void unwrittenRawPairs(Releaser &io, auto &log) {
  elements<Count, Array>(io, log);
}
template <auto Count, auto... Arrays>
void parallelElements(Releaser &io, auto &log, int /*noMemory*/) {
  if (io.kept) return;
  (release(log.*Arrays), ...);
  resetCount<Count>(io, log);
}
template <auto Count, auto Array>
void completeNumbers(Releaser &io, auto &log) {
  elements<Count, Array>(io, log);
}
template <auto Count, auto Array, HostRule Rule = HostRule{}>
void hosts(Releaser &io, auto &log, const auto &...) {
  elements<Count, Array>(io, log);
}
template <auto Count, auto Array, auto OtherCount, auto Other>
void hostsUnlessCopy(Releaser &io, auto &log, const auto & /*when*/) {
  elements<Count, Array>(io, log);
}
template <auto Count, auto Array, auto OtherCount, auto Other>
void slotsOrCopy(Releaser &io, auto &log, const auto & /*when*/) {
  elements<Count, Array>(io, log);
}
template <auto Count, auto Array>
void listOffLine(Releaser &io, auto &log) {
  elements<Count, Array>(io, log);
}

template <auto M>
void usage(Releaser &, const auto &, const auto &...) {}
template <auto M>
void extension(Releaser &io, auto &log, const auto & /*when*/) {
  if (!io.kept) releaseSubmitExt(log.*M);
}
template <auto M>
void namedList(Releaser &io, auto &log, const auto & /*when*/) {
  if (!io.kept) releaseNamedValues(log.*M);
}
template <auto M>
void affinity(Releaser &io, auto &log, const auto &...) {
  if (!io.kept) releaseAffinity(log.*M);
}

// The arrays of a block are one allocation, which begins with the first.
template <Ranges Rule>
void indexRanges(Releaser &io, auto &log, const auto & /*when*/) {
  const bool keptByRelease = Rule == Ranges::keptBlock;
  if (io.kept != keptByRelease) return;
  if constexpr (Rule == Ranges::block || Rule == Ranges::keptBlock) {
    log.indexRangeEnd = nullptr;
    log.indexRangeStep = nullptr;
  }
  release(log.indexRangeStart);
  release(log.indexRangeEnd);
  release(log.indexRangeStep);
  if (!io.leavesCounts) log.indexRangeCnt = 0;
}

template <auto M, int From, int To>
void limits(Releaser &, const auto &, const auto &...) {}
template <auto M>
void limitsFromLine(Releaser &, const auto &, bool) {}
template <auto... Ms>
void forgottenUnless(Releaser &, const auto &, Gate) {}
template <auto M>
void fromHeader(Releaser &, const auto &) {}
template <auto M>
void computed(Releaser &, const auto &, const auto &) {}
template <auto M>
void unset(Releaser &, const auto &) {}
template <auto M>
void embedded(Releaser &io, auto &log, const auto & /*when*/) {
  layout(io, log.*M);
}
template <auto M, int Elder>
void fixedNumbers(Releaser &, const auto &, const auto & /*when*/) {}
template <auto M>
void stopIfZero(Releaser &, const auto &) {}
inline void fromFirstField(Releaser &) {}
template <auto Count>
void negativeFails(Releaser &, const auto &) {}

inline void withoutSkips(Releaser &) {}

inline void trailingBlank(Releaser &) {}

}  // namespace wmq

#endif
