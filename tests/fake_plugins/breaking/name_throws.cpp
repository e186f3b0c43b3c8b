// Throws when asked for its name, and nothing that tells why.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameThrowsRng final : public CorrectRng {
 public:
  std::int32_t GetName(char*) override { throw 1; }
};

}  // namespace

EXPORT_RNG(NameThrowsRng)
