// Does something to its process when it is asked whether it is available: the macro DISTURB. Undoes it in
// Release if there is a macro RESTORE.

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
