// Readers of the JSON form of a record: the same members, in the order in which they are looked for.
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <cstring>
#include <stdexcept>

#include "peers.h"

namespace wmq::bench {
namespace {

void put(char *array, size_t size, std::string_view text) {
  if (text.size() >= size) throw std::runtime_error("a name is too long");
  std::memcpy(array, text.data(), text.size());
  array[text.size()] = '\0';
}

// ------------------------------------------------------------------------------------ writing

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

void writeText(JsonWriter &writer, const char *text) {
  writer.String(text, static_cast<rapidjson::SizeType>(std::strlen(text)));
}

#define NUMBER(n, member) \
  writer.Key(#member);    \
  writer.Int64(log.member);
#define REAL(n, member) \
  writer.Key(#member);  \
  writer.Double(static_cast<double>(log.member));
#define TEXT(n, member) \
  writer.Key(#member);  \
  writeText(writer, log.member);
#define NAME TEXT
#define USAGE(n, member)                                                \
  writer.Key(#member);                                                  \
  writer.StartArray();                                                  \
  for (const double value : valuesOf(log.member)) writer.Double(value); \
  writer.EndArray();
#define NUMBERS(n, member)                                  \
  writer.Key(#member);                                      \
  writer.StartArray();                                      \
  for (const int32_t value : log.member) writer.Int(value); \
  writer.EndArray();
#define TEXTS(n, count, member)                                             \
  writer.Key(#member);                                                      \
  writer.StartArray();                                                      \
  for (int32_t i = 0; i < log.count; ++i) writeText(writer, log.member[i]); \
  writer.EndArray();

void writeMembers(JsonWriter &writer, const jobFinishLog &log) {
#include "job_finish_members.inc"
}
void writeMembers(JsonWriter &writer, const jobNewLog &log) {
#include "job_new_members.inc"
}
void writeMembers(JsonWriter &writer, const jobStatusLog &log) {
#include "job_status_members.inc"
}

#undef NUMBER
#undef REAL
#undef TEXT
#undef NAME
#undef USAGE
#undef NUMBERS
#undef TEXTS

void writeRecord(JsonWriter &writer, const eventRecord &record) {
  writer.StartObject();
  writer.Key("type");
  writer.Int(record.type);
  writer.Key("version");
  writer.String(record.version);
  writer.Key("eventTime");
  writer.Int(record.eventTime);
  withLog(record, [&](const auto &log) { writeMembers(writer, log); });
  writer.EndObject();
}

// ------------------------------------------------------------------------- simdjson on demand

namespace ondemand = simdjson::ondemand;

#define NUMBER(n, member) log.member = static_cast<decltype(log.member)>(int64_t(object.find_field(#member)));
#define REAL(n, member) log.member = static_cast<float>(double(object.find_field(#member)));
#define TEXT(n, member) log.member = copyOf(std::string_view(object.find_field(#member)));
#define NAME(n, member) put(log.member, sizeof log.member, std::string_view(object.find_field(#member)));
#define USAGE(n, member)                                                                               \
  {                                                                                                    \
    double *next = valuesOf(log.member).data();                                                        \
    for (ondemand::value value : object.find_field(#member).get_array()) *next++ = value.get_double(); \
  }
#define NUMBERS(n, member)                                               \
  {                                                                      \
    int32_t *next = log.member;                                          \
    for (ondemand::value value : object.find_field(#member).get_array()) \
      *next++ = static_cast<int32_t>(int64_t(value.get_int64()));        \
  }
#define TEXTS(n, count, member)                                               \
  {                                                                           \
    ondemand::array array = object.find_field(#member).get_array();           \
    const size_t size = array.count_elements();                               \
    log.count = static_cast<int32_t>(size);                                   \
    log.member = newArray(size);                                              \
    char **next = log.member;                                                 \
    for (ondemand::value value : array) *next++ = copyOf(value.get_string()); \
  }

void readMembers(ondemand::object &object, jobFinishLog &log) {
#include "job_finish_members.inc"
}
void readMembers(ondemand::object &object, jobNewLog &log) {
#include "job_new_members.inc"
}
void readMembers(ondemand::object &object, jobStatusLog &log) {
#include "job_status_members.inc"
}

#undef NUMBER
#undef REAL
#undef TEXT
#undef NAME
#undef USAGE
#undef NUMBERS
#undef TEXTS

// --------------------------------------------------------------------------- simdjson's tree

// Members in their order: each is found where the last one ends.
struct DomCursor {
  simdjson::dom::object::iterator next;
  simdjson::dom::element take(std::string_view name) {
    if (next.key() != name) throw std::runtime_error("a member is missing");
    const simdjson::dom::element value = next.value();
    ++next;
    return value;
  }
};

#define NUMBER(n, member) log.member = static_cast<decltype(log.member)>(int64_t(cursor.take(#member)));
#define REAL(n, member) log.member = static_cast<float>(double(cursor.take(#member)));
#define TEXT(n, member) log.member = copyOf(std::string_view(cursor.take(#member)));
#define NAME(n, member) put(log.member, sizeof log.member, std::string_view(cursor.take(#member)));
#define USAGE(n, member)                                                                                 \
  {                                                                                                      \
    double *next = valuesOf(log.member).data();                                                          \
    for (const simdjson::dom::element value : cursor.take(#member).get_array()) *next++ = double(value); \
  }
#define NUMBERS(n, member)                                                      \
  {                                                                             \
    int32_t *next = log.member;                                                 \
    for (const simdjson::dom::element value : cursor.take(#member).get_array()) \
      *next++ = static_cast<int32_t>(int64_t(value));                           \
  }
#define TEXTS(n, count, member)                                                                 \
  {                                                                                             \
    const simdjson::dom::array array = cursor.take(#member).get_array();                        \
    log.count = static_cast<int32_t>(array.size());                                             \
    log.member = newArray(array.size());                                                        \
    char **next = log.member;                                                                   \
    for (const simdjson::dom::element value : array) *next++ = copyOf(std::string_view(value)); \
  }

void readMembers(DomCursor &cursor, jobFinishLog &log) {
#include "job_finish_members.inc"
}
void readMembers(DomCursor &cursor, jobNewLog &log) {
#include "job_new_members.inc"
}
void readMembers(DomCursor &cursor, jobStatusLog &log) {
#include "job_status_members.inc"
}

#undef NUMBER
#undef REAL
#undef TEXT
#undef NAME
#undef USAGE
#undef NUMBERS
#undef TEXTS

// ----------------------------------------------------------------------------------- RapidJSON

struct RapidCursor {
  rapidjson::Value::ConstMemberIterator next;
  const rapidjson::Value &take(std::string_view name) {
    if (textOf(next->name) != name) throw std::runtime_error("a member is missing");
    return (next++)->value;
  }
  static std::string_view textOf(const rapidjson::Value &value) {
    return {value.GetString(), value.GetStringLength()};
  }
};

#define NUMBER(n, member) log.member = static_cast<decltype(log.member)>(cursor.take(#member).GetInt64());
#define REAL(n, member) log.member = static_cast<float>(cursor.take(#member).GetDouble());
#define TEXT(n, member) log.member = copyOf(RapidCursor::textOf(cursor.take(#member)));
#define NAME(n, member) put(log.member, sizeof log.member, RapidCursor::textOf(cursor.take(#member)));
#define USAGE(n, member)                                                                               \
  {                                                                                                    \
    double *next = valuesOf(log.member).data();                                                        \
    for (const rapidjson::Value &value : cursor.take(#member).GetArray()) *next++ = value.GetDouble(); \
  }
#define NUMBERS(n, member)                                                                          \
  {                                                                                                 \
    int32_t *next = log.member;                                                                     \
    for (const rapidjson::Value &value : cursor.take(#member).GetArray()) *next++ = value.GetInt(); \
  }
#define TEXTS(n, count, member)                                                                          \
  {                                                                                                      \
    const rapidjson::Value &array = cursor.take(#member);                                                \
    log.count = static_cast<int32_t>(array.Size());                                                      \
    log.member = newArray(array.Size());                                                                 \
    char **next = log.member;                                                                            \
    for (const rapidjson::Value &value : array.GetArray()) *next++ = copyOf(RapidCursor::textOf(value)); \
  }

void readMembers(RapidCursor &cursor, jobFinishLog &log) {
#include "job_finish_members.inc"
}
void readMembers(RapidCursor &cursor, jobNewLog &log) {
#include "job_new_members.inc"
}
void readMembers(RapidCursor &cursor, jobStatusLog &log) {
#include "job_status_members.inc"
}

}  // namespace

std::string jsonOf(const eventRecord &record) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  writeRecord(writer, record);
  return {buffer.GetString(), buffer.GetSize()};
}

Formatter rapidjsonFormatter(const eventRecord &record) {
  auto buffer = std::make_shared<rapidjson::StringBuffer>();
  return [buffer, &record]() -> std::string_view {
    buffer->Clear();
    JsonWriter writer(*buffer);
    writeRecord(writer, record);
    buffer->Put('\n');
    return {buffer->GetString(), buffer->GetSize()};
  };
}

Reader simdjsonOnDemandReader(const eventRecord &sample) {
  auto json = std::make_shared<simdjson::padded_string>(jsonOf(sample));
  auto parser = std::make_shared<ondemand::parser>();
  return [json, parser] {
    ondemand::document document = parser->iterate(*json);
    ondemand::object object = document.get_object();
    Record record = newRecord(static_cast<int32_t>(int64_t(object.find_field("type"))));
    put(record->version, sizeof record->version, std::string_view(object.find_field("version")));
    record->eventTime = static_cast<int32_t>(int64_t(object.find_field("eventTime")));
    withLog(*record, [&](auto &log) { readMembers(object, log); });
    return record;
  };
}

Reader simdjsonTreeReader(const eventRecord &sample) {
  auto json = std::make_shared<simdjson::padded_string>(jsonOf(sample));
  auto parser = std::make_shared<simdjson::dom::parser>();
  return [json, parser] {
    const simdjson::dom::object object = parser->parse(*json).get_object();
    DomCursor cursor{object.begin()};
    Record record = newRecord(static_cast<int32_t>(int64_t(cursor.take("type"))));
    put(record->version, sizeof record->version, std::string_view(cursor.take("version")));
    record->eventTime = static_cast<int32_t>(int64_t(cursor.take("eventTime")));
    withLog(*record, [&](auto &log) { readMembers(cursor, log); });
    return record;
  };
}

// Parsing in place spoils the text, so that it is copied first: what a line reader would do anyway.
Reader rapidjsonInSituReader(const eventRecord &sample) {
  struct State {
    std::string json;
    std::string text;
    char pool[32768];
  };
  auto state = std::make_shared<State>();
  state->json = jsonOf(sample);
  return [state] {
    state->text = state->json;
    rapidjson::MemoryPoolAllocator<> pool(state->pool, sizeof state->pool);
    rapidjson::Document document(&pool);
    document.ParseInsitu(state->text.data());
    RapidCursor cursor{document.MemberBegin()};
    Record record = newRecord(cursor.take("type").GetInt());
    put(record->version, sizeof record->version, RapidCursor::textOf(cursor.take("version")));
    record->eventTime = cursor.take("eventTime").GetInt();
    withLog(*record, [&](auto &log) { readMembers(cursor, log); });
    return record;
  };
}

}  // namespace wmq::bench
