#ifndef AGGREGATOR_PROCESS_STATE_H
#define AGGREGATOR_PROCESS_STATE_H

#include "aggregator/rng_info.h"
#include "providers/catalogue.h"
#include "settings/default_settings.h"

#include <boost/thread/mutex.hpp>
#include <cstdint>

/// What the library keeps from load to unload. The members are built top to bottom when the library
/// is loaded and destroyed bottom to top when it is unloaded; nothing else is built then.
struct ProcessState {
  ProviderCatalogue catalogue = BuildProviderCatalogue();
  boost::mutex lock;        // held by Initialize and ShutDown throughout; queries take none
  RngInfoVector providers;  // changed only under the lock
  DefaultSettingsImpl defaultSettings;
};

extern ProcessState g_state;

// Zero before the library's initialisation, and left alone by its finalisation.
extern std::int64_t g_startCount;        // changed only under the lock; negative: a debt
extern IRngSettings* g_currentSettings;  // of the last start, not owned; never reset

#endif
