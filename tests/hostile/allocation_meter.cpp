#include "hostile/allocation_meter.h"

#include <malloc.h>

#include <algorithm>

// The linker turns calls of malloc into calls of __wrap_malloc, and of __real_malloc into those of malloc.
extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *memory, size_t size);
void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_realloc(void *memory, size_t size);
}

namespace wmq::testing {

static thread_local Allocated meter;

void resetMeter() { meter = {}; }
Allocated allocated() { return meter; }

static void measure(size_t size) {
  meter.total += size;
  meter.largest = std::max(meter.largest, size);
}

}  // namespace wmq::testing

void *__wrap_malloc(size_t size) {
  wmq::testing::measure(size);
  return __real_malloc(size);
}

void *__wrap_calloc(size_t count, size_t size) {
  wmq::testing::measure(count * size);
  return __real_calloc(count, size);
}

// Only what is added counts, as arrays that grow ask again and again.
void *__wrap_realloc(void *memory, size_t size) {
  const size_t former = malloc_usable_size(memory);
  if (size > former) wmq::testing::measure(size - former);
  return __real_realloc(memory, size);
}
