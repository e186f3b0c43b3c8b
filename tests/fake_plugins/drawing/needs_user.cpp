// Needs the user, as it says. Whoever asks for a second draw would ask the user again, and gets nothing.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class UsersRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (hasDrawn) return false;
    hasDrawn = true;
    return CorrectRng::Generate(buffer, size);
  }
  std::uint32_t GetFlags() override { return kRngCapabilityNeedsUser | kRngCapabilityMayBlock; }

 private:
  bool hasDrawn = false;
};

}  // namespace

EXPORT_RNG(UsersRng)
