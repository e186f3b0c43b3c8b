// Start and stop: whatever fails, the state is the one that is promised for it.

#include "tests/faults/fault_sweep.h"

#include <gtest/gtest.h>

namespace {

const auto kNothing = [](auto&) {};
const auto kStart = [](auto& library) { library.Initialize(library.HostSettings()); };
const auto kStop = [](auto& library) { library.ShutDown(); };
const auto kStartTwice = [](auto& library) {
  library.Initialize(library.HostSettings());
  library.Initialize(nullptr);
};
const auto kStartAndStop = [](auto& library) {
  library.Initialize(nullptr);
  library.ShutDown();
};

const std::set<std::string> kLock = {"pthread_mutex_lock"};
const std::set<std::string> kStartCalls = {"dlclose", "dlerror",      "dlopen",
                                           "dlsym",   "operator new", "pthread_mutex_lock"};

const Arrangement kEmpty{};
const Arrangement kOne{.plugins = {"unixdev"}};
const Arrangement kThree{.plugins = {"bioqt", "dsdr", "Rutoken"}, .hasDisplay = true};
const Arrangement kAll{.plugins = KindNames(), .hasDisplay = true};
const Arrangement kMixed{
    .plugins = KindNames(), .givesNull = {"accord"}, .unavailable = {"sobol", "biocore"}};

void SweepInitialize(const std::string& state, const std::set<std::string>& faults,
                     const Arrangement& arrangement, const Steps<void>& prelude) {
  FaultSweep{"Initialize",
             state,
             faults,
             arrangement,
             prelude,
             [](auto& library) {
               library.Initialize(library.HostSettings());
               return std::string("returned");
             }}
      .Run();
}

void SweepShutDown(const std::string& state, const std::set<std::string>& faults,
                   const Arrangement& arrangement, const Steps<void>& prelude) {
  FaultSweep{"ShutDown",
             state,
             faults,
             arrangement,
             prelude,
             [](auto& library) {
               library.ShutDown();
               return std::string("returned");
             }}
      .Run();
}

}  // namespace

// --- Initialize

TEST(InitializeFaults, WithoutPlugins) {
  SweepInitialize("no plug-in", kStartCalls, kEmpty, kNothing);
}

TEST(InitializeFaults, WithOnePlugin) {
  SweepInitialize("one plug-in", kStartCalls, kOne, kNothing);
}

TEST(InitializeFaults, WithTwelvePluginsAndADisplay) {
  SweepInitialize("12 plug-ins", kStartCalls, kAll, kNothing);
}

TEST(InitializeFaults, WithUnusablePluginsAmongTwelve) {
  SweepInitialize("12 plug-ins, some unusable, no display", kStartCalls, kMixed, kNothing);
}

TEST(InitializeFaults, AfterAFullStop) {
  SweepInitialize("3 plug-ins, after a full stop", kStartCalls, kThree, kStartAndStop);
}

TEST(InitializeFaults, WhenStartedAlready) { SweepInitialize("started", kLock, kOne, kStart); }

TEST(InitializeFaults, WithANegativeCount) { SweepInitialize("count -1", kLock, kOne, kStop); }

// --- ShutDown

TEST(ShutDownFaults, BeforeAnyStart) { SweepShutDown("not started", kLock, kOne, kNothing); }

TEST(ShutDownFaults, WithANegativeCount) { SweepShutDown("count -1", kLock, kOne, kStop); }

TEST(ShutDownFaults, WithoutPlugins) { SweepShutDown("no plug-in", kLock, kEmpty, kStart); }

TEST(ShutDownFaults, WithOnePlugin) {
  SweepShutDown("one plug-in", {"dlclose", "pthread_mutex_lock"}, kOne, kStart);
}

TEST(ShutDownFaults, WithTwelvePlugins) {
  SweepShutDown("12 plug-ins", {"dlclose", "pthread_mutex_lock"}, kAll, kStart);
}

TEST(ShutDownFaults, WhenStartedTwice) { SweepShutDown("started twice", kLock, kAll, kStartTwice); }
