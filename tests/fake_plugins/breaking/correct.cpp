// Breaks nothing.

#include "tests/fake_plugins/breaking/correct_rng.h"

EXPORT_RNG(CorrectRng)
