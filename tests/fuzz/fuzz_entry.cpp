#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  wmq::testing::tryInput({reinterpret_cast<const char *>(data), size});
  return 0;
}
