#include "tests/aggregator/default_record.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>

// --- SetDefaultRng

TEST(SetDefaultRng, FailsBeforeAnyInitialize) {
  const AggregatorLibrary library;
  EXPECT_FALSE(library.SetDefaultRng("unixdev", nullptr));
}

TEST(SetDefaultRng, StoresTypeThenIdentifier) {
  Started started;
  EXPECT_TRUE(started.library.SetDefaultRng("Rutoken", "35A7F1"));
  EXPECT_EQ("SetType SetHardwareId", CallLog("settings"));
  EXPECT_EQ(1, started.Ask(0));
  EXPECT_EQ(Bytes(Record("Rutoken", "35A7F1")), Bytes(started.info));
}

TEST(SetDefaultRng, NullIdentifierReplacesTheOldOne) {
  Started started;
  started.settings.hardwareId = "35A7F1";
  EXPECT_TRUE(started.library.SetDefaultRng("Rutoken", nullptr));
  EXPECT_EQ("SetType SetHardwareId(null)", CallLog("settings"));
  EXPECT_EQ(1, started.Ask(0));
  EXPECT_EQ(Bytes(Record("Rutoken")), Bytes(started.info));
}

TEST(SetDefaultRng, RefusesWhatIsTooLongOrMissingAndStoresNothing) {
  Started started;
  EXPECT_FALSE(started.library.SetDefaultRng(nullptr, "35A7F1"));
  EXPECT_FALSE(started.library.SetDefaultRng(kEighteen.c_str(), nullptr));
  EXPECT_FALSE(started.library.SetDefaultRng("sobol", kEighteen.c_str()));
  EXPECT_EQ("", CallLog("settings"));
}

TEST(SetDefaultRng, AcceptsSeventeenCharactersAnEmptyTypeAndAnUnknownOne) {
  Started started;
  EXPECT_TRUE(started.library.SetDefaultRng(kSeventeen.c_str(), kSeventeen.c_str()));
  EXPECT_EQ(kSeventeen, started.settings.type);
  EXPECT_TRUE(started.library.SetDefaultRng("", ""));
  EXPECT_EQ("", started.settings.type);
  EXPECT_TRUE(started.library.SetDefaultRng("no-such-kind", nullptr));
}

TEST(SetDefaultRng, DoesNotGoOnAfterAFailedType) {
  Started started;
  started.settings.storesType = false;
  EXPECT_FALSE(started.library.SetDefaultRng("sobol", "35A7F1"));
  EXPECT_EQ("SetType", CallLog("settings"));
}

TEST(SetDefaultRng, TypeStaysWhenTheIdentifierFails) {
  Started started;
  started.settings.storesHardwareId = false;
  EXPECT_FALSE(started.library.SetDefaultRng("sobol", "35A7F1"));
  EXPECT_EQ("sobol", started.settings.type);
}

TEST(SetDefaultRng, WorksAfterAFullStop) {
  Started started;
  started.library.ShutDown();
  EXPECT_TRUE(started.library.SetDefaultRng("sobol", nullptr));
  EXPECT_EQ("sobol", started.settings.type);
}

TEST(SetDefaultRng, AlwaysFailsAfterAStartWithNullSettings) {
  const AggregatorLibrary library;
  library.Start(nullptr, 0);
  EXPECT_FALSE(library.SetDefaultRng("sobol", nullptr));
}

TEST(SetDefaultRng, ExceptionFromTheSettingsReachesTheCaller) {
  Started started;
  Fake("settings").hooks["SetType"] = [] { throw std::runtime_error("settings"); };
  EXPECT_THROW(started.library.SetDefaultRng("sobol", nullptr), std::runtime_error);
}

// --- GetDefaultSettings

TEST(GetDefaultSettings, IsTheSameObjectThroughoutTheLifeOfTheLibrary) {
  const AggregatorLibrary library;
  IRngSettings* const settings = library.GetDefaultSettings();
  ASSERT_NE(nullptr, settings);
  library.Start(settings, 0);
  EXPECT_EQ(settings, library.GetDefaultSettings());
  library.ShutDown();
  EXPECT_EQ(settings, library.GetDefaultSettings());
}

TEST(GetDefaultSettings, StoreADefaultInTheFileAndReportIt) {
  const AggregatorLibrary library;
  library.Start(library.GetDefaultSettings(), 0);
  ASSERT_TRUE(library.SetDefaultRng("unixdev", nullptr));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=unixdev\nRandomNumberGeneratorHardwareID=\n",
            ReadFile(TreePath("etc/rng.ini")));
  DefaultRngInfo info = Filled('?');
  EXPECT_EQ(1, library.GetDefaultRng(&info, 0));
  EXPECT_EQ(Bytes(Record("unixdev")), Bytes(info));
}
