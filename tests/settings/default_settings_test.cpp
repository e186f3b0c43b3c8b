#include "tests/settings/default_settings.h"

#include "tests/support/open_files.h"
#include "tests/support/permissions.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

using GetOperation = const char* (*)(IRngSettings*);
using SetOperation = bool (*)(IRngSettings*, const char*);

}  // namespace

// --- The two values in the file

TEST_F(DefaultSettings, NothingIsConfiguredWithoutAFile) {
  fs::create_directory(TreePath("etc"));
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_EQ(nullptr, settings.GetHardwareId());
  EXPECT_TRUE(fs::is_empty(TreePath("etc")));
}

TEST_F(DefaultSettings, NothingIsConfiguredWithoutADirectory) {
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_EQ(nullptr, settings.GetHardwareId());
  EXPECT_FALSE(fs::exists(TreePath("etc")));
}

TEST_F(DefaultSettings, ReadsTheTwoKeysOfTheDevicesSection) {
  WriteFile(SettingsFile(),
            "RandomNumberGeneratorType=no\n[Other]\nRandomNumberGeneratorHardwareID=no\n\n"
            "[Devices]\nRandomNumberGeneratorType=accord\nRandomNumberGeneratorHardwareID=A 1\n");
  EXPECT_STREQ("accord", settings.GetType());
  EXPECT_STREQ("A 1", settings.GetHardwareId());
}

TEST_F(DefaultSettings, EachKeyMayBeMissing) {
  WriteDevices("RandomNumberGeneratorType=accord\n");
  EXPECT_STREQ("accord", settings.GetType());
  EXPECT_EQ(nullptr, settings.GetHardwareId());
  WriteDevices("RandomNumberGeneratorHardwareID=A1\n");
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_STREQ("A1", settings.GetHardwareId());
}

TEST_F(DefaultSettings, ValuesAreReadTrimmed) {
  WriteDevices("RandomNumberGeneratorType= \t dsdr \r\nRandomNumberGeneratorHardwareID=  A  1\r\n");
  EXPECT_STREQ("dsdr", settings.GetType());
  EXPECT_STREQ("A  1", settings.GetHardwareId());
}

TEST_F(DefaultSettings, EmptyOrBlankValueIsNull) {
  for (const std::string value : {"\n", "   \n", "\t\r\n", "", "a=\n"}) {
    WriteDevices("RandomNumberGeneratorType=" + value);
    EXPECT_EQ(nullptr, settings.GetType()) << testing::PrintToString(value);
    WriteDevices("RandomNumberGeneratorHardwareID=" + value);
    EXPECT_EQ(nullptr, settings.GetHardwareId()) << testing::PrintToString(value);
  }
}

TEST_F(DefaultSettings, FileIsReadAfreshAtEachCall) {
  for (const std::string value : {"first", "second and longer", "3", ""}) {
    WriteDevices("RandomNumberGeneratorType=" + value +
                 "\nRandomNumberGeneratorHardwareID=" + value + "\n");
    EXPECT_STREQ(value.empty() ? nullptr : value.c_str(), settings.GetType());
    EXPECT_STREQ(value.empty() ? nullptr : value.c_str(), settings.GetHardwareId());
  }
  fs::remove(SettingsFile());
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_EQ(nullptr, settings.GetHardwareId());
}

TEST_F(DefaultSettings, LongValueIsCutWhereTheReaderCutsItsLine) {
  EXPECT_TRUE(settings.SetType(std::string(1000, 'v').c_str()));
  EXPECT_STREQ(std::string(510 - 26, 'v').c_str(), settings.GetType());
  // Rewriting cuts the file at the overlong line.
  EXPECT_TRUE(settings.SetHardwareId("A1"));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorHardwareID=A1\n", ReadFile(SettingsFile()));
}

TEST_F(DefaultSettings, TextStaysValidAcrossTheOtherOperations) {
  for (const std::string value : {"short", "too long to be kept inside of a string object"}) {
    WriteDevices("RandomNumberGeneratorType=t " + value + "\nRandomNumberGeneratorHardwareID=h " +
                 value + "\n");
    const char* const path = settings.GetDsdrFilePath();
    const char* const type = settings.GetType();
    const char* const hardwareId = settings.GetHardwareId();
    EXPECT_EQ(path, settings.GetDsdrFilePath());
    EXPECT_TRUE(settings.SetType("other"));
    EXPECT_TRUE(settings.SetHardwareId("other"));
    EXPECT_EQ("t " + value, type);
    EXPECT_EQ("h " + value, hardwareId);
    EXPECT_STREQ("other", settings.GetType());
    EXPECT_EQ("h " + value, hardwareId);
    EXPECT_EQ(TreePath("share/dsdr.bin"), path);
  }
}

// --- Storing

TEST_F(DefaultSettings, SetTypeCreatesTheDirectoriesAndTheFile) {
  KnownPath().directories[kSettingsDir] = TreePath("new/and/deep");
  const Umask umask(0);
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\n",
            ReadFile(TreePath("new/and/deep/rng.ini")));
  for (const auto* directory : {"new", "new/and", "new/and/deep"}) {
    EXPECT_EQ(0775U, ModeOf(TreePath(directory))) << directory;
  }
  EXPECT_STREQ("dsdr", settings.GetType());
}

TEST_F(DefaultSettings, DirectoriesAreCreatedLessTheUmask) {
  const Umask umask(027);
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_EQ(0750U, ModeOf(TreePath("etc")));
}

TEST_F(DefaultSettings, SetHardwareIdCreatesNoDirectories) {
  EXPECT_FALSE(settings.SetHardwareId("A1"));
  EXPECT_FALSE(fs::exists(TreePath("etc")));
}

TEST_F(DefaultSettings, SetHardwareIdCreatesTheFileInADirectoryThatExists) {
  fs::create_directory(TreePath("etc"));
  EXPECT_TRUE(settings.SetHardwareId("A1"));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorHardwareID=A1\n", ReadFile(SettingsFile()));
}

TEST_F(DefaultSettings, StoringKeepsTheRestOfTheFile) {
  WriteFile(SettingsFile(), "[Other]\nkey=1\n\n[Devices]\nRandomNumberGeneratorType=old\n\nend\n");
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_TRUE(settings.SetHardwareId("A1"));
  EXPECT_EQ(
      "[Other]\nkey=1\n\n[Devices]\nRandomNumberGeneratorType=dsdr\n"
      "RandomNumberGeneratorHardwareID=A1\n\nend\n",
      ReadFile(SettingsFile()));
}

TEST_F(DefaultSettings, NullIsStoredAsAnEmptyValue) {
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_TRUE(settings.SetHardwareId("A1"));
  EXPECT_TRUE(settings.SetType(nullptr));
  EXPECT_TRUE(settings.SetHardwareId(nullptr));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=\nRandomNumberGeneratorHardwareID=\n",
            ReadFile(SettingsFile()));
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_EQ(nullptr, settings.GetHardwareId());
}

TEST_F(DefaultSettings, StoringIsRefusedWhereADirectoryCannotBeCreated) {
  WriteFile(TreePath("file"), "content");
  // The first "/.." is there as soon as its directory is made; the file then stands in the way.
  KnownPath().directories[kSettingsDir] = TreePath("new/../file/below");
  EXPECT_FALSE(settings.SetType("dsdr"));
  EXPECT_FALSE(settings.SetHardwareId("A1"));
  EXPECT_TRUE(fs::is_directory(TreePath("new")));  // made before the failure
  EXPECT_EQ("content", ReadFile(TreePath("file")));
}

TEST_F(DefaultSettings, StoringIsRefusedBelowADirectoryThatMustNotBeChanged) {
  fs::create_directory(TreePath("closed"));
  fs::permissions(TreePath("closed"), fs::perms(0555));
  KnownPath().directories[kSettingsDir] = TreePath("closed/below");
  settings.GetType();  // maps the service while its file can be read for certain
  const Unprivileged unprivileged;
  EXPECT_FALSE(settings.SetType("dsdr"));
  EXPECT_TRUE(fs::is_empty(TreePath("closed")));
  KnownPath().directories[kSettingsDir] = TreePath("closed");
  EXPECT_FALSE(settings.SetType("dsdr"));
  EXPECT_FALSE(settings.SetHardwareId("A1"));
  EXPECT_TRUE(fs::is_empty(TreePath("closed")));
}

TEST_F(DefaultSettings, StoringIsRefusedWhereTheWriterFails) {
  WriteDevices("RandomNumberGeneratorType=old\n");
  fs::create_directory(SettingsFile() + ".tmp");
  EXPECT_FALSE(settings.SetType("dsdr"));
  EXPECT_FALSE(settings.SetHardwareId("A1"));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=old\n", ReadFile(SettingsFile()));
  EXPECT_STREQ("old", settings.GetType());
}

// --- The object

TEST_F(DefaultSettings, WorksBeforeTheFirstStartAndAfterTheLastShutDown) {
  EXPECT_TRUE(settings.SetType("before"));
  EXPECT_STREQ("before", settings.GetType());
  library.Start(&settings, 0);
  EXPECT_EQ(&settings, library.GetDefaultSettings());
  EXPECT_TRUE(settings.SetType("during"));
  EXPECT_STREQ("during", settings.GetType());
  library.ShutDown();
  EXPECT_EQ(&settings, library.GetDefaultSettings());
  EXPECT_TRUE(settings.SetType("after"));
  EXPECT_TRUE(settings.SetHardwareId("A1"));
  EXPECT_STREQ("after", settings.GetType());
  EXPECT_STREQ("A1", settings.GetHardwareId());
  EXPECT_EQ(TreePath("share/dsdr.bin"), settings.GetDsdrFilePath());
}

TEST_F(DefaultSettings, OperationsStandInTheirSlots) {
  void** const slots = *reinterpret_cast<void***>(&settings);
  const auto get = [&](int slot) { return reinterpret_cast<GetOperation>(slots[slot])(&settings); };
  const auto set = [&](int slot, const char* value) {
    return reinterpret_cast<SetOperation>(slots[slot])(&settings, value);
  };
  EXPECT_TRUE(set(1, "dsdr"));
  EXPECT_TRUE(set(3, "A1"));
  EXPECT_STREQ("dsdr", get(0));
  EXPECT_STREQ("A1", get(2));
  EXPECT_EQ(TreePath("share/dsdr.bin"), get(4));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\nRandomNumberGeneratorHardwareID=A1\n",
            ReadFile(SettingsFile()));
}

TEST_F(DefaultSettings, LeavesNoFileOpen) {
  settings.GetType();  // maps the service
  const auto before = CountOpenFiles();
  settings.SetType("dsdr");
  settings.SetHardwareId("A1");
  settings.GetType();
  settings.GetHardwareId();
  settings.GetDsdrFilePath();
  EXPECT_EQ(before, CountOpenFiles());
}
