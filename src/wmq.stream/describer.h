// The describing codec: the statement of a record as data (wmq/schema.h).
#ifndef WMQ_STREAM_DESCRIBER_H
#define WMQ_STREAM_DESCRIBER_H

#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "wmq.stream/presence.h"
#include "wmq/records/shapes.h"

namespace wmq {

struct Description {
  std::deque<std::string> texts;  // stay where they are when more are added
  std::vector<wmqField> fields;
  wmqLayout layout{};
};

struct Describer {
  Description &out;
  const void *log;  // a structure to measure offsets in
  int position = 0;
  bool fromFirstField = false;  // what follows is read from the first field on
};

const char *keepText(Describer &io, std::string text);
std::string numberText(double value);

// ------------------------------------------------------------------ primitives

template <typename T>
constexpr wmqKind kindOf() {
  if constexpr (std::is_same_v<T, int32_t>) return WMQ_KIND_INT32;
  if constexpr (std::is_same_v<T, int64_t>) return WMQ_KIND_INT64;
  if constexpr (std::is_same_v<T, float>) return WMQ_KIND_FLOAT;
  if constexpr (std::is_same_v<T, double>) return WMQ_KIND_DOUBLE;
  if constexpr (std::is_same_v<T, char *>) return WMQ_KIND_STRING;
  if constexpr (std::is_same_v<T, submitExt *>) return WMQ_KIND_SUBMIT_EXT;
  if constexpr (std::is_same_v<T, namedValueList *>) return WMQ_KIND_NAMED_VALUES;
  if constexpr (std::is_same_v<T, affinityAlloc *>) return WMQ_KIND_AFFINITY;
  if constexpr (std::is_same_v<T, networkAlloc>) return WMQ_KIND_NETWORK;
  return WMQ_KIND_STRUCT;
}

template <typename Structure>
const wmqLayout *layoutOf();

void addStandardUsage(Describer &io);

template <typename T>
size_t offsetIn(Describer &io, const T &member) {
  return static_cast<size_t>(reinterpret_cast<const char *>(&member) - static_cast<const char *>(io.log));
}

// A field for a member, with everything that follows from its type.
template <auto M>
wmqField memberField(Describer &io, const auto &log, const char *form) {
  using T = TypeOf<M>;
  wmqField field{};
  field.name = nameOf<M>;
  field.offset = offsetIn(io, log.*M);
  field.form = form;
  field.length = 1;
  field.condition = field.absent = field.note = "";
  if constexpr (std::is_array_v<T> && std::is_same_v<std::remove_extent_t<T>, char>) {
    field.kind = WMQ_KIND_CHARS;
    field.shape = WMQ_SHAPE_ONE;
    field.size = sizeof(T);
  } else if constexpr (std::is_array_v<T>) {
    using Element = std::remove_extent_t<T>;
    field.kind = kindOf<Element>();
    field.shape = WMQ_SHAPE_FIXED;
    field.size = sizeof(Element);
    field.length = std::extent_v<T>;
  } else {
    field.kind = kindOf<T>();
    field.shape = WMQ_SHAPE_ONE;
    field.size = sizeof(T);
    if constexpr (kindOf<T>() == WMQ_KIND_STRUCT) field.layout = layoutOf<T>();
  }
  return field;
}

template <auto Count, auto Array>
wmqField arrayField(Describer &io, const auto &log, const char *form) {
  using Element = std::remove_pointer_t<TypeOf<Array>>;
  wmqField field{};
  field.name = nameOf<Array>;
  field.offset = offsetIn(io, log.*Array);
  field.form = form;
  field.length = 1;
  field.condition = field.absent = field.note = "";
  field.kind = kindOf<Element>();
  field.shape = WMQ_SHAPE_COUNTED;
  field.size = sizeof(Element);
  if constexpr (kindOf<Element>() == WMQ_KIND_STRUCT) field.layout = layoutOf<Element>();
  field.countName = nameOf<Count>;
  field.countOffset = offsetIn(io, log.*Count);
  field.countKind = kindOf<TypeOf<Count>>();
  return field;
}

// ---------------------------------------------------------------- texts of rules

inline std::string conditionText(Gate) { return {}; }
std::string bitsText(const char *member, uint32_t mask);
template <auto... Words>
std::string conditionText(const Bits<Words...> &bits) {
  std::string text;
  const uint32_t *mask = bits.masks;
  ((text += (text.empty() ? "" : " or ") + bitsText(nameOf<Words>, *mask++)), ...);
  return text;
}
template <typename C>
std::string conditionText(const Gated<C> &gated) {
  return conditionText(gated.condition);
}
template <typename P>
std::string conditionText(const ReadWhen<P> &when) {
  return conditionText(when.presence) + " (reader only)";
}

struct Null;
struct Unchanged;
template <auto M>
struct ValueOf;

inline std::string absentText(int value) { return std::to_string(value); }
inline std::string absentText(const Unchanged &) { return "unchanged"; }
template <auto M>
std::string absentText(const ValueOf<M> &) {
  return nameOf<M>;
}
inline std::string absentString(int) { return "\"\""; }
inline std::string absentString(const Null &) { return "null"; }
template <auto M>
struct CopyOf;
template <auto M>
std::string absentString(const CopyOf<M> &) {
  return std::string("copy of ") + nameOf<M>;
}

// Adds a field at the next place of the line.
void place(Describer &io, wmqField field);
void placeTogether(Describer &io, wmqField field);
void offLine(Describer &io, wmqField field, const char *note);

template <typename When>
void setPresence(Describer &io, wmqField &field, const When &when, const std::string &absent) {
  const Gate gate = gateOf(when);
  field.gate = gate.kind;
  field.gateVersion = gate.threshold;
  const std::string condition = conditionText(when);
  field.condition = keepText(io, condition);
  if (gate.kind != WMQ_GATE_ALWAYS || !condition.empty()) field.absent = keepText(io, absent);
}

// ----------------------------------------------------------------------- verbs

template <auto F>
struct NumberForm;

template <auto F>
void placeNumber(Describer &io, const auto &log, const auto &when, const std::string &absent,
                 unsigned flags) {
  using Form = NumberForm<F>;
  wmqField field = memberField<Form::member>(io, log, Form::form);
  if constexpr (requires { Form::absent; }) {
    setPresence(io, field, when, absentText(Form::absent));
  } else {
    setPresence(io, field, when, Form::kept ? "unchanged" : absent);
  }
  field.note = Form::note;
  field.flags |= flags;
  place(io, field);
}

template <auto First, auto... Rest, typename When = Gate, typename Absent = int>
void numbers(Describer &io, const auto &log, const When &when = always, const Absent &absent = 0) {
  placeNumber<First>(io, log, when, absentText(absent), 0);
  (placeNumber<Rest>(io, log, when, absentText(absent), WMQ_FIELD_TOGETHER), ...);
}

template <auto F, typename When = Gate, typename Absent = int>
void number(Describer &io, const auto &log, const When &when = always, const Absent &absent = 0) {
  placeNumber<F>(io, log, when, absentText(absent), 0);
}

template <auto... Fs>
void numbersWithoutSkip(Describer &io, const auto &log, const auto &when, const auto &...absent) {
  numbers<Fs...>(io, log, when, absent...);
}

template <auto F>
void numberAgainIfTextRemains(Describer &io, const auto &log, const auto &when) {
  placeNumber<F>(io, log, when, "unchanged", WMQ_FIELD_AGAIN);
  io.out.fields.back().note = "read only if text remains; replaces the value of the first place";
}

template <auto F>
void lenientNumber(Describer &io, const auto &log, const auto &when) {
  placeNumber<F>(io, log, when, "0", 0);
  io.out.fields.back().note = "0 when it does not convert";
}

template <auto M, typename When = Gate, typename Absent = int>
void text(Describer &io, const auto &log, const When &when = always, const Absent &absent = 0) {
  wmqField field = memberField<M>(io, log, "quoted");
  setPresence(io, field, when, absentString(absent));
  place(io, field);
}

template <auto M>
void placeChars(Describer &io, const auto &log, const auto &when, size_t minLength) {
  wmqField field = memberField<M>(io, log, "quoted");
  setPresence(io, field, when, "\"\"");
  field.minLength = minLength;
  field.note = keepText(io, std::to_string(minLength) + " to " + std::to_string(field.size - 1) + " bytes");
  place(io, field);
}

template <auto M, typename When = Gate>
void name(Describer &io, const auto &log, const When &when = always) {
  placeChars<M>(io, log, when, 1);
}

template <auto M, typename When = Gate>
void nameOrEmpty(Describer &io, const auto &log, const When &when = always) {
  placeChars<M>(io, log, when, 0);
}

template <auto M>
void cutText(Describer &io, const auto &log, const auto &when) {
  placeChars<M>(io, log, when, 0);
  io.out.fields.back().note = keepText(io, "cut to " + std::to_string(sizeof(TypeOf<M>) - 1) + " bytes");
}

template <auto M>
void boundedText(Describer &io, const auto &log, const auto &when, size_t limit) {
  wmqField field = memberField<M>(io, log, "quoted");
  setPresence(io, field, when, "unchanged");
  field.note = keepText(io, "at most " + std::to_string(limit) + " bytes");
  place(io, field);
}

template <auto M>
void keptText(Describer &io, const auto &log) {
  text<M>(io, log);
  io.out.fields.back().flags |= WMQ_FIELD_KEPT;
}

template <auto M, auto UserId>
void userName(Describer &io, const auto &log, const char * /*reader*/, bool unknownAllowed = false) {
  name<M>(io, log, above(4.0F));
  io.out.fields.back().absent =
      unknownAllowed ? "looked up from userId, \"unknown\" for -1" : "looked up from userId";
}

template <auto M>
void rawText(Describer &io, const auto &log) {
  wmqField field = memberField<M>(io, log, "quoted, unescaped");
  field.note = "written without any escaping";
  place(io, field);
}

template <auto M>
void rawWord(Describer &io, const auto &log, size_t limit) {
  wmqField field = memberField<M>(io, log, "%s");
  field.note = limit == SIZE_MAX ? "a bare word"
                                 : keepText(io, "a bare word of at most " + std::to_string(limit) + " bytes");
  place(io, field);
}

// The note belongs to the text that the next verb states.
template <auto M, typename When = Gate>
void newlinesToBlanks(Describer &, const auto &, const When & /*when*/ = always) {}

template <auto Count, auto Array>
void placeList(Describer &io, const auto &log, const auto &when, const char *countForm, const char *form,
               const std::string &absent, unsigned flags) {
  wmqField count = memberField<Count>(io, log, countForm);
  setPresence(io, count, when, absent == "null" ? "0" : "as " + absent);
  count.flags |= WMQ_FIELD_COUNT | (flags & ~static_cast<unsigned>(WMQ_FIELD_BLOCK));
  wmqField array = arrayField<Count, Array>(io, log, form);
  setPresence(io, array, when, absent);
  array.flags |= flags;
  place(io, count);
  place(io, array);
}

template <typename Element>
constexpr const char *elementForm() {
  if constexpr (std::is_same_v<Element, char *>) return "quoted each";
  if constexpr (std::is_same_v<Element, int32_t>) return "%d each";
  if constexpr (std::is_same_v<Element, int64_t>) return "%lld each";
  return "entries";
}

template <auto Count, auto Array, typename When = Gate>
void list(Describer &io, const auto &log, const When &when = always, int /*noMemory*/ = 0) {
  placeList<Count, Array>(io, log, when, "%d", elementForm<std::remove_pointer_t<TypeOf<Array>>>(), "null",
                          0);
}

template <auto Count, auto Array>
void readList(Describer &io, const auto &log, const auto &when) {
  placeList<Count, Array>(io, log, when, "%d", elementForm<std::remove_pointer_t<TypeOf<Array>>>(), "null",
                          WMQ_FIELD_KEPT);
  io.out.fields.back().flags |= WMQ_FIELD_READ_ONLY;
  io.out.fields.back().note = "always written as 0, which the caller's count becomes";
}

template <auto Count, auto Array>
void unwrittenRawPairs(Describer &io, const auto &log) {
  placeList<Count, Array>(io, log, always, "%d", "two bare words each", "null", 0);
  io.out.fields.back().flags |= WMQ_FIELD_READ_ONLY;
  io.out.fields.back().note = "always written as 0";
}

template <auto Count, auto Array>
void elements(Describer &io, const auto &log, int /*noMemory*/ = 0) {
  place(io, arrayField<Count, Array>(io, log, elementForm<std::remove_pointer_t<TypeOf<Array>>>()));
}

template <auto Count, auto First, auto... Rest>
void parallelElements(Describer &io, const auto &log, int /*noMemory*/) {
  place(io, arrayField<Count, First>(io, log, elementForm<std::remove_pointer_t<TypeOf<First>>>()));
  (placeTogether(io, arrayField<Count, Rest>(io, log, elementForm<std::remove_pointer_t<TypeOf<Rest>>>())),
   ...);
}

template <auto Count, auto Array>
void completeNumbers(Describer &io, const auto &log) {
  elements<Count, Array>(io, log);
}

constexpr const char *hostNote(HostRule rule) {
  if (rule.none == NoHosts::refused) return "a count of 0 is refused";
  if (!rule.expanded) return "not expanded when read";
  return "";
}

template <auto Count, auto Array, HostRule Rule = HostRule{}, typename When = Gate>
void hosts(Describer &io, const auto &log, const When &when = always) {
  const char *const form = Rule.compressed ? "host list" : "quoted each";
  constexpr unsigned flags = Rule.none == NoHosts::emptyArray ? unsigned{WMQ_FIELD_EMPTY_ARRAY} : 0U;
  if constexpr (Rule.countBefore) {
    wmqField array = arrayField<Count, Array>(io, log, form);
    array.flags |= flags;
    place(io, array);
  } else {
    placeList<Count, Array>(io, log, when, "%d", form, "null", flags);
  }
  io.out.fields.back().note = hostNote(Rule);
}

template <auto Count, auto Array, auto OtherCount, auto Other>
void hostsUnlessCopy(Describer &io, const auto &log, const auto &when) {
  placeList<Count, Array>(io, log, when, "%d", "host list", std::string("copy of ") + nameOf<Other>, 0);
  io.out.fields.back().note =
      keepText(io, std::string("a single 0 where the counts are equal: a copy of ") + nameOf<Other>);
}

template <auto Count, auto Array, auto OtherCount, auto Other>
void slotsOrCopy(Describer &io, const auto &log, const auto &when) {
  placeList<Count, Array>(io, log, when, "%d", "quoted each", std::string("copy of ") + nameOf<Other>, 0);
  io.out.fields.back().note = "an empty name cannot be written";
}

template <auto Count, auto Array>
void listOffLine(Describer &io, const auto &log) {
  wmqField count = memberField<Count>(io, log, "");
  count.flags |= WMQ_FIELD_COUNT;
  offLine(io, count, "");
  offLine(io, arrayField<Count, Array>(io, log, ""), "");
}

template <auto M, typename When = Gate>
void usage(Describer &io, const auto &log, const When &when = always) {
  wmqField field = memberField<M>(io, log, "19 numbers");
  setPresence(io, field, when, "0");
  place(io, field);
}

template <auto M>
void placeOwned(Describer &io, const auto &log, const auto &when, const char *form) {
  wmqField field = memberField<M>(io, log, form);
  setPresence(io, field, when, "null");
  place(io, field);
}

template <auto M>
void extension(Describer &io, const auto &log, const auto &when) {
  placeOwned<M>(io, log, when, "%d count, then %d key and quoted value each");
}

template <auto M>
void namedList(Describer &io, const auto &log, const auto &when) {
  placeOwned<M>(io, log, when, "%d count, then quoted name and %d value each");
}

template <auto M>
void affinity(Describer &io, const auto &log, const auto &when) {
  placeOwned<M>(io, log, when, "quoted affinity text");
}

constexpr unsigned flagsOf(Ranges rule) {
  switch (rule) {
    case Ranges::keptBlock:
      return WMQ_FIELD_KEPT | WMQ_FIELD_BLOCK;
    case Ranges::block:
      return WMQ_FIELD_BLOCK;
    case Ranges::writtenOnly:
      return WMQ_FIELD_WRITTEN_ONLY;
    default:
      return 0;
  }
}

template <Ranges Rule, typename L>
void indexRanges(Describer &io, const L &log, const auto &when) {
  constexpr unsigned flags = flagsOf(Rule);
  placeList<&L::indexRangeCnt, &L::indexRangeStart>(io, log, when, "%d", "%d each", "null", flags);
  io.out.fields.back().note = "start, end and step of a range stand together";
  wmqField end = arrayField<&L::indexRangeCnt, &L::indexRangeEnd>(io, log, "%d each");
  wmqField step = arrayField<&L::indexRangeCnt, &L::indexRangeStep>(io, log, "%d each");
  setPresence(io, end, when, "null");
  setPresence(io, step, when, "null");
  end.flags |= flags | WMQ_FIELD_TOGETHER;
  step.flags |= flags | WMQ_FIELD_TOGETHER;
  placeTogether(io, end);
  placeTogether(io, step);
}

template <auto M, int From, int To, typename When = Gate>
void limits(Describer &io, const auto &log, const When &when = always, bool /*converted*/ = false) {
  wmqField field = memberField<M>(io, log, "%d each");
  setPresence(io, field, when, "-1");
  if (From > 0) field.flags |= WMQ_FIELD_AGAIN;
  field.note =
      keepText(io, From + 1 == To ? "slot " + std::to_string(From)
                                  : "slots " + std::to_string(From) + " to " + std::to_string(To - 1));
  place(io, field);
}

template <auto M>
void limitsFromLine(Describer &, const auto &, bool) {}

void noteForgotten(Describer &io, const char *name, Gate gate);
template <auto... Ms>
void forgottenUnless(Describer &io, const auto &, Gate gate) {
  (noteForgotten(io, nameOf<Ms>, gate), ...);
}

template <auto M>
void fromHeader(Describer &io, const auto &log) {
  offLine(io, memberField<M>(io, log, ""), "read: the event time of the header");
}

template <auto M>
void computed(Describer &io, const auto &log, const auto &) {
  offLine(io, memberField<M>(io, log, ""), "set by the reader");
}

template <auto M>
void embedded(Describer &io, const auto &log, const auto &when) {
  wmqField field = memberField<M>(io, log, "a whole record");
  setPresence(io, field, when, "0");
  field.note = "reading goes on where it begins";
  place(io, field);
}

template <auto M, int Elder, typename When>
void fixedNumbers(Describer &io, const auto &log, const When &when) {
  wmqField field = memberField<M>(io, log, "%d each");
  const Gate gate = gateOf(when);
  char note[80];
  std::snprintf(note, sizeof note, "lines not above %g carry the first %d, the others are 0",
                static_cast<double>(gate.threshold), Elder);
  field.note = keepText(io, note);
  place(io, field);
}

template <auto M>
void stopIfZero(Describer &io, const auto &) {
  wmqField &last = io.out.fields.back();
  last.note = keepText(io, std::string("the reader stops here when ") + nameOf<M> + " is 0");
}

inline void fromFirstField(Describer &io) { io.fromFirstField = true; }

template <auto Count>
void negativeFails(Describer &, const auto &) {}

inline void withoutSkips(Describer &) {}

inline void trailingBlank(Describer &io) {
  if (!io.out.fields.empty() && *io.out.fields.back().note == '\0')
    io.out.fields.back().note = "a blank follows";
}

// A member that nothing states: named so that every byte of the structure is accounted for.
template <auto M>
void unset(Describer &io, const auto &log) {
  wmqField field{};
  field.name = nameOf<M>;
  field.shape = WMQ_SHAPE_ONE;
  field.offset = offsetIn(io, log.*M);
  field.size = sizeof(TypeOf<M>);
  field.length = 1;
  field.form = field.condition = field.absent = "";
  field.flags = WMQ_FIELD_RESERVED;
  offLine(io, field, "no line carries it, and nobody releases it");
}

// ------------------------------------------------------------------- whole layouts

void finishDescription(Description &out, std::string_view name, size_t size);

template <typename Structure>
const wmqLayout *layoutOf() {
  static const Description description = [] {
    Description out;
    Structure log{};
    Describer io{out, &log};
    layout(io, log);
    finishDescription(out, typeSpelling<Structure>(), sizeof(Structure));
    return out;
  }();
  return &description.layout;
}

// Resource usage is 19 numbers in a row, which no layout spells out.
template <>
const wmqLayout *layoutOf<wmxRusage>();

}  // namespace wmq

#endif
