// The reading codec: the fields of a line back into a record.
//
// The cursor skips one character behind every field, never beyond the end of the line. The first failure
// sticks: what follows reads nothing. At every moment the record can be released.
//
// A reader that does not keep texts finds the same faults, numbers, names in place and counts, and leaves
// null where a text or a list of texts would be: those who only want figures pay for no memory.
#ifndef WMQ_STREAM_READER_H
#define WMQ_STREAM_READER_H

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "wmq.stream/presence.h"
#include "wmq.stream/releaser.h"
#include "wmq/records/shapes.h"

namespace wmq {

// Hosts that all lists of one line may expand to together, CPUs that its affinity texts may stand for
// together, and unchecked ranges that are believed unseen.
inline constexpr int64_t kMaxHosts = 16777216;
inline constexpr int64_t kMaxCpus = 16777216;
inline constexpr int64_t kMaxUncheckedRanges = 1048576;

struct Reader {
  const char *line;    // for positions in messages
  const char *fields;  // behind the header
  const char *cursor;
  const char *end;  // the terminating NUL; some byte of the line where only its header is looked for
  OpenGates gates;
  int32_t eventTime;
  int error = 0;       // kStopped: the rest of the line is not read, with success
  int remembered = 0;  // an error that counts only when no other follows
  bool skips = true;   // one character behind every field
  bool keepsTexts = true;
  int64_t hostsLeft = kMaxHosts;
  int64_t cpusLeft = kMaxCpus;
};

inline constexpr int kStopped = -1;

// What reading came to, once the layout has run.
inline int resultOf(const Reader &io) {
  if (io.error == kStopped) return 0;
  return io.error != 0 ? io.error : io.remembered;
}

// Fewest bytes of a line that an element of a list can take, the blank before it included: what bounds a
// count.
template <typename Element>
inline constexpr size_t leastBytes = 2;
template <>
inline constexpr size_t leastBytes<char *> = 3;

// ------------------------------------------------------------------ primitives

void fail(Reader &io, int error, const char *field, const char *expected);
inline const char *behindBlank(const Reader &io, const char *at) { return at + (io.skips && at < io.end); }
inline void skipBlank(Reader &io) { io.cursor = behindBlank(io, io.cursor); }

// Convert what stands at `at`; the position right behind it, or null if nothing converts. From one number to
// the next it stays in a register, where memory would cost more than the number.
const char *scan(const Reader &io, const char *at, int64_t &value);
const char *scan(const Reader &io, const char *at, int32_t &value);
const char *scan(const Reader &io, const char *at, float &value);
const char *scanUnsigned(const Reader &io, const char *at, int64_t &value);  // held bit for bit

// The same at the cursor, which is left right behind; false, with the cursor where it was, if nothing
// converts.
bool scan(Reader &io, auto &value) {
  const char *const after = scan(io, io.cursor, value);
  if (after == nullptr) return false;
  io.cursor = after;
  return true;
}

// Fails at `at`, where no number converts. The cursor stays.
void failNumber(Reader &io, const char *at, const char *field);

// Read what stands at `at`; the position of the next field, to which the caller moves the cursor. After a
// failure both are `at`. Nothing may have failed before.
[[nodiscard]] const char *readText(Reader &io, const char *at, const char *field, char *&value);
[[nodiscard]] const char *readChars(Reader &io, const char *at, const char *field, char *array, size_t size,
                                    size_t minLength);

// The same at the cursor.
void readBoundedText(Reader &io, const char *field, char *&value, size_t limit);
void readCut(Reader &io, const char *field, char *array, size_t size);
void readWord(Reader &io, const char *field, char *&value, size_t limit);
void emptyText(Reader &io, const char *field, char *&value);
void readStrings(Reader &io, const char *field, int32_t &count, char **&array);
void copyStrings(Reader &io, const char *field, int32_t &count, char **&array, int32_t otherCount,
                 char *const *other);
void readHosts(Reader &io, const char *countField, const char *field, int32_t &count, char **&array,
               HostRule rule);
void readUserName(Reader &io, const char *field, char *name, int32_t userId, const char *reader);
void readExpanded(Reader &io, const char *field, int32_t &count, char **&array);
void readUsage(Reader &io, const char *field, wmxRusage &usage);
void readSubmitExt(Reader &io, const char *field, submitExt *&extension);
void readNamedValues(Reader &io, const char *field, namedValueList *&list);
void readAffinity(Reader &io, const char *field, affinityAlloc *&allocation);
void readRanges(Reader &io, Ranges rule, int32_t &count, int32_t *&start, int32_t *&end, int32_t *&step);

// A zeroed array for `count` elements; null after a failure, with the count set to 0. A count that the rest
// of the line cannot hold is malformed. `noMemory` is the number that a failed allocation gives.
void *allocateElements(Reader &io, const char *field, int64_t count, size_t elementSize, size_t leastBytes,
                       int noMemory);

// ----------------------------------------------------------------------- verbs

template <auto F>
struct NumberForm;

// What a number that the line lacks becomes: a value, or that of another member.
template <auto M>
struct ValueOf {};
template <auto M>
inline constexpr ValueOf<M> valueOf{};

inline int32_t absentValue(const auto & /*log*/, int32_t value) { return value; }
template <auto M>
auto absentValue(const auto &log, ValueOf<M>) {
  return log.*M;
}

struct Unchanged {};
inline constexpr Unchanged unchanged{};

template <auto F>
void setAbsent(auto &log, const auto &absent) {
  using Form = NumberForm<F>;
  if constexpr (requires { Form::absent; }) {
    log.*Form::member = Form::absent;
  } else if constexpr (!Form::kept) {
    log.*Form::member = static_cast<TypeOf<Form::member>>(absentValue(log, absent));
  }
}
template <auto F>
void setAbsent(auto & /*log*/, Unchanged) {}

template <auto F>
bool scanForm(Reader &io, auto &log, const char *&at) {
  using Form = NumberForm<F>;
  const char *const after = Form::read(io, at, log.*Form::member);
  if (after == nullptr) {
    failNumber(io, at, nameOf<Form::member>);
    return false;
  }
  at = after;
  return true;
}

template <auto... Fs, typename Absent = int>
void numbersWithoutSkip(Reader &io, auto &log, const auto &when, const Absent &absent = 0) {
  if (io.error != 0) return;
  if (!isOnLine(io.gates, log, when)) {
    (setAbsent<Fs>(log, absent), ...);
    return;
  }
  const char *at = io.cursor;
  if ((scanForm<Fs>(io, log, at) && ...)) io.cursor = at;
}

// Several numbers are converted together: between them stand blanks and nothing else. The cursor goes on only
// behind all of them.
template <auto... Fs, typename When = Gate, typename Absent = int>
void numbers(Reader &io, auto &log, const When &when = always, const Absent &absent = 0) {
  if (io.error != 0) return;
  if (!isOnLine(io.gates, log, when)) {
    (setAbsent<Fs>(log, absent), ...);
    return;
  }
  const char *at = io.cursor;
  if ((scanForm<Fs>(io, log, at) && ...)) io.cursor = behindBlank(io, at);
}

template <auto F, typename When = Gate, typename Absent = int>
void number(Reader &io, auto &log, const When &when = always, const Absent &absent = 0) {
  numbers<F>(io, log, when, absent);
}

// Only the end of the line means that no text remains: a line end or a blank is a malformed number. The
// cursor stays: a quoted string follows, and that is found wherever it begins.
template <auto F>
void numberAgainIfTextRemains(Reader &io, auto &log, const auto &when) {
  if (io.error != 0 || !isOnLine(io.gates, log, when) || io.cursor == io.end) return;
  const char *at = io.cursor;
  if (scanForm<F>(io, log, at)) io.cursor = at;
}

// A failed conversion is no error and gives 0; the cursor then stays.
template <auto F>
void lenientNumber(Reader &io, auto &log, const auto &when) {
  if (io.error != 0) return;
  using Form = NumberForm<F>;
  const char *const after =
      isOnLine(io.gates, log, when) ? Form::read(io, io.cursor, log.*Form::member) : nullptr;
  if (after != nullptr) {
    io.cursor = behindBlank(io, after);
  } else {
    log.*Form::member = 0;
  }
}

// What a string that the line lacks becomes.
struct Null {};
inline constexpr Null null{};

inline void setAbsentText(Reader &io, const char *field, char *&value, int /*empty*/) {
  emptyText(io, field, value);
}
inline void setAbsentText(Reader &, const char *, char *&, Null) {}

// A copy of another string.
template <auto M>
struct CopyOf {};
template <auto M>
inline constexpr CopyOf<M> copyOf{};

inline int absentString(const auto &, int empty) { return empty; }
inline Null absentString(const auto &, Null) { return {}; }
template <auto M>
const char *absentString(const auto &log, CopyOf<M>) {
  return log.*M;
}
void setAbsentText(Reader &io, const char *field, char *&value, const char *original);

template <auto M, typename When = Gate, typename Absent = int>
void text(Reader &io, auto &log, const When &when = always, const Absent &absent = 0) {
  if (io.error != 0) return;
  if (isOnLine(io.gates, log, when)) {
    io.cursor = readText(io, io.cursor, nameOf<M>, log.*M);
  } else {
    setAbsentText(io, nameOf<M>, log.*M, absentString(log, absent));
  }
}

template <auto M, typename When = Gate>
void name(Reader &io, auto &log, const When &when = always) {
  if (io.error == 0 && isOnLine(io.gates, log, when))
    io.cursor = readChars(io, io.cursor, nameOf<M>, log.*M, sizeof(TypeOf<M>), 1);
}

template <auto M, typename When = Gate>
void nameOrEmpty(Reader &io, auto &log, const When &when = always) {
  if (io.error == 0 && isOnLine(io.gates, log, when))
    io.cursor = readChars(io, io.cursor, nameOf<M>, log.*M, sizeof(TypeOf<M>), 0);
}

// Longer texts are cut.
template <auto M>
void cutText(Reader &io, auto &log, const auto &when) {
  if (io.error == 0 && isOnLine(io.gates, log, when)) readCut(io, nameOf<M>, log.*M, sizeof(TypeOf<M>));
}

// Longer strings are refused; a line that lacks the field leaves it as handed in.
template <auto M>
void boundedText(Reader &io, auto &log, const auto &when, size_t limit) {
  if (io.error == 0 && isOnLine(io.gates, log, when)) readBoundedText(io, nameOf<M>, log.*M, limit);
}

template <auto M>
void keptText(Reader &io, auto &log) {
  text<M>(io, log);
}

// Lines later than 4.0 carry the name; for others it is looked up. `unknownAllowed`: user id -1 is "unknown"
// then, without a look.
template <auto M, auto UserId>
void userName(Reader &io, auto &log, const char *reader, bool unknownAllowed = false) {
  static_assert(sizeof(TypeOf<M>) == WMQ_NAME_SIZE);
  if (io.error != 0) return;
  if (gateOpen(above(4.0F), io.gates)) {
    io.cursor = readChars(io, io.cursor, nameOf<M>, log.*M, WMQ_NAME_SIZE, 1);
  } else if (unknownAllowed && log.*UserId == -1) {
    std::strcpy(log.*M, "unknown");
  } else {
    readUserName(io, nameOf<M>, log.*M, log.*UserId, reader);
  }
}

template <auto M>
void rawText(Reader &io, auto &log) {
  text<M>(io, log);
}

template <auto M>
void rawWord(Reader &io, auto &log, size_t limit) {
  if (io.error == 0) readWord(io, nameOf<M>, log.*M, limit);
}

template <auto M, typename When = Gate>
void newlinesToBlanks(Reader &, const auto &, const When & /*when*/ = always) {}

bool scanElement(Reader &io, const char *field, auto &value) {
  if (scan(io, value)) return true;
  failNumber(io, io.cursor, field);
  return false;
}
void numberElement(Reader &io, const char *field, auto &value) {
  const char *const after = scan(io, io.cursor, value);
  if (after == nullptr) return failNumber(io, io.cursor, field);
  io.cursor = behindBlank(io, after);
}
inline void element(Reader &io, const char *field, int64_t &value) { numberElement(io, field, value); }
inline void element(Reader &io, const char *field, int32_t &value) { numberElement(io, field, value); }
void element(Reader &io, const char * /*field*/, auto &entry) { layout(io, entry); }

// Releases what a half-read entry holds: the count is cut to the entries that are complete.
inline void dropElement(int64_t &) {}
inline void dropElement(int32_t &) {}
void dropElement(auto &entry) {
  Releaser release{.kept = false};
  layout(release, entry);
}

template <auto Count, auto Array>
void elements(Reader &io, auto &log, int noMemory = WMQE_NO_MEM) {
  using Element = std::remove_pointer_t<TypeOf<Array>>;
  if (io.error != 0) return;
  auto &count = log.*Count;
  auto &array = log.*Array;
  array = nullptr;
  if constexpr (std::is_same_v<Element, char *>) {
    if (count > 0) readStrings(io, nameOf<Array>, count, array);
  } else {
    if (count <= 0) return;
    array = static_cast<Element *>(
        allocateElements(io, nameOf<Array>, count, sizeof(Element), leastBytes<Element>, noMemory));
    if (array == nullptr) {
      count = 0;
      return;
    }
    for (TypeOf<Count> i = 0; i < count; ++i) {
      element(io, nameOf<Array>, array[i]);
      if (io.error != 0) {
        dropElement(array[i]);
        count = i;
      }
    }
  }
}

// Arrays that travel side by side: their numbers are converted together, one of each at a time. The count is
// cut to the complete ones.
template <auto Count, auto... Arrays>
void parallelElements(Reader &io, auto &log, int noMemory) {
  if (io.error != 0) return;
  ((log.*Arrays = nullptr), ...);
  if (log.*Count <= 0) return;
  const int32_t count = log.*Count;
  ((log.*Arrays = static_cast<TypeOf<Arrays>>(allocateElements(
        io, nameOf<Arrays>, count, sizeof(*(log.*Arrays)), 2 * sizeof...(Arrays), noMemory))),
   ...);
  log.*Count = 0;
  for (; io.error == 0 && log.*Count < count; ++(log.*Count)) {
    const char *const begin = io.cursor;
    if (!(scanElement(io, nameOf<Arrays>, (log.*Arrays)[log.*Count]) && ...)) {
      io.cursor = begin;
      return;
    }
    skipBlank(io);
  }
}

template <auto Count, auto Array, typename When = Gate>
void list(Reader &io, auto &log, const When &when = always, int noMemory = WMQE_NO_MEM) {
  if (io.error != 0) return;
  if (!isOnLine(io.gates, log, when)) {
    log.*Count = 0;
    log.*Array = nullptr;
    return;
  }
  number<Count>(io, log);
  elements<Count, Array>(io, log, noMemory);
}

template <auto Count, auto Array>
void readList(Reader &io, auto &log, const auto &when) {
  list<Count, Array>(io, log, when);
}

template <auto Count, auto Array>
void unwrittenRawPairs(Reader &io, auto &log) {
  list<Count, Array>(io, log);
}

template <auto Count, auto Array, HostRule Rule = HostRule{}, typename When = Gate>
void hosts(Reader &io, auto &log, const When &when = always) {
  if (io.error != 0 || !isOnLine(io.gates, log, when)) return;
  if constexpr (!Rule.countBefore) number<Count>(io, log);
  auto count = static_cast<int32_t>(std::clamp<int64_t>(log.*Count, INT32_MIN, INT32_MAX));
  readHosts(io, nameOf<Count>, nameOf<Array>, count, log.*Array, Rule);
  log.*Count = count;
}

// The array reaches the record only when it is complete.
template <auto Count, auto Array>
void completeNumbers(Reader &io, auto &log) {
  if (io.error != 0 || log.*Count <= 0) return;
  using Element = std::remove_pointer_t<TypeOf<Array>>;
  auto *array = static_cast<Element *>(
      allocateElements(io, nameOf<Array>, log.*Count, sizeof(Element), leastBytes<Element>, WMQE_NO_MEM));
  for (int64_t i = 0; io.error == 0 && i < log.*Count; ++i) element(io, nameOf<Array>, array[i]);
  if (io.error == 0) {
    log.*Array = array;
  } else {
    giveBlock(array);
  }
}

template <auto Count, auto Array, auto OtherCount, auto Other>
void hostsUnlessCopy(Reader &io, auto &log, const auto &when) {
  if (io.error != 0) return;
  if (isOnLine(io.gates, log, when)) {
    number<Count>(io, log);
    if (io.error != 0) log.*Count = 0;
    if (log.*Count != 0) return readExpanded(io, nameOf<Array>, log.*Count, log.*Array);
  }
  copyStrings(io, nameOf<Array>, log.*Count, log.*Array, log.*OtherCount, log.*Other);
}

template <auto Count, auto Array, auto OtherCount, auto Other>
void slotsOrCopy(Reader &io, auto &log, const auto &when) {
  if (io.error != 0) return;
  if (isOnLine(io.gates, log, when)) return list<Count, Array>(io, log);
  copyStrings(io, nameOf<Array>, log.*Count, log.*Array, log.*OtherCount, log.*Other);
}

template <auto M, typename When = Gate>
void usage(Reader &io, auto &log, const When &when = always) {
  if (io.error == 0 && isOnLine(io.gates, log, when)) readUsage(io, nameOf<M>, log.*M);
}

template <auto M>
void extension(Reader &io, auto &log, const auto &when) {
  if (io.error != 0) return;
  log.*M = nullptr;
  if (isOnLine(io.gates, log, when)) readSubmitExt(io, nameOf<M>, log.*M);
}

template <auto M>
void namedList(Reader &io, auto &log, const auto &when) {
  if (io.error != 0) return;
  log.*M = nullptr;
  if (isOnLine(io.gates, log, when)) readNamedValues(io, nameOf<M>, log.*M);
}

template <auto M>
void affinity(Reader &io, auto &log, const auto &when) {
  if (io.error != 0) return;
  log.*M = nullptr;
  if (isOnLine(io.gates, log, when)) readAffinity(io, nameOf<M>, log.*M);
}

template <Ranges Rule>
void indexRanges(Reader &io, auto &log, const auto &when) {
  if (Rule == Ranges::writtenOnly || io.error != 0) return;
  if (isOnLine(io.gates, log, when)) {
    readRanges(io, Rule, log.indexRangeCnt, log.indexRangeStart, log.indexRangeEnd, log.indexRangeStep);
  } else if (Rule != Ranges::arrays) {  // that one leaves them as handed in
    log.indexRangeCnt = 0;
    log.indexRangeStart = log.indexRangeEnd = log.indexRangeStep = nullptr;
  }
}

template <auto M, int From, int To, typename When = Gate>
void limits(Reader &io, auto &log, const When &when = always, bool /*converted*/ = false) {
  if (io.error != 0) return;
  const bool onLine = isOnLine(io.gates, log, when);
  for (int i = From; i < To && io.error == 0; ++i) {
    if (onLine) {
      element(io, nameOf<M>, (log.*M)[i]);
    } else {
      (log.*M)[i] = -1;
    }
  }
}

template <auto M>
void limitsFromLine(Reader &io, auto &log, bool converted) {
  if (io.error == 0 && converted) convertRLimit(log.*M, 1);
}

inline void forget(Reader &io, const char *field, char *&value) {
  release(value);
  emptyText(io, field, value);
}
inline void forget(Reader &, const char *, int32_t &value) { value = 0; }

template <auto... Ms>
void forgottenUnless(Reader &io, auto &log, Gate gate) {
  if (io.error == 0 && !gateOpen(gate, io.gates)) (forget(io, nameOf<Ms>, log.*Ms), ...);
}

template <auto M>
void fromHeader(Reader &io, auto &log) {
  if (io.error == 0) log.*M = io.eventTime;
}

template <auto M>
void computed(Reader &io, auto &log, const auto &compute) {
  if (io.error == 0) log.*M = compute(io, log);
}

template <auto M>
void unset(Reader &, const auto &) {}

template <auto Count, auto Array>
void listOffLine(Reader &, const auto &) {}

// The cursor stays where the embedded record begins.
template <auto M>
void embedded(Reader &io, auto &log, const auto &when) {
  if (io.error != 0 || !isOnLine(io.gates, log, when)) return;
  const char *const begin = io.cursor;
  layout(io, log.*M);
  if (io.error == 0) io.cursor = begin;
}

// A line that the gate shuts out carries the first `Elder` of the numbers; the others are 0.
template <auto M, int Elder, typename When>
void fixedNumbers(Reader &io, auto &log, const When &when) {
  constexpr int all = std::extent_v<TypeOf<M>>;
  if (io.error != 0) return;
  const int count = isOnLine(io.gates, log, when) ? all : Elder;
  std::fill(log.*M + count, log.*M + all, 0);
  for (int i = 0; i < count && io.error == 0; ++i) element(io, nameOf<M>, (log.*M)[i]);
}

// What stands behind is not read, with success.
template <auto M>
void stopIfZero(Reader &io, const auto &log) {
  if (io.error == 0 && log.*M == 0) io.error = kStopped;
}

// Reading goes on at the first field again.
inline void fromFirstField(Reader &io) {
  if (io.error == 0) io.cursor = io.fields;
}

// Where an array is allocated for every count, a negative one fails as the allocation would.
template <auto Count>
void negativeFails(Reader &io, auto &log) {
  if (io.error != 0 || log.*Count >= 0) return;
  log.*Count = 0;
  fail(io, WMQE_NO_MEM, nameOf<Count>, "a count that is not negative");
}

// Numbers follow one another directly: the next one skips its own blanks.
inline void withoutSkips(Reader &io) { io.skips = false; }

inline void trailingBlank(Reader &) {}

}  // namespace wmq

#endif
