// Writes also when asked for nothing: a byte that BYTE defines, at PLACE.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class EmptyDrawWritesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (buffer && size == 0) static_cast<unsigned char*>(buffer)[PLACE] = BYTE;
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(EmptyDrawWritesRng)
