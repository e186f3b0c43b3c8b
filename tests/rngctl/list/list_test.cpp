#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

namespace {

// Whatever hardware this machine has.
Result List() { return RunShell(WithHardware("") + Rngctl() + " list"); }

}  // namespace

TEST_F(RngctlTest, ListsTheRealPluginWithItsFlagsByName) {
  const Result result = List();
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
  const Result result = List();
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(
      "NAME     INTERACTIVE  FLAGS                    DESCRIPTION\n"
      "dsdr     no           hardware,bit-2147483648  A broken device\n"
      "biokbd   yes          hardware                 \n"
      "unixdev  no           operating-system         "
      "The operating system's random-number generator\n",
      result.output);
}

// Numbers, because the bits are part of the contract with plug-ins that exist already.
TEST_F(RngctlTest, EachCapabilityHasItsBitAndItsName) {
  InstallPlugin("dsdr", "drawing/HasFlags");
  for (const auto& [flags, names] :
       {std::pair<std::string, std::string>("0x01", "hardware"),
        {"0x02", "needs-user"},
        {"0x04", "operating-system"},
        {"0x08", "prerecorded"},
        {"0x10", "may-block"},
        {"0x1F", "hardware,needs-user,operating-system,prerecorded,may-block"},
        {"0x60", "bit-32,bit-64"}}) {
    const Result result = RunShell("RNG_TEST_FLAGS=" + flags + " " + Rngctl() + " list");
    EXPECT_THAT(result.output, HasSubstr("\ndsdr     no           " + names + " ")) << flags;
  }
}

TEST_F(RngctlTest, ListsAProviderWithoutFlags) {
  InstallPlugin("sobol", "flagless");
  const Result result = Run("list");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr("sobol    no           -                 A quiet?source\n"));
}

TEST_F(RngctlTest, ListsTheDevicesThatPluginsReport) {
  InstallPlugin("dsdr", "reports_devices");
  const Result result = List();
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

TEST_F(RngctlTest, AReportIsShownUpToItsLargestSize) {
  InstallPlugin("dsdr", "report_is_largest");
  const Result largest = List();
  EXPECT_THAT(largest.output, EndsWith("\n\ndsdr, device R1: " + std::string(65525, 'x') + "\n"));
  EXPECT_THAT(largest.errors, IsEmpty());
  InstallPlugin("dsdr", "report_is_not_written");
  const Result larger = List();
  EXPECT_EQ(0, larger.status);
  EXPECT_EQ("rngctl: \"dsdr\": Its device report has 65537 bytes; the maximum is 65536.\n",
            larger.errors);
  InstallPlugin("dsdr", "report_is_negative");
  EXPECT_EQ("rngctl: \"dsdr\": Its device report has the negative size -5.\n", List().errors);
}

TEST_F(RngctlTest, APluginIsStartedBeforeItIsAskedForItsDevices) {
  InstallPlugin("dsdr", "reports_after_start");
  EXPECT_THAT(List().output, EndsWith("\n\ndsdr, device R1: Reader 1\n"));
}

TEST_F(RngctlTest, ADeviceIsFreeWhenItsReportIsAskedFor) {
  InstallPlugin("dsdr", "exclusive_device");
  EXPECT_THAT(List().output, EndsWith("\n\ndsdr, device R1: Reader 1\n"));
}

TEST_F(RngctlTest, TheTableIsShownBeforeReportsAreWaitedFor) {
  InstallPlugin("dsdr", "in_child/Hang");
  const Result result =
      RunShell(Rngctl() + " list >" + TreePath("told") + " & until grep -qs '^dsdr     no ' " +
               TreePath("told") + "; do sleep 0.01; done; kill $!; wait $!");
  EXPECT_EQ(128 + SIGTERM, result.status);
  EXPECT_THAT(result.errors, Not(HasSubstr("did not answer")));
}

TEST_F(RngctlTest, APluginThatFailsBeforeItsReportIsASentence) {
  for (const auto& [action, end] :
       {std::pair("Crash", "crashed with signal 11 (Segmentation fault)"),
        {"Throw", "threw an exception"},
        {"Hang", "did not answer within 10 s"}}) {
    InstallPlugin("dsdr", std::string("in_child/") + action);
    const Result result = Run("list");
    EXPECT_EQ(0, result.status) << action;
    EXPECT_EQ(std::string("rngctl: \"dsdr\": Its device report could not be read: the plug-in ") +
                  end + ".\n",
              result.errors);
  }
}

// It can only be found by that name, which no row of the catalogue has.
TEST_F(RngctlTest, ListsAFlaglessProviderOfAKindWithoutPlugin) {
  InstallPlugin("dsdr", "flagless_bio");
  EXPECT_THAT(Run("list").output,
              HasSubstr("\nbio      yes          -                 A quiet?source\n"));
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

TEST_F(RngctlTest, APluginThatTerminatesTheProgramIsAFailure) {
  for (const char* place : {"Opening_Quit", "Release_Quit"}) {
    InstallPlugin("dsdr", std::string("disturbing/") + place);
    for (const char* command : {"list", "list --json", "default"}) {
      const Result result = Run(command);
      EXPECT_EQ(1, result.status) << command;
      EXPECT_EQ(
          "rngctl: A plug-in or the known-path service exited with status 0.\n"
          "Run \"rngctl doctor\" to find out which.\n",
          result.errors);
    }
  }
}

TEST_F(RngctlTest, APluginThatCrashesInTheListLeavesNoCoreFile) {
  InstallPlugin("dsdr", "breaking/opening_crashes");
  for (const char* command : {" list", " list --json"}) {
    const Result result =
        RunShell("cd " + TreePath("") + "; ulimit -c unlimited; exec " + Rngctl() + command);
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("", result.output);
    EXPECT_THAT(
        result.errors,
        HasSubstr("rngctl: A plug-in or the known-path service crashed with signal 6 (Aborted).\n"
                  "Run \"rngctl doctor\" to find out which.\n"));
    EXPECT_FALSE(fs::exists(TreePath("core")));
  }
}

class ListAsJson : public RngctlTest {
 protected:
  // Lists, and checks that the schema holds.
  static nlohmann::json List(int status = 0) {
    const Result result = Run("list --json");
    EXPECT_EQ(status, result.status);
    const Result schema = MatchSchema("list.schema.json", result.output);
    EXPECT_EQ(0, schema.status) << schema.errors;
    return nlohmann::json::parse(result.output).at("generators");
  }
};

TEST_F(ListAsJson, HasWhatTheGeneratorsReport) {
  InstallPlugin("dsdr", "reports_devices");
  InstallPlugin("biokbd");
  const nlohmann::json generators = List();
  ASSERT_EQ(3U, generators.size());
  EXPECT_EQ(nlohmann::json::parse(R"({
      "name": "dsdr", "interactive": false, "flags": ["hardware"], "description": "A simple source",
      "devices": [{"identifier": "R1", "text": "Reader 1"}],
      "problems": ["Reader 2 is off. Switch it on."], "report_fault": null})"),
            generators[0]);
  EXPECT_EQ("biokbd", generators[1]["name"]);
  EXPECT_EQ(true, generators[1]["interactive"]);
  EXPECT_EQ(nullptr, generators[1]["description"]);
  EXPECT_EQ("operating-system", generators[2]["flags"][0]);
}

TEST_F(ListAsJson, HasFlagsWithoutNamesAndTextsWithControls) {
  InstallPlugin("dsdr", "failing_device");
  InstallPlugin("sobol", "flagless");
  const nlohmann::json generators = List();
  EXPECT_EQ("bit-2147483648", generators[0]["flags"][1]);
  EXPECT_EQ("A quiet\033source", generators[2]["description"]);
  EXPECT_TRUE(generators[2]["flags"].empty());
}

TEST_F(ListAsJson, ANameThatIsNotUtf8IsReplaced) {
  InstallPlugin("dsdr", "disturbing/NameNotUtf8");
  EXPECT_EQ("\uFFFD\uFFFDdsdr", List()[0]["name"]);
}

TEST_F(ListAsJson, AnEmptyNameIsNull) {
  InstallPlugin("grandmaster", "nameless");
  const nlohmann::json generators = List();
  ASSERT_EQ(2U, generators.size());
  EXPECT_EQ(nullptr, generators[1]["name"]);
}

TEST_F(ListAsJson, ANameThatChangesItsSizeIsNull) {
  InstallPlugin("dsdr", "breaking/name_size_differs");
  const nlohmann::json generators = List();
  ASSERT_EQ(2U, generators.size());
  EXPECT_EQ(nullptr, generators[0]["name"]);
}

TEST_F(ListAsJson, HasNothingThatPluginsPrint) {
  for (const char* when : {"prints_start", "prints_release"}) {
    InstallPlugin("dsdr", when);
    EXPECT_EQ("dsdr", List()[0]["name"]);
    EXPECT_THAT(Run("list --json").errors, HasSubstr("driver"));
  }
}

TEST_F(ListAsJson, SaysWhatIsWrongWithAReport) {
  fs::copy(FakePlugin("dsdr", "breaking/report_crashes"), TreePath("lib"));
  EXPECT_EQ("Its device report crashed with signal 6 (Aborted).", List()[0]["report_fault"]);
}

TEST_F(ListAsJson, IsAnEmptyListWhenNothingIsUsable) {
  fs::remove(TreePath("lib/librngunixdev.so"));
  EXPECT_TRUE(List(1).empty());
}

TEST_F(ListAsJson, TheSchemaRefusesWhatItDoesNotName) {
  EXPECT_NE(0, MatchSchema("list.schema.json", R"({"generators": [], "more": 1})").status);
  EXPECT_NE(0, MatchSchema("list.schema.json", R"({"generators": [{"name": "dsdr"}]})").status);
}

TEST_F(RngctlTest, TheSchemasAreInstalled) {
  for (const std::string command : {"list", "doctor", "check"}) {
    const std::string schema = command + ".schema.json";
    EXPECT_EQ(ReadFile(SCHEMA_DIR "/" + schema),
              ReadFile(TreePath("share/rngaggregator/schema/" + schema)));
  }
}
