// Does BESIDE_ANOTHER, a macro, in GetName if another plug-in built from this source became available
// before it.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdlib>

namespace {

class CrowdedNameRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    isSecond = std::getenv("RNG_CROWDED") != nullptr;
    ::setenv("RNG_CROWDED", "1", 1);
    return true;
  }
  std::int32_t GetName(char* buffer) override {
    if (isSecond) BESIDE_ANOTHER;
    return CorrectRng::GetName(buffer);
  }

 private:
  bool isSecond = false;
};

}  // namespace

EXPORT_RNG(CrowdedNameRng)
