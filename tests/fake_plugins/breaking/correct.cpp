// Breaks nothing. It takes no lock, allocates nothing and keeps no log.

#include "tests/fake_plugins/correct_rng.h"

EXPORT_RNG(CorrectRng)
