// Reports the hardware device to administrators' tools.

#include "plugins/unixdev/report.h"

#include "plugins/unixdev/hardware_device.h"
#include "plugins/unixdev/open_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <string>

namespace {

IRngSettings* g_settings = nullptr;
std::string g_report;  // written by the call without a buffer, returned by the call with one

// The name comes from a driver, so it may hold anything.
std::string MakePlain(std::string text) {
  text.erase(std::min(text.find('\n'), text.size()));
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return text;
}

// Which generator the kernel has chosen; "none", or empty if the kernel does not say.
std::string FindSource() {
  const OpenFile file("/sys/class/misc/hw_random/rng_current");
  char text[64];
  const ssize_t size = file.Read(text, sizeof text);
  return size > 0 ? MakePlain(std::string(text, static_cast<std::size_t>(size))) : "";
}

std::string DescribeFault(const OpenFile& device) {
  const std::string path = kHardwarePath;
  if (device.Error() == ENOENT) {
    return "There is no " + path +
           ". Load the driver of a hardware generator. In a container, pass the device through to "
           "it.";
  }
  if (device.Error() == EACCES || device.Error() == EPERM) {
    return "This user may not read " + path +
           ". Add a udev rule that lets a group read it, and add this user to the group.";
  }
  if (device.Error() != 0)
    return path + " cannot be opened: " + std::strerror(device.Error()) + '.';
  return path + " is not a character device. Remove it, and restart the machine.";
}

bool IsConfigured() {
  const char* const type = g_settings ? g_settings->GetType() : nullptr;
  if (!type || std::strcmp(type, "unixdev") != 0) return false;
  const char* const device = g_settings->GetHardwareId();
  return device && std::strcmp(device, kHardwareId) == 0;
}

std::string Problem(const std::string& text) {
  return IsConfigured() ? "problem\t" + text + '\n' : "";
}

// Opens the device but does not read it, which would take bytes from a draw.
std::string WriteReport() {
  const OpenFile device(kHardwarePath);
  if (!device.IsCharacterDevice()) return Problem(DescribeFault(device));
  const std::string source = FindSource();
  if (source == "none") {
    return Problem(std::string("The kernel has no source for ") + kHardwarePath +
                   ". Connect a hardware generator, or load its driver.");
  }
  return std::string("device\t") + kHardwareId + "\tThe kernel's hardware generator " +
         kHardwarePath + (source.empty() ? "" : ", source " + source) + '\n';
}

// The settings may throw, and memory may run out.
std::string WriteReportOrNothing() {
  try {
    return WriteReport();
  } catch (const std::exception&) {
    return "";
  }
}

}  // namespace

void SetSettingsOfReport(IRngSettings* settings) { g_settings = settings; }

std::int32_t GetRngReport(char* buffer) {
  if (!buffer) g_report = WriteReportOrNothing();
  if (g_report.empty()) return 0;
  if (buffer) std::memcpy(buffer, g_report.c_str(), g_report.size() + 1);
  return static_cast<std::int32_t>(g_report.size() + 1);
}
