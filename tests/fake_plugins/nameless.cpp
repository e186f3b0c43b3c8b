// A plug-in whose name cannot be used: the answers of GetName are the macros SIZE and SIZE_AGAIN.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NamelessRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override { return buffer ? SIZE_AGAIN : SIZE; }
};

}  // namespace

EXPORT_RNG(NamelessRng)
