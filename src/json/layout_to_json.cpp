#include "companion/quoting.h"
#include "json/json_layout.h"
#include "json/json_member.h"

namespace wmq {

template <typename Writer>
static bool writeField(Writer &writer, const wmqField &field, const char *base);

template <typename Writer>
static bool writeAffinity(Writer &writer, const affinityAlloc &allocation) {
  // The text form has no text for an allocation without hosts.
  if (allocation.numHosts < 1 || allocation.hosts == nullptr) {
    writer.text("");
    return true;
  }
  char *text = convertAffinityAlloc2Str(&allocation);
  if (text == nullptr) return false;
  writer.text(text);
  std::free(text);
  return true;
}

template <typename Writer>
static bool writeNetwork(Writer &writer, std::int64_t count, const networkAlloc *allocations) {
  if (count == 0) {
    writer.text("");
    return true;
  }
  char *text = getNetworkAllocAsString(static_cast<std::int32_t>(count), allocations);
  if (text == nullptr) return false;
  writer.text(text);
  std::free(text);
  return true;
}

template <typename Writer>
static bool writeExtension(Writer &writer, const submitExt &extension) {
  if (extension.pairs != nullptr && extension.numPairs >= 0)
    return writeField(writer, submitExtLayout.fields[0], reinterpret_cast<const char *>(&extension));
  writer.StartArray();
  writer.EndArray();
  return true;
}

// What a member points to, or null.
template <typename T, typename Writer, typename Write>
static bool writeOwned(Writer &writer, const char *at, Write write) {
  if (const T *owned = load<const T *>(at)) return write(*owned);
  writer.null();
  return true;
}

template <typename Writer>
static void writeString(Writer &writer, const char *at) {
  if (const char *const text = load<const char *>(at))
    writer.text(text);
  else
    writer.null();
}

template <typename Writer>
static bool writeRareValue(Writer &writer, const wmqField &field, const char *at);

// The member itself, or one element of an array. Nearly all are of the two kinds that are looked at in place.
template <typename Writer>
inline bool writeValue(Writer &writer, const wmqField &field, const char *at) {
  if (field.kind == WMQ_KIND_STRING)
    writeString(writer, at);
  else if (field.kind == WMQ_KIND_INT32)
    writer.number(load<std::int32_t>(at));
  else
    return writeRareValue(writer, field, at);
  return true;
}

template <typename Writer>
static bool writeRareValue(Writer &writer, const wmqField &field, const char *at) {
  switch (field.kind) {
    case WMQ_KIND_INT64:
      writer.number(load<std::int64_t>(at));
      return true;
    case WMQ_KIND_FLOAT:
      writer.number(load<float>(at));
      return true;
    case WMQ_KIND_DOUBLE:
      writer.number(load<double>(at));
      return true;
    case WMQ_KIND_CHARS:
      writer.text(at, strnlen(at, field.size));
      return true;
    case WMQ_KIND_STRUCT:
      return writeLayout(writer, *field.layout, at);
    case WMQ_KIND_SUBMIT_EXT:
      return writeOwned<submitExt>(writer, at,
                                   [&](const auto &extension) { return writeExtension(writer, extension); });
    case WMQ_KIND_NAMED_VALUES:
      return writeOwned<namedValueList>(
          writer, at, [&](const auto &list) { return writeLayout(writer, namedValuesLayout, &list); });
    case WMQ_KIND_AFFINITY:
      return writeOwned<affinityAlloc>(
          writer, at, [&](const auto &allocation) { return writeAffinity(writer, allocation); });
    case WMQ_KIND_INT32:
    case WMQ_KIND_STRING:
    case WMQ_KIND_NETWORK:  // only whole arrays of these have a form
      break;
  }
  writer.null();
  return true;
}

// How many texts from `elements` on, `count` of them, equal `text`.
static std::int64_t numEqual(const char *text, const char *elements, std::int64_t count) {
  std::int64_t equal = 0;
  for (; equal < count; ++equal, elements += sizeof text) {
    const char *const other = load<const char *>(elements);
    if (other == text) continue;
    if (other == nullptr || text == nullptr || !areSame(text, other)) break;
  }
  return equal;
}

// Host lists name a host once for each of its processors: texts that equal the one before are copied.
template <typename Writer>
static void writeStrings(Writer &writer, const char *elements, std::int64_t count) {
  constexpr std::size_t size = sizeof(const char *);
  for (std::int64_t i = 0; i < count; ++i, elements += size) {
    const std::size_t begin = writer.out.size;
    writeString(writer, elements);
    if (!Writer::equalsLookAlike) continue;
    const std::int64_t more = numEqual(load<const char *>(elements), elements + size, count - i - 1);
    writer.out.repeat(writer.out.size - begin, static_cast<std::size_t>(more));
    i += more;
    elements += static_cast<std::size_t>(more) * size;
  }
}

template <typename Writer>
static bool writeArray(Writer &writer, const wmqField &field, const char *elements, std::int64_t count) {
  writer.StartArray();
  bool written = true;
  if (field.kind == WMQ_KIND_STRING) {
    writeStrings(writer, elements, count);
  } else {
    for (std::int64_t i = 0; written && i < count; ++i, elements += field.size)
      written = writeValue(writer, field, elements);
  }
  writer.EndArray();
  return written;
}

template <typename Writer>
static bool writeElements(Writer &writer, const wmqField &field, const char *base);

template <typename Writer>
static bool writeField(Writer &writer, const wmqField &field, const char *base) {
  if (field.shape == WMQ_SHAPE_ONE) return writeValue(writer, field, base + field.offset);
  return writeElements(writer, field, base);
}

template <typename Writer>
static bool writeElements(Writer &writer, const wmqField &field, const char *base) {
  const char *at = base + field.offset;
  if (field.shape == WMQ_SHAPE_FIXED)
    return writeArray(writer, field, at, static_cast<std::int64_t>(field.length));

  const char *elements = load<const char *>(at);
  const std::int64_t count = loadCount(field, base);
  // With a negative count there is no array, whatever the pointer says.
  if (elements == nullptr || count < 0) {
    writer.null();
    return true;
  }
  if (field.kind == WMQ_KIND_NETWORK)
    return writeNetwork(writer, count, reinterpret_cast<const networkAlloc *>(elements));
  return writeArray(writer, field, elements, count);
}

template <typename Writer>
bool writeLayout(Writer &writer, const wmqLayout &layout, const void *base) {
  writer.StartObject();
  for (std::size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!isShown(field)) continue;
    writer.name({field.name, field.nameLength});
    if (!writeField(writer, field, static_cast<const char *>(base))) return false;
  }
  writer.EndObject();
  return !writer.out.failed;
}

template bool writeLayout(LineWriter &, const wmqLayout &, const void *);
template bool writeLayout(IndentingWriter &, const wmqLayout &, const void *);

}  // namespace wmq
