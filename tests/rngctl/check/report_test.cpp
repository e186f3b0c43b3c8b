#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace {

constexpr char kSchema[] = "check.schema.json";

}  // namespace

TEST(Check, TextShowsFaultsWithTheirMendAndCounts) {
  const Result result =
      Check(Breaking("no_flags") + "; " RNGCTL " check " + Breaking("description_fails"));
  EXPECT_THAT(result.output,
              HasSubstr("\nwarning       some-flag             GetFlags returns at least one bit\n"
                        "              found: GetFlags returns 0.\n"
                        "              fix: Return at least one kRngCapability bit: without one"));
  EXPECT_THAT(result.output,
              HasSubstr("\nfailed        description           GetDescription follows"));
  EXPECT_THAT(result.output, HasSubstr("checks passed, 0 failed, 1 warning, 3 not examined\n"));
  EXPECT_THAT(result.output, HasSubstr("checks passed, 1 failed, 0 warnings, 4 not examined\n"));
  EXPECT_EQ("rngctl: The plug-in breaks 1 rule.\n", result.errors);
  EXPECT_THAT(result.output, Not(HasSubstr("\033")));
}

TEST(Check, TextGivesAReasonOnceForAllChecks) {
  const std::string text = Check(Breaking("draw_fails")).output;
  EXPECT_THAT(text, HasSubstr("\nnot examined  cancel\n"
                              "              why: draws also fail without Cancel\n"
                              "not examined  draw-fills-buffer, drawn-values, "
                              "draws-differ, draws-look-random, concurrent-calls\n"
                              "              why: Generate returns false\n\n"));
  EXPECT_THAT(text, HasSubstr("\nwarning       draw-succeeds "));
}

TEST(Check, TheResultIsCompleteBeforeTheSentenceOnStandardError) {
  const Result result = Check(Breaking("description_fails") + " 2>&1");
  EXPECT_THAT(result.output, EndsWith("not examined\nrngctl: The plug-in breaks 1 rule.\n"));
}

TEST(Check, APluginCannotSteerTheTerminal) {
  EXPECT_THAT(Check(Breaking("description_has_lines")).output, HasSubstr("\"One?two\""));
}

// The notice of a slow check moves the cursor, so only quick checks run here.
TEST(Check, ATerminalShowsColoursUnlessTheyAreRefused) {
  const auto inTerminal = [](const std::string& environment) {
    return RunShell(environment + " script -qec '" RNGCTL " check --only one-export,available " +
                    Breaking("unavailable") + "' " + TreePath("typescript"));
  };
  EXPECT_THAT(inTerminal("env -u NO_COLOR").output, HasSubstr("\033[32mpassed"));
  EXPECT_THAT(inTerminal("NO_COLOR=").output, HasSubstr("\033[32mpassed"));
  EXPECT_THAT(inTerminal("NO_COLOR=1").output, AllOf(HasSubstr("passed"), Not(HasSubstr("\033"))));
}

TEST(Check, ATerminalTellsWhatTakesLong) {
  const Result result = RunShell("script -qec '" RNGCTL " check --timeout 2 " +
                                 Breaking("name_hangs") + "' " + TreePath("typescript"));
  EXPECT_THAT(result.output, HasSubstr("Checking name ..."));
  EXPECT_THAT(result.output, Not(HasSubstr("Checking opens")));
}

TEST(Check, JsonKeepsItsSchema) {
  fs::copy_file(Breaking("correct"), TreePath("mine.so"));
  for (const std::string& plugin :
       {std::string(UNIXDEV_PLUGIN), Breaking("name_is_long"), Breaking("description_is_latin"),
        Breaking("unavailable"), Breaking("prints"), TreePath("mine.so")}) {
    const Result result = MatchSchema(kSchema, Check("--json " + plugin).output);
    EXPECT_EQ(0, result.status) << plugin << result.output << result.errors;
  }
}

TEST(Check, APathNeedNotBeUtf8) {
  const std::string folder = TreePath("caf\xE9");
  fs::create_directory(folder);
  fs::copy_file(Breaking("correct"), folder + "/librngdsdr.so");
  const json report = Report("'" + folder + "/librngdsdr.so'");
  EXPECT_EQ("", Failed(report));
  EXPECT_EQ("device-report own-device failed-draw-is-zero", Names(report, "not-examined"));
  EXPECT_THAT(report.at("plugin"), EndsWith("/caf\xEF\xBF\xBD/librngdsdr.so"));
  EXPECT_EQ("there is no factory Get\xEF\xBF\xBD",
            Reason(Report("--factory 'Get\xE9' " + Breaking("correct")), "name"));
}

TEST(Check, TheSchemaRefusesWhatIsNoReport) {
  json report = Report(Breaking("unavailable"));
  const auto isValid = [](const json& value) {
    return MatchSchema(kSchema, value.dump()).status == 0;
  };
  ASSERT_TRUE(isValid(report));
  for (const char* pointer : {"/counts/passed", "/checks/0/result", "/checks/0/name", "/plugin"}) {
    json spoilt = report;
    spoilt[json::json_pointer(pointer)] = "Wrong";
    EXPECT_FALSE(isValid(spoilt)) << pointer;
  }
  report["checks"][0]["found"] = "A check that passed has found nothing.";
  EXPECT_FALSE(isValid(report));
}

TEST(Check, CountsAddUp) {
  const json report = Report(Breaking("unavailable"));
  std::size_t sum = 0;
  for (const auto& count : report.at("counts")) sum += count.get<std::size_t>();
  EXPECT_EQ(report.at("checks").size(), sum);
  EXPECT_EQ(1, report.at("counts").at("notes"));
}

TEST(Check, CountsTellErrorsFromWarningsAndNotes) {
  const auto count = [](const std::string& variant) {
    const json counts =
        Report("--only description,some-flag,available " + Breaking(variant)).at("counts");
    return json({counts.at("errors"), counts.at("warnings"), counts.at("notes")});
  };
  EXPECT_EQ(json({1, 0, 0}), count("description_fails"));
  EXPECT_EQ(json({0, 1, 0}), count("no_flags"));
  EXPECT_EQ(json({0, 0, 1}), count("unavailable"));
}

TEST(Check, TheTextShowsNotesAsSuch) {
  const std::string text = Check(Breaking("unavailable")).output;
  EXPECT_THAT(text, HasSubstr("\nnote          available "));
  EXPECT_THAT(text, HasSubstr(" checks passed, 0 failed, 0 warnings, 1 note, "));
}

TEST(Check, ItsColoursTellErrorsWarningsAndNotes) {
  for (const auto& [check, variant, word] :
       {std::tuple("one-export", "exports_more", "\033[31mfailed "),
        {"some-flag", "no_flags", "\033[33mwarning "},
        {"available", "unavailable", "\033[36mnote "}}) {
    const Result result = RunShell(std::string("NO_COLOR= script -qec '" RNGCTL " check --only ") +
                                   check + " " + Breaking(variant) + "' " + TreePath("typescript"));
    EXPECT_THAT(result.output, HasSubstr(word));
  }
}
