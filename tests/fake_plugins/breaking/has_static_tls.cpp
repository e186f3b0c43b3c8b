// Wants thread storage that must be there from the start.

#include "tests/fake_plugins/correct_rng.h"

namespace {

thread_local int g_uses;

class HasStaticTlsRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return ++g_uses != 0; }
};

}  // namespace

EXPORT_RNG(HasStaticTlsRng)
