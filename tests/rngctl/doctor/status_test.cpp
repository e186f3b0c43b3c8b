#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

// No part of such an answer can be trusted, not even the good news.
TEST_F(Doctor, AnAnswerThatIsNotUnderstoodIsAnInternalError) {
  InstallUnixDev();
  InstallPlugin("dsdr", "breaking/garbles_messages");
  for (const std::string kind : {"", " dsdr"}) {
    const Result result = Run("doctor --json" + kind);
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(
        result.errors,
        HasSubstr(kind.empty() ? "rngctl: Internal error: some plug-ins could not be examined.\n"
                               : "internal error: the examination gave no usable answer.\n"));
    const json row = RowOf(json::parse(result.output), "dsdr");
    EXPECT_EQ("internal-error", row.at("verdict"));
    EXPECT_EQ(false, row.at("kept"));
    EXPECT_EQ(
        "Ask the vendor whether the plug-in writes to descriptors that are not its own. If it does "
        "not, report this as a bug of rngctl.",
        row.at("fix"));
  }
  EXPECT_EQ(0, Run("doctor unixdev").status);
}

TEST_F(Doctor, WhatWasNotUnderstoodIsKeptIfAStartKeepsIt) {
  InstallPlugin("dsdr", "stub");
  InstallPlugin("sobol", "garbles_without_dsdr");
  const json row = RowOf(Examine(""), "sobol");
  EXPECT_EQ("internal-error", row.at("verdict"));
  EXPECT_EQ(true, row.at("kept"));
}

TEST_F(Doctor, AnInstallationInOrderIsASuccess) {
  InstallUnixDev();
  const Result result = Run("doctor");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, IsEmpty());
  EXPECT_THAT(result.output, Not(HasSubstr(": \n")));  // advice that says nothing
}

TEST_F(Doctor, APluginOutOfOrderIsANegativeAnswer) {
  InstallUnixDev();
  InstallPlugin("Rutoken", "unavailable");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: 1 installed plug-in has a problem.\n", result.errors);
  EXPECT_EQ(0, Run("doctor unixdev").status);
}

TEST_F(Doctor, CountsThePluginsOutOfOrder) {
  InstallUnixDev();
  InstallPlugin("Rutoken", "unavailable");
  InstallPlugin("JacartaGost", "null_factory");
  EXPECT_EQ("rngctl: 2 installed plug-ins have problems.\n", Run("doctor").errors);
}

TEST_F(Doctor, AnInstallationWithoutADisplayIsInOrder) {
  InstallUnixDev();
  InstallPlugin("bioqt");
  EXPECT_EQ(0, Run("doctor").status);
  EXPECT_EQ(1, Run("doctor bioqt").status);
}

TEST_F(Doctor, NoUsableGeneratorHasAStatusOfItsOwn) {
  const Result none = Run("doctor");
  EXPECT_EQ(3, none.status);
  EXPECT_EQ("rngctl: No generator is usable.\n", none.errors);
  InstallPlugin("Rutoken", "unavailable");
  EXPECT_EQ(3, Run("doctor").status);
}

TEST_F(Doctor, AKindThatIsNotThereIsANegativeAnswer) {
  InstallUnixDev();
  const Result result = Run("doctor dsdr");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: \"dsdr\": not installed: there is no librngdsdr.so.\n", result.errors);
}

TEST_F(Doctor, AnUnknownKindIsWrongUsage) {
  const Result result = Run("doctor Dsdr");
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_EQ(
      "rngctl: There is no kind \"Dsdr\"; did you mean \"dsdr\"? The kinds are bioqt, unixx11, "
      "dsdr, accord, sobol, "
      "JacartaGost, Rutoken, EsmartGost, biokbd, unixdev, grandmaster, biocore.\n",
      result.errors);
}

TEST_F(Doctor, GuessesWhichKindIsMeant) {
  EXPECT_THAT(Run("doctor grandmastr").errors,
              HasSubstr("; did you mean \"grandmaster\"? The kinds"));
  EXPECT_THAT(Run("doctor biox11").errors, HasSubstr("; did you mean \"unixx11\"? The kinds"));
  EXPECT_THAT(Run("doctor thermal").errors, HasSubstr("no kind \"thermal\"; the kinds are"));
}

TEST_F(Doctor, HelpTellsTheExitStatusAndKeepsTheChildToItself) {
  EXPECT_THAT(Run("doctor --help").output, HasSubstr("Exit status:\n  0  "));
  EXPECT_THAT(Run("--help").output, AllOf(HasSubstr("doctor "), Not(HasSubstr("doctor-child"))));
  for (const char* arguments : {"--timeout 0", "--timeout 3601", "--timeout 010", "--timeout x",
                                "--timeout -1", "dsdr sobol"}) {
    EXPECT_EQ(2, Run(std::string("doctor ") + arguments).status) << arguments;
  }
}

// The start with all plug-ins succeeds, so the verdict alone makes the difference.
TEST_F(Doctor, OnePluginOutOfOrderIsANegativeAnswer) {
  InstallUnixDev();
  for (const auto& [kind, variant] : std::vector<std::pair<std::string, std::string>>{
           {"dsdr", "slot_table"},          // has a wrong name
           {"dsdr", "names_another_kind"},  // has the name of another kind
           {"EsmartGost", "nameless"},
           {"dsdr", "no_factory"},
           {"JacartaGost", "null_factory"},
           {"Rutoken", "unavailable"},
           {"biokbd", "missing_dependency"}}) {
    InstallPlugin(kind, variant);
    const Result result = Run("doctor");
    EXPECT_EQ(1, result.status) << variant;
    EXPECT_EQ("rngctl: 1 installed plug-in has a problem.\n", result.errors) << variant;
    fs::remove(TreePath("lib/" + LibraryFileOf(kind)));
  }
}

// Without a terminal nothing is wrong with it; with one, something is.
TEST_F(Doctor, AGeneratorThatAsksInATerminalIsAProblemOnlyWhereThereIsOne) {
  InstallUnixDev();
  InstallPlugin("biokbd", "unavailable");
  EXPECT_EQ(0, RunShell("setsid -w " + Rngctl() + " doctor").status);
  const Result result = RunShell("script -qec '" + Rngctl() + " doctor' " + TreePath("typescript"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("rngctl: 1 installed plug-in has a problem."));
}
