// Lines of records, put together field by field, and what reading and writing them comes to.
#ifndef WMQ_TESTS_RECORD_LINES_H
#define WMQ_TESTS_RECORD_LINES_H

#include <initializer_list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/small_records.h"

namespace wmq::testing {

// A line of kEventTime, without its line end.
std::string line(const std::string &type, const std::string &version, const std::string &fields);

// The fields of a line in their order, each under its name and as it stands there. What belongs together,
// such as a count and its list, is one field. A name that is not among them is a mistake of the test, and
// thrown.
class Fields {
 public:
  Fields(std::initializer_list<std::pair<std::string, std::string>> fields) : fields_(fields) {}

  Fields with(const std::string &name, const std::string &text) const;
  Fields without(const std::string &name) const;
  Fields upTo(const std::string &name) const;  // that one is the last
  std::vector<std::string> names() const;

  std::string text() const;
  operator std::string() const { return text(); }

 private:
  size_t indexOf(const std::string &name) const;

  std::vector<std::pair<std::string, std::string>> fields_;
};

// An error number and the field at which it happened; 0 and "" where nothing fails.
struct Fault {
  int error = 0;
  std::string field;

  bool operator==(const Fault &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Fault &fault);

// What is wrong with a line, and with a record that is to be written.
Fault faultOf(const std::string &line);
Fault faultOf(eventRecord &record);

// What was wrong with the last of them, which ended in `error`.
Fault lastFault(int error);

// The record that reading the record's own line gives; null if that fails.
OwnedRecord readBack(eventRecord &record);

// The bytes behind the header of the record's line, line end included.
std::string fieldsOf(eventRecord &record);

// A zero-filled record of a type, whose structure a layout function may fill.
OwnedRecord emptyRecord(int32_t type);

// Strings that live as long as this, as members of records want them. The library must not release them.
class Names {
 public:
  Names(std::initializer_list<std::string> names);
  Names(const Names &) = delete;
  Names &operator=(const Names &) = delete;

  operator char **() { return pointers_.data(); }
  int32_t count() const { return static_cast<int32_t>(pointers_.size()); }

 private:
  std::vector<std::string> texts_;
  std::vector<char *> pointers_;
};

// A list of a record, for comparison.
std::vector<std::string> listed(int32_t count, char *const *names);

}  // namespace wmq::testing

#endif
