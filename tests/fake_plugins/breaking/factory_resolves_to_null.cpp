// Exports its factory as an indirect function that resolves to null.

#include <rngaggregator/provider.h>

extern "C" {
RngFactory Resolve() { return nullptr; }
__attribute__((visibility("default"), ifunc("Resolve"))) IRngProvider* FACTORY();
}
