// Its description contains U+009B, which some terminals take as a control sequence.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ControlsRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override {
    return Report(
        "One \xC2\x9B"
        "2J",
        buffer);
  }
};

}  // namespace

EXPORT_RNG(ControlsRng)
