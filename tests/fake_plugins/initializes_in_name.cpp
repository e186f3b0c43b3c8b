// Starts the library when it is asked for its name. In a started library, that only counts. The macro CALL
// may be another call.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

#ifndef CALL
#define CALL Initialize(GetDefaultSettings())
#endif

namespace {

class InitializesInNameRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    CALL;
    return CorrectRng::GetName(buffer);
  }
};

}  // namespace

EXPORT_RNG(InitializesInNameRng)
