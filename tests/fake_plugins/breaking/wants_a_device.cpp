// Wants a device to be named.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class WantsADeviceRng final : public CorrectRng {
 public:
  bool SelectDevice(const char* id) override { return id && std::strcmp(id, "X1") == 0; }
};

}  // namespace

EXPORT_RNG(WantsADeviceRng)
