#include "wmq.stream/writer.h"

#include <cerrno>
#include <cstdlib>

#include "companion/decimal_digits.h"
#include "companion/host_list.h"
#include "companion/limits.h"
#include "companion/numbers.h"
#include "companion/quoting.h"
#include "companion/resource_usage.h"
#include "companion/thread_key.h"
#include "wmq.stream/failure.h"

namespace wmq {
namespace {

constexpr size_t kFirstCapacity = 4096;

thread_local constinit Writer buffer;

void releaseBuffer(void *writer) {
  auto &io = *static_cast<Writer *>(writer);
  std::free(io.text);
  io = Writer{};
}

const ThreadKey bufferKey(releaseBuffer);

}  // namespace

Writer &beginLine() {
  Writer &io = buffer;
  io.size = 0;
  beginNextLine(io);
  return io;
}

void beginNextLine(Writer &io) {
  io.begin = io.size;
  io.end = io.capacity;
  io.error = 0;
  io.full = false;
}

void giveBack(Writer &io) {
  if (io.text == nullptr) return;
  io.kept = io.capacity <= kKeptCapacity && (io.kept || bufferKey.keep(&io));
  if (!io.kept) releaseBuffer(&io);
}

int handOver(Writer &io, FILE *file) {
  const bool written = io.size == 0 || std::fwrite(io.text, 1, io.size, file) == io.size;
  return io.error != 0 ? io.error : written ? 0 : WMQE_SYS;
}

void fail(Writer &io, int error, const char *field, const char *expected) {
  if (io.error != 0) return;
  io.error = error;
  io.end = 0;
  noteFailure(field, io.size - io.begin, expected);
}

char *grow(Writer &io, size_t bytes) {
  if (io.error != 0) return nullptr;
  size_t capacity = io.capacity > 0 ? io.capacity : kFirstCapacity;
  while (capacity - io.size < bytes) capacity *= 2;
  auto *text = static_cast<char *>(std::realloc(io.text, capacity));
  if (text == nullptr) {
    io.full = true;
    fail(io, WMQE_SYS, nullptr, "memory for the line");
    return nullptr;
  }
  io.text = text;
  io.capacity = capacity;
  io.end = capacity;
  return text + io.size;
}

void put(Writer &io, const char *text, size_t length) {
  if (char *out = room(io, length)) {
    std::memcpy(out, text, length);
    io.size += length;
  }
}

char *integerBehindBlank(char *out, int64_t value) {
  *out++ = ' ';
  const auto bits = static_cast<uint64_t>(value);  // those of a negative one are more than any limit
  return bits < shortLimit ? shortInto(out, static_cast<uint32_t>(bits)) : formatInt64(out, value);
}

void putInteger(Writer &io, int64_t value) {
  if (char *out = room(io, kIntegerRoom))
    io.size = static_cast<size_t>(integerBehindBlank(out, value) - io.text);
}

void putQuotedInteger(Writer &io, int64_t value) {
  char *out = room(io, kIntegerRoom + 2);
  if (out == nullptr) return;
  *out++ = ' ';
  *out++ = '"';
  out = formatInt64(out, value);
  *out++ = '"';
  io.size = static_cast<size_t>(out - io.text);
}

void putQuotedFixed(Writer &io, double value, int precision) {
  char *out = room(io, kFixedRoom + 2);
  if (out == nullptr) return;
  *out++ = ' ';
  *out++ = '"';
  out = formatFixed(out, value, 1, precision);
  *out++ = '"';
  io.size = static_cast<size_t>(out - io.text);
}

static void putAnyText(Writer &io, const char *text) {
  const size_t length = std::strlen(text);
  char *out = room(io, 2 * length + 3);
  if (out == nullptr) return;
  *out = ' ';
  io.size = static_cast<size_t>(quotedInto(out + 1, text, length) - io.text);
}

void putQuoted(Writer &io, const char *text) {
  alignas(groupSize) static constexpr char nothing[groupSize] = {};
  if (text == nullptr) text = nothing;
  char *const out = room(io, groupSize + 3);
  if (out == nullptr) return;
  char *const end = shortQuotedInto(out + 1, text);
  if (end == nullptr) return putAnyText(io, text);
  *out = ' ';
  io.size = static_cast<size_t>(end - io.text);
}

bool arrayGiven(Writer &io, int64_t count, const void *array, const char *field) {
  if (count > 0 && array == nullptr) fail(io, WMQE_SYS, field, "an array for the count");
  return io.error == 0;
}

static bool hostsGiven(Writer &io, int32_t count, char *const *hosts, const char *field) {
  if (count < 0) fail(io, WMQE_SYS, field, "a count of 0 or more");
  return arrayGiven(io, count, hosts, field);
}

// The number of names is known behind them. Before them is room for it as it is when all names differ; where
// it is shorter, they move forward to it.
static void putHostCount(Writer &io, size_t at, size_t reserved, int32_t runs) {
  char number[kHostCountRoom];
  const auto length = static_cast<size_t>(hostCountInto(number, runs) - number);
  const size_t names = at + reserved;
  if (length < reserved) std::memmove(io.text + at + length, io.text + names, io.size - names);
  std::memcpy(io.text + at, number, length);
  io.size -= reserved - length;
}

// Compresses while writing: unlike compressHostList this needs no memory of its own and cannot fail.
void putHosts(Writer &io, int32_t count, char *const *hosts, const char *field, bool withCount) {
  if (!hostsGiven(io, count, hosts, field)) return;
  const size_t start = io.size;
  size_t reserved = 0;
  if (withCount) {
    char *const out = room(io, kHostCountRoom);
    if (out == nullptr) return;
    reserved = static_cast<size_t>(hostCountInto(out, count) - out);
    io.size += reserved;
  }
  HostListWriter list(count, hosts);
  while (!list.atEnd()) {
    char *const out = room(io, list.roomForPart());
    if (out == nullptr) {  // nothing of the list stays
      io.size = start;
      return noteFailure(nullptr, start - io.begin, "memory for the line");
    }
    io.size = static_cast<size_t>(list.partInto(out) - io.text);
  }
  if (withCount) putHostCount(io, start, reserved, list.runs());
}

void putCompressedCount(Writer &io, int32_t count, char *const *hosts, const char *field) {
  if (hostsGiven(io, count, hosts, field)) putInteger(io, numRuns(count, hosts));
}

void putUsage(Writer &io, const wmxRusage &usage) {
  if (char *out = room(io, size_t{WMX_RUSAGE_VALUES} * 32))
    io.size = static_cast<size_t>(formatUsage(out, usage) - io.text);
}

void putSubmitExt(Writer &io, const submitExt *extension) {
  const int32_t count = extension && extension->pairs ? extension->numPairs : 0;
  putInteger(io, count);
  for (int32_t i = 0; i < count; ++i) {
    putInteger(io, extension->pairs[i].key);
    putQuoted(io, extension->pairs[i].value);
  }
}

void putNamedValues(Writer &io, const namedValueList *list) {
  const int32_t count = list && list->names && list->values ? list->count : 0;
  putInteger(io, count);
  for (int32_t i = 0; i < count; ++i) {
    putQuoted(io, list->names[i]);
    putInteger(io, list->values[i]);
  }
}

void putAffinity(Writer &io, const affinityAlloc *allocation, const char *field) {
  if (allocation == nullptr) return putQuoted(io, "");
  char *text = convertAffinityAlloc2Str(allocation);
  if (text == nullptr) return fail(io, WMQE_SYS, field, "an allocation that has a text form");
  putQuoted(io, text);
  std::free(text);
}

bool rangesGiven(Writer &io, int32_t count, const int32_t *start, const int32_t *end, const int32_t *step) {
  return arrayGiven(io, count, start, "indexRangeStart") && arrayGiven(io, count, end, "indexRangeEnd") &&
         arrayGiven(io, count, step, "indexRangeStep");
}

void putRanges(Writer &io, int32_t count, const int32_t *start, const int32_t *end, const int32_t *step) {
  if (!rangesGiven(io, count, start, end, step)) return;
  for (int32_t i = 0; i < count; ++i) {
    putInteger(io, start[i]);
    putInteger(io, end[i]);
    putInteger(io, step[i]);
  }
}

void putLimits(Writer &io, const int32_t *limits, int from, int to, bool converted) {
  int32_t line[WMX_RLIM_NLIMITS];
  std::memcpy(line, limits, sizeof line);
  if (converted) convertRLimit(line, 0);
  for (int i = from; i < to; ++i) putInteger(io, line[i]);
}

}  // namespace wmq
