// Is available, and finds itself broken.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class SelfTestFailsRng final : public CorrectRng {
 public:
  bool SelfTest() override { return false; }
};

}  // namespace

EXPORT_RNG(SelfTestFailsRng)
