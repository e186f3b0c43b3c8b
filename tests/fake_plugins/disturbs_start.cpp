// IsAvailable runs the macro DISTURB, which does something to the process. Release runs the macro RESTORE,
// if there is one.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class DisturbsStartRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    DISTURB;
    return true;
  }
#ifdef RESTORE
  void Release() override { RESTORE; }
#endif
};

}  // namespace

EXPORT_RNG(DisturbsStartRng)
