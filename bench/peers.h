// Other ways to read and write the records: the same members, into the same structures, with every string in
// a block of its own.
#ifndef WMQ_BENCH_PEERS_H
#define WMQ_BENCH_PEERS_H

#include <cstdlib>
#include <span>
#include <stdexcept>

#include "samples.h"

namespace wmq::bench {

// Calls `use` with the log structure of the record.
void withLog(auto &record, const auto &use) {
  switch (record.type) {
    case EVENT_JOB_FINISH:
      return use(record.eventLog.jobFinishLog);
    case EVENT_JOB_NEW:
      return use(record.eventLog.jobNewLog);
    case EVENT_JOB_STATUS:
      return use(record.eventLog.jobStatusLog);
    default:
      throw std::runtime_error("a type that has no peers");
  }
}

// The 19 numbers of a resource usage.
inline std::span<double, WMX_RUSAGE_VALUES> valuesOf(wmxRusage &usage) {
  static_assert(sizeof usage == WMX_RUSAGE_VALUES * sizeof(double));
  return std::span<double, WMX_RUSAGE_VALUES>(reinterpret_cast<double *>(&usage), WMX_RUSAGE_VALUES);
}
inline std::span<const double, WMX_RUSAGE_VALUES> valuesOf(const wmxRusage &usage) {
  return std::span<const double, WMX_RUSAGE_VALUES>(reinterpret_cast<const double *>(&usage),
                                                    WMX_RUSAGE_VALUES);
}

inline char **newArray(size_t count) {
  return count > 0 ? static_cast<char **>(std::malloc(count * sizeof(char *))) : nullptr;
}

std::string jsonOf(const eventRecord &record);
Reader simdjsonOnDemandReader(const eventRecord &sample);
Reader simdjsonTreeReader(const eventRecord &sample);
Reader rapidjsonInSituReader(const eventRecord &sample);
Reader protobufReader(const eventRecord &sample);
Reader capnprotoReader(const eventRecord &sample);
Reader sscanfReader(const eventRecord &sample);

Formatter rapidjsonFormatter(const eventRecord &record);
Formatter protobufFormatter(const eventRecord &record);
Formatter fmtFormatter(const eventRecord &record);

// One call of fprintf for each field of the line.
void printRecord(FILE *file, const eventRecord &record);

}  // namespace wmq::bench

#endif
