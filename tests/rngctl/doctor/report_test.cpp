#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

TEST_F(Doctor, PrintsTextInColumns) {
  InstallUnixDev();
  InstallPlugin("accord", "stub");
  const Result result = Run("doctor");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, IsEmpty());
  const std::string lib = TreePath("lib");
  EXPECT_THAT(result.output, StartsWith("Library          " + lib + "/librngaggregator.so"));
  EXPECT_THAT(result.output,
              HasSubstr("\nRun path         $ORIGIN/../lib\nSearch order     " + lib +
                        "\n                 the loader's cache\n                 /"));
  EXPECT_THAT(result.output,
              HasSubstr("\nSettings file    " + TreePath(kSettingsFile) +
                        ", does not exist, can be created\nData file        " +
                        TreePath("share/dsdr.bin") + "\nKnown paths      " + lib +
                        "/libcrypt_known_path.so\nX display        none: DISPLAY is not set\n"
                        "Default          none configured\nStart and stop   OK\n\n"));
  const std::string blanks(lib.size() + sizeof "/librngunixdev.so", ' ');
  EXPECT_THAT(result.output, HasSubstr("\nKIND             FILE" + blanks.substr(3) +
                                       "VERDICT\n"
                                       "bioqt            -" +
                                       blanks + "not installed: there is no librngbioqt.so\n"));
  EXPECT_THAT(result.output, HasSubstr("\nunixdev          " + lib +
                                       "/librngunixdev.so  loaded as \"unixdev\"\n"));
  EXPECT_THAT(result.output, HasSubstr("\ndsdr, sobol, JacartaGost, Rutoken, EsmartGost, "
                                       "grandmaster, biocore: To use this generator, install the "
                                       "vendor's plug-in in " +
                                       lib + ".\nbiokbd: "));
}

TEST_F(Doctor, PrintsNoControlCharacters) {
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=a\033b\u009Bc\n");
  EXPECT_THAT(Run("doctor dsdr").output,
              HasSubstr("\nDefault          a?b?c, unusable: there is no kind \"a?b?c\"\n"));
}

// JSON is UTF-8, and no strict parser reads anything else.
TEST_F(Doctor, ANameThatIsNotUtf8IsReplacedInItsReport) {
  InstallPlugin("dsdr", "disturbing/NameNotUtf8");
  const Result result = Run("doctor dsdr --json");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: \"dsdr\": loaded, but its name is \"\uFFFD\uFFFDdsdr\".\n", result.errors);
  const json row = RowOf(json::parse(result.output), "dsdr");
  EXPECT_EQ("\uFFFD\uFFFDdsdr", row.at("name"));
  EXPECT_EQ("loaded, but its name is \"\uFFFD\uFFFDdsdr\"", row.at("summary"));
  EXPECT_THAT(Run("doctor dsdr").output,
              HasSubstr("  loaded, but its name is \"\uFFFD\uFFFDdsdr\"\n"));
}

TEST_F(Doctor, CountsLettersNotBytes) {
  fs::create_directory(TreePath("f\u00FCnf"));
  fs::copy(FakePlugin("dsdr", "stub"), TreePath("f\u00FCnf"));
  const std::string blanks(TreePath("f\u00FCnf/librngdsdr.so").size() - 1, ' ');
  EXPECT_THAT(
      RunShell("LD_LIBRARY_PATH=" + TreePath("f\u00FCnf") + " " + Rngctl() + " doctor").output,
      HasSubstr("\naccord           -" + blanks + " not installed: there is no librngaccord.so\n"));
}

TEST_F(Doctor, SaysWhenItsReportCannotBeWritten) {
  InstallUnixDev();
  const Result result = RunShell(Rngctl() + " doctor >/dev/full");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to standard output.\n", result.errors);
}

TEST_F(Doctor, ReportsMatchTheSchema) {
  constexpr char kSchema[] = "doctor.schema.json";
  ASSERT_EQ(0, Run("default set dsdr X1").status);
  InstallOneOfEach();
  json report = Examine("", "", 1);
  const Result result = MatchSchema(kSchema, report.dump());
  EXPECT_EQ(0, result.status) << result.errors;
  report.at("generators")[3]["verdict"] = "well";
  EXPECT_NE(0, MatchSchema(kSchema, report.dump()).status);

  InstallX11("crashing");
  InstallKnownPath("no_function");
  const Result bleak = MatchSchema(kSchema, Examine("dsdr").dump());
  EXPECT_EQ(0, bleak.status) << bleak.errors;
}

TEST_F(Doctor, ColoursATerminalUnlessItIsAskedNotTo) {
  InstallPlugin("dsdr", "stub");
  const auto runOnTerminal = [](const std::string& environment) {  // script(1) makes one
    return RunShell("script -qec '" + environment + " " + Rngctl() + " doctor dsdr' " +
                    TreePath("typescript"))
        .output;
  };
  EXPECT_THAT(runOnTerminal("NO_COLOR="), HasSubstr("\033[32mloaded as \"dsdr\"\033[0m"));
  EXPECT_THAT(runOnTerminal("NO_COLOR=1"), Not(HasSubstr("\033")));
  EXPECT_THAT(Run("doctor dsdr").output, Not(HasSubstr("\033")));
}

TEST_F(Doctor, SaysOnATerminalWhatItWaitsFor) {
  InstallPlugin("sobol", "hanging");
  const Result result = RunShell("script -qec '" + Rngctl() + " doctor sobol --timeout 2 >" +
                                 TreePath("report") + "' " + TreePath("typescript"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, StartsWith("Waiting for a start with all plug-ins, at most 24 s\r"));
  EXPECT_THAT(result.output, HasSubstr("Waiting for sobol, at most 2 s\r\033[K"));
  EXPECT_THAT(ReadFile(TreePath("report")), HasSubstr("did not answer within 2 s"));
}

TEST_F(Doctor, ItsColoursTellProblemsFromWarnings) {
  InstallPlugin("bioqt");
  InstallPlugin("sobol", "flagless");
  InstallPlugin("Rutoken", "unavailable");
  const std::string output =
      RunShell("NO_COLOR= script -qec '" + Rngctl() + " doctor' " + TreePath("typescript")).output;
  EXPECT_THAT(output, HasSubstr(" \033[33mskipped because there is no X display"));
  EXPECT_THAT(output, HasSubstr(" \033[33mloaded as \"sobol\"\033[0m"));
  EXPECT_THAT(output, HasSubstr(" \033[31mnot available\033[0m"));
  EXPECT_THAT(output, HasSubstr(" not installed: there is no librngdsdr.so\r\n"));
}
