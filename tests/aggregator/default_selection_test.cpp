#include "tests/aggregator/default_record.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>

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
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
}

TEST(GetDefaultRng, BitsWithoutAKindAreIgnored) {
  InstallX11("whole");
  InstallPlugins({"bioqt", "unixx11"});
  Started started(2);
  for (const std::uint32_t others : {0x10U, 0x8000U, 0x10000U, 0x80000000U, 0xFFFFFFF0U}) {
    EXPECT_EQ(0, started.Ask(others));
    EXPECT_EQ(Bytes(Record("")), Bytes(started.info)) << others;
    for (const auto& [bit, kind] : {std::pair(2U, "bioqt"), {8U, "unixx11"}, {4U, "biokbd"}}) {
      EXPECT_EQ(1, started.Ask(others | bit));
      EXPECT_EQ(Bytes(Record(kind)), Bytes(started.info)) << others;
    }
  }
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

TEST(GetDefaultRng, EmptyNameVariableMeansTheFirstNamelessProvider) {
  InstallPlugin("dsdr");
  Fake("dsdr").nameSize = 0;
  Started started(1);
  started.library.NameVariable("rngBioWin") = "";
  EXPECT_EQ(1, started.Ask(0x1));
  EXPECT_EQ(Bytes(Record("")), Bytes(started.info));
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
