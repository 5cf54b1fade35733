// Key/value pairs of a submission.
#include <bit>
#include <cstdlib>

#include "companion/block_cache.h"
#include "wmq/companion.h"

namespace wmq {

namespace {

// The array's room is always a power of two, asked for anew with each pair: that costs nothing while the room
// is the same, keeps adding linear, and is right for an array of any size that a caller has built.
submitExtPair *roomForOneMore(const submitExt &extension) {
  if (extension.numPairs < 0 || extension.numPairs >= INT32_MAX / 2) return nullptr;
  const size_t room = std::bit_ceil(static_cast<size_t>(extension.numPairs) + 1);
  return static_cast<submitExtPair *>(std::realloc(extension.pairs, room * sizeof(submitExtPair)));
}

bool addPair(submitExt &extension, int32_t key, const char *value) {
  char *const copy = putstr_(value);
  if (copy == nullptr) return false;
  submitExtPair *const pairs = roomForOneMore(extension);
  if (pairs == nullptr) {
    std::free(copy);
    return false;
  }
  pairs[extension.numPairs] = {key, copy};
  extension.pairs = pairs;
  ++extension.numPairs;
  return true;
}

}  // namespace

}  // namespace wmq

extern "C" int add_pair2submit_ext(struct submitExt **extension, int32_t key, const char *value) {
  if (extension == nullptr) return WMQE_BAD_ARG;
  if (value == nullptr) value = "";
  if (*extension != nullptr) return wmq::addPair(**extension, key, value) ? 0 : WMQE_NO_MEM;

  auto *const created = static_cast<submitExt *>(std::calloc(1, sizeof(submitExt)));
  if (created == nullptr) return WMQE_NO_MEM;
  if (!wmq::addPair(*created, key, value)) {
    std::free(created);
    return WMQE_NO_MEM;
  }
  *extension = created;
  return 0;
}

extern "C" void freeSubmitExt(struct submitExt *extension) {
  if (extension == nullptr) return;
  for (int32_t i = 0; extension->pairs != nullptr && i < extension->numPairs; ++i)
    wmq::giveBlock(extension->pairs[i].value);
  wmq::giveBlock(extension->pairs);
  extension->pairs = nullptr;
  extension->numPairs = 0;
}
