// A plug-in whose factory provides nothing.

#include <rngaggregator/provider.h>

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return nullptr; }
