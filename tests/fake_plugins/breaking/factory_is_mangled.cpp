// Its factory has a mangled C++ name.

#include "tests/fake_plugins/correct_rng.h"

// The parameter makes this an overload, so it does not inherit C linkage from provider.h.
__attribute__((visibility("default"))) IRngProvider* FACTORY(int) {
  static CorrectRng provider;
  return &provider;
}
