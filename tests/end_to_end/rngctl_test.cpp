#include "tests/end_to_end/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;

class RngctlTest : public InstalledTool {};

constexpr char kSettingsFile[] = "etc/rng.ini";

}  // namespace

// --- list

TEST_F(RngctlTest, ListsTheRealPluginWithItsFlagsByName) {
  const Result result = Run("list");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(
      "NAME     INTERACTIVE  FLAGS             DESCRIPTION\n"
      "unixdev  no           operating-system  The operating system's random-number generator\n",
      result.output);
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(RngctlTest, ListsInCatalogueOrderAndNamesUnknownFlagBits) {
  InstallPlugin("biokbd");
  InstallPlugin("dsdr", "failing_device");
  const Result result = Run("list");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(
      "NAME     INTERACTIVE  FLAGS                    DESCRIPTION\n"
      "dsdr     no           hardware,bit-2147483648  A broken device\n"
      "biokbd   yes          hardware                 \n"
      "unixdev  no           operating-system         "
      "The operating system's random-number generator\n",
      result.output);
}

TEST_F(RngctlTest, ListsAProviderWithoutFlags) {
  InstallPlugin("sobol", "flagless");
  const Result result = Run("list");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr("sobol    no           -                 A quiet?source\n"));
}

TEST_F(RngctlTest, NoUsableGeneratorIsANegativeAnswer) {
  fs::remove(TreePath("lib/librngunixdev.so"));
  const Result result = Run("list");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: No generator is usable.\n", result.errors);
  EXPECT_THAT(result.output, IsEmpty());
}

TEST_F(RngctlTest, AThrowingPluginIsASentence) {
  InstallPlugin("dsdr", "throwing_start");
  const Result result = Run("list");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: A plug-in or the system failed: no driver\n\"rngctl doctor\" may tell which.\n",
      result.errors);
}

TEST_F(RngctlTest, AThrowingReleaseIsASentenceAfterTheResult) {
  InstallPlugin("dsdr", "throwing_release");
  const Result result = Run("list");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("dsdr"));
  EXPECT_EQ("rngctl: A plug-in failed without saying why.\n", result.errors);
}

TEST_F(RngctlTest, AFullOutputIsNoticed) {
  const Result result = RunShell(Rngctl() + " list >/dev/full");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to standard output.\n", result.errors);
}

// --- read

TEST_F(RngctlTest, ReadsFromANamedGeneratorAsHexadecimal) {
  const Result first = Run("read unixdev -n 32");
  const Result second = Run("read unixdev -n 32 --hex");
  EXPECT_EQ(0, first.status);
  EXPECT_THAT(first.output, MatchesRegex("[0-9a-f]+\n"));
  EXPECT_EQ(65U, first.output.size());
  EXPECT_EQ(65U, second.output.size());
  EXPECT_NE(first.output, second.output);
}

TEST_F(RngctlTest, ReadsExactlyTheBytesOfTheGenerator) {
  InstallPlugin("sobol");  // gives A5 bytes
  EXPECT_EQ("a5a5a5\n", Run("read sobol -n 3").output);
  EXPECT_EQ("paWlpQ==\n", Run("read sobol -n 4 --base64").output);
  EXPECT_EQ("\xA5\xA5", Run("read sobol -n 2 --raw").output);
  EXPECT_EQ("", Run("read sobol -n 0 --raw").output);
}

TEST_F(RngctlTest, JoinsThePiecesOfALongDraw) {
  InstallPlugin("sobol");
  const std::size_t size = 3 * 16384 * 2 + 1;
  EXPECT_EQ(std::string(size, '\xA5'), Run("read sobol --raw -n " + std::to_string(size)).output);
  const Result result =
      RunShell(Rngctl() + " read sobol --base64 -n " + std::to_string(size) + " | base64 -d");
  EXPECT_EQ(std::string(size, '\xA5'), result.output);
}

TEST_F(RngctlTest, ReadsFromTheConfiguredDefault) {
  InstallPlugin("sobol");
  ASSERT_EQ(0, Run("default set sobol").status);
  EXPECT_EQ("a5a5\n", Run("read -n 2").output);
}

TEST_F(RngctlTest, ReadWithoutNameAndDefaultIsANegativeAnswer) {
  const Result result = Run("read -n 2");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              StartsWith("rngctl: No default generator is configured that can be used."));
}

TEST_F(RngctlTest, ReadFromADefaultThatIsNotLoadedIsANegativeAnswer) {
  ASSERT_EQ(0, Run("default set sobol").status);
  const Result result = Run("read -n 2");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The configured default generator \"sobol\" is not usable now.\n",
            result.errors);
}

TEST_F(RngctlTest, ReadFromAnUnknownGeneratorIsANegativeAnswer) {
  const Result result = Run("read nosuch -n 2");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, StartsWith("rngctl: No usable generator is called \"nosuch\""));
}

TEST_F(RngctlTest, SelectsTheConfiguredDevice) {
  InstallPlugin("dsdr", "failing_device");
  ASSERT_EQ(0, Run("default set dsdr X2").status);
  const Result unknown = Run("read -n 2");
  EXPECT_EQ(1, unknown.status);
  EXPECT_EQ("rngctl: The default generator \"dsdr\" has no device \"X2\".\n", unknown.errors);
  ASSERT_EQ(0, Run("default set dsdr X1").status);
  EXPECT_THAT(Run("read -n 2").errors, HasSubstr("failed after 0 bytes"));
}

TEST_F(RngctlTest, AFailedDrawLeavesTheOldFileAndNothingElse) {
  InstallPlugin("dsdr", "failing_device");
  WriteFile(TreePath("keys/key"), "old");
  const Result result = Run("read dsdr -n 8 -o " + TreePath("keys/key"));
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The generator \"dsdr\" failed after 0 bytes.\n", result.errors);
  EXPECT_EQ("old", ReadFile(TreePath("keys/key")));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(TreePath("keys")), {}));
}

TEST_F(RngctlTest, AnInterruptedDrawLeavesNothing) {
  fs::create_directory(TreePath("keys"));
  const std::string draw = Rngctl() + " read unixdev -n 99999999999 -o " + TreePath("keys/key");
  for (const char* signal : {"TERM", "HUP"}) {
    const Result result =
        RunShell(draw + " & until ls " + TreePath("keys/key.*") +
                 "; do sleep 0.01; done >/dev/null 2>&1; kill -" + signal + " $!; wait $!");
    EXPECT_LT(128, result.status);
    EXPECT_TRUE(fs::is_empty(TreePath("keys")));
  }
}

TEST_F(RngctlTest, WritesAFileThatOnlyItsOwnerReads) {
  InstallPlugin("sobol");
  WriteFile(TreePath("keys/key"), "old");
  const Result result = Run("read sobol -n 2 --raw -o " + TreePath("keys/key"));
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_EQ("\xA5\xA5", ReadFile(TreePath("keys/key")));
  EXPECT_EQ(fs::perms(0600), fs::status(TreePath("keys/key")).permissions());
  EXPECT_EQ(1, std::distance(fs::directory_iterator(TreePath("keys")), {}));
}

TEST_F(RngctlTest, WritesThroughADeviceAndNoticesThatItIsFull) {
  EXPECT_EQ(0, Run("read unixdev -n 2 -o /dev/null").status);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  const Result result = Run("read unixdev -n 2 -o /dev/full");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to \"/dev/full\": No space left on device.\n", result.errors);
}

TEST_F(RngctlTest, AnUnwritableFileIsASentence) {
  const Result result = Run("read unixdev -n 2 -o " + TreePath("missing/key"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              AllOf(StartsWith("rngctl: Cannot write to"), HasSubstr("No such file")));
}

TEST_F(RngctlTest, RawBytesNeverGoToATerminal) {
  // script(1) runs its command on a terminal.
  const Result result =
      RunShell("script -qec '" + Rngctl() + " read unixdev -n 2 --raw' " + TreePath("typescript"));
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, HasSubstr("Raw bytes do not go to a terminal"));
  const Result hex =
      RunShell("script -qec '" + Rngctl() + " read unixdev -n 2' " + TreePath("typescript"));
  EXPECT_EQ(0, hex.status);
  EXPECT_THAT(hex.output, MatchesRegex("[0-9a-f]{4}\r\n"));
}

class RngctlWrongUsage : public RngctlTest, public testing::WithParamInterface<const char*> {};

TEST_P(RngctlWrongUsage, IsRefusedWithASentence) {
  const Result result = Run(GetParam());
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, StartsWith("rngctl: "));
  EXPECT_FALSE(fs::exists(TreePath(kSettingsFile)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, RngctlWrongUsage,
    testing::Values("", "nosuch", "list more", "read unixdev", "read unixdev -n",
                    "read unixdev -n x", "read unixdev -n -1", "read unixdev -n 010",
                    "read unixdev -n 18446744073709551616", "read unixdev -n 1 --raw --hex",
                    "read unixdev -n 1 --hex --base64", "default nosuch", "default --mask x",
                    "default --mask -1", "default --mask 010", "default --mask 4 set a",
                    "default set", "default set a b c", "default set a=b", "default set ' a'",
                    "default set a 'x '", "default set 123456789012345678",
                    "default set a 123456789012345678"));

TEST_F(RngctlTest, AMisspeltCommandIsNamed) {
  EXPECT_THAT(Run("chekc x").errors, StartsWith("rngctl: There is no command \"chekc\"\n"));
  EXPECT_THAT(Run("list more").errors, HasSubstr("more"));
}

TEST_F(RngctlTest, HelpAndVersionAreResults) {
  const Result help = Run("--help");
  EXPECT_EQ(0, help.status);
  for (const char* command : {"list", "read", "default"}) {
    EXPECT_THAT(help.output, HasSubstr(command));
  }
  EXPECT_EQ("rngctl 1.0.0\n", Run("--version").output);
}

// --- default

TEST_F(RngctlTest, ShowsTheLastResortWhenNothingIsConfigured) {
  const Result result = Run("default");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(
      "configured  none\n"
      "fallback    biokbd\n"
      "loaded      no\n",
      result.output);
}

TEST_F(RngctlTest, MaskChoosesTheFallbacks) {
  InstallPlugin("grandmaster");
  const Result result = Run("default --mask 0xB");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("configured  none\n", result.output);
  EXPECT_EQ("rngctl: There is no default: none is configured, and no kind in the mask is usable.\n",
            result.errors);
}

TEST_F(RngctlTest, StoresAndShowsADefault) {
  const Result set = Run("default set unixdev");
  EXPECT_EQ(0, set.status);
  EXPECT_EQ("The default is now unixdev.\n", set.output);
  EXPECT_THAT(set.errors, IsEmpty());
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=unixdev\nRandomNumberGeneratorHardwareID=\n",
            ReadFile(TreePath(kSettingsFile)));
  EXPECT_EQ("configured  unixdev\ndefault     unixdev\nloaded      yes\n", Run("default").output);
}

TEST_F(RngctlTest, StoresADeviceAndAGeneratorThatMayComeLater) {
  const Result set = Run("default set 12345678901234567 'X 1'");
  EXPECT_EQ(0, set.status);
  EXPECT_EQ("The default is now 12345678901234567, device X 1.\n", set.output);
  EXPECT_THAT(set.errors, StartsWith("Warning: no usable generator is called"));
  EXPECT_EQ(
      "configured  12345678901234567, device X 1\n"
      "default     12345678901234567, device X 1\n"
      "loaded      no\n",
      Run("default").output);
}

TEST_F(RngctlTest, TheEmptyNameRemovesTheDefault) {
  ASSERT_EQ(0, Run("default set unixdev X1").status);
  const Result set = Run("default set ''");
  EXPECT_EQ(0, set.status);
  EXPECT_EQ("No default is configured now.\n", set.output);
  EXPECT_EQ(1, Run("default --mask 0").status);
}

TEST_F(RngctlTest, OverlongSettingsAreExplained) {
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=123456789012345678\n");
  const Result result = Run("default");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: There is no default: what is configured has more than 17 characters.\n",
            result.errors);
}

TEST_F(RngctlTest, UnwritableSettingsAreASentenceWithTheReason) {
  WriteFile(TreePath("etc"), "a file in the way");
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The default could not be stored: Not a directory.\n", result.errors);
  EXPECT_EQ("a file in the way", ReadFile(TreePath("etc")));
}

TEST_F(RngctlTest, AStoreThatTheLibraryDoesNotSeeFailIsNoticed) {
  fs::create_directories(TreePath(kSettingsFile));  // a directory: the rewrite cannot replace it
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, StartsWith("rngctl: The settings took the default, but"));
}
