// How a started process ends, and what becomes of its plug-ins. (What the library itself closes when
// a host returns or exits is told in tests/unload.)

#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace {

// What a host says after "2 loaded".
const std::string kNothing;
// Exiting runs the destructors of the libraries, the youngest first.
const std::string kClosed = "accord.closed\ndsdr.closed\n";
const std::string kStopped =
    "ShutDown\ndsdr.Release\ndsdr.closed\naccord.Release\naccord.closed\nstopped\n";
// The program's own handlers run before the destructors of the libraries that it is linked with, but
// after those of a library that was opened after the handler was registered.
const std::string kStoppedAfterClosing =
    kClosed + "ShutDown\ndsdr.Release\naccord.Release\nstopped\n";
const std::string kReleasedAfterClosing = kClosed + "dsdr.Release\naccord.Release\n";
const std::string kNoLockAnyMore =
    kClosed + "ShutDown\nboost: mutex lock failed in pthread_mutex_lock: Invalid argument\n";

struct Ending {
  const char* name;
  std::string whenLinked;
  std::string whenOpened;
  int signalWhenLinked = 0;
  int signalWhenOpened = 0;
};

void PrintTo(const Ending& ending, std::ostream* out) { *out << ending.name; }

const Ending kEndings[] = {
    {"return", kClosed, kClosed},
    {"exit", kClosed, kClosed},
    {"_exit", kNothing, kNothing},
    {"quick_exit", kNothing, kNothing},
    {"quick_exit_handler", kStopped, kStopped},
    {"throw", kNothing, kNothing, SIGABRT, SIGABRT},
    {"static_global", kStoppedAfterClosing, kNoLockAnyMore},
    {"static_local", kStopped, kStopped},
    {"atexit_before_load", kStoppedAfterClosing, kNoLockAnyMore},
    {"atexit_before_load_unguarded", kReleasedAfterClosing, kClosed, 0, SIGABRT},
    {"atexit_before_start", kStoppedAfterClosing, kStoppedAfterClosing},
    {"atexit_after_start", kStopped, kStopped},
};

class EndOfAStartedProcess : public testing::TestWithParam<Ending> {
 protected:
  static void ExpectEnd(const std::string& host, const std::string& text, int signal) {
    InstallPlugins({"dsdr", "accord"});
    ::setenv("LD_LIBRARY_PATH", TreePath("lib").c_str(), 1);
    const std::string command =
        "exec '" + host + "' " + GetParam().name + " '" + TreePath("lib/librngaggregator.so") + "'";
    const Result result = RunShell(command);
    EXPECT_EQ("2 loaded\n" + text, result.output);
    EXPECT_EQ(signal, result.signal) << result.errors;
    EXPECT_EQ(signal == 0 ? 0 : -1, result.status) << result.errors;
  }
};

}  // namespace

TEST_P(EndOfAStartedProcess, WhenLinkedWithTheLibrary) {
  ExpectEnd(LINKED_HOST, GetParam().whenLinked, GetParam().signalWhenLinked);
}

TEST_P(EndOfAStartedProcess, WhenItOpenedTheLibrary) {
  ExpectEnd(OPENING_HOST, GetParam().whenOpened, GetParam().signalWhenOpened);
}

INSTANTIATE_TEST_SUITE_P(By, EndOfAStartedProcess, testing::ValuesIn(kEndings),
                         [](const auto& instance) { return std::string(instance.param.name); });
