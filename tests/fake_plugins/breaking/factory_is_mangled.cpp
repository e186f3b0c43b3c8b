// Its factory has a name of C++.

#include "tests/fake_plugins/correct_rng.h"

// A parameter makes it another function than the one that provider.h declares.
__attribute__((visibility("default"))) IRngProvider* FACTORY(int) {
  static CorrectRng provider;
  return &provider;
}
