// Reports that it needs the user. Its second draw fails, because it would ask the user again.

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
