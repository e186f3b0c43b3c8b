// Its factory has a name of C++.

#include "tests/fake_plugins/correct_rng.h"

__attribute__((visibility("default"))) IRngProvider* FACTORY() {
  static CorrectRng provider;
  return &provider;
}
