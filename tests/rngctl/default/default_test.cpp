#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

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
  EXPECT_THAT(set.errors, StartsWith("Warning: there is no usable generator"));
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
  EXPECT_EQ("rngctl: There is no default: the configured one is longer than 17 characters.\n",
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
  EXPECT_THAT(result.errors, StartsWith("rngctl: The default was stored but reads back as"));
}
