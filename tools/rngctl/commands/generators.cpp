#include "tools/rngctl/commands/generators.h"

#include "providers/catalogue.h"
#include "tools/rngctl/commands/provider_text.h"

#include <rngaggregator/aggregator.h>

namespace {

constexpr std::uint32_t kAnyCapability = 0xFFFFFFFF;

std::vector<std::string> FlagNames(std::uint32_t flags) {
  constexpr struct {
    std::uint32_t bit;
    const char* name;
  } kNames[] = {{kRngCapabilityHardware, "hardware"},
                {kRngCapabilityNeedsUser, "needs-user"},
                {kRngCapabilityOperatingSystem, "operating-system"},
                {kRngCapabilityPrerecorded, "prerecorded"},
                {kRngCapabilityMayBlock, "may-block"}};
  std::vector<std::string> names;
  for (const auto& [bit, name] : kNames) {
    if (flags & bit) names.emplace_back(name);
    flags &= ~bit;
  }
  for (std::uint32_t bit = 1; flags != 0; bit <<= 1) {
    if (flags & bit) names.push_back("bit-" + std::to_string(bit));
    flags &= ~bit;
  }
  return names;
}

// First the providers with a capability, then those without one that have a known name: the library
// does not list these, but finds them by name.
std::vector<IRngProvider*> LoadedProviders() {
  std::vector<IRngProvider*> providers(
      static_cast<std::size_t>(GetAvailableRng(nullptr, kAnyCapability)));
  GetAvailableRng(providers.data(), kAnyCapability);
  std::vector<std::string> names;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) names.push_back(row.name);
  names.emplace_back(rngBioWin);  // in no catalogue row
  for (const std::string& name : names) {
    IRngProvider* const provider = GetRng(name.c_str());
    if (provider && provider->GetFlags() == 0) providers.push_back(provider);
  }
  return providers;
}

}  // namespace

std::vector<Generator> LoadedGenerators() {
  std::vector<Generator> generators;
  for (IRngProvider* const provider : LoadedProviders()) {
    const std::string name = ReadText(*provider, &IRngProvider::GetName);
    generators.push_back({name, IsInteractiveRng(name.c_str()) != 0,
                          FlagNames(provider->GetFlags()),
                          ReadText(*provider, &IRngProvider::GetDescription)});
  }
  return generators;
}
