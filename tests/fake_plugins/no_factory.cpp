// A plug-in that has its factory, but does not export it under the plain name.

#include "tests/support/fakes.h"

namespace {

struct Presence {
  Presence() { RecordCall(KIND, "opened"); }
  ~Presence() { RecordCall(KIND, "closed"); }
} g_presence;

}  // namespace

__attribute__((visibility("default"))) IRngProvider* FACTORY() {
  RecordCall(KIND, "factory");
  return nullptr;
}
