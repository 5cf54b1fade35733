// A record as a flat table: each value as text, under its path such as "rmtJobCtrls[0].ids[2]".
#ifndef WMQ_TESTS_FLAT_RECORD_H
#define WMQ_TESTS_FLAT_RECORD_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "wmq/event_record.h"
#include "wmq/schema.h"

namespace wmq::testing {

using FlatRecord = std::map<std::string, std::string>;

// How values are written: numbers in decimal, reals so that no bit is lost, texts behind an apostrophe, an
// array that is there as "array", and what is not there as "null".
std::string flatNumber(int64_t value);
std::string flatReal(double value);
std::string flatText(std::string_view text);
inline constexpr char kFlatArray[] = "array";
inline constexpr char kFlatNull[] = "null";

inline std::string elementPath(const std::string &array, int64_t index) {
  return array + '[' + std::to_string(index) + ']';
}

// Of a zero-filled structure, and of a record's.
void flattenZero(const wmqLayout &layout, const std::string &path, FlatRecord &flat);
FlatRecord flatten(const eventRecord &record);

// Where two differ first; "" if they do not.
std::string flatDifference(const FlatRecord &expected, const FlatRecord &actual);

}  // namespace wmq::testing

#endif
