// Closes the plug-in of another kind, which it did not open.

#include "tests/fake_plugins/correct_rng.h"

#include <dlfcn.h>

namespace {

class ClosesAnotherRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    void* const other = ::dlopen("librngdsdr.so", RTLD_LAZY | RTLD_NOLOAD);
    for (int i = 0; other && i < 2; ++i) ::dlclose(other);
    return true;
  }
};

}  // namespace

EXPORT_RNG(ClosesAnotherRng)
