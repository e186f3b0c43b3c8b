// A host that prints the names of the loaded providers.

#include "tests/support/all_bits.h"

#include <cstdio>

#include <rngaggregator/aggregator.h>

int main() {
  Initialize(nullptr);
  IRngProvider* providers[12];
  const std::int32_t count = GetAvailableRng(providers, kAllBits);
  for (std::int32_t i = 0; i < count; ++i) {
    char name[32] = {};
    providers[i]->GetName(name);
    std::printf("%s\n", name);
  }
  ShutDown();
}
