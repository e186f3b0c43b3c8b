#ifndef AGGREGATOR_PROCESS_STATE_H
#define AGGREGATOR_PROCESS_STATE_H

#include "aggregator/rng_info.h"
#include "providers/catalogue.h"
#include "settings/default_settings.h"

#include <atomic>
#include <boost/thread/mutex.hpp>
#include <cstdint>

/// The state that the library keeps from load to unload. The members are built top to bottom when
/// the library is loaded and destroyed bottom to top when it is unloaded. No other object of the
/// library is built or destroyed then.
struct ProcessState {
  ProviderCatalogue catalogue = BuildProviderCatalogue();
  boost::mutex lock;        // held by Initialize and ShutDown throughout; queries take none
  RngInfoVector providers;  // changed only under the lock
  DefaultSettingsImpl defaultSettings;
};

extern ProcessState g_state;

// Zero before the library's initialiser runs, and not touched by its finaliser.
extern std::int64_t g_startCount;        // changed only by ChangeStartCount; may be negative
extern IRngSettings* g_currentSettings;  // from the last start, not owned; never reset

/// Returns the number of starts not yet matched by a stop. Queries read it without the lock while a
/// nested start or stop may change it. So reads and writes go through `std::atomic_ref`, which
/// prevents data races on an ordinary integer at the cost of a plain load and a plain store.
inline std::int64_t GetStartCount() {
  return std::atomic_ref(g_startCount).load(std::memory_order_relaxed);
}

/// Adds `step` and returns the new count. Call it under the lock: the addition is not atomic.
inline std::int64_t ChangeStartCount(std::int64_t step) {
  const std::int64_t count = GetStartCount() + step;
  std::atomic_ref(g_startCount).store(count, std::memory_order_relaxed);
  return count;
}

#endif
