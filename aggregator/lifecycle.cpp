#include "aggregator/load_provider.h"
#include "aggregator/process_state.h"

#include <dlfcn.h>
#include <mutex>

#include <rngaggregator/aggregator.h>

namespace {

using Guard = std::lock_guard<boost::mutex>;

// Marks what is done at once: when a later Release throws, the list stays, and neither a query nor
// the next stop nor the unloading may touch this element again.
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
  if (ChangeStartCount(-1) != 0) return;  // may become negative: later starts pay the debt
  for (RngInfoEx& info : g_state.providers) EndProvider(info);
  g_state.providers.clear();
}

bool IsInitialized() { return GetStartCount() > 0; }
