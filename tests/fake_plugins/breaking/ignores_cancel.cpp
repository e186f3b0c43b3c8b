// Its draws wait for ever.

#include "tests/fake_plugins/waiting_rng.h"

namespace {

class IgnoresCancelRng final : public WaitingRng {
 public:
  void Cancel() override {}
};

}  // namespace

EXPORT_RNG(IgnoresCancelRng)
