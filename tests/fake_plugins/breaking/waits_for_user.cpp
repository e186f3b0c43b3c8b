// Breaks nothing; its draws wait for a user.

#include "tests/fake_plugins/waiting_rng.h"

EXPORT_RNG(WaitingRng)
