// Exports its factory as an indirect function that resolves to null, after BEFORE_RESOLVING.

#include <cstdlib>

#include <rngaggregator/provider.h>

extern "C" {
RngFactory Resolve() {
  BEFORE_RESOLVING;
  return nullptr;
}
__attribute__((visibility("default"), ifunc("Resolve"))) IRngProvider* FACTORY();
}
