// A host with the provider of "biokbd" linked into it, because a host with more rights than its user ignores
// LD_LIBRARY_PATH. Prints the results of the provider, one per line.

#include <iostream>
#include <string>

#include <rngaggregator/provider.h>

int main() {
  IRngProvider* const rng = GetBioKbRng();
  unsigned char bytes[32];
  std::cout << "available " << rng->IsAvailable() << "\nself-test " << rng->SelfTest() << std::endl;
  std::cout << "drawn " << rng->Generate(bytes, sizeof bytes) << std::endl;
  std::string report(static_cast<std::size_t>(GetRngReport(nullptr)), '\0');
  GetRngReport(report.data());
  std::cout << report.c_str();
}
