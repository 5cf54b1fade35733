// A structure with a member of every kind in every shape: what log structures may consist of, whether one
// does so today or not.
#ifndef WMQ_TESTS_SPECIMEN_H
#define WMQ_TESTS_SPECIMEN_H

#include <cstdint>
#include <cstring>
#include <vector>

#include "wmq/records/shapes.h"
#include "wmq/schema.h"

namespace wmq::testing {

struct Specimen {
  std::int32_t small;
  std::int64_t large;
  float single;
  double fine;
  char *text;
  char name[8];
  namedInt inner;
  std::int32_t three[3];
  char *twoTexts[2];
  char twoTags[2][4];
  std::int32_t numTexts;
  char **texts;
  std::int64_t numLongs;
  std::int64_t *longs;
  std::int32_t numEntries;
  namedInt *entries;
  std::int32_t rangeCnt;
  std::int32_t *rangeStart;
  std::int32_t *rangeEnd;
  std::int32_t *rangeStep;
  std::int32_t numCells;
  std::int32_t *cellRows;
  std::int32_t *cellColumns;
  float *pointX;  // before their count
  double *pointY;
  std::int32_t numPoints;
  submitExt *extension;
  namedValueList *named;
  affinityAlloc *affinity;
  std::int32_t numNetworks;
  networkAlloc *networks;
  void *reserved;
};

inline wmqField stated(const char *name, wmqKind kind, std::size_t offset, std::size_t size,
                       const wmqLayout *layout = nullptr) {
  wmqField field{};
  field.name = name;
  field.nameLength = std::strlen(name);
  field.kind = kind;
  field.shape = WMQ_SHAPE_ONE;
  field.offset = offset;
  field.size = size;
  field.length = 1;
  field.layout = layout;
  field.form = field.condition = field.absent = field.note = "";
  return field;
}

inline wmqField fixed(wmqField element, std::size_t length) {
  element.shape = WMQ_SHAPE_FIXED;
  element.length = length;
  return element;
}

inline wmqField counted(wmqField element, const char *countName, std::size_t countOffset,
                        wmqKind countKind = WMQ_KIND_INT32) {
  element.shape = WMQ_SHAPE_COUNTED;
  element.countName = countName;
  element.countOffset = countOffset;
  element.countKind = countKind;
  return element;
}

inline wmqField flagged(wmqField field, unsigned flags) {
  field.flags = flags;
  return field;
}

// `small`, `numTexts` and `rangeStart` are stated a second time, the ranges are one block, the cells another,
// the reserved member has no kind.
inline const wmqLayout &specimenLayout() {
  using S = Specimen;
  static const std::vector<wmqField> innerFields = {
      stated("name", WMQ_KIND_STRING, offsetof(namedInt, name), sizeof(char *)),
      stated("value", WMQ_KIND_INT32, offsetof(namedInt, value), sizeof(std::int32_t)),
  };
  static const wmqLayout inner = {"namedInt", sizeof(namedInt), innerFields.size(), innerFields.data()};

  constexpr std::size_t number = sizeof(std::int32_t);
  constexpr std::size_t texts = offsetof(S, numTexts);
  constexpr std::size_t longs = offsetof(S, numLongs);
  constexpr std::size_t entries = offsetof(S, numEntries);
  constexpr std::size_t ranges = offsetof(S, rangeCnt);
  constexpr std::size_t points = offsetof(S, numPoints);
  constexpr std::size_t networks = offsetof(S, numNetworks);
  constexpr std::size_t cells = offsetof(S, numCells);
  const auto part = [&](const char *name, std::size_t offset, const char *countName, std::size_t count) {
    return flagged(counted(stated(name, WMQ_KIND_INT32, offset, number), countName, count), WMQ_FIELD_BLOCK);
  };
  static const std::vector<wmqField> fields = {
      stated("small", WMQ_KIND_INT32, offsetof(S, small), number),
      stated("large", WMQ_KIND_INT64, offsetof(S, large), sizeof(std::int64_t)),
      stated("single", WMQ_KIND_FLOAT, offsetof(S, single), sizeof(float)),
      stated("fine", WMQ_KIND_DOUBLE, offsetof(S, fine), sizeof(double)),
      flagged(stated("small", WMQ_KIND_INT32, offsetof(S, small), number), WMQ_FIELD_AGAIN),
      stated("text", WMQ_KIND_STRING, offsetof(S, text), sizeof(char *)),
      stated("name", WMQ_KIND_CHARS, offsetof(S, name), sizeof(S::name)),
      stated("inner", WMQ_KIND_STRUCT, offsetof(S, inner), sizeof(namedInt), &inner),
      fixed(stated("three", WMQ_KIND_INT32, offsetof(S, three), number), 3),
      fixed(stated("twoTexts", WMQ_KIND_STRING, offsetof(S, twoTexts), sizeof(char *)), 2),
      fixed(stated("twoTags", WMQ_KIND_CHARS, offsetof(S, twoTags), 4), 2),
      flagged(stated("numTexts", WMQ_KIND_INT32, texts, number), WMQ_FIELD_COUNT),
      flagged(stated("numTexts", WMQ_KIND_INT32, texts, number), WMQ_FIELD_COUNT | WMQ_FIELD_AGAIN),
      counted(stated("texts", WMQ_KIND_STRING, offsetof(S, texts), sizeof(char *)), "numTexts", texts),
      flagged(stated("numLongs", WMQ_KIND_INT64, longs, sizeof(std::int64_t)), WMQ_FIELD_COUNT),
      counted(stated("longs", WMQ_KIND_INT64, offsetof(S, longs), sizeof(std::int64_t)), "numLongs", longs,
              WMQ_KIND_INT64),
      flagged(stated("numEntries", WMQ_KIND_INT32, entries, number), WMQ_FIELD_COUNT),
      counted(stated("entries", WMQ_KIND_STRUCT, offsetof(S, entries), sizeof(namedInt), &inner),
              "numEntries", entries),
      flagged(stated("rangeCnt", WMQ_KIND_INT32, ranges, number), WMQ_FIELD_COUNT),
      part("rangeStart", offsetof(S, rangeStart), "rangeCnt", ranges),
      flagged(part("rangeStart", offsetof(S, rangeStart), "rangeCnt", ranges),
              WMQ_FIELD_BLOCK | WMQ_FIELD_AGAIN),
      part("rangeEnd", offsetof(S, rangeEnd), "rangeCnt", ranges),
      part("rangeStep", offsetof(S, rangeStep), "rangeCnt", ranges),
      flagged(stated("numCells", WMQ_KIND_INT32, cells, number), WMQ_FIELD_COUNT),
      part("cellRows", offsetof(S, cellRows), "numCells", cells),
      part("cellColumns", offsetof(S, cellColumns), "numCells", cells),
      counted(stated("pointX", WMQ_KIND_FLOAT, offsetof(S, pointX), sizeof(float)), "numPoints", points),
      counted(stated("pointY", WMQ_KIND_DOUBLE, offsetof(S, pointY), sizeof(double)), "numPoints", points),
      flagged(stated("numPoints", WMQ_KIND_INT32, points, number), WMQ_FIELD_COUNT),
      stated("extension", WMQ_KIND_SUBMIT_EXT, offsetof(S, extension), sizeof(void *)),
      stated("named", WMQ_KIND_NAMED_VALUES, offsetof(S, named), sizeof(void *)),
      stated("affinity", WMQ_KIND_AFFINITY, offsetof(S, affinity), sizeof(void *)),
      flagged(stated("numNetworks", WMQ_KIND_INT32, networks, number), WMQ_FIELD_COUNT),
      counted(stated("networks", WMQ_KIND_NETWORK, offsetof(S, networks), sizeof(networkAlloc)),
              "numNetworks", networks),
      flagged(stated("reserved", wmqKind{}, offsetof(S, reserved), sizeof(void *)), WMQ_FIELD_RESERVED),
  };
  static const wmqLayout layout = {"Specimen", sizeof(Specimen), fields.size(), fields.data()};
  return layout;
}

}  // namespace wmq::testing

#endif
