// Looking at eight bytes at once.
#ifndef WMQ_COMPANION_BYTE_GROUPS_H
#define WMQ_COMPANION_BYTE_GROUPS_H

#include <cstdint>
#include <cstring>

namespace wmq {

template <class Group>
Group groupAt(const char *text) {
  Group group;
  std::memcpy(&group, text, sizeof group);
  return group;
}

// True when one of the eight bytes is `wanted`: only a zero byte borrows from its top bit without having it.
inline bool holdsByte(uint64_t group, char wanted) {
  constexpr uint64_t ones = 0x0101010101010101;
  const uint64_t difference = group ^ ones * static_cast<unsigned char>(wanted);
  return ((difference - ones) & ~difference & ones << 7) != 0;
}

}  // namespace wmq

#endif
