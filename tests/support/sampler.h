// Random records of any type, made from its schema alone: every member is filled as its kind says.
#ifndef WMQ_TESTS_SAMPLER_H
#define WMQ_TESTS_SAMPLER_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "support/small_records.h"

namespace wmq::testing {

// What a sample is made from: the same one makes the same record. `size` is the most elements that a list has
// and the most pieces that a text is put together from.
struct Seed {
  uint64_t value = 0;
  int size = 4;
};
std::ostream &operator<<(std::ostream &out, const Seed &seed);

// A record with numbers small, huge and negative, reals that are not finite too, strings that are null,
// empty, with quotes, newlines and bytes beyond ASCII, and lists of any length up to the seed's size. Counts
// and arrays agree, inline texts are as long as readers want them, allocations have a text form. Null for a
// type without a schema.
OwnedRecord sampleRecord(int32_t type, Seed seed);

// The members that own something or count it, by name: those of embedded structures behind that one's name
// and a dot. What release keeps is among them only with `kept`, what it frees only with `freed`.
struct Owned {
  bool freed = true;
  bool kept = true;
};
std::vector<std::string> ownedMembers(const eventRecord &record, Owned wanted = {});

// Types that have a schema, and those of them whose fields some stream writes.
std::vector<int32_t> typesWithSchema();
std::vector<int32_t> typesWithLine();

}  // namespace wmq::testing

#endif
