#include "aggregator/load_provider.h"
#include "aggregator/process_state.h"

#include <dlfcn.h>
#include <mutex>

#include <rngaggregator/aggregator.h>

namespace {

using Guard = std::lock_guard<boost::mutex>;

// Clears each pointer immediately: if a later Release throws, the list remains, and no query, stop
// or unload may touch this element again.
void EndProvider(RngInfoEx& info) {
  if (info.provider) info.provider->Release();
  info.provider = nullptr;
  if (info.handle) ::dlclose(info.handle);
  info.handle = nullptr;
}

}  // namespace

void Initialize(IRngSettings* settings) {
  const Guard guard(g_state.lock);
  if (ChangeStartCount(+1) != 1) return;
  g_currentSettings = settings;
  for (const ProviderCatalogueEntry& row : g_state.catalogue) {
    LoadProvider(row, settings, g_state.providers);
  }
}

void ShutDown() {
  const Guard guard(g_state.lock);
  if (ChangeStartCount(-1) != 0) return;  // may become negative; later starts bring it back to 0
  for (RngInfoEx& info : g_state.providers) EndProvider(info);
  g_state.providers.clear();
}

bool IsInitialized() { return GetStartCount() > 0; }
