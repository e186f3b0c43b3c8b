#include "tests/end_to_end/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using testing::AllOf;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

Result Check(const std::string& arguments) { return RunShell(RNGCTL " check " + arguments); }

std::string Breaking(const std::string& variant) {
  return BREAKING_DIR "/" + variant + "/librngdsdr.so";
}

json Report(const std::string& arguments) {
  return json::parse(Check("--json " + arguments).output);
}

const json& Find(const json& report, const std::string& name) {
  for (const json& check : report.at("checks")) {
    if (check.at("name") == name) return check;
  }
  throw std::runtime_error("no check is called " + name);
}

// The names of those with that result.
std::string Names(const json& report, const std::string& result) {
  std::string names;
  for (const json& check : report.at("checks")) {
    if (check.at("result") != result) continue;
    names += (names.empty() ? "" : " ") + check.at("name").get<std::string>();
  }
  return names;
}

std::string Failed(const json& report) { return Names(report, "failed"); }

std::string Seen(const json& report, const std::string& name) {
  return Find(report, name).value("seen", "");
}

std::string Reason(const json& report, const std::string& name) {
  return Find(report, name).value("reason", "");
}

// Of plug-ins that take time: one waits for all together.
std::map<std::string, Result> CheckTogether(const std::vector<std::string>& variants) {
  std::string command;
  for (const std::string& variant : variants) {
    const std::string file = TreePath(variant);
    command += "(" RNGCTL " check --json --timeout 1 " + Breaking(variant) + " >" + file +
               "; echo $? >" + file + ".status) & ";
  }
  RunShell(command + "wait");
  std::map<std::string, Result> results;
  for (const std::string& variant : variants) {
    const std::string file = TreePath(variant);
    results[variant] = {std::stoi(ReadFile(file + ".status")), ReadFile(file), ""};
  }
  return results;
}

}  // namespace

// --- Each rule, and a plug-in that breaks it

struct Breach {
  std::string variant;
  std::string failed;     // all the checks that fail
  std::string seen;       // part of what is said of the first of them
  std::string mend = "";  // the beginning of how to mend that, where the check's own does not fit
};

void PrintTo(const Breach& breach, std::ostream* stream) { *stream << breach.variant; }

class CheckBreach : public testing::TestWithParam<Breach> {};

void ExpectBreach(const Breach& breach, const Result& result) {
  const json report = json::parse(result.output);
  EXPECT_EQ(breach.failed, Failed(report)) << result.output << result.errors;
  const json& check = Find(report, breach.failed.substr(0, breach.failed.find(' ')));
  EXPECT_THAT(check.value("seen", ""), HasSubstr(breach.seen));
  EXPECT_THAT(check.value("mend", ""), StartsWith(breach.mend));
  EXPECT_EQ(check.at("severity") == "error" ? 1 : 0, result.status);
}

TEST_P(CheckBreach, FailsItsCheckAlone) {
  ExpectBreach(GetParam(), Check("--json " + Breaking(GetParam().variant)));
}

std::string NameOf(const testing::TestParamInfo<Breach>& info) { return info.param.variant; }

INSTANTIATE_TEST_SUITE_P(
    File, CheckBreach,
    testing::Values(Breach{"exports_more", "one-export", "1 symbol besides the factory: AnotherF"},
                    Breach{"has_executable_stack", "no-executable-stack", "executable stack"},
                    Breach{"has_static_tls", "no-static-tls", "flag STATIC_TLS"},
                    Breach{"misses_a_function", "opens", "undefined symbol"},
                    Breach{"borrows_a_function", "opens", "not linked with what has elf_version;"}),
    NameOf);

#ifndef __clang__  // which makes no such symbols
INSTANTIATE_TEST_SUITE_P(Unique, CheckBreach,
                         testing::Values(Breach{"has_unique_symbol", "no-unique-symbols unmapped",
                                                "1 GNU-unique symbol: _ZZ4UsesvE4uses"}),
                         NameOf);
#endif

INSTANTIATE_TEST_SUITE_P(
    Start, CheckBreach,
    testing::Values(Breach{"opening_crashes", "opens",
                           "signal 6 (Aborted) in the opening of the library"},
                    Breach{"factory_gives_null", "gives-object", "gives null"},
                    Breach{"needs_settings", "null-settings", "in SetSettings without settings"},
                    Breach{"needs_a_path", "empty-settings", "in SetSettings with empty settings"},
                    Breach{"gives_object_once", "reload", "Opened again"},
                    Breach{"closing_crashes", "reload exit-without-release",
                           "signal 6 (Aborted) in the closing of the library",
                           "Let no static destructor throw"},
                    Breach{"unavailable", "available", "IsAvailable answers false"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Answers, CheckBreach,
    testing::Values(
        Breach{"name_is_empty", "name-length", "no name: no host can ask for it"},
        Breach{"name_is_long", "name-length",
               "\"eighteen-character\" has 18 characters: hosts find",
               "Shorten it to 17 characters."},
        Breach{"name_overruns", "name", "asks for 5 bytes, then writes outside of them"},
        Breach{"name_has_no_end", "name", "does not end inside of the 4 bytes"},
        Breach{"name_changes", "name", "gives \"dsdr\", and then \"dddd\""},
        Breach{"name_size_differs", "name", "asks for 5 bytes, then answers that there are 4"},
        Breach{"name_ends_process", "name", "ended the process with status 3 in GetName"},
        Breach{"name_is_wrong", "name-in-catalogue", "\"mine\"; the file is the one of \"dsdr\""},
        Breach{"description_fails", "description", "negative size, -1"},
        Breach{"description_has_lines", "description-line", "line break"},
        Breach{"description_is_latin", "description-line", "no UTF-8"},
        Breach{"hardware_id_is_long", "hardware-id", "18 characters", "Shorten it to 17"},
        Breach{"flags_change", "stable-flags", "answers 1, and then 2: a host"},
        Breach{"no_flags", "some-flag", "answers 0"},
        Breach{"self_test_fails", "self-test", "answers false"},
        Breach{"wants_a_device", "any-device", "false to null"},
        Breach{"takes_every_device", "unknown-device", "no device bears"},
        Breach{"refuses_own_device", "own-device", "false to \"X1\", which GetHardwareId gives"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Draws, CheckBreach,
    testing::Values(
        Breach{"empty_draw_fails", "empty-draw", "false to null and the size 0"},
        Breach{"empty_draw_writes", "empty-draw", "writes into the buffer"},
        Breach{"draw_fails", "draw-succeeds", "answers false"},
        Breach{"stays_cancelled", "cancel", "the next draw fails"},
        Breach{"next_draw_is_cancelled", "cancel", "the next draw fails"},
        Breach{"failed_draw_leaves_bytes", "failed-draw-is-zero", "was refused"},
        Breach{"refused_draw_leaves_bytes", "failed-draw-is-zero", "was refused"},
        Breach{"fills_only_the_beginning", "draw-fills-buffer",
               "those after byte number 8192 are not written"},
        Breach{"skips_last_byte", "draw-fills-buffer", "byte number 5 was never written"},
        Breach{"draw_overruns", "draw-fills-buffer", "writes outside of them",
               "Write no more bytes than the size says."},
        Breach{"repeats_draws", "draws-differ", "are equal"},
        Breach{"has_a_fixed_seed", "draws-differ", "After a new start"},
        Breach{"refuses_company", "concurrent-calls", "true when called alone, and false at the"},
        Breach{"shares_a_buffer", "concurrent-calls", "at the same time as others"},
        Breach{"shares_an_id_buffer", "concurrent-calls", "GetHardwareId gives "},
        Breach{"shares_drawn_bytes", "concurrent-calls", "get the same bytes"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    End, CheckBreach,
    testing::Values(
        Breach{"thread_stays", "release-ends-threads", "1 thread is still running"},
        Breach{"file_stays", "release-closes-files", "Left open: /dev/null"},
        Breach{"closes_input", "release-closes-files", "not its own: file number 0, /dev/null"},
        Breach{"file_stays_each_time", "release-closes-files load-cycles", "Left open: /dev/null"},
        Breach{"signal_handler_stays", "no-handlers-left",
               "handler of signal 10 (User defined signal 1)"},
        Breach{"terminate_handler_stays", "no-handlers-left", "handler of std::terminate"},
        Breach{"exit_handler_stays", "clean-exit", "in the end of the process"},
        Breach{"thread_key_stays", "clean-exit", "in the end of a thread that used it"},
        Breach{"static_thread", "exit-without-release",
               "signal 6 (Aborted) in the end of the process without Release"},
        Breach{"stays_mapped", "unmapped", "flag NODELETE"},
        Breach{"thread_object_stays", "unmapped", "thread_local objects with destructors"},
        Breach{"leaks_pages", "load-cycles", "address space"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Throughout, CheckBreach,
    testing::Values(
        Breach{"factory_throws", "no-exceptions", "the factory throws \"no licence\""},
        Breach{"name_throws", "no-exceptions", "GetName throws something that is no std::exc"},
        Breach{"draw_throws", "no-exceptions", "Generate throws \"no entropy\""},
        Breach{"release_throws", "no-exceptions", "Release throws \"still in use\""},
        Breach{"calls_initialize", "no-lifecycle-calls", "Initialize is called in IsAvailable"},
        Breach{"calls_shut_down", "no-lifecycle-calls", "ShutDown is called in Release"},
        Breach{"prints", "no-output", "In the check empty-draw it prints \"drawing 0\"."}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Plain, CheckBreach,
    testing::Values(Breach{"name_crashes", "name",
                           "crashed with signal 11 (Segmentation fault) in GetName"},
                    Breach{"leaks_memory", "load-cycles", "heap in use"},
                    Breach{"leaks_in_texts", "load-cycles", "heap in use"},
                    Breach{"leaks_in_draws", "load-cycles", "heap in use"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    EndOfProcess, CheckBreach,
    testing::Values(Breach{"opening_throws", "opens", "in the opening of the library",
                           "Let no static constructor throw"},
                    Breach{"available_crashes", "null-settings empty-settings built-in-settings",
                           "in IsAvailable without settings",
                           "Compare the settings, and what they answer"},
                    Breach{"draw_crashes", "draw-succeeds",
                           "It crashed with signal 6 (Aborted) in Generate.",
                           "No operation may end the process"}),
    NameOf);

TEST(Check, AnOperationThatEndsTheProcessIsAnErrorInEveryCheck) {
  EXPECT_EQ("error", Find(Report(Breaking("draw_crashes")), "draw-succeeds").at("severity"));
  const json report = Report(Breaking("self_test_ends_process"));
  EXPECT_EQ("opens self-test", Failed(report));
  const json& selfTest = Find(report, "self-test");
  EXPECT_EQ("error", selfTest.at("severity"));
  EXPECT_EQ("It ended the process with status 127 in SelfTest.", selfTest.at("seen"));
  EXPECT_THAT(selfTest.at("mend"), StartsWith("Link with the library that has the missing"));
}

TEST(Check, WhatIsAskedOfTheEndOfTheProcessStaysAWarning) {
  const json report = Report(Breaking("static_thread"));
  const json& check = Find(report, "exit-without-release");
  EXPECT_EQ("warning", check.at("severity"));
  EXPECT_THAT(check.at("mend"), StartsWith("Leave nothing to static objects"));
}

TEST(CheckBreaches, ThatTakeTimeFailTheirCheckAloneAndAreWaitedForOnce) {
  const Breach breaches[] = {
      {"hangs_with_settings", "built-in-settings", "no answer in 1 s in IsAvailable"},
      {"factory_hangs", "gives-object", "gave no answer in 1 s in the factory"},
      {"name_hangs", "name", "gave no answer in 1 s in GetName"},
      {"self_test_hangs", "self-test", "no answer in 1 s", "Let it return soon"},
      {"ignores_cancel", "cancel", "has not ended 0.75 s after Cancel"},
      {"cancels_one_draw", "cancel", "has not ended 0.75 s after Cancel"},
      {"cancelled_draw_succeeds", "cancel", "answers true"},
      {"waits_only_once", "cancel", "ends the next one, too"},
      {"cancelled_draw_leaves_bytes", "failed-draw-is-zero", "was cancelled"}};
  std::vector<std::string> variants;
  for (const Breach& breach : breaches) variants.push_back(breach.variant);
  std::map<std::string, Result> results = CheckTogether(variants);
  for (const Breach& breach : breaches) {
    SCOPED_TRACE(breach.variant);
    ExpectBreach(breach, results[breach.variant]);
  }
  // A step that gave no answer is not taken again.
  EXPECT_EQ("IsAvailable gave no answer in 1 s in the check built-in-settings",
            Reason(json::parse(results["hangs_with_settings"].output), "load-cycles"));
}

// The headers of the sections are no more than a place and a number in the header of the file.
TEST(Check, AFileNeedsNoSections) {
  for (const auto& [variant, failed] :
       {std::pair("correct", ""), std::pair("exports_more", "one-export"),
        std::pair("has_static_tls", "no-static-tls"), std::pair("stays_mapped", "unmapped")}) {
    const std::string file = TreePath("librngdsdr.so");
    fs::copy_file(Breaking(variant), file, fs::copy_options::overwrite_existing);
    const std::string zeros = "dd status=none conv=notrunc if=/dev/zero bs=1 of=" + file;
    ASSERT_EQ(0, RunShell(zeros + " seek=40 count=8; " + zeros + " seek=60 count=4").status);
    EXPECT_EQ(failed, Failed(Report(file))) << variant;
  }
}

// --- Correct plug-ins

TEST(Check, FindsNoFaultInTheRealPlugin) {
  const Result result = Check(UNIXDEV_PLUGIN);
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output,
              EndsWith("\n39 checks passed, 0 failed, 0 warnings, 2 not examined\n"));
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST(Check, FindsNoFaultInCorrectPlugins) {
  for (const auto& [variant, unexamined] :
       {std::pair("correct", "own-device failed-draw-is-zero"),
        std::pair("plain_c", "failed-draw-is-zero"),
        std::pair("takes_all_back", "own-device failed-draw-is-zero")}) {
    const json report = Report(Breaking(variant));
    EXPECT_EQ("", Failed(report)) << variant;
    EXPECT_EQ(unexamined, Names(report, "not-examined")) << variant;
  }
}

TEST(Check, ADescriptionMayChange) {
  EXPECT_EQ("", Failed(Report(Breaking("description_counts"))));
}

TEST(Check, WhatTakesTimeIsNoFault) {
  std::map<std::string, Result> results =
      CheckTogether({"waits_for_user", "slow", "slow_throughout", "draws_in_turn"});
  const json user = json::parse(results["waits_for_user"].output);
  EXPECT_EQ("", Failed(user));
  EXPECT_EQ("own-device draw-succeeds draw-fills-buffer draws-differ concurrent-calls",
            Names(user, "not-examined"));
  EXPECT_EQ("a draw takes long, or waits for a user or a device", Reason(user, "draws-differ"));

  const json slow = json::parse(results["slow"].output);
  EXPECT_EQ("", Failed(slow));
  EXPECT_EQ("draws are slow, but wait for nobody", Reason(slow, "cancel"));

  const json inTurn = json::parse(results["draws_in_turn"].output);
  EXPECT_EQ("", Failed(inTurn));
  EXPECT_EQ("draws are slow, but wait for nobody", Reason(inTurn, "cancel"));

  // No call takes the time that is meant for one, many together do.
  const json throughout = json::parse(results["slow_throughout"].output);
  EXPECT_EQ("", Failed(throughout));
  EXPECT_EQ("passed", Find(throughout, "reload").at("result"));
  for (const char* name : {"failed-draw-is-zero", "load-cycles"}) {
    EXPECT_EQ("it takes too long; give more time with --timeout", Reason(throughout, name)) << name;
  }
}

TEST(Check, ALargeDrawMayBeRefused) {
  const json report = Report(Breaking("refused_draw_leaves_bytes"));
  EXPECT_EQ("a draw of 70000 bytes fails", Reason(report, "draw-fills-buffer"));
}

TEST(Check, ASourceThatRunsOutIsNoFaultOfTheThreads) {
  const json report = Report(Breaking("runs_out"));
  EXPECT_EQ("", Failed(report));
  EXPECT_EQ("the source ran out: draws now fail also when called alone",
            Reason(report, "concurrent-calls"));
}

// --- What one fault leaves of the other checks

TEST(Check, ACrashSpoilsOnlyTheChecksThatNeedTheOperation) {
  const json report = Report(Breaking("name_crashes"));
  EXPECT_EQ(
      "name-length name-in-catalogue own-device failed-draw-is-zero concurrent-calls no-exceptions "
      "no-lifecycle-calls no-output",
      Names(report, "not-examined"));
  EXPECT_EQ("GetName crashed with signal 11 (Segmentation fault) in the check name",
            Reason(report, "concurrent-calls"));
}

TEST(Check, WithoutAnObjectNothingIsSaidOfItsOperations) {
  const json report = Report(Breaking("factory_gives_null"));
  EXPECT_EQ("the factory gives no object", Reason(report, "name"));
  EXPECT_THAT(Reason(report, "no-exceptions"),
              AllOf(HasSubstr("were not called, or did not return: SetSettings, IsAvailable, GetN"),
                    Not(HasSubstr("the factory"))));
}

TEST(Check, WhatWasNotCalledIsNotSaidToKeepTheRules) {
  const std::string unavailable = Reason(Report(Breaking("unavailable")), "no-lifecycle-calls");
  EXPECT_THAT(unavailable, EndsWith(": GetName, GetDescription, GetHardwareId, GetFlags, "
                                    "SelectDevice, Generate, SelfTest, Cancel"));
  EXPECT_THAT(Reason(Report(Breaking("draw_crashes")), "no-exceptions"),
              EndsWith(": Generate, Cancel"));
  EXPECT_THAT(Reason(Report(Breaking("draw_throws")), "no-lifecycle-calls"),
              EndsWith(": Generate, Cancel"));
  EXPECT_EQ("passed", Find(Report(Breaking("draw_fails")), "no-exceptions").at("result"));
}

TEST(Check, ThreadsThatCannotDrawSayNothingOfConcurrentDraws) {
  for (const auto& [variant, reason] :
       {std::pair("draw_crashes",
                  "Generate crashed with signal 6 (Aborted) in the check draw-succ"),
        std::pair("draw_throws", "Generate throws an exception"),
        std::pair("draw_fails", "Generate answers false"),
        std::pair("failed_draw_leaves_bytes", "draws fail at times also when called alone")}) {
    EXPECT_THAT(Reason(Report(Breaking(variant)), "concurrent-calls"), StartsWith(reason))
        << variant;
  }
}

// --- File name and factory

TEST(Check, AFileThatTheCatalogueDoesNotKnowNeedsAFactory) {
  const std::string file = TreePath("mine.so");
  fs::copy_file(Breaking("correct"), file);
  const json report = Report(file);
  EXPECT_EQ("catalogue-pair", Failed(report));
  EXPECT_TRUE(report.at("factory").is_null());
  EXPECT_EQ("which factory to call is unknown; name it with --factory", Reason(report, "name"));

  const Result named = Check("--json --factory GetDsdrRng " + file);
  EXPECT_EQ(0, named.status);
  EXPECT_EQ("catalogue-pair", Failed(json::parse(named.output)));
  EXPECT_EQ("warning", Find(json::parse(named.output), "catalogue-pair").at("severity"));
  EXPECT_EQ("the file is not in the catalogue",
            Reason(json::parse(named.output), "name-in-catalogue"));
}

TEST(Check, AFactoryOfAnotherKindIsNoPair) {
  const std::string file = TreePath("librngsobol.so");
  fs::copy_file(Breaking("correct"), file);
  EXPECT_EQ("catalogue-pair name-in-catalogue", Failed(Report("--factory GetDsdrRng " + file)));
  const json report = Report(file);
  EXPECT_EQ("one-export", Failed(report));
  EXPECT_EQ("It does not export GetSobolRng, but GetDsdrRng.", Seen(report, "one-export"));
  EXPECT_THAT(Find(report, "one-export").at("mend"),
              AllOf(StartsWith("Define it extern \"C\", with default visibility and this exact"),
                    EndsWith("Or name the file librngdsdr.so: GetDsdrRng belongs to that.")));
  EXPECT_EQ("it does not export GetSobolRng", Reason(report, "catalogue-pair"));
  EXPECT_EQ("there is no factory GetSobolRng", Reason(report, "name"));
}

TEST(Check, AFactoryInCppIsSeenByItsMangledName) {
  const json report = Report(Breaking("factory_is_mangled"));
  EXPECT_EQ("It does not export GetDsdrRng, but _Z10GetDsdrRngv.", Seen(report, "one-export"));
  EXPECT_THAT(Find(report, "one-export").at("mend"), EndsWith("no version script hide it."));
}

TEST(Check, ALibraryBesideThePluginNeedsARunPath) {
  const json report = Report(BREAKING_DIR "/../missing_dependency/librngbiokb.so");
  EXPECT_EQ("opens", Failed(report));
  EXPECT_THAT(Seen(report, "opens"), HasSubstr("libabsent_device.so: cannot open"));
  EXPECT_THAT(Find(report, "opens").at("mend"),
              AllOf(StartsWith("Install libabsent_device.so where"), HasSubstr("'$ORIGIN'")));
}

// --- Wrong usage

class CheckWrongUsage : public testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(CheckWrongUsage, IsRefusedWithASentence) {
  WriteFile(TreePath("text.so"), "not a library\n");
  WriteFile(TreePath("empty.so"), "");
  fs::copy_file(Breaking("correct"), TreePath("other.so"));
  RunShell("printf '\\267' | dd of=" + TreePath("other.so") + " bs=1 seek=18 conv=notrunc");
  WriteFile(TreePath("torn.so"), ReadFile(Breaking("correct")).substr(0, 512));
  const auto& [arguments, sentence] = GetParam();
  const Result result = RunShell("cd " + TreePath("") + " && " RNGCTL " check " + arguments);
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, AllOf(StartsWith("rngctl: "), HasSubstr(sentence)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, CheckWrongUsage,
    testing::Values(std::pair("", "PLUGIN is required"),
                    std::pair("nothere.so", "Cannot read \"nothere.so\": No such file"),
                    std::pair("lib", "\"lib\" is a directory."),
                    std::pair("text.so", "\"text.so\" is not a shared library."),
                    std::pair("empty.so", "\"empty.so\" is not a shared library."),
                    std::pair("torn.so", "\"torn.so\" is not a shared library."),
                    std::pair("other.so", "is not a shared library for this machine (x86-64)."),
                    std::pair(RNGCTL, "is a program, not a shared library."),
                    std::pair("text.so --timeout 0", "--timeout"),
                    std::pair("text.so --timeout x", "--timeout"),
                    std::pair("text.so more", "more")));

// --- The report

TEST(Check, TextShowsFaultsWithTheirMendAndCounts) {
  const Result result =
      Check(Breaking("no_flags") + "; " RNGCTL " check " + Breaking("description_fails"));
  EXPECT_THAT(result.output,
              HasSubstr("\nwarning       some-flag             GetFlags has at least one bit\n"
                        "              seen: GetFlags answers 0.\n"
                        "              mend: Return at least one kRngCapability bit: without any"));
  EXPECT_THAT(result.output,
              HasSubstr("\nfailed        description           GetDescription keeps"));
  EXPECT_THAT(result.output, HasSubstr("checks passed, 0 failed, 1 warning, 2 not examined\n"));
  EXPECT_THAT(result.output, HasSubstr("checks passed, 1 failed, 0 warnings, 3 not examined\n"));
  EXPECT_EQ("rngctl: The plug-in breaks 1 rule.\n", result.errors);
  EXPECT_THAT(result.output, Not(HasSubstr("\033")));
}

TEST(Check, TextGivesAReasonOnceForAllChecks) {
  const std::string text = Check(Breaking("draw_fails")).output;
  EXPECT_THAT(text, HasSubstr("\nnot examined  cancel\n"
                              "              why: draws fail also without Cancel\n"
                              "not examined  draw-fills-buffer, draws-differ, concurrent-calls\n"
                              "              why: Generate answers false\n\n"));
  EXPECT_THAT(text, HasSubstr("\nwarning       draw-succeeds "));
}

TEST(Check, TheResultIsCompleteBeforeTheSentenceOnStandardError) {
  const Result result = Check(Breaking("description_fails") + " 2>&1");
  EXPECT_THAT(result.output, EndsWith("not examined\nrngctl: The plug-in breaks 1 rule.\n"));
}

TEST(Check, APluginCannotSteerTheTerminal) {
  EXPECT_THAT(Check(Breaking("description_has_lines")).output, HasSubstr("\"One?two\""));
}

TEST(Check, ATerminalShowsColoursUnlessTheyAreRefused) {
  const auto inTerminal = [](const std::string& environment) {
    return RunShell(environment + " script -qec '" RNGCTL " check " + Breaking("unavailable") +
                    "' " + TreePath("typescript"));
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
        Breaking("unavailable"), TreePath("mine.so")}) {
    const Result result = RunShell(RNGCTL " check --json " + plugin + " | " KEEPS_SCHEMA);
    EXPECT_EQ(0, result.status) << plugin << result.output << result.errors;
  }
}

TEST(Check, APathNeedNotBeUtf8) {
  const std::string folder = TreePath("caf\xE9");
  fs::create_directory(folder);
  fs::copy_file(Breaking("correct"), folder + "/librngdsdr.so");
  const json report = Report("'" + folder + "/librngdsdr.so'");
  EXPECT_EQ("", Failed(report));
  EXPECT_EQ("own-device failed-draw-is-zero", Names(report, "not-examined"));
  EXPECT_THAT(report.at("plugin"), EndsWith("/caf\xEF\xBF\xBD/librngdsdr.so"));
  EXPECT_EQ("there is no factory Get\xEF\xBF\xBD",
            Reason(Report("--factory 'Get\xE9' " + Breaking("correct")), "name"));
}

TEST(Check, TheSchemaRefusesWhatIsNoReport) {
  json report = Report(Breaking("unavailable"));
  const auto isValid = [](const json& value) {
    WriteFile(TreePath("report"), value.dump());
    return RunShell(KEEPS_SCHEMA " <" + TreePath("report")).status == 0;
  };
  ASSERT_TRUE(isValid(report));
  for (const char* pointer : {"/counts/passed", "/checks/0/result", "/checks/0/name", "/plugin"}) {
    json spoilt = report;
    spoilt[json::json_pointer(pointer)] = "Wrong";
    EXPECT_FALSE(isValid(spoilt)) << pointer;
  }
  report["checks"][0]["seen"] = "A check that passed has seen nothing.";
  EXPECT_FALSE(isValid(report));
}

TEST(Check, CountsAddUp) {
  const json report = Report(Breaking("unavailable"));
  std::size_t sum = 0;
  for (const auto& count : report.at("counts")) sum += count.get<std::size_t>();
  EXPECT_EQ(report.at("checks").size(), sum);
  EXPECT_EQ(1, report.at("counts").at("notes"));
}
