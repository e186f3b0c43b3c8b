#include "tests/settings/default_settings.h"
#include "tests/support/allocation.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>

TEST(DefaultSettingsObject, FreesItsTextsAtUnload) {
  const std::string value(100, 'v');
  std::size_t alive[2] = {};
  for (std::size_t& left : alive) {  // the first round also fills what the fakes keep
    AggregatorLibrary library;
    IRngSettings& settings = *library.GetDefaultSettings();
    EXPECT_TRUE(settings.SetType(value.c_str()));
    EXPECT_TRUE(settings.SetHardwareId(value.c_str()));
    EXPECT_EQ(value, settings.GetType());
    EXPECT_EQ(value, settings.GetHardwareId());
    EXPECT_NE(nullptr, settings.GetDsdrFilePath());
    library.Close();
    EXPECT_FALSE(IsMapped("librngaggregator.so"));
    ClearCallLog();
    left = AllocationsAlive();
  }
  EXPECT_EQ(alive[0], alive[1]);
}

// --- Exhausted memory

class ExhaustedMemory : public DefaultSettings {
 protected:
  // Repeats an operation, failing its first allocation after the service was asked, then its second
  // and so on, until it needs no more; returns how often it failed.
  std::size_t CountFailures(const std::function<void()>& operation) {
    std::size_t number = 0;
    for (const auto* asked : {kAskedForSettings, kAskedForData}) {
      Fake("known_path").hooks[asked] = [&number] { FailAllocation(number); };
    }
    for (number = 1;; ++number) {
      try {
        operation();
        FailAllocation(0);
        return number - 1;
      } catch (const std::bad_alloc&) {
        afterFailure();
      }
    }
  }

  std::function<void()> afterFailure = [] {};
};

TEST_F(ExhaustedMemory, ReachesTheCallerOfAGet) {
  const std::string value(100, 'v');
  WriteDevices("RandomNumberGeneratorType=" + value + "\nRandomNumberGeneratorHardwareID=" + value);
  const char* text = nullptr;
  EXPECT_LT(0U, CountFailures([&] { text = settings.GetType(); }));
  EXPECT_EQ(value, text);
  EXPECT_LT(0U, CountFailures([&] { text = settings.GetHardwareId(); }));
  EXPECT_EQ(value, text);
  EXPECT_LT(0U, CountFailures([&] { text = settings.GetDsdrFilePath(); }));
  EXPECT_EQ(TreePath("share/dsdr.bin"), text);
}

TEST_F(ExhaustedMemory, ReachesTheCallerOfASetAndTheFileIsUntouched) {
  WriteFile(SettingsFile(), "[Devices]\r\n");
  afterFailure = [] { EXPECT_EQ("[Devices]\r\n", ReadFile(SettingsFile())); };
  EXPECT_LT(0U, CountFailures([&] { EXPECT_TRUE(settings.SetType("dsdr")); }));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\n", ReadFile(SettingsFile()));

  WriteFile(SettingsFile(), "[Devices]\r\n");
  EXPECT_LT(0U, CountFailures([&] { EXPECT_TRUE(settings.SetHardwareId("A1")); }));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorHardwareID=A1\n", ReadFile(SettingsFile()));
}
