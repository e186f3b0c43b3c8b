// Takes it for granted that there are settings.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NeedsSettingsRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings* settings) override { settings->GetType(); }
};

}  // namespace

EXPORT_RNG(NeedsSettingsRng)
