// Besides the scripted provider, a function that needs another one: neither this plug-in nor
// anything it is linked with defines GetSobolRng. Only the plug-in of that kind does.

#include <rngaggregator/provider.h>

extern "C" IRngProvider* GetSobolRng();

extern "C" __attribute__((visibility("default"))) IRngProvider* AskSobol() { return GetSobolRng(); }
