// A plug-in that has its factory, but does not export it under the plain name.

#include "tests/support/fake_answers.h"

#include <rngaggregator/provider.h>

namespace {

struct Presence {
  Presence() { RecordCallFromC(KIND, "opened"); }
  ~Presence() { RecordCallFromC(KIND, "closed"); }
} g_presence;

}  // namespace

// The parameter makes this an overload, so it does not inherit C linkage from provider.h.
__attribute__((visibility("default"))) IRngProvider* FACTORY(int) {
  RecordCallFromC(KIND, "factory");
  return nullptr;
}
