// Leaves a file open.

#include "tests/fake_plugins/correct_rng.h"

#include <fcntl.h>

namespace {

class FileStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return !IsFirstTime() || ::open("/dev/null", O_RDONLY) >= 0; }
};

}  // namespace

EXPORT_RNG(FileStaysRng)
