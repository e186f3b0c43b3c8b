#ifndef PLUGINS_UNIXDEV_REPORT_H
#define PLUGINS_UNIXDEV_REPORT_H

#include <rngaggregator/provider.h>

/// Tells GetRngReport where the configured device is found. Borrows the settings, which may be null, until the next
/// call. Threads: as SetSettings.
void SetSettingsOfReport(IRngSettings* settings);

#endif
