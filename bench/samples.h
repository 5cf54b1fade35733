// The records that are read and written, and their forms in memory.
#ifndef WMQ_BENCH_SAMPLES_H
#define WMQ_BENCH_SAMPLES_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "wmq/wmq.h"

namespace wmq::bench {

// Peers release what they have built with free alone: the library keeps released blocks for its own reader.
struct ReleaseRecord {
  bool plainly = false;
  void operator()(eventRecord *record) const;
};
using Record = std::unique_ptr<eventRecord, ReleaseRecord>;

Record newRecord(int32_t type);       // zeroed, and released plainly
char *copyOf(std::string_view text);  // from malloc, as records own their strings
std::string lineOf(const eventRecord &record);
Record parsed(const std::string &line);

// About 1,000 bytes with 40 strings and 4 hosts, about as much, about 110 bytes.
Record jobFinish();
Record jobNew();
Record jobStatus();
Record jobFinish2();

// With that many hosts, all of them different.
Record jobStart(int32_t numHosts);

// Bytes of all blocks that a record consists of, in the order in which they are allocated.
std::vector<size_t> blocksOf(const eventRecord &record);

// A way to make a record of bytes that lie in memory.
using Reader = std::function<Record()>;

// A way to make bytes of a record: the result stands until the next call.
using Formatter = std::function<std::string_view()>;

}  // namespace wmq::bench

#endif
