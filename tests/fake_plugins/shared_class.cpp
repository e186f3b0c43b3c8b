// Exports its class, or only an operation, under the same name in the plug-in of each kind: the loader gives
// all of them the first one's. The macros CLASS and OPERATION say which.

#include "tests/fake_plugins/correct_rng.h"

class __attribute__((visibility(CLASS))) SharedRng : public CorrectRng {
 public:
  __attribute__((visibility(OPERATION))) std::int32_t GetName(char* buffer) override;
};

std::int32_t SharedRng::GetName(char* buffer) { return Report(KIND, buffer); }

EXPORT_RNG(SharedRng)
