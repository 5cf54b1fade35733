#include "fuzz/second_reader.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "fuzz/line_cursor.h"
#include "fuzz/second_pairs.h"
#include "fuzz/slow_text_forms.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

// Reading ends here, with success.
struct Stop {};

bool startsWith(const char *text, const char *beginning) {
  return std::strncmp(text, beginning, std::strlen(beginning)) == 0;
}

bool isNumber(const wmqField &field) {
  return field.shape == WMQ_SHAPE_ONE && (field.kind == WMQ_KIND_INT32 || field.kind == WMQ_KIND_INT64 ||
                                          field.kind == WMQ_KIND_FLOAT || field.kind == WMQ_KIND_DOUBLE);
}

bool passes(float version, wmqGate gate, float threshold) {
  const bool same = std::fabs(version - threshold) <= 0.00001F * std::fabs(version);
  if (gate == WMQ_GATE_AT_LEAST) return same || version > threshold;
  if (gate == WMQ_GATE_ABOVE) return !same && version > threshold;
  return true;
}

// What the schema does not tell of host lists: those for which a negative count fails as an allocation would,
// though an empty one is fine, and the one for which it becomes 0.
bool negativeIsNoMemory(const wmqLayout &layout, const wmqField &field) {
  const std::string name = std::string(layout.name) + '.' + field.name;
  return (field.flags & WMQ_FIELD_EMPTY_ARRAY) != 0 || startsWith(field.note, "a count of 0 is refused") ||
         startsWith(field.note, "a single 0 where") || name == "migLog.hosts" ||
         name == "jobResizeLog.resizeSlots" || name == "rmtCtrlEntry.a" ||
         std::strcmp(layout.name, "jobRunRusageLog") == 0;
}
bool negativeIsZero(const wmqLayout &layout, const wmqField &field) {
  return std::strcmp(layout.name, "jobForwardLog") == 0 && std::strcmp(field.name, "hosts") == 0;
}

// Fewest bytes of a line that an entry takes, one behind each field included.
size_t leastBytes(const wmqLayout &entry) {
  size_t bytes = 0;
  for (size_t i = 0; i < entry.numFields; ++i) {
    const wmqField &field = entry.fields[i];
    if ((field.flags & WMQ_FIELD_WRITTEN_ONLY) != 0) continue;
    if (isNumber(field)) bytes += std::strlen("0 ");
    if (field.kind == WMQ_KIND_STRING && field.shape == WMQ_SHAPE_ONE)
      bytes += *field.form == 'q' ? std::strlen("\"\" ") : std::strlen("x ");
  }
  return std::max<size_t>(bytes, 1);
}

bool hasCheckedRanges(const wmqLayout &layout) { return std::strcmp(layout.name, "jobSwitch2Log") == 0; }

class Structures {
 public:
  Structures(LineCursor &cursor, FlatRecord &flat, float version, int32_t eventTime, const UserNames &users)
      : cursor_(cursor),
        flat_(flat),
        version_(version),
        eventTime_(eventTime),
        users_(users),
        firstField_(cursor.position()) {}

  void record(const wmqLayout &layout);

 private:
  void structure(const wmqLayout &layout, const std::string &path);
  void field(const wmqLayout &layout, size_t index, const std::string &path);
  void number(const wmqLayout &layout, size_t index, const std::string &path);
  void text(const wmqField &field, const std::string &path);
  void usage(const std::string &path);
  void fixedArray(const wmqField &field, const std::string &path, bool present);
  void array(const wmqLayout &layout, size_t index, const std::string &path);
  void hostList(const wmqLayout &layout, const wmqField &field, const std::string &path);
  void parallelArrays(const wmqLayout &layout, size_t index, const std::string &path, int64_t count);
  void ranges(const wmqLayout &layout, size_t index, const std::string &path);
  void element(const wmqField &field, const std::string &path);
  void extension(const std::string &path);
  void namedValues(const std::string &path);
  void cpuProfile(const std::string &path);
  void offLine(const wmqField &field, const std::string &path);
  void copyList(const wmqField &field, const std::string &path, const std::string &other);

  bool isPresent(const wmqField &field, const std::string &path) const;
  bool holds(const std::string &condition, const std::string &path) const;
  void absent(const wmqField &field, const std::string &path);
  int64_t valueAt(const std::string &path) const { return std::strtoll(flat_.at(path).c_str(), nullptr, 10); }
  std::string quotedField() {
    std::string content = cursor_.quoted();
    skip();
    return content;
  }
  int32_t number32() {
    const auto value = static_cast<int32_t>(cursor_.integer());
    skip();
    return value;
  }
  int32_t count(const std::string &path) {
    const size_t begin = cursor_.position();
    const auto value = static_cast<int32_t>(cursor_.integer());
    cursor_.noteCount(path, begin);
    skip();
    return value;
  }
  void skip() {
    if (skips_) cursor_.skipOne();
  }

  LineCursor &cursor_;
  FlatRecord &flat_;
  float version_;
  int32_t eventTime_;
  const UserNames &users_;
  size_t firstField_;
  bool skips_ = true;
  int remembered_ = 0;
  int64_t hostsLeft_ = 16777216;
};

void Structures::record(const wmqLayout &layout) {
  skips_ = std::strcmp(layout.name, "jobRunRusageLog") != 0;
  flattenZero(layout, "", flat_);
  try {
    structure(layout, "");
  } catch (const Stop &) {
  }
  if (remembered_ != 0) throw Refusal{remembered_};
}

void Structures::structure(const wmqLayout &layout, const std::string &path) {
  if (std::strcmp(layout.name, "cpuProfileLog") == 0) {
    field(layout, 0, path);
    return cpuProfile(path);
  }
  for (size_t i = 0; i < layout.numFields; ++i) field(layout, i, path);
}

// One number is enough, five are read, and anything between is malformed.
void Structures::cpuProfile(const std::string &path) {
  const auto first = static_cast<int32_t>(cursor_.integer());
  flat_[path + "cpuInt1"] = flatNumber(first);
  int converted = 0;
  for (const char *name : {"cpuInt2", "cpuInt4", "cpuInt3"}) {
    const auto value = cursor_.tryInteger();
    if (!value) break;
    flat_[path + name] = flatNumber(static_cast<int32_t>(*value));
    ++converted;
  }
  if (converted == 0) flat_[path + "cpuInt2"] = flatNumber(first);
  if (converted == 1 || converted == 2) throw Refusal{WMQE_BAD_FORMAT};
}

// ------------------------------------------------------------------------------ one field

void Structures::field(const wmqLayout &layout, size_t index, const std::string &path) {
  const wmqField &field = layout.fields[index];
  if ((field.flags & (WMQ_FIELD_RESERVED | WMQ_FIELD_WRITTEN_ONLY)) != 0) return;
  if ((field.flags & WMQ_FIELD_OFF_LINE) != 0) return offLine(field, path);
  const bool present = isPresent(field, path);
  if (field.shape == WMQ_SHAPE_COUNTED) {
    if (present) return array(layout, index, path);
    return absent(field, path);
  }
  if (field.shape == WMQ_SHAPE_FIXED) return fixedArray(field, path, present);
  if (!present) return absent(field, path);
  const std::string name = path + field.name;
  switch (field.kind) {
    case WMQ_KIND_STRING:
    case WMQ_KIND_CHARS:
      return text(field, path);
    case WMQ_KIND_STRUCT: {
      if (std::strcmp(field.form, "19 numbers") == 0) return usage(name + '.');
      const size_t begin =
          cursor_.position();  // a whole record, behind which reading goes on where it begins
      structure(*field.layout, name + '.');
      return cursor_.goTo(begin);
    }
    case WMQ_KIND_SUBMIT_EXT:
      return extension(name);
    case WMQ_KIND_NAMED_VALUES:
      return namedValues(name);
    case WMQ_KIND_AFFINITY:
      return flattenAffinityText(quotedField(), name, flat_);
    default:
      return number(layout, index, path);
  }
}

void Structures::offLine(const wmqField &field, const std::string &path) {
  std::string &value = flat_[path + field.name];
  const std::string name = field.name;
  if (name == "endTime") value = flatNumber(eventTime_);
  if (name == "endOfStream") value = flatNumber(1);
  if (name == "numRangeJobs") value = flatNumber(passes(version_, WMQ_GATE_AT_LEAST, 10.1F) ? 0 : -1);
  if (name == "cpuTime") {
    const double used = std::strtod(flat_.at(path + "wmxRusage.ru_utime").c_str(), nullptr) +
                        std::strtod(flat_.at(path + "wmxRusage.ru_stime").c_str(), nullptr);
    value = flatReal(used < 0 ? 0 : static_cast<double>(static_cast<float>(used)));
  }
}

bool Structures::holds(const std::string &condition, const std::string &path) const {
  char name[64];
  unsigned mask = 0;
  if (std::sscanf(condition.c_str(), "%63s & 0x%x", name, &mask) != 2) {
    if (std::sscanf(condition.c_str(), "%63s is not 0", name) != 1) std::abort();
    mask = ~0U;
  }
  return (static_cast<uint32_t>(valueAt(path + name)) & mask) != 0;
}

bool Structures::isPresent(const wmqField &field, const std::string &path) const {
  if (!passes(version_, field.gate, field.gateVersion)) return false;
  std::string conditions = field.condition;
  if (conditions.empty()) return true;
  for (size_t mark = 0; mark != std::string::npos;) {
    mark = conditions.find(" or ");
    if (holds(conditions.substr(0, mark), path)) return true;
    if (mark != std::string::npos) conditions.erase(0, mark + 4);
  }
  return false;
}

void Structures::absent(const wmqField &field, const std::string &path) {
  const std::string name = path + field.name;
  const std::string value = field.absent;
  if (value.empty() || value == "unchanged" || value == "null" || startsWith(field.absent, "as copy of"))
    return;
  if (startsWith(field.absent, "copy of ")) {
    const std::string other = path + value.substr(8);
    if (field.shape == WMQ_SHAPE_COUNTED) return copyList(field, path, other);
    flat_[name] = flat_.at(other);
  } else if (startsWith(field.absent, "looked up")) {
    const auto userId = static_cast<int32_t>(valueAt(path + "userId"));
    const auto found = users_.find(userId);
    if (userId == -1 && value.find("unknown") != std::string::npos) {
      flat_[name] = flatText("unknown");
    } else if (found == users_.end()) {
      throw Refusal{WMQE_NO_USER};
    } else {
      flat_[name] = flatText(found->second);
    }
  } else if (field.kind == WMQ_KIND_STRING || field.kind == WMQ_KIND_CHARS) {
    flat_[name] = flatText("");
  } else if (isNumber(field)) {
    const bool literal = value.find_first_not_of("-0123456789") == std::string::npos;
    flat_[name] = literal ? value : flat_.at(path + value);
  }
}

void Structures::number(const wmqLayout &layout, size_t index, const std::string &path) {
  const wmqField &field = layout.fields[index];
  const wmqField *next = index + 1 < layout.numFields ? &field + 1 : nullptr;
  const bool goesOn = next != nullptr && isNumber(*next) && (next->flags & WMQ_FIELD_TOGETHER) != 0;
  const bool begins = (field.flags & WMQ_FIELD_TOGETHER) == 0;
  const bool onlyIfTextRemains = startsWith(field.note, "read only if text remains");
  if (begins && startsWith(field.note, "read from the first field on again")) cursor_.goTo(firstField_);
  if (onlyIfTextRemains && cursor_.atEnd()) return;

  const size_t begin = cursor_.position();
  std::string &value = flat_[path + field.name];
  const bool lenient = startsWith(field.note, "0 when it does not convert") ||
                       (std::strcmp(field.name, "indexRangeCnt") == 0 && !hasCheckedRanges(layout));
  if (field.kind == WMQ_KIND_FLOAT) {
    value = flatReal(static_cast<double>(LineCursor::required(cursor_.tryScan<float>("%f%n"))));
  } else if (startsWith(field.note, "low 32 bits, signed; read as an unsigned")) {
    value =
        flatNumber(static_cast<int64_t>(LineCursor::required(cursor_.tryScan<unsigned long long>("%llu%n"))));
  } else {
    const auto wide = cursor_.tryInteger();
    if (!wide && !lenient) throw Refusal{WMQE_BAD_FORMAT};
    if (!wide) {
      value = flatNumber(0);
      return;
    }
    const bool narrow = field.kind == WMQ_KIND_INT32 ||
                        (std::strcmp(field.form, "%d") == 0 && (field.flags & WMQ_FIELD_COUNT) == 0);
    value = flatNumber(narrow ? static_cast<int32_t>(*wide) : *wide);
    if ((field.flags & WMQ_FIELD_COUNT) != 0) cursor_.noteCount(path + field.name, begin);
  }
  // A number that may follow in its other place comes without anything between.
  const bool otherPlaceFollows = next != nullptr && startsWith(next->note, "read only if text remains");
  if (!goesOn && !onlyIfTextRemains && !otherPlaceFollows) skip();

  if (startsWith(field.note, "the reader stops here when") && value == "0") throw Stop{};
  if (startsWith(field.note, "dropped when read from a line before 3") &&
      !passes(version_, WMQ_GATE_AT_LEAST, 3.0F))
    value = flatNumber(0);
}

void Structures::text(const wmqField &field, const std::string &path) {
  std::string &value = flat_[path + field.name];
  size_t most = SIZE_MAX;
  if (std::strcmp(field.form, "%s") == 0) {
    const std::string word = cursor_.word();
    std::sscanf(field.note, "a bare word of at most %zu bytes", &most);
    if (word.size() > most) throw Refusal{WMQE_BAD_FORMAT};
    value = flatText(word);
    return;
  }
  std::string content = quotedField();
  if (std::sscanf(field.note, "at most %zu bytes", &most) == 1 && content.size() > most)
    throw Refusal{WMQE_BAD_FORMAT};
  if (field.kind == WMQ_KIND_CHARS) {
    if (startsWith(field.note, "cut to"))
      content.resize(std::min(content.size(), field.size - 1));
    else if (content.size() < field.minLength || content.size() >= field.size)
      throw Refusal{WMQE_BAD_FORMAT};
  }
  if (startsWith(field.note, "dropped when read from a line before 3") &&
      !passes(version_, WMQ_GATE_AT_LEAST, 3.0F))
    content.clear();
  value = flatText(content);
}

void Structures::usage(const std::string &path) {
  const wmqLayout *layout = nullptr;
  const wmqLayout &finish = *wmq_schema(EVENT_JOB_FINISH);
  for (size_t i = 0; i < finish.numFields; ++i)
    if (std::strcmp(finish.fields[i].name, "wmxRusage") == 0) layout = finish.fields[i].layout;
  if (layout == nullptr) throw std::logic_error("no usage");
  for (size_t i = 0; i < layout->numFields; ++i)
    flat_[path + layout->fields[i].name] = flatReal(LineCursor::required(cursor_.tryScan<double>("%lf%n")));
  skip();
}

void Structures::fixedArray(const wmqField &field, const std::string &path, bool present) {
  size_t first = 0;
  size_t last = field.length - 1;
  float threshold = 0;
  size_t elder = 0;
  if (std::sscanf(field.note, "slots %zu to %zu", &first, &last) != 2 &&
      std::sscanf(field.note, "slot %zu", &first) == 1)
    last = first;
  if (std::sscanf(field.note, "lines not above %f carry the first %zu", &threshold, &elder) == 2 &&
      !passes(version_, WMQ_GATE_ABOVE, threshold))
    last = elder - 1;
  for (size_t slot = first; slot <= last; ++slot)
    flat_[elementPath(path + field.name, static_cast<int64_t>(slot))] =
        present ? flatNumber(number32()) : flatNumber(-1);
}

// ---------------------------------------------------------------------------------- lists

void Structures::element(const wmqField &field, const std::string &path) {
  if (field.kind == WMQ_KIND_STRUCT) {
    flattenZero(*field.layout, path + '.', flat_);
    return structure(*field.layout, path + '.');
  }
  if (field.kind == WMQ_KIND_STRING) {
    flat_[path] = flatText(quotedField());
    return;
  }
  const int64_t wide = cursor_.integer();
  flat_[path] = flatNumber(field.kind == WMQ_KIND_INT32 ? static_cast<int32_t>(wide) : wide);
}

void Structures::array(const wmqLayout &layout, size_t index, const std::string &path) {
  const wmqField &field = layout.fields[index];
  const bool continues = index > 0 && field.position == layout.fields[index - 1].position;
  if (continues) return;  // read with the first of those that stand side by side
  if (std::strcmp(field.name, "indexRangeStart") == 0) return ranges(layout, index, path);
  if (field.kind == WMQ_KIND_STRING) return hostList(layout, field, path);

  const int64_t count = valueAt(path + field.countName);
  if (count < 0 && negativeIsNoMemory(layout, field)) throw Refusal{WMQE_NO_MEM};
  if (count <= 0) return;
  if (index + 1 < layout.numFields && layout.fields[index + 1].position == field.position)
    return parallelArrays(layout, index, path, count);
  // Entries that cannot all be there are not looked at, whatever is wrong with them.
  if (field.kind == WMQ_KIND_STRUCT &&
      static_cast<size_t>(count) > (cursor_.bytesLeft() + 1) / leastBytes(*field.layout))
    throw Refusal{WMQE_BAD_FORMAT};
  const std::string name = path + field.name;
  flat_[name] = kFlatArray;
  for (int64_t i = 0; i < count; ++i) {
    element(field, elementPath(name, i));
    if (field.kind != WMQ_KIND_STRUCT) skip();
  }
}

void Structures::parallelArrays(const wmqLayout &layout, size_t index, const std::string &path,
                                int64_t count) {
  size_t last = index;
  while (last + 1 < layout.numFields && layout.fields[last + 1].position == layout.fields[index].position)
    ++last;
  for (size_t k = index; k <= last; ++k) flat_[path + layout.fields[k].name] = kFlatArray;
  for (int64_t i = 0; i < count; ++i) {
    for (size_t k = index; k <= last; ++k)
      element(layout.fields[k], elementPath(path + layout.fields[k].name, i));
    skip();
  }
}

void Structures::hostList(const wmqLayout &layout, const wmqField &field, const std::string &path) {
  const std::string name = path + field.name;
  std::string &countText = flat_[path + field.countName];
  int64_t count = std::clamp<int64_t>(valueAt(path + field.countName), INT32_MIN, INT32_MAX);
  countText = flatNumber(count);
  if (count == 0 && startsWith(field.note, "a single 0 where"))
    return copyList(field, path, path + std::string(field.absent).substr(8));
  if (count == 0 && startsWith(field.note, "a count of 0 is refused")) throw Refusal{WMQE_BAD_FORMAT};
  if (count < 0 && negativeIsNoMemory(layout, field)) throw Refusal{WMQE_NO_MEM};
  if (count < 0 && negativeIsZero(layout, field)) countText = "0";
  if (count > 0 || (field.flags & WMQ_FIELD_EMPTY_ARRAY) != 0) flat_[name] = kFlatArray;

  std::vector<std::string> names;
  for (; count > 0; --count) names.push_back(quotedField());
  const bool expanded =
      std::strcmp(field.form, "host list") == 0 && !startsWith(field.note, "not expanded when read");
  if (expanded && !names.empty()) {
    names = expandedHosts(names, hostsLeft_);
    countText = flatNumber(static_cast<int64_t>(names.size()));
  }
  for (size_t i = 0; i < names.size(); ++i)
    flat_[elementPath(name, static_cast<int64_t>(i))] = flatText(names[i]);
}

void Structures::copyList(const wmqField &field, const std::string &path, const std::string &other) {
  int64_t count = 0;
  while (flat_.contains(elementPath(other, count))) ++count;
  const std::string name = path + field.name;
  for (int64_t i = 0; i < count; ++i) flat_[elementPath(name, i)] = flat_.at(elementPath(other, i));
  if (count > 0) flat_[name] = kFlatArray;
  flat_[path + field.countName] = count > 0 ? flatNumber(count) : flat_.at(path + "numExHosts");
}

void Structures::ranges(const wmqLayout &layout, size_t index, const std::string &path) {
  const bool checked = hasCheckedRanges(layout);
  const std::string names[] = {path + "indexRangeStart", path + "indexRangeEnd", path + "indexRangeStep"};
  const int64_t count = valueAt(path + layout.fields[index].countName);
  if (checked && count == 0) throw Refusal{WMQE_BAD_FORMAT};
  if (checked && count < 0) throw Refusal{WMQE_NO_MEM};
  if (count <= 0) return;
  // Unchecked ranges beyond what is believed are refused without a look at them.
  if (!checked && count > 1048576) throw Refusal{WMQE_NO_MEM};
  for (const std::string &name : names) flat_[name] = kFlatArray;
  for (int64_t i = 0; i < count; ++i) {
    for (const std::string &name : names) flat_[elementPath(name, i)] = "0";
    const size_t begin = cursor_.position();
    bool complete = true;
    for (const std::string &name : names) {
      const auto value = complete ? cursor_.tryInteger() : std::nullopt;
      complete = value.has_value();
      if (complete) flat_[elementPath(name, i)] = flatNumber(static_cast<int32_t>(*value));
    }
    if (complete) {
      skip();
      continue;
    }
    cursor_.goTo(begin);
    if (!checked) continue;
    remembered_ = WMQE_BAD_FORMAT;
    return;
  }
}

void Structures::extension(const std::string &path) {
  const int32_t pairs = count(path);
  for (int32_t i = 0; i < pairs; ++i) {
    flat_[path] = kFlatArray;
    flat_[elementPath(path, i) + ".key"] = flatNumber(number32());
    flat_[elementPath(path, i) + ".value"] = flatText(quotedField());
  }
}

void Structures::namedValues(const std::string &path) {
  const int32_t values = count(path);
  for (int32_t i = 0; i < values; ++i) {
    flat_[path] = kFlatArray;
    flat_[elementPath(path, i) + ".name"] = flatText(quotedField());
    flat_[elementPath(path, i) + ".value"] = flatNumber(number32());
  }
}

// ----------------------------------------------------------------------------------- line

std::string headerToken(LineCursor &cursor, size_t size) {
  std::string token = cursor.quoted();
  if (cursor.atEnd() || token.size() >= size) throw Refusal{WMQE_BAD_FORMAT};
  cursor.skipOne();
  return token;
}

void readLine(LineCursor &cursor, const UserNames &users, SecondReading &reading) {
  const std::string typeName = headerToken(cursor, 60);
  reading.version = headerToken(cursor, sizeof(eventRecord::version));
  const auto version = static_cast<float>(std::strtod(reading.version.c_str(), nullptr));
  if (!(version > 0)) throw Refusal{WMQE_BAD_FORMAT};
  reading.eventTime = static_cast<int32_t>(cursor.integer());
  cursor.skipOne();
  for (int32_t type = 0; type <= WMQ_MAX_EVENT_TYPE; ++type)
    if (wmq_typename(type) != nullptr && typeName == wmq_typename(type)) reading.type = type;
  if (reading.type == 0) throw Refusal{WMQE_BAD_EVENT};

  const wmqLayout &layout = *wmq_schema(reading.type);
  if (hasPairs(layout)) return readPairs(layout, cursor, reading.fields);
  Structures(cursor, reading.fields, version, reading.eventTime, users).record(layout);
}

}  // namespace

SecondReading readSecondly(const std::string &line, const UserNames &users) {
  SecondReading reading;
  LineCursor cursor(line);
  try {
    readLine(cursor, users, reading);
  } catch (const Refusal &refusal) {
    reading.error = refusal.error;
  }
  reading.counts = std::move(cursor.counts);
  return reading;
}

}  // namespace wmq::testing
