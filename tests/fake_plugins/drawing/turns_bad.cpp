// Good bytes in the first draw. In the others, the macro SPOIL spoils them.

#include "tests/fake_plugins/correct_rng.h"

namespace {

[[maybe_unused]] void TurnConstant(unsigned char* bytes, std::size_t size) {
  std::memset(bytes, 0, size);
}

[[maybe_unused]] void RepeatBlocks(unsigned char* bytes, std::size_t) {
  std::memcpy(bytes + 16, bytes, 16);
}

[[maybe_unused]] void PreferOneValue(unsigned char* bytes, std::size_t size) {
  for (std::size_t place = 0; place < size; place += 8) bytes[place] = 0;
}

class TurningRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    CorrectRng::Generate(buffer, size);
    if (wasAsked) SPOIL(static_cast<unsigned char*>(buffer), size);
    wasAsked = true;
    return true;
  }

 private:
  bool wasAsked = false;
};

}  // namespace

EXPORT_RNG(TurningRng)
