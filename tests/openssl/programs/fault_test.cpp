// Whatever goes wrong after the configuration is in force, a program gets no bytes.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Faults : public OpensslTest {
 protected:
  static Result Draw() { return Run("openssl rand -hex 32"); }
};

struct Fault {
  const char* command;
  const char* reason;
};

class FaultyPlugin : public Faults, public testing::WithParamInterface<Fault> {};

constexpr Fault kFaults[] = {
    {"fail", "A draw from the generator \"grandmaster\" failed"},
    {"zeros", "evidently not random"},
    {"throw", "the device burns"},
    {"crash", "The program that draws has terminated."},
    {"exit", "The program that draws has terminated."},
};

std::string NameOf(const testing::TestParamInfo<Fault>& info) { return info.param.command; }

}  // namespace

TEST_P(FaultyPlugin, GivesNoBytes) {
  Command(GetParam().command);
  EXPECT_TRUE(Refused(Draw(), GetParam().reason));
  EXPECT_TRUE(AllEnd());
}

TEST_P(FaultyPlugin, GivesNoBytesInALaterDraw) {
  EXPECT_EQ("o-", RunHost("shell 'echo " + std::string(GetParam().command) + " > " +
                          TreePath("script") + "'")
                      .output);
}

INSTANTIATE_TEST_SUITE_P(All, FaultyPlugin, testing::ValuesIn(kFaults), NameOf);

// Time runs thirty times as fast in the program.
TEST_F(Faults, AGeneratorThatDoesNotAnswer) {
  Command("hang");
  EXPECT_TRUE(Refused(Run("LD_PRELOAD=" FAST_CLOCK " openssl rand -hex 32"),
                      "has not answered for a minute"));
  EXPECT_TRUE(AllEnd());
}

TEST_F(Faults, ThreadsThatWaitForAGeneratorThatDoesNotAnswer) {
  Command("hang");
  const Result result = Run("LD_PRELOAD=" FAST_CLOCK " " + Host() + " threads 4 1");
  EXPECT_EQ("o 0 - 4 X 0\n", result.output);
}

TEST_F(Faults, ThePluginDoesNotStop) {
  Command("hang_release");
  EXPECT_TRUE(IsMarkedText(Draw().output));
  EXPECT_TRUE(AllEnd());
}

TEST_F(Faults, TheGeneratorWorksAgain) {
  Command("fail");
  EXPECT_EQ("-o", RunHost("shell 'echo draw > " + TreePath("script") + "'").output);
}

// As long as the process lives. A new one cannot know.
TEST_F(Faults, AnAlarmStays) {
  Command("zeros");
  EXPECT_EQ("--", RunHost("shell 'echo draw > " + TreePath("script") + "'").output);
  EXPECT_TRUE(IsMarkedText(Draw().output));
}

TEST_F(Faults, TheProgramThatDrawsIsMissing) {
  fs::remove(DrawingProgram());
  EXPECT_TRUE(Refused(Draw(), "rng-openssl-draw: No such file or directory"));
}

TEST_F(Faults, TheProgramThatDrawsIsNoProgram) {
  WriteFile(TreePath("other"), "");
  fs::rename(TreePath("other"), DrawingProgram());
  EXPECT_TRUE(Refused(Draw(), "rng-openssl-draw"));
  fs::permissions(DrawingProgram(), fs::perms(0755));
  EXPECT_TRUE(Refused(Draw(), "The program that draws has terminated."));
}

TEST_F(Faults, TheLibraryIsMissing) {
  fs::remove(TreePath("lib/librngaggregator.so.1"));
  EXPECT_TRUE(Refused(Draw(), "The program that draws has terminated."));
}

// OpenSSL applies "random" before it finds out.
TEST_F(Faults, TheModuleIsMissing) {
  fs::remove(Module());
  EXPECT_TRUE(Refused(Draw(), "RNGAGGREGATOR"));
  EXPECT_EQ("-", RunHost("draw").output);
}

TEST_F(Faults, TheModuleIsNotActivated) {
  std::string text = ReadFile(ConfigurationFile());
  text.replace(text.find("activate = 1"), 12, "");
  WriteFile(ConfigurationFile(), text);
  EXPECT_EQ("-", RunHost("draw").output);
}

// The current directory may have changed when the first draw comes.
TEST_F(Faults, TheModuleHasARelativePath) {
  std::string text = ReadFile(ConfigurationFile());
  const std::string line = "module = " + Module();
  text.replace(text.find(line), line.size(), "identity = rngaggregator");
  WriteFile(ConfigurationFile(), text);
  EXPECT_TRUE(Refused(
      Run("cd " + TreePath("lib") + " && OPENSSL_MODULES=ossl-modules openssl rand -hex 32"),
      "Give its absolute path"));
}

TEST_F(Faults, NoDescriptorIsLeft) {
  const Result result = RunHost("no_descriptor");
  EXPECT_EQ("-", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("cannot be started"));
}

TEST_F(Faults, NoProcessIsLeft) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user, who has few processes";
  fs::permissions(TreePath(""), fs::perms(0755));
  const Result result =
      Run("prlimit --nproc=1 setpriv --reuid=65534 --clear-groups " + Host() + " draw");
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
  EXPECT_THAT(result.errors, testing::HasSubstr("more rights than their user"));
}
