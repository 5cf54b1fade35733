// What holds for every record, however it came about.
#ifndef WMQ_TESTS_RECORD_CHECKS_H
#define WMQ_TESTS_RECORD_CHECKS_H

#include <string>
#include <string_view>

#include "support/small_records.h"

namespace wmq::testing {

// True for what stands for so many hosts, CPUs or ranges that a single input would take seconds: nothing is
// wrong with it, and tests of sizes have it.
bool isHuge(std::string_view text);

// Parses `text` up to its first NUL, from memory behind whose last byte nothing may be read.
OwnedRecord parseExactly(std::string_view text);

// It comes back from its JSON as it was, and can be written, whatever comes of that.
void checkAnyRecord(const eventRecord &record);

// checkAnyRecord, and: but for what lines lose by design, what is written of it is read back and written the
// same again. May change the record.
void checkRecordOfLine(eventRecord &record);

// Nothing is left of it behind its release.
void checkRelease(OwnedRecord record);

// A failure has told its reason.
void checkRefusal(int error, const std::string &detail);

}  // namespace wmq::testing

#endif
