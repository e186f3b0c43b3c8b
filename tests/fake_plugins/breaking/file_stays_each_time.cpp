// Leaves a file open each time.

#include "tests/fake_plugins/correct_rng.h"

#include <fcntl.h>

namespace {

class FileStaysEachTimeRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return ::open("/dev/null", O_RDONLY) >= 0; }
};

}  // namespace

EXPORT_RNG(FileStaysEachTimeRng)
