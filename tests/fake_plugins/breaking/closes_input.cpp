// Closes a file that it has never opened.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class ClosesInputRng final : public CorrectRng {
 public:
  void Release() override { ::close(file); }

 private:
  int file = 0;
};

}  // namespace

EXPORT_RNG(ClosesInputRng)
