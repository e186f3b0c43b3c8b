#include "tests/rngctl/check/check.h"
#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>

using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr char kTooLong[] = "it takes too long; allow more time with --timeout";

// What was not examined, however busy the machine is: the thousands of uses may need more time.
std::string UnexaminedDespiteTime(const json& report) {
  json rest = report;
  json& checks = rest.at("checks");
  if (Reason(report, "load-cycles") == kTooLong) {
    checks.erase(std::find(checks.begin(), checks.end(), Find(report, "load-cycles")));
  }
  return Names(rest, "not-examined");
}

}  // namespace

TEST(Check, FindsNoFaultInTheRealPlugin) {
  for (const auto& [device, unexamined] :
       {std::pair("", "own-device failed-draw-is-zero"), {"/dev/urandom", "failed-draw-is-zero"}}) {
    const Result result = RunShell(WithHardware(device) + RNGCTL " check --json " UNIXDEV_PLUGIN);
    EXPECT_EQ(0, result.status);
    const json report = json::parse(result.output);
    EXPECT_EQ("", Failed(report)) << device;
    EXPECT_EQ(unexamined, UnexaminedDespiteTime(report)) << device;
    EXPECT_THAT(result.errors, IsEmpty());
  }
}

TEST(Check, SaysHowManyChecksPassed) {
  const Result result = RunShell(WithHardware("") + RNGCTL " check " UNIXDEV_PLUGIN);
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, EndsWith(" checks passed, 0 failed, 0 warnings, 2 not examined\n"));
}

TEST(Check, FindsNoFaultInCorrectPlugins) {
  for (const auto& [variant, unexamined] :
       {std::pair("correct", "device-report own-device failed-draw-is-zero"),
        std::pair("plain_c", "device-report failed-draw-is-zero"),
        std::pair("takes_all_back", "device-report own-device failed-draw-is-zero")}) {
    const json report = Report(Breaking(variant));
    EXPECT_EQ("", Failed(report)) << variant;
    EXPECT_EQ(unexamined, Names(report, "not-examined")) << variant;
  }
}

// A plug-in may consist of several parts, which find each other only if it is opened as the library opens it.
TEST(Check, APluginIsGlobalInTheProcess) {
  const json report = Report("--only available " + Breaking("looks_for_itself"));
  EXPECT_EQ("passed", Find(report, "available").at("result"));
}

// At least two windows of a thousand uses are compared. The letters stand for the calls of one use.
// The time limit is so long that even a busy machine completes all uses.
TEST(Check, LoadCyclesAreThousandsOfWholeUses) {
  const std::string log = TreePath("uses");
  const std::string plugin = "--only load-cycles --timeout 3600 " + Breaking("logs_uses");
  RunShell("RNG_FAKE_LOG=" + log + " " RNGCTL " check " + plugin);
  const std::string uses = ReadFile(log);
  std::size_t whole = 0;
  for (auto at = uses.find("ogndhrc"); at != std::string::npos; at = uses.find("ogndhrc", at + 7)) {
    ++whole;
  }
  EXPECT_LE(2000U, whole);
  EXPECT_EQ(whole, static_cast<std::size_t>(std::count(uses.begin(), uses.end(), 'o')) - 1)
      << uses.substr(0, 100);
}

TEST(Check, AReportOfDevicesIsAllowed) {
  const json report = Report(FakePlugin("dsdr", "reports_devices"));
  EXPECT_EQ("", Failed(report));
  EXPECT_EQ("own-device failed-draw-is-zero", Names(report, "not-examined"));
}

// The device that the report names and that the plug-in accepts is selected first.
TEST(Check, SaysThatTheReportedDeviceWasSelectedInVain) {
  const json report = Report(FakePlugin("dsdr", "reports_devices"));
  EXPECT_EQ("GetHardwareId reports no device, even after \"R1\" was selected",
            Reason(report, "own-device"));
}

// The C library keeps its own thread for the timer.
TEST(Check, ATimerThatNotifiesAThreadIsNoFault) {
  if (!std::ifstream("/proc/self/syscall")) {
    GTEST_SKIP() << "this system does not show what threads wait for";
  }
  EXPECT_EQ("", Failed(Report(Breaking("has_a_timer"))));
}

TEST(Check, TextsMayHaveTheirLargestSize) {
  const std::string description = FakePlugin("dsdr", "description_is_largest");
  EXPECT_EQ("description", Names(Report("--only description " + description), "passed"));
  const std::string report = FakePlugin("dsdr", "report_is_largest");
  EXPECT_EQ("device-report", Names(Report("--only device-report " + report), "passed"));
}

TEST(Check, ANameAndAnIdentifierMayHave17Bytes) {
  EXPECT_EQ("name-length",
            Names(Report("--only name-length " + FakePlugin("dsdr", "name_is_longest")), "passed"));
  EXPECT_EQ("hardware-id own-device",
            Names(Report("--only hardware-id,own-device " + FakePlugin("dsdr", "id_is_longest")),
                  "passed"));
}

TEST(Check, ADescriptionMayChange) {
  EXPECT_EQ("", Failed(Report(Breaking("description_counts"))));
}

TEST(Check, WhatTakesTimeIsNoFault) {
  std::map<std::string, Result> results = CheckTogether(
      {"waits_for_user", "slow", "sometimes_slow", "slow_throughout", "draws_in_turn"});
  const json user = json::parse(results["waits_for_user"].output);
  EXPECT_EQ("", Failed(user));
  EXPECT_EQ(
      "device-report own-device draw-succeeds refused-device draws-after-calls draw-fills-buffer "
      "drawn-values draws-differ draws-look-random concurrent-calls",
      UnexaminedDespiteTime(user));
  EXPECT_EQ("a draw takes long, or waits for a user or a device", Reason(user, "draws-differ"));

  const json slow = json::parse(results["slow"].output);
  EXPECT_EQ("", Failed(slow));
  EXPECT_EQ("draws are slow but wait for nothing", Reason(slow, "cancel"));

  const json sometimes = json::parse(results["sometimes_slow"].output);
  EXPECT_EQ("", Failed(sometimes));
  EXPECT_EQ("draws are slow but wait for nothing", Reason(sometimes, "cancel"));

  const json inTurn = json::parse(results["draws_in_turn"].output);
  EXPECT_EQ("", Failed(inTurn));
  EXPECT_EQ("draws are slow but wait for nothing", Reason(inTurn, "cancel"));

  // No single call exceeds the limit, but many together do.
  const json throughout = json::parse(results["slow_throughout"].output);
  EXPECT_EQ("", Failed(throughout));
  EXPECT_EQ("passed", Find(throughout, "reload").at("result"));
  EXPECT_EQ(kTooLong, Reason(throughout, "load-cycles"));
  EXPECT_EQ("not-examined", Find(throughout, "failed-draw-is-zero").at("result"));
}

// Four threads together would wait longer than the limit of one call.
TEST(Check, ThreadsDoNotMakeSlowCalls) {
  const std::string check = "--only concurrent-calls --timeout 2 ";
  const json leftOut = Report(check + Breaking("slow_IsAvailable"));
  EXPECT_EQ("passed", Find(leftOut, "concurrent-calls").at("result")) << leftOut;
  EXPECT_EQ("its calls take too long; allow more time with --timeout",
            Reason(Report(check + Breaking("slow_SelectDevice")), "concurrent-calls"));
}

TEST(Check, DrawsOfSecondsAreNoFaultAndFewAreMade) {
  const json report = Report(Breaking("draws_for_seconds"));
  EXPECT_EQ("", Failed(report));
  EXPECT_EQ("a draw takes long, or waits for a user or a device", Reason(report, "draws-differ"));
  EXPECT_EQ("draws are slow but wait for nothing", Reason(report, "cancel"));
}

TEST(Check, ADrawThatMayWaitMayDoSoInTheMidstOfACheck) {
  const std::string plugin = "--timeout 2 " + Breaking("waits_now_and_then");
  EXPECT_EQ("", Failed(Report(plugin)));
  for (const char* name : {"concurrent-calls", "load-cycles"}) {
    EXPECT_EQ("a draw takes long, or waits for a user or a device",
              Reason(Report("--only " + std::string(name) + " " + plugin), name));
  }
}

TEST(Check, ALargeDrawMayBeRefused) {
  const json report = Report(Breaking("refused_draw_leaves_bytes"));
  EXPECT_EQ("a draw of 70000 bytes fails", Reason(report, "draw-fills-buffer"));
}

TEST(Check, ASourceThatRunsOutIsNoFaultOfTheThreads) {
  for (const char* variant : {"runs_out", "file_ends"}) {
    const json report = Report(Breaking(variant));
    EXPECT_EQ("", Failed(report)) << variant;
    EXPECT_EQ("the source ran out: the same draws fail alone in a fresh process, too",
              Reason(report, "concurrent-calls"))
        << variant;
  }
}

TEST(Check, WhatBreaksDrawsIsNotTakenForASourceThatRunsOut) {
  EXPECT_EQ("draws fail after SelfTest",
            Reason(Report(Breaking("self_test_breaks_draws")), "concurrent-calls"));
}

// The C library counts the blocks in its cache for a thread as heap in use.
TEST(Check, WhatTheHeapVariesByIsNoGrowth) {
  for (const char* variant : {"frees_various_sizes", "leaks_seldom"}) {
    const json report = Report("--only load-cycles --timeout 3600 " + Breaking(variant));
    EXPECT_EQ("passed", Find(report, "load-cycles").at("result")) << variant;
  }
}

// The C library keeps the stacks of the first threads that run at the same time.
TEST(Check, AThreadMoreIsNoGrowth) {
  const std::string uses = TreePath("uses");
  const std::string plugin = "--only load-cycles --timeout 3600 " + Breaking("starts_more_threads");
  const Result result = RunShell("RNG_FAKE_LOG=" + uses + " " RNGCTL " check --json " + plugin);
  EXPECT_EQ("passed", Find(json::parse(result.output), "load-cycles").at("result"));
  EXPECT_LE(2250U, ReadFile(uses).size());
}

// Threads, and the memory that the C library keeps for them, vary in number without a leak.
TEST(Check, ThreadsThatAreJoinedAreNoGrowth) {
  for (const char* count : {"1", "2", "8", "32"}) {
    const std::string plugin = Breaking("has_threads");
    const Result result =
        RunShell("RNG_FAKE_THREADS=" + std::string(count) + " " RNGCTL " check --json " + plugin);
    EXPECT_EQ("", Failed(json::parse(result.output))) << count << result.output << result.errors;
  }
}

// The memory limit of the process leaves no room for a thread.
TEST(Check, WhatTheMachineLacksIsNoFaultOfThePlugin) {
  const Result result = RunShell(
      "ulimit -s 4000000 && ulimit -v 3000000 && " RNGCTL " check --json " + Breaking("correct"));
  const json report = json::parse(result.output);
  EXPECT_EQ("", Failed(report)) << result.output << result.errors;
  for (const char* name : {"cancel", "concurrent-calls", "clean-exit"}) {
    EXPECT_THAT(Reason(report, name), StartsWith("rngctl itself cannot start a thread; allow"))
        << name;
  }
}
