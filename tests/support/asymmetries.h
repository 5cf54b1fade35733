// What a line loses of a record by design, and how a test of the line keeps clear of it.
#ifndef WMQ_TESTS_ASYMMETRIES_H
#define WMQ_TESTS_ASYMMETRIES_H

#include <cstdint>
#include <vector>

#include "wmq/event_record.h"

namespace wmq::testing {

struct Asymmetry {
  std::vector<int32_t> types;
  const char *loss;
  // Changes a sampled record as little as it takes for nothing of this kind to be lost. It stays a record
  // that the library can release.
  void (*avoid)(eventLog &log);
};

// Every one that there is. A type that is not named here reads back what it writes.
const std::vector<Asymmetry> &asymmetries();

void avoidAsymmetries(eventRecord &record, const Asymmetry *butFor = nullptr);

}  // namespace wmq::testing

#endif
