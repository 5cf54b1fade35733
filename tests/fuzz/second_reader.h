// A second reader of lines, slow and obvious. It shares nothing with the library's reader but the schema,
// which tells the fields and their order: numbers are converted by the C library's sscanf, and quoting,
// lists, text forms and the rules of records with rules of their own are written down here once more.
#ifndef WMQ_TESTS_SECOND_READER_H
#define WMQ_TESTS_SECOND_READER_H

#include <map>
#include <string>

#include "fuzz/flat_record.h"
#include "fuzz/line_cursor.h"

namespace wmq::testing {

struct SecondReading {
  int error = 0;
  int32_t type = 0;
  std::string version = {};
  int32_t eventTime = 0;
  FlatRecord fields = {};
  std::vector<CountPlace> counts = {};  // those of the line that were read
};

using UserNames = std::map<int32_t, std::string>;

// The line must not hold a NUL.
SecondReading readSecondly(const std::string &line, const UserNames &users);

}  // namespace wmq::testing

#endif
