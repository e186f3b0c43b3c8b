#ifndef PLUGINS_UNIXDEV_REPORT_H
#define PLUGINS_UNIXDEV_REPORT_H

#include <rngaggregator/provider.h>

/// Gives GetRngReport the settings that name the configured device. Borrows them until the next call; they may be
/// null. Threads: as SetSettings.
void SetSettingsOfReport(IRngSettings* settings);

#endif
