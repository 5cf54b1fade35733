#include "wmq.stream/reader.h"

#include <syslog.h>

#include <algorithm>

#include "companion/affinity.h"
#include "companion/block_cache.h"
#include "companion/host_list.h"
#include "companion/numbers.h"
#include "companion/quoting.h"
#include "companion/resource_usage.h"
#include "companion/zeroed_memory.h"
#include "wmq.stream/failure.h"

namespace wmq {
namespace {

size_t bytesLeft(const Reader &io) { return static_cast<size_t>(io.end - io.cursor); }

// The last element of a line needs no blank behind it, hence the one byte more.
bool lineCanHold(const Reader &io, int64_t count, size_t leastBytes) {
  return static_cast<uint64_t>(count) <= (bytesLeft(io) + 1) / leastBytes;
}

bool allocateRanges(Ranges rule, size_t count, int32_t *&start, int32_t *&end, int32_t *&step) {
  if (rule == Ranges::block || rule == Ranges::keptBlock) {
    start = static_cast<int32_t *>(zeroed(3 * count, sizeof(int32_t)));
    if (start == nullptr) return false;
    end = start + count;
    step = end + count;
    return true;
  }
  start = static_cast<int32_t *>(zeroed(count, sizeof(int32_t)));
  end = static_cast<int32_t *>(zeroed(count, sizeof(int32_t)));
  step = static_cast<int32_t *>(zeroed(count, sizeof(int32_t)));
  if (start != nullptr && end != nullptr && step != nullptr) return true;
  release(start);
  release(end);
  release(step);
  return false;
}

// False at the first range that does not convert. It leaves the cursor where it was, so that every later one
// converts the same way: that is not tried again and again.
bool scanRanges(Reader &io, size_t count, int32_t *start, int32_t *end, int32_t *step) {
  for (size_t i = 0; i < count; ++i) {
    const char *const begin = io.cursor;
    if (scan(io, start[i]) && scan(io, end[i]) && scan(io, step[i])) {
      skipBlank(io);
      continue;
    }
    io.cursor = begin;
    std::fill(start + i, start + count, start[i]);
    std::fill(end + i, end + count, end[i]);
    return false;
  }
  return true;
}

}  // namespace

void fail(Reader &io, int error, const char *field, const char *expected) {
  if (io.error != 0) return;
  io.error = error;
  noteFailure(field, static_cast<size_t>(io.cursor - io.line), expected);
}

[[gnu::cold]] void failNumber(Reader &io, const char *at, const char *field) {
  const char *const begin = io.cursor;
  io.cursor = at;
  fail(io, WMQE_BAD_FORMAT, field, "a number");
  io.cursor = begin;
}

template <typename Integer>
[[gnu::noinline]] static const char *scanAnyInteger(const char *text, Integer &value) {
  int64_t wide = 0;
  const char *const after = scanInt64(text, wide);
  if (after != nullptr) value = static_cast<Integer>(wide);
  return after;
}

// The digits of a number from the third one on, which is at `after`, and the position behind them. Times have
// eight of them.
inline const char *scanLonger(const Reader &io, const char *after, uint64_t &digits) {
  uint32_t eight = 0;
  if (io.end - after >= 8 && eightDigits(after, eight)) {
    digits = digits * 100'000'000 + eight;
    after += 8;
  }
  for (unsigned digit = digitValue(*after); digit <= 9; digit = digitValue(*++after))
    digits = digits * 10 + digit;
  return after;
}

// Adds the digits behind the first one, which is at `text`. Lengths are told by branches and not by
// arithmetic: the processor guesses them, and is at the next field before this one is known. The position
// behind them; null for more than 18.
static inline const char *scanDigits(const Reader &io, const char *const text, uint64_t &digits) {
  const char *after = text + 1;
  if (const unsigned second = digitValue(*after); second <= 9) {
    digits = digits * 10 + second;
    if (const unsigned third = digitValue(*++after); third <= 9) {
      if (digitValue(after[1]) > 9) {
        digits = digits * 10 + third;
        return after + 1;
      }
      after = scanLonger(io, after, digits);
      if (after - text > 18) return nullptr;
    }
  }
  return after;
}

// What does not begin with a digit, right here or behind a blank.
template <typename Integer>
[[gnu::noinline]] static const char *scanUnlikeDigits(const Reader &io, const char *const begin,
                                                      Integer &value) {
  const char *const sign = begin + (*begin == ' ');
  if (*sign != '-' || !isDigit(sign[1])) return scanAnyInteger(begin, value);
  uint64_t digits = digitValue(sign[1]);
  const char *const after = scanDigits(io, sign + 1, digits);
  if (after == nullptr) return scanAnyInteger(begin, value);
  value = static_cast<Integer>(-static_cast<int64_t>(digits));
  return after;
}

template <typename Integer>
static const char *scanInteger(const Reader &io, const char *const begin, Integer &value) {
  const char *text = begin;
  uint64_t digits = digitValue(*text);
  if (digits > 9) {
    if (*text != ' ') return scanUnlikeDigits(io, begin, value);
    digits = digitValue(*++text);
    if (digits > 9) return scanUnlikeDigits(io, begin, value);
  }
  const char *const after = scanDigits(io, text, digits);
  if (after == nullptr) return scanAnyInteger(begin, value);
  value = static_cast<Integer>(digits);
  return after;
}

const char *scan(const Reader &io, const char *at, int64_t &value) { return scanInteger(io, at, value); }
const char *scan(const Reader &io, const char *at, int32_t &value) { return scanInteger(io, at, value); }
const char *scan(const Reader &, const char *at, float &value) { return scanFloat(at, value); }

const char *scanUnsigned(const Reader &, const char *at, int64_t &value) {
  uint64_t bits = 0;
  const char *const after = scanUint64(at, bits);
  if (after != nullptr) value = static_cast<int64_t>(bits);
  return after;
}

[[gnu::noinline]] static const char *readAnyText(Reader &io, const char *at, const char *field, char *&value,
                                                 size_t limit) {
  io.cursor = at;
  const Quoted text = quotedAt(at, io.end);
  if (text.after == nullptr)
    fail(io, WMQE_BAD_FORMAT, field, "a quoted string");
  else if (text.length > limit)
    fail(io, WMQE_BAD_FORMAT, field, "a shorter string");
  if (io.error != 0) return at;
  if (io.keepsTexts) {
    value = static_cast<char *>(takeBlock(bytesForText(text.length)));
    if (value == nullptr) {
      fail(io, WMQE_NO_MEM, field, "memory for the string");
      return at;
    }
    text.decodeInto(value);
  }
  return behindBlank(io, text.after);
}

// Half of all texts are empty, and mostly those of the same fields: the processor guesses them, and is at the
// next field before the end of this one would be found.
static bool readEmptyText(const Reader &io, const char *at, char *&value) {
  if (at[0] != '"' || at[1] != '"' || at[2] != ' ') return false;
  if (io.keepsTexts) {
    void *const block = takeGroups(0);
    if (block == nullptr) return false;
    value = static_cast<char *>(block);
    *value = '\0';
  }
  return true;
}

const char *readText(Reader &io, const char *at, const char *field, char *&value) {
  if (readEmptyText(io, at, value)) return at + 2 + io.skips;
  const PlainQuoted text = plainQuotedAt(at, io.end);
  static_assert(BlockCache::bytesOf(0) >= groupSize && BlockCache::bytesOf(1) >= 2 * groupSize);
  if (text.after == nullptr) return readAnyText(io, at, field, value, SIZE_MAX);
  if (io.keepsTexts) {
    void *const block = takeGroups(text.wholeGroups);
    if (block == nullptr) return readAnyText(io, at, field, value, SIZE_MAX);
    value = static_cast<char *>(block);
    text.decodeInto(value);
  }
  return text.after + io.skips;
}

void readBoundedText(Reader &io, const char *field, char *&value, size_t limit) {
  io.cursor = readAnyText(io, io.cursor, field, value, limit);
}

[[gnu::noinline]] static const char *readAnyChars(Reader &io, const char *at, const char *field, char *array,
                                                  size_t size, size_t minLength) {
  io.cursor = at;
  const Quoted text = quotedAt(at, io.end);
  if (text.after == nullptr)
    fail(io, WMQE_BAD_FORMAT, field, "a quoted string");
  else if (text.length < minLength)
    fail(io, WMQE_BAD_FORMAT, field, "a name that is not empty");
  else if (text.length >= size)
    fail(io, WMQE_BAD_FORMAT, field, "a shorter name");
  if (io.error != 0) return at;
  text.decodeInto(array);
  return behindBlank(io, text.after);
}

const char *readChars(Reader &io, const char *at, const char *field, char *array, size_t size,
                      size_t minLength) {
  const PlainQuoted text = plainQuotedAt(at, io.end);
  if (text.after == nullptr || text.length() < minLength || text.room() > size)
    return readAnyChars(io, at, field, array, size, minLength);
  text.decodeInto(array);
  return text.after + io.skips;
}

// A text for the reader itself, which gives it back.
static char *borrowText(Reader &io, const char *field) {
  char *text = nullptr;
  const bool keepsTexts = io.keepsTexts;
  io.keepsTexts = true;
  io.cursor = readText(io, io.cursor, field, text);
  io.keepsTexts = keepsTexts;
  return text;
}

void readCut(Reader &io, const char *field, char *array, size_t size) {
  char *text = borrowText(io, field);
  if (text == nullptr) return;
  const size_t length = std::min(std::strlen(text), size - 1);
  std::memcpy(array, text, length);
  array[length] = '\0';
  release(text);
}

// From the blocks that the thread keeps.
static char *copiedText(const char *text) {
  const size_t length = std::strlen(text);
  auto *const copy = static_cast<char *>(takeBlock(bytesForText(length)));
  if (copy == nullptr) return nullptr;
  copyBytes(copy, text, length);
  copy[length] = '\0';
  return copy;
}

void setAbsentText(Reader &io, const char *field, char *&value, const char *original) {
  if (!io.keepsTexts) return;
  value = copiedText(original);
  if (value == nullptr) fail(io, WMQE_NO_MEM, field, "memory for the string");
}

void readUserName(Reader &io, const char *field, char *name, int32_t userId, const char *reader) {
  if (getWMXUserByUid_(userId, name, WMQ_NAME_SIZE) == 0) return;
  wmc_syslog(LOG_ERR, "%s: %s() failed. %M.", reader, "getWMXUserByUid_");
  fail(io, WMQE_NO_USER, field, "a user id with a name");
}

void readWord(Reader &io, const char *field, char *&value, size_t limit) {
  const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  const char *begin = io.cursor;
  while (isBlank(*begin)) ++begin;
  const char *end = begin;
  while (end < io.end && !isBlank(*end)) ++end;
  const auto length = static_cast<size_t>(end - begin);
  if (length == 0) return fail(io, WMQE_BAD_FORMAT, field, "a word");
  if (length > limit) return fail(io, WMQE_BAD_FORMAT, field, "a shorter word");
  if (io.keepsTexts) {
    value = static_cast<char *>(takeBlock(length + 1));
    if (value == nullptr) return fail(io, WMQE_NO_MEM, field, "memory for the word");
    std::memcpy(value, begin, length);
    value[length] = '\0';
  }
  io.cursor = end;
}

void emptyText(Reader &io, const char *field, char *&value) {
  if (io.error != 0 || !io.keepsTexts) return;
  value = static_cast<char *>(takeBlock(1));
  if (value == nullptr) return fail(io, WMQE_NO_MEM, field, "memory for the string");
  *value = '\0';
}

static bool canHoldElements(Reader &io, const char *field, int64_t count, size_t leastBytes, int noMemory) {
  if (count < 0) {
    fail(io, noMemory, field, "a count that is not negative");
    return false;
  }
  if (!lineCanHold(io, count, leastBytes)) {
    fail(io, WMQE_BAD_FORMAT, field, "as many elements as the count says");
    return false;
  }
  return true;
}

void *allocateElements(Reader &io, const char *field, int64_t count, size_t elementSize, size_t leastBytes,
                       int noMemory) {
  if (!canHoldElements(io, field, count, leastBytes, noMemory)) return nullptr;
  void *array = zeroed(count > 0 ? static_cast<size_t>(count) : 1, elementSize);
  if (array == nullptr) fail(io, noMemory, field, "memory for the list");
  return array;
}

// Adds the hosts that a name stands for, as long as the sum is one that may be read.
static void addHosts(const char *name, int64_t &hosts) {
  int64_t times = 1;
  const char *plain = name;
  compressedName(name, times, plain);
  hosts = times > kMaxHosts - hosts ? kMaxHosts + 1 : hosts + times;
}

// For readers that do not keep texts: passes by the strings and, where they are host names, counts the hosts.
static void passStrings(Reader &io, const char *field, int32_t &count, int64_t *hosts) {
  if (!canHoldElements(io, field, count, leastBytes<char *>, WMQE_NO_MEM)) {
    count = 0;
    return;
  }
  char *none = nullptr;
  for (int32_t i = 0; i < count; ++i) {
    const char *const begin = io.cursor;
    io.cursor = readText(io, begin, field, none);
    if (io.error != 0) {
      count = i;
      return;
    }
    if (hosts != nullptr) addHosts(findQuote(begin, io.end) + 1, *hosts);
  }
}

void readStrings(Reader &io, const char *field, int32_t &count, char **&array) {
  if (io.error != 0) return;
  if (!io.keepsTexts) return passStrings(io, field, count, nullptr);
  array = static_cast<char **>(
      allocateElements(io, field, count, sizeof(char *), leastBytes<char *>, WMQE_NO_MEM));
  if (array == nullptr) {
    count = 0;
    return;
  }
  const char *at = io.cursor;
  for (int32_t i = 0; i < count; ++i) {
    at = readText(io, at, field, array[i]);
    if (io.error != 0) count = i;
  }
  io.cursor = at;
}

void copyStrings(Reader &io, const char *field, int32_t &count, char **&array, int32_t otherCount,
                 char *const *other) {
  if (io.error != 0) return;
  count = otherCount;
  if (otherCount <= 0 || !io.keepsTexts) return;
  if (borrowed.inUse) {  // nobody will release the two
    array = const_cast<char **>(other);
    return;
  }
  array = static_cast<char **>(zeroed(static_cast<size_t>(otherCount), sizeof(char *)));
  count = 0;
  if (array == nullptr) return fail(io, WMQE_NO_MEM, field, "memory for the list");
  for (; count < otherCount; ++count) {
    array[count] = copiedText(other[count]);
    if (array[count] == nullptr) return fail(io, WMQE_NO_MEM, field, "memory for the string");
  }
}

static void failHosts(Reader &io, int error, const char *field) {
  fail(io, error, field, error == WMQE_NO_MEM ? "memory for the hosts" : "no more than 16777216 hosts");
}

static void expand(Reader &io, const char *field, int32_t &count, char **&array) {
  if (io.error != 0) return;
  const int error = expandHosts(count, array, io.hostsLeft);
  if (error != 0) return failHosts(io, error, field);
  if (count > 0) io.hostsLeft -= count;
}

void readExpanded(Reader &io, const char *field, int32_t &count, char **&array) {
  if (io.keepsTexts) {
    readStrings(io, field, count, array);
    return expand(io, field, count, array);
  }
  int64_t hosts = 0;
  passStrings(io, field, count, &hosts);
  if (io.error != 0) return;
  if (hosts > io.hostsLeft) return failHosts(io, WMQE_BAD_FORMAT, field);
  count = static_cast<int32_t>(hosts);
  io.hostsLeft -= hosts;
}

void readHosts(Reader &io, const char *countField, const char *field, int32_t &count, char **&array,
               HostRule rule) {
  if (io.error != 0) return;
  if (count == 0 && rule.none == NoHosts::refused)
    return fail(io, WMQE_BAD_FORMAT, countField, "at least one host");
  if (count <= 0 && rule.none == NoHosts::nullZeroCount) {
    count = 0;
    array = nullptr;
  }
  const bool allocates =
      count > 0 || rule.none == NoHosts::emptyArray || (count < 0 && rule.none != NoHosts::nullArray);
  if (!allocates) return;
  const int32_t asRead = count;
  if (rule.expanded) return readExpanded(io, field, count, array);
  readStrings(io, field, count, array);
  if (rule.keepsCount && array != nullptr) count = asRead;
}

void readUsage(Reader &io, const char *field, wmxRusage &usage) {
  int converted = 0;
  const char *after = scanUsage(io.cursor, usage, converted);
  if (converted != WMX_RUSAGE_VALUES) return fail(io, WMQE_BAD_FORMAT, field, "19 numbers");
  io.cursor = after;
  skipBlank(io);
}

// All pairs at once: adding one after the other takes an array that is asked to grow each time, which some
// allocators copy.
void readSubmitExt(Reader &io, const char *field, submitExt *&extension) {
  int32_t count = 0;
  element(io, field, count);
  if (io.error != 0 || count <= 0) return;
  if (!lineCanHold(io, count, 5))
    return fail(io, WMQE_BAD_FORMAT, field, "as many elements as the count says");
  extension = static_cast<submitExt *>(zeroed(1, sizeof *extension));
  if (extension != nullptr)
    extension->pairs =
        static_cast<submitExtPair *>(zeroed(static_cast<size_t>(count), sizeof(submitExtPair)));
  if (extension == nullptr || extension->pairs == nullptr)
    return fail(io, WMQE_NO_MEM, field, "memory for the pairs");
  for (; extension->numPairs < count; ++extension->numPairs) {
    submitExtPair &pair = extension->pairs[extension->numPairs];
    element(io, field, pair.key);
    if (io.error == 0) io.cursor = readText(io, io.cursor, field, pair.value);
    if (io.error != 0) return release(pair.value);
  }
}

void readNamedValues(Reader &io, const char *field, namedValueList *&list) {
  int32_t count = 0;
  element(io, field, count);
  if (io.error != 0 || count <= 0) return;
  if (!lineCanHold(io, count, 5))
    return fail(io, WMQE_BAD_FORMAT, field, "as many elements as the count says");
  list = static_cast<namedValueList *>(zeroed(1, sizeof *list));
  if (list != nullptr) {
    list->names = static_cast<char **>(zeroed(static_cast<size_t>(count), sizeof(char *)));
    list->values = static_cast<int32_t *>(zeroed(static_cast<size_t>(count), sizeof(int32_t)));
  }
  if (list == nullptr || list->names == nullptr || list->values == nullptr) {
    releaseNamedValues(list);
    return fail(io, WMQE_NO_MEM, field, "memory for the list");
  }
  for (; list->count < count; ++list->count) {
    const int32_t i = list->count;
    io.cursor = readText(io, io.cursor, field, list->names[i]);
    if (io.error == 0) element(io, field, list->values[i]);
    if (io.error != 0) return release(list->names[i]);
  }
}

void readAffinity(Reader &io, const char *field, affinityAlloc *&allocation) {
  const char *const begin = io.cursor;
  char *text = borrowText(io, field);
  if (io.error == 0 && *text != '\0') {
    allocation = parseAffinity(text, io.cpusLeft);
    if (allocation == nullptr) {
      io.cursor = begin;
      fail(io, WMQE_BAD_FORMAT, field, "an affinity allocation");
    }
  }
  release(text);
}

void readRanges(Reader &io, Ranges rule, int32_t &count, int32_t *&start, int32_t *&end, int32_t *&step) {
  const bool checked = rule == Ranges::checked;
  if (scan(io, count)) {
    skipBlank(io);
  } else if (checked) {
    return fail(io, WMQE_BAD_FORMAT, "indexRangeCnt", "a number");
  }
  if (checked && count == 0) return fail(io, WMQE_BAD_FORMAT, "indexRangeCnt", "at least one range");
  if (checked && count < 0) return fail(io, WMQE_NO_MEM, "indexRangeCnt", "a count that is not negative");
  if (count <= 0) return;
  const bool believable = lineCanHold(io, count, 6);
  if (!believable && !checked && count > kMaxUncheckedRanges)
    return fail(io, WMQE_NO_MEM, "indexRangeCnt", "a count that the line can hold");

  const auto n = static_cast<size_t>(count);
  // A checked list that the line cannot hold ends in the remembered error: no arrays are needed for that.
  const size_t allocated = checked && !believable ? (bytesLeft(io) + 1) / 6 + 1 : n;
  if (!allocateRanges(rule, allocated, start, end, step))
    return fail(io, WMQE_NO_MEM, "indexRangeStart", "memory for the ranges");
  if (scanRanges(io, allocated, start, end, step) || !checked) return;
  noteFailure("indexRangeStart", static_cast<size_t>(io.cursor - io.line), "three numbers for every range");
  io.remembered = WMQE_BAD_FORMAT;
  release(start);
  release(end);
  release(step);
}

}  // namespace wmq
