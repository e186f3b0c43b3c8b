// The order in which the library undoes what it keeps, seen from the calls that it makes then: the
// program's own dlclose and pthread_mutex_destroy stand before the system's. (What a plug-in logs
// when it is closed says nothing: the loader puts it off until the library has finished.)

#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"
#include "tests/support/fake_settings.h"
#include "tests/support/tree.h"

#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <gmock/gmock.h>
#include <link.h>
#include <pthread.h>

using testing::ElementsAre;

namespace {

// Long enough to be kept on the heap by whoever copies it.
constexpr char kLongText[] = "a kind with a name that fits no small buffer";

std::size_t AllocationsFreed() { return AllocationsMade() - AllocationsAlive(); }

struct Step {
  std::string what;   // the file of a library that is closed, or "lock"
  std::size_t freed;  // until then
};
std::vector<Step> g_steps;
bool g_isUnloading = false;
std::function<void()> g_duringFirstPlugin;

void Note(const char* what) {
  const std::size_t freed = AllocationsFreed();
  g_steps.push_back({what, freed});
  if (g_steps.size() == 2 && g_duringFirstPlugin) g_duringFirstPlugin();
}

std::vector<std::string> StepNames() {
  std::vector<std::string> names;
  for (const Step& step : g_steps) names.push_back(step.what);
  return names;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int dlclose(void* handle) noexcept {
  static const auto close = reinterpret_cast<decltype(&::dlclose)>(::dlsym(RTLD_NEXT, "dlclose"));
  const link_map* library = nullptr;
  if (g_isUnloading && ::dlinfo(handle, RTLD_DI_LINKMAP, &library) == 0) {
    Note(std::strrchr(library->l_name, '/') + 1);
  }
  return close(handle);
}

extern "C" __attribute__((visibility("default"))) int pthread_mutex_destroy(
    pthread_mutex_t* mutex) noexcept {
  static const auto destroy = reinterpret_cast<decltype(&::pthread_mutex_destroy)>(
      ::dlsym(RTLD_NEXT, "pthread_mutex_destroy"));
  if (g_isUnloading) Note("lock");
  return destroy(mutex);
}

class TeardownOrder : public testing::Test {
 protected:
  TeardownOrder() {
    InstallPlugins({"dsdr", "accord"});
    library.Start(&settings, 2);
    // Room, so that taking notes frees nothing.
    g_steps.reserve(20);
    for (int call = 0; call < 100; ++call) RecordCall("room", "for the log");
    ClearCallLog();
  }

  void Unload() {
    g_isUnloading = true;
    library.Close();
    g_isUnloading = false;
  }

  FakeSettings settings;
  AggregatorLibrary library;
};

TEST_F(TeardownOrder, ClosesThePluginsInListOrderAndThenDestroysTheLock) {
  Unload();
  EXPECT_THAT(StepNames(),
              ElementsAre("librngaggregator.so", "librngdsdr.so", "librngaccord.so", "lock"));
}

TEST_F(TeardownOrder, ClosesThePluginsInListOrderAfterAStopThatThrew) {
  Fake("dsdr").hooks["Release"] = [] { throw std::runtime_error("stop"); };
  EXPECT_THROW(library.ShutDown(), std::runtime_error);
  Unload();
  EXPECT_THAT(StepNames(),
              ElementsAre("librngaggregator.so", "librngdsdr.so", "librngaccord.so", "lock"));
}

TEST_F(TeardownOrder, ClosesNothingAfterAStop) {
  library.ShutDown();
  Unload();
  EXPECT_THAT(StepNames(), ElementsAre("librngaggregator.so", "lock"));
}

TEST_F(TeardownOrder, FreesSettingsThenTheListThenTheCatalogue) {
  IRngSettings* const builtIn = library.GetDefaultSettings();
  ASSERT_TRUE(builtIn->SetType(kLongText));
  ASSERT_STREQ(kLongText, builtIn->GetType());
  Unload();
  ASSERT_EQ(4U, g_steps.size());
  EXPECT_LT(g_steps[0].freed, g_steps[1].freed);    // the text kept by the settings
  EXPECT_EQ(g_steps[1].freed, g_steps[2].freed);    // between the first plug-in and the last
  EXPECT_LT(g_steps[2].freed, g_steps[3].freed);    // the list
  EXPECT_LT(g_steps[3].freed, AllocationsFreed());  // the texts of the catalogue, after the lock
}

TEST_F(TeardownOrder, LeavesCountAndCurrentSettingsAloneAndTheLockUsableWhileItClosesPlugins) {
  bool isStarted = false;
  bool isStored = false;
  g_duringFirstPlugin = [&] {
    isStarted = library.IsInitialized();
    isStored = library.SetDefaultRng("sobol", nullptr);
    library.Initialize(nullptr);
  };
  Unload();
  EXPECT_TRUE(isStarted);
  EXPECT_TRUE(isStored);
  EXPECT_EQ("sobol", settings.type);
  EXPECT_EQ(0U, CountCalls("x11", "opened"));  // the count was 1: no new start
}
