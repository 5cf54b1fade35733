// Records of name/value pairs, for the second reader.
#ifndef WMQ_TESTS_SECOND_PAIRS_H
#define WMQ_TESTS_SECOND_PAIRS_H

#include "fuzz/flat_record.h"
#include "fuzz/line_cursor.h"

namespace wmq::testing {

bool hasPairs(const wmqLayout &layout);

// Reads what follows the header. Throws Refusal.
void readPairs(const wmqLayout &layout, LineCursor &cursor, FlatRecord &flat);

}  // namespace wmq::testing

#endif
