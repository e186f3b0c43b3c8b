#include <iostream>

#include <rngaggregator/aggregator.h>

int main() {
  Initialize(GetDefaultSettings());
  std::cout << GetAvailableRng(nullptr, ~0U) << " generators\n";
  ShutDown();
}
