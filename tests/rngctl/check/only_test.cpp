#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

std::string AllNames(const json& report) {
  std::string names;
  for (const json& check : report.at("checks")) {
    names += (names.empty() ? "" : " ") + check.at("name").get<std::string>();
  }
  return names;
}

json Only(const std::string& checks, const std::string& plugin) {
  return Report("--only " + checks + " " + plugin);
}

// What bash offers for the last word of a command line.
std::string Completed(const std::string& words) {
  return RunShell(
             "bash -c '. " SCHEMA_DIR "/../completions/rngctl.bash; COMP_WORDS=(rngctl check " +
             words + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _rngctl; echo ${COMPREPLY[*]}'")
      .output;
}

}  // namespace

TEST(CheckOnly, MakesTheNamedChecksInTheOrderOfTheReport) {
  const json report = Only("name,opens", Breaking("name_size_differs"));
  EXPECT_EQ("opens name", AllNames(report));
  EXPECT_EQ("name", Failed(report));
  EXPECT_EQ(1, report.at("counts").at("passed"));
  EXPECT_EQ(0, MatchSchema("check.schema.json", report.dump()).status);
}

TEST(CheckOnly, OtherFaultsDoNotCount) {
  const Result result = Check("--only opens,self-test " + Breaking("name_size_differs"));
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr("\n2 checks passed, 0 failed, 0 warnings\n"));
}

// These checks judge what all the others observed.
TEST(CheckOnly, ChecksOfTheWholeRunMakeTheOthersToo) {
  const json report = Only("no-exceptions", Breaking("draw_throws"));
  EXPECT_EQ("no-exceptions", AllNames(report));
  EXPECT_EQ("no-exceptions", Failed(report));
  EXPECT_EQ("no-lifecycle-calls", Failed(Only("no-lifecycle-calls", Breaking("stops_in_draws"))));
  EXPECT_EQ("no-output", Failed(Only("no-output", Breaking("prints"))));
}

TEST(CheckOnly, NeedsNoEarlierCheckToFindAFault) {
  for (const auto& [check, variant] :
       {std::pair("refused-device", "forgets_its_device"), std::pair("process-state", "Restrict"),
        std::pair("draws-differ", "repeats_draws"), std::pair("unmapped", "stays_mapped")}) {
    EXPECT_EQ(check, Failed(Only(check, Breaking(variant))));
  }
}

TEST(CheckOnly, AnUnknownNameIsWrongUsage) {
  const std::string plugin = Breaking("correct");
  const Result like = Check("--only name,self-tset " + plugin);
  EXPECT_EQ(2, like.status);
  EXPECT_THAT(like.output, IsEmpty());
  EXPECT_EQ("rngctl: There is no check \"self-tset\". Did you mean \"self-test\"?\n", like.errors);
  const Result other = Check("--only everything " + plugin);
  EXPECT_EQ(2, other.status);
  EXPECT_EQ("rngctl: There is no check \"everything\". \"rngctl check PLUGIN\" shows all checks.\n",
            other.errors);
  EXPECT_EQ(2, Check("--only '' " + plugin).status);
  EXPECT_EQ(2, Check("--only , " + plugin).status);
}

TEST(CheckOnly, TheShellsOfferEveryCheck) {
  EXPECT_EQ(AllNames(Report(Breaking("correct"))) + "\n", Completed("--only \"\""));
  EXPECT_EQ("name,self-test\n", Completed("--only name,self"));
}
