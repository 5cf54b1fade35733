#include "wmq.stream/line_parser.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "companion/borrowed_memory.h"
#include "companion/byte_groups.h"
#include "companion/numbers.h"
#include "companion/quoting.h"
#include "companion/zeroed_memory.h"
#include "wmq.stream/failure.h"
#include "wmq.stream/release.h"
#include "wmq.stream/type_table.h"
#include "wmq/stream.h"

namespace wmq {

thread_local constinit float version = 0;
constinit eventRecord *logRec = nullptr;

namespace {

constexpr size_t kTypeNameSize = 60;
constexpr size_t kVersionSize = sizeof(eventRecord::version);

struct Header {
  char version[32] = {};  // longer than it needs, for texts that are copied in groups
  int32_t eventTime = 0;
  const EventType *type = nullptr;  // null for a name that no type has
};

Reader headerReader(const char *line, size_t length) {
  return {.line = line, .fields = line, .cursor = line, .end = line + length, .gates = {}, .eventTime = 0};
}

// Takes a quoted token shorter than `size`, which something must follow, and the blank behind it.
[[gnu::noinline]] bool takeToken(Reader &io, size_t size, Quoted &token, const char *expected) {
  token = quotedAt(io.cursor, io.end);
  if (token.after == nullptr || token.after == io.end || token.length >= size) {
    fail(io, WMQE_BAD_FORMAT, nullptr, expected);
    return false;
  }
  io.cursor = token.after;
  skipBlank(io);
  return true;
}

// The type that the line names, null for a name that no type has. False where there is no name.
bool takeType(Reader &io, const EventType *&type) {
  if (const PlainQuoted name = plainQuotedAt(io.cursor, io.end);
      name.after != nullptr && name.length() < kTypeNameSize) {
    type = eventTypeNamed(io.cursor + 1, name.length());
    io.cursor = name.after + 1;
    return true;
  }
  Quoted name;
  if (!takeToken(io, kTypeNameSize, name, "a quoted type name")) return false;
  if (!name.escapes) type = eventTypeNamed(name.content, name.length);  // no type has an escape in it
  return true;
}

// The version of the line before: lines of one stream nearly all have the same, and nearly all say so in the
// same few bytes.
struct KnownVersion {
  char text[kVersionSize];
  float value;
  // As the first line that said it did, with the quotes and the blank behind it, if these are no more than
  // eight bytes.
  uint64_t token;
  uint64_t tokenMask;
  size_t tokenLength;  // 0: not known
};
thread_local constinit KnownVersion known{};

float versionOf(const char *text) {
  if (std::memcmp(text, known.text, sizeof known.text) != 0) {
    known = {};
    std::memcpy(known.text, text, sizeof known.text);
    known.value = static_cast<float>(parseReal(text, nullptr));
  }
  return known.value;
}

bool takeKnownVersion(Reader &io, Header &header) {
  if (known.tokenLength == 0 || io.end - io.cursor < 8) return false;
  if ((groupAt<uint64_t>(io.cursor) & known.tokenMask) != known.token) return false;
  std::memcpy(header.version, known.text, sizeof known.text);
  io.cursor += known.tokenLength;
  return true;
}

// The token that has just been taken, from `begin` to the cursor.
void keepToken(const Reader &io, const char *begin, const Quoted &token) {
  constexpr size_t most = sizeof known.token;
  const auto length = static_cast<size_t>(io.cursor - begin);
  if (known.tokenLength != 0 || *begin != '"' || token.escapes || length > most || io.cursor[-1] != ' ')
    return;
  char mask[most] = {};
  char bytes[most] = {};
  std::memset(mask, 0xff, length);
  std::memcpy(bytes, begin, length);
  known.tokenMask = groupAt<uint64_t>(mask);
  known.token = groupAt<uint64_t>(bytes);
  known.tokenLength = length;
}

// `lineVersion` is touched once the version stands on the line.
bool takeVersion(Reader &io, Header &header, float &lineVersion) {
  if (takeKnownVersion(io, header)) {
    lineVersion = known.value;
    return true;
  }
  const char *const begin = io.cursor;
  Quoted text;
  if (!takeToken(io, kVersionSize, text, "a quoted format version")) return false;
  text.decodeInto(header.version);
  lineVersion = versionOf(header.version);
  if (!(lineVersion > 0.0F)) {
    fail(io, WMQE_BAD_FORMAT, nullptr, "a format version above 0");
    return false;
  }
  keepToken(io, begin, text);
  return true;
}

// Leaves the cursor at the fields.
bool takeHeader(Reader &io, Header &header, float &lineVersion) {
  nameType(nullptr);
  if (!takeType(io, header.type) || !takeVersion(io, header, lineVersion)) return false;
  if (!scan(io, header.eventTime)) {
    fail(io, WMQE_BAD_FORMAT, nullptr, "an event time");
    return false;
  }
  skipBlank(io);
  if (header.type == nullptr) noteFailure(nullptr, 0, "a known type name");
  return true;
}

// Nearly all headers end long before this: the end of a long line need not be known then. Returns the error
// of a malformed one.
int findHeader(const char *line, Header &header, size_t &headerLength) {
  constexpr size_t usualMost = 128;
  float lineVersion = 0;
  const size_t length = strnlen(line, usualMost);
  Reader io = headerReader(line, length);
  const bool found = takeHeader(io, header, lineVersion);
  if (length == usualMost && !(found && io.cursor < io.end)) {
    header = {};
    io = headerReader(line, std::strlen(line));
    takeHeader(io, header, lineVersion);
  }
  headerLength = static_cast<size_t>(io.cursor - line);
  return io.error;
}

// Nobody will ever hold this record: what release keeps goes too.
eventRecord *discard(eventRecord *record) {
  wmq_freekept(record);
  wmq_freelogrec(record);
  return nullptr;
}

// Fills `record` from its header and from the fields at the cursor. Leaves its result in wmq_errno, which
// header-only types do not touch.
void readRecord(Reader &io, const EventType &type, const char *versionText, int32_t eventTime,
                eventRecord *record) {
  std::memcpy(record->version, versionText, sizeof record->version);
  record->eventTime = eventTime;
  record->type = type.code;
  nameType(type.name);
  if (type.body == Body::headerOnly) return;
  io.fields = io.cursor;
  io.gates = openGatesOf(version);
  io.eventTime = eventTime;
  type.codec->read(io, &record->eventLog);
  wmq_errno = resultOf(io);
}

bool holdsNul(const char *line, size_t length) { return std::memchr(line, '\0', length) != nullptr; }

void refuseNul(const char *line, size_t length) {
  Reader io = headerReader(line, length);
  nameType(nullptr);
  fail(io, WMQE_BAD_FORMAT, nullptr, "a line without NUL bytes");
  wmq_errno = io.error;
}

// Lets `read` fill a record with nothing but figures. Seldom is there anything to release.
template <typename Read>
int checked(eventRecord *record, Read read) {
  clear(record, sizeof *record);
  wmq_errno = 0;
  const unsigned arraysBefore = numZeroed;
  read();
  if (numZeroed != arraysBefore) releaseAllButFigures(record);
  return wmq_errno == 0 ? 0 : -1;
}

}  // namespace

void parseInto(const char *line, size_t length, eventRecord *record, bool keepsTexts) {
  Reader io = headerReader(line, length);
  io.keepsTexts = keepsTexts;
  Header header;
  if (!takeHeader(io, header, version)) {
    wmq_errno = io.error;
    return;
  }
  if (header.type == nullptr) {
    wmq_errno = WMQE_BAD_EVENT;
    record->type = -1;
    return;
  }
  readRecord(io, *header.type, header.version, header.eventTime, record);
}

eventRecord *parseText(const char *line, size_t length) {
  auto *record = static_cast<eventRecord *>(zeroed(1, sizeof(eventRecord)));
  if (record == nullptr) {
    wmq_errno = WMQE_NO_MEM;
    return nullptr;
  }
  parseInto(line, length, record, true);
  return wmq_errno == 0 ? record : discard(record);
}

eventRecord *parsestreamlineMT(const char *line, size_t length) {
  if (!holdsNul(line, length)) return parseText(line, length);
  refuseNul(line, length);
  return nullptr;
}

eventRecord *parseLine(const char *line, size_t length, bool &lacked) {
  const int formerError = errno;
  errno = 0;
  eventRecord *const record = parsestreamlineMT(line, length);
  lacked = record == nullptr && errno == ENOMEM;
  if (!lacked) errno = formerError;
  return record;
}

eventRecord *keepRecord(eventRecord *record) {
  logRec = record;
  return record;
}

void dropKeptRecord() {
  wmq_freelogrec(logRec);
  logRec = nullptr;
}

int readFields(const char *fields, const RecordCodec &codec, void *log, int32_t eventTime) {
  if (fields == nullptr || log == nullptr) return WMQE_BAD_ARG;
  nameType(nullptr);
  Reader io{.line = fields,
            .fields = fields,
            .cursor = fields,
            .end = fields + std::strlen(fields),
            .gates = openGatesOf(version),
            .eventTime = eventTime};
  codec.read(io, log);
  return resultOf(io);
}

}  // namespace wmq

float wmq_lineversion(void) { return wmq::version; }

void wmq_setlineversion(float version) { wmq::version = version; }

eventRecord *wmq_readstreamlineMT(const char *line) {
  if (line == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return nullptr;
  }
  return wmq::parseText(line, std::strlen(line));
}

eventRecord *wmq_readstreamline(const char *line) {
  if (line == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return nullptr;
  }
  wmq::dropKeptRecord();
  return wmq::keepRecord(wmq::parseText(line, std::strlen(line)));
}

const eventRecord *wmq_borrowline(const char *line, size_t length) {
  if (line == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return nullptr;
  }
  const wmq::Borrowing borrowing;
  return wmq::parsestreamlineMT(line, length);
}

int wmq_checkline(const char *line, eventRecord *record) {
  if (line == nullptr || record == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  return wmq::checked(record, [&] { wmq::parseInto(line, std::strlen(line), record, false); });
}

int wmq_checkfields(const char *line, size_t length, const wmqLineHeader *header, eventRecord *record) {
  if (line == nullptr || header == nullptr || record == nullptr || header->length > length) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  return wmq::checked(record, [&] {
    const wmq::EventType &type = wmq::eventType(header->type);
    if (type.name == nullptr) {
      wmq_errno = WMQE_BAD_EVENT;
      return;
    }
    if (wmq::holdsNul(line, length)) return wmq::refuseNul(line, length);
    wmq::Reader io = wmq::headerReader(line, length);
    io.keepsTexts = false;
    io.cursor += header->length;
    wmq::version = wmq::versionOf(header->version);
    wmq::readRecord(io, type, header->version, header->eventTime, record);
  });
}

int wmq_peekline(const char *line, wmqLineHeader *header) {
  if (line == nullptr || header == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  wmq::Header found;
  size_t length = 0;
  if (const int error = wmq::findHeader(line, found, length); error != 0) {
    wmq_errno = error;
    return -1;
  }
  header->type = found.type != nullptr ? found.type->code : -1;
  header->eventTime = found.eventTime;
  std::memcpy(header->version, found.version, sizeof header->version);
  header->length = length;
  if (found.type != nullptr) return 0;
  wmq_errno = WMQE_BAD_EVENT;
  return -1;
}
