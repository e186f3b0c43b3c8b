// Exports its class, or only an operation, under the same name in the plug-in of each kind, so the loader
// binds all of them to the first one. The macros CLASS and OPERATION choose what is exported.

#include "tests/fake_plugins/correct_rng.h"

class __attribute__((visibility(CLASS))) SharedRng : public CorrectRng {
 public:
  __attribute__((visibility(OPERATION))) std::int32_t GetName(char* buffer) override;
};

std::int32_t SharedRng::GetName(char* buffer) { return Report(KIND, buffer); }

EXPORT_RNG(SharedRng)
