#include "support/record_text.h"

#include <cstdlib>

#include "wmq/json.h"
#include "wmq/stream.h"

namespace wmq::testing {

std::string written(const eventRecord &record) {
  const auto format = record.type == EVENT_JOB_STATUS2           ? wmq_formatstatus
                      : record.type == EVENT_JOB_PENDING_REASONS ? wmq_formatpendingreasons
                                                                 : wmq_formatrecord;
  eventRecord copy = record;
  char *text = nullptr;
  size_t length = 0;
  wmq_errno = 0;
  format(&copy, &text, &length);
  std::string line(text != nullptr ? text : "", length);
  std::free(text);
  return line;
}

std::string jsonOf(const eventRecord &record) {
  char *buffer = nullptr;
  size_t capacity = 0;
  const ssize_t length = wmq_record2json(&record, 0, &buffer, &capacity);
  std::string json = length < 0 ? "" : std::string(buffer, static_cast<size_t>(length));
  std::free(buffer);
  return json;
}

}  // namespace wmq::testing
