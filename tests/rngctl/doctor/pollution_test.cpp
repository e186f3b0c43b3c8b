// What a start does to every program, besides making generators available.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::Contains;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(Doctor, WarnsOfAPluginThatPrints) {
  InstallUnixDev();
  InstallPlugin("dsdr", "prints_start");
  EXPECT_THAT(ExamineKind("dsdr").at("warnings"),
              ElementsAre(StartsWith(
                  "It prints on standard output, so its text is mixed with the "
                  "output of every program: \"driver?[1m 1.0\". Report this to the vendor.")));
  // Reported once, where the plug-in itself is examined.
  EXPECT_EQ(json::array(), Examine("").at("start").at("warnings"));
  EXPECT_THAT(Examine("unixdev").at("start").at("warnings"),
              ElementsAre(StartsWith("A start with all plug-ins prints on standard output")));
  EXPECT_EQ(0, Run("doctor unixdev").status);
}

// Its process can then not find out what lies in its memory, and must not guess.
TEST_F(Doctor, BlamesALoweredDescriptorLimitForNothingElse) {
  InstallPlugin("dsdr", "disturbing/LowerDescriptorLimit");
  EXPECT_THAT(ExamineKind("dsdr").at("warnings"),
              ElementsAre(StartsWith("It changes the hard limit RLIMIT_NOFILE to 3"),
                          StartsWith("It changes the limit RLIMIT_NOFILE to 3")));
}

TEST_F(Doctor, WarnsOfAPluginThatClosesAStandardDescriptor) {
  InstallUnixDev();
  InstallPlugin("dsdr", "closes_output");
  EXPECT_THAT(ExamineKind("dsdr").at("warnings"),
              Contains(StartsWith("It closes standard output, which affects the whole program.")));
  EXPECT_EQ(json::array(), Examine("").at("start").at("warnings"));
  EXPECT_THAT(Examine("unixdev").at("start").at("warnings"),
              Contains(StartsWith("A start with all plug-ins closes standard output")));
}

TEST_F(Doctor, WarnsOfAPluginThatChangesTheProcess) {
  InstallPlugin("dsdr", "changes_umask");
  EXPECT_THAT(ExamineKind("dsdr").at("warnings"),
              ElementsAre(AllOf(
                  StartsWith("It changes the umask to 0077"),
                  EndsWith(", which affects the whole program. Report this to the vendor."))));
}

// Every file that the host creates in between has the wrong mode.
TEST_F(Doctor, WarnsOfAChangeThatLastsUntilTheRelease) {
  InstallUnixDev();
  InstallPlugin("dsdr", "borrows_umask");
  const std::string command = "umask 022; " + Rngctl() + " doctor --json ";
  const auto examine = [&command](const std::string& kind) {
    return json::parse(RunShell(command + kind).output, nullptr, false);
  };
  EXPECT_THAT(RowOf(examine("dsdr"), "dsdr").at("warnings"),
              ElementsAre(StartsWith("It changes the umask to 0077")));
  EXPECT_THAT(examine("unixdev").at("start").at("warnings"),
              ElementsAre(StartsWith("A start with all plug-ins changes the umask to 0077")));
}

TEST_F(Doctor, WarnsOfASlowStartAndNamesThePlugin) {
  InstallUnixDev();
  InstallPlugin("dsdr", "slow_start");
  const json report = Examine("");
  EXPECT_LT(0.7, RowOf(report, "dsdr").at("seconds"));
  EXPECT_LT(0.7, report.at("start").at("seconds"));
  EXPECT_THAT(report.at("start").at("warnings"),
              ElementsAre(AllOf(StartsWith("Every program that starts the library waits "),
                                HasSubstr(": librngdsdr.so takes "))));
  EXPECT_THAT(Run("doctor unixdev").output,
              HasSubstr("\nstart, warning: Every program that starts"));
}

TEST_F(Doctor, ASlowDisplayIsNamedLikeAPlugin) {
  InstallUnixDev();
  InstallX11("slow");
  EXPECT_THAT(Examine("unixdev").at("start").at("warnings"),
              ElementsAre(ContainsRegex(": the search for the X display takes (0\\.[7-9]|[1-9])")));
}

TEST_F(Doctor, ShowsTheBeginningOfALongLine) {
  InstallPlugin("dsdr", "prints_long_line");
  EXPECT_THAT(ExamineKind("dsdr").at("warnings"),
              ElementsAre(HasSubstr(": \"" + std::string(60, '-') + "...\". Report")));
}
