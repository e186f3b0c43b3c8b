// Does not write the bytes of the buffer from BEGIN to END, which are functions of its size.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class LeavesOldBytesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    const std::size_t begin = BEGIN;
    const std::size_t end = END;
    auto* const bytes = static_cast<unsigned char*>(buffer);
    return CorrectRng::Generate(bytes, begin) && CorrectRng::Generate(bytes + end, size - end);
  }
};

}  // namespace

EXPORT_RNG(LeavesOldBytesRng)
