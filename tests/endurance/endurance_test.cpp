// Starts and stops the library, and loads and unloads it, many times over: a host that runs for
// years must find as many open files, mappings and as much memory as in its first minute.
//
// The counts are short, unless the command line says --cycles=N (of start and stop) and --loads=N
// (in each state in which the library is unloaded).

#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"
#include "tests/support/fakes.h"
#include "tests/support/open_files.h"
#include "tests/support/tree.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace {

// Until then caches fill: the log's room, the loader's lists, the heap.
constexpr long kWarmUp = 50;

#ifdef SANITIZED
// A sanitizer keeps freed memory for a while and maps shadows as it likes. The files that are
// mapped are still counted, and the allocations that live.
constexpr bool kIsMemoryJudged = false;
#else
constexpr bool kIsMemoryJudged = true;
#endif

// For the pages of library files, which are mapped in as the page cache offers them, and for the
// heap, which is cut up differently at each round. It does not grow with the number of rounds.
constexpr long kResidentNoiseKiB = 48;

long g_cycles = kIsMemoryJudged ? 2000 : 500;
long g_loads = kIsMemoryJudged ? 300 : 100;

void ReadCount(std::string_view argument, std::string_view option, long& count) {
  if (argument.substr(0, option.size()) == option) {
    count = std::atol(argument.data() + option.size());
  }
}

__attribute__((constructor)) void ReadCommandLine(int count, char** arguments, char**) {
  for (int i = 1; i < count; ++i) {
    ReadCount(arguments[i], "--cycles=", g_cycles);
    ReadCount(arguments[i], "--loads=", g_loads);
  }
}

struct Footprint {
  long files;
  long mappings;
  long plugins;  // mappings of plug-ins
  long residentKiB;
  long allocations;
};

// Exact, unlike the counters in /proc/self/status.
long ReadResidentKiB() {
  std::ifstream rollup("/proc/self/smaps_rollup");
  for (std::string word; rollup >> word;) {
    long size;
    if (word == "Rss:" && rollup >> size) return size;
  }
  throw std::runtime_error("the resident memory is not told");
}

Footprint Measure() {
  Footprint footprint{};
  footprint.allocations = static_cast<long>(AllocationsAlive());
  footprint.residentKiB = ReadResidentKiB();
  footprint.files = CountOpenFiles();
  std::istringstream mappings(ReadFile("/proc/self/maps"));
  for (std::string line; std::getline(mappings, line);) {
    footprint.mappings += kIsMemoryJudged || line.find('/') != std::string::npos;
    footprint.plugins += line.find(TreePath("lib/librng")) != std::string::npos &&
                         line.find("librngaggregator") == std::string::npos;
  }
  return footprint;
}

template <typename Round>
void ExpectNoGrowth(long rounds, const char* what, Round round) {
  ASSERT_LT(0, rounds);
  Measure();
  for (long i = 0; i < kWarmUp; ++i) round();
  const Footprint before = Measure();
  for (long i = 0; i < rounds && !testing::Test::HasFailure(); ++i) round();
  const Footprint after = Measure();

  const long resident = after.residentKiB - before.residentKiB;
  std::cout << rounds << ' ' << what << std::showpos << ", files " << after.files - before.files
            << ", mappings " << after.mappings - before.mappings << ", resident " << resident
            << " KiB" << std::noshowpos << (kIsMemoryJudged ? "" : " (not judged)") << '\n';
  EXPECT_EQ(before.files, after.files);
  EXPECT_EQ(before.mappings, after.mappings);
  EXPECT_EQ(before.allocations, after.allocations);
  EXPECT_EQ(0, after.plugins);  // one that stays from the first round on is no growth
  if (kIsMemoryJudged) {
    EXPECT_GE(kResidentNoiseKiB, resident);
  }
}

struct EndState {
  const char* name;
  const char* text;
  void (*reach)(const AggregatorLibrary& library);
};

void PrintTo(const EndState& state, std::ostream* out) { *out << state.name; }

constexpr EndState kEndStates[] = {
    {"NeverStarted", "loads, never started", [](const AggregatorLibrary&) {}},
    {"Stopped", "loads, stopped",
     [](const AggregatorLibrary& library) {
       library.Start(nullptr, 12);
       library.ShutDown();
     }},
    {"StillStarted", "loads, still started",
     [](const AggregatorLibrary& library) { library.Start(nullptr, 12); }},
    {"NegativeCount", "loads, negative count",
     [](const AggregatorLibrary& library) {
       library.ShutDown();
       ASSERT_FALSE(library.IsInitialized());
     }},
    {"AfterAThrowingRelease", "loads, after a throwing Release",
     [](const AggregatorLibrary& library) {
       Fake("sobol").hooks["Release"] = [] { throw std::runtime_error("stop"); };
       library.Start(nullptr, 12);
       ASSERT_THROW(library.ShutDown(), std::runtime_error);
     }},
};

}  // namespace

TEST(StartAndStop, LeaveNoFilesMappingsOrMemoryBehind) {
  InstallAllPlugins("stub");
  InstallX11("whole");
  const AggregatorLibrary library;
  ExpectNoGrowth(g_cycles, "cycles", [&] {
    library.Start(nullptr, 12);
    library.ShutDown();
    ClearCallLog();
  });
}

class LoadAndUnload : public testing::TestWithParam<EndState> {};

TEST_P(LoadAndUnload, LeaveNoFilesMappingsOrMemoryBehind) {
  InstallAllPlugins();
  InstallX11("whole");
  ExpectNoGrowth(g_loads, GetParam().text, [] {
    {
      const AggregatorLibrary library;
      GetParam().reach(library);
    }
    ASSERT_FALSE(IsMapped("librngaggregator.so"));
    ClearCallLog();
  });
}

INSTANTIATE_TEST_SUITE_P(State, LoadAndUnload, testing::ValuesIn(kEndStates),
                         [](const auto& instance) { return std::string(instance.param.name); });
