#include "aggregator/load_provider.h"

#include "providers/display_probe.h"
#include "providers/dll_loader.h"

#include <dlfcn.h>
#include <string>

using rngshared::smartwr::DllLoader;

void LoadProvider(const ProviderCatalogueEntry& row, IRngSettings* settings,
                  RngInfoVector& providers) {
  if (row.libraryFile.empty()) return;
  const std::string libraryFile = row.libraryFile;
  // Probed afresh for every row, even one that needs no display.
  const bool hasDisplay = ProbeXDisplay();
  if (row.needsDisplay && !hasDisplay) return;

  DllLoader library(libraryFile.c_str());
  if (!library.GetHandle()) return;
  void* const symbol = ::dlsym(library.GetHandle(), row.factorySymbol.c_str());
  if (!symbol) return;
  IRngProvider* const provider = reinterpret_cast<RngFactory>(symbol)();
  if (!provider) return;
  provider->SetSettings(settings);
  if (!provider->IsAvailable()) {
    provider->Release();
    return;
  }
  // Detached first: if the list cannot grow, the library stays open.
  void* const handle = library.Detach();
  providers.push_back({handle, provider});
}
