#include "fuzz/second_pairs.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "fuzz/slow_text_forms.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

using Published = const char *const *;

Published publishedNames(const std::string &layout) {
  if (layout == "jobFinish2Log") return jobFinish2LogAttrNames;
  if (layout == "jobStatus2Log") return jobStatus2LogAttrNames;
  if (layout == "jobPendingReasonsLog") return jobPendingReasonsLogAttrNames;
  return nullptr;
}

// Names are looked for by halving, as the list stands: one that is out of order is not found.
bool isFound(Published names, const std::string &name) {
  int first = 0;
  int last = -1;
  while (names[last + 1] != nullptr) ++last;
  while (first <= last) {
    const int middle = first + (last - first) / 2;
    const int order = std::strcmp(name.c_str(), names[middle]);
    if (order == 0) return true;
    if (order < 0) last = middle - 1;
    if (order > 0) first = middle + 1;
  }
  return false;
}

int32_t integerOf(const std::string &value) {
  long long number = 0;
  return std::sscanf(value.c_str(), "%lld", &number) == 1 ? static_cast<int32_t>(number) : 0;
}

// Of the pairs whose value says how many others follow; "" for all other names.
std::string pathOfCount(const std::string &name) {
  if (name == "numHRusageAttrs") return "hostRusage[0]." + name;
  if (name == "numGPUkvs") return "gpuRusages[0].numPairs";
  for (const char *count : {"numExHosts", "numAllocSlots", "numhRusages", "numGPURusages", "indexRangeCnt"})
    if (name == count) return name;
  return "";
}

struct Pair {
  std::string name;
  std::string value;
  bool empty() const { return name.empty() || value.empty(); }
};

class Pairs {
 public:
  Pairs(const wmqLayout &layout, LineCursor &cursor, FlatRecord &flat)
      : layout_(layout), cursor_(cursor), flat_(flat) {}

  void read();

 private:
  Pair next() {
    Pair pair;
    pair.name = cursor_.quoted();
    cursor_.skipOne();
    pair.value = cursor_.quoted();
    if (!pathOfCount(pair.name).empty()) cursor_.noteQuotedCount(pathOfCount(pair.name));
    cursor_.skipOne();
    return pair;
  }
  Pair nextAnnounced() {
    --left_;
    return next();
  }

  void take(const Pair &pair);
  bool takeGroup(const std::string &name, int32_t count);
  void takeAttribute(const wmqField &field, const Pair &pair);
  void takeNames(const std::string &array, int32_t count);
  void takeSlots(const std::string &array, int32_t count);
  void takeUsage(const std::string &path);
  void takeGpu(const std::string &path);
  void takeRanges(int32_t count);

  // An array of as many elements as the count says; what it held before is gone.
  void begin(const std::string &array, const char *countName, int32_t count);

  const wmqLayout &layout_;
  LineCursor &cursor_;
  FlatRecord &flat_;
  int64_t left_ = 0;
};

void Pairs::read() {
  flattenZero(layout_, "", flat_);
  const wmqField &id = layout_.fields[0];
  if (std::strchr(id.form, '"') == nullptr) {
    const int64_t wide = cursor_.integer();
    flat_[id.name] = flatNumber(id.kind == WMQ_KIND_INT32 ? static_cast<int32_t>(wide) : wide);
  }
  const size_t begin = cursor_.position();
  left_ = static_cast<int32_t>(cursor_.integer());
  cursor_.noteCount("pairs", begin);
  while (left_ > 0) {
    const Pair pair = nextAnnounced();
    if (!pair.empty()) take(pair);
  }
}

void Pairs::take(const Pair &pair) {
  const Published published = publishedNames(layout_.name);
  if (published != nullptr && !isFound(published, pair.name)) return;
  for (size_t i = 0; i < layout_.numFields; ++i) {
    const wmqField &field = layout_.fields[i];
    if (field.shape == WMQ_SHAPE_FIXED) {
      const auto *names = std::strcmp(field.name, "wmxRlimits") == 0 ? wmxRlimitsStr : jobRlimitsStr;
      for (int64_t slot = 0; names[slot] != nullptr; ++slot)
        if (pair.name == names[slot])
          flat_[elementPath(field.name, slot)] = flatNumber(integerOf(pair.value));
    } else if (pair.name == field.name) {
      takeAttribute(field, pair);
    }
  }
}

void Pairs::takeAttribute(const wmqField &field, const Pair &pair) {
  const std::string name = field.name;
  if (field.kind == WMQ_KIND_AFFINITY) {
    std::erase_if(flat_, [&](const auto &entry) { return entry.first.starts_with(name + '['); });
    return flattenAffinityText(pair.value, name, flat_);
  }
  if (field.kind == WMQ_KIND_NETWORK) {
    const std::vector<std::string> networks = networksOf(pair.value);
    begin(name, field.countName, static_cast<int32_t>(networks.size()));
    for (size_t i = 0; i < networks.size(); ++i)
      flat_[elementPath(name, static_cast<int64_t>(i))] = networks[i];
    return;
  }
  if (field.shape == WMQ_SHAPE_COUNTED) return;  // elements come behind their count
  if ((field.flags & WMQ_FIELD_COUNT) != 0 && takeGroup(name, integerOf(pair.value))) return;
  if (std::strchr(field.form, '"') == nullptr) return;
  std::string &value = flat_[name];
  if (field.kind == WMQ_KIND_STRING) value = flatText(pair.value);
  if (field.kind == WMQ_KIND_CHARS) value = flatText(pair.value.substr(0, field.size - 1));
  if (field.kind == WMQ_KIND_INT32 || field.kind == WMQ_KIND_INT64) value = flatNumber(integerOf(pair.value));
  if (field.kind == WMQ_KIND_DOUBLE) value = flatReal(std::strtod(pair.value.c_str(), nullptr));
}

void Pairs::begin(const std::string &array, const char *countName, int32_t count) {
  std::erase_if(flat_, [&](const auto &entry) { return entry.first.starts_with(array + '['); });
  flat_[countName] = flatNumber(count);
  flat_[array] = count > 0 ? kFlatArray : kFlatNull;
}

bool Pairs::takeGroup(const std::string &name, int32_t count) {
  if (name == "numExHosts") {
    begin("execHosts", "numExHosts", count);
    begin("slotUsages", "numExHosts", count);
    takeNames("execHosts", count);
    takeSlots("slotUsages", count);
  } else if (name == "numAllocSlots") {
    begin("allocSlots", "numAllocSlots", count);
    takeNames("allocSlots", count);
  } else if (name == "numhRusages") {
    begin("hostRusage", "numhRusages", count);
    for (int32_t i = 0; i < count; ++i) takeUsage(elementPath("hostRusage", i) + '.');
  } else if (name == "numGPURusages") {
    begin("gpuRusages", "numGPURusages", count);
    for (int32_t i = 0; i < count; ++i) takeGpu(elementPath("gpuRusages", i) + '.');
  } else if (name == "indexRangeCnt") {
    takeRanges(count);
  } else {
    return name == "numNetworkAllocs";
  }
  return true;
}

void Pairs::takeNames(const std::string &array, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const Pair pair = nextAnnounced();
    flat_[elementPath(array, i)] = pair.name == array && !pair.empty() ? flatText(pair.value) : kFlatNull;
  }
}

void Pairs::takeSlots(const std::string &array, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const Pair pair = nextAnnounced();
    flat_[elementPath(array, i)] = flatNumber(pair.name == array ? integerOf(pair.value) : 0);
  }
}

// A pair of another name instead of the number of members is used up, and the entry is empty.
void Pairs::takeUsage(const std::string &path) {
  flat_[path + "name"] = flatText("");
  for (const char *number : {"mem", "swap", "utime", "stime", "numAttrs"}) flat_[path + number] = "0";
  flat_[path + "attrs"] = kFlatNull;
  const Pair first = nextAnnounced();
  if (first.name != "numHRusageAttrs") return;
  for (int32_t members = integerOf(first.value); members > 0; --members) {
    const Pair pair = nextAnnounced();
    if (pair.empty()) continue;
    if (pair.name == "hu_name") flat_[path + "name"] = flatText(pair.value);
    for (const char *number : {"mem", "swap", "utime", "stime"})
      if (pair.name == std::string("hu_") + number) flat_[path + number] = flatNumber(integerOf(pair.value));
    if (pair.name != "hu_energy" || std::strcmp(layout_.name, "jobFinish2Log") != 0) continue;
    flat_[path + "numAttrs"] = "1";
    flat_[path + "attrs"] = kFlatArray;
    flat_[path + "attrs[0].name"] = flatText("HOST_ENERGY_CONSUMPTION");
    flat_[path + "attrs[0].value"] = flatText(pair.value);
  }
}

// Pairs with an empty key or value are left out.
void Pairs::takeGpu(const std::string &path) {
  flat_[path + "hostName"] = flatText(next().value);
  int32_t count = integerOf(next().value);
  flat_[path + "pairs"] = count > 0 ? kFlatArray : kFlatNull;
  int32_t kept = 0;
  for (int32_t i = 0; i < count; ++i) {
    const Pair pair = next();
    if (pair.empty()) continue;
    const std::string entry = elementPath(path + "pairs", kept++);
    flat_[entry + ".key"] = flatText(pair.name);
    flat_[entry + ".value"] = flatText(pair.value);
  }
  flat_[path + "numPairs"] = flatNumber(count > 0 ? kept : count);
}

void Pairs::takeRanges(int32_t count) {
  static const char *const names[] = {"indexRangeStart", "indexRangeEnd", "indexRangeStep"};
  for (const char *name : names) {
    begin(name, "indexRangeCnt", count);
    for (int32_t i = 0; i < count && i < 20000; ++i) flat_[elementPath(name, i)] = "0";
  }
  for (int32_t i = 0; i < count; ++i) {
    for (int member = 0; member < 3; ++member) {
      const Pair pair = next();
      for (const char *name : names)
        if (pair.name == name) flat_[elementPath(name, i)] = flatNumber(integerOf(pair.value));
    }
  }
}

}  // namespace

bool hasPairs(const wmqLayout &layout) {
  const std::string name = layout.name;
  return publishedNames(name) != nullptr || name == "jobStartLimitLog";
}

void readPairs(const wmqLayout &layout, LineCursor &cursor, FlatRecord &flat) {
  Pairs(layout, cursor, flat).read();
}

}  // namespace wmq::testing
