// What plug-ins throw at a session, and at whom.

#include "tests/session/linked_library.h"
#include "tests/session/own_provider.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <pthread.h>

#include <rngaggregator/session.h>

using rng::ErrorCode;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

namespace {

bool g_refusesLocks = false;

}  // namespace

// Stands before the system's, for the library as well.
extern "C" __attribute__((visibility("default"))) int pthread_mutex_lock(
    pthread_mutex_t* mutex) noexcept {
  static const auto lock =
      reinterpret_cast<decltype(&::pthread_mutex_lock)>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  return g_refusesLocks ? EINVAL : lock(mutex);
}

namespace {

const auto startSession = [] { rng::Session session; };

}  // namespace

TEST(SessionStart, IsUndoneIfAPluginThrows) {
  InstallPlugin("bioqt", "stub");
  InstallPlugin("dsdr", "throwing_start");
  EXPECT_THAT(
      ErrorOf(startSession),
      Pair(ErrorCode::kStartFailed,
           "The library could not be started: a plug-in or the system failed: no driver. Run "
           "\"rngctl doctor\" to find out which."));
  EXPECT_EQ(0, g_unmatchedStarts);
  EXPECT_FALSE(IsInitialized());
}

// Its class is no longer in the process.
TEST(SessionStart, DoesNotTouchAnExceptionOfAClosedPlugin) {
  InstallPlugin("dsdr", "throws_own_class");
  EXPECT_THAT(ErrorOf(startSession),
              Pair(ErrorCode::kStartFailed,
                   "The library could not be started: a plug-in or the system failed. Run \"rngctl "
                   "doctor\" to find out which."));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
  EXPECT_EQ(0, g_unmatchedStarts);
}

TEST(SessionStart, ReportsAnExceptionOfAPluginThatIsStillOpen) {
  InstallPlugin("dsdr", "throws_own_class");
  ::dlopen(TreePath("lib/librngdsdr.so").c_str(), RTLD_LAZY | RTLD_NODELETE);
  EXPECT_THAT(ErrorOf(startSession).second, HasSubstr("failed: a fault of its own. Run"));
  ::setenv("RNG_THROW_NULL", "1", 1);
  EXPECT_THAT(ErrorOf(startSession).second, HasSubstr("failed. Run"));
}

TEST(SessionStart, StopsNothingIfItDidNotGetTheLock) {
  InstallPlugin("dsdr");
  Initialize(nullptr);  // another user, whose start must not be stopped
  g_refusesLocks = true;
  const auto error = ErrorOf(startSession);
  g_refusesLocks = false;
  EXPECT_THAT(error,
              Pair(ErrorCode::kStartFailed, HasSubstr("failed: boost: mutex lock failed in")));
  EXPECT_EQ(2, g_unmatchedStarts);
  EXPECT_TRUE(IsInitialized());
  ShutDown();
  EXPECT_EQ("opened factory SetSettings IsAvailable Release closed", CallLog("dsdr"));
}

// As a plug-in that fails to take a lock of its own: the start was counted.
TEST(SessionStart, IsUndoneIfAPluginThrowsALockError) {
  InstallPlugin("dsdr", "throws_lock_error");
  ::dlopen(TreePath("lib/librngdsdr.so").c_str(), RTLD_LAZY | RTLD_NODELETE);
  EXPECT_THAT(ErrorOf(startSession).second, HasSubstr("failed: a fault of its own. Run"));
  EXPECT_EQ(0, g_unmatchedStarts);
}

// How the sessions tell the library's exceptions from those of plug-ins. A linker may place data in the first page.
TEST(FileOfAnAddress, IsFoundFromItsFirstPageOn) {
  Dl_info library;
  const void* const settings = GetDefaultSettings();
  ASSERT_NE(0, ::dladdr(settings, &library));
  EXPECT_EQ(rng::detail::FileAt(settings), rng::detail::FileAt(library.dli_fbase));
  EXPECT_NE(rng::detail::FileAt(settings), rng::detail::FileAt(&g_refusesLocks));
}

TEST(SessionStart, FailsIfTheProcessHasStoppedTooOften) {
  InstallPlugin("dsdr");
  ShutDown();
  EXPECT_THAT(ErrorOf(startSession),
              Pair(ErrorCode::kStartFailed,
                   StartsWith("The library was not started, because this process "
                              "has stopped it more often than it has started it.")));
  EXPECT_EQ(-1, g_unmatchedStarts);
}

TEST(SessionStart, IsUndoneIfAPluginEndsTheThread) {
  InstallPlugin("dsdr", "disturbing/Factory_EndThread");
  pthread_t other;
  const auto work = [](void*) -> void* {
    rng::Session session;
    return &g_refusesLocks;
  };
  ASSERT_EQ(0, ::pthread_create(&other, nullptr, work, nullptr));
  void* result = nullptr;
  ::pthread_join(other, &result);
  EXPECT_NE(&g_refusesLocks, result);
  EXPECT_EQ(0, g_unmatchedStarts);
}

// --- Queries and draws

TEST(SessionQuery, ThrowsAnErrorIfAPluginThrowsInGetName) {
  InstallPlugin("dsdr", "breaking/name_throws");
  const rng::Session session;
  EXPECT_THAT(
      ErrorOf([&] { session.Find("sobol"); }),
      Pair(ErrorCode::kNoSuchGenerator, StartsWith("The generator \"sobol\" cannot be found")));
  EXPECT_THAT(
      ErrorOf([&] { session.Default(kDefaultFallbackBioQt); }),
      Pair(ErrorCode::kNoDefault, StartsWith("The default generator cannot be determined")));
}

TEST(SessionQuery, ThrowsAnErrorIfTheSizeOfANameIsNegative) {
  InstallPlugin("sobol", "nameless");
  const rng::Session session;
  EXPECT_EQ(ErrorCode::kNoSuchGenerator, ErrorOf([&] { session.Find("dsdr"); }).first);
}

TEST(SessionQuery, ThrowsAnErrorIfAPluginThrowsForItsDeviceOrFlags) {
  InstallPlugin("dsdr", "disturbing/Device_Throw");
  EXPECT_THAT(ErrorOf([] { rng::Session().Find("dsdr", "A1"); }),
              Pair(ErrorCode::kDeviceMissing,
                   "The generator \"dsdr\" refuses the device \"A1\". Run \"rngctl list\" to see "
                   "the devices."));
  InstallPlugin("dsdr", "disturbing/Flags_Throw");
  EXPECT_THAT(ErrorOf([] { rng::Engine engine(rng::Session().Find("dsdr")); }),
              Pair(ErrorCode::kDrawFailed,
                   "The generator \"dsdr\" failed. Run \"rngctl doctor dsdr\" to find out why."));
  EXPECT_EQ(0, g_unmatchedStarts);
}

// The error outlives the plug-in whose exception it was.
TEST(SessionDraw, CopiesAnExceptionOfAPluginsOwnClass) {
  InstallPlugin("dsdr", "throws_own_class");
  ::setenv("RNG_THROW_IN_DRAW", "1", 1);
  std::exception_ptr kept;
  try {
    rng::Session().Find("dsdr").Bytes<32>();
  } catch (...) {
    kept = std::current_exception();
  }
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
  EXPECT_THAT(ErrorOf([&] { std::rethrow_exception(kept); }),
              Pair(ErrorCode::kDrawFailed, HasSubstr("failed: a fault of its own. Run")));
}

// --- Stop

TEST(SessionStop, IgnoresWhatAPluginThrowsInTheDestructor) {
  InstallPlugin("dsdr", "breaking/release_throws");
  { const rng::Session session; }
  EXPECT_FALSE(IsInitialized());
  EXPECT_EQ(0, g_unmatchedStarts);
}

TEST(SessionStop, ReportsWhatAPluginThrows) {
  InstallPlugin("dsdr", "throwing_release");
  rng::Session session;
  EXPECT_THAT(ErrorOf([&] { session.Stop(); }),
              Pair(ErrorCode::kStopFailed,
                   "The library could not be stopped: a plug-in or the system failed. Run \"rngctl "
                   "doctor\" to find out which."));
  EXPECT_FALSE(IsInitialized());
}

TEST(SessionStop, DoesNotBlameAPluginForALockThatIsRefused) {
  rng::Session session;
  g_refusesLocks = true;
  const auto error = ErrorOf([&] { session.Stop(); });
  g_refusesLocks = false;
  EXPECT_THAT(error, Pair(ErrorCode::kStopFailed,
                          StartsWith("The library could not be stopped: a plug-in or the system "
                                     "failed: boost: mutex lock failed in pthread_mutex_lock")));
  ShutDown();
}
