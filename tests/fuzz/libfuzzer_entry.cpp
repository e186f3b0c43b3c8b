// Makes of a target a libFuzzer program: a difference ends it, and the input is kept.

#include "tests/fuzz/fuzz_target.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    CheckInput({reinterpret_cast<const char*>(data), size});
  } catch (const std::runtime_error& difference) {
    std::fprintf(stderr, "%s\n", difference.what());
    std::abort();
  }
  return 0;
}
