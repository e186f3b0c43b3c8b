#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"
#include "tests/support/tree.h"

#include <cstring>
#include <gmock/gmock.h>

namespace {

const std::string kSeventeen = "12345678901234567";
const std::string kEighteen = kSeventeen + "8";

DefaultRngInfo Filled(char value) {
  DefaultRngInfo info;
  std::memset(&info, value, sizeof info);
  return info;
}

// The record with these texts and every other byte zero.
DefaultRngInfo Record(const std::string& type, const std::string& hardwareId = "") {
  DefaultRngInfo info = {};
  type.copy(info.type, sizeof info.type);
  hardwareId.copy(info.hardwareId, sizeof info.hardwareId);
  return info;
}

// The bytes, for comparing whole records.
std::string Bytes(const DefaultRngInfo& info) {
  return std::string(reinterpret_cast<const char*>(&info), sizeof info);
}

// A library started with settings of the case's making, and the answer of GetDefaultRng.
struct Started {
  explicit Started(std::size_t count = 0) { library.Start(&settings, count); }

  std::int32_t Ask(std::uint32_t mask) { return library.GetDefaultRng(&info, mask); }

  FakeSettings settings;
  DefaultRngInfo info = Filled('?');
  AggregatorLibrary library;
};

}  // namespace

// --- GetDefaultRng

TEST(GetDefaultRng, LeavesTheRecordAloneWhenNotStarted) {
  const AggregatorLibrary library;
  DefaultRngInfo info = Filled('?');
  EXPECT_EQ(0, library.GetDefaultRng(&info, 0xF));
  EXPECT_EQ(Bytes(Filled('?')), Bytes(info));
}

TEST(GetDefaultRng, LeavesTheRecordAloneAfterTheFinalShutDown) {
  Started started;
  started.settings.type = "sobol";
  started.library.ShutDown();
  EXPECT_EQ(0, started.Ask(0xF));
  EXPECT_EQ(Bytes(Filled('?')), Bytes(started.info));
}

TEST(GetDefaultRng, NullRecordGivesZero) {
  Started started;
  started.settings.type = "sobol";
  EXPECT_EQ(0, started.library.GetDefaultRng(nullptr, 0xF));
  EXPECT_EQ("", CallLog("settings"));
}

TEST(GetDefaultRng, ReportsTypeAndHardwareIdWithAllOtherBytesZero) {
  Started started;
  started.settings.type = "Rutoken";
  started.settings.hardwareId = "35A7F1";
  EXPECT_EQ(1, started.Ask(0));
  EXPECT_EQ(Bytes(Record("Rutoken", "35A7F1")), Bytes(started.info));
}

TEST(GetDefaultRng, ReportsATypeWithoutIdentifier) {
  Started started;
  started.settings.type = "sobol";
  EXPECT_EQ(1, started.Ask(0));
  EXPECT_EQ(Bytes(Record("sobol")), Bytes(started.info));
}

TEST(GetDefaultRng, EmptyIdentifierIsNone) {
  Started started;
  started.settings.type = "sobol";
  started.settings.hardwareId = "";
  EXPECT_EQ(1, started.Ask(0));
  EXPECT_EQ(Bytes(Record("sobol")), Bytes(started.info));
}

TEST(GetDefaultRng, AsksForTypeThenIdentifierEvenWithoutAType) {
  Started started;
  EXPECT_EQ(0, started.Ask(0));
  EXPECT_EQ("GetType GetHardwareId", CallLog("settings"));
}

TEST(GetDefaultRng, SeventeenCharactersFit) {
  Started started;
  started.settings.type = kSeventeen;
  started.settings.hardwareId = kSeventeen;
  EXPECT_EQ(1, started.Ask(0));
  EXPECT_EQ(Bytes(Record(kSeventeen, kSeventeen)), Bytes(started.info));
}

TEST(GetDefaultRng, TypeOfEighteenCharactersFailsWithoutFallback) {
  Started started;
  started.settings.type = kEighteen;
  EXPECT_EQ(0, started.Ask(0xF));
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

TEST(GetDefaultRng, IdentifierOfEighteenCharactersFailsBesideAValidType) {
  Started started;
  started.settings.type = "sobol";
  started.settings.hardwareId = kEighteen;
  EXPECT_EQ(0, started.Ask(0xF));
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

TEST(GetDefaultRng, IdentifierOfEighteenCharactersAloneFailsWithoutFallback) {
  Started started;
  started.settings.hardwareId = kEighteen;
  EXPECT_EQ(0, started.Ask(4));
  started.settings.type = "";
  EXPECT_EQ(0, started.Ask(4));
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

TEST(GetDefaultRng, IdentifierWithoutTypeIsIgnored) {
  Started started;
  started.settings.hardwareId = "35A7F1";
  EXPECT_EQ(1, started.Ask(4));
  EXPECT_EQ(Bytes(Record("biokbd")), Bytes(started.info));
}

TEST(GetDefaultRng, EmptyTypeFallsBack) {
  Started started;
  started.settings.type = "";
  EXPECT_EQ(1, started.Ask(4));
  EXPECT_EQ(Bytes(Record("biokbd")), Bytes(started.info));
}

TEST(GetDefaultRng, ReportsAConfiguredTypeThatIsUnknownOrNotLoaded) {
  Started started;
  for (const char* type : {"no-such-kind", "unixdev"}) {
    started.settings.type = type;
    EXPECT_EQ(1, started.Ask(0xF));
    EXPECT_EQ(Bytes(Record(type)), Bytes(started.info));
  }
}

TEST(GetDefaultRng, ConfiguredTypeAsksNoProvider) {
  InstallPlugin("dsdr");
  Started started(1);
  started.settings.type = "dsdr";
  ClearCallLog();
  EXPECT_EQ(1, started.Ask(0xF));
  EXPECT_EQ("settings.GetType settings.GetHardwareId", CallLog());
}

TEST(GetDefaultRng, NullSettingsAlwaysFallBack) {
  const AggregatorLibrary library;
  library.Start(nullptr, 0);
  DefaultRngInfo info = Filled('?');
  EXPECT_EQ(0, library.GetDefaultRng(&info, 3));
  EXPECT_EQ(Bytes(Record("")), Bytes(info));
  EXPECT_EQ(1, library.GetDefaultRng(&info, 4));
  EXPECT_EQ(Bytes(Record("biokbd")), Bytes(info));
}

TEST(GetDefaultRng, FallsBackToBioBeforeBioQt) {
  InstallX11("whole");
  InstallPlugins({"bioqt", "unixx11", "grandmaster"});
  Fake("grandmaster").name = "bio";
  Started started(3);
  EXPECT_EQ(1, started.Ask(0xF));
  EXPECT_EQ(Bytes(Record("bio")), Bytes(started.info));
}

TEST(GetDefaultRng, FallsBackToBioQtBeforeX11) {
  InstallX11("whole");
  InstallPlugins({"bioqt", "unixx11"});
  Started started(2);
  EXPECT_EQ(1, started.Ask(0xF));
  EXPECT_EQ(Bytes(Record("bioqt")), Bytes(started.info));
}

TEST(GetDefaultRng, FallsBackToX11BeforeBioKb) {
  InstallX11("whole");
  InstallPlugins({"unixx11", "biokbd"});
  Started started(2);
  EXPECT_EQ(1, started.Ask(0xC));
  EXPECT_EQ(Bytes(Record("unixx11")), Bytes(started.info));
}

TEST(GetDefaultRng, FallsBackOnlyToKindsInTheMask) {
  InstallX11("whole");
  InstallPlugins({"bioqt", "unixx11"});
  Started started(2);
  EXPECT_EQ(1, started.Ask(0x8 | 0x4));
  EXPECT_EQ(Bytes(Record("unixx11")), Bytes(started.info));
  EXPECT_EQ(0, started.Ask(0x1));
  EXPECT_EQ(0, started.Ask(0xFFFFFFF0));
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

TEST(GetDefaultRng, BioKbIsTheLastResortLoadedOrNotAndAsksNothing) {
  InstallPlugin("dsdr");
  Started started(1);
  ClearCallLog();
  EXPECT_EQ(1, started.Ask(0x4));
  EXPECT_EQ(Bytes(Record("biokbd")), Bytes(started.info));
  EXPECT_EQ("", CallLog("dsdr"));
}

TEST(GetDefaultRng, WithoutTheLastResortAndNothingLoadedGivesZero) {
  Started started;
  EXPECT_EQ(0, started.Ask(0x3));
  EXPECT_EQ(0, started.Ask(0xB));
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

TEST(GetDefaultRng, FallbackFollowsTheNameVariables) {
  InstallPlugin("dsdr");
  Started started(1);
  started.library.NameVariable("rngBioX11") = "dsdr";
  EXPECT_EQ(1, started.Ask(0xF));
  EXPECT_EQ(Bytes(Record("dsdr")), Bytes(started.info));
}

TEST(GetDefaultRng, LastResortIsTheFixedTextWhateverTheNameVariableSays) {
  Started started;
  started.library.NameVariable("rngBioKb") = "renamed";
  EXPECT_EQ(1, started.Ask(0x4));
  EXPECT_EQ(Bytes(Record("biokbd")), Bytes(started.info));
}

TEST(GetDefaultRng, OverlongNameVariableNeverOverrunsTheRecord) {
  InstallPlugin("dsdr");
  Fake("dsdr").name = kEighteen;
  Started started(1);
  started.library.NameVariable("rngBioWin") = kEighteen.c_str();
  EXPECT_EQ(0, started.Ask(0xF));
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

TEST(GetDefaultRng, ExceptionFromTheSettingsReachesTheCaller) {
  Started started;
  Fake("settings").hooks["GetHardwareId"] = [] { throw std::runtime_error("settings"); };
  EXPECT_THROW(started.Ask(0xF), std::runtime_error);
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

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
