// Whatever goes wrong after OpenSSL has applied the configuration, programs get no bytes.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <chrono>
#include <filesystem>
#include <ostream>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Faults : public OpensslTest {
 protected:
  static Result Draw() { return Run("openssl rand -hex 32"); }

  static void ReplaceInConfiguration(const std::string& line, const std::string& other) {
    std::string text = ReadFile(ConfigurationFile());
    const std::size_t place = text.find(line);
    ASSERT_NE(std::string::npos, place);
    WriteFile(ConfigurationFile(), text.replace(place, line.size(), other));
  }
};

struct Fault {
  const char* command;
  const char* reason;
};

// For the list of tests.
void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.command; }

class FaultyPlugin : public Faults, public testing::WithParamInterface<Fault> {};

constexpr Fault kFaults[] = {
    {"fail", "A draw from the generator \"grandmaster\" failed"},
    {"zeros", "evidently not random"},
    {"throw", "the device burns"},
    {"crash", "The helper program rng-openssl-draw has terminated."},
    {"exit", "The helper program rng-openssl-draw has terminated."},
};

std::string NameOf(const testing::TestParamInfo<Fault>& info) { return info.param.command; }

}  // namespace

TEST_P(FaultyPlugin, GivesNoBytes) {
  Command(GetParam().command);
  EXPECT_TRUE(Refused(Draw(), GetParam().reason));
  EXPECT_TRUE(AllHelpersExit());
}

TEST_P(FaultyPlugin, GivesNoBytesInALaterDraw) {
  EXPECT_EQ("o-", RunHost("shell 'echo " + std::string(GetParam().command) + " > " +
                          TreePath("script") + "'")
                      .output);
}

INSTANTIATE_TEST_SUITE_P(All, FaultyPlugin, testing::ValuesIn(kFaults), NameOf);

// Time runs thirty times as fast in the host.
TEST_F(Faults, AGeneratorThatDoesNotAnswer) {
  Command("hang");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(Refused(Run("LD_PRELOAD=" FAST_CLOCK " openssl rand -hex 32"),
                      "has not answered for a minute"));
  EXPECT_LE(std::chrono::milliseconds(1990), std::chrono::steady_clock::now() - start);
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(Faults, ThreadsThatWaitForAGeneratorThatDoesNotAnswer) {
  Command("hang");
  const Result result = Run("LD_PRELOAD=" FAST_CLOCK " " + Host() + " threads 4 1");
  EXPECT_EQ("o 0 - 4 X 0\n", result.output);
}

// The handler interrupts a draw of its own thread, so it waits for a lock that cannot become free.
TEST_F(Faults, ASignalHandlerThatDrawsDuringADraw) {
  Command("half_a_second");
  const Result result = Run("LD_PRELOAD=" FAST_CLOCK " timeout 60 " + Host() + " draw_in_handler");
  EXPECT_EQ("-?o", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("have not finished within a minute"));
}

TEST_F(Faults, APluginWhoseReleaseHangs) {
  Command("hang_release");
  EXPECT_TRUE(HasWatermark(Draw().output));
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(Faults, AGeneratorThatRecovers) {
  Command("fail");
  EXPECT_EQ("-o", RunHost("shell 'echo draw > " + TreePath("script") + "'").output);
}

// A new process knows nothing of the alarm.
TEST_F(Faults, AnAlarmLastsUntilTheHostExits) {
  Command("zeros");
  EXPECT_EQ("--", RunHost("shell 'echo draw > " + TreePath("script") + "'").output);
  EXPECT_TRUE(HasWatermark(Draw().output));
}

TEST_F(Faults, AnAlarmIsTheReasonOfLaterFailures) {
  Command("zeros");
  const Result result = RunHost("shell 'echo later >&2'");
  EXPECT_EQ("--", result.output);
  const std::size_t later = result.errors.find("later\n");
  ASSERT_NE(std::string::npos, later);
  EXPECT_THAT(result.errors.substr(later), testing::HasSubstr("evidently not random"));
}

TEST_F(Faults, ADrawThatFailsIsNoneOfTheLastGenerator) {
  EXPECT_EQ("o- grandmaster",
            RunHost("shell_and_name 'echo fail > " + TreePath("script") + "'").output);
}

TEST_F(Faults, AnAlarmReachesChildProcesses) {
  Command("zeros");
  EXPECT_EQ("---", RunHost("shell_and_fork 'echo draw > " + TreePath("script") + "'").output);
}

// The helper may be gone by then, and a new one does not know about the alarm.
TEST_F(Faults, AnAlarmOutlivesTheHelper) {
  Command("zeros");
  EXPECT_EQ(
      "--",
      RunHost("shell 'echo draw > " + TreePath("script") + "; " + KillHelpers() + "'").output);
}

TEST_F(Faults, TheHelperProgramIsMissing) {
  fs::remove(HelperProgram());
  const Result result = Draw();
  EXPECT_TRUE(Refused(result, "rng-openssl-draw: No such file or directory"));
  EXPECT_TRUE(Refused(result, "no random bytes"));  // the text of the error's code
}

TEST_F(Faults, TheHelperProgramIsMissingAtALongPath) {
  const std::string folder =
      TreePath("lib/" + std::string(200, 'a') + '/' + std::string(200, 'b') + "/modules");
  fs::create_directories(folder);
  fs::copy(Module(), folder);
  ReplaceInConfiguration("module = " + Module(), "module = " + folder + "/rngaggregator.so");
  EXPECT_TRUE(Refused(Draw(), ": No such file or directory"));
}

TEST_F(Faults, TheHelperProgramIsNotExecutable) {
  WriteFile(TreePath("other"), "");
  fs::rename(TreePath("other"), HelperProgram());
  EXPECT_TRUE(Refused(Draw(), "rng-openssl-draw"));
  fs::permissions(HelperProgram(), fs::perms(0755));
  EXPECT_TRUE(Refused(Draw(), "The helper program rng-openssl-draw has terminated."));
}

TEST_F(Faults, TheLibraryIsMissing) {
  fs::remove(TreePath("lib/librngaggregator.so.1"));
  EXPECT_TRUE(Refused(Draw(), "The helper program rng-openssl-draw has terminated."));
}

// OpenSSL has applied "random" before it looks for the module.
TEST_F(Faults, TheModuleIsMissing) {
  fs::remove(Module());
  EXPECT_TRUE(Refused(Draw(), "RNGAGGREGATOR"));
  EXPECT_EQ("-", RunHost("draw").output);
}

// OpenSSL stops at a section that it cannot apply, and has applied "random" by then.
TEST_F(Faults, TheSectionOfTheProvidersIsMissing) {
  ReplaceInConfiguration("[rngaggregator_providers]", "[another]");
  EXPECT_EQ("-", RunHost("draw").output);
}

// Without "config_diagnostics", even this program would continue with OpenSSL's own generator.
TEST_F(Faults, TheSectionOfTheGeneratorIsMissing) {
  ReplaceInConfiguration("[rngaggregator_random]", "[another]");
  EXPECT_TRUE(Refused(Draw(), "rngaggregator_random"));
}

TEST_F(Faults, TheModuleIsNotActivated) {
  ReplaceInConfiguration("activate = 1", "");
  EXPECT_EQ("-", RunHost("draw").output);
}

// The current directory may have changed by the time of the first draw.
TEST_F(Faults, TheModuleHasARelativePath) {
  ReplaceInConfiguration("module = " + Module(), "identity = rngaggregator");
  EXPECT_TRUE(Refused(
      Run("cd " + TreePath("lib") + " && OPENSSL_MODULES=ossl-modules openssl rand -hex 32"),
      "Give its absolute path"));
}

TEST_F(Faults, TheHostHasNoFreeDescriptor) {
  const Result result = RunHost("no_descriptor");
  EXPECT_EQ("-", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("cannot be started"));
}

// No other test uses this user: the system counts the processes of all tests.
TEST_F(Faults, TheUserMayStartNoMoreProcesses) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user, who has few processes";
  fs::permissions(TreePath(""), fs::perms(0755));
  const Result result =
      Run("prlimit --nproc=1 setpriv --reuid=65432 --clear-groups " + Host() + " draw");
  EXPECT_EQ("-", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("cannot be started"));
}

// OpenSSL does not read $OPENSSL_CONF there, but a program may load a configuration of its own.
TEST_F(Faults, AProgramWithTheRightsOfAnotherUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a program to another user";
  const std::string host = TreePath("host");
  fs::copy(Host(), host);
  fs::permissions(host, fs::perms(04755));
  fs::permissions(TreePath(""), fs::perms(0755));
  const Result result =
      Run("setpriv --reuid=65534 --clear-groups " + host + " context " + ConfigurationFile());
  EXPECT_EQ("-", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("more privileges than their user"));
}
