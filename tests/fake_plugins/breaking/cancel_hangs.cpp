// Cancel waits for a draw, even if there is none.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class CancelHangsRng final : public CorrectRng {
 public:
  void Cancel() override { ::pause(); }
};

}  // namespace

EXPORT_RNG(CancelHangsRng)
