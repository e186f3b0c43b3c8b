// Forgets a page each time.

#include "tests/fake_plugins/correct_rng.h"

#include <sys/mman.h>

namespace {

class LeaksPagesRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    return ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
  }
};

}  // namespace

EXPORT_RNG(LeaksPagesRng)
