#include <cerrno>
#include <cstring>

#include "json/json_layout.h"
#include "wmq/json.h"

namespace wmq {

template <typename Writer>
static bool writeRecord(Writer &writer, const eventRecord &record, const wmqLayout &layout) {
  writer.StartObject();
  if (const char *name = wmq_typename(record.type)) {
    writer.name("type");
    writer.text(name);
  }
  writer.name("code");
  writer.number(record.type);
  writer.name("version");
  writer.text(record.version, strnlen(record.version, sizeof record.version));
  writer.name("eventTime");
  writer.number(record.eventTime);
  writer.name("eventLog");
  if (!writeLayout(writer, layout, &record.eventLog)) return false;
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

  wmq::OutputText out{*buffer, *buffer == nullptr ? 0 : *capacity, *length};
  bool written = false;
  if (pretty != 0) {
    wmq::IndentingWriter writer(out);
    written = wmq::writeRecord(writer, *record, *layout);
  } else {
    wmq::LineWriter writer(out);
    written = wmq::writeRecord(writer, *record, *layout);
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
