// Exports its class, under the same name in the plug-in of each kind: the loader gives all of them the first
// one's.

#include "tests/fake_plugins/correct_rng.h"

class __attribute__((visibility("default"))) SharedRng : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override;
};

std::int32_t SharedRng::GetName(char* buffer) { return Report(KIND, buffer); }

EXPORT_RNG(SharedRng)
