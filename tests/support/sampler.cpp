#include "support/sampler.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <type_traits>

#include "wmq/records/shapes.h"
#include "wmq/schema.h"

namespace wmq::testing {
namespace {

// Through memcpy: the bytes at `at` are those of a T, but the pointer has come out of a schema.
template <typename T>
T load(const char *at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <typename T>
void store(char *at, const T &value) {
  std::memcpy(at, &value, sizeof value);
}

// Nobody samples from standard distributions: they differ from library to library.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t next() {  // splitmix64
    uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9;
    z = (z ^ z >> 27) * 0x94d049bb133111eb;
    return z ^ z >> 31;
  }
  size_t below(size_t limit) { return next() % limit; }
  bool oneIn(size_t times) { return below(times) == 0; }

  template <typename List>
  auto oneOf(const List &list) {
    return list[below(std::size(list))];
  }

 private:
  uint64_t state_;
};

// ---------------------------------------------------------------------------------- values

constexpr const char *kPieces[] = {
    "a",    "B7",   " ",    "\"",           "\"\"",       "\"n",  "\n",
    "\r",   "\t",   "\\",   "\\n",          "'",          "name", "/",
    "%d",   "3*h",  "1*",   "0*h",          ":",          "=",    ";",
    ",",    "#",    "-12",  "0.5",          "NULL",       "ä",    "€",
    "\x01", "\xfe", "\xc3", "\xed\xb2\x80", "\U0001F600", "\x7f", "long long long text"};

class Sampler {
 public:
  explicit Sampler(Seed seed) : random_(seed.value), size_(static_cast<size_t>(seed.size)) {}

  void fillStructure(const wmqLayout &layout, char *base);
  int32_t number32() { return static_cast<int32_t>(number64()); }

 private:
  int64_t number64();
  template <typename T>
  T real();
  std::string text();
  std::string textWithout(char unwanted);
  void fillChars(char *array, size_t size, size_t minLength);
  char *ownedText() { return random_.oneIn(8) ? nullptr : ownedCopy(text()); }

  submitExt *extension();
  namedValueList *namedValues();
  affinityAlloc *affinity();
  networkAlloc network();

  void fillValue(const wmqField &field, char *at);
  void fillArray(const wmqField &array, char *base, size_t count);
  void fillBlock(const std::vector<const wmqField *> &arrays, char *base, size_t count);

  size_t length() { return random_.oneIn(4) ? 0 : random_.below(size_ + 1); }

  Random random_;
  size_t size_;
};

int64_t Sampler::number64() {
  static constexpr int64_t edges[] = {0,
                                      -1,
                                      1,
                                      INT32_MAX,
                                      INT32_MIN,
                                      int64_t{INT32_MAX} + 1,
                                      int64_t{1} << 32,
                                      (int64_t{1} << 53) + 1,
                                      INT64_MAX,
                                      INT64_MIN,
                                      1600000000};
  switch (random_.below(5)) {
    case 0:
      return static_cast<int64_t>(random_.below(10));
    case 1:
      return -static_cast<int64_t>(random_.below(100));
    case 2:
      return random_.oneOf(edges);
    case 3:
      return static_cast<int32_t>(random_.next());
    default:
      return static_cast<int64_t>(random_.next());
  }
}

template <typename T>
T Sampler::real() {
  using Limits = std::numeric_limits<T>;
  using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
  static constexpr T edges[] = {T{0},
                                -T{0},
                                T{1},
                                T{0.5},
                                static_cast<T>(0.1),
                                static_cast<T>(0.0000005),
                                static_cast<T>(16777217.0),
                                Limits::max(),
                                Limits::min(),
                                Limits::denorm_min(),
                                Limits::lowest(),
                                Limits::infinity(),
                                -Limits::infinity(),
                                Limits::quiet_NaN()};
  switch (random_.below(4)) {
    case 0:
      return random_.oneOf(edges);
    case 1:
      return static_cast<T>(random_.below(100000)) / 8;
    case 2:
      return -static_cast<T>(random_.below(100000)) / 1000;
    default:
      return std::bit_cast<T>(static_cast<Bits>(random_.next()));
  }
}

std::string Sampler::text() {
  std::string text;
  for (size_t pieces = length(); pieces > 0; --pieces) text += random_.oneOf(kPieces);
  return text;
}

std::string Sampler::textWithout(char unwanted) {
  std::string plain = text();
  std::erase(plain, unwanted);
  return plain;
}

void Sampler::fillChars(char *array, size_t size, size_t minLength) {
  std::string content = text();
  if (random_.oneIn(8)) content += std::string(size, 'x');  // as long as fits
  content.resize(std::clamp(content.size(), minLength, size - 1), 'x');
  std::memcpy(array, content.c_str(), content.size() + 1);
}

submitExt *Sampler::extension() {
  if (random_.oneIn(4)) return nullptr;
  auto *created = static_cast<submitExt *>(std::calloc(1, sizeof(submitExt)));
  for (size_t pairs = length(); pairs > 0; --pairs) add_pair2submit_ext(&created, number32(), text().c_str());
  return created;
}

namedValueList *Sampler::namedValues() {
  if (random_.oneIn(4)) return nullptr;
  auto *list = static_cast<namedValueList *>(std::calloc(1, sizeof(namedValueList)));
  const size_t count = length();
  if (count == 0 && random_.oneIn(2)) return list;
  list->count = static_cast<int32_t>(count);
  list->names = static_cast<char **>(std::calloc(count + 1, sizeof(char *)));
  list->values = static_cast<int32_t *>(std::calloc(count + 1, sizeof(int32_t)));
  for (size_t i = 0; i < count; ++i) {
    list->names[i] = ownedText();
    list->values[i] = number32();
  }
  return list;
}

// At least one host, CPUs ascending: others have no text form.
affinityAlloc *Sampler::affinity() {
  if (random_.oneIn(4)) return nullptr;
  auto *allocation = static_cast<affinityAlloc *>(std::calloc(1, sizeof(affinityAlloc)));
  const size_t numHosts = 1 + random_.below(size_ + 1);
  allocation->numHosts = static_cast<int32_t>(numHosts);
  allocation->hosts = static_cast<affinityHost *>(std::calloc(numHosts, sizeof(affinityHost)));
  for (size_t i = 0; i < numHosts; ++i) {
    affinityHost &host = allocation->hosts[i];
    host.host = ownedCopy(textWithout(';'));
    const size_t numCpus = length();
    if (numCpus == 0) continue;
    host.numCpus = static_cast<int32_t>(numCpus);
    host.cpus = static_cast<int32_t *>(std::calloc(numCpus, sizeof(int32_t)));
    auto cpu = static_cast<int32_t>(random_.below(4));
    for (size_t k = 0; k < numCpus; ++k, cpu += 1 + static_cast<int32_t>(random_.below(3)))
      host.cpus[k] = cpu;
  }
  return allocation;
}

networkAlloc Sampler::network() {
  return {ownedCopy("n" + textWithout(';')), static_cast<int32_t>(random_.below(100000))};
}

// ------------------------------------------------------------------------------ structures

bool isStatedFirst(const wmqField &field) {
  return (field.flags & (WMQ_FIELD_AGAIN | WMQ_FIELD_RESERVED)) == 0;
}

void storeCount(const wmqField &array, char *base, size_t count) {
  if (array.countKind == WMQ_KIND_INT64)
    store(base + array.countOffset, static_cast<int64_t>(count));
  else
    store(base + array.countOffset, static_cast<int32_t>(count));
}

int64_t loadCount(const wmqField &array, const char *base) {
  const char *at = base + array.countOffset;
  return array.countKind == WMQ_KIND_INT64 ? load<int64_t>(at) : load<int32_t>(at);
}

void Sampler::fillValue(const wmqField &field, char *at) {
  switch (field.kind) {
    case WMQ_KIND_INT32:
      return store(at, number32());
    case WMQ_KIND_INT64:
      return store(at, number64());
    case WMQ_KIND_FLOAT:
      return store(at, real<float>());
    case WMQ_KIND_DOUBLE:
      return store(at, real<double>());
    case WMQ_KIND_STRING:
      return store(at, ownedText());
    case WMQ_KIND_CHARS:
      return fillChars(at, field.size, field.minLength);
    case WMQ_KIND_STRUCT:
      return fillStructure(*field.layout, at);
    case WMQ_KIND_SUBMIT_EXT:
      return store(at, extension());
    case WMQ_KIND_NAMED_VALUES:
      return store(at, namedValues());
    case WMQ_KIND_AFFINITY:
      return store(at, affinity());
    case WMQ_KIND_NETWORK:
      return store(at, network());
  }
}

void Sampler::fillArray(const wmqField &array, char *base, size_t count) {
  if (count == 0 && (array.flags & WMQ_FIELD_EMPTY_ARRAY) == 0) return;
  auto *elements = static_cast<char *>(std::calloc(std::max<size_t>(count, 1), array.size));
  store(base + array.offset, elements);
  for (size_t i = 0; i < count; ++i) fillValue(array, elements + i * array.size);
}

// Arrays that share one allocation, which begins with the first.
void Sampler::fillBlock(const std::vector<const wmqField *> &arrays, char *base, size_t count) {
  if (count == 0) return;
  const size_t bytesEach = count * arrays.front()->size;
  auto *elements = static_cast<char *>(std::calloc(arrays.size(), bytesEach));
  for (const wmqField *array : arrays) {
    store(base + array->offset, elements);
    for (size_t i = 0; i < count; ++i) fillValue(*array, elements + i * array->size);
    elements += bytesEach;
  }
}  // NOLINT(clang-analyzer-unix.Malloc): the structure has them

void Sampler::fillStructure(const wmqLayout &layout, char *base) {
  std::map<size_t, std::vector<const wmqField *>> arraysByCount;
  for (size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (field.shape == WMQ_SHAPE_COUNTED && isStatedFirst(field))
      arraysByCount[field.countOffset].push_back(&field);
  }
  for (size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (field.shape == WMQ_SHAPE_COUNTED || !isStatedFirst(field) || arraysByCount.contains(field.offset))
      continue;
    for (size_t k = 0; k < field.length; ++k) fillValue(field, base + field.offset + k * field.size);
  }
  for (const auto &[countOffset, arrays] : arraysByCount) {
    const size_t count = length();
    storeCount(*arrays.front(), base, count);
    if ((arrays.front()->flags & WMQ_FIELD_BLOCK) != 0) {
      fillBlock(arrays, base, count);
    } else {
      for (const wmqField *array : arrays) fillArray(*array, base, count);
    }
  }
}

// ------------------------------------------------------------------------------- what is owned

bool isPointer(const wmqField &field) {
  if (field.shape == WMQ_SHAPE_COUNTED) return true;
  return field.kind == WMQ_KIND_STRING || field.kind == WMQ_KIND_SUBMIT_EXT ||
         field.kind == WMQ_KIND_NAMED_VALUES || field.kind == WMQ_KIND_AFFINITY;
}

void findOwned(const wmqLayout &layout, const char *base, Owned wanted, const std::string &path,
               std::vector<std::string> &found) {
  for (size_t i = 0; i < layout.numFields; ++i) {
    const wmqField &field = layout.fields[i];
    if (!isStatedFirst(field)) continue;
    const bool kept = (field.flags & WMQ_FIELD_KEPT) != 0;
    if (kept ? !wanted.kept : !wanted.freed) continue;
    for (size_t k = 0; k < field.length; ++k) {
      const char *at = base + field.offset + k * field.size;
      if (field.kind == WMQ_KIND_STRUCT && field.shape != WMQ_SHAPE_COUNTED)
        findOwned(*field.layout, at, wanted, path + field.name + '.', found);
      else if (isPointer(field) && load<const void *>(at) != nullptr)
        found.push_back(path + field.name);
    }
    if (field.shape == WMQ_SHAPE_COUNTED && loadCount(field, base) != 0)
      found.push_back(path + field.countName);
  }
}

}  // namespace

std::ostream &operator<<(std::ostream &out, const Seed &seed) {
  return out << "{" << seed.value << "U, " << seed.size << "}";
}

OwnedRecord sampleRecord(int32_t type, Seed seed) {
  const wmqLayout *layout = wmq_schema(type);
  if (layout == nullptr) return nullptr;
  OwnedRecord record(static_cast<eventRecord *>(std::calloc(1, sizeof(eventRecord))));
  Sampler sampler(seed);
  std::strcpy(record->version, WMQ_FORMAT_VERSION);
  record->type = type;
  record->eventTime = sampler.number32();
  sampler.fillStructure(*layout, reinterpret_cast<char *>(&record->eventLog));
  return record;
}

std::vector<std::string> ownedMembers(const eventRecord &record, Owned wanted) {
  std::vector<std::string> found;
  if (const wmqLayout *layout = wmq_schema(record.type))
    findOwned(*layout, reinterpret_cast<const char *>(&record.eventLog), wanted, "", found);
  return found;
}

std::vector<int32_t> typesWithSchema() {
  std::vector<int32_t> types;
  for (int32_t type = 0; type <= WMQ_MAX_EVENT_TYPE; ++type)
    if (wmq_schema(type) != nullptr) types.push_back(type);
  return types;
}

std::vector<int32_t> typesWithLine() {
  std::vector<int32_t> types = typesWithSchema();
  std::erase_if(types, [](int32_t type) {
    const wmqLayout &layout = *wmq_schema(type);
    const auto onLine = [](const wmqField &field) { return field.position > 0; };
    return wmq_typename(type) == nullptr ||
           std::none_of(layout.fields, layout.fields + layout.numFields, onLine);
  });
  return types;
}

}  // namespace wmq::testing
