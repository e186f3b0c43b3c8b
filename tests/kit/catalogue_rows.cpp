// Prints what the library itself takes for the kinds and their plug-ins: "kind file factory".

#include "providers/catalogue.h"

#include <iostream>

int main() {
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    std::cout << row.name << ' ' << row.libraryFile << ' ' << row.factorySymbol << '\n';
  }
}
