#ifndef SETTINGS_DEFAULT_SETTINGS_H
#define SETTINGS_DEFAULT_SETTINGS_H

#include <string>

#include <rngaggregator/provider.h>

/// The built-in settings: the default kind and device, kept in the section "Devices" of `rng.ini`
/// in the settings directory, and the path of "dsdr.bin" in the data directory.
///
/// `GetType` and `GetHardwareId` look up the directory and read the file afresh at each call; the
/// fields only keep the returned text alive until the next call of the same operation. The path of
/// the data file is computed once and kept, even if the directory cannot be found: it is then
/// "/dsdr.bin".
///
/// Threads: not locked; concurrent calls of one operation on one object are not supported.
class DefaultSettingsImpl final : public IRngSettings {
 public:
  DefaultSettingsImpl() = default;
  DefaultSettingsImpl(const DefaultSettingsImpl&) = delete;
  DefaultSettingsImpl& operator=(const DefaultSettingsImpl&) = delete;

  const char* GetType() override;
  bool SetType(const char* type) override;
  const char* GetHardwareId() override;
  bool SetHardwareId(const char* hardwareId) override;
  const char* GetDsdrFilePath() override;

 private:
  std::string dsdrFilePath;
  std::string lastType;
  std::string lastHardwareId;
};

#endif
