// A plug-in whose factory throws.

#include <stdexcept>

#include <rngaggregator/provider.h>

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  throw std::runtime_error("no driver");
}
