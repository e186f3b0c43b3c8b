// The helper process of a program that forks, closes its descriptors or terminates.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class HelperProcess : public OpensslTest {
 protected:
  /// Sends a request to a helper, does what `then` says in Python, and keeps the connection. Prints how many of the first 9 bytes of an
  /// answer arrive, and the helper's exit status.
  static Result Ask(const std::string& size, const std::string& kind, const std::string& then = "",
                    const std::string& from = "") {
    WriteFile(TreePath("request.py"), R"(
import os, socket, struct, subprocess, sys
near, there = socket.socketpair()
here = near.dup()
os.dup2(there.fileno(), 3)
program = subprocess.Popen([sys.argv[1]], pass_fds=[3])
here.send(struct.pack("II1024s512s", 1, int(sys.argv[2]), sys.argv[3].encode(), sys.argv[5].encode()))
exec(sys.argv[4])
print(len(here.recv(9)), program.wait(timeout=30))
)");
    return Run("python3 " + TreePath("request.py") + ' ' + HelperProgram() + ' ' + size + " '" +
               kind + "' '" + then + "' '" + from + "'");
  }
};

}  // namespace

TEST_F(HelperProcess, ThreadsShareOne) {
  EXPECT_EQ("o 1600 - 0 X 0\n", RunHost("threads 8 200").output);
  EXPECT_TRUE(AllHelpersExit());
}

// The first process of the namespace would exit at once, and the host could create no more.
TEST_F(HelperProcess, IsNotStartedInANewPidNamespace) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can create a namespace";
  const Result result = RunHost("unshare");
  EXPECT_EQ("--", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("rng-openssl-draw: Operation not permitted"));
}

// The smallest stack that the C library allows. It is enough for OpenSSL's own generator.
TEST_F(HelperProcess, IsStartedByAThreadWithASmallStack) {
  EXPECT_EQ("o", RunHost("small_stack").output);
}

TEST_F(HelperProcess, AForkedChildStartsItsOwn) {
  EXPECT_EQ("oooo", RunHost("fork").output);
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(HelperProcess, AForkedChildStartsItsOwnEvenBeforeTheParent) {
  EXPECT_EQ("ooo", RunHost("fork_first").output);
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(HelperProcess, ForksDuringADrawDoNotBlock) {
  EXPECT_EQ(std::string(100, 'o'), RunHost("forks 100").output);
  EXPECT_TRUE(AllHelpersExit());
}

// The child's draw fails, and takes nothing from the parent.
TEST_F(HelperProcess, ASignalHandlerMayForkDuringADraw) {
  Command("half_a_second");
  const Result result = RunHost("fork_in_handler");
  EXPECT_EQ("-oo", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("was forked during this draw"));
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(HelperProcess, IsStartedAgainIfTheHostClosesAllDescriptors) {
  EXPECT_EQ("oo", RunHost("close_all").output);
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(HelperProcess, LeavesTheStandardStreamsClosed) {
  EXPECT_EQ("o", RunHost("close_standard_streams").output);
}

TEST_F(HelperProcess, IsNotAChildOfTheHost) { EXPECT_EQ("oo", RunHost("children").output); }

TEST_F(HelperProcess, AnotherLibraryContextStartsItsOwn) {
  EXPECT_EQ("ooo", RunHost("other_context " + ConfigurationFile()).output);
  EXPECT_TRUE(AllHelpersExit());
}

// A timer, for example, sends many signals.
TEST_F(HelperProcess, IsNotStartedAgainWhenSignalsInterruptTheHost) {
  const std::string starts = TreePath("starts");
  std::filesystem::rename(HelperProgram(), HelperProgram() + ".real");
  WriteFile(HelperProgram(), "#!/bin/sh\necho >> " + starts + "\nexec $0.real\n");
  std::filesystem::permissions(HelperProgram(), std::filesystem::perms(0755));
  EXPECT_EQ(std::string(1000, 'o'), RunHost("signals 1000").output);
  EXPECT_EQ("\n", ReadFile(starts));
}

TEST_F(HelperProcess, IsNotEndedByASignalThatAPluginHandles) {
  Command("interrupt_threads");
  EXPECT_EQ("o", RunHost("draw").output);
}

TEST_F(HelperProcess, IsStartedAgainAfterItWasKilled) {
  EXPECT_EQ("oo", RunHost("shell '" + KillHelpers() + "'").output);
}

TEST_F(HelperProcess, TheDrawFailsIfItIsKilled) {
  Command("hang");
  EXPECT_TRUE(Refused(Run("(while ! [ -s " + TreePath("script.draws") +
                          " ]; do sleep 0.02; done; pkill -KILL -f ^" + HelperProgram() +
                          ") & openssl rand -hex 32"),
                      "The helper program rng-openssl-draw has terminated."));
}

// As it starts, during a draw, and between two draws. The host prints an X for bytes from elsewhere.
TEST_F(HelperProcess, NoBytesComeFromElsewhereWheneverItIsKilled) {
  Command("slow");
  const Result result = Run(R"(
    while :; do
      for moment in 1 2 3 4 5 6 7 8 9 11 13 17; do
        sleep $(printf 0.%03d $moment)
        pkill -KILL -f ^)" + HelperProgram() +
                            R"(
      done
    done &
    )" + Host() + " draw 150; kill $!");
  EXPECT_EQ(150u, result.output.size()) << result.errors;
  EXPECT_EQ(std::string::npos, result.output.find('X')) << result.output;
  EXPECT_NE(std::string::npos, result.output.find('o')) << result.output;
  EXPECT_NE(std::string::npos, result.output.find('-')) << result.output;
}

TEST_F(HelperProcess, ExitsWhenTheHostIsKilled) {
  const Result result = Run(Host() + " shell 'kill -KILL $PPID'");
  EXPECT_EQ("o", result.output);
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(HelperProcess, ExitsWhenTheHostExecutesAnotherProgram) {
  const Result result = RunHost("execute 'while pgrep -f ^" + HelperProgram() +
                                " >/dev/null; do sleep 0.02; done; echo alone'");
  EXPECT_EQ("oalone\n", result.output);
}

// Its parent does not ask for its status. A child of it, which never draws, keeps the socket open.
TEST_F(HelperProcess, ExitsWithAHostThatRemainsAsAZombie) {
  const Result result =
      Run("sh -c '" + Host() + " leave_child_and_die & exec sleep 30' & parent=$!\n" +
          "while [ ! -s " + TreePath("script.draws") + " ]; do sleep 0.02; done\n" +
          "for i in $(seq 200); do pgrep -f ^" + HelperProgram() +
          " >/dev/null || { echo alone; break; }; sleep 0.05; done\n" + "kill $parent");
  EXPECT_EQ("oalone\n", result.output);
}

// The child never draws, so it keeps the socket open.
TEST_F(HelperProcess, ExitsWithTheHostEvenIfAChildOutlivesIt) {
  EXPECT_EQ("o", RunHost("leave_child").output);
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(HelperProcess, ReleasesThePluginsWhenAChildOutlivesAHostThatIsKilled) {
  Command("note_release");
  EXPECT_EQ("o", RunHost("leave_child_and_die").output);
  EXPECT_TRUE(AllHelpersExit());
  EXPECT_EQ("grandmaster", ReadFile(TreePath("script.released")));
}

// Other copies of libcrypto, and programs that a plug-in starts, must not load the provider.
TEST_F(HelperProcess, UsesNoConfigurationOfOpenssl) {
  Command("note_configuration");
  EXPECT_EQ("o", RunHost("draw").output);
  EXPECT_EQ("/dev/null", ReadFile(TreePath("script.configuration")));
}

// Its memory has held the bytes of keys.
TEST_F(HelperProcess, CannotBeReadByOtherProcessesOfTheUser) {
  fs::permissions(TreePath(""), fs::perms(0755));
  const std::string become = ::geteuid() == 0 ? "setpriv --reuid=65534 --clear-groups " : "";
  const Result result = Run(become + Host() + " shell 'cat /proc/$(pgrep -f ^" + HelperProgram() +
                            ")/environ >/dev/null; test $? = 1'");
  EXPECT_EQ("oo", result.output) << result.errors;
  EXPECT_THAT(result.errors, testing::HasSubstr("/environ: Permission denied"));
}

TEST_F(HelperProcess, SaysThatItIsNotForUsers) {
  const Result result = Run(HelperProgram() + " 3</dev/null");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, testing::HasSubstr("run \"rngctl read\""));
}

TEST_F(HelperProcess, ExitsAfterAnInvalidRequest) {
  for (const std::string size : {"0", "16385", "4294967295"}) {
    const Result result = Ask(size, "");
    EXPECT_EQ("0 0\n", result.output) << result.errors;
  }
}

TEST_F(HelperProcess, ExitsAfterADrawThatFailed) {
  Command("fail");
  for (const std::string kind : {"", "missing"}) {
    const Result result = Ask("16", kind);
    EXPECT_EQ("9 0\n", result.output) << result.errors;
  }
  const Result result = Ask("16", "", "", "unixdev,,");  // no list of generators
  EXPECT_EQ("9 0\n", result.output) << result.errors;
}

TEST_F(HelperProcess, ExitsWithoutAFailureIfNobodyReadsTheAnswer) {
  Command("wait_for_hang_up");
  const Result result = Ask("16", "", "here.shutdown(socket.SHUT_RDWR)");
  EXPECT_EQ("0 0\n", result.output) << result.errors;
}

// Ctrl-C is meant for the host, which may handle it.
TEST_F(HelperProcess, GetsNoSignalsOfTheTerminal) { EXPECT_EQ("oo", RunHost("interrupt").output); }
