#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <vector>

using testing::HasSubstr;
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

// In increasing order of preference, so each one replaces the one before.
TEST_F(RngctlTest, EveryFallbackIsAcceptableWithoutAMask) {
  InstallX11("whole");
  for (const auto& [plugin, variant, fallback] : {std::tuple("unixx11", "stub", "unixx11"),
                                                  {"bioqt", "stub", "bioqt"},
                                                  {"dsdr", "flagless_bio", "bio"}}) {
    InstallPlugin(plugin, variant);
    EXPECT_EQ("configured  none\nfallback    " + std::string(fallback) + "\nloaded      yes\n",
              Run("default").output);
  }
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
  EXPECT_EQ(
      "Warning: there is no kind \"12345678901234567\"; \"rngctl list\" shows the usable "
      "generators. The default was stored anyway.\n",
      set.errors);
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
  EXPECT_EQ("No default is configured.\n", set.output);
  EXPECT_THAT(set.errors, IsEmpty());
  EXPECT_EQ(1, Run("default --mask 0").status);
}

TEST_F(RngctlTest, OverlongSettingsAreExplained) {
  const std::string type = "[Devices]\nRandomNumberGeneratorType=";
  const std::string tooLong = "123456789012345678\n";
  for (const std::string& lines :
       {type + tooLong, type + "unixdev\nRandomNumberGeneratorHardwareID=" + tooLong}) {
    WriteFile(TreePath(kSettingsFile), lines);
    const Result result = Run("default");
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("rngctl: There is no default: the configured one is longer than 17 bytes.\n",
              result.errors);
  }
}

TEST_F(RngctlTest, UnwritableSettingsAreASentenceWithTheReason) {
  WriteFile(TreePath("etc"), "a file in the way");
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The default could not be stored in " + TreePath(kSettingsFile) + ": " +
                TreePath(kSettingsFile) +
                " cannot be reached (Not a directory). Nothing was changed. Fix that, and try "
                "again.\n",
            result.errors);
  EXPECT_EQ("a file in the way", ReadFile(TreePath("etc")));
}

TEST_F(RngctlTest, AStoreThatTheLibraryDoesNotSeeFailIsNoticed) {
  const std::string lines = "[DEVICES]\nRandomNumberGeneratorType=sobol\n";  // which it reads first
  WriteFile(TreePath(kSettingsFile), lines);
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: The default could not be stored in " + TreePath(kSettingsFile) +
          ": it reads back as \"sobol\". " + TreePath(kSettingsFile) +
          " is as it was before.\nCheck that the file can be replaced and that no other section or "
          "key that the library reads comes first in it.\n",
      result.errors);
  EXPECT_EQ(lines, ReadFile(TreePath(kSettingsFile)));
}

TEST_F(RngctlTest, WarnsOfADefaultThatCannotBeUsed) {
  InstallPlugin("dsdr", "has_devices");
  EXPECT_THAT(Run("default set dsdr B2").errors, IsEmpty());
  EXPECT_EQ(
      "Warning: the generator \"dsdr\" refuses the device \"C3\". \"rngctl list\" shows the "
      "devices of generators that report them. The default was stored anyway.\n",
      Run("default set dsdr C3").errors);
  EXPECT_EQ(
      "Warning: there is no kind \"unixdve\"; did you mean \"unixdev\"? The default was stored "
      "anyway.\n",
      Run("default set unixdve").errors);
  EXPECT_EQ(
      "Warning: there is no usable generator \"sobol\". Run \"rngctl doctor sobol\" to find out "
      "why. The default was stored anyway.\n",
      Run("default set sobol").errors);
}

TEST_F(RngctlTest, PluginsThatFailDoNotPreventStoring) {
  InstallPlugin("dsdr", "throwing_start");
  const Result throwing = Run("default set unixdev");
  EXPECT_EQ(0, throwing.status);
  EXPECT_EQ(
      "Warning: it is unknown whether the default can be used. A plug-in or the system failed: no "
      "driver. The default was stored anyway.\n",
      throwing.errors);
}

// Whatever happens in the check after it.
TEST_F(RngctlTest, TheStatusOfAStoredDefaultIsItsOwn) {
  const std::pair<const char*, std::string> ends[] = {
      {"disturbing/Opening_Quit", "exited with status 0"},
      {"disturbing/ExitQuickly", "exited with status 3"},
      {"disturbing/KillItself", "crashed with signal 9 (Killed)"},
      {"disturbing/Release_Quit", "exited with status 0"},
      {"disturbing/Closing_Crash", "crashed with signal "}};
  for (const auto& [plugin, end] : ends) {
    fs::remove(TreePath(kSettingsFile));
    InstallPlugin("dsdr", plugin);
    const Result set = Run("default set unixdev");
    EXPECT_EQ(0, set.status) << plugin;
    EXPECT_EQ("The default is now unixdev.\n", set.output);
    EXPECT_THAT(set.errors,
                HasSubstr("Warning: it is unknown whether the default can be used. A plug-in or "
                          "the known-path service " +
                          end))
        << plugin;
    EXPECT_THAT(ReadFile(TreePath(kSettingsFile)), HasSubstr("Type=unixdev\n"));
  }
}

TEST_F(RngctlTest, WhatPluginsPrintIsNotAmongTheAnswers) {
  InstallPlugin("dsdr", "prints_start");
  EXPECT_EQ("The default is now unixdev.\n", Run("default set unixdev").output);
  const Result shown = Run("default");
  EXPECT_EQ("configured  unixdev\ndefault     unixdev\nloaded      yes\n", shown.output);
  EXPECT_THAT(shown.errors, HasSubstr("driver"));
}

TEST_F(RngctlTest, WhatCannotBeStoredIsNamed) {
  const std::string rest =
      " cannot be stored: it must be one line of UTF-8 without \"=\", without control characters, "
      "and without leading or trailing blanks. Nothing was changed.\n";
  for (const std::string text : {"a=b", " a", "a "}) {
    EXPECT_EQ("rngctl: The name \"" + text + "\"" + rest, Run("default set '" + text + "'").errors);
    EXPECT_EQ("rngctl: The hardware identifier \"" + text + "\"" + rest,
              Run("default set unixdev '" + text + "'").errors);
  }
  const std::string tooLong(18, 'x');
  const Result result = Run("default set " + tooLong);
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("rngctl: The name \"" + tooLong +
                "\" has 18 bytes; at most 17 can be stored. Nothing was changed.\n",
            result.errors);
  EXPECT_FALSE(fs::exists(TreePath(kSettingsFile)));
}

TEST_F(RngctlTest, ADefaultThatCannotBeUsedIsStoredWithAWarning) {
  const auto expect = [](const std::string& chosen, const std::string& why) {
    const Result result = Run("default set " + chosen);
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("Warning: " + why + " The default was stored anyway.\n", result.errors);
  };
  expect("unixdef", "there is no kind \"unixdef\"; did you mean \"unixdev\"?");
  expect("unixdev C3",
         "the generator \"unixdev\" refuses the device \"C3\". \"rngctl list\" shows "
         "the devices of generators that report them.");
}

// The library would read back what stands after the last one.
TEST_F(RngctlTest, AnEqualsSignIsRefused) {
  for (const std::string arguments : {"a=b", "=", "unixdev a=b", "unixdev ="}) {
    const Result result = Run("default set " + arguments);
    EXPECT_EQ(2, result.status) << arguments;
    EXPECT_THAT(result.errors, HasSubstr("cannot be stored: it must be one line of UTF-8 without"));
    EXPECT_FALSE(fs::exists(TreePath(kSettingsFile)));
  }
}

TEST_F(RngctlTest, ControlCharactersAreRefused) {
  constexpr char kOld[] = "[Devices]\nRandomNumberGeneratorType=sobol\n";
  WriteFile(TreePath(kSettingsFile), kOld);
  std::vector<std::string> controls = {"\x7F", "\xC2\x80", "\xC2\x9F"};
  for (char c = 1; c < 0x20; ++c) controls.emplace_back(1, c);
  for (const std::string& control : controls) {
    WriteFile(TreePath("control"), "a" + control + "b");
    for (const std::string arguments : {"", "unixdev "}) {
      const Result result =
          Run("default set " + arguments + "\"$(cat " + TreePath("control") + ")\"");
      EXPECT_EQ(2, result.status) << testing::PrintToString(control);
      EXPECT_THAT(result.errors,
                  HasSubstr(" \"a?b\" cannot be stored: it must be one line of UTF-8 without"));
    }
  }
  EXPECT_EQ(kOld, ReadFile(TreePath(kSettingsFile)));
}
