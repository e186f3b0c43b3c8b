// A plug-in that has its factory, but does not export it under the plain name.

#include "tests/support/fakes.h"

namespace {

struct Presence {
  Presence() { RecordCall(KIND, "opened"); }
  ~Presence() { RecordCall(KIND, "closed"); }
} g_presence;

}  // namespace

// A parameter makes it another function than the one that provider.h declares.
__attribute__((visibility("default"))) IRngProvider* FACTORY(int) {
  RecordCall(KIND, "factory");
  return nullptr;
}
