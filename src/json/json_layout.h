// Structures to JSON and back, led by their layouts alone: no type of record is known here.
#ifndef WMQ_JSON_LAYOUT_H
#define WMQ_JSON_LAYOUT_H

#include "json/json_fault.h"
#include "json/json_output.h"
#include "json/json_scratch.h"
#include "json/writing_plan.h"
#include "wmq/schema.h"

namespace wmq {

// Writes the structure at `base` as an object. False when memory runs out.
template <typename Writer>
bool writeStructure(Writer &writer, const WritingPlan &plan, const void *base);

extern template bool writeStructure(LineWriter &, const WritingPlan &, const void *);
extern template bool writeStructure(IndentingWriter &, const WritingPlan &, const void *);

// Reads the object that begins at `token` into the zero-filled structure at `base`. False with a fault told;
// what has been allocated by then is in the structure, which can be released at every moment.
bool readLayout(Scratch &scratch, const wmqLayout &layout, const Token *token, void *base,
                const Place *place);

}  // namespace wmq

#endif
