#ifndef TOOLS_RNGCTL_DEVICES_DEVICE_REPORT_H
#define TOOLS_RNGCTL_DEVICES_DEVICE_REPORT_H

#include <string>
#include <vector>

/// What a plug-in says in its optional function `GetRngReport`, which provider.h describes.

inline constexpr char kReportFunction[] = "GetRngReport";
inline constexpr int kLargestReport = 65536;  ///< bytes, with the terminator

struct Device {
  std::string identifier;
  std::string text;
};

/// Only lines that keep the contract, so all texts are UTF-8 without control characters.
struct DeviceReport {
  std::vector<Device> devices = {};
  std::vector<std::string> problems = {};
  std::string fault = {};  ///< the first breach of the contract, in a sentence; "" for none
};

DeviceReport ParseDeviceReport(const std::string& text);

#endif
