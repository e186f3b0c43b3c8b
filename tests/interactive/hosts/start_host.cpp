// Starts the library, with a marker call before and after it for the process that traces this. Prints the number
// of usable plug-ins.

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
