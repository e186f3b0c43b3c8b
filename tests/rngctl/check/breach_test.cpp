#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

struct Breach {
  std::string variant;
  std::string failed;    // all the checks that fail
  std::string found;     // part of the fault that the first of them reports
  std::string fix = "";  // the beginning of its fix, if it is not the rule's own
};

void PrintTo(const Breach& breach, std::ostream* stream) { *stream << breach.variant; }

class CheckBreach : public testing::TestWithParam<Breach> {};

void ExpectBreach(const Breach& breach, const Result& result) {
  const json report = json::parse(result.output);
  EXPECT_EQ(breach.failed, Failed(report)) << result.output << result.errors;
  const json& check = Find(report, breach.failed.substr(0, breach.failed.find(' ')));
  EXPECT_THAT(check.value("found", ""), HasSubstr(breach.found));
  EXPECT_THAT(check.value("fix", ""), StartsWith(breach.fix));
  EXPECT_EQ(check.at("severity") == "error" ? 1 : 0, result.status);
}

TEST_P(CheckBreach, FailsItsCheckAlone) {
  ExpectBreach(GetParam(), Check("--json " + Breaking(GetParam().variant)));
}

std::string NameOf(const testing::TestParamInfo<Breach>& info) { return info.param.variant; }

INSTANTIATE_TEST_SUITE_P(
    File, CheckBreach,
    testing::Values(
        Breach{"exports_more", "one-export", "1 symbol besides the factory: AnotherF"},
        Breach{"has_executable_stack", "no-executable-stack", "executable stack"},
        Breach{"has_static_tls", "no-static-tls", "flag STATIC_TLS"},
        Breach{"misses_a_function", "opens", "undefined symbol", "Link with every lib"},
        Breach{"refuses_opening", "opens", "cannot be dlopen()ed", "Link without -z nodlopen"},
        Breach{"borrows_a_function", "opens", "It uses elf_version but is not linked with"}),
    NameOf);

#ifndef __clang__  // it makes no such symbols
INSTANTIATE_TEST_SUITE_P(Unique, CheckBreach,
                         testing::Values(Breach{"has_unique_symbol", "no-unique-symbols unmapped",
                                                "1 GNU-unique symbol: _ZZ4UsesvE4uses"}),
                         NameOf);
#endif

INSTANTIATE_TEST_SUITE_P(
    Start, CheckBreach,
    testing::Values(Breach{"opening_crashes", "opens", "signal 6 (Aborted) in dlopen"},
                    Breach{"factory_gives_null", "gives-object", "returns null"},
                    Breach{"factory_resolves_to_null", "gives-object",
                           "exports GetDsdrRng, but dlsym does not find it"},
                    Breach{"needs_settings", "null-settings", "in SetSettings with null"},
                    Breach{"needs_a_path", "empty-settings", "in SetSettings with empty settings"},
                    Breach{"gives_object_once", "reload", "opened again"},
                    Breach{"closing_crashes", "reload exit-without-release",
                           "signal 6 (Aborted) in dlclose", "Static destructors must not throw"},
                    Breach{"unavailable", "available", "IsAvailable returns false"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Answers, CheckBreach,
    testing::Values(
        Breach{"name_is_empty", "name-length", "no name, so no host can ask for it"},
        Breach{"name_is_long", "name-length", "\"eighteen-character\" has 18 bytes: hosts find",
               "Shorten it to 17 bytes."},
        Breach{"name_overruns", "name", "asks for 5 bytes and writes outside them"},
        Breach{"name_underruns", "name", "asks for 5 bytes and writes outside them"},
        Breach{"name_has_no_end", "name", "does not end within the 4 bytes"},
        Breach{"name_changes", "name", "reports \"dsdr\", then \"dddd\""},
        Breach{"name_size_differs", "name", "asks for 5 bytes, then returns 4"},
        Breach{"name_ends_process", "name", "exited with status 3 in GetName"},
        Breach{"name_is_wrong", "name-in-catalogue", "\"mine\"; the file belongs to \"dsdr\""},
        Breach{"description_fails", "description", "negative size, -1"},
        Breach{"description_is_too_large", "description",
               "asks for 1048577 bytes, which no text of this kind needs"},
        Breach{"description_has_lines", "description-line", "line break"},
        Breach{"description_is_latin", "description-line", "not UTF-8"},
        Breach{"hardware_id_is_long", "hardware-id", "18 bytes", "Shorten it to 17"},
        Breach{"description_has_controls", "description-line", "another control character"},
        Breach{"hardware_id_has_controls", "plain-texts",
               "device \"X1\033[2J\" contains a line break"},
        Breach{"hardware_id_has_equals", "plain-texts",
               "\"slot=1\" contains \"=\", so it cannot be"},
        Breach{"hardware_id_has_a_blank_end", "plain-texts",
               "\"slot \" begins or ends with a blank"},
        Breach{"report_is_malformed", "device-report",
               "Line 2 of its device report repeats the identifier \"R1\""},
        Breach{"report_names_no_device", "device-report",
               "reports the device \"R2\", but SelectDevice does not accept it",
               "Report the identifiers that SelectDevice accepts."},
        Breach{"report_size_differs", "device-report", "asks for 10 bytes, then returns 20"},
        Breach{"report_is_too_large", "device-report", "The report has more than 65536 bytes."},
        Breach{"report_crashes", "device-report", "signal 6 (Aborted) in GetRngReport"},
        Breach{"flags_change", "stable-flags", "returns 1, then 2: hosts"},
        Breach{"no_flags", "some-flag", "returns 0"},
        Breach{"self_test_fails", "self-test", "returns false"},
        Breach{"wants_a_device", "any-device", "false for null"},
        Breach{"refuses_the_empty_device", "any-device", "false for an empty string"},
        Breach{"takes_every_device", "unknown-device", "no device has"},
        Breach{"refuses_own_device", "own-device", "false for \"X1\", which GetHardwareId reports"},
        Breach{"renames_own_device", "own-device",
               "false for \"r1\", which GetHardwareId reports"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Draws, CheckBreach,
    testing::Values(
        Breach{"empty_draw_fails", "empty-draw", "false for a null buffer and size 0"},
        Breach{"empty_draw_writes", "empty-draw", "writes into the buffer"},
        Breach{"draw_fails", "draw-succeeds", "returns false"},
        Breach{"forgets_its_device", "refused-device",
               "GetHardwareId reports \"\"; before, it was \"X1\""},
        Breach{"stops_when_refusing", "refused-device", "draws fail"},
        Breach{"stays_cancelled", "cancel", "the next draw fails"},
        Breach{"next_draw_is_cancelled", "cancel", "the next draw fails"},
        Breach{"failed_draw_leaves_bytes", "failed-draw-is-zero", "was refused"},
        Breach{"refused_draw_leaves_bytes", "failed-draw-is-zero", "was refused"},
        Breach{"fills_only_the_beginning", "draw-fills-buffer draws-look-random",
               "the bytes after byte 8192 are not written"},
        Breach{"skips_last_byte", "draw-fills-buffer draws-look-random",
               "byte 5 was never written"},
        Breach{"draw_overruns", "draw-fills-buffer", "writes outside the buffer",
               "Write exactly as many bytes as requested."},
        Breach{"large_draw_overruns", "draw-fills-buffer",
               "A draw of 70000 bytes writes outside the buffer"},
        Breach{"one_bit_bytes", "drawn-values draws-look-random", "has only 2 different values"},
        Breach{"repeats_draws", "draws-differ draws-look-random", "are equal"},
        Breach{"has_a_fixed_seed", "draws-differ draws-look-random", "After a second start"},
        Breach{"self_test_breaks_draws", "draws-after-calls", "After SelfTest, draws fail."},
        Breach{"second_start_breaks_draws", "draws-after-calls",
               "After a second start in the same process, draws fail."},
        Breach{"company_breaks_draws", "concurrent-calls",
               "After calls from several threads, draws fail, even when"},
        Breach{"refuses_company", "concurrent-calls", "true when called alone, and false when"},
        Breach{"shares_a_buffer", "concurrent-calls", "when other threads call"},
        Breach{"shares_an_id_buffer", "concurrent-calls", "GetHardwareId reports "},
        Breach{"shares_drawn_bytes", "concurrent-calls", "get the same bytes"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    End, CheckBreach,
    testing::Values(
        Breach{"thread_stays", "release-ends-threads", "1 thread is still running"},
        Breach{"file_stays", "release-closes-files", "Left open: /dev/null"},
        Breach{"closes_input", "release-closes-files", "not its own: 0, /dev/null"},
        Breach{"replaces_input", "release-closes-files", "Left open: /dev/zero."},
        Breach{"file_stays_each_time", "release-closes-files load-cycles", "Left open: /dev/null"},
        Breach{"signal_handler_stays", "no-handlers-left",
               "handler of signal 10 (User defined signal 1)"},
        Breach{"terminate_handler_stays", "no-handlers-left", "handler of std::terminate"},
        Breach{"exit_handler_stays", "clean-exit", "in the exit of the process"},
        Breach{"thread_key_stays", "clean-exit", "in the exit of a thread that used it"},
        Breach{"static_thread", "exit-without-release",
               "signal 6 (Aborted; it called std::terminate) in the exit of the process without "
               "Release"},
        Breach{"stays_mapped", "unmapped", "flag NODELETE"},
        Breach{"fills_a_cache", "unmapped", "flag NODELETE"},  // no leak: it grows ever less
        Breach{"thread_object_stays", "unmapped", "thread_local objects with destructors"},
        Breach{"leaks_pages", "load-cycles", "address space"},
        Breach{"leaks_slowly", "load-cycles", "the heap in use grew steadily"},
        Breach{"leaks_threads", "release-ends-threads load-cycles", "1 thread is still running"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    ProcessSnapshot, CheckBreach,
    testing::Values(Breach{"IgnoreBrokenPipes", "process-state", "It ignores SIGPIPE."},
                    Breach{"Restrict", "process-state",
                           "It changes the umask to 0777, changes the working directory to /dev."},
                    Breach{"StartTimer", "process-state",
                           "It leaves a timer running: ITIMER_REAL."},
                    Breach{"LendVariable", "process-state",
                           "It leaves part of the environment in memory that is no longer mapped."},
                    Breach{"LendBuffer", "process-state",
                           "It leaves the buffer of stdout in memory that is no longer mapped."},
                    Breach{"LeaveChild", "process-state",
                           "It leaves a child process: a forked copy of the program (process "},
                    Breach{"blocks_signals_in_draws", "process-state", "It blocks SIGINT."}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Throughout, CheckBreach,
    testing::Values(
        Breach{"factory_throws", "no-exceptions", "the factory throws \"no licence\""},
        Breach{"name_throws", "no-exceptions", "GetName throws something that is not a std::exc"},
        Breach{"draw_throws", "no-exceptions", "Generate throws \"no entropy\""},
        Breach{"release_throws", "no-exceptions", "Release throws \"still in use\""},
        Breach{"calls_initialize", "no-lifecycle-calls", "Initialize is called in IsAvailable"},
        Breach{"calls_shut_down", "no-lifecycle-calls", "ShutDown is called in Release"},
        Breach{"stops_in_draws", "no-lifecycle-calls", "ShutDown is called in Generate"},
        Breach{"calls_at_exit", "unmapped no-lifecycle-calls", "flag NODELETE"},
        Breach{"prints", "no-output", "During the check empty-draw it prints \"drawing 0\"."}),
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
    testing::Values(
        Breach{"opening_throws", "opens", "in dlopen", "Static constructors must not throw"},
        Breach{"available_crashes", "null-settings empty-settings built-in-settings",
               "in IsAvailable with null settings", "Compare the settings, and what they return"},
        Breach{"draw_crashes", "draw-succeeds", "It crashed with signal 6 (Aborted) in Generate.",
               "No operation may end the process: find the place with a debugger, for example gdb "
               "-ex \"set follow-fork-mode child\" --args rngctl read"}),
    NameOf);

TEST(Check, AnOperationThatEndsTheProcessIsAnErrorInEveryCheck) {
  EXPECT_EQ("error", Find(Report(Breaking("draw_crashes")), "draw-succeeds").at("severity"));
  const json report = Report(Breaking("self_test_ends_process"));
  EXPECT_EQ("opens self-test", Failed(report));
  const json& selfTest = Find(report, "self-test");
  EXPECT_EQ("error", selfTest.at("severity"));
  EXPECT_EQ("It exited with status 127 in SelfTest.", selfTest.at("found"));
  EXPECT_THAT(selfTest.at("fix"), StartsWith("Link with the library that has the missing"));
}

// The crash comes wherever the main thread happens to be, so the report must not blame that call.
TEST(Check, AThreadThatRunsOnIsNamedWhereItCrashes) {
  const json report = Report(Breaking("thread_runs_on"));
  std::size_t crashes = 0;
  for (const json& check : report.at("checks")) {
    if (check.value("found", "").find("crashed") == std::string::npos) continue;
    ++crashes;
    EXPECT_EQ("error", check.at("severity"));
    EXPECT_THAT(check.at("fix"), StartsWith("Stop and join its threads in Release")) << check;
  }
  EXPECT_LT(0U, crashes) << report;
}

TEST(Check, WhatIsAskedOfTheEndOfTheProcessStaysAWarning) {
  const json report = Report(Breaking("static_thread"));
  const json& check = Find(report, "exit-without-release");
  EXPECT_EQ("warning", check.at("severity"));
  EXPECT_THAT(check.at("fix"), StartsWith("Do not rely on static objects"));
}

TEST(CheckBreaches, ThatTakeTimeFailTheirCheckAloneAndAreWaitedForOnce) {
  const Breach breaches[] = {
      {"hangs_with_settings", "built-in-settings", "It did not answer within 1 s in IsAvailable"},
      {"factory_hangs", "gives-object", "did not answer within 1 s in the factory"},
      {"name_hangs", "name", "did not answer within 1 s in GetName"},
      {"self_test_hangs", "self-test", "did not answer within 1 s", "Make it return soon"},
      {"waits_without_flag", "waits-are-flagged",
       "still waits after 0.25 s, and GetFlags returns 1, wi"},
      {"ignores_cancel", "cancel", "does not end within 0.75 s of Cancel"},
      {"cancels_one_draw", "cancel", "does not end within 0.75 s of Cancel"},
      {"cancelled_draw_succeeds", "cancel", "returns true"},
      {"cancel_waits", "draw-succeeds cancel failed-draw-is-zero",
       "While a draw waits, Cancel does not return within 0.5 s", "Cancel must not take a lock"},
      {"large_draw_waits", "cancel failed-draw-is-zero draw-fills-buffer draws-look-random",
       "While a draw waits, Cancel does not return within 0.5 s", "Cancel must not take a lock"},
      {"slow_cancel_waits", "cancel", "Cancel", "Cancel must not take a lock"},
      {"later_draw_waits", "cancel", "does not end within 0.75 s of Cancel"},
      {"waits_only_once", "cancel", "also ends the next one"},
      {"cancelled_draw_leaves_bytes", "failed-draw-is-zero", "was cancelled"}};
  std::vector<std::string> variants;
  for (const Breach& breach : breaches) variants.push_back(breach.variant);
  std::map<std::string, Result> results = CheckTogether(variants);
  for (const Breach& breach : breaches) {
    SCOPED_TRACE(breach.variant);
    ExpectBreach(breach, results[breach.variant]);
  }
  const json slow = json::parse(results["factory_hangs"].output);
  // Every start of a host waits as long, though by itself the check only notes something.
  EXPECT_EQ("error", Find(slow, "gives-object").at("severity"));
  // A step that timed out is not tried again.
  EXPECT_EQ("IsAvailable did not answer within 1 s in the check built-in-settings",
            Reason(json::parse(results["hangs_with_settings"].output), "load-cycles"));
}

// The file header says where the section headers are and how many; zeros there mean that there are
// none.
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
