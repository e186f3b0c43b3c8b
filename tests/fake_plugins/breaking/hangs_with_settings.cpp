// Waits for what the settings name.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class HangsWithSettingsRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings* settings) override {
    isWaiting = settings && settings->GetDsdrFilePath();
  }
  bool IsAvailable() override { return !isWaiting || ::pause() == 0; }

 private:
  bool isWaiting = false;
};

}  // namespace

EXPORT_RNG(HangsWithSettingsRng)
