#include "tools/rngctl/devices/device_report.h"

#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <sstream>

#include <rngaggregator/provider.h>

namespace {

using Parts = std::vector<std::string>;

Parts SplitAt(char mark, const std::string& text) {
  Parts parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, mark);) parts.push_back(part);
  return parts;
}

bool IsListed(const DeviceReport& report, const std::string& identifier) {
  return std::any_of(
      report.devices.begin(), report.devices.end(),
      [&identifier](const Device& device) { return device.identifier == identifier; });
}

std::string FaultOfDevice(const DeviceReport& report, const std::string& identifier) {
  if (identifier.empty()) return "names a device without an identifier";
  if (identifier.size() >= kRngNameSize) return "has an identifier of more than 17 bytes";
  return IsListed(report, identifier) ? "repeats the identifier " + Quoted(identifier) : "";
}

// Adds what a line says; returns what is wrong with the line, "" if nothing is.
std::string AddLine(const std::string& line, DeviceReport& report) {
  const Parts parts = SplitAt('\t', line);
  for (const std::string& part : parts) {
    if (!IsPlain(part)) return "has a control character, or is not UTF-8";
  }
  if (parts.size() == 2 && parts[0] == "problem") {
    report.problems.push_back(parts[1]);
    return "";
  }
  if (parts.size() != 3 || parts[0] != "device") {
    return "is neither \"device<TAB>identifier<TAB>text\" nor \"problem<TAB>text\"";
  }
  const std::string fault = FaultOfDevice(report, parts[1]);
  if (fault.empty()) report.devices.push_back({parts[1], parts[2]});
  return fault;
}

}  // namespace

DeviceReport ParseDeviceReport(const std::string& text) {
  DeviceReport report;
  const Parts lines = SplitAt('\n', text);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string fault = AddLine(lines[i], report);
    if (fault.empty() || !report.fault.empty()) continue;
    report.fault = "Line " + std::to_string(i + 1) + " of its device report " + fault + ".";
  }
  return report;
}
