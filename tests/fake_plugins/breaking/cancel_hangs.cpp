// Cancel never returns.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class CancelHangsRng final : public CorrectRng {
 public:
  void Cancel() override { ::pause(); }
};

}  // namespace

EXPORT_RNG(CancelHangsRng)
