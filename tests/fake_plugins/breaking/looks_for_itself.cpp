// Fails no check. Like a plug-in of several parts, it is available only if a library that is opened later finds its
// functions.

#include "tests/fake_plugins/correct_rng.h"

#define TEXT_OF(name) #name
#define NAME_OF(name) TEXT_OF(name)

namespace {

// The handle of the program finds what is global in the process.
class LooksForItselfRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    void* const program = ::dlopen(nullptr, RTLD_LAZY);
    const bool isFound = ::dlsym(program, NAME_OF(FACTORY)) != nullptr;
    ::dlclose(program);
    return isFound;
  }
};

}  // namespace

EXPORT_RNG(LooksForItselfRng)
