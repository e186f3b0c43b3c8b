// Its self-test waits for a device that does not answer.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class SelfTestHangsRng final : public CorrectRng {
 public:
  bool SelfTest() override { return ::pause() == 0; }
};

}  // namespace

EXPORT_RNG(SelfTestHangsRng)
