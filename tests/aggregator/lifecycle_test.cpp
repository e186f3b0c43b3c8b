#include "tests/aggregator/start_up_log.h"
#include "tests/support/all_bits.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

const std::vector<std::string> kKinds = KindNames();

}  // namespace

// --- The walk

TEST(Initialize, WithoutAnyPluginStartsWithAnEmptyListAndProbesOncePerRow) {
  const AggregatorLibrary library;
  library.Initialize(nullptr);
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
  EXPECT_EQ(Probes(12), CallLog());
}

TEST(Initialize, HandlesEachRowToItsEndBeforeTheNext) {
  InstallPlugins({"dsdr", "sobol", "biocore"});
  Fake("sobol").isAvailable = false;
  const AggregatorLibrary library;
  library.Initialize(nullptr);
  EXPECT_EQ(Join({Probes(3), Kept("dsdr"), Probes(2), Kept("sobol"), "sobol.Release sobol.closed",
                  Probes(7), Kept("biocore")}),
            CallLog());
  EXPECT_THAT(library.LoadedNames(), ElementsAre("dsdr", "biocore"));
}

TEST(Initialize, WithADisplayTriesAllRowsInOrder) {
  InstallX11("whole");
  InstallAllPlugins();
  const AggregatorLibrary library;
  library.Initialize(nullptr);
  std::vector<std::string> calls;
  for (const std::string& kind : kKinds) {
    calls.push_back("x11.opened x11.XOpenDisplay x11.XCloseDisplay x11.closed");
    calls.push_back(Kept(kind));
  }
  EXPECT_EQ(Join(calls), CallLog());
  EXPECT_EQ(kKinds, library.LoadedNames());
}

class InitializeWithout : public testing::TestWithParam<const char*> {};

TEST_P(InitializeWithout, ADisplaySkipsTheTwoRowsThatNeedOneAndNoOther) {
  InstallX11(GetParam());
  InstallAllPlugins();
  const AggregatorLibrary library;
  library.Initialize(nullptr);
  EXPECT_EQ(std::vector<std::string>(kKinds.begin() + 2, kKinds.end()), library.LoadedNames());
  EXPECT_EQ("", CallLog("bioqt"));
  EXPECT_EQ("", CallLog("unixx11"));
}

INSTANTIATE_TEST_SUITE_P(XLibrary, InitializeWithout,
                         testing::Values("refusing", "absent", "no_open", "no_close"));

TEST(Initialize, AsksForTheDisplayAfreshForEachRow) {
  InstallX11("whole");
  InstallPlugins({"bioqt", "unixx11", "dsdr"});
  Fake("bioqt").hooks["IsAvailable"] = [] { InstallX11("refusing"); };
  const AggregatorLibrary library;
  library.Initialize(nullptr);
  EXPECT_THAT(library.LoadedNames(), ElementsAre("bioqt", "dsdr"));
}

TEST(Initialize, AsksForTheDisplayAfreshAtEachStart) {
  InstallPlugins({"bioqt", "dsdr"});
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  library.ShutDown();
  EXPECT_EQ(12U, ProbesMade());
  InstallX11("whole");
  library.Start(nullptr, 2);
  EXPECT_EQ(24U, ProbesMade());
}

TEST(Initialize, LoadsNothingForBio) {
  InstallX11("whole");
  InstallAllPlugins();
  const AggregatorLibrary library;
  library.Start(nullptr, 12);
  EXPECT_EQ(nullptr, library.GetRng("bio"));
  EXPECT_STREQ("bio", library.NameVariable("rngBioWin"));
}

TEST(Initialize, IsNotMovedByAChangedNameVariable) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.NameVariable("rngDsdr") = "renamed";
  library.Start(nullptr, 1);
  EXPECT_NE(nullptr, library.GetRng("dsdr"));
}

// --- Plug-ins that are skipped

TEST(Initialize, UnavailableProviderIsReleasedOnceAndItsLibraryClosedBeforeTheNextRow) {
  InstallPlugins({"dsdr", "accord"});
  Fake("dsdr").isAvailable = false;
  bool wasMapped = true;
  Fake("accord").hooks["opened"] = [&wasMapped] { wasMapped = IsMapped("librngdsdr.so"); };
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ("opened factory SetSettings IsAvailable Release closed", CallLog("dsdr"));
  EXPECT_FALSE(wasMapped);
  library.ShutDown();
  EXPECT_EQ(1U, CountCalls("dsdr", "Release"));
}

TEST(Initialize, NullFromTheFactoryClosesTheLibraryAndCallsNothingElse) {
  InstallPlugins({"dsdr", "accord"});
  Fake("dsdr").factoryGivesNull = true;
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ("opened factory closed", CallLog("dsdr"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST(Initialize, LibraryWithoutTheFactoryIsClosed) {
  InstallPlugin("dsdr", "no_factory");
  InstallPlugin("accord");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ("opened closed", CallLog("dsdr"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST(Initialize, FileThatIsNoLibraryIsSkipped) {
  WriteFile(TreePath("lib/librngdsdr.so"), "not a library\n");
  WriteFile(TreePath("lib/librngaccord.so"), "");
  InstallPlugin("sobol");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_THAT(library.LoadedNames(), ElementsAre("sobol"));
}

// --- How plug-ins are opened

TEST(Initialize, LoadsAPluginWithAFunctionThatNobodyHas) {
  InstallPlugin("unixdev", "unresolved_function");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_THAT(library.LoadedNames(), ElementsAre("unixdev"));
}

TEST(Initialize, LetsLaterPluginsUseTheFunctionsOfEarlierOnes) {
  InstallPlugin("sobol");
  InstallPlugin("unixdev", "unresolved_function");
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  void* const askSobol = ::dlsym(RTLD_DEFAULT, "AskSobol");
  ASSERT_NE(nullptr, askSobol);
  EXPECT_EQ(Fake("sobol").provider, reinterpret_cast<RngFactory>(askSobol)());
}

// --- Settings

TEST(Initialize, HandsItsSettingsToEveryProvider) {
  InstallPlugins({"dsdr", "accord"});
  FakeSettings settings;
  const AggregatorLibrary library;
  library.Start(&settings, 2);
  EXPECT_EQ(&settings, Fake("dsdr").settings);
  EXPECT_EQ(&settings, Fake("accord").settings);
  EXPECT_EQ("", CallLog("settings"));
}

TEST(Initialize, HandsNullSettingsThrough) {
  InstallPlugins({"dsdr", "accord"});
  FakeSettings settings;
  Fake("dsdr").settings = &settings;
  Fake("accord").settings = &settings;
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  EXPECT_EQ(nullptr, Fake("dsdr").settings);
  EXPECT_EQ(nullptr, Fake("accord").settings);
  EXPECT_FALSE(library.SetDefaultRng("sobol", nullptr));
}

TEST(Initialize, SecondCallKeepsTheFirstSettingsAndLoadsNothing) {
  InstallPlugin("dsdr");
  FakeSettings first;
  FakeSettings second;
  const AggregatorLibrary library;
  library.Start(&first, 1);
  ClearCallLog();
  library.Initialize(&second);
  EXPECT_EQ("", CallLog());
  EXPECT_EQ(&first, Fake("dsdr").settings);
  ExpectCurrentSettings(library, first);
  EXPECT_EQ(std::nullopt, second.type);
}

// --- The start count

TEST(StartCount, OneShutDownOfTwoLeavesEverythingLoaded) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  library.Initialize(nullptr);
  ClearCallLog();
  library.ShutDown();
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_NE(nullptr, library.GetRng("dsdr"));
  EXPECT_EQ(0U, CountCalls("dsdr", "Release"));
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(1U, CountCalls("dsdr", "Release"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST(StartCount, EveryFurtherInitializeNeedsItsShutDown) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  for (int call = 0; call < 5; ++call) library.Initialize(nullptr);
  EXPECT_EQ(12U, ProbesMade());
  for (int call = 0; call < 4; ++call) library.ShutDown();
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_EQ("opened factory SetSettings IsAvailable", CallLog("dsdr"));
}

TEST(StartCount, IsZeroAndNotStartedWhenTheLibraryIsLoaded) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
  EXPECT_EQ("", CallLog());
}

TEST(StartCount, ShutDownTooManyIsADebtThatInitializePaysBack) {
  InstallPlugin("dsdr");
  FakeSettings settings;
  const AggregatorLibrary library;
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
  library.Initialize(&settings);
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ("", CallLog());
  EXPECT_FALSE(library.SetDefaultRng("sobol", nullptr));  // its settings were not stored
  library.Start(&settings, 1);
  ExpectCurrentSettings(library, settings);
}

TEST(StartCount, DebtIsNeverClamped) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  for (int call = 0; call < 3; ++call) library.ShutDown();
  for (int call = 0; call < 3; ++call) {
    library.Initialize(nullptr);
    EXPECT_FALSE(library.IsInitialized());
    EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
  }
  EXPECT_EQ("", CallLog());
  library.Start(nullptr, 1);
}

TEST(StartCount, ShutDownAfterAStopReleasesNothingAgain) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  library.ShutDown();
  ClearCallLog();
  library.ShutDown();
  library.Initialize(nullptr);
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ("", CallLog());
  library.Start(nullptr, 1);
}

TEST(StartCount, NewStartLoadsEveryPluginAgainWithTheNewSettings) {
  InstallPlugins({"dsdr", "accord"});
  FakeSettings first;
  FakeSettings second;
  const AggregatorLibrary library;
  library.Start(&first, 2);
  library.ShutDown();
  ExpectCurrentSettings(library, first);  // kept after the stop
  ClearCallLog();
  library.Start(&second, 2);
  EXPECT_EQ("opened factory SetSettings IsAvailable GetFlags", CallLog("dsdr"));
  EXPECT_EQ("opened factory SetSettings IsAvailable GetFlags", CallLog("accord"));
  EXPECT_EQ(&second, Fake("dsdr").settings);
  EXPECT_EQ(&second, Fake("accord").settings);
  ExpectCurrentSettings(library, second);
}

// --- Shut-down

TEST(ShutDown, ReleasesThenClosesEachProviderInListOrder) {
  InstallPlugins({"dsdr", "accord", "biocore"});
  const AggregatorLibrary library;
  library.Start(nullptr, 3);
  ClearCallLog();
  library.ShutDown();
  EXPECT_EQ("dsdr.Release dsdr.closed accord.Release accord.closed biocore.Release biocore.closed",
            CallLog());
  for (const char* file : {"librngdsdr.so", "librngaccord.so", "librngbiocore.so"}) {
    EXPECT_FALSE(IsMapped(file)) << file;
  }
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
}

TEST(ShutDown, LeavesNothingInTheListForTheNextStart) {
  InstallPlugins({"dsdr", "accord"});
  Fake("accord").nameSize = 0;
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  library.ShutDown();
  library.Start(nullptr, 2);
  // An element left behind would be the first without a name.
  EXPECT_EQ(Fake("accord").provider, library.GetRng(""));
}

TEST(ShutDown, HidesAReleasedProviderFromItsOwnStaticDestructors) {
  InstallPlugins({"dsdr", "accord"});
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  ClearCallLog();
  std::int32_t listed = -1;
  Fake("dsdr").hooks["closed"] = [&] { listed = library.GetAvailableRng(nullptr, kAllBits); };
  library.ShutDown();
  EXPECT_EQ(1, listed);
  EXPECT_EQ("Release closed", CallLog("dsdr"));
}

TEST(ShutDown, LeavesALibraryToItsOtherHolder) {
  InstallPlugin("dsdr");
  void* const holder = ::dlopen(TreePath("lib/librngdsdr.so").c_str(), RTLD_LAZY);
  ASSERT_NE(nullptr, holder);
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  library.ShutDown();
  EXPECT_TRUE(IsMapped("librngdsdr.so"));
  ::dlclose(holder);
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}
