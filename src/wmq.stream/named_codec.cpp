#include "wmq.stream/named_codec.h"

#include "companion/affinity.h"
#include "companion/numbers.h"
#include "companion/quoting.h"
#include "companion/zeroed_memory.h"
#include "wmq.stream/failure.h"

namespace wmq {
namespace {

constexpr char kEnergy[] = "HOST_ENERGY_CONSUMPTION";

// A quoted string as it stands on the line, or decoded into memory of its own where it has to be.
bool takeString(Reader &io, const char *&text, size_t &length, char *&decoded) {
  if (const PlainQuoted plain = plainQuotedAt(io.cursor, io.end); plain.after != nullptr) {
    text = plain.after - 1 - plain.length();
    length = plain.length();
    io.cursor = plain.after + io.skips;
    return true;
  }
  const char *content = nullptr;
  size_t rawLength = 0;
  const char *after = findQuoted(io.cursor, io.end, &content, &rawLength, &length);
  if (after == nullptr) {
    fail(io, WMQE_BAD_FORMAT, nullptr, "a quoted string for every pair");
    return false;
  }
  text = content;
  if (rawLength != length) {
    decoded = static_cast<char *>(takeBlock(length + 1));
    if (decoded == nullptr) {
      fail(io, WMQE_NO_MEM, nullptr, "memory for the pair");
      return false;
    }
    decodeQuoted(decoded, content, rawLength, length);
    decoded[length] = '\0';
    text = decoded;
  }
  io.cursor = after;
  skipBlank(io);
  return true;
}

// The name that is expected, where it stands here.
bool takeExpected(PairReader &in, std::string_view name) {
  Reader &io = in.io;
  if (io.end - io.cursor < static_cast<ptrdiff_t>(name.size() + 3)) return false;
  const char *const closing = io.cursor + 1 + name.size();
  if (*io.cursor != '"' || closing[0] != '"' || closing[1] != ' ') return false;
  if (!sameBytes(io.cursor + 1, name.data(), name.size())) return false;
  in.pair.name = io.cursor + 1;
  in.pair.nameLength = name.size();
  io.cursor = closing + 1 + io.skips;
  return true;
}

char *copyOfText(PairReader &in, const char *field, const char *text, size_t length) {
  auto *copy = static_cast<char *>(takeBlock(bytesForText(length)));
  if (copy == nullptr) {
    fail(in.io, WMQE_NO_MEM, field, "memory for the string");
    return nullptr;
  }
  copyBytes(copy, text, length);
  copy[length] = '\0';
  return copy;
}

template <typename Element>
bool allocateGroup(PairReader &in, const char *field, int32_t &count, size_t pairsEach, Element *&array) {
  constexpr size_t leastPair = 6;
  array = static_cast<Element *>(
      allocateElements(in.io, field, count, sizeof(Element), leastPair * pairsEach, WMQE_NO_MEM));
  if (array == nullptr) count = 0;
  return array != nullptr;
}

const PairTable::Entry *findHalving(const PairTable &table, std::string_view name) {
  int first = 0;
  int last = table.count - 1;
  while (first <= last) {
    const int middle = first + (last - first) / 2;
    const int order = name.compare(table.entries[middle].name);
    if (order == 0) return &table.entries[middle];
    if (order < 0) {
      last = middle - 1;
    } else {
      first = middle + 1;
    }
  }
  return nullptr;
}

const PairTable::Entry *search(const PairTable &table, std::string_view name) {
  if (table.published != nullptr) return findHalving(table, name);
  for (int i = 0; i < table.count; ++i)
    if (name == table.entries[i].name) return &table.entries[i];
  return nullptr;
}

// Finds what a search finds. Pairs that a writer leaves out are passed over, as long as they are a few.
const PairTable::Entry *findEntry(PairReader &in, const PairTable &table) {
  constexpr int mostLeftOut = 8;
  if (in.asExpected) {
    const PairTable::Entry &expected = table.at(in.nextInOrder);
    in.nextInOrder = expected.nextInOrder;
    return &expected;
  }
  const std::string_view name(in.pair.name, in.pair.nameLength);
  const int behind = std::min(table.numInOrder, in.nextInOrder + mostLeftOut);
  const PairTable::Entry *found = nullptr;
  for (int place = in.nextInOrder; found == nullptr && place < behind; ++place) {
    const PairTable::Entry &entry = table.at(place);
    if (name == entry.text()) found = &entry;
  }
  if (found == nullptr) found = search(table, name);
  if (found != nullptr) in.nextInOrder = found->nextInOrder;
  return found;
}

void readHostEntry(PairReader &in, hostRusageEntry &entry, bool withEnergy) {
  if (!nextPair(in)) return;
  if (!in.pair.is("numHRusageAttrs")) return;  // an entry without a group: one pair is used up
  for (int32_t members = integerOf(in.pair); members > 0; --members) {
    if (!nextPair(in)) return;
    const Pair &pair = in.pair;
    if (pair.empty()) continue;
    if (pair.is("hu_name")) keepString(in, "hostRusage", entry.name);
    if (pair.is("hu_mem")) entry.mem = integerOf(pair);
    if (pair.is("hu_swap")) entry.swap = integerOf(pair);
    if (pair.is("hu_utime")) entry.utime = integerOf(pair);
    if (pair.is("hu_stime")) entry.stime = integerOf(pair);
    if (!withEnergy || !pair.is("hu_energy")) continue;
    if (entry.attrs == nullptr)
      entry.attrs = static_cast<struct attribute *>(zeroed(1, sizeof(struct attribute)));
    if (entry.attrs == nullptr) return fail(in.io, WMQE_NO_MEM, "hostRusage", "memory for the attribute");
    entry.numAttrs = 1;
    if (entry.attrs->name == nullptr)
      entry.attrs->name = copyOfText(in, "hostRusage", kEnergy, sizeof kEnergy - 1);
    if (entry.attrs->name == nullptr) return;
    keepString(in, "hostRusage", entry.attrs->value);
  }
}

const char *energyOf(const hostRusageEntry &entry) {
  const char *value = nullptr;
  for (int32_t i = 0; entry.attrs != nullptr && i < entry.numAttrs; ++i)
    if (entry.attrs[i].name != nullptr && std::strcmp(entry.attrs[i].name, kEnergy) == 0)
      value = entry.attrs[i].value != nullptr ? entry.attrs[i].value : "";
  return value;
}

// Pairs with an empty key or value are left out, and the count says how many are there.
void readGpuEntry(PairReader &in, gpuRusageEntry &entry) {
  if (!nextPair(in, false)) return;
  keepString(in, "gpuRusages", entry.hostName);
  if (in.io.error != 0 || !nextPair(in, false)) return;
  int32_t count = integerOf(in.pair);
  entry.numPairs = count;
  if (count <= 0) return;
  if (!allocateGroup(in, "gpuRusages", count, 1, entry.pairs)) {
    entry.numPairs = 0;
    return;
  }
  entry.numPairs = 0;
  for (; count > 0 && nextPair(in, false); --count) {
    if (in.pair.empty()) continue;
    keyValue &pair = entry.pairs[entry.numPairs];
    pair.key = copyOfText(in, "gpuRusages", in.pair.name, in.pair.nameLength);
    if (pair.key == nullptr) return;
    ++entry.numPairs;
    keepString(in, "gpuRusages", pair.value);
    if (in.io.error != 0) return;
  }
}

void putHostName(PairWriter &io, const char *name, const char *host) {
  if (host == nullptr || *host == '\0') return fail(io.out, WMQE_SYS, name, "a host name that is not empty");
  putPair(io, name, host);
}

}  // namespace

// ---------------------------------------------------------------------- reading

PairReader::~PairReader() {
  for (char *const text : decoded) giveBlock(text);
}

bool nextPair(PairReader &in, bool announced, std::string_view expected) {
  if (in.io.error != 0) return false;
  for (char *&text : in.decoded) release(text);
  if (announced) --in.left;
  in.asExpected = !expected.empty() && takeExpected(in, expected);
  return (in.asExpected || takeString(in.io, in.pair.name, in.pair.nameLength, in.decoded[0])) &&
         takeString(in.io, in.pair.value, in.pair.valueLength, in.decoded[1]);
}

int32_t integerOf(const Pair &pair) {
  int64_t value = 0;
  if (pair.valueLength == 0 || scanInt64(pair.value, value) == nullptr) return 0;
  return static_cast<int32_t>(value);
}

double realOf(const Pair &pair) { return parseReal(pair.value, nullptr); }

void keepString(PairReader &in, const char *field, char *&value) {
  if (!in.io.keepsTexts) return;
  char *copy = copyOfText(in, field, in.pair.value, in.pair.valueLength);
  if (copy == nullptr) return;
  release(value);
  value = copy;
}

void keepChars(const Pair &pair, char *array, size_t size) {
  const size_t length = std::min(pair.valueLength, size - 1);
  std::memcpy(array, pair.value, length);
  array[length] = '\0';
}

void keepAffinity(PairReader &in, const char *field, affinityAlloc *&allocation) {
  char *text = copyOfText(in, field, in.pair.value, in.pair.valueLength);
  if (text == nullptr) return;
  affinityAlloc *parsed = parseAffinity(text, in.io.cpusLeft);
  release(text);
  if (parsed == nullptr) return fail(in.io, WMQE_BAD_FORMAT, field, "an affinity allocation");
  releaseAffinity(allocation);
  allocation = parsed;
}

void keepNetwork(PairReader &in, const char *field, int32_t &count, networkAlloc *&allocations) {
  char *text = copyOfText(in, field, in.pair.value, in.pair.valueLength);
  if (text == nullptr) return;
  int32_t parsedCount = 0;
  networkAlloc *parsed = nullptr;
  const int result = getNetworkAllocFromString(text, &parsedCount, &parsed);
  release(text);
  if (result != 0) return fail(in.io, WMQE_BAD_FORMAT, field, "a network allocation");
  releaseNetwork(count, allocations);
  count = parsedCount;
  allocations = parsed;
}

void addHandler(PairTable &table, const char *name, PairTable::Handler handler, int slot) {
  int place = 0;
  while (place < table.count && std::strcmp(table.entries[place].name, name) != 0) ++place;
  if (place == table.count && table.published != nullptr) return;
  table.count = std::max(table.count, place + 1);
  PairTable::Entry &entry = table.entries[place];
  entry = {name, handler, slot, std::strlen(name)};
  if (search(table, name) != &entry || table.numInOrder == PairTable::most) return;
  table.inOrder[table.numInOrder++] = static_cast<uint8_t>(place);
  entry.nextInOrder = table.numInOrder;
}

void takePairs(PairReader &in, const PairTable &table, void *log) {
  while (in.left > 0) {
    const bool anyInOrder = in.nextInOrder < table.numInOrder;
    if (!nextPair(in, true, anyInOrder ? table.at(in.nextInOrder).text() : std::string_view{})) return;
    if (in.pair.empty()) continue;
    const PairTable::Entry *entry = findEntry(in, table);
    if (entry != nullptr && entry->handler != nullptr) entry->handler(in, log, entry->slot);
  }
}

void takeExecHosts(PairReader &in, int32_t &count, char **&hosts, int32_t *&slots) {
  releaseStrings(count, hosts);
  release(slots);
  count = integerOf(in.pair);
  if (count <= 0) return;
  int32_t slotCount = count;
  if (!allocateGroup(in, "execHosts", count, 2, hosts) ||
      !allocateGroup(in, "slotUsages", slotCount, 2, slots))
    return;
  for (int32_t i = 0; i < count && nextPair(in, true, "execHosts"); ++i)
    if (in.pair.is("execHosts") && !in.pair.empty()) keepString(in, "execHosts", hosts[i]);
  for (int32_t i = 0; i < count && nextPair(in, true, "slotUsages"); ++i)
    if (in.pair.is("slotUsages")) slots[i] = integerOf(in.pair);
}

void takeAllocSlots(PairReader &in, int32_t &count, char **&slots) {
  releaseStrings(count, slots);
  count = integerOf(in.pair);
  if (count <= 0 || !allocateGroup(in, "allocSlots", count, 1, slots)) return;
  for (int32_t i = 0; i < count && nextPair(in, true, "allocSlots"); ++i)
    if (in.pair.is("allocSlots") && !in.pair.empty()) keepString(in, "allocSlots", slots[i]);
}

void takeHostUsage(PairReader &in, int32_t &count, hostRusageEntry *&entries, bool withEnergy) {
  releaseElements(count, entries);
  count = integerOf(in.pair);
  if (count <= 0 || !allocateGroup(in, "hostRusage", count, 1, entries)) return;
  for (int32_t i = 0; i < count && in.io.error == 0; ++i) {
    readHostEntry(in, entries[i], withEnergy);
    if (entries[i].name == nullptr) emptyText(in.io, "hostRusage", entries[i].name);
  }
}

void takeRanges(PairReader &in, int32_t &count, int32_t *&start, int32_t *&end, int32_t *&step) {
  release(start);
  release(end);
  release(step);
  count = integerOf(in.pair);
  if (count <= 0) return;
  int32_t others = count;
  if (!allocateGroup(in, "indexRangeStart", count, 3, start) ||
      !allocateGroup(in, "indexRangeEnd", others, 3, end) ||
      !allocateGroup(in, "indexRangeStep", others, 3, step))
    return;
  for (int32_t i = 0; i < count; ++i) {
    for (int member = 0; member < 3; ++member) {
      if (!nextPair(in, false)) return;
      if (in.pair.is("indexRangeStart")) start[i] = integerOf(in.pair);
      if (in.pair.is("indexRangeEnd")) end[i] = integerOf(in.pair);
      if (in.pair.is("indexRangeStep")) step[i] = integerOf(in.pair);
    }
  }
}

void takeGpus(PairReader &in, int32_t &count, gpuRusageEntry *&entries) {
  releaseElements(count, entries);
  count = integerOf(in.pair);
  if (count <= 0 || !allocateGroup(in, "gpuRusages", count, 2, entries)) return;
  for (int32_t i = 0; i < count && in.io.error == 0; ++i) readGpuEntry(in, entries[i]);
}

// ---------------------------------------------------------------------- writing

void putName(PairWriter &io, const char *name) { putQuoted(io.out, name); }

void putPair(PairWriter &io, const char *name, const char *value) {
  ++io.pairs;
  if (io.counting) return;
  putName(io, name);
  putQuoted(io.out, value);
}

void putPair(PairWriter &io, const char *name, int64_t value) {
  ++io.pairs;
  if (io.counting) return;
  putName(io, name);
  putQuotedInteger(io.out, value);
}

void putNetwork(PairWriter &io, const char *name, int32_t count, const networkAlloc *allocations) {
  ++io.pairs;
  if (io.counting) return;
  char *text = getNetworkAllocAsString(count, allocations);
  if (text == nullptr) return fail(io.out, WMQE_SYS, name, "an allocation that has a text form");
  putName(io, name);
  putQuoted(io.out, text);
  std::free(text);
}

void putLimitPairs(PairWriter &io, const int32_t *limits, const char *const *names) {
  for (int i = 0; i < WMX_RLIM_NLIMITS; ++i) putPair(io, names[i], limits[i]);
}

void putExecHosts(PairWriter &io, int32_t count, char *const *hosts, const int32_t *slots) {
  if (!io.counting &&
      !(arrayGiven(io.out, count, hosts, "execHosts") && arrayGiven(io.out, count, slots, "slotUsages")))
    return;
  if (io.counting) {
    io.pairs += count > 0 ? 2 * int64_t{count} : 0;
    return;
  }
  for (int32_t i = 0; i < count; ++i) putHostName(io, "execHosts", hosts[i]);
  for (int32_t i = 0; i < count; ++i) putPair(io, "slotUsages", slots[i]);
}

void putAllocSlots(PairWriter &io, int32_t count, char *const *slots) {
  if (io.counting) {
    io.pairs += std::max(count, 0);
    return;
  }
  if (!arrayGiven(io.out, count, slots, "allocSlots")) return;
  for (int32_t i = 0; i < count; ++i) putHostName(io, "allocSlots", slots[i]);
}

void putHostUsage(PairWriter &io, int32_t count, const hostRusageEntry *entries, bool withEnergy) {
  if (entries == nullptr) {
    if (!io.counting) arrayGiven(io.out, count, entries, "hostRusage");
    return;
  }
  for (int32_t i = 0; i < count; ++i) {
    const hostRusageEntry &entry = entries[i];
    const char *energy = withEnergy ? energyOf(entry) : nullptr;
    putPair(io, "numHRusageAttrs", energy != nullptr ? 6 : 5);
    putPair(io, "hu_name", entry.name);
    putPair(io, "hu_mem", entry.mem);
    putPair(io, "hu_swap", entry.swap);
    putPair(io, "hu_utime", entry.utime);
    putPair(io, "hu_stime", entry.stime);
    if (energy != nullptr) putPair(io, "hu_energy", energy);
  }
}

void putRangeGroup(PairWriter &io, int32_t count, const int32_t *start, const int32_t *end,
                   const int32_t *step) {
  if (io.counting || !rangesGiven(io.out, count, start, end, step)) return;
  for (int32_t i = 0; i < count; ++i) {
    putPair(io, "indexRangeStart", start[i]);
    putPair(io, "indexRangeEnd", end[i]);
    putPair(io, "indexRangeStep", step[i]);
  }
}

void putGpus(PairWriter &io, int32_t count, const gpuRusageEntry *entries) {
  if (io.counting || !arrayGiven(io.out, count, entries, "gpuRusages")) return;
  for (int32_t i = 0; i < count; ++i) {
    const gpuRusageEntry &entry = entries[i];
    const int32_t pairs = entry.pairs != nullptr ? std::max(entry.numPairs, 0) : 0;
    putPair(io, "GPUhostname", entry.hostName);
    putPair(io, "numGPUkvs", pairs);
    for (int32_t k = 0; k < pairs; ++k) putPair(io, entry.pairs[k].key, entry.pairs[k].value);
  }
}

const char *putCondition(Describer &io, const char *name, Put when, bool isString) {
  if (isString) return keepText(io, std::string(name) + " is not empty");
  if (when == Put::whatever) return "";
  return keepText(io, std::string(name) + (when == Put::positive ? " > 0" : " is not 0"));
}

static Description asPairs(const wmqLayout &entry, std::initializer_list<const char *> forms) {
  Description out;
  out.fields.assign(entry.fields, entry.fields + entry.numFields);
  const char *const *form = forms.begin();
  for (wmqField &field : out.fields) {
    field.form = *form++;
    field.flags &= WMQ_FIELD_COUNT;
    field.note = field.kind == WMQ_KIND_INT64 ? "read as 32 bits" : "";
  }
  out.layout = {entry.name, entry.size, out.fields.size(), out.fields.data()};
  return out;
}

// Of the extra attributes at most the first travels, under a name of its own.
static Description hostUsageAsPairs(const char *energyForm) {
  return asPairs(*layoutOf<hostRusageEntry>(),
                 {R"("hu_name" "string")", R"("hu_mem" "%d")", R"("hu_swap" "%d")", R"("hu_utime" "%lld")",
                  R"("hu_stime" "%lld")", "", energyForm});
}

const wmqLayout *hostUsagePairs(bool withEnergy) {
  static const Description attributes[] = {asPairs(*layoutOf<struct attribute>(), {"", ""}),
                                           asPairs(*layoutOf<struct attribute>(), {"", R"("string")"})};
  const auto entries = [](bool energy) {
    Description out = hostUsageAsPairs(energy ? R"("hu_energy" "string")" : "");
    out.fields.back().note = energy ? "only a HOST_ENERGY_CONSUMPTION travels" : "do not travel";
    out.fields.back().layout = &attributes[energy].layout;
    return out;
  };
  static const Description without = entries(false);
  static const Description with = entries(true);
  return withEnergy ? &with.layout : &without.layout;
}

const wmqLayout *gpuPairs() {
  static const Description pairs = asPairs(*layoutOf<keyValue>(), {"the name of a pair", "its value"});
  static const Description gpu = [] {
    Description out =
        asPairs(*layoutOf<gpuRusageEntry>(), {R"("GPUhostname" "string")", R"("numGPUkvs" "%d")", "pairs"});
    out.fields.back().layout = &pairs.layout;
    return out;
  }();
  return &gpu.layout;
}

void noteNeverFound(Describer &io, const PairTable &table) {
  for (wmqField &field : io.out.fields)
    for (int place = 0; place < table.count; ++place) {
      const PairTable::Entry &entry = table.entries[place];
      if (entry.text() == field.name && search(table, field.name) != &entry)
        field.flags |= WMQ_FIELD_WRITTEN_ONLY;
    }
}

}  // namespace wmq
