// A host with the provider of "biokbd" linked into it, because a host with more rights than its user ignores
// LD_LIBRARY_PATH. Prints the results of the provider, one per line.

#include "tests/support/open_files.h"

#include <iostream>
#include <string>

#include <rngaggregator/provider.h>

int main() {
  IRngProvider* const rng = GetBioKbRng();
  unsigned char bytes[32];
  std::cout << "available " << rng->IsAvailable() << "\nself-test " << rng->SelfTest() << std::endl;
  std::cout << "drawn " << rng->Generate(bytes, sizeof bytes) << std::endl;
  const std::ptrdiff_t before = CountOpenFiles();
  std::string report(static_cast<std::size_t>(GetRngReport(nullptr)), '\0');
  GetRngReport(report.data());
  if (CountOpenFiles() != before) std::cout << "the report leaves files open\n";
  std::cout << report.c_str();
}
