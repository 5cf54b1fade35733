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

// Writing a compressed list, part by part: a long one stays in no cache, and comes by once.
// `count` is not negative.
class HostListWriter {
 public:
  // So many names stay in the nearest cache from finding their room to writing them.
  static constexpr int32_t usualPart = 64;

  HostListWriter(int32_t count, char *const *hosts, int32_t hostsOfPart = usualPart)
      : count_(count), hosts_(hosts), hostsOfPart_(hostsOfPart) {}

  bool atEnd() const { return at_ == count_; }
  int32_t runs() const { return runs_; }

  // Room that is always enough for the next part.
  size_t roomForPart() const;
  // Writes that part, each name behind a blank; returns its end.
  char *partInto(char *out);

 private:
  int32_t endOfPart() const;

  int32_t count_;
  char *const *hosts_;
  int32_t hostsOfPart_;
  int32_t at_ = 0;
  int32_t runs_ = 0;
};

// What stands before the names: their number behind a blank. At most so many bytes.
inline constexpr size_t kHostCountRoom = 12;
char *hostCountInto(char *out, int32_t runs);

// How many names the compressed list has.
int32_t numRuns(int32_t count, char *const *hosts);

}  // namespace wmq

#endif
