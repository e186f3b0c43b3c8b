// Which directories the built-in settings use: when they ask the known-path service, and what they make
// of its answer.

#include "tests/settings/default_settings.h"

#include <functional>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST_F(DefaultSettings, EveryUseAsksTheServiceAfreshWithAClearBuffer) {
  const struct {
    std::function<void()> use;
    std::string asked;
  } rows[] = {
      {[&] { settings.GetType(); }, kAskedForSettings},
      {[&] { settings.GetType(); }, kAskedForSettings},
      {[&] { settings.GetHardwareId(); }, kAskedForSettings},
      {[&] { settings.GetHardwareId(); }, kAskedForSettings},
      // Once for the directories, once for the file.
      {[&] { settings.SetType("dsdr"); }, kAskedForSettings + std::string(" ") + kAskedForSettings},
      {[&] { settings.SetHardwareId("A1"); }, kAskedForSettings},
      {[&] { settings.GetType(); }, kAskedForSettings},
      {[&] { settings.GetDsdrFilePath(); }, kAskedForData},
      {[&] { settings.GetDsdrFilePath(); }, ""},  // kept
  };
  for (const auto& row : rows) {
    ClearCallLog();
    row.use();
    EXPECT_EQ(row.asked, CallLog("known_path"));
  }
}

TEST_F(DefaultSettings, ServiceIsNotAskedBeforeTheFirstUse) {
  library.Start(&settings, 0);
  library.ShutDown();
  EXPECT_EQ("", CallLog("known_path"));
}

TEST_F(DefaultSettings, DirectoryThatChangesIsFollowed) {
  EXPECT_TRUE(settings.SetType("dsdr"));
  KnownPath().directories[kSettingsDir] = TreePath("elsewhere");
  EXPECT_EQ(nullptr, settings.GetType());
  WriteFile(TreePath("elsewhere/rng.ini"), "[Devices]\nRandomNumberGeneratorType=accord\n");
  EXPECT_STREQ("accord", settings.GetType());
}

TEST_F(DefaultSettings, SetTypeWritesWhereTheSecondAnswerSays) {
  fs::create_directory(TreePath("second"));
  int calls = 0;
  Fake("known_path").hooks[kAskedForSettings] = [&calls] {
    KnownPath().directories[kSettingsDir] = TreePath(++calls == 1 ? "first" : "second");
  };
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_TRUE(fs::is_empty(TreePath("first")));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\n", ReadFile(TreePath("second/rng.ini")));
}

TEST_F(DefaultSettings, SetTypeFailsWhereOnlyTheSecondLookupFails) {
  int calls = 0;
  Fake("known_path").hooks[kAskedForSettings] = [&calls] {
    if (++calls == 2) KnownPath().directories.erase(kSettingsDir);
  };
  EXPECT_FALSE(settings.SetType("dsdr"));
  EXPECT_TRUE(fs::is_empty(TreePath("etc")));  // made between the two
}

TEST_F(DefaultSettings, FailedLookupConfiguresNothing) {
  WriteDevices("RandomNumberGeneratorType=accord\nRandomNumberGeneratorHardwareID=A1\n");
  EXPECT_STREQ("accord", settings.GetType());
  EXPECT_STREQ("A1", settings.GetHardwareId());
  KnownPath().directories.erase(kSettingsDir);
  fs::current_path(TreePath("etc"));  // an rng.ini that happens to lie here is not the settings
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_EQ(nullptr, settings.GetHardwareId());
}

TEST_F(DefaultSettings, FailedLookupStoresNothing) {
  KnownPath().directories.erase(kSettingsDir);
  fs::create_directory(TreePath("here"));
  fs::current_path(TreePath("here"));
  EXPECT_FALSE(settings.SetType("dsdr"));
  EXPECT_EQ(kAskedForSettings, CallLog("known_path"));  // not asked for the file any more
  EXPECT_FALSE(settings.SetHardwareId("A1"));
  EXPECT_FALSE(settings.SetHardwareId(nullptr));
  EXPECT_TRUE(fs::is_empty(TreePath("here")));
}

TEST_F(DefaultSettings, RecoversFromAFailedLookup) {
  WriteDevices("RandomNumberGeneratorType=accord\n");
  KnownPath().directories.erase(kSettingsDir);
  EXPECT_EQ(nullptr, settings.GetType());
  KnownPath().directories[kSettingsDir] = TreePath("etc");
  EXPECT_STREQ("accord", settings.GetType());
}

TEST_F(DefaultSettings, RelativeDirectoryIsUsedAsItIsButNeverCreated) {
  fs::create_directory(TreePath("here"));
  fs::current_path(TreePath("here"));
  KnownPath().directories[kSettingsDir] = "relative";
  EXPECT_FALSE(settings.SetType("dsdr"));
  EXPECT_FALSE(fs::exists(TreePath("here/relative")));
  fs::create_directory(TreePath("here/relative"));
  EXPECT_TRUE(settings.SetHardwareId("A1"));
  EXPECT_STREQ("A1", settings.GetHardwareId());
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorHardwareID=A1\n",
            ReadFile(TreePath("here/relative/rng.ini")));
}

TEST_F(DefaultSettings, SeparatorIsAlwaysAdded) {
  KnownPath().directories = {{kDataDir, TreePath("share/")}, {kSettingsDir, TreePath("etc/")}};
  EXPECT_EQ(TreePath("share//dsdr.bin"), settings.GetDsdrFilePath());
  EXPECT_TRUE(settings.SetType("dsdr"));  // the file system does not mind
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\n", ReadFile(SettingsFile()));
}

TEST_F(DefaultSettings, DirectoryIsAByteString) {
  const std::string name = "\xFF %s \xC3\xA4\t\n";
  KnownPath().directories = {{kDataDir, TreePath(name)}, {kSettingsDir, TreePath(name)}};
  EXPECT_EQ(TreePath(name) + "/dsdr.bin", settings.GetDsdrFilePath());
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_STREQ("dsdr", settings.GetType());
  EXPECT_TRUE(fs::exists(TreePath(name + "/rng.ini")));
}

TEST_F(DefaultSettings, DirectoryMayFillTheBuffer) {
  const std::string longest = TreePath(std::string(255 - TreePath("").size(), 'd'));
  KnownPath().directories = {{kDataDir, longest}, {kSettingsDir, longest}};
  EXPECT_EQ(longest + "/dsdr.bin", settings.GetDsdrFilePath());
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_TRUE(fs::exists(longest + "/rng.ini"));
}

TEST_F(DefaultSettings, AnswerWithoutATerminatorEndsWithTheBuffer) {
  KnownPath().fillsBuffer = true;
  fs::create_directory(TreePath("here"));
  fs::current_path(TreePath("here"));
  EXPECT_EQ(std::string(256, 'x').append("/dsdr.bin"), settings.GetDsdrFilePath());
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_EQ(nullptr, settings.GetHardwareId());
  EXPECT_FALSE(settings.SetType("dsdr"));  // relative
  EXPECT_FALSE(settings.SetHardwareId("A1"));
  EXPECT_TRUE(fs::is_empty(TreePath("here")));
}

// --- The data file

TEST_F(DefaultSettings, DataFileIsNeverOpenedNorItsDirectoryCreated) {
  EXPECT_EQ(TreePath("share/dsdr.bin"), settings.GetDsdrFilePath());
  EXPECT_FALSE(fs::exists(TreePath("share")));
}

TEST_F(DefaultSettings, DataFilePathIsKept) {
  const char* const path = settings.GetDsdrFilePath();
  KnownPath().directories[kDataDir] = TreePath("elsewhere");
  EXPECT_EQ(path, settings.GetDsdrFilePath());
  KnownPath().directories.erase(kDataDir);
  EXPECT_EQ(path, settings.GetDsdrFilePath());
  EXPECT_EQ(TreePath("share/dsdr.bin"), path);
}

TEST_F(DefaultSettings, DataFilePathIsKeptThroughRestarts) {
  const char* const path = settings.GetDsdrFilePath();
  KnownPath().directories[kDataDir] = TreePath("elsewhere");
  for (int round = 0; round < 2; ++round) {
    library.Start(&settings, 0);
    EXPECT_EQ(path, settings.GetDsdrFilePath());
    library.ShutDown();
  }
  EXPECT_EQ(TreePath("share/dsdr.bin"), path);
  EXPECT_EQ(kAskedForData, CallLog("known_path"));
}

TEST_F(DefaultSettings, DataFilePathOfAFailedLookupIsKeptToo) {
  const std::string directory = KnownPath().directories[kDataDir];
  KnownPath().directories.erase(kDataDir);
  const char* const path = settings.GetDsdrFilePath();
  EXPECT_STREQ("/dsdr.bin", path);
  KnownPath().directories[kDataDir] = directory;
  EXPECT_EQ(path, settings.GetDsdrFilePath());
  EXPECT_STREQ("/dsdr.bin", path);
  EXPECT_EQ(kAskedForData, CallLog("known_path"));
}

TEST_F(DefaultSettings, EmptyDataDirectoryIsAnAnswer) {
  KnownPath().directories[kDataDir] = "";
  EXPECT_STREQ("/dsdr.bin", settings.GetDsdrFilePath());
}

TEST_F(DefaultSettings, LookupsFailIndependently) {
  KnownPath().directories.erase(kDataDir);
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_STREQ("dsdr", settings.GetType());
  EXPECT_STREQ("/dsdr.bin", settings.GetDsdrFilePath());
}
