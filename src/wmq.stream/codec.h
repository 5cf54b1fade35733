// What a record unit includes: the verbs in which layouts are stated, for every codec.
//
// A layout is a function template over the codec,
//
//   static void layout(auto &io, jobFinishLog &log) { text<&L::cwd>(io, log); ... }
//
// and each codec (Writer, Reader, Releaser, Describer) has the verbs as free functions of its own. Verbs that
// say something else for writing than for reading carry it in their name.
#ifndef WMQ_STREAM_CODEC_H
#define WMQ_STREAM_CODEC_H

#include "wmq.stream/describer.h"
#include "wmq.stream/reader.h"
#include "wmq.stream/releaser.h"
#include "wmq.stream/writer.h"

namespace wmq {

// ---------------------------------------------------------------- number forms

// A member as its type says.
template <auto M>
struct Plain {
  using T = TypeOf<M>;
  static constexpr auto member = M;
  static constexpr bool kept = false;
  static constexpr const char *form = std::is_same_v<T, int64_t> ? "%lld" : "%d";
  static constexpr const char *note = "";
  static constexpr bool integer = true;
  static int64_t value(const auto &log) { return log.*M; }
  static const char *read(const Reader &io, const char *at, T &value) { return scan(io, at, value); }
};

// A 64-bit member of which the line carries the low 32 bits, signed.
template <auto M>
struct Low32 : Plain<M> {
  static constexpr const char *form = "%d";
  static constexpr const char *note = "low 32 bits";
  static int64_t value(const auto &log) { return static_cast<int32_t>(log.*M); }
  static const char *read(const Reader &io, const char *at, int64_t &value) {
    int32_t narrow = 0;
    const char *const after = scan(io, at, narrow);
    if (after != nullptr) value = narrow;
    return after;
  }
};
template <auto M>
inline constexpr Low32<M> low32{};

// A single-precision member as printf's "%W.Pf".
template <auto M, int Width, int Precision>
struct Fixed : Plain<M> {
  static constexpr char form[] = {'%', '0' + Width, '.', '0' + Precision, 'f', '\0'};
  static constexpr bool integer = false;
  static constexpr size_t room = kFixedRoom;
  static char *into(char *out, const auto &log) {
    return fixedBehindBlank(out, static_cast<double>(log.*M), Width, Precision);
  }
};
template <auto M, int Width, int Precision>
inline constexpr Fixed<M, Width, Precision> fixed{};

// A member of a group that keeps its value when the line lacks the group.
template <auto M>
struct Kept : Plain<M> {
  static constexpr bool kept = true;
};
template <auto M>
inline constexpr Kept<M> kept{};

// The count of a host list, converted together with the numbers before it. The writer leaves it to the host
// list, which knows the compressed count.
template <auto M>
struct HostCount : Plain<M> {
  static constexpr const char *note = "count of the host list";
  static constexpr bool integer = false;
  static constexpr size_t room = 0;
  static char *into(char *out, const auto &) { return out; }
};
template <auto M>
inline constexpr HostCount<M> hostCount{};

// A member of a group with a value of its own for lines that lack the group.
template <auto M, int32_t Value>
struct OrElse : Plain<M> {
  static constexpr int32_t absent = Value;
};
template <auto M, int32_t Value>
inline constexpr OrElse<M, Value> orElse{};

// A 64-bit member of which the line carries the low 32 bits, signed, and which is read as an unsigned number.
template <auto M>
struct Low32Unsigned : Low32<M> {
  static constexpr const char *note = "low 32 bits, signed; read as an unsigned 64-bit number";
  static const char *read(const Reader &io, const char *at, int64_t &value) {
    return scanUnsigned(io, at, value);
  }
};
template <auto M>
inline constexpr Low32Unsigned<M> low32Unsigned{};

// The count of a host list whose names stand further back: the compressed count is written.
template <auto M, auto Hosts>
struct CompressedCount : Plain<M> {
  static constexpr const char *note = "count of the host list";
  static constexpr bool integer = false;
  static void write(Writer &io, const auto &log) {
    putCompressedCount(io, log.*M, log.*Hosts, nameOf<Hosts>);
  }
};
template <auto M, auto Hosts>
inline constexpr CompressedCount<M, Hosts> compressedCount{};

template <auto F>
struct NumberForm : decltype(F) {};
template <auto F>
requires std::is_member_object_pointer_v<decltype(F)>
struct NumberForm<F> : Plain<F> {
};

// ---------------------------------------------------------------- shared groups

// The job in another cluster that a record belongs to. In place: the gate is known there.
template <typename L>
[[gnu::always_inline]] inline void clusterGroup(auto &io, L &log, Gate gate = atLeast(9.1F)) {
  text<&L::srcCluster>(io, log, gate);
  number<&L::srcJobId>(io, log, gate);
  text<&L::dstCluster>(io, log, gate);
  number<&L::dstJobId>(io, log, gate);
}

inline void layout(auto &io, attribute &entry) {
  using A = attribute;
  rawWord<&A::name>(io, entry, SIZE_MAX);
  rawWord<&A::value>(io, entry, SIZE_MAX);
}

inline void layout(auto &io, keyValue &pair) {
  text<&keyValue::key>(io, pair);
  text<&keyValue::value>(io, pair);
}

inline void layout(auto &io, attrGroup &group) {
  text<&attrGroup::groupName>(io, group);
  list<&attrGroup::numPairs, &attrGroup::pairs>(io, group);
}

inline void layout(auto &io, strPair &pair) {
  rawText<&strPair::first>(io, pair);
  rawText<&strPair::second>(io, pair);
  number<&strPair::flags>(io, pair);
}

inline void layout(auto &io, namedInt &entry) {
  text<&namedInt::name>(io, entry);
  number<&namedInt::value>(io, entry);
}

inline void layout(auto &io, hostRusageEntry &entry) {
  using E = hostRusageEntry;
  rawWord<&E::name>(io, entry, WMQ_HOST_SIZE - 1);
  numbers<&E::mem, &E::swap, &E::utime, &E::stime>(io, entry);
  unwrittenRawPairs<&E::numAttrs, &E::attrs>(io, entry);
}

inline void layout(auto &io, gpuRusageEntry &entry) {
  using E = gpuRusageEntry;
  text<&E::hostName>(io, entry);
  list<&E::numPairs, &E::pairs>(io, entry);
}

// ------------------------------------------------------------------ whole records

// A record's layout, ready for each codec.
struct RecordCodec {
  void (*write)(Writer &io, void *log);
  void (*read)(Reader &io, void *log);
  void (*release)(Releaser &io, void *log);
  const wmqLayout *(*describe)();
};

template <typename L>
constexpr RecordCodec recordCodec() {
  return {[](Writer &io, void *log) { layout(io, *static_cast<L *>(log)); },
          [](Reader &io, void *log) { layout(io, *static_cast<L *>(log)); },
          [](Releaser &io, void *log) { layout(io, *static_cast<L *>(log)); }, [] { return layoutOf<L>(); }};
}

// The frames of the layout functions that the public headers declare.
int writeFields(FILE *file, const RecordCodec &codec, const void *log, bool lineEnd);
int readFields(const char *fields, const RecordCodec &codec, void *log, int32_t eventTime = 0);
void releaseFields(const RecordCodec &codec, void *log);

}  // namespace wmq

#endif
