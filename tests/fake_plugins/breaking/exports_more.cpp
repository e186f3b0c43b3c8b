// Shows a function besides its factory.

#include "tests/fake_plugins/correct_rng.h"

extern "C" __attribute__((visibility("default"))) int AnotherFunction() { return 0; }

EXPORT_RNG(CorrectRng)
