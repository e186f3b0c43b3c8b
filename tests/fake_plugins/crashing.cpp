// A plug-in whose factory crashes.

#include <cstdlib>

#include <rngaggregator/provider.h>

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { std::abort(); }
