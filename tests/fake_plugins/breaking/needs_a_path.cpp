// Takes it for granted that the settings know the path.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NeedsAPathRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings* settings) override {
    if (settings) size = std::strlen(settings->GetDsdrFilePath());
  }
  bool IsAvailable() override { return size < 4096; }

 private:
  std::size_t size = 0;
};

}  // namespace

EXPORT_RNG(NeedsAPathRng)
