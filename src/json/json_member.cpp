#include "json/json_member.h"

#include <iterator>
#include <string_view>

namespace wmq {

static constexpr wmqField one(std::string_view name, wmqKind kind, std::size_t offset, std::size_t size) {
  wmqField field{};
  field.name = name.data();
  field.nameLength = name.size();
  field.kind = kind;
  field.shape = WMQ_SHAPE_ONE;
  field.offset = offset;
  field.size = size;
  field.length = 1;
  field.form = field.condition = field.absent = field.note = "";
  return field;
}

static constexpr wmqField counted(const char *countName, std::size_t countOffset, wmqField element) {
  element.shape = WMQ_SHAPE_COUNTED;
  element.countName = countName;
  element.countOffset = countOffset;
  element.countKind = WMQ_KIND_INT32;
  return element;
}

static constexpr wmqField withFlags(wmqField field, unsigned flags) {
  field.flags = flags;
  return field;
}

static constexpr wmqField withLayout(wmqField field, const wmqLayout &layout) {
  field.layout = &layout;
  return field;
}

static constexpr wmqField pairFields[] = {
    one("key", WMQ_KIND_INT32, offsetof(submitExtPair, key), sizeof(std::int32_t)),
    one("value", WMQ_KIND_STRING, offsetof(submitExtPair, value), sizeof(char *)),
};
static constexpr wmqLayout pairLayout = {"submitExtPair", sizeof(submitExtPair), std::size(pairFields),
                                         pairFields};

static constexpr wmqField submitExtFields[] = {
    withLayout(counted("numPairs", offsetof(submitExt, numPairs),
                       one("pairs", WMQ_KIND_STRUCT, offsetof(submitExt, pairs), sizeof(submitExtPair))),
               pairLayout),
};
const wmqLayout submitExtLayout = {"submitExt", sizeof(submitExt), std::size(submitExtFields),
                                   submitExtFields};

static constexpr wmqField namedValuesFields[] = {
    withFlags(one("count", WMQ_KIND_INT32, offsetof(namedValueList, count), sizeof(std::int32_t)),
              WMQ_FIELD_COUNT),
    counted("count", offsetof(namedValueList, count),
            one("names", WMQ_KIND_STRING, offsetof(namedValueList, names), sizeof(char *))),
    counted("count", offsetof(namedValueList, count),
            one("values", WMQ_KIND_INT32, offsetof(namedValueList, values), sizeof(std::int32_t))),
};

const wmqLayout namedValuesLayout = {"namedValueList", sizeof(namedValueList), std::size(namedValuesFields),
                                     namedValuesFields};

}  // namespace wmq
