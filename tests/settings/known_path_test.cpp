// The service in a library of its own, or none at all.

#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <new>

namespace fs = std::filesystem;

namespace {

constexpr char kService[] = "libcrypt_known_path.so";
constexpr char kFixedDataFile[] = RNG_DATA_DIR "/dsdr.bin";

constexpr int kDataDir = 0;
constexpr int kSettingsDir = 2;

void RemoveService() { fs::remove(TreePath("lib/") + kService); }

std::string StoredType(const std::string& directory) {
  const std::string content = ReadFile(directory + "/rng.ini");
  const std::string entry = "[Devices]\nRandomNumberGeneratorType=";
  return content.rfind(entry, 0) == 0 ? content.substr(entry.size()) : "";
}

}  // namespace

// --- The library

TEST(KnownPath, LibraryInTheTreeAnswersBothLookups) {
  const AggregatorLibrary library;
  IRngSettings& settings = *library.GetDefaultSettings();
  EXPECT_EQ(TreePath("share/dsdr.bin"), settings.GetDsdrFilePath());
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_EQ("dsdr\n", StoredType(TreePath("etc")));
  EXPECT_STREQ("dsdr", settings.GetType());
  EXPECT_EQ("0:256:0 2:256:0 2:256:0 2:256:0", CallLog("known_path"));
}

TEST(KnownPath, LibraryIsOpenedAtTheFirstUse) {
  const AggregatorLibrary library;
  library.Start(library.GetDefaultSettings(), 0);
  EXPECT_FALSE(IsMapped(kService));
  library.GetDefaultSettings()->GetType();
  EXPECT_TRUE(IsMapped(kService));
  library.ShutDown();
}

TEST(KnownPath, LibraryStaysInTheProcess) {
  AggregatorLibrary library;
  library.GetDefaultSettings()->GetType();
  RemoveService();
  library.GetDefaultSettings()->GetHardwareId();
  EXPECT_EQ("2:256:0 2:256:0", CallLog("known_path"));
  library.Close();
  EXPECT_TRUE(ReadFile("/proc/self/maps").find(kService) != std::string::npos);
}

TEST(KnownPath, LibraryIsLookedForAtEveryUse) {
  RemoveService();
  const AggregatorLibrary library;
  EXPECT_STREQ(kFixedDataFile, library.GetDefaultSettings()->GetDsdrFilePath());
  InstallKnownPath("whole");
  EXPECT_TRUE(library.GetDefaultSettings()->SetType("dsdr"));
  EXPECT_EQ("dsdr\n", StoredType(TreePath("etc")));
}

TEST(KnownPath, LibraryMayLackWhatOnlyItsOtherFunctionsNeed) {
  InstallKnownPath("unresolved_function");
  const AggregatorLibrary library;
  EXPECT_EQ(TreePath("share/dsdr.bin"), library.GetDefaultSettings()->GetDsdrFilePath());
}

// --- A failed lookup: there is no falling back to the fixed directories

TEST(KnownPath, RefusedDataDirectoryIsAFailedLookup) {
  KnownPath().directories.erase(kDataDir);
  const AggregatorLibrary library;
  EXPECT_STREQ("/dsdr.bin", library.GetDefaultSettings()->GetDsdrFilePath());
}

TEST(KnownPath, LibraryWithoutTheFunctionIsAFailedLookup) {
  InstallKnownPath("no_function");
  const AggregatorLibrary library;
  EXPECT_STREQ("/dsdr.bin", library.GetDefaultSettings()->GetDsdrFilePath());
  EXPECT_TRUE(IsMapped(kService));
}

// --- No service: the directories that were fixed when the library was built

TEST(KnownPath, DataDirectoryIsFixedWhereTheLibraryIsAbsent) {
  RemoveService();
  const AggregatorLibrary library;
  EXPECT_STREQ(kFixedDataFile, library.GetDefaultSettings()->GetDsdrFilePath());
  EXPECT_FALSE(IsMapped(kService));
}

TEST(KnownPath, DataDirectoryIsFixedWhereTheLibraryCannotBeOpened) {
  InstallKnownPath("absent");
  const AggregatorLibrary library;
  EXPECT_STREQ(kFixedDataFile, library.GetDefaultSettings()->GetDsdrFilePath());
  EXPECT_FALSE(IsMapped(kService));
}

TEST(KnownPath, ExhaustedMemoryAtTheFixedDirectoryReachesTheCaller) {
  RemoveService();
  const AggregatorLibrary library;
  FailAllocation(1);
  EXPECT_THROW(library.GetDefaultSettings()->GetDsdrFilePath(), std::bad_alloc);
  EXPECT_STREQ(kFixedDataFile, library.GetDefaultSettings()->GetDsdrFilePath());
}

TEST(KnownPath, FixedDataFilePathIsKept) {
  RemoveService();
  const AggregatorLibrary library;
  const char* const path = library.GetDefaultSettings()->GetDsdrFilePath();
  InstallKnownPath("whole");
  EXPECT_EQ(path, library.GetDefaultSettings()->GetDsdrFilePath());
  EXPECT_STREQ(kFixedDataFile, path);
}

// These need a settings directory that is nobody's: one inside the build directory.
class FixedSettingsDirectory : public testing::Test {
 protected:
  void SetUp() override {
    if (!FIXED_SETTINGS_ARE_SCRATCH) GTEST_SKIP() << directory << " is not the tests' to change";
  }

  const std::string directory = RNG_SETTINGS_DIR;
};

// The only case that writes there, since cases run side by side.
TEST_F(FixedSettingsDirectory, HoldsTheFileWhereTheLibraryIsAbsentOrCannotBeOpened) {
  const AggregatorLibrary library;
  IRngSettings& settings = *library.GetDefaultSettings();
  for (const auto& hideService : {RemoveService, +[] { InstallKnownPath("absent"); }}) {
    hideService();
    fs::remove_all(directory);
    EXPECT_EQ(nullptr, settings.GetType());
    EXPECT_FALSE(settings.SetHardwareId("A1"));  // creates no directory here either
    EXPECT_FALSE(fs::exists(directory));
    EXPECT_TRUE(settings.SetType("dsdr"));
    EXPECT_TRUE(settings.SetHardwareId("A1"));
    EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\nRandomNumberGeneratorHardwareID=A1\n",
              ReadFile(directory + "/rng.ini"));
    EXPECT_STREQ("dsdr", settings.GetType());
    EXPECT_STREQ("A1", settings.GetHardwareId());
  }
  fs::remove_all(directory);
}

TEST_F(FixedSettingsDirectory, IsNotUsedWhereTheServiceRefuses) {
  KnownPath().directories.erase(kSettingsDir);
  const AggregatorLibrary library;
  EXPECT_FALSE(library.GetDefaultSettings()->SetType("accord"));
  EXPECT_EQ(nullptr, library.GetDefaultSettings()->GetType());
}

TEST_F(FixedSettingsDirectory, IsNotUsedWhereTheLibraryLacksTheFunction) {
  InstallKnownPath("no_function");
  const AggregatorLibrary library;
  EXPECT_FALSE(library.GetDefaultSettings()->SetType("accord"));
  EXPECT_EQ(nullptr, library.GetDefaultSettings()->GetType());
}
