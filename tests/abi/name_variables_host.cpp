// A host that points a name variable at a text of its own, and prints what the library then says.

#include "tests/support/all_bits.h"

#include <cstdio>

#include <rngaggregator/aggregator.h>

int main() {
  Initialize(nullptr);
  DefaultRngInfo info{};
  std::printf("loaded %d, ", GetAvailableRng(nullptr, kAllBits));
  std::printf("at first %s, ", rngBioQt);
  std::printf("fallback %d\n", GetDefaultRng(&info, kDefaultFallbackBioQt));
  rngBioQt = "dsdr";
  std::printf("dsdr %d, bioqt %d, ", IsInteractiveRng("dsdr"), IsInteractiveRng("bioqt"));
  const int result = GetDefaultRng(&info, kDefaultFallbackBioQt);
  std::printf("fallback %d %s\n", result, info.type);
  ShutDown();
}
