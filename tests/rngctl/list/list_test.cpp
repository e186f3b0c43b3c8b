#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

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

TEST_F(RngctlTest, ListsTheDevicesThatPluginsReport) {
  InstallPlugin("dsdr", "reports_devices");
  const Result result = Run("list");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, EndsWith("generator\n"
                                      "\n"
                                      "dsdr, device R1: Reader 1\n"
                                      "dsdr, problem: Reader 2 is off. Switch it on.\n"));
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(RngctlTest, AReportThatFailsLeavesTheListWhole) {
  fs::copy(FakePlugin("dsdr", "breaking/report_crashes"), TreePath("lib"));
  const Result result = Run("list");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr("\ndsdr     no           hardware"));
  EXPECT_EQ("rngctl: \"dsdr\": Its device report crashed with signal 6 (Aborted).\n",
            result.errors);
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
      "rngctl: A plug-in or the system failed: no driver\nRun \"rngctl doctor\" to find out "
      "which.\n",
      result.errors);
}

TEST_F(RngctlTest, AThrowingReleaseIsASentenceAfterTheResult) {
  InstallPlugin("dsdr", "throwing_release");
  const Result result = Run("list");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("dsdr"));
  EXPECT_EQ(
      "rngctl: A plug-in or the system failed without an error message.\n"
      "Run \"rngctl doctor\" to find out which.\n",
      result.errors);
}

TEST_F(RngctlTest, AFullOutputIsNoticed) {
  const Result result = RunShell(Rngctl() + " list >/dev/full");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to standard output.\n", result.errors);
}

// The class of the exception goes with the plug-in, which the library closes before a host hears of it.
TEST_F(RngctlTest, AnExceptionOfThePluginsOwnClassIsASentence) {
  InstallPlugin("dsdr", "throws_own_class");
  for (const std::string environment : {"", "RNG_THROW_NULL=1 "}) {
    const Result result = RunShell(environment + Rngctl() + " list");
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(
        "rngctl: A plug-in or the system failed without an error message.\n"
        "Run \"rngctl doctor\" to find out which.\n",
        result.errors);
  }
}
