// A host from its start to its stop: it takes the fallback for a default that nobody has configured, draws, and
// stores another default.

#include <algorithm>
#include <iostream>
#include <iterator>

#include <rngaggregator/aggregator.h>

int main() {
  Initialize(GetDefaultSettings());
  std::cout << "usable " << GetAvailableRng(nullptr, 0xFFFFFFFF) << std::endl;
  DefaultRngInfo choice = {};
  const bool hasDefault = GetDefaultRng(&choice, 4) != 0;
  std::cout << "default " << hasDefault << ' ' << choice.type << std::endl;
  IRngProvider* const rng = GetRng(choice.type);
  if (!rng) return 1;
  unsigned char bytes[32] = {};
  const bool isDrawn = rng->Generate(bytes, sizeof bytes);
  const auto zeros = std::count(std::begin(bytes), std::end(bytes), 0);
  std::cout << "drawn " << isDrawn << ", zeros " << (zeros > 4) << std::endl;
  std::cout << "stored " << SetDefaultRng("unixdev", nullptr) << std::endl;
  ShutDown();
  std::cout << "stopped " << !IsInitialized() << std::endl;
}
