// Starts the library when it is asked for its name. In a started library, that only counts.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

namespace {

class InitializesInNameRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    Initialize(GetDefaultSettings());
    return CorrectRng::GetName(buffer);
  }
};

}  // namespace

EXPORT_RNG(InitializesInNameRng)
