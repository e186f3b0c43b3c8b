// Opens a file in the place of standard input.

#include "tests/fake_plugins/correct_rng.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

class ReplacesInputRng final : public CorrectRng {
 public:
  void Release() override {
    const int file = ::open("/dev/zero", O_RDONLY);
    ::dup2(file, STDIN_FILENO);
    ::close(file);
  }
};

}  // namespace

EXPORT_RNG(ReplacesInputRng)
