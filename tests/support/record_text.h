// What a record comes to as text.
#ifndef WMQ_TESTS_RECORD_TEXT_H
#define WMQ_TESTS_RECORD_TEXT_H

#include <string>

#include "wmq/event_record.h"

namespace wmq::testing {

// The whole line on the stream of its type, the partial one if writing fails; wmq_errno tells. Writers change
// counts of the record that they are given: a copy takes that.
std::string written(const eventRecord &record);

// The record as JSON; "" if it has none.
std::string jsonOf(const eventRecord &record);

}  // namespace wmq::testing

#endif
