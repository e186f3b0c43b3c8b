#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

TEST_F(Doctor, ShowsTheSettingsFileOfTheService) {
  const json before = Examine("dsdr").at("settings");
  EXPECT_EQ(TreePath(kSettingsFile), before.at("file"));
  EXPECT_EQ(TreePath("share/dsdr.bin"), before.at("data_file"));
  EXPECT_EQ(TreePath("lib/libcrypt_known_path.so"), before.at("known_path_service"));
  EXPECT_FALSE(before.at("exists"));
  EXPECT_TRUE(before.at("writable"));
  EXPECT_FALSE(fs::exists(TreePath("etc")));
  ASSERT_EQ(0, Run("default set dsdr").status);
  const json after = Examine("dsdr").at("settings");
  EXPECT_TRUE(after.at("exists"));
  EXPECT_EQ(json(), after.at("reading_fault"));
  EXPECT_TRUE(after.at("writable"));
}

TEST_F(Doctor, SeesWhatIsInTheWayOfTheSettingsFile) {
  fs::create_directories(TreePath(kSettingsFile));
  const json folder = Examine("dsdr").at("settings");
  EXPECT_TRUE(folder.at("exists"));
  EXPECT_EQ("it is a directory", folder.at("reading_fault"));
  EXPECT_FALSE(folder.at("writable"));
  fs::remove(TreePath(kSettingsFile));
  WriteFile(TreePath(kSettingsFile), "[Devices]\n");
  fs::create_directory(TreePath("etc/rng.ini.tmp"));
  EXPECT_FALSE(Examine("dsdr").at("settings").at("writable"));
  fs::remove_all(TreePath("etc"));
  fs::create_symlink(TreePath("gone"), TreePath("etc"));
  EXPECT_FALSE(Examine("dsdr").at("settings").at("writable"));
  fs::remove(TreePath("etc"));
  WriteFile(TreePath("etc"), "a file in the way");
  EXPECT_FALSE(Examine("dsdr").at("settings").at("writable"));
}

TEST_F(Doctor, ShowsTheFixedDirectoryWithoutAService) {
  InstallKnownPath("absent");
  const json settings = Examine("dsdr").at("settings");
  EXPECT_EQ(json(), settings.at("known_path_service"));
  EXPECT_EQ(RNG_SETTINGS_DIR "/rng.ini", settings.at("file"));
}

TEST_F(Doctor, SeesAServiceThatTheProcessAlreadyHas) {
  fs::rename(TreePath("lib/libcrypt_known_path.so"), TreePath("lib/another.so"));
  const json settings = Examine("dsdr", "LD_PRELOAD=" + TreePath("lib/another.so")).at("settings");
  EXPECT_EQ(TreePath(kSettingsFile), settings.at("file"));
  EXPECT_NE(json(), settings.at("known_path_service"));
}

TEST_F(Doctor, ExplainsAServiceThatDoesNotAnswer) {
  InstallKnownPath("no_function");
  const json silent = Examine("dsdr").at("settings");
  EXPECT_EQ(json(), silent.at("file"));
  EXPECT_EQ("the known-path service returns no directory", silent.at("problem"));
  InstallKnownPath("crashing");
  const json crashing = Examine("dsdr").at("settings");
  EXPECT_EQ("the known-path service crashed with signal 6 (Aborted)", crashing.at("problem"));
  InstallKnownPath("exiting");
  const json exiting = Examine("dsdr").at("settings");
  EXPECT_THAT(Text(exiting.at("problem")),
              StartsWith("the known-path service exited with status 0"));
}

TEST_F(Doctor, APipeInThePlaceOfTheSettingsIsNotBlamedOnTheService) {
  fs::create_directory(TreePath("etc"));
  ASSERT_EQ(0, ::mkfifo(TreePath(kSettingsFile).c_str(), 0600));
  const json settings = Examine("dsdr", "", 1).at("settings");
  EXPECT_EQ(TreePath(kSettingsFile), settings.at("file"));
  EXPECT_EQ("it is a FIFO, so programs that ask for the default hang", settings.at("problem"));
}

TEST_F(Doctor, SaysWhyNoDefaultIsConfigured) {
  WriteFile(TreePath(kSettingsFile), "[Device]\nRandomNumberGeneratorType=dsdr\n");
  EXPECT_THAT(Run("doctor").output,
              HasSubstr("\nDefault          none: the file sets no "
                        "RandomNumberGeneratorType in a section [Devices]\n"));
  fs::remove(TreePath(kSettingsFile));
  fs::create_directory(TreePath(kSettingsFile));
  EXPECT_THAT(Run("doctor").output, AllOf(HasSubstr("not readable (it is a directory)"),
                                          HasSubstr("\nDefault          none: the settings file "
                                                    "cannot be read\n")));
}
