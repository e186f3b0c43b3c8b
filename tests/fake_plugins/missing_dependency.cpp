// A plug-in that is linked with a library which is not installed.

#include <rngaggregator/provider.h>

extern "C" IRngProvider* FindDevice();

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return FindDevice(); }
