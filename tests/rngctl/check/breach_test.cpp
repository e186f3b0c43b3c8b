#include "tests/rngctl/check/breach.h"

#include <gtest/gtest.h>

class CheckBreach : public testing::TestWithParam<Breach> {};

TEST_P(CheckBreach, FailsItsCheckAlone) {
  ExpectBreach(GetParam(), Check("--json " + Breaking(GetParam().variant)));
}

std::string NameOf(const testing::TestParamInfo<Breach>& info) { return info.param.variant; }

INSTANTIATE_TEST_SUITE_P(
    File, CheckBreach,
    testing::Values(
        Breach{"exports_more", "one-export",
               "It exports 1 symbol besides the factory: AnotherFunction."},
        Breach{"has_executable_stack", "no-executable-stack",
               "The file requires an executable stack, or does not say that it needs none."},
        Breach{"has_static_tls", "no-static-tls", "The file has the flag STATIC_TLS."},
        Breach{"misses_a_function", "opens", "undefined symbol"},
        Breach{
            "refuses_opening", "opens", "The loader says: /",
            "Link without -z nodlopen, which sets the flag NOOPEN: dlopen refuses such a library."},
        Breach{"borrows_a_function", "opens",
               "It uses elf_version but is not linked with a library that defines it; rngctl "
               "happens to have it, other programs may not."}),
    NameOf);

#ifndef __clang__  // it makes no such symbols
INSTANTIATE_TEST_SUITE_P(Unique, CheckBreach,
                         testing::Values(Breach{"has_unique_symbol", "no-unique-symbols unmapped",
                                                "It has 1 GNU-unique symbol: _ZZ4UsesvE4uses."}),
                         NameOf);
#endif

INSTANTIATE_TEST_SUITE_P(
    Start, CheckBreach,
    testing::Values(
        Breach{"opening_crashes", "opens", "It crashed with signal 6 (Aborted) in dlopen.",
               kNoThrowOnOpening},
        Breach{"factory_gives_null", "gives-object",
               "The factory returns null: hosts do not see this generator, and there is nothing "
               "else to check."},
        Breach{"factory_resolves_to_null", "gives-object",
               "The file exports GetDsdrRng, but dlsym does not find it, or finds null.",
               "Define it as an ordinary function with default visibility: an indirect function "
               "(ifunc) must not resolve to null, and a symbol version must be the default one.",
               "error"},
        Breach{"factory_does_not_resolve", "gives-object",
               "It crashed with signal 6 (Aborted) in the factory.", kUseDebugger, "error"},
        Breach{"needs_settings", "null-settings", "in SetSettings with null", kCompareSettings},
        Breach{"needs_a_DsdrFilePath", "empty-settings", "in SetSettings with empty settings",
               kCompareSettings},
        Breach{"needs_a_Type", "empty-settings", "in SetSettings with empty settings",
               kCompareSettings},
        Breach{"needs_a_HardwareId", "empty-settings", "in SetSettings with empty settings",
               kCompareSettings},
        Breach{"gives_object_once", "reload",
               "After it is opened again, its factory returns null."},
        Breach{"closing_crashes", "reload exit-without-release",
               "It crashed with signal 6 (Aborted) in dlclose.", kNoThrowOnClosing},
        Breach{"unavailable", "available", "IsAvailable returns false."}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Answers, CheckBreach,
    testing::Values(
        Breach{"name_is_empty", "name-length", "It reports no name, so no host can ask for it."},
        Breach{"name_is_long", "name-length",
               "\"eighteen-character\" has 18 bytes: hosts find it, but it cannot be stored as the "
               "default.",
               "Shorten it to 17 bytes."},
        Breach{"name_overruns", "name", "It asks for 5 bytes and writes outside them."},
        Breach{"name_underruns", "name", "It asks for 5 bytes and writes outside them."},
        Breach{"name_has_no_end", "name",
               "The text does not end within the 4 bytes that it asks for."},
        Breach{"name_changes", "name", "It reports \"dsdr\", then \"dddd\"."},
        Breach{"name_size_differs", "name", "It asks for 5 bytes, then returns 4."},
        Breach{"name_ends_process", "name", "It exited with status 3 in GetName.", kUseDebugger},
        Breach{"name_is_wrong", "name-in-catalogue",
               "It reports the name \"mine\"; the file belongs to \"dsdr\"."},
        Breach{"description_fails", "description", "It returns a negative size, -1."},
        Breach{"description_is_too_large", "description",
               "It asks for 1048577 bytes, which no text of this kind needs."},
        Breach{"description_is_not_written", "description",
               "It asks for 2097152 bytes, which no text of this kind needs."},
        Breach{"description_has_lines", "description-line",
               "It has a line break or another control character: \"One\ntwo\"."},
        Breach{"description_is_latin", "description-line", "not UTF-8"},
        Breach{"hardware_id_size_differs", "hardware-id", "It asks for 3 bytes, then returns 2."},
        Breach{"hardware_id_is_long", "hardware-id", "\"eighteen-character\" has 18 bytes.",
               "Shorten it to 17 bytes."},
        Breach{"description_has_controls", "description-line", "another control character"},
        Breach{"hardware_id_has_controls", "plain-texts",
               "The identifier of the device \"X1\033[2J\" contains a line break or another "
               "control character."},
        Breach{"hardware_id_has_equals", "plain-texts",
               "The identifier of the device \"slot=1\" contains \"=\", so it cannot be stored as "
               "the default."},
        Breach{"hardware_id_has_a_blank_end", "plain-texts",
               "The identifier of the device \"slot \" begins or ends with a blank, which is lost "
               "when it is stored."},
        Breach{"report_is_malformed", "device-report",
               "Line 2 of its device report repeats the identifier \"R1\"."},
        Breach{"report_names_no_device", "device-report",
               "It reports the device \"R2\", but SelectDevice does not accept it.",
               "Report the identifiers that SelectDevice accepts."},
        Breach{"report_size_differs", "device-report", "It asks for 10 bytes, then returns 20."},
        Breach{"report_is_too_large", "device-report", "The report has more than 65536 bytes."},
        Breach{"report_crashes", "device-report",
               "It crashed with signal 6 (Aborted) in GetRngReport.", kUseDebugger},
        Breach{"flags_change_in_call_2", "stable-flags",
               "It returns 1, then 8: hosts that choose by capability find it only sometimes."},
        Breach{"flags_change_in_call_50", "stable-flags",
               "It returns 1, then 8: hosts that choose by capability find it only sometimes."},
        Breach{"flags_change_in_call_101", "stable-flags",
               "It returns 1, then 8: hosts that choose by capability find it only sometimes."},
        Breach{"no_flags", "some-flag", "GetFlags returns 0."},
        Breach{"self_test_fails", "self-test", "SelfTest returns false."},
        Breach{"wants_a_device", "any-device", "SelectDevice returns false for null."},
        Breach{"refuses_the_empty_device", "any-device",
               "SelectDevice returns false for an empty string."},
        Breach{"takes_every_device", "unknown-device",
               "SelectDevice returns true for an identifier that no device has."},
        Breach{"refuses_own_device", "own-device",
               "SelectDevice returns false for \"X1\", which GetHardwareId reports."},
        Breach{"renames_own_device", "own-device",
               "SelectDevice returns false for \"r1\", which GetHardwareId reports."}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Draws, CheckBreach,
    testing::Values(
        Breach{"empty_draw_fails", "empty-draw",
               "Generate returns false for a null buffer and size 0."},
        Breach{"empty_draw_writes", "empty-draw",
               "Generate writes into the buffer when asked for 0 bytes."},
        Breach{"empty_draw_underruns", "empty-draw",
               "Generate writes into the buffer when asked for 0 bytes."},
        Breach{"draw_fails", "draw-succeeds", "Generate returns false."},
        Breach{"forgets_its_device", "refused-device",
               "After a refused SelectDevice, GetHardwareId reports \"\"; before, it was \"X1\"."},
        Breach{"stops_when_refusing", "refused-device",
               "After a refused SelectDevice, draws fail."},
        Breach{"stays_cancelled", "cancel",
               "After a Cancel with no draw in progress, the next draw fails."},
        Breach{"next_draw_is_cancelled", "cancel",
               "After a Cancel with no draw in progress, the next draw fails."},
        Breach{"failed_draw_leaves_bytes", "failed-draw-is-zero",
               "After a draw that was refused, the buffer is not all zero."},
        Breach{"refused_draw_leaves_bytes", "failed-draw-is-zero",
               "After a draw that was refused, the buffer is not all zero."},
        Breach{"fills_only_the_beginning", "draw-fills-buffer draws-look-random",
               "In draws of 70000 bytes, the bytes after byte 8192 are not written."},
        Breach{"skips_last_byte", "draw-fills-buffer draws-look-random",
               "In 10 draws of 7 bytes, byte 5 was never written."},
        Breach{"draw_overruns", "draw-fills-buffer", "A draw of 1 byte writes outside the buffer.",
               "Write exactly as many bytes as requested."},
        Breach{"draw_underruns", "draw-fills-buffer", "A draw of 1 byte writes outside the buffer.",
               "Write exactly as many bytes as requested."},
        Breach{"large_draw_overruns", "draw-fills-buffer",
               "A draw of 70000 bytes writes outside the buffer.",
               "Write exactly as many bytes as requested."},
        Breach{"one_bit_bytes", "drawn-values draws-look-random",
               "A draw of 1024 bytes has only 2 different values."},
        Breach{"repeats_draws", "draws-differ draws-look-random",
               "Two consecutive draws of 32 bytes are equal."},
        Breach{"has_a_fixed_seed", "draws-differ draws-look-random",
               "After a second start it draws the same bytes as after the first."},
        Breach{"self_test_breaks_draws", "draws-after-calls", "After SelfTest, draws fail."},
        Breach{"second_start_breaks_draws", "draws-after-calls",
               "After a second start in the same process, draws fail."},
        Breach{"company_breaks_draws", "concurrent-calls",
               "After calls from several threads, draws fail, even when called alone."},
        Breach{
            "notices_company", "concurrent-calls",
            "GetName reports \"dsdr\" when called alone, and \"crowd\" when other threads call."},
        Breach{
            "refuses_company", "concurrent-calls",
            "Generate returns true when called alone, and false when other threads call it, too."},
        Breach{"shares_a_buffer", "concurrent-calls", "when other threads call"},
        Breach{"shares_an_id_buffer", "concurrent-calls", "GetHardwareId reports "},
        Breach{"shares_drawn_bytes", "concurrent-calls",
               "Two threads that draw at the same time get the same bytes."}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    End, CheckBreach,
    testing::Values(
        Breach{"thread_stays", "release-ends-threads", "After Release 1 thread is still running."},
        Breach{"file_stays", "release-closes-files", "Left open: /dev/null."},
        Breach{"closes_input", "release-closes-files",
               "It closed a descriptor that is not its own: 0, /dev/null."},
        Breach{"replaces_input", "release-closes-files", "Left open: /dev/zero."},
        Breach{"file_stays_each_time", "release-closes-files load-cycles", "Left open: /dev/null."},
        Breach{"signal_handler_stays", "no-handlers-left",
               "The handler of signal 10 (User defined signal 1) still points into the "
               "library."},
        Breach{"set_terminate_stays", "no-handlers-left",
               "The handler of std::terminate still points into the library."},
        Breach{"set_new_handler_stays", "no-handlers-left",
               "The handler of operator new still points into the library."},
        Breach{"exit_handler_stays", "clean-exit", "in the exit of the process"},
        Breach{"thread_key_stays_of_IsAvailable", "clean-exit",
               "in the exit of a thread that used it"},
        Breach{"thread_key_stays_of_Generate", "clean-exit",
               "in the exit of a thread that used it"},
        Breach{"static_thread", "exit-without-release",
               "It crashed with signal 6 (Aborted; it called std::terminate) in the exit of "
               "the process without Release."},
        Breach{"stays_mapped", "unmapped",
               "It stays in the process after it is closed. The file has the flag NODELETE."},
        Breach{"fills_a_cache", "unmapped",
               "It stays in the process after it is closed. The file has the flag "
               "NODELETE."},  // no leak: it grows ever less
        Breach{"thread_object_stays_of_IsAvailable", "unmapped",
               "It stays in the process after it is closed. It has thread_local objects "
               "with destructors, and a thread that used one is still running."},
        Breach{"thread_object_stays_of_Name", "unmapped",
               "It stays in the process after it is closed. It has thread_local objects "
               "with destructors, and a thread that used one is still running."},
        Breach{"thread_object_stays_of_Generate", "unmapped",
               "It stays in the process after it is closed. It has thread_local objects "
               "with destructors, and a thread that used one is still running."},
        Breach{"leaks_pages", "load-cycles", "address space"},
        Breach{"leaks_slowly", "load-cycles", "the heap in use grew steadily"},
        Breach{"leaks_threads", "release-ends-threads load-cycles",
               "After Release 1 thread is still running."}),
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
        Breach{"factory_throws", "no-exceptions", "the factory throws \"no licence\"."},
        Breach{"name_throws", "no-exceptions",
               "GetName throws something that is not a std::exception."},
        Breach{"draw_throws", "no-exceptions", "Generate throws \"no entropy\"."},
        Breach{"release_throws", "no-exceptions", "Release throws \"still in use\"."},
        Breach{"calls_initialize", "no-lifecycle-calls",
               "Initialize is called in IsAvailable with null settings."},
        Breach{"calls_shut_down", "no-lifecycle-calls", "ShutDown is called in Release."},
        Breach{"stops_in_draws", "no-lifecycle-calls",
               "ShutDown is called in Generate with size 0."},
        Breach{"calls_at_exit", "unmapped no-lifecycle-calls",
               "It stays in the process after it is closed. The file has the flag NODELETE."},
        Breach{"prints", "no-output", "During the check empty-draw it prints \"drawing 0\"."}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Plain, CheckBreach,
    testing::Values(Breach{"name_crashes", "name",
                           "crashed with signal 11 (Segmentation fault) in GetName", kUseDebugger},
                    Breach{"leaks_memory", "load-cycles", "heap in use"},
                    Breach{"leaks_in_texts", "load-cycles", "heap in use"},
                    Breach{"leaks_in_draws", "load-cycles", "heap in use"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    EndOfProcess, CheckBreach,
    testing::Values(
        Breach{"opening_throws", "opens", "It exited with status 1 in dlopen.", kNoThrowOnOpening},
        Breach{"available_crashes", "null-settings empty-settings built-in-settings",
               "It crashed with signal 6 (Aborted) in IsAvailable with null settings.",
               kCompareSettings},
        Breach{"draw_crashes", "draw-succeeds", "It crashed with signal 6 (Aborted) in Generate.",
               kUseDebugger, "error"}),
    NameOf);
