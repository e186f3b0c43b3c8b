// Starts the library, and says so to whoever traces it: before, with the number of plug-ins behind, and after.

#include "tests/costs/cost_host.h"

#include <iostream>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

int main() {
  ::syscall(kMarkerCall, kMarkerArgument);
  Initialize(GetDefaultSettings());
  ::syscall(kMarkerCall, kMarkerArgument);
  std::cout << GetAvailableRng(nullptr, 0xFFFFFFFF) << std::endl;
  ShutDown();
}
