#include "tools/rngctl/settings/kinds.h"

#include "providers/catalogue.h"
#include "tools/rngctl/terminal/likeness.h"

#include <algorithm>
#include <map>
#include <vector>

namespace {

// "biox11" of "librngbiox11.so"
std::string NameInFile(const std::string& libraryFile) {
  constexpr std::size_t kPrefix = sizeof "librng" - 1;
  constexpr std::size_t kSuffix = sizeof ".so" - 1;
  return libraryFile.substr(kPrefix, libraryFile.size() - kPrefix - kSuffix);
}

}  // namespace

bool IsKind(const std::string& name) {
  const ProviderCatalogue rows = BuildProviderCatalogue();
  return std::any_of(rows.begin(), rows.end(),
                     [&name](const ProviderCatalogueEntry& row) { return row.name == name; });
}

std::string FindMeantKind(const std::string& name) {
  std::vector<std::string> known;
  std::map<std::string, std::string> kinds;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    for (const std::string& each : {row.name, NameInFile(row.libraryFile)}) {
      known.push_back(each);
      kinds.emplace(each, row.name);
    }
  }
  const std::string alike = FindLikeness(name, known);
  return alike.empty() ? "" : kinds.at(alike);
}
