#include "wmq.stream/releaser.h"

namespace wmq {

void releaseStrings(int64_t count, char **&array) {
  for (int64_t i = 0; array != nullptr && i < count; ++i) giveBlock(array[i]);
  release(array);
}

void releaseNamedValues(namedValueList *&list) {
  if (list == nullptr) return;
  releaseStrings(list->count, list->names);
  release(list->values);
  release(list);
}

void releaseAffinity(affinityAlloc *&allocation) {
  freeupAffinityJobData(allocation);
  release(allocation);
}

void releaseSubmitExt(submitExt *&extension) {
  freeSubmitExt(extension);
  release(extension);
}

void releaseNetwork(int32_t count, networkAlloc *&allocations) {
  freeNetworkAlloc(count, allocations);
  release(allocations);
}

}  // namespace wmq
