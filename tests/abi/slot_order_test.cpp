#include "tests/abi/settings_slots.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <array>
#include <gmock/gmock.h>
#include <type_traits>

using testing::Each;

// The header declares every factory, so that the compiler tells an author whose definition differs.
#define DECLARED(factory) static_assert(std::is_same_v<decltype(factory), IRngProvider*()>);
DECLARED(GetBioQtRng)
DECLARED(GetBioX11Rng)
DECLARED(GetDsdrRng)
DECLARED(GetAccordRng)
DECLARED(GetSobolRng)
DECLARED(GetJacartaGostRng)
DECLARED(GetRuTokenRng)
DECLARED(GetEsmartGostRng)
DECLARED(GetBioKbRng)
DECLARED(GetUnixDevRng)
DECLARED(GetGrandmasterRng)
DECLARED(GetBioCoreRng)

// --- A plug-in written in C

class ProviderSlots : public testing::Test {
 protected:
  void SetUp() override {
    InstallPlugin("dsdr", "slot_table");
    library.Start(nullptr, 1);
    rng = library.GetRng("slots");
    ASSERT_NE(nullptr, rng);
    ClearCallLog();
  }

  const AggregatorLibrary library;
  IRngProvider* rng = nullptr;
};

TEST(ProviderSlotsAtTheStart, AreSetSettingsThenIsAvailable) {
  InstallPlugin("dsdr", "slot_table");
  const AggregatorLibrary library;
  library.Initialize(nullptr);
  EXPECT_EQ("factory SetSettings(null) IsAvailable", CallLog("dsdr"));
}

TEST(ProviderSlotsAtTheStart, SetSettingsReceivesTheObjectOfTheHost) {
  InstallPlugin("dsdr", "slot_table");
  const AggregatorLibrary library;
  library.Initialize(static_cast<IRngSettings*>(SettingsInC()));
  EXPECT_EQ("factory SetSettings IsAvailable", CallLog("dsdr"));
}

TEST_F(ProviderSlots, GetAvailableRngAsksGetFlags) {
  EXPECT_EQ(1, library.GetAvailableRng(nullptr, 0x80000000));
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, ~0x80000001));
  EXPECT_EQ("dsdr.GetFlags dsdr.GetFlags", CallLog());
}

TEST_F(ProviderSlots, GetRngAsksGetNameTwice) {
  EXPECT_EQ(rng, library.GetRng("slots"));
  EXPECT_EQ("dsdr.GetName(null) dsdr.GetName(buffer)", CallLog());
}

TEST_F(ProviderSlots, FinalShutDownCallsReleaseAlone) {
  library.ShutDown();
  EXPECT_EQ("dsdr.Release", CallLog());
}

TEST_F(ProviderSlots, TextOperationsOfAHostLandInTheirs) {
  char text[32] = {};
  EXPECT_EQ(6, rng->GetName(text));
  EXPECT_STREQ("slots", text);
  EXPECT_EQ(24, rng->GetDescription(nullptr));
  EXPECT_EQ(24, rng->GetDescription(text));
  EXPECT_STREQ("A table of eleven slots", text);
  EXPECT_EQ(9, rng->GetHardwareId(text));
  EXPECT_STREQ("device 7", text);
  EXPECT_EQ(
      "dsdr.GetName(buffer) dsdr.GetDescription(null) dsdr.GetDescription(buffer) "
      "dsdr.GetHardwareId(buffer)",
      CallLog());
}

TEST_F(ProviderSlots, OtherOperationsOfAHostLandInTheirs) {
  std::array<unsigned char, 32> bytes{};
  EXPECT_TRUE(rng->SelectDevice("device 7"));
  EXPECT_FALSE(rng->SelectDevice("device 8"));
  EXPECT_TRUE(rng->Generate(bytes.data(), bytes.size()));
  EXPECT_THAT(bytes, Each(0x5A));
  EXPECT_TRUE(rng->IsAvailable());
  EXPECT_FALSE(rng->SelfTest());
  rng->Cancel();
  EXPECT_EQ(0x80000001, rng->GetFlags());
  EXPECT_EQ(
      "dsdr.SelectDevice dsdr.SelectDevice dsdr.Generate dsdr.IsAvailable dsdr.SelfTest "
      "dsdr.Cancel dsdr.GetFlags",
      CallLog());
}

// The aggregator makes these two calls itself; a host's would land where its own do.
TEST_F(ProviderSlots, SetSettingsAndReleaseAreTheLastTwo) {
  rng->SetSettings(nullptr);
  rng->Release();
  EXPECT_EQ("dsdr.SetSettings(null) dsdr.Release", CallLog());
}

// --- A settings object written in C

class SettingsSlots : public testing::Test {
 protected:
  SettingsSlots() { library.Initialize(static_cast<IRngSettings*>(SettingsInC())); }

  const AggregatorLibrary library;
};

TEST_F(SettingsSlots, GetDefaultRngReadsTypeThenHardwareId) {
  DefaultRngInfo info{};
  EXPECT_EQ(1, library.GetDefaultRng(&info, 0));
  EXPECT_STREQ("sobol", info.type);
  EXPECT_STREQ("device 7", info.hardwareId);
  EXPECT_EQ("GetType GetHardwareId", CallLog("settings"));
}

TEST_F(SettingsSlots, SetDefaultRngWritesTypeThenHardwareId) {
  EXPECT_TRUE(library.SetDefaultRng("dsdr", "device 8"));
  EXPECT_EQ("SetType(dsdr) SetHardwareId(device 8)", CallLog("settings"));
}

TEST_F(SettingsSlots, NullHardwareIdPassesThrough) {
  EXPECT_TRUE(library.SetDefaultRng("dsdr", nullptr));
  EXPECT_EQ("SetType(dsdr) SetHardwareId(null)", CallLog("settings"));
}

TEST_F(SettingsSlots, FalseFromSetTypeEndsTheStoring) {
  EXPECT_FALSE(library.SetDefaultRng("refused", "device 8"));
  EXPECT_EQ("SetType(refused)", CallLog("settings"));
}

TEST_F(SettingsSlots, FalseFromSetHardwareIdIsTheResult) {
  EXPECT_FALSE(library.SetDefaultRng("dsdr", "refused"));
}

TEST_F(SettingsSlots, GetDsdrFilePathIsTheLast) {
  EXPECT_STREQ("/nowhere/dsdr.bin", static_cast<IRngSettings*>(SettingsInC())->GetDsdrFilePath());
  EXPECT_EQ("GetDsdrFilePath", CallLog("settings"));
}

// --- The built-in settings object, called from C

TEST(BuiltInSettingsSlots, HoldTheFiveOperationsInOrder) {
  const AggregatorLibrary library;
  IRngSettings* const settings = library.GetDefaultSettings();
  EXPECT_EQ(nullptr, CallGetSlot(settings, 0));
  EXPECT_TRUE(CallSetSlot(settings, 1, "dsdr"));
  EXPECT_STREQ("dsdr", CallGetSlot(settings, 0));
  EXPECT_EQ(nullptr, CallGetSlot(settings, 2));
  EXPECT_TRUE(CallSetSlot(settings, 3, "device 7"));
  EXPECT_STREQ("device 7", CallGetSlot(settings, 2));
  EXPECT_EQ(TreePath("share/dsdr.bin"), CallGetSlot(settings, 4));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\nRandomNumberGeneratorHardwareID=device 7\n",
            ReadFile(TreePath("etc/rng.ini")));
}
