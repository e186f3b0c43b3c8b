// Accepts null as any device, but not the empty text.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class RefusesTheEmptyDeviceRng final : public CorrectRng {
 public:
  bool SelectDevice(const char* id) override { return !id; }
};

}  // namespace

EXPORT_RNG(RefusesTheEmptyDeviceRng)
