#include "settings/default_settings.h"

#include "settings/directories.h"
#include "settings/known_path.h"
#include "settings/profile_file.h"

namespace {

constexpr char kSection[] = "Devices";
constexpr char kTypeKey[] = "RandomNumberGeneratorType";
constexpr char kHardwareIdKey[] = "RandomNumberGeneratorHardwareID";
constexpr std::uint32_t kValueSize = 512;

// Returns the directory, empty when it cannot be found.
std::string GetDataDirectory() { return FindDataDirectory().value_or(""); }

// Returns the path of rng.ini, empty when its directory cannot be found. The separator is always
// added, because directories are used exactly as the service returns them.
std::string GetSettingsFilePath() {
  std::optional<std::string> directory = FindSettingsDirectory();
  return directory ? std::move(*directory) + "/rng.ini" : "";
}

// Reads the value of `key` and keeps it in `last`.
const char* ReadSetting(const char* key, std::string& last) {
  char value[kValueSize] = {};
  const std::uint32_t length =
      ReadProfileString(kSection, key, nullptr, value, kValueSize, GetSettingsFilePath().c_str());
  if (length == kValueSize - 1) return nullptr;  // cut: `last` keeps what it held
  last = value;
  return last.empty() ? nullptr : last.c_str();
}

bool WriteSetting(const char* key, const char* value) {
  return WriteProfileString(kSection, key, value, GetSettingsFilePath().c_str()) != 0;
}

}  // namespace

const char* DefaultSettingsImpl::GetType() { return ReadSetting(kTypeKey, lastType); }

bool DefaultSettingsImpl::SetType(const char* type) {
  if (!CreateParentDirectories(GetSettingsFilePath().c_str())) return false;
  return WriteSetting(kTypeKey, type);  // looks up the directory again
}

const char* DefaultSettingsImpl::GetHardwareId() {
  return ReadSetting(kHardwareIdKey, lastHardwareId);
}

// Creates no directories, unlike SetType: the type of a default is stored first.
bool DefaultSettingsImpl::SetHardwareId(const char* hardwareId) {
  return WriteSetting(kHardwareIdKey, hardwareId);
}

const char* DefaultSettingsImpl::GetDsdrFilePath() {
  if (dsdrFilePath.empty()) dsdrFilePath = GetDataDirectory() + "/dsdr.bin";
  return dsdrFilePath.c_str();
}
