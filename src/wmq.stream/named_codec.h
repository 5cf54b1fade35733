// The codec of records whose line is a list of name/value pairs.
//
// A record states its attributes once, in line order, and says `namedPairs` where they stand. The number of
// pairs, the writer, the table by which the reader finds a name, release and schema all come from that
// statement.
#ifndef WMQ_STREAM_NAMED_CODEC_H
#define WMQ_STREAM_NAMED_CODEC_H

#include "companion/byte_groups.h"
#include "wmq.stream/codec.h"

namespace wmq {

// When an attribute is written. Strings are written unless they are empty, whatever else is said.
enum class Put { whatever, notZero, positive };

// Runs over the attributes twice: the number of pairs stands before them.
struct PairWriter {
  Writer &out;
  bool counting;
  int64_t pairs = 0;
};

struct Pair {
  const char *name = nullptr;
  size_t nameLength = 0;
  const char *value = nullptr;  // a number ends at the closing quote, or at a NUL
  size_t valueLength = 0;
  bool is(std::string_view wanted) const {
    return nameLength == wanted.size() && sameBytes(name, wanted.data(), nameLength);
  }
  bool empty() const { return nameLength == 0 || valueLength == 0; }
};

struct PairReader {
  explicit PairReader(Reader &reader) : io(reader) {}
  PairReader(const PairReader &) = delete;
  PairReader &operator=(const PairReader &) = delete;
  ~PairReader();

  Reader &io;
  int64_t left = 0;     // of the pairs that the line announced
  int nextInOrder = 0;  // in the table's order, behind the last pair
  Pair pair;
  bool asExpected = false;  // the name of the pair
  char *decoded[2] = {};    // name and value, where they cannot be read in place
};

// Takes the next pair; false with the reader's error set. Members of some groups are not among the announced
// pairs. A pair that has the name that is expected, as most have, is taken faster.
bool nextPair(PairReader &in, bool announced = true, std::string_view expected = {});

int32_t integerOf(const Pair &pair);
double realOf(const Pair &pair);
void keepString(PairReader &in, const char *field, char *&value);
void keepChars(const Pair &pair, char *array, size_t size);
void keepAffinity(PairReader &in, const char *field, affinityAlloc *&allocation);
void keepNetwork(PairReader &in, const char *field, int32_t &count, networkAlloc *&allocations);

// What the reader does with each name. With `published` names, these are searched by halving, in their order.
// Most lines have their pairs in the order in which they are stated.
struct PairTable {
  using Handler = void (*)(PairReader &in, void *log, int slot);
  struct Entry {
    const char *name;
    Handler handler;
    int slot;
    size_t nameLength = 0;
    int nextInOrder = 0;

    std::string_view text() const { return {name, nameLength}; }
  };
  static constexpr int most = 96;
  const char *const *published = nullptr;
  int count = 0;
  Entry entries[most] = {};
  int numInOrder = 0;
  uint8_t inOrder[most] = {};  // the entries that a search finds, as they were stated

  const Entry &at(int place) const { return entries[inOrder[place]]; }
};

void addHandler(PairTable &table, const char *name, PairTable::Handler handler, int slot = 0);
void takePairs(PairReader &in, const PairTable &table, void *log);

// ---------------------------------------------------------------- value forms

template <auto M>
struct AttributeForm {
  using T = TypeOf<M>;
  static constexpr auto member = M;
  static constexpr const char *form = "\"%d\"";
  static void write(Writer &io, const auto &log) { putQuotedInteger(io, static_cast<int32_t>(log.*M)); }
};

// A 64-bit number written whole; like all others it is read as 32 bits.
template <auto M>
struct Whole : AttributeForm<M> {
  static constexpr const char *form = "\"%lld\"";
  static void write(Writer &io, const auto &log) { putQuotedInteger(io, log.*M); }
};
template <auto M>
inline constexpr Whole<M> whole{};

template <auto M, int Precision>
struct Decimals : AttributeForm<M> {
  static constexpr const char *form = Precision == 0 ? "\"%1.0f\"" : "\"%f\"";
  static void write(Writer &io, const auto &log) { putQuotedFixed(io, log.*M, Precision); }
};
template <auto M, int Precision>
inline constexpr Decimals<M, Precision> decimals{};

template <auto F>
struct FormOf : decltype(F) {};
template <auto F>
requires std::is_member_object_pointer_v<decltype(F)>
struct FormOf<F> : AttributeForm<F> {
};

template <typename T>
constexpr bool isChars = std::is_array_v<T>;
template <typename T>
constexpr bool isText = std::is_same_v<T, char *> || isChars<T>;

// ------------------------------------------------------------------- attributes

template <typename T>
bool isPut(const T &value, Put when) {
  if constexpr (isChars<T>)
    return *value != '\0';
  else if constexpr (isText<T>)
    return value != nullptr && *value != '\0';
  else
    return when == Put::whatever || (when == Put::notZero ? value != 0 : value > 0);
}

void putPair(PairWriter &io, const char *name, const char *value);
void putPair(PairWriter &io, const char *name, int64_t value);
void putName(PairWriter &io, const char *name);

template <auto F>
void attribute(PairWriter &io, const auto &log, Put when = Put::whatever) {
  using Form = FormOf<F>;
  if (!isPut(log.*Form::member, when)) return;
  ++io.pairs;
  if (io.counting) return;
  putName(io, nameOf<Form::member>);
  if constexpr (isText<TypeOf<Form::member>>) {
    putQuoted(io.out, log.*Form::member);
  } else {
    Form::write(io.out, log);
  }
}

// Written always and counted only from 0 on: a negative one makes the count fall short, and the reader lose
// the last pair.
template <auto F>
void attributeCountedFromZero(PairWriter &io, const auto &log) {
  using Form = FormOf<F>;
  attribute<F>(io, log);
  if (!(log.*Form::member >= 0)) --io.pairs;
}

template <auto F>
void storeValue(PairReader &in, auto &log) {
  constexpr auto member = FormOf<F>::member;
  using T = TypeOf<member>;
  if constexpr (isChars<T>)
    keepChars(in.pair, log.*member, sizeof(T));
  else if constexpr (isText<T>)
    keepString(in, nameOf<member>, log.*member);
  else if constexpr (std::is_floating_point_v<T>)
    log.*member = realOf(in.pair);
  else
    log.*member = integerOf(in.pair);
}

template <auto F, typename L>
void attribute(PairTable &table, const L &, Put = Put::whatever) {
  addHandler(table, nameOf<FormOf<F>::member>,
             [](PairReader &in, void *log, int) { storeValue<F>(in, *static_cast<L *>(log)); });
}
template <auto F>
void attributeCountedFromZero(PairTable &table, const auto &log) {
  attribute<F>(table, log);
}

template <auto F>
void attribute(Releaser &io, auto &log, Put = Put::whatever) {
  if constexpr (std::is_same_v<TypeOf<FormOf<F>::member>, char *>) text<FormOf<F>::member>(io, log);
}
template <auto F>
void attributeCountedFromZero(Releaser &, const auto &) {}

const char *putCondition(Describer &io, const char *name, Put when, bool isString);

template <auto F>
void attribute(Describer &io, const auto &log, Put when = Put::whatever) {
  using Form = FormOf<F>;
  constexpr bool string = isText<TypeOf<Form::member>>;
  wmqField field = memberField<Form::member>(io, log, string ? "\"string\"" : Form::form);
  field.condition = putCondition(io, field.name, when, string);
  if (isChars<TypeOf<Form::member>>)
    field.note = keepText(io, "cut to " + std::to_string(field.size - 1) + " bytes when read");
  else if (std::is_same_v<TypeOf<Form::member>, int64_t>)
    field.note = "read as 32 bits";
  place(io, field);
}
template <auto F>
void attributeCountedFromZero(Describer &io, const auto &log) {
  attribute<F>(io, log);
  io.out.fields.back().note = "not counted when negative: the last pair is then lost to the reader";
}

// ----------------------------------------------------------- attributes of one text

template <auto M>
void affinityAttribute(PairWriter &io, const auto &log) {
  if (log.*M == nullptr) return;
  ++io.pairs;
  if (io.counting) return;
  putName(io, nameOf<M>);
  putAffinity(io.out, log.*M, nameOf<M>);
}
template <auto M, typename L>
void affinityAttribute(PairTable &table, const L &) {
  addHandler(table, nameOf<M>,
             [](PairReader &in, void *log, int) { keepAffinity(in, nameOf<M>, static_cast<L *>(log)->*M); });
}
template <auto M>
void affinityAttribute(Releaser &io, auto &log) {
  affinity<M>(io, log, always);
}
template <auto M>
void affinityAttribute(Describer &io, const auto &log) {
  affinity<M>(io, log, always);
  io.out.fields.back().condition = "an allocation is given";
}

void putNetwork(PairWriter &io, const char *name, int32_t count, const networkAlloc *allocations);

template <auto Count, auto Array>
void networkAttribute(PairWriter &io, const auto &log) {
  if (log.*Count > 0) putNetwork(io, nameOf<Array>, log.*Count, log.*Array);
}
template <auto Count, auto Array, typename L>
void networkAttribute(PairTable &table, const L &) {
  addHandler(table, nameOf<Array>, [](PairReader &in, void *log, int) {
    keepNetwork(in, nameOf<Array>, static_cast<L *>(log)->*Count, static_cast<L *>(log)->*Array);
  });
}
template <auto Count, auto Array>
void networkAttribute(Releaser &io, auto &log) {
  if (io.kept) return;
  releaseNetwork(log.*Count, log.*Array);
  resetCount<Count>(io, log);
}
template <auto Count, auto Array>
void networkAttribute(Describer &io, const auto &log) {
  placeList<Count, Array>(io, log, always, "", "\"network text\"", "null", 0);
  io.out.fields.back().condition = "numNetworkAllocs > 0";
}

// A limit of each slot, under the slot's name.
void putLimitPairs(PairWriter &io, const int32_t *limits, const char *const *names);

template <auto M>
void limitAttributes(PairWriter &io, const auto &log, const char *const *names) {
  putLimitPairs(io, log.*M, names);
}
template <auto M, typename L>
void limitAttributes(PairTable &table, const L &, const char *const *names) {
  for (int i = 0; i < WMX_RLIM_NLIMITS; ++i)
    addHandler(
        table, names[i],
        [](PairReader &in, void *log, int slot) { (static_cast<L *>(log)->*M)[slot] = integerOf(in.pair); },
        i);
}
template <auto M>
void limitAttributes(Releaser &, const auto &, const char *const *) {}
template <auto M>
void limitAttributes(Describer &io, const auto &log, const char *const *names) {
  wmqField field = memberField<M>(io, log, "\"%d\" each");
  field.note = keepText(io, std::string("12 pairs, ") + names[0] + " to " + names[WMX_RLIM_NLIMITS - 1]);
  place(io, field);
}

// ------------------------------------------------------------------------ groups

void putExecHosts(PairWriter &io, int32_t count, char *const *hosts, const int32_t *slots);
void putAllocSlots(PairWriter &io, int32_t count, char *const *slots);
void putHostUsage(PairWriter &io, int32_t count, const hostRusageEntry *entries, bool withEnergy);
void putRangeGroup(PairWriter &io, int32_t count, const int32_t *start, const int32_t *end,
                   const int32_t *step);
void putGpus(PairWriter &io, int32_t count, const gpuRusageEntry *entries);

void takeExecHosts(PairReader &in, int32_t &count, char **&hosts, int32_t *&slots);
void takeAllocSlots(PairReader &in, int32_t &count, char **&slots);
void takeHostUsage(PairReader &in, int32_t &count, hostRusageEntry *&entries, bool withEnergy);
void takeRanges(PairReader &in, int32_t &count, int32_t *&start, int32_t *&end, int32_t *&step);
void takeGpus(PairReader &in, int32_t &count, gpuRusageEntry *&entries);

// Execution hosts and the slots used on each.
template <typename L>
void execHostGroup(PairWriter &io, const L &log, Put when) {
  attribute<&L::numExHosts>(io, log, when);
  if (isPut(log.numExHosts, when)) putExecHosts(io, log.numExHosts, log.execHosts, log.slotUsages);
}
template <typename L>
void execHostGroup(PairTable &table, const L &, Put) {
  addHandler(table, "numExHosts", [](PairReader &in, void *to, int) {
    auto &log = *static_cast<L *>(to);
    takeExecHosts(in, log.numExHosts, log.execHosts, log.slotUsages);
  });
}
template <typename L>
void execHostGroup(Releaser &io, L &log, Put) {
  const int32_t count = log.numExHosts;
  elements<&L::numExHosts, &L::execHosts>(io, log);
  log.numExHosts = count;
  parallelElements<&L::numExHosts, &L::slotUsages>(io, log, 0);
}
template <typename L>
void execHostGroup(Describer &io, const L &log, Put when) {
  attribute<&L::numExHosts>(io, log, when);
  io.out.fields.back().flags |= WMQ_FIELD_COUNT;
  place(io, arrayField<&L::numExHosts, &L::execHosts>(io, log, "\"string\" each"));
  place(io, arrayField<&L::numExHosts, &L::slotUsages>(io, log, "\"%d\" each"));
}

template <typename L>
void allocSlotGroup(PairWriter &io, const L &log) {
  attributeCountedFromZero<&L::numAllocSlots>(io, log);
  putAllocSlots(io, log.numAllocSlots, log.allocSlots);
}
template <typename L>
void allocSlotGroup(PairTable &table, const L &) {
  addHandler(table, "numAllocSlots", [](PairReader &in, void *to, int) {
    auto &log = *static_cast<L *>(to);
    takeAllocSlots(in, log.numAllocSlots, log.allocSlots);
  });
}
template <typename L>
void allocSlotGroup(Releaser &io, L &log) {
  elements<&L::numAllocSlots, &L::allocSlots>(io, log);
}
template <typename L>
void allocSlotGroup(Describer &io, const L &log) {
  attributeCountedFromZero<&L::numAllocSlots>(io, log);
  io.out.fields.back().flags |= WMQ_FIELD_COUNT;
  place(io, arrayField<&L::numAllocSlots, &L::allocSlots>(io, log, "\"string\" each"));
}

template <bool WithEnergy, typename L>
void hostUsageGroup(PairWriter &io, const L &log, Put when) {
  attribute<&L::numhRusages>(io, log, when);
  if (isPut(log.numhRusages, when)) putHostUsage(io, log.numhRusages, log.hostRusage, WithEnergy);
}
template <bool WithEnergy, typename L>
void hostUsageGroup(PairTable &table, const L &, Put) {
  addHandler(table, "numhRusages", [](PairReader &in, void *to, int) {
    auto &log = *static_cast<L *>(to);
    takeHostUsage(in, log.numhRusages, log.hostRusage, WithEnergy);
  });
}
template <bool WithEnergy, typename L>
void hostUsageGroup(Releaser &io, L &log, Put) {
  elements<&L::numhRusages, &L::hostRusage>(io, log);
}
// The members of an entry, with the pairs that carry them.
const wmqLayout *hostUsagePairs(bool withEnergy);
const wmqLayout *gpuPairs();

template <bool WithEnergy, typename L>
void hostUsageGroup(Describer &io, const L &log, Put when) {
  attribute<&L::numhRusages>(io, log, when);
  io.out.fields.back().flags |= WMQ_FIELD_COUNT;
  wmqField entries =
      arrayField<&L::numhRusages, &L::hostRusage>(io, log, "\"numHRusageAttrs\" \"%d\" and pairs each");
  entries.layout = hostUsagePairs(WithEnergy);
  place(io, entries);
}

// The pairs of ranges and of GPUs are not among the announced ones.
template <typename L>
void rangeGroup(PairWriter &io, const L &log) {
  attribute<&L::indexRangeCnt>(io, log, Put::positive);
  putRangeGroup(io, log.indexRangeCnt, log.indexRangeStart, log.indexRangeEnd, log.indexRangeStep);
}
template <typename L>
void rangeGroup(PairTable &table, const L &) {
  addHandler(table, "indexRangeCnt", [](PairReader &in, void *to, int) {
    auto &log = *static_cast<L *>(to);
    takeRanges(in, log.indexRangeCnt, log.indexRangeStart, log.indexRangeEnd, log.indexRangeStep);
  });
}
template <typename L>
void rangeGroup(Releaser &io, L &log) {
  indexRanges<Ranges::arrays>(io, log, always);
}
template <typename L>
void rangeGroup(Describer &io, const L &log) {
  attribute<&L::indexRangeCnt>(io, log, Put::positive);
  io.out.fields.back().flags |= WMQ_FIELD_COUNT;
  place(io, arrayField<&L::indexRangeCnt, &L::indexRangeStart>(io, log, "\"%d\" each"));
  io.out.fields.back().note = "start, end and step of a range stand together; not counted among the pairs";
  placeTogether(io, arrayField<&L::indexRangeCnt, &L::indexRangeEnd>(io, log, "\"%d\" each"));
  placeTogether(io, arrayField<&L::indexRangeCnt, &L::indexRangeStep>(io, log, "\"%d\" each"));
}

template <typename L>
void gpuGroup(PairWriter &io, const L &log) {
  attribute<&L::numGPURusages>(io, log, Put::positive);
  putGpus(io, log.numGPURusages, log.gpuRusages);
}
template <typename L>
void gpuGroup(PairTable &table, const L &) {
  addHandler(table, "numGPURusages", [](PairReader &in, void *to, int) {
    auto &log = *static_cast<L *>(to);
    takeGpus(in, log.numGPURusages, log.gpuRusages);
  });
}
// The count may have been cleared by a writer, with the array left as it was.
template <typename L>
void gpuGroup(Releaser &io, L &log) {
  elements<&L::numGPURusages, &L::gpuRusages>(io, log);
}
template <typename L>
void gpuGroup(Describer &io, const L &log) {
  attribute<&L::numGPURusages>(io, log, Put::positive);
  io.out.fields.back().flags |= WMQ_FIELD_COUNT;
  wmqField entries = arrayField<&L::numGPURusages, &L::gpuRusages>(io, log, "pairs each");
  entries.layout = gpuPairs();
  entries.note = "not counted among the pairs";
  place(io, entries);
}

// ------------------------------------------------------------------ whole records

template <typename L>
const PairTable &pairTable(const char *const *published) {
  static const PairTable table = [published] {
    PairTable built;
    built.published = published;
    while (published != nullptr && published[built.count] != nullptr) {
      built.entries[built.count] = {published[built.count], nullptr, 0};
      ++built.count;
    }
    attributes(built, L{});
    return built;
  }();
  return table;
}

// Something that a writer changes in the caller's record before it counts.
void beforeWriting(Writer &, auto & /*log*/) {}
void beforeWriting(Describer &, const auto & /*log*/) {}

template <auto... Id>
void namedPairs(Writer &io, auto &log, const char *const * /*published*/) {
  beforeWriting(io, log);
  PairWriter counter{.out = io, .counting = true};
  attributes(counter, log);
  (putInteger(io, log.*Id), ...);
  putInteger(io, counter.pairs);
  PairWriter writer{.out = io, .counting = false};
  attributes(writer, log);
}

template <auto... Id, typename L>
void namedPairs(Reader &io, L &log, const char *const *published) {
  (void)((scanElement(io, nameOf<Id>, log.*Id)) && ...);
  if (io.error != 0) return;
  PairReader in(io);
  int32_t announced = 0;
  if (!scanElement(io, "the number of pairs", announced)) return;
  in.left = announced;
  takePairs(in, pairTable<L>(published), &log);
}

template <auto... Id>
void namedPairs(Releaser &io, auto &log, const char *const *) {
  attributes(io, log);
}

// Fields whose names the reader's search does not find.
void noteNeverFound(Describer &io, const PairTable &table);

template <auto... Id, typename L>
void namedPairs(Describer &io, const L &log, const char *const *published) {
  (number<Id>(io, log), ...);
  ++io.position;  // the number of pairs
  attributes(io, log);
  noteNeverFound(io, pairTable<L>(published));
  beforeWriting(io, log);
}

}  // namespace wmq

#endif
