// Lines that a test takes for good ones.
#ifndef WMQ_TESTS_PARSED_H
#define WMQ_TESTS_PARSED_H

#include <stdexcept>
#include <string>

#include "support/small_records.h"

namespace wmq::testing {

// The record of the line; a line that does not parse is thrown, which fails the test that has it.
inline OwnedRecord parsed(const std::string &line) {
  OwnedRecord record = parse(line);
  if (record == nullptr) throw std::runtime_error(wmq_errdetail() + (": " + line));
  return record;
}

}  // namespace wmq::testing

#endif
