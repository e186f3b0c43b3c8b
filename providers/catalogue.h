#ifndef PROVIDERS_CATALOGUE_H
#define PROVIDERS_CATALOGUE_H

#include <array>
#include <string>

/// One kind of generator that the aggregator knows how to load.
struct ProviderCatalogueEntry {
  std::string name;           ///< for people; lookups use the name that the provider reports
  std::string libraryFile;    ///< passed to `dlopen` unchanged
  std::string factorySymbol;  ///< the plug-in's exported factory
  bool needsDisplay;          ///< load only if an X display can be opened
};

using ProviderCatalogue = std::array<ProviderCatalogueEntry, 12>;

/// Builds the rows in their fixed order, which is also the order of the provider list. Each name is
/// copied from the current value of its exported name variable; later changes of the variable do
/// not affect the catalogue.
ProviderCatalogue BuildProviderCatalogue();

#endif
