#include "tests/settings/process.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>

namespace fs = std::filesystem;

namespace {

constexpr char kAskedForSettings[] = "2:256:0";  // id, size, and the fourth argument
constexpr char kAskedForData[] = "0:256:0";

constexpr int kDataDir = 0;
constexpr int kSettingsDir = 2;

std::string SettingsFile() { return TreePath("etc/rng.ini"); }

void WriteDevices(const std::string& entries) {
  WriteFile(SettingsFile(), "[Devices]\n" + entries);
}

// The built-in settings of a library that was never started.
class DefaultSettings : public testing::Test {
 protected:
  AggregatorLibrary library;
  IRngSettings& settings = *library.GetDefaultSettings();
};

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

// --- The known-path service

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

TEST(DefaultSettingsObject, FreesItsTextsAtUnload) {
  const std::string value(100, 'v');
  std::size_t alive[2] = {};
  for (std::size_t& left : alive) {  // the first round also fills what the fakes keep
    AggregatorLibrary library;
    IRngSettings& settings = *library.GetDefaultSettings();
    EXPECT_TRUE(settings.SetType(value.c_str()));
    EXPECT_TRUE(settings.SetHardwareId(value.c_str()));
    EXPECT_EQ(value, settings.GetType());
    EXPECT_EQ(value, settings.GetHardwareId());
    EXPECT_NE(nullptr, settings.GetDsdrFilePath());
    library.Close();
    EXPECT_FALSE(IsMapped("librngaggregator.so"));
    ClearCallLog();
    left = AllocationsAlive();
  }
  EXPECT_EQ(alive[0], alive[1]);
}

// --- Exhausted memory

class ExhaustedMemory : public DefaultSettings {
 protected:
  // Repeats an operation, failing its first allocation after the service was asked, then its second
  // and so on, until it needs no more; returns how often it failed.
  std::size_t CountFailures(const std::function<void()>& operation) {
    std::size_t number = 0;
    for (const auto* asked : {kAskedForSettings, kAskedForData}) {
      Fake("known_path").hooks[asked] = [&number] { FailAllocation(number); };
    }
    for (number = 1;; ++number) {
      try {
        operation();
        FailAllocation(0);
        return number - 1;
      } catch (const std::bad_alloc&) {
        afterFailure();
      }
    }
  }

  std::function<void()> afterFailure = [] {};
};

TEST_F(ExhaustedMemory, ReachesTheCallerOfAGet) {
  const std::string value(100, 'v');
  WriteDevices("RandomNumberGeneratorType=" + value + "\nRandomNumberGeneratorHardwareID=" + value);
  const char* text = nullptr;
  EXPECT_LT(0U, CountFailures([&] { text = settings.GetType(); }));
  EXPECT_EQ(value, text);
  EXPECT_LT(0U, CountFailures([&] { text = settings.GetHardwareId(); }));
  EXPECT_EQ(value, text);
  EXPECT_LT(0U, CountFailures([&] { text = settings.GetDsdrFilePath(); }));
  EXPECT_EQ(TreePath("share/dsdr.bin"), text);
}

TEST_F(ExhaustedMemory, ReachesTheCallerOfASetAndTheFileIsUntouched) {
  WriteFile(SettingsFile(), "[Devices]\r\n");
  afterFailure = [] { EXPECT_EQ("[Devices]\r\n", ReadFile(SettingsFile())); };
  EXPECT_LT(0U, CountFailures([&] { EXPECT_TRUE(settings.SetType("dsdr")); }));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\n", ReadFile(SettingsFile()));

  WriteFile(SettingsFile(), "[Devices]\r\n");
  EXPECT_LT(0U, CountFailures([&] { EXPECT_TRUE(settings.SetHardwareId("A1")); }));
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorHardwareID=A1\n", ReadFile(SettingsFile()));
}
