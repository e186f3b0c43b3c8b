// The program's own pthread_mutex_lock stands before the system's, for the library as well.

#include "tests/aggregator/start_up_log.h"
#include "tests/support/tree.h"

#include <boost/thread/exceptions.hpp>
#include <cerrno>
#include <deque>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <pthread.h>

using testing::ElementsAre;
using testing::StartsWith;

namespace {

// What the next calls return instead of locking; 0 lets one through. Nothing but the library locks
// while there is something in it.
std::deque<int> g_results;

}  // namespace

extern "C" __attribute__((visibility("default"))) int pthread_mutex_lock(
    pthread_mutex_t* mutex) noexcept {
  static const auto lock =
      reinterpret_cast<decltype(&::pthread_mutex_lock)>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  if (g_results.empty()) return lock(mutex);
  const int result = g_results.front();
  g_results.pop_front();
  return result == 0 ? lock(mutex) : result;
}

namespace {

template <typename Call>
void ExpectLockError(int code, Call call) {
  g_results = {code};
  try {
    call();
    ADD_FAILURE() << "no exception";
  } catch (const boost::lock_error& error) {
    EXPECT_THAT(error.what(), StartsWith("boost: mutex lock failed in pthread_mutex_lock"));
    EXPECT_EQ(code, error.code().value());
    EXPECT_EQ(code, error.native_error());
  }
  EXPECT_TRUE(g_results.empty());
}

}  // namespace

TEST(LockFailure, AnInterruptedCallIsRepeated) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  g_results = {EINTR, EINTR, 0};
  library.Initialize(nullptr);
  EXPECT_TRUE(g_results.empty());
  EXPECT_THAT(library.LoadedNames(), ElementsAre("dsdr"));
  g_results = {EINTR, 0};
  library.ShutDown();
  EXPECT_TRUE(g_results.empty());
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

class LockFailureWith : public testing::TestWithParam<int> {};

TEST_P(LockFailureWith, LeavesInitializeBeforeAnythingIsChanged) {
  InstallPlugin("dsdr");
  FakeSettings settings;
  const AggregatorLibrary library;
  ExpectLockError(GetParam(), [&] { library.Initialize(&settings); });
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ("", CallLog());
  EXPECT_FALSE(library.SetDefaultRng("sobol", nullptr));
  library.Start(&settings, 1);  // the count is now 1
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
}

TEST_P(LockFailureWith, LeavesALaterInitializeBeforeItCounts) {
  const AggregatorLibrary library;
  library.Start(nullptr, 0);
  ExpectLockError(GetParam(), [&] { library.Initialize(nullptr); });
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
}

TEST_P(LockFailureWith, LeavesShutDownBeforeAnythingIsChanged) {
  InstallPlugin("dsdr");
  FakeSettings settings;
  const AggregatorLibrary library;
  library.Start(&settings, 1);
  ClearCallLog();
  ExpectLockError(GetParam(), [&] { library.ShutDown(); });
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_EQ("", CallLog());
  EXPECT_THAT(library.LoadedNames(), ElementsAre("dsdr"));
  ExpectCurrentSettings(library, settings);
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST_P(LockFailureWith, LeavesALibraryThatCanBeUnloaded) {
  InstallPlugin("dsdr");
  AggregatorLibrary library;
  library.Start(nullptr, 1);
  ExpectLockError(GetParam(), [&] { library.ShutDown(); });
  library.Close();
  EXPECT_FALSE(IsMapped("librngaggregator.so"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
  EXPECT_EQ(0U, CountCalls("dsdr", "Release"));
}

INSTANTIATE_TEST_SUITE_P(Code, LockFailureWith, testing::Values(EINVAL, EAGAIN, EDEADLK));
