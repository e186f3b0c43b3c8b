#include "tests/support/aggregator_library.h"
#include "tests/support/all_bits.h"
#include "tests/support/fake_settings.h"
#include "tests/support/fakes.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>
#include <new>

using testing::ElementsAre;

// --- GetAvailableRng

TEST(GetAvailableRng, IsZeroBeforeAnyStart) {
  InstallPlugin("unixdev");
  const AggregatorLibrary library;
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
}

TEST(GetAvailableRng, IsZeroAfterTheFinalShutDownAndWritesNothing) {
  InstallPlugins({"unixdev", "dsdr"});
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  library.ShutDown();
  IRngProvider* untouched = reinterpret_cast<IRngProvider*>(1);
  EXPECT_EQ(0, library.GetAvailableRng(&untouched, kAllBits));
  EXPECT_EQ(reinterpret_cast<IRngProvider*>(1), untouched);
}

TEST(GetAvailableRng, MaskZeroNeverMatches) {
  InstallPlugins({"unixdev", "dsdr"});
  Fake("unixdev").flags = kAllBits;
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, 0));
}

TEST(GetAvailableRng, WritesOnlyTheMatchesFromTheFirstEntryOn) {
  InstallPlugins({"dsdr", "accord"});
  Fake("dsdr").flags = 0x1;
  Fake("accord").flags = 0x6;
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  IRngProvider* providers[2] = {};
  EXPECT_EQ(1, library.GetAvailableRng(nullptr, 0x2));
  EXPECT_EQ(1, library.GetAvailableRng(providers, 0x2));
  EXPECT_THAT(providers, ElementsAre(Fake("accord").provider, nullptr));
}

TEST(GetAvailableRng, ProviderWithoutFlagsIsNeverListed) {
  InstallPlugins({"dsdr", "accord"});
  Fake("dsdr").flags = 0;
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_THAT(library.LoadedNames(), ElementsAre("accord"));
}

TEST(GetAvailableRng, HighestBitCounts) {
  InstallPlugin("dsdr");
  Fake("dsdr").flags = 0x80000000;
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ(1, library.GetAvailableRng(nullptr, 0x80000000));
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, 0x7FFFFFFF));
}

TEST(GetAvailableRng, AsksEachProviderOncePerCallAndAfresh) {
  InstallPlugins({"dsdr", "accord"});
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  ClearCallLog();
  Fake("dsdr").flags = 0x8;
  IRngProvider* providers[2] = {};
  EXPECT_EQ(1, library.GetAvailableRng(providers, 0x8));
  EXPECT_EQ("dsdr.GetFlags accord.GetFlags", CallLog());
  Fake("dsdr").flags = 0x1;
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, 0x8));
}

TEST(GetAvailableRng, ListsAllTwelveInCatalogueOrder) {
  InstallX11("whole");
  InstallAllPlugins();
  const AggregatorLibrary library;
  library.Start(nullptr, 12);
  EXPECT_EQ(KindNames(), library.LoadedNames());
}

TEST(GetAvailableRng, ExceptionFromGetFlagsReachesTheCaller) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  Fake("dsdr").hooks["GetFlags"] = [] { throw std::runtime_error("flags"); };
  EXPECT_THROW(library.GetAvailableRng(nullptr, kAllBits), std::runtime_error);
}

// --- GetRng

TEST(GetRng, IsNullBeforeAnyStart) {
  InstallPlugin("unixdev");
  const AggregatorLibrary library;
  EXPECT_EQ(nullptr, library.GetRng("unixdev"));
  EXPECT_EQ("", CallLog());
}

TEST(GetRng, IsNullAfterTheFinalShutDown) {
  InstallPlugin("unixdev");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  library.ShutDown();
  ClearCallLog();
  EXPECT_EQ(nullptr, library.GetRng("unixdev"));
  EXPECT_EQ("", CallLog());
}

TEST(GetRng, IsNullWithAnEmptyList) {
  const AggregatorLibrary library;
  library.Start(nullptr, 0);
  EXPECT_EQ(nullptr, library.GetRng("unixdev"));
  EXPECT_EQ(nullptr, library.GetRng(""));
  EXPECT_EQ(nullptr, library.GetRng(nullptr));  // nothing to compare with: never looked at
}

TEST(GetRng, AsksInListOrderUpToTheFirstMatch) {
  InstallPlugins({"dsdr", "accord", "sobol"});
  const AggregatorLibrary library;
  library.Start(nullptr, 3);
  ClearCallLog();
  EXPECT_EQ(Fake("accord").provider, library.GetRng("accord"));
  EXPECT_EQ("dsdr.GetName dsdr.GetName accord.GetName accord.GetName", CallLog());
}

TEST(GetRng, ComparesWholeNamesAndCase) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  for (const char* name : {"Dsdr", "DSDR", "dsdR", "dsd", "dsdrx", "", " dsdr", "dsdr "}) {
    EXPECT_EQ(nullptr, library.GetRng(name)) << name;
  }
  EXPECT_EQ(Fake("dsdr").provider, library.GetRng("dsdr"));
}

TEST(GetRng, BioIsNotBioQt) {
  InstallX11("whole");
  InstallPlugin("bioqt");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ(nullptr, library.GetRng("bio"));
}

TEST(GetRng, ProviderWhoseSizesDifferIsNameless) {
  InstallPlugins({"dsdr", "accord"});
  Fake("dsdr").name = "nonames";
  Fake("dsdr").nameSize = 8;
  Fake("dsdr").nameAgain = 7;
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  EXPECT_EQ(nullptr, library.GetRng("nonames"));
  EXPECT_EQ(Fake("dsdr").provider, library.GetRng(""));
}

TEST(GetRng, SizeZeroIsNamelessAndAskedOnce) {
  InstallPlugins({"dsdr", "accord"});
  Fake("accord").nameSize = 0;
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  ClearCallLog();
  EXPECT_EQ(Fake("accord").provider, library.GetRng(""));
  EXPECT_EQ("GetName", CallLog("accord"));
}

TEST(GetRng, EmptyNameFindsTheFirstNamelessProvider) {
  InstallPlugins({"dsdr", "accord", "sobol"});
  Fake("accord").nameSize = 0;
  Fake("sobol").nameSize = 0;
  const AggregatorLibrary library;
  library.Start(nullptr, 3);
  EXPECT_EQ(Fake("accord").provider, library.GetRng(""));
}

TEST(GetRng, NameEndsAtTheFirstZeroByteOfALargerBuffer) {
  InstallPlugin("dsdr");
  Fake("dsdr").name = "abc";
  Fake("dsdr").nameSize = 8;
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ(Fake("dsdr").provider, library.GetRng("abc"));
}

TEST(GetRng, BufferIsZeroWhereTheProviderWritesNothing) {
  InstallPlugin("dsdr");
  Fake("dsdr").name = "abc";
  Fake("dsdr").nameSize = 8;
  Fake("dsdr").isTerminated = false;
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ(Fake("dsdr").provider, library.GetRng("abc"));
}

TEST(GetRng, EarlierOfTwoEqualNamesWins) {
  InstallPlugins({"dsdr", "sobol"});
  Fake("sobol").name = "dsdr";
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  EXPECT_EQ(Fake("dsdr").provider, library.GetRng("dsdr"));
  EXPECT_EQ(nullptr, library.GetRng("sobol"));
}

TEST(GetRng, FindsANameThatNoCatalogueRowCarries) {
  InstallPlugin("grandmaster");
  Fake("grandmaster").name = "bio";
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ(Fake("grandmaster").provider, library.GetRng("bio"));
}

TEST(GetRng, AsksForTheNameAfreshAtEachCall) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_NE(nullptr, library.GetRng("dsdr"));
  Fake("dsdr").name = "renamed";
  EXPECT_EQ(nullptr, library.GetRng("dsdr"));
  EXPECT_NE(nullptr, library.GetRng("renamed"));
}

TEST(GetRng, FindsANameTooLongToBeADefault) {
  InstallPlugin("dsdr");
  Fake("dsdr").name = std::string(100, 'n');
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_EQ(Fake("dsdr").provider, library.GetRng(std::string(100, 'n').c_str()));
}

TEST(GetRng, NegativeSizeSurfacesAsBadAlloc) {
  InstallPlugin("dsdr");
  Fake("dsdr").nameSize = -1;
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  EXPECT_THROW(library.GetRng("dsdr"), std::bad_alloc);
}

TEST(GetRng, ExceptionFromGetNameReachesTheCaller) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  Fake("dsdr").hooks["GetName"] = [] { throw std::runtime_error("name"); };
  EXPECT_THROW(library.GetRng("dsdr"), std::runtime_error);
}

TEST(GetRng, ExceptionFromTheSecondGetNameFreesTheBuffer) {  // seen by the leak checker
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  int calls = 0;
  Fake("dsdr").hooks["GetName"] = [&calls] {
    if (++calls == 2) throw std::runtime_error("name");
  };
  EXPECT_THROW(library.GetRng("dsdr"), std::runtime_error);
  EXPECT_EQ(2, calls);
}

// --- IsInteractiveRng

TEST(IsInteractiveRng, KnowsTheFourInteractiveKindsStartedOrNot) {
  const AggregatorLibrary library;
  for (const bool isStarted : {false, true}) {
    if (isStarted) library.Start(nullptr, 0);
    for (const char* name : {"bio", "bioqt", "unixx11", "biokbd"}) {
      EXPECT_EQ(1, library.IsInteractiveRng(name)) << name;
    }
    for (const char* name : {"biocore", "unixdev", "", "Bio", "bioq", "bioqtx", "BIOKBD", "dsdr"}) {
      EXPECT_EQ(0, library.IsInteractiveRng(name)) << name;
    }
  }
}

class IsInteractiveRngFollows : public testing::TestWithParam<const char*> {};

TEST_P(IsInteractiveRngFollows, TheNameVariable) {
  const AggregatorLibrary library;
  const char*& variable = library.NameVariable(GetParam());
  const std::string before = variable;
  variable = "renamed";
  EXPECT_EQ(1, library.IsInteractiveRng("renamed"));
  EXPECT_EQ(0, library.IsInteractiveRng(before.c_str()));
}

INSTANTIATE_TEST_SUITE_P(Each, IsInteractiveRngFollows,
                         testing::Values("rngBioWin", "rngBioQt", "rngBioX11", "rngBioKb"));
