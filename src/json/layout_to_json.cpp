#include "companion/quoting.h"
#include "json/json_layout.h"
#include "json/json_member.h"

namespace wmq {

template <typename Writer>
static bool writeMember(Writer &writer, const MemberParts &member, const char *base);

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
static bool writeExtension(Writer &writer, const WritingPlan &plan, const submitExt &extension) {
  if (extension.pairs != nullptr && extension.numPairs >= 0)
    return writeMember(writer, plan.partsOf(plan.members[0]), reinterpret_cast<const char *>(&extension));
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

// The member itself, or one element of an array.
template <typename Writer>
static bool writeValue(Writer &writer, const MemberParts &member, const char *at) {
  switch (member.field->kind) {
    case WMQ_KIND_STRUCT:
      return writeStructure(writer, *member.plan, at);
    case WMQ_KIND_SUBMIT_EXT:
      return writeOwned<submitExt>(
          writer, at, [&](const auto &extension) { return writeExtension(writer, *member.plan, extension); });
    case WMQ_KIND_NAMED_VALUES:
      return writeOwned<namedValueList>(
          writer, at, [&](const auto &list) { return writeStructure(writer, *member.plan, &list); });
    case WMQ_KIND_AFFINITY:
      return writeOwned<affinityAlloc>(
          writer, at, [&](const auto &allocation) { return writeAffinity(writer, allocation); });
    case WMQ_KIND_NETWORK:  // only whole arrays of these have a form
      writer.null();
      return true;
    default:
      writer.scalar(member.field->kind, at, member.field->size);
      return true;
  }
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
    writer.scalar(WMQ_KIND_STRING, elements, size);
    if (!Writer::equalsLookAlike) continue;
    const std::int64_t more = numEqual(load<const char *>(elements), elements + size, count - i - 1);
    writer.out.repeat(writer.out.size - begin, static_cast<std::size_t>(more));
    i += more;
    elements += static_cast<std::size_t>(more) * size;
  }
}

template <typename Writer>
static bool writeArray(Writer &writer, const MemberParts &member, const char *elements, std::int64_t count) {
  writer.StartArray();
  bool written = true;
  if (member.field->kind == WMQ_KIND_STRING) {
    writeStrings(writer, elements, count);
  } else {
    for (std::int64_t i = 0; written && i < count; ++i, elements += member.field->size)
      written = writeValue(writer, member, elements);
  }
  writer.EndArray();
  return written;
}

template <typename Writer>
static bool writeMember(Writer &writer, const MemberParts &member, const char *base) {
  const wmqField &field = *member.field;
  const char *const at = base + field.offset;
  if (field.shape == WMQ_SHAPE_ONE) return writeValue(writer, member, at);
  if (field.shape == WMQ_SHAPE_FIXED)
    return writeArray(writer, member, at, static_cast<std::int64_t>(field.length));

  const char *const elements = load<const char *>(at);
  const std::int64_t count = loadCount(field, base);
  // With a negative count there is no array, whatever the pointer says.
  if (elements == nullptr || count < 0) {
    writer.null();
    return true;
  }
  if (field.kind == WMQ_KIND_NETWORK)
    return writeNetwork(writer, count, reinterpret_cast<const networkAlloc *>(elements));
  return writeArray(writer, member, elements, count);
}

template <typename Writer>
bool writeStructure(Writer &writer, const WritingPlan &plan, const void *base) {
  const char *const bytes = static_cast<const char *>(base);
  const PlannedMember *const end = plan.members.data() + plan.members.size();
  writer.StartObject();
  for (const PlannedMember *member = plan.members.data();; ++member) {
    member = writer.writeSimple(plan, member, bytes);
    if (member == end) break;
    writer.name(plan.nameOf(*member));
    if (member->isScalar)
      writer.scalar(member->kind, bytes + member->offset, member->size);
    else if (!writeMember(writer, plan.partsOf(*member), bytes))
      return false;
  }
  writer.EndObject();
  return !writer.out.failed;
}

template bool writeStructure(LineWriter &, const WritingPlan &, const void *);
template bool writeStructure(IndentingWriter &, const WritingPlan &, const void *);

}  // namespace wmq
