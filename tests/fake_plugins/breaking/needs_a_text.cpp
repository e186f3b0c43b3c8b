// Takes it for granted that the settings hold the text that GET asks for. The object that has no path has none.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NeedsATextRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings* settings) override {
    const bool isEmpty = settings && !settings->GetDsdrFilePath();
    if (isEmpty) size = std::strlen(settings->GET());
  }
  bool IsAvailable() override { return size < 4096; }

 private:
  std::size_t size = 0;
};

}  // namespace

EXPORT_RNG(NeedsATextRng)
