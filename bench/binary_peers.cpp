// Readers of binary forms: Protocol Buffers and Cap'n Proto.
#include <capnp/message.h>
#include <capnp/serialize.h>

#include <cstring>

#include "peers.capnp.h"
#include "peers.h"
#include "peers.pb.h"

namespace wmq::bench {
namespace {

void put(char *array, size_t size, std::string_view text) {
  if (text.size() >= size) throw std::runtime_error("a name is too long");
  std::memcpy(array, text.data(), text.size());
  array[text.size()] = '\0';
}

// ------------------------------------------------------------------------------------ protobuf

#define NUMBER(n, member) message.set_f##n(log.member);
#define REAL NUMBER
#define TEXT NUMBER
#define NAME NUMBER
#define USAGE(n, member) \
  for (const double value : valuesOf(log.member)) message.add_f##n(value);
#define NUMBERS(n, member) \
  for (const int32_t value : log.member) message.add_f##n(value);
#define TEXTS(n, count, member) \
  for (int32_t i = 0; i < log.count; ++i) message.add_f##n(log.member[i]);

void writeMembers(protobuf::JobFinish &message, const jobFinishLog &log) {
#include "job_finish_members.inc"
}
void writeMembers(protobuf::JobNew &message, const jobNewLog &log) {
#include "job_new_members.inc"
}
void writeMembers(protobuf::JobStatus &message, const jobStatusLog &log) {
#include "job_status_members.inc"
}

#undef NUMBER
#undef TEXT
#undef NAME
#undef REAL
#undef USAGE
#undef NUMBERS
#undef TEXTS
#define NUMBER(n, member) log.member = static_cast<decltype(log.member)>(message.f##n());
#define REAL NUMBER
#define TEXT(n, member) log.member = copyOf(message.f##n());
#define NAME(n, member) put(log.member, sizeof log.member, message.f##n());
#define USAGE(n, member) \
  std::copy(message.f##n().begin(), message.f##n().end(), valuesOf(log.member).begin());
#define NUMBERS(n, member) std::copy(message.f##n().begin(), message.f##n().end(), log.member);
#define TEXTS(n, count, member)                          \
  log.count = message.f##n##_size();                     \
  log.member = newArray(static_cast<size_t>(log.count)); \
  for (int i = 0; i < log.count; ++i) log.member[i] = copyOf(message.f##n(i));

void readMembers(const protobuf::JobFinish &message, jobFinishLog &log) {
#include "job_finish_members.inc"
}
void readMembers(const protobuf::JobNew &message, jobNewLog &log) {
#include "job_new_members.inc"
}
void readMembers(const protobuf::JobStatus &message, jobStatusLog &log) {
#include "job_status_members.inc"
}

#undef NUMBER
#undef TEXT
#undef NAME
#undef REAL
#undef USAGE
#undef NUMBERS
#undef TEXTS

// The message is used again and again: its own strings keep their room.
template <typename Message, auto Log>
Reader protobufReaderOf(const eventRecord &sample) {
  struct State {
    std::string bytes;
    Message message;
    int32_t type;
  };
  auto state = std::make_shared<State>();
  state->type = sample.type;
  state->message.set_f100(sample.eventTime);
  writeMembers(state->message, sample.eventLog.*Log);
  state->message.SerializeToString(&state->bytes);
  return [state] {
    if (!state->message.ParseFromString(state->bytes)) throw std::runtime_error("no message");
    Record record = newRecord(state->type);
    record->eventTime = state->message.f100();
    readMembers(state->message, record->eventLog.*Log);
    return record;
  };
}

template <typename Message, auto Log>
Formatter protobufFormatterOf(const eventRecord &record) {
  struct State {
    std::string bytes;
    Message message;
  };
  auto state = std::make_shared<State>();
  return [state, &record]() -> std::string_view {
    state->message.Clear();
    state->message.set_f100(record.eventTime);
    writeMembers(state->message, record.eventLog.*Log);
    state->message.SerializeToString(&state->bytes);
    return state->bytes;
  };
}

// --------------------------------------------------------------------------------- Cap'n Proto

#define NUMBER(n, member) message.setF##n(log.member);
#define REAL NUMBER
#define TEXT NUMBER
#define NAME NUMBER
#define USAGE(n, member)                                                             \
  {                                                                                  \
    auto list = message.initF##n(WMX_RUSAGE_VALUES);                                 \
    for (unsigned i = 0; i < list.size(); ++i) list.set(i, valuesOf(log.member)[i]); \
  }
#define NUMBERS(n, member)                                                      \
  {                                                                             \
    auto list = message.initF##n(static_cast<unsigned>(std::size(log.member))); \
    for (unsigned i = 0; i < list.size(); ++i) list.set(i, log.member[i]);      \
  }
#define TEXTS(n, count, member)                                            \
  {                                                                        \
    auto list = message.initF##n(static_cast<unsigned>(log.count));        \
    for (unsigned i = 0; i < list.size(); ++i) list.set(i, log.member[i]); \
  }

void writeMembers(capnproto::JobFinish::Builder message, const jobFinishLog &log) {
#include "job_finish_members.inc"
}
void writeMembers(capnproto::JobNew::Builder message, const jobNewLog &log) {
#include "job_new_members.inc"
}
void writeMembers(capnproto::JobStatus::Builder message, const jobStatusLog &log){
#include "job_status_members.inc"
}

#undef NUMBER
#undef TEXT
#undef NAME
#undef REAL
#undef USAGE
#undef NUMBERS
#undef TEXTS

std::string_view viewOf(capnp::Text::Reader text) {
  return {text.cStr(), text.size()};
}

#define NUMBER(n, member) log.member = static_cast<decltype(log.member)>(message.getF##n());
#define REAL NUMBER
#define TEXT(n, member) log.member = copyOf(viewOf(message.getF##n()));
#define NAME(n, member) put(log.member, sizeof log.member, viewOf(message.getF##n()));
#define USAGE(n, member)                                          \
  {                                                               \
    double *next = valuesOf(log.member).data();                   \
    for (const double value : message.getF##n()) *next++ = value; \
  }
#define NUMBERS(n, member)                                         \
  {                                                                \
    int32_t *next = log.member;                                    \
    for (const int32_t value : message.getF##n()) *next++ = value; \
  }
#define TEXTS(n, count, member)                                                         \
  {                                                                                     \
    const auto list = message.getF##n();                                                \
    log.count = static_cast<int32_t>(list.size());                                      \
    log.member = newArray(list.size());                                                 \
    for (unsigned i = 0; i < list.size(); ++i) log.member[i] = copyOf(viewOf(list[i])); \
  }

void readMembers(capnproto::JobFinish::Reader message, jobFinishLog &log) {
#include "job_finish_members.inc"
}
void readMembers(capnproto::JobNew::Reader message, jobNewLog &log) {
#include "job_new_members.inc"
}
void readMembers(capnproto::JobStatus::Reader message, jobStatusLog &log) {
#include "job_status_members.inc"
}

template <typename Message, auto Log>
Reader capnprotoReaderOf(const eventRecord &sample) {
  struct State {
    kj::Array<capnp::word> words;
    int32_t type;
  };
  auto state = std::make_shared<State>();
  capnp::MallocMessageBuilder builder;
  auto message = builder.initRoot<Message>();
  message.setF0(sample.eventTime);
  writeMembers(message, sample.eventLog.*Log);
  state->words = capnp::messageToFlatArray(builder);
  state->type = sample.type;
  return [state] {
    capnp::FlatArrayMessageReader reader(state->words);
    const auto root = reader.getRoot<Message>();
    Record record = newRecord(state->type);
    record->eventTime = root.getF0();
    readMembers(root, record->eventLog.*Log);
    return record;
  };
}

}  // namespace

Reader protobufReader(const eventRecord &sample) {
  switch (sample.type) {
    case EVENT_JOB_FINISH:
      return protobufReaderOf<protobuf::JobFinish, &eventLog::jobFinishLog>(sample);
    case EVENT_JOB_NEW:
      return protobufReaderOf<protobuf::JobNew, &eventLog::jobNewLog>(sample);
    default:
      return protobufReaderOf<protobuf::JobStatus, &eventLog::jobStatusLog>(sample);
  }
}

Formatter protobufFormatter(const eventRecord &record) {
  switch (record.type) {
    case EVENT_JOB_FINISH:
      return protobufFormatterOf<protobuf::JobFinish, &eventLog::jobFinishLog>(record);
    case EVENT_JOB_NEW:
      return protobufFormatterOf<protobuf::JobNew, &eventLog::jobNewLog>(record);
    default:
      return protobufFormatterOf<protobuf::JobStatus, &eventLog::jobStatusLog>(record);
  }
}

Reader capnprotoReader(const eventRecord &sample) {
  switch (sample.type) {
    case EVENT_JOB_FINISH:
      return capnprotoReaderOf<capnproto::JobFinish, &eventLog::jobFinishLog>(sample);
    case EVENT_JOB_NEW:
      return capnprotoReaderOf<capnproto::JobNew, &eventLog::jobNewLog>(sample);
    default:
      return capnprotoReaderOf<capnproto::JobStatus, &eventLog::jobStatusLog>(sample);
  }
}

}  // namespace wmq::bench
