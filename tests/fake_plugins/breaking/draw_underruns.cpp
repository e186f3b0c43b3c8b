// Writes one byte before the buffer.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DrawUnderrunsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != 0) static_cast<char*>(buffer)[-1] = 'x';
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(DrawUnderrunsRng)
