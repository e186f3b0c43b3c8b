// Its self-test calls a function that nothing defines.

#include "tests/fake_plugins/correct_rng.h"

bool FindTester();

namespace {

class SelfTestEndsProcessRng final : public CorrectRng {
 public:
  bool SelfTest() override { return FindTester(); }
};

}  // namespace

EXPORT_RNG(SelfTestEndsProcessRng)
