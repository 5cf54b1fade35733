#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include "json/json_layout.h"
#include "wmq/json.h"

namespace wmq {

// Made at the first record of a type; null without memory for it.
static const WritingPlan *planOf(int32_t type, const wmqLayout &layout) {
  static std::atomic<const WritingPlan *> plans[WMQ_MAX_EVENT_TYPE + 1];
  std::atomic<const WritingPlan *> &known = plans[type];
  if (const WritingPlan *const plan = known.load(std::memory_order_acquire)) return plan;
  try {
    auto made = std::make_unique<const WritingPlan>(layout);
    const WritingPlan *others = nullptr;
    return known.compare_exchange_strong(others, made.get()) ? made.release() : others;
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

// A name that a writer takes.
struct QuotedName {
  char text[WritingPlan::nameRoom] = {};
  std::size_t length;

  template <std::size_t Size>
  consteval explicit QuotedName(const char (&name)[Size]) : length(Size + 2) {
    std::copy_n(name, Size - 1, text + 1);
    text[0] = text[Size] = '"';
    text[Size + 1] = ':';
  }
  operator std::string_view() const { return {text, length}; }
};

template <typename Writer>
static bool writeRecord(Writer &writer, const eventRecord &record, const WritingPlan &plan) {
  static constexpr QuotedName type("type"), code("code"), version("version"), time("eventTime"),
      log("eventLog");
  const auto number = [&](const int32_t &value) {
    writer.scalar(WMQ_KIND_INT32, reinterpret_cast<const char *>(&value), sizeof value);
  };
  writer.StartObject();
  if (const char *name = wmq_typename(record.type)) {
    writer.name(type);
    writer.text(name);
  }
  writer.name(code);
  number(record.type);
  writer.name(version);
  writer.text(record.version, strnlen(record.version, sizeof record.version));
  writer.name(time);
  number(record.eventTime);
  writer.name(log);
  if (!writeStructure(writer, plan, &record.eventLog)) return false;
  writer.EndObject();
  writer.finish();
  return !writer.out.failed;
}

}  // namespace wmq

ssize_t wmq_appendjson(const eventRecord *record, int pretty, char **buffer, size_t *capacity,
                       size_t *length) {
  if (record == nullptr || buffer == nullptr || capacity == nullptr || length == nullptr) {
    wmq_errno = WMQE_BAD_ARG;
    return -1;
  }
  errno = 0;
  const wmqLayout *layout = wmq_schema(record->type);
  if (layout == nullptr) {
    wmq_errno = errno == ENOMEM ? WMQE_NO_MEM : WMQE_BAD_EVENT;
    return -1;
  }

  const wmq::WritingPlan *const plan = wmq::planOf(record->type, *layout);
  if (plan == nullptr) {
    wmq_errno = WMQE_NO_MEM;
    return -1;
  }

  wmq::OutputText out{*buffer, *buffer == nullptr ? 0 : *capacity, *length};
  bool written = false;
  if (pretty != 0) {
    wmq::IndentingWriter writer(out);
    written = wmq::writeRecord(writer, *record, *plan);
  } else {
    wmq::LineWriter writer(out);
    written = wmq::writeRecord(writer, *record, *plan);
  }

  *buffer = out.text;
  *capacity = out.capacity;
  if (!written) {
    wmq_errno = WMQE_NO_MEM;
    return -1;
  }
  const size_t added = out.size - 1 - *length;
  *length += added;
  return static_cast<ssize_t>(added);
}

ssize_t wmq_record2json(const eventRecord *record, int pretty, char **buffer, size_t *capacity) {
  size_t length = 0;
  return wmq_appendjson(record, pretty, buffer, capacity, &length);
}
