// Text forms as the second reader takes them apart. Each throws Refusal for what is malformed.
#ifndef WMQ_TESTS_SLOW_TEXT_FORMS_H
#define WMQ_TESTS_SLOW_TEXT_FORMS_H

#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/flat_record.h"

namespace wmq::testing {

std::vector<std::string> splitAt(char separator, const std::string &text);

// The hosts that a list stands for, of which all lists of a line may have `left` together.
std::vector<std::string> expandedHosts(const std::vector<std::string> &names, int64_t &left);

// Into `flat`, as a record that holds the allocation is flattened. An empty text leaves it as it is.
void flattenAffinityText(const std::string &text, const std::string &path, FlatRecord &flat);

// The entries, flattened; none for an empty text.
std::vector<std::string> networksOf(const std::string &text);

}  // namespace wmq::testing

#endif
