#include "tests/rngctl/check/check.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

// Every check, in the order of the report. Scripts rely on the names and severities: only errors make the
// command fail. People read the sentences, and what they can do about a failure; empty where each failure says so itself.
const std::vector<RuleInReport> kRules = {
    {"catalogue-pair", "error", "The file name and the factory name belong to the same kind",
     "Use the file name and the factory name of the kind; provider.h has the table."},
    {"one-export", "error", "The factory is the only exported symbol, except for GetRngReport",
     "Hide everything else: compile with -fvisibility=hidden, and link with a version script whose "
     "only global names are the factory and, if it has one, GetRngReport."},
    {"no-unique-symbols", "error", "There are no GNU-unique symbols, which prevent unloading",
     "Compile with -fno-gnu-unique, or hide the symbols."},
    {"no-static-tls", "error",
     "There is no static thread-local storage, of which a process has little",
     "Compile without -ftls-model=initial-exec or local-exec."},
    {"no-executable-stack", "error", "The file does not require an executable stack",
     "Link with -z noexecstack; in assembler sources add a .note.GNU-stack section."},
    {"opens", "error", "The loader can open it and finds everything it needs",
     "Link with every library that it uses; with -Wl,-z,defs the linker reports what is missing."},
    {"gives-object", "note", "The factory returns an object",
     "Connect or configure what it needs, and check again. It is better to return an object whose "
     "IsAvailable returns false."},
    {"null-settings", "error", "SetSettings accepts null, and IsAvailable returns afterwards", ""},
    {"empty-settings", "error",
     "SetSettings accepts settings that hold nothing, and IsAvailable returns afterwards", ""},
    {"built-in-settings", "error",
     "SetSettings accepts the library's own settings, and IsAvailable returns afterwards", ""},
    {"reload", "error", "After it is closed and opened again, its factory returns an object again",
     "In Release and on unloading, undo everything that the first use did to the process."},
    {"available", "note", "It is available on this machine",
     "Connect or configure what it needs, and check again: the library releases an unavailable "
     "generator."},
    {"name", "error", "GetName follows the protocol of two calls and always reports the same name",
     "Return the size with the terminator, the same with null and with a buffer, and write at most "
     "that many bytes."},
    {"name-length", "warning", "It reports a name of at most 17 bytes",
     "Report the kind's name: hosts look the generator up by it."},
    {"name-in-catalogue", "warning", "GetName reports the name that belongs to the file",
     "Report the kind's name: hosts look the generator up by it."},
    {"description", "error", "GetDescription follows the protocol of two calls",
     "Return the size with the terminator, the same with null and with a buffer, and write at most "
     "that many bytes."},
    {"description-line", "warning", "The description is one line of UTF-8",
     "Leave out line breaks and control characters, and encode it as UTF-8."},
    {"hardware-id", "error", "GetHardwareId follows the protocol of two calls; at most 17 bytes",
     "Return 0 when there is no device, otherwise the size with the terminator; write at most that "
     "many bytes."},
    {"plain-texts", "warning", "The name and the identifier of the device can be shown and stored",
     "Use letters, digits and hyphens: control characters disturb terminals, and the settings file "
     "cannot hold \"=\" or blanks at the ends."},
    {"device-report", "error",
     "GetRngReport, if there is one, follows the protocol of two calls and the format of its lines",
     "Report lines of \"device<TAB>identifier<TAB>text\" and \"problem<TAB>text\", and write what "
     "the call with null announced; provider.h has the details."},
    {"stable-flags", "warning", "GetFlags always returns the same bits",
     "Return the capabilities of the kind, not of its current state."},
    {"some-flag", "warning", "GetFlags returns at least one bit",
     "Return at least one kRngCapability bit: without one the generator is never listed."},
    {"self-test", "warning", "SelfTest succeeds when the generator is available",
     "Find out why the test fails, or let IsAvailable return false."},
    {"any-device", "error", "SelectDevice accepts null and \"\" as any device",
     "Return true for both."},
    {"unknown-device", "warning", "SelectDevice rejects a device that does not exist",
     "Return false, and keep the device that was selected before."},
    {"own-device", "warning", "SelectDevice accepts the device that GetHardwareId reports",
     "Compare with the identifier that GetHardwareId reports: hosts store it and pass it back."},
    {"empty-draw", "error",
     "A draw of 0 bytes succeeds, even with a null buffer, and writes nothing",
     "Return true at once when the size is 0."},
    {"draw-succeeds", "warning", "Draws succeed while the generator is available",
     "Let IsAvailable return false while draws cannot succeed."},
    {"waits-are-flagged", "warning", "GetFlags says that draws may wait",
     "Return kRngCapabilityNeedsUser if the user takes part in a draw, otherwise "
     "kRngCapabilityMayBlock: hosts that cannot wait skip such generators."},
    {"refused-device", "error", "A refused SelectDevice keeps the earlier choice",
     "Look for the device first, and change the choice only when it is found."},
    {"draws-after-calls", "error", "Draws still succeed after other calls",
     "Do not change or close the source in that call or in Release: later draws need it."},
    {"cancel", "error", "Cancel ends every waiting draw and no other",
     "Wake every waiting draw and let it return false; carry nothing over to later draws."},
    {"failed-draw-is-zero", "error",
     "The buffer is all zero after a draw that failed or was cancelled",
     "Clear the whole buffer before returning false."},
    {"draw-fills-buffer", "error", "A draw writes every byte of the buffer and none outside it",
     "Continue until the buffer is full: a source may return fewer bytes than requested."},
    {"drawn-values", "error", "The bytes of a draw have many different values",
     "Return bytes in which every bit is random: a source of single bits needs eight of them for "
     "each byte."},
    {"draws-differ", "error", "Two draws differ, whether after one start or after two",
     "Take new bytes from the source for each draw, and seed any software generator from a "
     "source."},
    {"draws-look-random", "error",
     "Drawn bytes are new, do not repeat, and have all values equally often", ""},
    {"concurrent-calls", "error", "Several threads may call it at the same time",
     "Protect what the calls share, such as buffers, with a lock, and release the lock on every "
     "path."},
    {"release-ends-threads", "error", "After Release none of its threads is running",
     "End and join the threads in Release: the library's code is gone afterwards. The thread of "
     "the C library for timers with SIGEV_THREAD does not count, if /proc shows what it does."},
    {"release-closes-files", "error",
     "After unloading, its own files are closed and all others are still open",
     "In Release, close what the plug-in has opened, and close it only once."},
    {"no-handlers-left", "error",
     "After unloading, it has left no signal handler and no handler of the C++ runtime",
     "In Release, restore what was there before: sigaction, std::set_terminate, "
     "std::set_new_handler."},
    {"clean-exit", "error",
     "After unloading, the exit of a thread or of the process does not call into it",
     "In Release, remove what was registered: on_exit handlers, thread-specific keys, callbacks."},
    {"exit-without-release", "warning", "A process that exits without Release exits normally",
     "Do not rely on static objects: they are destroyed while the generator is still in use."},
    {"unmapped", "error", "Closing it removes it from the process",
     "Remove what keeps it loaded: -z nodelete, GNU-unique symbols (-fno-gnu-unique), thread_local "
     "objects with destructors."},
    {"process-state", "error", "After unloading, the state of the process is what it was before",
     "In Release, restore what the plug-in changed, or better, change nothing: signals, umask, "
     "working directory, locale, timers and environment belong to the host."},
    {"load-cycles", "error", "The process does not grow, however often the plug-in is used",
     "In Release, stop and free what the start, draws and texts started or allocated. A statically "
     "linked libstdc++ keeps some memory at each load. So does a dependency with a thread pool, "
     "such as OpenMP: end the pool, or do not use it."},
    {"no-exceptions", "error", "Neither the factory nor any operation throws",
     "Catch exceptions inside the plug-in and return false, 0 or null: nothing else catches them "
     "before they reach the host."},
    {"no-lifecycle-calls", "error", "It calls neither Initialize nor ShutDown",
     "Leave starting and stopping to the host: during a start or stop the call never returns, and "
     "from a draw it may unload the calling plug-in, or keep the library from stopping."},
    {"no-output", "warning", "It prints nothing on standard output",
     "Print on standard error or not at all: standard output belongs to the host."},
};

}  // namespace

const RuleInReport& RuleOf(const std::string& name) {
  for (const RuleInReport& rule : kRules) {
    if (rule.name == name) return rule;
  }
  throw std::runtime_error("no check is called " + name);
}

TEST(Check, EachRuleHasItsSeverityAndSentence) {
  const json report = Report(Breaking("correct"));
  ASSERT_EQ(kRules.size(), report.at("checks").size());
  auto rule = kRules.begin();
  for (const json& check : report.at("checks")) {
    EXPECT_EQ(rule->name, check.at("name"));
    EXPECT_EQ(rule->severity, check.at("severity"));
    EXPECT_EQ(rule->sentence, check.at("rule"));
    ++rule;
  }
}
