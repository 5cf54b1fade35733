// Structures from JSON.
//
// An object's members are taken in the order in which they stand, so that the first fault is the one that is
// told. A count and its arrays may come in any order: the first of them settles the count, the others must
// agree.
#include <algorithm>
#include <cerrno>
#include <limits>

#include "json/json_layout.h"
#include "json/json_member.h"
#include "json/json_values.h"

namespace wmq {

// --------------------------------------------------------------------------- objects

namespace {

// An object that is being read. Its part of the scratch arrays begins at these indices.
struct Frame {
  Scratch &scratch;
  const wmqLayout &layout;
  char *base;
  std::size_t seen = scratch.seen.size;
  std::size_t knownCounts = scratch.knownCounts.size;
  bool blockBegun = false;  // by an array that is not its first

  bool hasSeen(std::size_t field) const { return scratch.seen.items[seen + field]; }
};

}  // namespace

static bool readObject(Scratch &scratch, const wmqLayout &layout, const Token *&token, char *base,
                       const Place *place);
static bool readCounted(Frame &frame, std::size_t index, const Token *&token, const Place *place);

static bool beginFrame(Frame &frame, const Place *place) {
  Growing<bool> &seen = frame.scratch.seen;
  if (!seen.reserve(seen.size + frame.layout.numFields)) return noMemory(place);
  std::fill_n(seen.items + seen.size, frame.layout.numFields, false);
  seen.size += frame.layout.numFields;
  return true;
}

static void endFrame(Frame &frame) {
  frame.scratch.seen.size = frame.seen;
  frame.scratch.knownCounts.size = frame.knownCounts;
}

// ------------------------------------------------------------------- allocated members

static char *zeroed(std::size_t count, std::size_t size) {
  return static_cast<char *>(std::calloc(count == 0 ? 1 : count, size));
}

static bool readAffinity(const Token &token, char *at, const Place *place) {
  if (token.kind == TokenKind::Null) return true;
  if (token.kind != TokenKind::String) return wrongKind(token, "a string or null", place);
  errno = 0;
  affinityAlloc *allocation = token.length == 0
                                  ? reinterpret_cast<affinityAlloc *>(zeroed(1, sizeof(affinityAlloc)))
                                  : parseAffinityAllocField(token.text);
  if (allocation == nullptr) {
    if (token.length == 0 || errno == ENOMEM) return noMemory(place);
    return fault(WMQE_BAD_FORMAT, place, "not an affinity allocation: %s",
                 Excerpt(token.text, token.length).text);
  }
  store(at, allocation);
  return true;
}

static bool readExtension(Scratch &scratch, const Token *&token, char *at, const Place *place) {
  if (token->kind == TokenKind::Null) {
    ++token;
    return true;
  }
  char *extension = zeroed(1, sizeof(submitExt));
  if (extension == nullptr) return noMemory(place);
  store(at, extension);
  Frame frame{scratch, submitExtLayout, extension};
  if (!beginFrame(frame, place) || !readCounted(frame, 0, token, place)) return false;
  endFrame(frame);
  return true;
}

static bool readNamedValues(Scratch &scratch, const Token *&token, char *at, const Place *place) {
  if (token->kind == TokenKind::Null) {
    ++token;
    return true;
  }
  char *list = zeroed(1, sizeof(namedValueList));
  if (list == nullptr) return noMemory(place);
  store(at, list);
  return readObject(scratch, namedValuesLayout, token, list, place);
}

// The member itself, or one element of an array, out of the tokens from `token` on, which it passes.
static bool readValue(Scratch &scratch, const wmqField &field, const Token *&token, char *at,
                      const Place *place) {
  const auto readNumber = [&](auto value, auto read) {
    if (!read(*token++, value, place)) return false;
    store(at, value);
    return true;
  };
  switch (field.kind) {
    case WMQ_KIND_INT32:
      return readNumber(std::int32_t{}, readWhole<std::int32_t>);
    case WMQ_KIND_INT64:
      return readNumber(std::int64_t{}, readWhole<std::int64_t>);
    case WMQ_KIND_FLOAT:
      return readNumber(float{}, readReal<float>);
    case WMQ_KIND_DOUBLE:
      return readNumber(double{}, readReal<double>);
    case WMQ_KIND_STRING:
      return readOwnedText(*token++, at, place);
    case WMQ_KIND_CHARS:
      return readInlineText(*token++, at, field.size, place);
    case WMQ_KIND_STRUCT:
      return readObject(scratch, *field.layout, token, at, place);
    case WMQ_KIND_SUBMIT_EXT:
      return readExtension(scratch, token, at, place);
    case WMQ_KIND_NAMED_VALUES:
      return readNamedValues(scratch, token, at, place);
    case WMQ_KIND_AFFINITY:
      return readAffinity(*token++, at, place);
    case WMQ_KIND_NETWORK:
      break;  // only whole arrays of these have a form
  }
  return wrongKind(*token, "absent", place);
}

static bool readElements(Scratch &scratch, const wmqField &field, const Token *&token, char *at,
                         const Place *place) {
  const std::size_t count = token++->length;
  Place element{place, nullptr, 0};
  for (; element.index < count; ++element.index, at += field.size)
    if (!readValue(scratch, field, token, at, &element)) return false;
  return true;
}

// --------------------------------------------------------------------- counts and arrays

// True when an array has settled the count at `offset`.
static bool settledByArray(const Frame &frame, std::size_t offset) {
  const Growing<std::size_t> &known = frame.scratch.knownCounts;
  for (std::size_t i = frame.knownCounts; i < known.size; ++i)
    if (known.items[i] == offset) return true;
  return false;
}

// True when the count of an array has been given. It stands close to its arrays, mostly right before them.
static bool countGiven(const Frame &frame, std::size_t array) {
  const wmqField *fields = frame.layout.fields;
  const auto isCount = [&](std::size_t i) {
    return fields[i].offset == fields[array].countOffset && isShown(fields[i]);
  };
  for (std::size_t i = array; i-- > 0;)
    if (isCount(i)) return frame.hasSeen(i);
  for (std::size_t i = array + 1; i < frame.layout.numFields; ++i)
    if (isCount(i)) return frame.hasSeen(i);
  return false;
}

static bool agreesWithCount(const Frame &frame, std::size_t index, std::size_t length, const Place *place) {
  const wmqField &array = frame.layout.fields[index];
  if (settledByArray(frame, array.countOffset) || countGiven(frame, index)) {
    const std::int64_t count = loadCount(array, frame.base);
    if (count >= 0 && static_cast<std::uint64_t>(count) == length) return true;
    return fault(WMQE_BAD_FORMAT, place, "%zu elements, but %s is %lld", length, array.countName,
                 static_cast<long long>(count));
  }
  if (array.countKind == WMQ_KIND_INT32 && length > std::numeric_limits<std::int32_t>::max())
    return fault(WMQE_BAD_FORMAT, place, "%zu elements are too many", length);
  return true;
}

// Puts an array and its length into the structure, both or neither: release goes by them.
static bool storeArray(Frame &frame, const wmqField &field, char *elements, std::size_t length,
                       const Place *place) {
  if (!frame.scratch.knownCounts.push(field.countOffset)) return noMemory(place);
  storeCount(field, frame.base, static_cast<std::int64_t>(length));
  store(frame.base + field.offset, elements);
  return true;
}

static bool readNetwork(Frame &frame, std::size_t index, const Token &token, const Place *place) {
  if (token.kind != TokenKind::String) return wrongKind(token, "a string or null", place);
  std::int32_t count = 0;
  networkAlloc *allocations = nullptr;
  const int result = getNetworkAllocFromString(token.text, &count, &allocations);
  if (result == WMQE_NO_MEM) return noMemory(place);
  if (result != 0)
    return fault(WMQE_BAD_FORMAT, place, "not a network allocation: %s",
                 Excerpt(token.text, token.length).text);

  // No text gives no array, but it was written for an empty one.
  if (allocations == nullptr) allocations = reinterpret_cast<networkAlloc *>(zeroed(1, sizeof(networkAlloc)));
  if (allocations == nullptr) return noMemory(place);
  const auto length = static_cast<std::size_t>(count);
  if (agreesWithCount(frame, index, length, place) &&
      storeArray(frame, frame.layout.fields[index], reinterpret_cast<char *>(allocations), length, place))
    return true;  // NOLINT(clang-analyzer-unix.Malloc): the structure has them
  freeNetworkAlloc(count, allocations);
  std::free(allocations);
  return false;
}

static bool inBlockOf(const wmqField &array, const wmqField &field) {
  return (field.flags & WMQ_FIELD_BLOCK) != 0 && isShown(field) && field.countOffset == array.countOffset;
}

// The part that belongs to an array in the block that its count's arrays share. Whichever of them comes first
// allocates the block, and gives it at once to the array that owns it.
static char *partOfBlock(Frame &frame, std::size_t index, std::size_t length, const Place *place) {
  const wmqLayout &layout = frame.layout;
  std::size_t owner = layout.numFields;
  std::size_t sizeBefore = 0;
  std::size_t sizeOfAll = 0;
  for (std::size_t i = 0; i < layout.numFields; ++i) {
    if (!inBlockOf(layout.fields[index], layout.fields[i])) continue;
    if (owner == layout.numFields) owner = i;
    if (i < index) sizeBefore += layout.fields[i].size;
    sizeOfAll += layout.fields[i].size;
  }

  char *block = load<char *>(frame.base + layout.fields[owner].offset);
  if (block == nullptr) {
    if (owner != index && frame.hasSeen(owner)) {
      fault(WMQE_BAD_FORMAT, place, "must be null, like %s", layout.fields[owner].name);
      return nullptr;
    }
    block = zeroed(length, sizeOfAll);
    if (block == nullptr) {
      noMemory(place);
      return nullptr;
    }
    store(frame.base + layout.fields[owner].offset, block);
    frame.blockBegun = true;
  }
  return block + sizeBefore * length;
}

static bool blocksHaveTheirOwners(const Frame &frame, const Place *place) {
  for (std::size_t i = 0; frame.blockBegun && i < frame.layout.numFields; ++i) {
    const wmqField &field = frame.layout.fields[i];
    if (!inBlockOf(field, field) || frame.hasSeen(i) || load<char *>(frame.base + field.offset) == nullptr)
      continue;
    const Place member{place, field.name, 0};
    return fault(WMQE_BAD_FORMAT, &member, "missing beside other arrays of %s", field.countName);
  }
  return true;
}

static bool readCounted(Frame &frame, std::size_t index, const Token *&token, const Place *place) {
  const wmqField &field = frame.layout.fields[index];
  char *at = frame.base + field.offset;
  if (token->kind == TokenKind::Null) {
    if (load<char *>(at) != nullptr)
      return fault(WMQE_BAD_FORMAT, place, "null beside other arrays of %s", field.countName);
    ++token;
    return true;
  }
  if (field.kind == WMQ_KIND_NETWORK) return readNetwork(frame, index, *token++, place);
  if (token->kind != TokenKind::Array) return wrongKind(*token, "an array or null", place);

  const std::size_t length = token->length;
  if (!agreesWithCount(frame, index, length, place)) return false;
  const bool shared = (field.flags & WMQ_FIELD_BLOCK) != 0;
  char *elements = shared ? partOfBlock(frame, index, length, place) : zeroed(length, field.size);
  if (elements == nullptr) return !shared && noMemory(place);
  if (!storeArray(frame, field, elements, length, place)) {
    if (!shared) std::free(elements);
    return false;
  }
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the structure has them
  return readElements(frame.scratch, field, token, elements, place);
}

static bool readFixed(Frame &frame, const wmqField &field, const Token *&token, const Place *place) {
  if (token->kind != TokenKind::Array) return wrongKind(*token, "an array", place);
  if (token->length != field.length)
    return fault(WMQE_BAD_FORMAT, place, "%zu elements, must be %zu", std::size_t{token->length},
                 field.length);
  return readElements(frame.scratch, field, token, frame.base + field.offset, place);
}

static bool readCountAgain(const wmqField &field, const Token &token, const char *at, const Place *place) {
  std::int64_t given = 0;
  if (!readWhole(token, given, place)) return false;
  const std::int64_t count = field.kind == WMQ_KIND_INT64 ? load<std::int64_t>(at) : load<std::int32_t>(at);
  return given == count || fault(WMQE_BAD_FORMAT, place, "%lld differs from the %lld elements that are given",
                                 static_cast<long long>(given), static_cast<long long>(count));
}

// --------------------------------------------------------------------------- objects

static bool readMember(Frame &frame, std::size_t index, const Token *&token, const Place *place) {
  const wmqField &field = frame.layout.fields[index];
  char *at = frame.base + field.offset;
  if (field.shape == WMQ_SHAPE_FIXED) return readFixed(frame, field, token, place);
  if (field.shape == WMQ_SHAPE_COUNTED) return readCounted(frame, index, token, place);
  if (settledByArray(frame, field.offset)) return readCountAgain(field, *token++, at, place);
  return readValue(frame.scratch, field, token, at, place);
}

// The field of that name, looked for from `hint` on: members mostly come in the order of the layout.
static std::size_t findField(const wmqLayout &layout, std::size_t hint, const char *name) {
  std::size_t i = hint;
  for (std::size_t tried = 0; tried < layout.numFields; ++tried, ++i) {
    if (i >= layout.numFields) i = 0;
    if (isShown(layout.fields[i]) && std::strcmp(layout.fields[i].name, name) == 0) return i;
  }
  return layout.numFields;
}

static bool readObject(Scratch &scratch, const wmqLayout &layout, const Token *&token, char *base,
                       const Place *place) {
  if (token->kind != TokenKind::Object) return wrongKind(*token, "an object", place);
  Frame frame{scratch, layout, base};
  if (!beginFrame(frame, place)) return false;

  std::size_t hint = 0;
  for (std::size_t members = token++->length; members > 0; --members) {
    const Place member{place, token++->text, 0};
    const std::size_t index = findField(layout, hint, member.name);
    if (index == layout.numFields) return fault(WMQE_BAD_FORMAT, &member, "no such member");
    bool &seen = scratch.seen.items[frame.seen + index];
    if (seen) return fault(WMQE_BAD_FORMAT, &member, "given twice");
    seen = true;
    if (!readMember(frame, index, token, &member)) return false;
    hint = index + 1;
  }
  if (!blocksHaveTheirOwners(frame, place)) return false;
  endFrame(frame);
  return true;
}

bool readLayout(Scratch &scratch, const wmqLayout &layout, const Token *token, void *base,
                const Place *place) {
  return readObject(scratch, layout, token, static_cast<char *>(base), place);
}

}  // namespace wmq
