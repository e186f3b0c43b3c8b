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

// The doctor reads how far the kernel goes. The level that this kernel really has does not matter here.
TEST_F(Doctor, ForeseesWhatTheKernelProtectsInStickyDirectories) {
  if (::geteuid() != 0 || RunShell("unshare --mount true").status != 0) {
    GTEST_SKIP() << "only root can give a file away and replace the level";
  }
  const std::string temporary = TreePath("etc/rng.ini.tmp");
  WriteFile(TreePath(kSettingsFile), "[Devices]\n");
  WriteFile(temporary, "");
  ASSERT_EQ(0, ::chown(temporary.c_str(), 4711, 4711));
  const auto fault = [](unsigned mode, const std::string& level) {
    WriteFile(TreePath("level"), level);
    fs::permissions(TreePath("etc"), fs::perms(mode));
    return Examine("dsdr", "unshare --mount sh -c 'mount --bind " + TreePath("level") +
                               " /proc/sys/fs/protected_regular && exec \"$@\"' sh")
        .at("settings")
        .at("writing_fault");
  };
  const json isProtected = temporary + " belongs to another user in a sticky directory";
  EXPECT_EQ(isProtected, fault(01777, "1"));
  EXPECT_EQ(isProtected, fault(01775, "2"));
  EXPECT_EQ(json(), fault(01777, "0"));
  EXPECT_EQ(json(), fault(01775, "1"));
  EXPECT_EQ(json(), fault(01755, "2"));
  EXPECT_EQ(json(), fault(0777, "2"));
  ASSERT_EQ(0, ::chown(temporary.c_str(), 0, 0));
  EXPECT_EQ(json(), fault(01777, "2"));
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

TEST_F(Doctor, SaysWhatAFailingServiceMeans) {
  InstallUnixDev();
  const std::string file = TreePath("lib/libcrypt_known_path.so");
  InstallKnownPath("no_function");
  const Result silent = Run("doctor");
  EXPECT_EQ(1, silent.status);
  EXPECT_EQ(
      "rngctl: The settings file cannot be read: the known-path service returns no directory.\n",
      silent.errors);
  EXPECT_THAT(
      silent.output,
      HasSubstr("\nSettings file: Reinstall or update the known-path service, " + file +
                ". Until then, the library reads no configured default and stores none.\n"));
  InstallKnownPath("throwing");
  const Result throwing = Run("doctor");
  EXPECT_EQ(1, throwing.status);
  EXPECT_EQ(
      "rngctl: The default cannot be read: the known-path service threw an exception: no "
      "directories today.\n",
      throwing.errors);
  EXPECT_THAT(throwing.output,
              HasSubstr(file + ". Until then, every program that asks for the default fails the "
                               "same way.\n"));
  EXPECT_EQ(0, Run("doctor unixdev").status);
}

// The data file of "dsdr" is looked up last, so the programs that only ask for the default have got their answer.
TEST_F(Doctor, AServiceThatFailsLaterDoesNotFailForTheDefault) {
  InstallUnixDev();
  InstallKnownPath("crashing_for_data");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(
      result.errors,
      StartsWith("rngctl: The settings file cannot be read: the known-path service crashed"));
  EXPECT_THAT(result.output, Not(HasSubstr("every program that asks for the default")));
}

TEST_F(Doctor, APipeInThePlaceOfTheSettingsIsNotBlamedOnTheService) {
  fs::create_directory(TreePath("etc"));
  ASSERT_EQ(0, ::mkfifo(TreePath(kSettingsFile).c_str(), 0600));
  const json report = Examine("dsdr", "", 1);
  const json settings = report.at("settings");
  EXPECT_EQ(TreePath(kSettingsFile), settings.at("file"));
  EXPECT_EQ("it is a named pipe (FIFO), so programs that ask for the default hang",
            settings.at("problem"));
  EXPECT_EQ(
      "Remove the named pipe " + TreePath(kSettingsFile) + ": the library expects a file there.",
      settings.at("fix"));
  EXPECT_EQ(json(), report.at("start").at("problem"));  // it does not ask for the default
}

TEST_F(Doctor, SaysWhyNoDefaultIsConfigured) {
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=\n");
  EXPECT_THAT(Run("doctor").output,
              HasSubstr("\nDefault          none: the file sets no "
                        "RandomNumberGeneratorType in the section [Devices]\n"));
  fs::remove(TreePath(kSettingsFile));
  fs::create_directory(TreePath(kSettingsFile));
  EXPECT_THAT(Run("doctor").output, AllOf(HasSubstr("not readable (it is a directory)"),
                                          HasSubstr("\nDefault          none: the settings file "
                                                    "cannot be read\n")));
}

TEST_F(Doctor, SaysWhichLineTheLibraryIgnores) {
  InstallUnixDev();
  WriteFile(TreePath(kSettingsFile), "[Device]\nRandomNumberGeneratorType=unixdev\n");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: The library ignores a line of the settings file: line 1 has [Device] instead of "
      "[Devices].\n",
      result.errors);
  EXPECT_THAT(
      result.output,
      AllOf(HasSubstr("\nDefault          none: line 1 has [Device] instead of [Devices]\n"),
            HasSubstr("\nDefault: Edit " + TreePath(kSettingsFile) +
                      ": line 1 must begin with [Devices].\n")));
  const json report = Examine("");
  EXPECT_EQ(json(), report.at("default"));
  EXPECT_EQ("line 1 has [Device] instead of [Devices]",
            report.at("settings").at("ignored_default").at("problem"));
  EXPECT_EQ(0, MatchSchema("doctor.schema.json", report.dump()).status);
  EXPECT_EQ(0, Run("doctor unixdev").status);
}

TEST_F(Doctor, ReadsALongSettingsFileToItsEnd) {
  std::string text;
  while (text.size() < 500'000) text += "# Nothing is configured in this line.\n";
  WriteFile(TreePath(kSettingsFile), text + "[Device]\nRandomNumberGeneratorType=unixdev\n");
  EXPECT_THAT(Text(Examine("dsdr").at("settings").at("ignored_default").at("problem")),
              HasSubstr("has [Device] instead of [Devices]"));
}

// Storing reads the file, too.
TEST_F(Doctor, SettingsThatDoNotEndAreReadAndStoredByNobody) {
  InstallUnixDev();
  fs::create_directory(TreePath("etc"));
  fs::create_symlink("/dev/zero", TreePath(kSettingsFile));
  const Result result = Run("doctor --json --timeout 1");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, StartsWith("rngctl: The default cannot be read: "));
  const json settings = json::parse(result.output).at("settings");
  EXPECT_THAT(Text(settings.at("problem")), StartsWith("the process that reads it "));
  EXPECT_EQ("Replace " + TreePath(kSettingsFile) + " with a file that can be read to its end.",
            settings.at("fix"));
  EXPECT_FALSE(settings.at("writable"));
  EXPECT_EQ("it cannot be read", settings.at("writing_fault"));
}

TEST_F(Doctor, SaysThatTheLineOfTheDeviceIsIgnored) {
  InstallPlugin("dsdr", "has_devices");
  WriteFile(TreePath(kSettingsFile),
            "[Devices]\nRandomNumberGeneratorType=dsdr\n RandomNumberGeneratorHardwareID=A1\n");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output,
              HasSubstr("\nDefault          dsdr, usable, but the device is not read: line "
                        "3 has blanks before RandomNumberGeneratorHardwareID\n"));
}

TEST_F(Doctor, SaysHowToMakeTheSettingsReadable) {
  InstallUnixDev();
  WriteFile(TreePath(kSettingsFile), "[Devices]\n");
  fs::permissions(TreePath(kSettingsFile), fs::perms(0));
  EXPECT_EQ("Make it readable for the users of the library: chmod a+r " + TreePath(kSettingsFile),
            ExamineAsUser("").at("settings").at("fix"));
  fs::permissions(TreePath("etc"), fs::perms(0));
  EXPECT_EQ("Make " + TreePath("etc") + " searchable for the users of the library: chmod a+x " +
                TreePath("etc"),
            ExamineAsUser("").at("settings").at("fix"));
  fs::permissions(TreePath("etc"), fs::perms(0755));
}

TEST_F(Doctor, SettingsThatCannotBeReadAreANegativeAnswer) {
  InstallUnixDev();
  fs::create_directories(TreePath(kSettingsFile));
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The settings file cannot be read: it is a directory.\n", result.errors);
  EXPECT_EQ("Rename or remove the directory " + TreePath(kSettingsFile) +
                ": the library expects a file there.",
            Examine("").at("settings").at("fix"));
  fs::remove(TreePath(kSettingsFile));
  fs::create_symlink("/dev/null", TreePath(kSettingsFile));
  EXPECT_EQ(json(), Examine("").at("settings").at("fix"));
}

TEST_F(Doctor, TheTextSaysWhatPreventsStoring) {
  const std::string line = "\nSettings file    " + TreePath(kSettingsFile);
  WriteFile(TreePath("etc"), "a file in the way");
  EXPECT_THAT(Run("doctor dsdr").output, HasSubstr(line + ", does not exist, cannot be created: "));
  fs::remove(TreePath("etc"));
  WriteFile(TreePath(kSettingsFile), "[Devices]\n");
  EXPECT_THAT(Run("doctor dsdr").output, HasSubstr(line + ", readable, writable\n"));
  fs::create_directory(TreePath("etc/rng.ini.tmp"));
  EXPECT_THAT(Run("doctor dsdr").output, HasSubstr(line + ", readable, not writable: "));
}

TEST_F(Doctor, TheTextSaysThatThereIsNoService) {
  InstallKnownPath("absent");
  EXPECT_THAT(Run("doctor dsdr").output,
              HasSubstr("\nKnown paths      no service; the directories fixed at build time\n"));
}

// What the report then says of it is no path.
TEST_F(Doctor, AServiceWithoutAFileHasNoPermissions) {
  fs::rename(TreePath("lib/libcrypt_known_path.so"), TreePath("lib/another.so"));
  fs::create_directory(TreePath("open"));
  fs::permissions(TreePath("open"), fs::perms(01777));
  const Result result =
      RunShell("cd " + TreePath("open") + " && LD_PRELOAD=" + TreePath("lib/another.so") + " " +
               Rngctl() + " doctor --json");
  EXPECT_EQ(json::array(), json::parse(result.output).at("permissions"));
}
