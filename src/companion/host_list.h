// Compressed host lists: a run of equal neighbours is one name, "N*name".
#ifndef WMQ_COMPANION_HOST_LIST_H
#define WMQ_COMPANION_HOST_LIST_H

#include <cstddef>
#include <cstdint>

namespace wmq {

// More hosts than any cluster gives one job, and few enough for the memory of any machine that reads streams.
constexpr int64_t maxHosts = int64_t{1} << 24;

// True when `name` is "N*plain" with a decimal N of at least 1 without leading zeros; `times` saturates.
bool compressedName(const char *name, int64_t &times, const char *&plain);

// uncompressHostList with at most `limit` names afterwards: 0, WMQE_NO_MEM or WMQE_BAD_FORMAT. After a
// failure nothing has changed. Null names are plain names.
int expandHosts(int32_t &count, char **&hosts, int64_t limit);

// The field that writeHostList writes, built in memory: what is known before, and the end of the text,
// without a NUL. `count` is not negative.
struct HostListSize {
  size_t room;   // always enough
  int32_t runs;  // of equal names: so many are written
};
HostListSize hostListSize(int32_t count, char *const *hosts);
char *hostListInto(char *out, int32_t runs, int32_t count, char *const *hosts);

// Its names alone.
char *hostNamesInto(char *out, int32_t count, char *const *hosts);

}  // namespace wmq

#endif
