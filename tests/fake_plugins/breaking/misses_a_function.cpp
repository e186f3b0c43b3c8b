// Needs a function that nothing defines.

#include "tests/fake_plugins/correct_rng.h"

bool FindDevice(const char* id);

namespace {

class MissesAFunctionRng final : public CorrectRng {
 public:
  bool SelectDevice(const char* id) override {
    return CorrectRng::SelectDevice(id) || (std::strcmp(id, "X1") == 0 && FindDevice(id));
  }
};

}  // namespace

EXPORT_RNG(MissesAFunctionRng)
