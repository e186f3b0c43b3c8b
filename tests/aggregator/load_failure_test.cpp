// What a host meets whose system has no memory or no lock left for the library's initialisation.
// The program's own pthread_mutex_init stands before the system's, for the library as well.

#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"
#include "tests/support/tree.h"

#include <boost/thread/exceptions.hpp>
#include <cerrno>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <new>
#include <pthread.h>

using testing::StartsWith;

namespace {

int g_creationResult = 0;  // what is returned instead of creating a mutex, when it is not 0

// The system's header promises that dlopen throws nothing, so compiled code may end the process if it does.
void* (*const volatile g_open)(const char* path, int mode) = &::dlopen;

std::string LibraryPath() { return TreePath("lib/librngaggregator.so"); }

}  // namespace

extern "C" __attribute__((visibility("default"))) int pthread_mutex_init(
    pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  static const auto create =
      reinterpret_cast<decltype(&::pthread_mutex_init)>(::dlsym(RTLD_NEXT, "pthread_mutex_init"));
  return g_creationResult == 0 ? create(mutex, attributes) : g_creationResult;
}

class RefusedLock : public testing::TestWithParam<int> {};

TEST_P(RefusedLock, RaisesAThreadResourceErrorOutOfTheLoadingAndLeaksNothing) {
  const std::string path = LibraryPath();
  const std::size_t aliveBefore = AllocationsAlive();
  g_creationResult = GetParam();
  try {
    g_open(path.c_str(), RTLD_NOW);
    ADD_FAILURE() << "no exception";
  } catch (const boost::thread_resource_error& error) {
    EXPECT_THAT(error.what(), StartsWith("boost:: mutex constructor failed in pthread_mutex_init"));
    EXPECT_EQ(GetParam(), error.code().value());
    EXPECT_EQ(GetParam(), error.native_error());
  }
  g_creationResult = 0;
  EXPECT_EQ(aliveBefore, AllocationsAlive());
}

TEST_P(RefusedLock, EndsAProcessThatTakesDlopenForNothrow) {
  const std::string path = LibraryPath();
  g_creationResult = GetParam();
  const auto open = [&path]() noexcept { g_open(path.c_str(), RTLD_NOW); };
  EXPECT_DEATH(open(),
               "boost::thread_resource_error.*\n.*boost:: mutex constructor failed in "
               "pthread_mutex_init");
}

INSTANTIATE_TEST_SUITE_P(Code, RefusedLock, testing::Values(EAGAIN, ENOMEM));

TEST(CreatedLock, LetsTheLibraryBeLoaded) {
  const AggregatorLibrary library;
  EXPECT_FALSE(library.IsInitialized());
}

class RefusedAllocation : public testing::TestWithParam<std::size_t> {};

TEST_P(RefusedAllocation, RaisesBadAllocOutOfTheLoadingAndLeaksNothing) {
  const std::string path = LibraryPath();
  const std::size_t aliveBefore = AllocationsAlive();
  FailAllocation(GetParam());
  EXPECT_THROW(g_open(path.c_str(), RTLD_NOW), std::bad_alloc);
  EXPECT_EQ(aliveBefore, AllocationsAlive());
}

INSTANTIATE_TEST_SUITE_P(Number, RefusedAllocation, testing::Values(1, 2, 5));
