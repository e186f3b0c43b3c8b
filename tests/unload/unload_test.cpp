#include "tests/support/aggregator_library.h"
#include "tests/support/all_bits.h"
#include "tests/support/allocation.h"
#include "tests/support/fake_settings.h"
#include "tests/support/tree.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <new>
#include <ostream>
#include <stdexcept>

namespace {

// Long enough to be kept on the heap by whoever copies it.
constexpr char kLongText[] = "a kind with a name that fits no small buffer";

// The mappings of files that the case installed.
std::size_t CountMappings() {
  const std::string mappings = ReadFile("/proc/self/maps");
  const std::string file = TreePath("lib/");
  std::size_t count = 0;
  for (std::size_t at = 0; (at = mappings.find(file, at)) != std::string::npos; ++at) ++count;
  return count;
}

struct EndState {
  const char* name;
  void (*reach)(const AggregatorLibrary& library);
};

void PrintTo(const EndState& state, std::ostream* out) { *out << state.name; }

std::string NameOf(const testing::TestParamInfo<EndState>& instance) { return instance.param.name; }

constexpr EndState kEndStates[] = {
    {"NeverStarted", [](const AggregatorLibrary&) {}},
    {"Stopped",
     [](const AggregatorLibrary& library) {
       library.Start(nullptr, 3);
       library.ShutDown();
     }},
    {"Started", [](const AggregatorLibrary& library) { library.Start(nullptr, 3); }},
    {"StartedTwice",
     [](const AggregatorLibrary& library) {
       library.Start(nullptr, 3);
       library.Initialize(nullptr);
     }},
    {"Negative", [](const AggregatorLibrary& library) { library.ShutDown(); }},
    {"NegativeAfterAStop",
     [](const AggregatorLibrary& library) {
       library.Start(nullptr, 3);
       library.ShutDown();
       library.ShutDown();
     }},
    {"StartThatThrew",
     [](const AggregatorLibrary& library) {
       Fake("accord").hooks["SetSettings"] = [] { throw std::runtime_error("start"); };
       EXPECT_THROW(library.Initialize(nullptr), std::runtime_error);
     }},
    {"StopThatThrew",
     [](const AggregatorLibrary& library) {
       library.Start(nullptr, 3);
       Fake("accord").hooks["Release"] = [] { throw std::runtime_error("stop"); };
       EXPECT_THROW(library.ShutDown(), std::runtime_error);
     }},
    {"QueriedAndConfigured",
     [](const AggregatorLibrary& library) {
       library.Start(library.GetDefaultSettings(), 3);
       EXPECT_NE(nullptr, library.GetRng("sobol"));
       EXPECT_TRUE(library.SetDefaultRng("sobol", nullptr));
       DefaultRngInfo info;
       EXPECT_EQ(1, library.GetDefaultRng(&info, 0));
       EXPECT_TRUE(library.GetDefaultSettings()->SetType(kLongText));
       EXPECT_STREQ(kLongText, library.GetDefaultSettings()->GetType());
       EXPECT_NE(nullptr, library.GetDefaultSettings()->GetDsdrFilePath());
     }},
};

}  // namespace

class UnloadFrom : public testing::TestWithParam<EndState> {
 protected:
  UnloadFrom() { InstallPlugins({"dsdr", "accord", "sobol"}); }
};

TEST_P(UnloadFrom, LeavesNothingOfTheLibraryAndItsPluginsInTheProcess) {
  AggregatorLibrary library;
  GetParam().reach(library);
  EXPECT_TRUE(IsMapped("librngaggregator.so"));
  library.Close();
  for (const char* file :
       {"librngaggregator.so", "librngdsdr.so", "librngaccord.so", "librngsobol.so"}) {
    EXPECT_FALSE(IsMapped(file)) << file;
  }
}

TEST_P(UnloadFrom, CallsIntoNoProvider) {
  AggregatorLibrary library;
  GetParam().reach(library);
  Fake("accord").hooks.clear();
  ClearCallLog();
  library.Close();
  for (const char* kind : {"dsdr", "accord", "sobol"}) {
    const std::string log = CallLog(kind);
    EXPECT_TRUE(log.empty() || log == "closed") << kind << ": " << log;
  }
}

TEST_P(UnloadFrom, LeavesAFreshStateToTheNextLoading) {
  {
    const AggregatorLibrary library;
    library.NameVariable("rngDsdr") = "renamed";
    GetParam().reach(library);
  }
  Fake("accord").hooks.clear();
  const AggregatorLibrary library;
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_STREQ("dsdr", library.NameVariable("rngDsdr"));
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
  EXPECT_FALSE(library.SetDefaultRng("sobol", nullptr));
  library.Start(nullptr, 3);
}

TEST_P(UnloadFrom, ManyTimesLeavesNoMemoryAndNoMappings) {
  const auto loadAndUnload = [] {
    AggregatorLibrary library;
    GetParam().reach(library);
    library.Close();
    Fake("accord").hooks.clear();
    ClearCallLog();
  };
  loadAndUnload();  // what is kept for good: the log's room, the known-path library
  const std::size_t aliveBefore = AllocationsAlive();
  const std::size_t mappedBefore = CountMappings();
  for (int round = 0; round < 30; ++round) {
    loadAndUnload();
    ASSERT_FALSE(IsMapped("librngaggregator.so")) << round;
  }
  EXPECT_EQ(aliveBefore, AllocationsAlive());
  EXPECT_EQ(mappedBefore, CountMappings());
}

INSTANTIATE_TEST_SUITE_P(State, UnloadFrom, testing::ValuesIn(kEndStates), NameOf);

TEST(Unload, AfterAStopClosesNoPluginAgain) {
  InstallPlugin("dsdr");
  void* const holder = ::dlopen(TreePath("lib/librngdsdr.so").c_str(), RTLD_LAZY);
  ASSERT_NE(nullptr, holder);
  AggregatorLibrary library;
  library.Start(nullptr, 1);
  library.ShutDown();
  library.Close();
  EXPECT_TRUE(IsMapped("librngdsdr.so"));  // the holder's share
  ::dlclose(holder);
}

TEST(Unload, AfterAStopThatThrewClosesWhatIsLeftAndNothingTwice) {
  InstallPlugins({"dsdr", "accord", "sobol"});
  void* const holder = ::dlopen(TreePath("lib/librngdsdr.so").c_str(), RTLD_LAZY);
  ASSERT_NE(nullptr, holder);
  AggregatorLibrary library;
  library.Start(nullptr, 3);
  Fake("accord").hooks["Release"] = [] { throw std::runtime_error("stop"); };
  EXPECT_THROW(library.ShutDown(), std::runtime_error);
  ClearCallLog();
  library.Close();
  EXPECT_EQ("", CallLog("dsdr"));
  EXPECT_EQ("closed", CallLog("accord"));
  EXPECT_EQ("closed", CallLog("sobol"));
  EXPECT_TRUE(IsMapped("librngdsdr.so"));  // the holder's share
  ::dlclose(holder);
}

TEST(Unload, LeavesTheLibraryOfAListThatCouldNotGrowOpen) {
  InstallPlugins({"dsdr", "accord"});
  Fake("accord").hooks["IsAvailable"] = [] { FailAllocation(1); };
  AggregatorLibrary library;
  EXPECT_THROW(library.Initialize(nullptr), std::bad_alloc);
  library.Close();
  EXPECT_TRUE(IsMapped("librngaccord.so"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
  EXPECT_FALSE(IsMapped("librngaggregator.so"));
}

TEST(Unload, BuiltInSettingsCanBeUsedUntilThen) {
  AggregatorLibrary library;
  IRngSettings* const settings = library.GetDefaultSettings();
  library.Start(settings, 0);
  library.ShutDown();
  library.ShutDown();
  EXPECT_TRUE(settings->SetType(kLongText));
  EXPECT_STREQ(kLongText, settings->GetType());
  EXPECT_EQ(TreePath("share/dsdr.bin"), settings->GetDsdrFilePath());
  library.Close();
  EXPECT_FALSE(IsMapped("librngaggregator.so"));
}

TEST(Unload, AsksNothingOfTheHostsSettings) {
  InstallPlugin("dsdr");
  FakeSettings settings;
  AggregatorLibrary library;
  library.Start(&settings, 1);
  library.Close();
  EXPECT_EQ("", CallLog("settings"));
}
