// The writing codec: a record's fields as the text of a line.
//
// The line is built in a buffer and handed to the file in one write. The first failure sticks: what follows
// writes nothing, and what was built up to then is still handed over.
#ifndef WMQ_STREAM_WRITER_H
#define WMQ_STREAM_WRITER_H

#include <cstdio>
#include <cstring>

#include "companion/numbers.h"
#include "wmq.stream/presence.h"
#include "wmq/records/shapes.h"

namespace wmq {

struct Writer {
  char *text = nullptr;
  size_t size = 0;
  size_t end = 0;  // of what may be written to: of the memory, or 0 after a failure
  size_t capacity = 0;
  size_t begin = 0;  // of the line that is being built, behind others that wait
  int error = 0;
  bool full = false;  // there was no memory for more
  bool kept = false;  // the memory is freed when the thread ends
};

// The buffer of this thread, emptied. It is kept between lines up to a bound; finishLine gives back a larger
// one, and one that the end of the thread would not free.
inline constexpr size_t kKeptCapacity = size_t{1} << 20;
Writer &beginLine();
void beginNextLine(Writer &io);
void giveBack(Writer &io);
inline void finishLine(Writer &io) {
  if (!io.kept || io.capacity > kKeptCapacity) giveBack(io);
}

// Hands what was built to `file`; returns 0, the writer's error, or WMQE_SYS.
int handOver(Writer &io, FILE *file);

// ------------------------------------------------------------------ primitives

[[gnu::cold]] void fail(Writer &io, int error, const char *field, const char *expected);
[[gnu::cold]] char *grow(Writer &io, size_t bytes);

// Where so many bytes may be put; null after a failure. `io.size` is the caller's to advance.
inline char *room(Writer &io, size_t bytes) {
  return io.size + bytes <= io.end ? io.text + io.size : grow(io, bytes);
}
void put(Writer &io, const char *text, size_t length);
inline void put(Writer &io, std::string_view text) { put(io, text.data(), text.size()); }
inline void putByte(Writer &io, char byte) {
  if (char *out = room(io, 1)) {
    *out = byte;
    ++io.size;
  }
}
void putInteger(Writer &io, int64_t value);                    // behind a blank
void putQuotedInteger(Writer &io, int64_t value);              // behind a blank, in quotes
void putQuotedFixed(Writer &io, double value, int precision);  // behind a blank, in quotes
void putQuoted(Writer &io, const char *text);                  // behind a blank; null as ""
void putHosts(Writer &io, int32_t count, char *const *hosts, const char *field, bool withCount = true);
void putCompressedCount(Writer &io, int32_t count, char *const *hosts, const char *field);
void putUsage(Writer &io, const wmxRusage &usage);
void putSubmitExt(Writer &io, const submitExt *extension);
void putNamedValues(Writer &io, const namedValueList *list);
void putAffinity(Writer &io, const affinityAlloc *allocation, const char *field);
void putRanges(Writer &io, int32_t count, const int32_t *start, const int32_t *end, const int32_t *step);
void putLimits(Writer &io, const int32_t *limits, int from, int to, bool converted);
bool arrayGiven(Writer &io, int64_t count, const void *array,
                const char *field);  // fails for count without array
bool rangesGiven(Writer &io, int32_t count, const int32_t *start, const int32_t *end, const int32_t *step);

// ----------------------------------------------------------------------- verbs

inline void put(Writer &io, int32_t value) { putInteger(io, value); }
inline void put(Writer &io, int64_t value) { putInteger(io, value); }

// A number behind a blank, at `out`, which has so much room; returns its end.
inline constexpr size_t kIntegerRoom = 25;
char *integerBehindBlank(char *out, int64_t value);
inline constexpr size_t kFixedRoom = 401;
inline char *fixedBehindBlank(char *out, double value, int width, int precision) {
  *out = ' ';
  return formatFixed(out + 1, value, width, precision);
}

template <auto F>
struct NumberForm;

template <typename Form, typename L>
concept CanFail = requires(Writer &io, const L &log) {
  Form::write(io, log);
};

template <typename Form>
constexpr size_t roomOf() {
  if constexpr (Form::integer)
    return kIntegerRoom;
  else
    return Form::room;
}

template <typename Form>
char *numberInto(char *out, const auto &log) {
  if constexpr (Form::integer)
    return integerBehindBlank(out, Form::value(log));
  else
    return Form::into(out, log);
}

// Numbers that stand side by side are written in place, unless one of them can fail.
template <auto... Fs, typename L>
void putNumbers(Writer &io, const L &log) {
  if constexpr ((CanFail<NumberForm<Fs>, L> || ...)) {
    if constexpr (sizeof...(Fs) == 1)
      (NumberForm<Fs>::write(io, log), ...);
    else
      (putNumbers<Fs>(io, log), ...);
  } else if constexpr (sizeof...(Fs) == 1 && (NumberForm<Fs>::integer && ...)) {
    (putInteger(io, NumberForm<Fs>::value(log)), ...);
  } else {
    char *out = room(io, (roomOf<NumberForm<Fs>>() + ...));
    if (out == nullptr) return;
    ((out = numberInto<NumberForm<Fs>>(out, log)), ...);
    io.size = static_cast<size_t>(out - io.text);
  }
}

template <auto... Fs, typename When = Gate, typename Absent = int>
void numbers(Writer &io, const auto &log, const When &when = always, const Absent & /*absent*/ = 0) {
  if (isWritten(log, when)) putNumbers<Fs...>(io, log);
}

template <auto F, typename When = Gate, typename Absent = int>
void number(Writer &io, const auto &log, const When &when = always, const Absent & /*absent*/ = 0) {
  numbers<F>(io, log, when);
}

template <auto F>
void numberAgainIfTextRemains(Writer &io, const auto &log, const auto &when) {
  number<F>(io, log, when);
}

template <auto... Fs>
void numbersWithoutSkip(Writer &io, const auto &log, const auto &when, const auto &...) {
  numbers<Fs...>(io, log, when);
}

template <auto F>
void lenientNumber(Writer &io, const auto &log, const auto &when) {
  number<F>(io, log, when);
}

template <auto M, typename When = Gate, typename Absent = int>
void text(Writer &io, const auto &log, const When &when = always, const Absent & /*absent*/ = 0) {
  if (isWritten(log, when)) putQuoted(io, log.*M);
}

template <auto M, typename When = Gate>
void name(Writer &io, const auto &log, const When &when = always) {
  text<M>(io, log, when);
}

template <auto M, typename When = Gate>
void nameOrEmpty(Writer &io, const auto &log, const When &when = always) {
  text<M>(io, log, when);
}

template <auto M>
void cutText(Writer &io, const auto &log, const auto & /*when*/) {
  text<M>(io, log);
}

template <auto M>
void boundedText(Writer &io, const auto &log, const auto & /*when*/, size_t /*limit*/) {
  text<M>(io, log);
}

template <auto M>
void keptText(Writer &io, const auto &log) {
  text<M>(io, log);
}

template <auto M, auto UserId>
void userName(Writer &io, const auto &log, const char * /*reader*/, bool /*unknownAllowed*/ = false) {
  text<M>(io, log);
}

template <auto M>
void rawText(Writer &io, const auto &log) {
  put(io, " \"");
  if (log.*M) put(io, std::string_view(log.*M));
  put(io, "\"");
}

template <auto M>
void rawWord(Writer &io, const auto &log, size_t /*limit*/) {
  put(io, " ");
  if (log.*M) put(io, std::string_view(log.*M));
}

template <auto M, typename When = Gate>
void newlinesToBlanks(Writer &io, auto &log, const When &when = always) {
  if (io.error == 0 && isWritten(log, when)) subNewLine_(log.*M);
}

template <auto Count, auto Array>
void elements(Writer &io, const auto &log, int /*noMemory*/ = 0) {
  if (!arrayGiven(io, log.*Count, log.*Array, nameOf<Array>)) return;
  for (int64_t i = 0; i < log.*Count && io.error == 0; ++i) element(io, (log.*Array)[i]);
}

inline void element(Writer &io, char *text) { putQuoted(io, text); }
inline void element(Writer &io, int32_t value) { putInteger(io, value); }
inline void element(Writer &io, int64_t value) { putInteger(io, value); }
void element(Writer &io, auto &entry) { layout(io, entry); }

template <auto Count, auto... Arrays>
void parallelElements(Writer &io, const auto &log, int /*noMemory*/) {
  if (!(arrayGiven(io, log.*Count, log.*Arrays, nameOf<Arrays>) && ...)) return;
  for (int32_t i = 0; i < log.*Count && io.error == 0; ++i) (putInteger(io, (log.*Arrays)[i]), ...);
}

template <auto Count, auto Array, typename When = Gate>
void list(Writer &io, auto &log, const When &when = always, int /*noMemory*/ = WMQE_NO_MEM) {
  if (!isWritten(log, when)) return;
  putInteger(io, log.*Count);
  elements<Count, Array>(io, log);
}

template <auto Count, auto Array>
void readList(Writer &io, auto &log, const auto & /*when*/) {
  log.*Count = 0;
  putInteger(io, 0);
}

template <auto Count, auto Array>
void unwrittenRawPairs(Writer &io, const auto & /*log*/) {
  put(io, " 0");
}

template <auto Count, auto Array, HostRule Rule = HostRule{}, typename When = Gate>
void hosts(Writer &io, const auto &log, const When &when = always) {
  if (!isWritten(log, when)) return;
  if constexpr (Rule.compressed) {
    putHosts(io, static_cast<int32_t>(log.*Count), log.*Array, nameOf<Array>, !Rule.countWritten);
  } else {
    if constexpr (!Rule.countBefore) putInteger(io, log.*Count);
    elements<Count, Array>(io, log);
  }
}

template <auto Count, auto Array>
void completeNumbers(Writer &io, const auto &log) {
  elements<Count, Array>(io, log);
}

template <auto Count, auto Array, auto OtherCount, auto Other>
void hostsUnlessCopy(Writer &io, const auto &log, const auto & /*when*/) {
  if (log.*Count == log.*OtherCount) {
    putInteger(io, 0);
  } else {
    putHosts(io, log.*Count, log.*Array, nameOf<Array>);
  }
}

template <auto Count, auto Array, auto OtherCount, auto Other>
void slotsOrCopy(Writer &io, const auto &log, const auto & /*when*/) {
  putInteger(io, log.*Count);
  if (!arrayGiven(io, log.*Count, log.*Array, nameOf<Array>)) return;
  for (int64_t i = 0; i < log.*Count; ++i) {
    const char *slot = (log.*Array)[i];
    if (slot == nullptr || *slot == '\0')
      return fail(io, WMQE_SYS, nameOf<Array>, "a host name for every slot");
    putQuoted(io, slot);
  }
}

template <auto M, typename When = Gate>
void usage(Writer &io, const auto &log, const When &when = always) {
  if (isWritten(log, when)) putUsage(io, log.*M);
}

template <auto M>
void extension(Writer &io, const auto &log, const auto & /*when*/) {
  putSubmitExt(io, log.*M);
}

template <auto M>
void namedList(Writer &io, const auto &log, const auto & /*when*/) {
  putNamedValues(io, log.*M);
}

template <auto M>
void affinity(Writer &io, const auto &log, const auto & /*when*/) {
  putAffinity(io, log.*M, nameOf<M>);
}

template <Ranges Rule>
void indexRanges(Writer &io, const auto &log, const auto & /*when*/) {
  putInteger(io, log.indexRangeCnt);
  if (log.indexRangeCnt > 0)
    putRanges(io, log.indexRangeCnt, log.indexRangeStart, log.indexRangeEnd, log.indexRangeStep);
}

template <auto M, int From, int To, typename When = Gate>
void limits(Writer &io, const auto &log, const When & /*when*/ = always, bool converted = false) {
  putLimits(io, log.*M, From, To, converted);
}

template <auto M>
void limitsFromLine(Writer &, const auto &, bool /*converted*/) {}

template <auto... Ms>
void forgottenUnless(Writer &, const auto &, Gate) {}

template <auto M>
void fromHeader(Writer &, const auto &) {}

template <auto M>
void computed(Writer &, const auto &, const auto & /*compute*/) {}

template <auto M>
void unset(Writer &, const auto &) {}

template <auto Count, auto Array>
void listOffLine(Writer &, const auto &) {}

template <auto M>
void embedded(Writer &io, auto &log, const auto &when) {
  if (isWritten(log, when)) layout(io, log.*M);
}

template <auto M, int Elder, typename When>
void fixedNumbers(Writer &io, const auto &log, const When & /*when*/) {
  for (const int32_t value : log.*M) putInteger(io, value);
}

template <auto M>
void stopIfZero(Writer &, const auto &) {}

inline void fromFirstField(Writer &) {}

template <auto Count>
void negativeFails(Writer &, const auto &) {}

inline void withoutSkips(Writer &) {}

inline void trailingBlank(Writer &io) { putByte(io, ' '); }

}  // namespace wmq

#endif
