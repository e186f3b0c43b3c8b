// A plug-in that has its factory, but does not export it under the plain name.

#include "tests/support/fakes.h"

namespace {

struct Presence {
  Presence() { RecordCall(KIND, "opened"); }
  ~Presence() { RecordCall(KIND, "closed"); }
} g_presence;

}  // namespace

// The parameter makes this an overload, so it does not inherit C linkage from provider.h.
__attribute__((visibility("default"))) IRngProvider* FACTORY(int) {
  RecordCall(KIND, "factory");
  return nullptr;
}
