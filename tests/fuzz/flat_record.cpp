#include "fuzz/flat_record.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "wmq/records/shapes.h"

namespace wmq::testing {
namespace {

template <typename T>
T load(const char *at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

std::string flatString(const char *text) { return text == nullptr ? kFlatNull : flatText(text); }

bool isStatedFirst(const wmqField &field) {
  return (field.flags & (WMQ_FIELD_AGAIN | WMQ_FIELD_RESERVED)) == 0;
}

void flattenStructure(const wmqLayout &layout, const char *base, const std::string &path, FlatRecord &flat);

void flattenExtension(const submitExt *extension, const std::string &path, FlatRecord &flat) {
  flat[path] = extension == nullptr ? kFlatNull : kFlatArray;
  for (int32_t i = 0; extension != nullptr && i < extension->numPairs; ++i) {
    flat[elementPath(path, i) + ".key"] = flatNumber(extension->pairs[i].key);
    flat[elementPath(path, i) + ".value"] = flatString(extension->pairs[i].value);
  }
}

void flattenNamedValues(const namedValueList *list, const std::string &path, FlatRecord &flat) {
  flat[path] = list == nullptr ? kFlatNull : kFlatArray;
  for (int32_t i = 0; list != nullptr && i < list->count; ++i) {
    flat[elementPath(path, i) + ".name"] = flatString(list->names[i]);
    flat[elementPath(path, i) + ".value"] = flatNumber(list->values[i]);
  }
}

void flattenAffinity(const affinityAlloc *allocation, const std::string &path, FlatRecord &flat) {
  flat[path] = allocation == nullptr ? kFlatNull : kFlatArray;
  for (int32_t i = 0; allocation != nullptr && i < allocation->numHosts; ++i) {
    const affinityHost &host = allocation->hosts[i];
    std::string &text = flat[elementPath(path, i)] = flatString(host.host) + ':';
    for (int32_t k = 0; k < host.numCpus; ++k) text += std::to_string(host.cpus[k]) + ',';
  }
}

void flattenValue(const wmqField &field, const char *at, const std::string &path, FlatRecord &flat) {
  switch (field.kind) {
    case WMQ_KIND_INT32:
      flat[path] = flatNumber(load<int32_t>(at));
      return;
    case WMQ_KIND_INT64:
      flat[path] = flatNumber(load<int64_t>(at));
      return;
    case WMQ_KIND_FLOAT:
      flat[path] = flatReal(static_cast<double>(load<float>(at)));
      return;
    case WMQ_KIND_DOUBLE:
      flat[path] = flatReal(load<double>(at));
      return;
    case WMQ_KIND_STRING:
      flat[path] = flatString(load<const char *>(at));
      return;
    case WMQ_KIND_CHARS:
      flat[path] = flatString(at);
      return;
    case WMQ_KIND_STRUCT:
      return flattenStructure(*field.layout, at, path + '.', flat);
    case WMQ_KIND_SUBMIT_EXT:
      return flattenExtension(load<const submitExt *>(at), path, flat);
    case WMQ_KIND_NAMED_VALUES:
      return flattenNamedValues(load<const namedValueList *>(at), path, flat);
    case WMQ_KIND_AFFINITY:
      return flattenAffinity(load<const affinityAlloc *>(at), path, flat);
    case WMQ_KIND_NETWORK: {
      const auto network = load<networkAlloc>(at);
      flat[path] = flatString(network.name) + '=' + std::to_string(network.numWindows);
      return;
    }
  }
}

void flattenArray(const wmqField &field, const char *base, const std::string &path, FlatRecord &flat) {
  const char *const count = base + field.countOffset;
  const int64_t length = field.countKind == WMQ_KIND_INT64 ? load<int64_t>(count) : load<int32_t>(count);
  const char *const elements = load<const char *>(base + field.offset);
  flat[path] = elements == nullptr ? kFlatNull : kFlatArray;
  for (int64_t i = 0; elements != nullptr && i < length; ++i)
    flattenValue(field, elements + static_cast<size_t>(i) * field.size, elementPath(path, i), flat);
}

void flattenStructure(const wmqLayout &layout, const char *base, const std::string &path, FlatRecord &flat) {
  for (size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    const std::string name = path + field.name;
    if (!isStatedFirst(field)) continue;
    if (field.shape == WMQ_SHAPE_COUNTED) {
      flattenArray(field, base, name, flat);
    } else if (field.shape == WMQ_SHAPE_FIXED) {
      for (size_t k = 0; k < field.length; ++k)
        flattenValue(field, base + field.offset + k * field.size, elementPath(name, static_cast<int64_t>(k)),
                     flat);
    } else {
      flattenValue(field, base + field.offset, name, flat);
    }
  }
}

}  // namespace

std::string flatNumber(int64_t value) { return std::to_string(value); }

std::string flatReal(double value) {
  if (std::isnan(value)) return "nan";
  char text[40];
  std::snprintf(text, sizeof text, "%a", value);
  return text;
}

std::string flatText(std::string_view text) { return '\'' + std::string(text); }

void flattenZero(const wmqLayout &layout, const std::string &path, FlatRecord &flat) {
  const std::string zeros(layout.size, '\0');
  flattenStructure(layout, zeros.data(), path, flat);
}

FlatRecord flatten(const eventRecord &record) {
  FlatRecord flat;
  if (const wmqLayout *layout = wmq_schema(record.type))
    flattenStructure(*layout, reinterpret_cast<const char *>(&record.eventLog), "", flat);
  return flat;
}

std::string flatDifference(const FlatRecord &expected, const FlatRecord &actual) {
  for (const auto &[path, value] : expected) {
    const auto found = actual.find(path);
    const std::string other = found == actual.end() ? "(nothing)" : found->second;
    if (other != value) return path + ": " + value + " expected, found " + other;
  }
  for (const auto &[path, value] : actual)
    if (!expected.contains(path)) return path + ": nothing expected, found " + value;
  return "";
}

}  // namespace wmq::testing
