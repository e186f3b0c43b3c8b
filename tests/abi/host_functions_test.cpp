// A host that has functions of the library's names and exports them. The loader would put the
// host's before the library's; the library's calls of its own functions must not go astray.

#include "tests/support/aggregator_library.h"
#include "tests/support/all_bits.h"
#include "tests/support/fake_settings.h"
#include "tests/support/tree.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

static int g_hostCalls = 0;

void Initialize(IRngSettings*) { ++g_hostCalls; }
void ShutDown() { ++g_hostCalls; }
bool IsInitialized() { return ++g_hostCalls == 0; }
std::int32_t GetAvailableRng(IRngProvider**, std::uint32_t) { return ++g_hostCalls; }
IRngProvider* GetRng(const char*) {
  ++g_hostCalls;
  return nullptr;
}
std::int32_t IsInteractiveRng(const char*) { return ++g_hostCalls; }
std::int32_t GetDefaultRng(DefaultRngInfo*, std::uint32_t) { return ++g_hostCalls; }
bool SetDefaultRng(const char*, const char*) { return ++g_hostCalls == 0; }
IRngSettings* GetDefaultSettings() {
  ++g_hostCalls;
  return nullptr;
}

class HostWithItsOwnFunctions : public testing::Test {
 protected:
  const AggregatorLibrary library;
};

TEST_F(HostWithItsOwnFunctions, ExportsThem) {
  for (const char* name :
       {"Initialize", "ShutDown", "IsInitialized", "GetAvailableRng", "GetRng", "IsInteractiveRng",
        "GetDefaultRng", "SetDefaultRng", "GetDefaultSettings"}) {
    Dl_info info{};
    ASSERT_NE(0, ::dladdr(::dlsym(RTLD_DEFAULT, name), &info)) << name;
    Dl_info host{};
    ASSERT_NE(0, ::dladdr(reinterpret_cast<void*>(&::IsInitialized), &host));
    EXPECT_EQ(host.dli_fbase, info.dli_fbase) << name;
  }
}

TEST_F(HostWithItsOwnFunctions, HasNoneCalledByAWholeRun) {
  InstallPlugins({"dsdr", "biokbd"});
  FakeSettings settings;
  IRngProvider* providers[2] = {};
  DefaultRngInfo info{};
  library.Start(&settings, 2);
  EXPECT_EQ(2, library.GetAvailableRng(providers, kAllBits));
  EXPECT_EQ(providers[0], library.GetRng("dsdr"));
  EXPECT_EQ(1, library.IsInteractiveRng("biokbd"));
  EXPECT_EQ(1, library.GetDefaultRng(&info, 4));
  EXPECT_TRUE(library.SetDefaultRng("sobol", nullptr));
  EXPECT_NE(nullptr, library.GetDefaultSettings());
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(0, g_hostCalls);
}

TEST_F(HostWithItsOwnFunctions, DoesNotReachIntoTheFallback) {
  InstallPlugin("dsdr");
  library.NameVariable("rngBioQt") = "dsdr";
  library.Start(nullptr, 1);
  DefaultRngInfo info{};
  EXPECT_EQ(1, library.GetDefaultRng(&info, 2));
  EXPECT_STREQ("dsdr", info.type);
  EXPECT_EQ(0, g_hostCalls);
}
