// Structures that are known by their layouts: filled with random values, compared, released. Written apart
// from the library, which it checks.
#ifndef WMQ_TESTS_STRUCTURES_H
#define WMQ_TESTS_STRUCTURES_H

#include <rapidcheck.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "wmq/records/shapes.h"
#include "wmq/schema.h"

namespace wmq::testing {

inline bool hasValue(const wmqField &field) {
  return (field.flags & (WMQ_FIELD_AGAIN | WMQ_FIELD_RESERVED)) == 0;
}

template <typename T>
T &memberAt(void *base, std::size_t offset) {
  return *reinterpret_cast<T *>(static_cast<char *>(base) + offset);
}

template <typename T>
const T &memberAt(const void *base, std::size_t offset) {
  return *reinterpret_cast<const T *>(static_cast<const char *>(base) + offset);
}

inline std::int64_t countAt(const wmqField &array, const void *base) {
  return array.countKind == WMQ_KIND_INT64 ? memberAt<std::int64_t>(base, array.countOffset)
                                           : memberAt<std::int32_t>(base, array.countOffset);
}

// -------------------------------------------------------------------------- release

void releaseStructure(const wmqLayout &layout, void *base);

inline void releaseValue(const wmqField &field, void *at) {
  switch (field.kind) {
    case WMQ_KIND_STRING:
      std::free(*static_cast<char **>(at));
      break;
    case WMQ_KIND_STRUCT:
      releaseStructure(*field.layout, at);
      break;
    case WMQ_KIND_SUBMIT_EXT:
      freeSubmitExt(*static_cast<submitExt **>(at));
      std::free(*static_cast<submitExt **>(at));
      break;
    case WMQ_KIND_NAMED_VALUES:
      if (namedValueList *list = *static_cast<namedValueList **>(at)) {
        for (std::int32_t i = 0; list->names != nullptr && i < list->count; ++i) std::free(list->names[i]);
        std::free(list->names);
        std::free(list->values);
        std::free(list);
      }
      break;
    case WMQ_KIND_AFFINITY:
      freeupAffinityJobData(*static_cast<affinityAlloc **>(at));
      std::free(*static_cast<affinityAlloc **>(at));
      break;
    case WMQ_KIND_NETWORK:
      freeNetworkAlloc(1, static_cast<networkAlloc *>(at));
      break;
    default:
      break;
  }
}

// Frees what the members own, and sets the structure to zeros.
inline void releaseStructure(const wmqLayout &layout, void *base) {
  std::set<std::size_t> blocks;
  for (std::size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!hasValue(field)) continue;
    char *elements = &memberAt<char>(base, field.offset);
    std::int64_t count = static_cast<std::int64_t>(field.length);
    if (field.shape == WMQ_SHAPE_COUNTED) {
      elements = memberAt<char *>(base, field.offset);
      count = elements == nullptr ? 0 : countAt(field, base);
    }
    for (std::int64_t k = 0; k < count; ++k)
      releaseValue(field, elements + static_cast<std::size_t>(k) * field.size);
    const bool shared = (field.flags & WMQ_FIELD_BLOCK) != 0 && !blocks.insert(field.countOffset).second;
    if (field.shape == WMQ_SHAPE_COUNTED && !shared) std::free(memberAt<char *>(base, field.offset));
  }
  std::memset(base, 0, layout.size);
}

// ----------------------------------------------------------------------- comparison

std::string structureDifference(const wmqLayout &layout, const void *a, const void *b);

template <typename T>
std::string numberDifference(const void *a, const void *b) {
  T left;
  T right;
  std::memcpy(&left, a, sizeof left);
  std::memcpy(&right, b, sizeof right);
  bool same = std::memcmp(a, b, sizeof(T)) == 0;
  // A NaN's payload is not shown; the sign of a zero is.
  if constexpr (std::is_floating_point_v<T>) same = same || (std::isnan(left) && std::isnan(right));
  return same ? "" : ": " + std::to_string(left) + " and " + std::to_string(right);
}

inline std::string textDifference(const char *a, const char *b) {
  if (a == nullptr || b == nullptr) return a == b ? "" : ": null and a text";
  return std::strcmp(a, b) == 0 ? "" : std::string(": \"") + a + "\" and \"" + b + "\"";
}

inline std::string ownedTextDifference(char *a, char *b) {
  std::string found = textDifference(a, b);
  std::free(a);
  std::free(b);
  return found;
}

inline std::string valueDifference(const wmqField &field, const void *a, const void *b) {
  const auto pointer = [](const void *at) { return *static_cast<void *const *>(at); };
  switch (field.kind) {
    case WMQ_KIND_INT32:
      return numberDifference<std::int32_t>(a, b);
    case WMQ_KIND_INT64:
      return numberDifference<std::int64_t>(a, b);
    case WMQ_KIND_FLOAT:
      return numberDifference<float>(a, b);
    case WMQ_KIND_DOUBLE:
      return numberDifference<double>(a, b);
    case WMQ_KIND_CHARS:
      return textDifference(static_cast<const char *>(a), static_cast<const char *>(b));
    case WMQ_KIND_STRUCT:
      return structureDifference(*field.layout, a, b);
    case WMQ_KIND_NETWORK: {
      const auto &left = *static_cast<const networkAlloc *>(a);
      const auto &right = *static_cast<const networkAlloc *>(b);
      return left.numWindows != right.numWindows ? ": windows" : textDifference(left.name, right.name);
    }
    default:
      break;
  }
  if (pointer(a) == nullptr || pointer(b) == nullptr)
    return pointer(a) == pointer(b) ? "" : ": null and not null";
  if (field.kind == WMQ_KIND_STRING)
    return textDifference(static_cast<const char *>(pointer(a)), static_cast<const char *>(pointer(b)));
  if (field.kind == WMQ_KIND_AFFINITY)
    return ownedTextDifference(convertAffinityAlloc2Str(static_cast<affinityAlloc *>(pointer(a))),
                               convertAffinityAlloc2Str(static_cast<affinityAlloc *>(pointer(b))));
  std::string found;
  if (field.kind == WMQ_KIND_SUBMIT_EXT) {
    const auto &left = *static_cast<const submitExt *>(pointer(a));
    const auto &right = *static_cast<const submitExt *>(pointer(b));
    if (left.numPairs != right.numPairs) return ": number of pairs";
    for (std::int32_t i = 0; found.empty() && i < left.numPairs; ++i)
      found = left.pairs[i].key != right.pairs[i].key
                  ? ": key"
                  : textDifference(left.pairs[i].value, right.pairs[i].value);
  } else {
    const auto &left = *static_cast<const namedValueList *>(pointer(a));
    const auto &right = *static_cast<const namedValueList *>(pointer(b));
    if (left.count != right.count) return ": count";
    if ((left.names == nullptr) != (right.names == nullptr)) return ".names: null and not null";
    if ((left.values == nullptr) != (right.values == nullptr)) return ".values: null and not null";
    for (std::int32_t i = 0; found.empty() && left.names != nullptr && i < left.count; ++i)
      found = textDifference(left.names[i], right.names[i]);
    for (std::int32_t i = 0; found.empty() && left.values != nullptr && i < left.count; ++i)
      found = numberDifference<std::int32_t>(left.values + i, right.values + i);
  }
  return found;
}

// "" when the members of both structures are the same, else the path of the first that differs.
inline std::string structureDifference(const wmqLayout &layout, const void *a, const void *b) {
  for (std::size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!hasValue(field)) continue;
    const char *left = &memberAt<char>(a, field.offset);
    const char *right = &memberAt<char>(b, field.offset);
    std::int64_t count = static_cast<std::int64_t>(field.length);
    if (field.shape == WMQ_SHAPE_COUNTED) {
      left = memberAt<const char *>(a, field.offset);
      right = memberAt<const char *>(b, field.offset);
      if ((left == nullptr) != (right == nullptr)) return std::string(field.name) + ": null and not null";
      count = left == nullptr || countAt(field, a) != countAt(field, b) ? 0 : countAt(field, a);
    }
    for (std::int64_t k = 0; k < count; ++k, left += field.size, right += field.size)
      if (const std::string found = valueDifference(field, left, right); !found.empty())
        return std::string(field.name) + (count == 1 ? "" : "[" + std::to_string(k) + "]") +
               (found[0] == ':' ? "" : ".") + found;
  }
  return "";
}

// ---------------------------------------------------------------------------- random values

// Any bytes but NUL, those with a meaning in JSON or in UTF-8 more often than others.
inline std::string arbitraryText(std::size_t longest = 40) {
  static const std::vector<std::string> pieces = {
      "\"", "\\", "/",    "\n",   "\t",       "\x01",         "\x1f", "\x7f",   "ä",
      "€",  "😀",  "\xff", "\xc3", "\xe2\x82", "\xed\xa0\x80", "\xf5", "\\u0000"};
  std::string text;
  for (auto n = *rc::gen::inRange<std::size_t>(0, 12); n > 0; --n)
    text += *rc::gen::oneOf(rc::gen::elementOf(pieces), rc::gen::nonEmpty(rc::gen::string<std::string>()));
  std::erase(text, '\0');
  return text.substr(0, longest);
}

inline char *copyOf(const std::string &text) { return putstr_(text.c_str()); }

template <typename T>
T arbitraryReal() {
  using Limits = std::numeric_limits<T>;
  if (*rc::gen::inRange(0, 3) == 0)
    return *rc::gen::element(T(0), -T(0), T(1), T(0.1), T(1e20), Limits::max(), Limits::min(),
                             Limits::denorm_min(), Limits::lowest(), Limits::infinity(), -Limits::infinity(),
                             Limits::quiet_NaN(), static_cast<T>(16777217.0),
                             static_cast<T>(9007199254740993.0));
  std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t> bits =
      *rc::gen::arbitrary<decltype(bits)>();
  T value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

template <typename T>
T arbitraryWhole() {
  return *rc::gen::oneOf(rc::gen::arbitrary<T>(), rc::gen::element(T(0), T(-1), std::numeric_limits<T>::min(),
                                                                   std::numeric_limits<T>::max()));
}

void fillStructure(const wmqLayout &layout, void *base);

inline void fillValue(const wmqField &field, void *at) {
  const bool null = *rc::gen::inRange(0, 4) == 0;
  const auto few = [] { return *rc::gen::inRange<std::int32_t>(0, 4); };
  switch (field.kind) {
    case WMQ_KIND_INT32:
      *static_cast<std::int32_t *>(at) = arbitraryWhole<std::int32_t>();
      break;
    case WMQ_KIND_INT64:
      *static_cast<std::int64_t *>(at) = arbitraryWhole<std::int64_t>();
      break;
    case WMQ_KIND_FLOAT:
      *static_cast<float *>(at) = arbitraryReal<float>();
      break;
    case WMQ_KIND_DOUBLE:
      *static_cast<double *>(at) = arbitraryReal<double>();
      break;
    case WMQ_KIND_STRING:
      if (!null) *static_cast<char **>(at) = copyOf(arbitraryText());
      break;
    case WMQ_KIND_CHARS: {
      const std::string text = arbitraryText(field.size - 1);
      std::memcpy(at, text.c_str(), text.size() + 1);
      break;
    }
    case WMQ_KIND_STRUCT:
      fillStructure(*field.layout, at);
      break;
    case WMQ_KIND_SUBMIT_EXT:
      if (!null) {
        auto *&extension = *static_cast<submitExt **>(at);
        for (std::int32_t n = few() + 1; n > 0; --n)
          add_pair2submit_ext(&extension, arbitraryWhole<std::int32_t>(), arbitraryText().c_str());
      }
      break;
    case WMQ_KIND_NAMED_VALUES:
      if (!null) {
        auto *list = static_cast<namedValueList *>(std::calloc(1, sizeof(namedValueList)));
        list->count = few();
        const auto count = static_cast<std::size_t>(list->count) + 1;
        list->names = static_cast<char **>(std::calloc(count, sizeof(char *)));
        list->values = static_cast<std::int32_t *>(std::calloc(count, sizeof(std::int32_t)));
        for (std::int32_t i = 0; i < list->count; ++i) {
          list->names[i] = copyOf(arbitraryText());
          list->values[i] = arbitraryWhole<std::int32_t>();
        }
        *static_cast<namedValueList **>(at) = list;
      }
      break;
    case WMQ_KIND_AFFINITY:
      if (!null) {
        const auto text = *rc::gen::element<std::string>("a:0", "a:0-3,8;b:1", "host:1:", "h\xff:2,4");
        *static_cast<affinityAlloc **>(at) = parseAffinityAllocField(text.c_str());
      }
      break;
    case WMQ_KIND_NETWORK: {
      auto &allocation = *static_cast<networkAlloc *>(at);
      allocation.name = copyOf(*rc::gen::element<std::string>("a", "b=c", "n \xff", "ä"));
      allocation.numWindows = *rc::gen::inRange<std::int32_t>(0, 100000);
      break;
    }
  }
}

// Into a zero-filled structure. Arrays of one count have one length or are null; a block's arrays are all
// there or all null.
inline void fillStructure(const wmqLayout &layout, void *base) {
  std::map<std::size_t, std::size_t> lengths;
  std::map<std::size_t, std::size_t> partsOfBlock;
  for (std::size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!hasValue(field) || field.shape != WMQ_SHAPE_COUNTED) continue;
    lengths.try_emplace(field.countOffset, *rc::gen::inRange<std::size_t>(0, 4));
    if ((field.flags & WMQ_FIELD_BLOCK) != 0) ++partsOfBlock[field.countOffset];
  }

  std::map<std::size_t, char *> blocks;
  std::map<std::size_t, bool> noBlock;
  for (std::size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!hasValue(field)) continue;
    void *at = &memberAt<char>(base, field.offset);
    if (field.shape != WMQ_SHAPE_COUNTED) {
      if (const auto length = lengths.find(field.offset); length == lengths.end())
        for (std::size_t k = 0; k < field.length; ++k)
          fillValue(field, static_cast<char *>(at) + k * field.size);
      else if (field.kind == WMQ_KIND_INT64)
        *static_cast<std::int64_t *>(at) = static_cast<std::int64_t>(length->second);
      else
        *static_cast<std::int32_t *>(at) = static_cast<std::int32_t>(length->second);
      continue;
    }
    const std::size_t length = lengths[field.countOffset];
    char *elements = nullptr;
    if ((field.flags & WMQ_FIELD_BLOCK) != 0) {
      char *&block = blocks[field.countOffset];
      if (noBlock.try_emplace(field.countOffset, *rc::gen::inRange(0, 5) == 0).first->second) continue;
      if (block == nullptr)
        block = static_cast<char *>(std::calloc(length * partsOfBlock[field.countOffset] + 1, field.size));
      else
        block += length * field.size;
      elements = block;
    } else if (*rc::gen::inRange(0, 5) != 0) {
      elements = static_cast<char *>(std::calloc(length + 1, field.size));
    }
    *static_cast<char **>(at) = elements;
    for (std::size_t k = 0; elements != nullptr && k < length; ++k)
      fillValue(field, elements + k * field.size);
  }
}

}  // namespace wmq::testing

#endif
