#include "tests/aggregator/start_up_log.h"
#include "tests/support/all_bits.h"
#include "tests/support/allocation.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>
#include <new>
#include <ostream>
#include <stdexcept>

using testing::ElementsAre;

namespace {

std::function<void()> Throw() {
  return [] { throw std::runtime_error("from the plug-in"); };
}

}  // namespace

// --- Exceptions at start-up

struct Fault {
  const char* operation;
  const char* log;  // of the failing plug-in, whole
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.operation; }

class InitializeThrowing : public testing::TestWithParam<Fault> {
 protected:
  InitializeThrowing() {
    InstallPlugins({"dsdr", "accord", "sobol"});
    Fake("accord").hooks[GetParam().operation] = Throw();
    Fake("accord").isAvailable = std::string(GetParam().operation) != "Release";
    EXPECT_THROW(library.Initialize(&settings), std::runtime_error);
  }

  FakeSettings settings;
  const AggregatorLibrary library;
};

TEST_P(InitializeThrowing, ClosesTheLibraryOfTheFailingRowWithoutReleasing) {
  EXPECT_EQ(GetParam().log, CallLog("accord"));
  EXPECT_FALSE(IsMapped("librngaccord.so"));
}

TEST_P(InitializeThrowing, KeepsTheEarlierRowsAndLeavesOutTheLaterOnes) {
  EXPECT_THAT(library.LoadedNames(), ElementsAre("dsdr"));
  EXPECT_EQ("", CallLog("sobol"));
  EXPECT_EQ(4U, ProbesMade());
}

TEST_P(InitializeThrowing, KeepsTheSettings) { ExpectCurrentSettings(library, settings); }

TEST_P(InitializeThrowing, LeavesTheCountRaisedByOneAndTheLockFree) {
  EXPECT_TRUE(library.IsInitialized());
  library.Initialize(nullptr);
  EXPECT_EQ("", CallLog("sobol"));  // started already: it walks no further
  library.ShutDown();
  EXPECT_TRUE(library.IsInitialized());
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(1U, CountCalls("dsdr", "Release"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST_P(InitializeThrowing, CanBeRepeatedAfterAShutDown) {
  library.ShutDown();
  Fake("accord").hooks.clear();
  Fake("accord").isAvailable = true;
  library.Start(&settings, 3);
  EXPECT_THAT(library.LoadedNames(), ElementsAre("dsdr", "accord", "sobol"));
}

INSTANTIATE_TEST_SUITE_P(
    From, InitializeThrowing,
    testing::Values(Fault{"factory", "opened factory closed"},
                    Fault{"SetSettings", "opened factory SetSettings closed"},
                    Fault{"IsAvailable", "opened factory SetSettings IsAvailable closed"},
                    Fault{"Release", "opened factory SetSettings IsAvailable Release closed"}),
    [](const auto& instance) { return instance.param.operation; });

TEST(Initialize, LeavesTheLibraryOpenWhenTheListCannotGrow) {
  InstallPlugins({"dsdr", "sobol", "unixdev"});
  Fake("sobol").hooks["IsAvailable"] = [] { FailAllocation(1); };
  FakeSettings settings;
  AggregatorLibrary library;
  EXPECT_THROW(library.Initialize(&settings), std::bad_alloc);
  EXPECT_THAT(library.LoadedNames(), ElementsAre("dsdr"));
  EXPECT_EQ("opened factory SetSettings IsAvailable", CallLog("sobol"));
  EXPECT_EQ("", CallLog("unixdev"));
  ExpectCurrentSettings(library, settings);
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
  library.Close();
  EXPECT_TRUE(IsMapped("librngsobol.so"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST(Initialize, StartsAgainAfterAListThatCouldNotGrow) {
  InstallPlugins({"dsdr", "sobol", "unixdev"});
  Fake("sobol").hooks["IsAvailable"] = [] { FailAllocation(1); };
  const AggregatorLibrary library;
  EXPECT_THROW(library.Initialize(nullptr), std::bad_alloc);
  library.ShutDown();
  Fake("sobol").hooks.clear();
  ClearCallLog();
  library.Start(nullptr, 3);
  EXPECT_EQ("factory SetSettings IsAvailable GetFlags", CallLog("sobol"));  // still open before
}

TEST(Initialize, OutOfMemoryAtAFileNameLeavesTheRowUntried) {
  InstallPlugins({"sobol", "JacartaGost", "unixdev"});
  // The first allocation after this is the list's, the second the next row's long file name.
  Fake("sobol").hooks["IsAvailable"] = [] { FailAllocation(2); };
  FakeSettings settings;
  const AggregatorLibrary library;
  EXPECT_THROW(library.Initialize(&settings), std::bad_alloc);
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_THAT(library.LoadedNames(), ElementsAre("sobol"));
  EXPECT_EQ("", CallLog("JacartaGost"));
  EXPECT_EQ("", CallLog("unixdev"));
  EXPECT_EQ(5U, ProbesMade());  // the name is copied before the probe
  ExpectCurrentSettings(library, settings);
  library.ShutDown();
  Fake("sobol").hooks.clear();
  library.Start(&settings, 3);
}

// --- Exceptions at shut-down

class ShutDownThrowing : public testing::Test {
 protected:
  ShutDownThrowing() {
    InstallPlugins({"dsdr", "accord", "sobol"});
    library.Start(&settings, 3);
    ClearCallLog();
    Fake("accord").hooks["Release"] = Throw();
    EXPECT_THROW(library.ShutDown(), std::runtime_error);
    Fake("accord").hooks.clear();
  }

  FakeSettings settings;
  AggregatorLibrary library;
};

TEST_F(ShutDownThrowing, HasReleasedAndClosedTheEarlierProvidersOnly) {
  EXPECT_EQ("dsdr.Release dsdr.closed accord.Release", CallLog());
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
  EXPECT_TRUE(IsMapped("librngaccord.so"));
  EXPECT_TRUE(IsMapped("librngsobol.so"));
}

TEST_F(ShutDownThrowing, HasStoppedAndKeepsTheSettings) {
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(nullptr, library.GetRng("sobol"));
  ExpectCurrentSettings(library, settings);
}

TEST_F(ShutDownThrowing, KeepsTheOthersListed) {
  EXPECT_THAT(library.LoadedNames(), ElementsAre("accord", "sobol"));
}

TEST_F(ShutDownThrowing, LeavesTheCountAtZeroAndTheLockFree) {
  ClearCallLog();
  library.ShutDown();
  library.Initialize(nullptr);
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ("", CallLog());
}

TEST_F(ShutDownThrowing, NextStartAddsToWhatIsLeftAndItsStopEndsAll) {
  ClearCallLog();
  library.Initialize(&settings);
  EXPECT_THAT(library.LoadedNames(), ElementsAre("accord", "sobol", "dsdr", "accord", "sobol"));
  EXPECT_NE(nullptr, library.GetRng("dsdr"));  // found behind the first one's empty place
  EXPECT_EQ(nullptr, library.GetRng(""));
  ClearCallLog();
  library.ShutDown();
  EXPECT_EQ(
      "accord.Release sobol.Release dsdr.Release dsdr.closed accord.Release accord.closed "
      "sobol.Release sobol.closed",
      CallLog());
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
}
