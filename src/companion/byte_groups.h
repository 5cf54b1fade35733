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

// memcpy for strings of a few bytes, without the call: groups that may overlap.
inline void copyBytes(char *out, const char *text, size_t length) {
  if (length > 32) {
    std::memcpy(out, text, length);
  } else if (length > 16) {
    std::memcpy(out, text, 16);
    std::memcpy(out + length - 16, text + length - 16, 16);
  } else if (length >= 8) {
    const auto head = groupAt<uint64_t>(text);
    const auto tail = groupAt<uint64_t>(text + length - 8);
    std::memcpy(out, &head, 8);
    std::memcpy(out + length - 8, &tail, 8);
  } else if (length >= 4) {
    const auto head = groupAt<uint32_t>(text);
    const auto tail = groupAt<uint32_t>(text + length - 4);
    std::memcpy(out, &head, 4);
    std::memcpy(out + length - 4, &tail, 4);
  } else {
    for (size_t i = 0; i < length; ++i) out[i] = text[i];
  }
}

// memcmp for equality, in the same way.
inline bool sameBytes(const char *left, const char *right, size_t length) {
  const auto same = [left, right]<class Group>(size_t at, Group) {
    return groupAt<Group>(left + at) == groupAt<Group>(right + at);
  };
  if (length > 16) return std::memcmp(left, right, length) == 0;
  if (length >= 8) return same(0, uint64_t{}) && same(length - 8, uint64_t{});
  if (length >= 4) return same(0, uint32_t{}) && same(length - 4, uint32_t{});
  for (size_t i = 0; i < length; ++i)
    if (left[i] != right[i]) return false;
  return true;
}

}  // namespace wmq

#endif
