#include "support/record_lines.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace wmq::testing {

std::string line(const std::string &type, const std::string &version, const std::string &fields) {
  return '"' + type + "\" \"" + version + "\" " + std::to_string(kEventTime) + ' ' + fields;
}

size_t Fields::indexOf(const std::string &name) const {
  const auto found =
      std::find_if(fields_.begin(), fields_.end(), [&](const auto &field) { return field.first == name; });
  if (found == fields_.end()) throw std::invalid_argument("no field " + name);
  return static_cast<size_t>(found - fields_.begin());
}

Fields Fields::with(const std::string &name, const std::string &text) const {
  Fields changed = *this;
  changed.fields_[indexOf(name)].second = text;
  return changed;
}

Fields Fields::without(const std::string &name) const {
  Fields changed = *this;
  changed.fields_.erase(changed.fields_.begin() + static_cast<std::ptrdiff_t>(indexOf(name)));
  return changed;
}

Fields Fields::upTo(const std::string &name) const {
  Fields changed = *this;
  changed.fields_.resize(indexOf(name) + 1);
  return changed;
}

std::vector<std::string> Fields::names() const {
  std::vector<std::string> names;
  for (const auto &field : fields_) names.push_back(field.first);
  return names;
}

std::string Fields::text() const {
  std::string text;
  for (const auto &field : fields_) text += (text.empty() ? "" : " ") + field.second;
  return text;
}

std::ostream &operator<<(std::ostream &out, const Fault &fault) {
  return out << fault.error << " at \"" << fault.field << '"';
}

Fault lastFault(int error) {
  if (error == 0) return {};
  const std::string detail = wmq_errdetail();
  const size_t mark = detail.find("field ");
  if (mark == std::string::npos) return {error, ""};
  const size_t begin = mark + 6;
  return {error, detail.substr(begin, detail.find(' ', begin) - begin)};
}

Fault faultOf(const std::string &line) {
  const OwnedRecord record = parse(line);
  return record != nullptr ? Fault{} : lastFault(wmq_errno);
}

Fault faultOf(eventRecord &record) {
  format(record);
  return lastFault(wmq_errno);
}

OwnedRecord readBack(eventRecord &record) { return parse(format(record)); }

std::string fieldsOf(eventRecord &record) {
  const std::string text = format(record);
  const std::string time = std::to_string(record.eventTime);
  const size_t header = text.find(time);
  return header == std::string::npos ? "(no header)" : text.substr(header + time.size());
}

OwnedRecord emptyRecord(int32_t type) {
  OwnedRecord record(static_cast<eventRecord *>(std::calloc(1, sizeof(eventRecord))));
  record->type = type;
  record->eventTime = kEventTime;
  return record;
}

Names::Names(std::initializer_list<std::string> names) : texts_(names) {
  for (std::string &text : texts_) pointers_.push_back(text.data());
}

std::vector<std::string> listed(int32_t count, char *const *names) {
  if (names == nullptr || count < 0) return {};
  return {names, names + count};
}

}  // namespace wmq::testing
