// Text that this program did not write: whatever it contains, no command lets it control the terminal.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace {

constexpr char kOverride[] = "\xE2\x80\xAE";
constexpr char kCsi[] = "\xC2\x9B";

// For a shell: an escape sequence, the same in 8 bits, an override and a forged message.
constexpr char kArgument[] = R"($'a\e[2J\xC2\x9B\xE2\x80\xAE\nrngctl: fine')";

void ExpectHarmless(const std::string& text) {
  EXPECT_THAT(text, Not(HasSubstr("\033")));
  EXPECT_THAT(text, Not(HasSubstr("\a")));
  EXPECT_THAT(text, Not(HasSubstr(kCsi)));
  EXPECT_THAT(text, Not(HasSubstr(kOverride)));
  EXPECT_THAT(text, Not(HasSubstr("\nrngctl: fine")));
}

Result RunHarmless(const std::string& arguments) {
  const Result result = RunShell("bash -c \"" + Rngctl() + " " + arguments + "\"");
  ExpectHarmless(result.output);
  ExpectHarmless(result.errors);
  return result;
}

}  // namespace

class OutsideText : public RngctlTest {};

TEST_F(OutsideText, ArgumentsInMessagesAreHarmless) {
  const std::string argument = kArgument;
  for (const std::string& command :
       {argument, "list " + argument, "list --" + argument, "read -n 1 " + argument,
        "read -n " + argument, "read unixdev -n 1 -o /missing/" + argument,
        "default set " + argument, "default set a " + argument, "default --mask " + argument,
        "doctor " + argument, "doctor --timeout " + argument, "check " + argument,
        "check --only " + argument + " " + TreePath("lib/librngunixdev.so")}) {
    const Result result = RunHarmless(command);
    EXPECT_NE(0, result.status) << command;
    EXPECT_THAT(result.errors, HasSubstr("a?[2J???")) << command;
  }
}

TEST_F(OutsideText, ListAndItsMessagesAreHarmless) {
  InstallPlugin("dsdr", "deceptive_texts");
  EXPECT_THAT(RunHarmless("list").output, HasSubstr("A ?[2Jb??\xC3\xA4?c\n"));
}

TEST_F(OutsideText, TheJsonOfTheListLosesNothing) {
  InstallPlugin("dsdr", "deceptive_texts");
  const auto json = nlohmann::json::parse(RunHarmless("list --json").output);
  EXPECT_EQ("A \033[2Jb\xC2\x9B\xE2\x80\xAE\xC3\xA4\nc",
            json["generators"][0]["description"].get<std::string>());
}

TEST_F(OutsideText, TheDevicesOfTheListAreHarmlessAndItsJsonLosesNothing) {
  InstallPlugin("dsdr", "deceptive_report");
  EXPECT_THAT(RunHarmless("list").output,
              HasSubstr("\ndsdr, device R?1: Reader ?1\ndsdr, problem: The reader ?is off.\n"));
  const auto json = nlohmann::json::parse(RunHarmless("list --json").output)["generators"][0];
  const std::string override = kOverride;
  EXPECT_EQ("R" + override + "1", json["devices"][0]["identifier"].get<std::string>());
  EXPECT_EQ("Reader " + override + "1", json["devices"][0]["text"].get<std::string>());
  EXPECT_EQ("The reader " + override + "is off.", json["problems"][0].get<std::string>());
}

TEST_F(OutsideText, AnExceptionInADrawIsHarmless) {
  InstallPlugin("dsdr", "deceptive_texts");
  EXPECT_EQ(
      "rngctl: A plug-in or the system failed: ?]0;title???rngctl: All is well.\n"
      "Run \"rngctl doctor\" to find out which.\n",
      RunHarmless("read dsdr -n 1").errors);
}

TEST_F(OutsideText, TheConfiguredDefaultIsHarmless) {
  WriteFile(
      TreePath(kSettingsFile),
      "[Devices]\nRandomNumberGeneratorType=a\033[2J\xC2\x9B\nRandomNumberGeneratorHardwareID=b" +
          std::string(kOverride) + "\n");
  EXPECT_EQ(
      "configured  a?[2J?, device b?\n"
      "default     a?[2J?, device b?\n"
      "loaded      no\n",
      RunHarmless("default").output);
  EXPECT_EQ(
      "rngctl: The configured default generator \"a?[2J?\" is not usable now. "
      "Run \"rngctl doctor\" to find out why.\n",
      RunHarmless("read -n 1").errors);
  EXPECT_THAT(RunHarmless("doctor").output, HasSubstr("a?[2J?"));
}

TEST_F(OutsideText, TheDoctorsJsonIsHarmlessAndLosesNothing) {
  const std::string type = "a\xC2\x9B" + std::string(kOverride);
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=" + type + "\n");
  const Result result = RunHarmless("doctor --json");
  const auto json = nlohmann::json::parse(result.output);
  EXPECT_EQ(type, json["default"]["kind"].get<std::string>());
}

TEST_F(OutsideText, TheReportOfACheckIsHarmlessAndItsJsonLosesNothing) {
  const std::string file = TreePath("lib/librngdsdr.so");
  fs::copy(FakePlugin("dsdr", "deceptive_texts"), TreePath("lib"));
  const std::string command = "check --only description-line,no-exceptions " + file;
  EXPECT_THAT(RunHarmless(command).output, HasSubstr("A ?[2Jb??\xC3\xA4?c"));
  const auto json = nlohmann::json::parse(RunHarmless(command + " --json").output);
  EXPECT_THAT(json["checks"][0]["found"].get<std::string>(), HasSubstr(kOverride));
}
