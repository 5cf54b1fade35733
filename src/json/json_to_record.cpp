#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "json/json_layout.h"
#include "json/json_values.h"
#include "wmq/json.h"
#include "wmq/stream.h"

namespace wmq {

namespace {

// What a record's object holds beside the log structure itself.
struct Envelope {
  const Token *type = nullptr;
  const Token *code = nullptr;
  const Token *version = nullptr;
  const Token *eventTime = nullptr;
  const Token *eventLog = nullptr;

  const Token **member(const char *name) {
    if (std::strcmp(name, "type") == 0) return &type;
    if (std::strcmp(name, "code") == 0) return &code;
    if (std::strcmp(name, "version") == 0) return &version;
    if (std::strcmp(name, "eventTime") == 0) return &eventTime;
    if (std::strcmp(name, "eventLog") == 0) return &eventLog;
    return nullptr;
  }
};

constexpr Place typePlace{nullptr, "type", 0};
constexpr Place codePlace{nullptr, "code", 0};
constexpr Place versionPlace{nullptr, "version", 0};
constexpr Place timePlace{nullptr, "eventTime", 0};
constexpr Place logPlace{nullptr, "eventLog", 0};

}  // namespace

static bool readEnvelope(const Scratch &scratch, Envelope &envelope) {
  const Token *tokens = scratch.tokens.items;
  if (tokens->kind != TokenKind::Object) return wrongKind(*tokens, "an object", nullptr);
  std::size_t at = 1;
  for (std::size_t members = tokens->length; members > 0; --members) {
    const Place place{nullptr, tokens[at++].text, 0};
    const Token **member = envelope.member(place.name);
    if (member == nullptr) return fault(WMQE_BAD_FORMAT, &place, "no such member");
    if (*member != nullptr) return fault(WMQE_BAD_FORMAT, &place, "given twice");
    const Token &value = tokens[at];
    *member = &value;
    const bool nested = value.kind == TokenKind::Object || value.kind == TokenKind::Array;
    at = nested ? value.end : at + 1;
  }
  return true;
}

static bool readType(const Envelope &envelope, std::int32_t &type) {
  if (envelope.type == nullptr && envelope.code == nullptr)
    return fault(WMQE_BAD_EVENT, nullptr, "neither type nor code is given");

  if (envelope.code != nullptr) {
    std::int64_t code = 0;
    if (!readWhole(*envelope.code, code, &codePlace)) return false;
    if (code < 1 || code > WMQ_MAX_EVENT_TYPE)
      return fault(WMQE_BAD_EVENT, &codePlace, "%lld is not a type code", static_cast<long long>(code));
    type = static_cast<std::int32_t>(code);
  }
  if (envelope.type == nullptr) return true;

  if (envelope.type->kind != TokenKind::String) return wrongKind(*envelope.type, "a string", &typePlace);
  const std::int32_t named = wmq_typecode(envelope.type->text);
  if (named >= 0 && (envelope.code == nullptr || type == named)) {
    type = named;
    return true;
  }
  const Excerpt name(envelope.type->text, envelope.type->length);
  if (named < 0) return fault(WMQE_BAD_EVENT, &typePlace, "%s is not a type name", name.text);
  return fault(WMQE_BAD_EVENT, &codePlace, "%d, but %s is %d", static_cast<int>(type), name.text,
               static_cast<int>(named));
}

static bool readLog(Scratch &scratch, const Envelope &envelope, eventRecord &record) {
  // Types without a log structure and without a name may still be handed to the writer, which drops them.
  static constexpr wmqLayout nothing = {"", 0, 0, nullptr};
  errno = 0;
  const wmqLayout *layout = wmq_schema(record.type);
  if (layout == nullptr) {
    if (errno == ENOMEM) return fault(WMQE_NO_MEM, nullptr, "out of memory");
    layout = &nothing;
  }
  return envelope.eventLog == nullptr ||
         readLayout(scratch, *layout, envelope.eventLog, &record.eventLog, &logPlace);
}

static bool readRecord(Scratch &scratch, eventRecord &record) {
  Envelope envelope;
  if (!readEnvelope(scratch, envelope) || !readType(envelope, record.type)) return false;
  if (envelope.version != nullptr && envelope.version->kind != TokenKind::String)
    return wrongKind(*envelope.version, "a string", &versionPlace);
  if (envelope.eventTime != nullptr && !readWhole(*envelope.eventTime, record.eventTime, &timePlace))
    return false;
  return readLog(scratch, envelope, record);
}

static eventRecord *newRecord() {
  auto *record = static_cast<eventRecord *>(std::calloc(1, sizeof(eventRecord)));
  if (record == nullptr)
    fault(WMQE_NO_MEM, nullptr, "out of memory");
  else
    std::memcpy(record->version, WMQ_FORMAT_VERSION, sizeof WMQ_FORMAT_VERSION);
  return record;
}

static eventRecord *recordFrom(const char *text, std::size_t length, Scratch &scratch) {
  if (!tokenize(text, length, scratch)) return nullptr;
  eventRecord *record = newRecord();
  if (record == nullptr || readRecord(scratch, *record)) return record;
  wmq_freekept(record);
  wmq_freelogrec(record);
  return nullptr;
}

}  // namespace wmq

eventRecord *wmq_json2record(const char *text, size_t length) {
  if (text == nullptr) {
    wmq::fault(WMQE_BAD_ARG, nullptr, "no text");
    return nullptr;
  }
  wmq::Scratch *scratch = wmq::takeScratch();
  if (scratch == nullptr) {
    wmq::fault(WMQE_NO_MEM, nullptr, "out of memory");
    return nullptr;
  }
  eventRecord *record = wmq::recordFrom(text, length, *scratch);
  wmq::giveBackScratch(scratch);
  return record;
}
