// Members of a structure that is known by its layout only.
#ifndef WMQ_JSON_MEMBER_H
#define WMQ_JSON_MEMBER_H

#include <cstdint>
#include <cstring>

#include "wmq/records/shapes.h"
#include "wmq/schema.h"

namespace wmq {

// Through memcpy: the bytes at `at` are those of a T, but the pointer has come out of a layout.
template <typename T>
T load(const void *at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <typename T>
void store(void *at, const T &value) {
  std::memcpy(at, &value, sizeof value);
}

inline bool isShown(const wmqField &field) {
  return (field.flags & (WMQ_FIELD_AGAIN | WMQ_FIELD_RESERVED)) == 0;
}

inline std::int64_t loadCount(const wmqField &array, const char *base) {
  const char *at = base + array.countOffset;
  return array.countKind == WMQ_KIND_INT64 ? load<std::int64_t>(at) : load<std::int32_t>(at);
}

inline void storeCount(const wmqField &array, char *base, std::int64_t count) {
  char *at = base + array.countOffset;
  if (array.countKind == WMQ_KIND_INT64)
    store(at, count);
  else
    store(at, static_cast<std::int32_t>(count));
}

// A submission extension is shown as the one array in it, named values as an object.
extern const wmqLayout submitExtLayout;
extern const wmqLayout namedValuesLayout;

}  // namespace wmq

#endif
