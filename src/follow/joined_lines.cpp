// Where one record ends and the next begins, on a line on which several stand.
//
// A header, "NAME" "VERSION" TIME, cannot stand inside a quoted string: each quote in there is doubled. What
// can look like one is a string field that is the name of a type, followed by one that is a version and by a
// number, and what comes of a string that a writer did not escape. So what looks like a header begins a
// record when it stands where no field can begin, or when the line makes no sense without it.
#include "follow/joined_lines.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "companion/numbers.h"
#include "companion/quoting.h"
#include "wmq.stream/line_parser.h"
#include "wmq.stream/type_table.h"
#include "wmq/follow.h"
#include "wmq/stream.h"

namespace wmq {
namespace {

// Headers that are looked at before a line is cut at the next one without further questions: what is cut off
// is looked at again, so this only bounds the work that a hostile line can make. Nor is what stands behind
// that next one asked whether one of them begins a record: each of them would cost a walk to the line's end.
constexpr int kMostTries = 64;

// Bytes that the header of a type can take.
constexpr size_t kMostOfHeader = 96;

// ------------------------------------------------------------------------ headers

struct Header {
  const char *begin = nullptr;  // null: there is none
  const char *end = nullptr;    // behind the event time
  const EventType *type = nullptr;
};

bool isNameCharacter(char c) { return (c >= 'A' && c <= 'Z') || c == '_' || isDigit(c); }

// The header whose type name ends at `closing`: a quote behind a capital letter or a digit, with which `" "`
// and a digit begin. Nothing before `from` is looked at.
Header headerAround(const char *from, const char *closing, const char *end) {
  const char *name = closing;
  while (name > from && isNameCharacter(name[-1])) --name;
  if (name == from || name[-1] != '"') return {};
  const EventType *const type = eventTypeNamed(name, static_cast<size_t>(closing - name));
  if (type == nullptr) return {};

  const char *cursor = closing + 3;
  const char *const version = cursor;
  bool above0 = false;
  for (; cursor < end && (isDigit(*cursor) || *cursor == '.'); ++cursor)
    above0 = above0 || (*cursor != '0' && *cursor != '.');
  if (!above0 || cursor - version >= static_cast<ptrdiff_t>(sizeof(eventRecord::version))) return {};
  if (end - cursor < 3 || cursor[0] != '"' || cursor[1] != ' ') return {};
  cursor += 2;
  if (*cursor == '-') ++cursor;
  const char *const time = cursor;
  while (cursor < end && isDigit(*cursor)) ++cursor;
  if (cursor == time || (cursor < end && *cursor != ' ' && *cursor != '"')) return {};
  return {name - 1, cursor, type};
}

// Type names end with a capital letter, or a digit behind one. Names of hosts, which stand one behind the
// other on long lines, end with digits, too.
bool mayBeClosing(const char *quote) {
  const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
  return quote[0] == '"' && quote[1] == ' ' && quote[2] == '"' && isDigit(quote[3]) &&
         isCapital(isDigit(quote[-1]) ? quote[-2] : quote[-1]);
}

#ifdef __SSE2__
// Which of the 16 places from `text` on are worth a closer look, a bit for each.
unsigned likelyClosings(const char *text) {
  const auto is = [text](ptrdiff_t at, char c) {
    return _mm_cmpeq_epi8(loadGroup(text + at), _mm_set1_epi8(c));
  };
  const auto isFrom = [text](ptrdiff_t at, char first, char last) {
    const __m128i distance = _mm_sub_epi8(loadGroup(text + at), _mm_set1_epi8(first));
    const __m128i most = _mm_set1_epi8(static_cast<char>(last - first));
    return _mm_cmpeq_epi8(_mm_min_epu8(distance, most), distance);
  };
  const __m128i quotes = _mm_and_si128(is(0, '"'), is(2, '"'));
  const __m128i between = _mm_and_si128(isFrom(-1, '0', 'Z'), isFrom(3, '0', '9'));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(quotes, between)));
}
#endif

// The first header that begins at `from` or behind it.
Header findHeader(const char *from, const char *end) {
  if (end - from < 2) return {};
  const char *at = from + 2;
#ifdef __SSE2__
  for (; end - at >= static_cast<ptrdiff_t>(groupSize) + 3; at += groupSize) {
    for (unsigned places = likelyClosings(at); places != 0; places &= places - 1) {
      const char *const quote = at + std::countr_zero(places);
      if (!mayBeClosing(quote)) continue;
      const Header header = headerAround(from, quote, end);
      if (header.begin != nullptr) return header;
    }
  }
#endif
  for (; end - at >= 4; ++at) {
    if (!mayBeClosing(at)) continue;
    if (const Header header = headerAround(from, at, end); header.begin != nullptr) return header;
  }
  return {};
}

struct OwnType {
  const EventType *type = nullptr;  // null: the line does not begin with the name of one
  const char *closing = nullptr;    // the quote behind it
};

OwnType ownTypeOf(const char *line, size_t length) {
  if (*line != '"') return {};
  const auto *const closing =
      static_cast<const char *>(std::memchr(line + 1, '"', std::min(length, kMostOfHeader) - 1));
  if (closing == nullptr) return {};
  return {eventTypeNamed(line + 1, static_cast<size_t>(closing - line - 1)), closing};
}

// The first quote behind the header of a type that leaves its line open, if it can only be the beginning of
// another record.
const char *openEnd(const Header &header, const char *end) {
  if (!mayLeaveLineOpen(header.type->body)) return nullptr;
  const auto left = static_cast<size_t>(end - header.end);
  const void *const quote = std::memchr(header.end, '"', left);
  const auto *const at = static_cast<const char *>(quote);
  if (at == nullptr || !isDigit(at[-1])) return nullptr;
  return header.type->body == Body::openLine || at == header.end ? at : nullptr;
}

// ------------------------------------------------------------------------ fields

// What stands at a place of a line, when the line is taken as fields that blanks set apart.
enum class Place {
  field,    // a field may begin here, or it is inside a string
  word,     // behind something that is no string, without a blank between
  closing,  // here a string ends, and something other than a blank follows
};

// Takes the line apart up to `at`, which is a quote that a letter other than n follows, and not the first
// byte.
Place placeOf(const char *line, const char *at) {
  bool inside = false;
  for (const char *cursor = line; cursor < at; ++cursor) {
    if (*cursor != '"') continue;
    if (inside && (cursor[1] == '"' || cursor[1] == 'n')) {
      ++cursor;
      if (cursor == at) return Place::field;
    } else {
      inside = !inside;
    }
  }
  if (inside) return Place::closing;
  return at[-1] == ' ' ? Place::field : Place::word;
}

// Behind the string that begins at `quote`; null when it does not end.
const char *behindString(const char *quote, const char *end) {
  for (const char *cursor = quote + 1; cursor < end; ++cursor) {
    if (*cursor != '"') continue;
    if (cursor + 1 == end || (cursor[1] != '"' && cursor[1] != 'n')) return cursor + 1;
    ++cursor;
  }
  return nullptr;
}

// Every string ends, and blanks stand around it.
bool isWellFormed(const char *text, const char *end) {
  for (const char *cursor = text; cursor < end; ++cursor) {
    if (*cursor != '"') continue;
    if (cursor != text && cursor[-1] != ' ') return false;
    cursor = behindString(cursor, end);
    if (cursor == nullptr || (cursor < end && *cursor != ' ')) return false;
  }
  return true;
}

struct LastFields {
  const char *any = nullptr;     // where the last field begins
  const char *string = nullptr;  // where the last string begins
};

LastFields lastFieldsOf(const char *text, const char *end) {
  LastFields last;
  for (const char *cursor = text; cursor < end;) {
    if (*cursor == ' ') {
      ++cursor;
      continue;
    }
    last.any = cursor;
    if (*cursor == '"') {
      last.string = cursor;
      cursor = behindString(cursor, end);
      if (cursor == nullptr) break;
    } else {
      while (cursor < end && *cursor != ' ' && *cursor != '"') ++cursor;
    }
  }
  return last;
}

// ------------------------------------------------------------------------ the line

// A copy of the line that is parsed piece by piece. Afterwards wmq_errno and the version are as before: it
// was not the caller who parsed. Without memory wmq_errno is WMQE_NO_MEM then.
class Trial {
 public:
  Trial(const char *line, size_t length) : text(static_cast<char *>(std::malloc(length + 1))), size(length) {
    if (text == nullptr) {
      lack();
      return;
    }
    std::memcpy(text, line, length);
    text[length] = '\0';
  }
  Trial(const Trial &) = delete;
  Trial &operator=(const Trial &) = delete;
  ~Trial() {
    std::free(text);
    wmq_errno = formerError;
    version = formerVersion;
  }

  // There was enough for all that was asked of it.
  bool hasMemory() const { return text != nullptr && !lacked; }
  char *begin() const { return text; }
  char *end() const { return text + size; }

  bool parses(const char *from, const char *to) {
    char &behind = text[to - text];
    const char kept = behind;
    behind = '\0';
    wmq_errno = 0;
    bool failed = false;
    eventRecord *const record = parseLine(from, static_cast<size_t>(to - from), failed);
    behind = kept;
    if (failed) lack();
    wmq_freekept(record);
    wmq_freelogrec(record);
    return record != nullptr;
  }

 private:
  void lack() {
    lacked = true;
    formerError = WMQE_NO_MEM;
  }

  char *text;
  size_t size;
  bool lacked = false;
  int formerError = wmq_errno;
  float formerVersion = version;
};

// Where a record that leaves its line open ends, when another one, or the beginning of one, stands right
// behind it; else null. Such a record holds numbers only, so that the first quote is the next one's.
const char *endOfOpenRecord(Trial &trial, const Header &header) {
  const char *const end = openEnd(header, trial.end());
  if (end == nullptr || header.type->body != Body::openLine) return end;
  return trial.parses(header.begin, end) ? end : nullptr;
}

// Behind a place where no field can begin, fields that are well formed up to `end` are enough: a record that
// does not parse is to be told by itself, too.
bool looksIntact(Trial &trial, const Header &header, const char *end) {
  return endOfOpenRecord(trial, header) != nullptr || isWellFormed(header.begin, end);
}

// What follows the last field that a layout knows is ignored. Numbers are left over on lines of some types,
// but strings only on lines of later versions, or where two records are taken for one.
bool usesAllStrings(Trial &trial, const Header &header, const char *end) {
  const char *const last = lastFieldsOf(header.begin, end).string;
  return trial.parses(header.begin, end) && (last < header.end || !trial.parses(header.begin, last));
}

// Of a line that parses as one record.
bool usesAllFields(Trial &trial) {
  return !trial.parses(trial.begin(), lastFieldsOf(trial.begin(), trial.end()).any);
}

// What `header` begins is a record, up to `end` or up to the record that is joined to it, and uses every
// string that it has.
bool makesRecord(Trial &trial, const Header &header, const char *end) {
  return endOfOpenRecord(trial, header) != nullptr ||
         (isWellFormed(header.begin, end) && usesAllStrings(trial, header, end));
}

// `whole`: the line parses as one record that uses every field.
bool beginsRecord(Trial &trial, const Header &header, const char *end, bool whole) {
  switch (placeOf(trial.begin(), header.begin)) {
    case Place::word:
      return looksIntact(trial, header, end);
    case Place::closing:
      return whole ? makesRecord(trial, header, end) : looksIntact(trial, header, end);
    default:
      // A field that the first record has a use for stays a field.
      return !whole && makesRecord(trial, header, end);
  }
}

bool isBlank(const char *from, const char *to) {
  while (from < to && *from == ' ') ++from;
  return from == to;
}

// Where the headers end that are looked at, of those from `first` on: at the next one, or with the line.
const char *endOfTries(const Header &first, const char *end) {
  Header header = first;
  for (int tries = 0; header.begin != nullptr && tries < kMostTries; ++tries)
    header = findHeader(header.begin + 1, end);
  return header.begin != nullptr ? header.begin : end;
}

// Where the next record begins, when the line is one that its writer has left unfinished; else null.
const char *behindTorn(Trial &trial) {
  // What was torn would begin as a record does.
  const bool parses = trial.parses(trial.begin(), trial.end());
  if (parses && *trial.begin() != '"') return nullptr;
  Header next = findHeader(trial.begin() + 1, trial.end());
  const char *const end = endOfTries(next, trial.end());
  // Most that do not use every field are told without a search for the last one.
  const bool isShort = end < trial.end() && trial.parses(trial.begin(), end);
  const bool whole = parses && !isShort && usesAllFields(trial);
  for (; next.begin != nullptr && next.begin < end; next = findHeader(next.begin + 1, trial.end()))
    if (beginsRecord(trial, next, end, whole)) return next.begin;
  return whole ? nullptr : next.begin;
}

size_t firstRecord(const char *line, size_t length, int &part) {
  part = WMQ_PART_LINE;
  const char *const end = line + length;

  // A record that leaves its line open, with another behind it.
  const OwnType type = ownTypeOf(line, length);
  const bool mayBeOpen = type.type != nullptr && mayLeaveLineOpen(type.type->body);
  const Header own = mayBeOpen ? findHeader(line, line + std::min(length, kMostOfHeader)) : Header{};
  const bool isOpen = own.begin == line;
  const char *const openedEnd = isOpen ? openEnd(own, end) : nullptr;
  if (openedEnd != nullptr) {
    const auto first = static_cast<size_t>(openedEnd - line);
    Trial trial(line, first);
    if (!trial.hasMemory()) return 0;
    const bool isRecord = own.type->body != Body::openLine || trial.parses(trial.begin(), trial.end());
    if (!trial.hasMemory()) return 0;
    if (isRecord) {
      part = WMQ_PART_JOINED;
      return first;
    }
  }
  const Header next = findHeader(type.type != nullptr ? type.closing : line + 1, end);
  if (next.begin == nullptr) return length;
  if (isOpen && own.type->body != Body::openLine && isBlank(own.end, next.begin)) {
    part = WMQ_PART_JOINED;
    return static_cast<size_t>(next.begin - line);
  }

  // A record that another writer has left unfinished, with one behind it; or one record that looks like two.
  Trial trial(line, length);
  if (!trial.hasMemory()) return 0;
  const char *const behind = behindTorn(trial);
  if (!trial.hasMemory()) return 0;
  if (behind == nullptr) return length;
  part = WMQ_PART_TORN;
  return static_cast<size_t>(behind - trial.begin());
}

}  // namespace
}  // namespace wmq

int wmq_leavesopen(int32_t type) { return wmq::leavesLineOpen(wmq::eventType(type).body) ? 1 : 0; }

size_t wmq_firstrecord(const char *line, size_t length, int *part) {
  int found = WMQ_PART_LINE;
  size_t first = 0;
  if (line == nullptr)
    wmq_errno = WMQE_BAD_ARG;
  else if (length > 0)
    first = wmq::firstRecord(line, length, found);
  if (part != nullptr) *part = found;
  return first;
}
