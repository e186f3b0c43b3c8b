#include "aggregator/rng_info.h"

#include "tests/support/aggregator_library.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <cstddef>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<RngInfoEx> &&
                  std::is_trivially_destructible_v<RngInfoEx>,
              "a plain record: the list owns");
static_assert(offsetof(RngInfoEx, handle) == 0 && offsetof(RngInfoEx, provider) == sizeof(void*));
static_assert(std::is_convertible_v<RngInfoVector*, std::vector<RngInfoEx>*>);
static_assert(std::has_virtual_destructor_v<RngInfoVector>);

namespace {

RngInfoEx Open(const std::string& path, const char* factory) {
  void* const handle = ::dlopen(path.c_str(), RTLD_LAZY);
  return {handle, reinterpret_cast<RngFactory>(::dlsym(handle, factory))()};
}

}  // namespace

TEST(RngInfoVector, ClosesItsLibrariesFirstToLastAndReleasesNobody) {
  InstallPlugins({"dsdr", "accord"});
  {
    RngInfoVector providers;
    providers.push_back(Open(TreePath("lib/librngaccord.so"), "GetAccordRng"));
    providers.push_back(Open(TreePath("lib/librngdsdr.so"), "GetDsdrRng"));
    ClearCallLog();
  }
  EXPECT_EQ("accord.closed dsdr.closed", CallLog());
  EXPECT_FALSE(IsMapped("librngaccord.so"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST(RngInfoVector, PassesOverElementsWithoutALibrary) {
  InstallPlugin("dsdr");
  {
    RngInfoVector providers;
    providers.push_back({nullptr, nullptr});
    providers.push_back(Open(TreePath("lib/librngdsdr.so"), "GetDsdrRng"));
    providers.push_back({nullptr, providers.back().provider});
  }
  EXPECT_EQ("opened factory closed", CallLog("dsdr"));
}
