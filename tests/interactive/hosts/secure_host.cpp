// A host with the provider of "biokbd" in its own file, so that it needs no library if it has more rights than
// its user. Prints what the provider says and does, a line each.

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
