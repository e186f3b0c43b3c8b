#ifndef PROVIDERS_CATALOGUE_H
#define PROVIDERS_CATALOGUE_H

#include <array>
#include <string>

/// One kind of generator that the aggregator knows how to load.
struct ProviderCatalogueEntry {
  std::string name;           ///< for people; lookups use the name that the provider reports
  std::string libraryFile;    ///< handed to `dlopen` as it stands
  std::string factorySymbol;  ///< the plug-in's exported factory
  bool needsDisplay;          ///< load only where an X display can be opened
};

using ProviderCatalogue = std::array<ProviderCatalogueEntry, 12>;

/// Builds the rows in their fixed order, which is also the order of the provider list. Each name is
/// copied from what its exported name variable points at now; a later change of the variable does
/// not reach the catalogue.
ProviderCatalogue BuildProviderCatalogue();

#endif
