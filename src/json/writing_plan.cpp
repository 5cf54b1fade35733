#include "json/writing_plan.h"

#include "json/json_member.h"

namespace wmq {

// Numbers and texts come first.
static_assert(WMQ_KIND_INT32 < WMQ_KIND_CHARS && WMQ_KIND_STRING < WMQ_KIND_CHARS &&
              WMQ_KIND_STRUCT > WMQ_KIND_CHARS && WMQ_KIND_NETWORK > WMQ_KIND_CHARS);
static_assert(sizeof(PlannedMember) == 16, "four of them share a cache line");

WritingPlan::WritingPlan(const wmqLayout &layout) {
  for (std::size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!isShown(field)) continue;
    parts.push_back({.field = &field, .plan = planFor(field)});
    members.push_back({.offset = static_cast<std::uint32_t>(field.offset),
                       .size = static_cast<std::uint32_t>(field.size),
                       .nameAt = static_cast<std::uint32_t>(names.size()),
                       .nameLength = static_cast<std::uint16_t>(field.nameLength + 3),
                       .kind = static_cast<std::uint8_t>(field.kind),
                       .isScalar = field.shape == WMQ_SHAPE_ONE && field.kind <= WMQ_KIND_CHARS});
    names.append("\"").append(field.name, field.nameLength).append("\":");
  }
  names.append(nameRoom, '\0');
}

const WritingPlan *WritingPlan::planFor(const wmqField &field) {
  switch (field.kind) {
    case WMQ_KIND_STRUCT:
      return &plans.emplace_back(*field.layout);
    case WMQ_KIND_SUBMIT_EXT:
      return &plans.emplace_back(submitExtLayout);
    case WMQ_KIND_NAMED_VALUES:
      return &plans.emplace_back(namedValuesLayout);
    default:
      return nullptr;
  }
}

}  // namespace wmq
