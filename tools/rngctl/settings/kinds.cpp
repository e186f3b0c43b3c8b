#include "tools/rngctl/settings/kinds.h"

#include "providers/catalogue.h"
#include "tools/rngctl/terminal/likeness.h"

#include <algorithm>
#include <vector>

namespace {

std::vector<std::string> AllKinds() {
  std::vector<std::string> kinds;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) kinds.push_back(row.name);
  return kinds;
}

}  // namespace

bool IsKind(const std::string& name) {
  const std::vector<std::string> kinds = AllKinds();
  return std::find(kinds.begin(), kinds.end(), name) != kinds.end();
}

std::string FindMeantKind(const std::string& name) { return FindLikeness(name, AllKinds()); }
