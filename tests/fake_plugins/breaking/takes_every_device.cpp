// Takes devices that it does not have.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class TakesEveryDeviceRng final : public CorrectRng {
 public:
  bool SelectDevice(const char*) override { return true; }
};

}  // namespace

EXPORT_RNG(TakesEveryDeviceRng)
