// Reports another name when asked the second time.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameChangesRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    if (buffer) isKnown = !isKnown;
    return Report(isKnown ? KIND : "dddd", buffer);
  }

 private:
  bool isKnown = false;
};

}  // namespace

EXPORT_RNG(NameChangesRng)
