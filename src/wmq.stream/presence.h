// When a line carries a field: version gates and conditions on other members.
//
//   atLeast(9.1f)                                        lines of 9.1 and later
//   above(3.0f)                                          lines later than 3.0
//   given<&L::options>(0x1)                              the bit is set, in writer and reader alike
//   atLeast(5.0f) && given<&L::options2>(0x8000)         both
//   given<&L::options>(0x8) || given<&L::options2>(0x80) one of them
//   readWhen(...)                                        the condition is the reader's alone: always written
//
// Conditions hold for every codec but writer and reader whatever the bits are now: a caller who clears a bit
// must not leak what it announced.
#ifndef WMQ_STREAM_PRESENCE_H
#define WMQ_STREAM_PRESENCE_H

#include <cmath>
#include <cstdint>

#include "wmq.stream/member.h"
#include "wmq/schema.h"

namespace wmq {

struct Gate {
  wmqGate kind = WMQ_GATE_ALWAYS;
  float threshold = 0;
};

inline constexpr Gate always{};
constexpr Gate atLeast(float threshold) { return {WMQ_GATE_AT_LEAST, threshold}; }
constexpr Gate above(float threshold) { return {WMQ_GATE_ABOVE, threshold}; }

// Versions are compared in single precision throughout: as doubles, 9.1 would not reach 9.1f.
inline bool gateOpen(Gate gate, float line) {
  if (gate.kind == WMQ_GATE_ALWAYS) return true;
  const float tolerance = 0.00001F * std::fabs(line);  // no farther apart is the same version
  const float above = line - gate.threshold;
  return gate.kind == WMQ_GATE_AT_LEAST ? above >= -tolerance : above > tolerance;
}

// The greatest thresholds that leave the gates of a line open, -1 where none does: looking at a gate is one
// comparison then.
struct OpenGates {
  float atLeast = -1;
  float above = -1;
};

// Those of a line's version. Lines of one stream nearly all have the version of the line before.
const OpenGates &openGatesOf(float version);

inline bool gateOpen(Gate gate, const OpenGates &open) {
  if (gate.kind == WMQ_GATE_ALWAYS) return true;
  // Most lines are of the version that is written today: their way through a layout is the straight one.
  if (gate.threshold <= (gate.kind == WMQ_GATE_AT_LEAST ? open.atLeast : open.above)) [[likely]]
    return true;
  return false;
}

// At least one bit of a mask is set in at least one of the words.
template <auto... Words>
struct Bits {
  uint32_t masks[sizeof...(Words)];
};

template <auto Word>
constexpr Bits<Word> given(uint32_t mask) {
  return {{mask}};
}

template <auto Word>
constexpr Bits<Word> notZero() {
  return {{~0U}};
}

template <auto A, auto B>
constexpr Bits<A, B> operator||(Bits<A> a, Bits<B> b) {
  return {{a.masks[0], b.masks[0]}};
}

template <typename Condition>
struct Gated {
  Gate gate;
  Condition condition;
};

template <auto... Words>
constexpr Gated<Bits<Words...>> operator&&(Gate gate, Bits<Words...> bits) {
  return {gate, bits};
}

template <typename Presence>
struct ReadWhen {
  Presence presence;
};

template <typename Presence>
constexpr ReadWhen<Presence> readWhen(Presence presence) {
  return {presence};
}

constexpr Gate gateOf(Gate gate) { return gate; }
template <auto... Words>
constexpr Gate gateOf(const Bits<Words...> &) {
  return always;
}
template <typename C>
constexpr Gate gateOf(const Gated<C> &gated) {
  return gated.gate;
}
template <typename P>
constexpr Gate gateOf(const ReadWhen<P> &when) {
  return gateOf(when.presence);
}

constexpr bool conditionHolds(const auto &, Gate) { return true; }
template <auto... Words>
bool conditionHolds(const auto &log, const Bits<Words...> &bits) {
  const uint32_t *mask = bits.masks;
  return (((static_cast<uint32_t>(log.*Words) & *mask++) != 0) || ...);
}
template <typename C>
bool conditionHolds(const auto &log, const Gated<C> &gated) {
  return conditionHolds(log, gated.condition);
}
template <typename P>
bool conditionHolds(const auto &log, const ReadWhen<P> &when) {
  return conditionHolds(log, when.presence);
}

// Writers always write the current version: only conditions that are not the reader's alone count.
bool isWritten(const auto &log, const auto &when) { return conditionHolds(log, when); }
template <typename P>
bool isWritten(const auto &, const ReadWhen<P> &) {
  return true;
}

bool isOnLine(const OpenGates &open, const auto &log, const auto &when) {
  return gateOpen(gateOf(when), open) && conditionHolds(log, when);
}

// How a record deals with its list of index ranges.
enum class Ranges {
  keptBlock,  // read unchecked into one block, which release keeps
  block,      // read unchecked into one block
  arrays,     // read unchecked into three arrays
  checked,    // at least one; a range that does not convert is remembered as the error while the rest is read
  writtenOnly  // never read back
};

// What a host list of no hosts becomes when read.
enum class NoHosts {
  nullArray,           // also for a negative count, which is kept
  nullZeroCount,       // also for a negative count, which becomes 0
  nullUnlessNegative,  // a negative count fails as an allocation would
  emptyArray,          // likewise
  refused              // likewise
};

struct HostRule {
  bool countBefore = false;   // converted together with the numbers before it
  bool countWritten = false;  // and written there
  NoHosts none = NoHosts::nullArray;
  bool compressed = true;   // when written
  bool expanded = true;     // when read
  bool keepsCount = false;  // when a name fails: null slots follow those that were read
};

}  // namespace wmq

#endif
