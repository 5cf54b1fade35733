// A layout as writing wants it: of all that is said of its members, what each record asks for, side by side.
// Reading the layout itself would take a hundred bytes for each of them, of which few matter.
#ifndef WMQ_JSON_WRITING_PLAN_H
#define WMQ_JSON_WRITING_PLAN_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "wmq/schema.h"

namespace wmq {

struct WritingPlan;

// A member that is shown.
struct PlannedMember {
  std::uint32_t offset;
  std::uint32_t size;  // as the field's
  std::uint32_t nameAt;
  std::uint16_t nameLength;
  std::uint8_t kind;
  bool isScalar;  // one number or one text
};

// And what is asked of the others.
struct MemberParts {
  const wmqField *field;
  const WritingPlan *plan;  // of the structure that it holds, or points to; null where there is none
};

struct WritingPlan {
  // Throws std::bad_alloc. The layout is to last as long.
  explicit WritingPlan(const wmqLayout &layout);
  WritingPlan(const WritingPlan &) = delete;
  WritingPlan &operator=(const WritingPlan &) = delete;

  // Bytes from the beginning of any name on that can be read.
  static constexpr std::size_t nameRoom = 32;

  // The name of a member in double quotes, with a colon behind it. Nothing in it needs to be escaped.
  std::string_view nameOf(const PlannedMember &member) const {
    return {names.data() + member.nameAt, member.nameLength};
  }

  const MemberParts &partsOf(const PlannedMember &member) const {
    return parts[static_cast<size_t>(&member - members.data())];
  }

  std::vector<PlannedMember> members;

 private:
  const WritingPlan *planFor(const wmqField &field);

  std::string names;
  std::vector<MemberParts> parts;  // of each member
  std::deque<WritingPlan> plans;   // of parts
};

}  // namespace wmq

#endif
