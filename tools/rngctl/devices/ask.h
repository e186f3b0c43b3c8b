#ifndef TOOLS_RNGCTL_DEVICES_ASK_H
#define TOOLS_RNGCTL_DEVICES_ASK_H

#include "tools/rngctl/devices/device_report.h"

#include <chrono>
#include <string>

/// The path of a plug-in that is open in this process, "" if it is not open or does not report devices.
std::string FindOpenReporter(const std::string& libraryFile);

/// Starts the plug-in in a child, asks for its report and releases it. Where the child gives none, the
/// result has only a fault.
DeviceReport AskForDevices(const std::string& file, const std::string& factory,
                           std::chrono::seconds limit);

/// The hidden command of the child, and what it does.
inline constexpr char kDevicesChildCommand[] = "devices-child";
[[noreturn]] void RunDevicesChild(int channel);

#endif
