#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// No part of such an answer can be trusted, not even the good news.
TEST_F(Doctor, AnAnswerThatIsNotUnderstoodIsAnInternalError) {
  InstallUnixDev();
  InstallPlugin("dsdr", "breaking/garbles_messages");
  for (const std::string kind : {"", " dsdr"}) {
    const Result result = Run("doctor --json" + kind);
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, HasSubstr("nternal error: "));
    const json row = RowOf(json::parse(result.output), "dsdr");
    EXPECT_EQ("internal-error", row.at("verdict"));
    EXPECT_EQ(false, row.at("kept"));
  }
  EXPECT_EQ(0, Run("doctor unixdev").status);
}

TEST_F(Doctor, AnInstallationInOrderIsASuccess) {
  InstallUnixDev();
  const Result result = Run("doctor");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(Doctor, APluginOutOfOrderIsANegativeAnswer) {
  InstallUnixDev();
  InstallPlugin("Rutoken", "unavailable");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: 1 installed plug-in has a problem.\n", result.errors);
  EXPECT_EQ(0, Run("doctor unixdev").status);
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

TEST_F(Doctor, AWrongNameAloneIsANegativeAnswer) {
  InstallUnixDev();
  InstallPlugin("dsdr", "slot_table");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: 1 installed plug-in has a problem.\n", result.errors);
}
