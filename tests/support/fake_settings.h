#ifndef TESTS_SUPPORT_FAKE_SETTINGS_H
#define TESTS_SUPPORT_FAKE_SETTINGS_H

#include "tests/support/fakes.h"

#include <optional>
#include <string>

/// A host's own settings object. Logs its calls as "settings".
class FakeSettings final : public IRngSettings {
 public:
  std::optional<std::string> type;
  std::optional<std::string> hardwareId;
  bool storesType = true;
  bool storesHardwareId = true;

  const char* GetType() override {
    RecordCall("settings", "GetType");
    return type ? type->c_str() : nullptr;
  }
  bool SetType(const char* text) override {
    RecordCall("settings", "SetType");
    if (storesType) type = text;
    return storesType;
  }
  const char* GetHardwareId() override {
    RecordCall("settings", "GetHardwareId");
    return hardwareId ? hardwareId->c_str() : nullptr;
  }
  bool SetHardwareId(const char* text) override {
    RecordCall("settings", text ? "SetHardwareId" : "SetHardwareId(null)");
    if (storesHardwareId) hardwareId = text ? std::optional<std::string>(text) : std::nullopt;
    return storesHardwareId;
  }
  const char* GetDsdrFilePath() override {
    RecordCall("settings", "GetDsdrFilePath");
    return "/nowhere/dsdr.bin";
  }
};

#endif
