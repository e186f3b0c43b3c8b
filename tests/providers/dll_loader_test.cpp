#include "providers/dll_loader.h"

#include "tests/support/aggregator_library.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <type_traits>

using rngshared::smartwr::DllLoader;

static_assert(!std::is_copy_constructible_v<DllLoader> && !std::is_copy_assignable_v<DllLoader>,
              "two loaders of one handle would close it twice");
static_assert(std::has_virtual_destructor_v<DllLoader>);
static_assert(sizeof(DllLoader) == 2 * sizeof(void*), "the table of operations and the handle");

namespace {

bool IsInTheGlobalScope(const char* symbol) { return ::dlsym(RTLD_DEFAULT, symbol) != nullptr; }

// Another holder of a library, so that one closing too many is seen: it takes this one's share.
struct Holder {
  explicit Holder(const std::string& path) : handle(::dlopen(path.c_str(), RTLD_LAZY)) {}
  void* const handle;
};

class DllLoaderTest : public testing::Test {
 protected:
  DllLoaderTest() { InstallPlugins({"dsdr", "accord"}); }

  const std::string dsdr = TreePath("lib/librngdsdr.so");
  const std::string accord = TreePath("lib/librngaccord.so");
  const std::string absent = TreePath("lib/librngabsent.so");
};

}  // namespace

// --- Constructors

TEST_F(DllLoaderTest, HoldsNothingByDefault) {
  const DllLoader loader;
  EXPECT_EQ(nullptr, loader.GetHandle());
}

TEST_F(DllLoaderTest, ConstructorOpensTheLibraryAndPublishesItsSymbols) {
  const DllLoader loader(dsdr.c_str());
  EXPECT_EQ("dsdr.opened", CallLog());
  EXPECT_NE(nullptr, ::dlsym(loader.GetHandle(), "GetDsdrRng"));
  EXPECT_TRUE(IsInTheGlobalScope("GetDsdrRng"));
}

TEST_F(DllLoaderTest, ConstructorHoldsNothingWhenTheFileIsAbsent) {
  const DllLoader loader(absent.c_str());
  EXPECT_EQ(nullptr, loader.GetHandle());
}

TEST_F(DllLoaderTest, ConstructorHoldsNothingWhenTheFileIsNoLibrary) {
  WriteFile(absent, "not a library\n");
  const DllLoader loader(absent.c_str());
  EXPECT_EQ(nullptr, loader.GetHandle());
}

TEST_F(DllLoaderTest, ConstructorLeavesFunctionsUnresolved) {
  InstallPlugin("unixdev", "unresolved_function");
  const DllLoader loader(TreePath("lib/librngunixdev.so").c_str());
  EXPECT_NE(nullptr, loader.GetHandle());
}

// --- Load

TEST_F(DllLoaderTest, LoadReturnsTheHandleThatItHolds) {
  DllLoader loader;
  void* const handle = loader.Load(dsdr.c_str());
  EXPECT_NE(nullptr, handle);
  EXPECT_EQ(handle, loader.GetHandle());
  EXPECT_NE(nullptr, ::dlsym(handle, "GetDsdrRng"));
}

TEST_F(DllLoaderTest, LoadDoesNotPublishTheSymbols) {
  DllLoader loader;
  ASSERT_NE(nullptr, loader.Load(dsdr.c_str()));
  EXPECT_FALSE(IsInTheGlobalScope("GetDsdrRng"));
}

TEST_F(DllLoaderTest, LoadLeavesFunctionsUnresolved) {
  InstallPlugin("unixdev", "unresolved_function");
  DllLoader loader;
  EXPECT_NE(nullptr, loader.Load(TreePath("lib/librngunixdev.so").c_str()));
}

TEST_F(DllLoaderTest, LoadClosesTheOldLibraryBeforeItOpensTheNew) {
  DllLoader loader(dsdr.c_str());
  EXPECT_NE(nullptr, loader.Load(accord.c_str()));
  EXPECT_EQ("dsdr.opened dsdr.closed accord.opened", CallLog());
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
  EXPECT_TRUE(IsMapped("librngaccord.so"));
}

TEST_F(DllLoaderTest, LoadOfTheSameLibraryOpensItAnew) {
  DllLoader loader(dsdr.c_str());
  EXPECT_NE(nullptr, loader.Load(dsdr.c_str()));
  EXPECT_EQ("opened closed opened", CallLog("dsdr"));
  EXPECT_FALSE(IsInTheGlobalScope("GetDsdrRng"));  // as it would be, had the first stayed open
}

TEST_F(DllLoaderTest, FailedLoadReturnsNullAndHasClosedTheOldLibrary) {
  DllLoader loader(dsdr.c_str());
  EXPECT_EQ(nullptr, loader.Load(absent.c_str()));
  EXPECT_EQ(nullptr, loader.GetHandle());
  EXPECT_EQ("opened closed", CallLog("dsdr"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST_F(DllLoaderTest, LoadAfterAFailureWorks) {
  DllLoader loader(absent.c_str());
  EXPECT_NE(nullptr, loader.Load(dsdr.c_str()));
}

// --- Unload

TEST_F(DllLoaderTest, UnloadClosesTheLibrary) {
  DllLoader loader(dsdr.c_str());
  loader.Unload();
  EXPECT_EQ(nullptr, loader.GetHandle());
  EXPECT_EQ("opened closed", CallLog("dsdr"));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST_F(DllLoaderTest, UnloadOfNothingDoesNothing) {
  DllLoader loader;
  loader.Unload();
  EXPECT_EQ(nullptr, loader.GetHandle());
}

TEST_F(DllLoaderTest, NeverClosesAHandleTwice) {
  const Holder holder(dsdr);
  {
    DllLoader loader(dsdr.c_str());
    loader.Unload();
    loader.Unload();
    EXPECT_EQ(nullptr, loader.Load(absent.c_str()));
  }
  EXPECT_TRUE(IsMapped("librngdsdr.so"));
  ::dlclose(holder.handle);
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

// --- Detach

TEST_F(DllLoaderTest, DetachHandsTheHandleOverAndTheDestructorClosesNothing) {
  void* handle = nullptr;
  {
    DllLoader loader(dsdr.c_str());
    void* const held = loader.GetHandle();
    handle = loader.Detach();
    EXPECT_EQ(held, handle);
    EXPECT_EQ(nullptr, loader.GetHandle());
  }
  EXPECT_EQ("opened", CallLog("dsdr"));
  EXPECT_TRUE(IsMapped("librngdsdr.so"));
  EXPECT_EQ(0, ::dlclose(handle));
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST_F(DllLoaderTest, DetachOfNothingIsNull) {
  DllLoader loader;
  EXPECT_EQ(nullptr, loader.Detach());
}

TEST_F(DllLoaderTest, LoadAfterDetachLeavesTheDetachedLibraryOpen) {
  DllLoader loader(dsdr.c_str());
  void* const detached = loader.Detach();
  EXPECT_NE(nullptr, loader.Load(accord.c_str()));
  EXPECT_EQ("dsdr.opened accord.opened", CallLog());
  ::dlclose(detached);
}

// --- GetHandle and the destructor

TEST_F(DllLoaderTest, GetHandleLeavesTheLibraryToTheLoader) {
  {
    const DllLoader loader(dsdr.c_str());
    EXPECT_EQ(loader.GetHandle(), loader.GetHandle());
    EXPECT_TRUE(IsMapped("librngdsdr.so"));
  }
  EXPECT_FALSE(IsMapped("librngdsdr.so"));
}

TEST_F(DllLoaderTest, DestructorClosesOnlyItsOwnShare) {
  const DllLoader first(dsdr.c_str());
  { const DllLoader second(dsdr.c_str()); }
  EXPECT_TRUE(IsMapped("librngdsdr.so"));
  EXPECT_EQ("opened", CallLog("dsdr"));
}

TEST_F(DllLoaderTest, DestructorClosesThroughAPointerToABase) {
  struct Derived final : DllLoader {
    using DllLoader::DllLoader;
  };
  std::unique_ptr<DllLoader> loader = std::make_unique<Derived>(dsdr.c_str());
  loader.reset();
  EXPECT_EQ("opened closed", CallLog("dsdr"));
}
