// Where "rngctl read -o" writes, and what it refuses.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr unsigned kNobody = 65534;

bool IsRoot() { return ::geteuid() == 0; }

// Only root can.
void GiveToNobody(const std::string& path) {
  if (IsRoot() && ::chown(path.c_str(), kNobody, kNobody) != 0) FAIL() << "cannot give it away";
}

std::size_t CountFiles(const std::string& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(TreePath(folder)), {}));
}

}  // namespace

TEST_F(RngctlTest, WritesAFileThatOnlyItsOwnerReads) {
  InstallPlugin("sobol");
  WriteFile(TreePath("keys/key"), "old");
  const Result result = Run("read sobol -n 2 --raw -o " + TreePath("keys/key"));
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_EQ("\xA5\xA5", ReadFile(TreePath("keys/key")));
  EXPECT_EQ(0600U, ModeOf(TreePath("keys/key")));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(TreePath("keys")), {}));
}

TEST_F(RngctlTest, WritesThroughADeviceAndNoticesThatItIsFull) {
  EXPECT_EQ(0, Run("read unixdev -n 2 -o /dev/null").status);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  const Result result = Run("read unixdev -n 2 -o /dev/full");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to \"/dev/full\": No space left on device.\n", result.errors);
}

TEST_F(RngctlTest, EverybodyMayWriteToTheNullDevice) {
  const Result result = RunForked([] {
    const Unprivileged user;
    ::execl(Rngctl().c_str(), "rngctl", "read", "unixdev", "-n", "2", "-o", "/dev/null", nullptr);
    return 127;
  });
  EXPECT_EQ(0, result.status) << result.errors;
  const Result full = RunForked([] {
    const Unprivileged user;
    ::execl(Rngctl().c_str(), "rngctl", "read", "unixdev", "-n", "2", "-o", "/dev/full", nullptr);
    return 127;
  });
  EXPECT_EQ(1, full.status);
  EXPECT_THAT(full.errors, HasSubstr("No space left on device"));
}

TEST_F(RngctlTest, ADirectoryThatMayNotBeListedIsEnough) {
  fs::create_directory(TreePath("keys"));
  GiveToNobody(TreePath("keys"));
  fs::permissions(TreePath("keys"), fs::perms(0300));
  const std::string file = TreePath("keys/key");
  const Result result = RunForked([&file] {
    const Unprivileged user;
    ::execl(Rngctl().c_str(), "rngctl", "read", "unixdev", "-n", "2", "-o", file.c_str(), nullptr);
    return 127;
  });
  fs::permissions(TreePath("keys"), fs::perms(0700));
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ(5U, ReadFile(file).size());
}

TEST_F(RngctlTest, AnUnwritableFileIsASentence) {
  const Result result = Run("read unixdev -n 2 -o " + TreePath("missing/key"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              AllOf(StartsWith("rngctl: Cannot write to"), HasSubstr("No such file")));
}

TEST_F(RngctlTest, TheUmaskDoesNotChangeTheModeOfTheFile) {
  InstallPlugin("sobol");
  for (const char* mask : {"0777", "0"}) {
    const std::string file = TreePath("key");
    EXPECT_EQ(0, RunShell("umask " + std::string(mask) + "; " + Rngctl() +
                          " read sobol -n 2 --raw -o " + file)
                     .status);
    EXPECT_EQ(0600U, ModeOf(file));
    EXPECT_EQ("\xA5\xA5", ReadFile(file));
  }
}

TEST_F(RngctlTest, NobodyElseReadsAFileThatIsBeingWritten) {
  InstallPlugin("dsdr", "drawing/Wait");
  fs::create_directory(TreePath("keys"));
  const Result result =
      RunShell("umask 0; " + Rngctl() + " read dsdr -n 5000 -o " + TreePath("keys/key") +
               " & until test -s " + TreePath("keys/key.*") +
               "; do sleep 0.01; done 2>/dev/null; stat -c %a " + TreePath("keys/key.*") +
               "; kill $!; wait $!");
  EXPECT_EQ("600\n", result.output);
}

// After a power failure the file has all of the bytes or is not there.
TEST_F(RngctlTest, AFileIsOnTheDiskBeforeItHasItsName) {
  InstallPlugin("sobol");
  const Result result = RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/notes_sync.so " + Rngctl() +
                                 " read sobol -n 2 -o " + TreePath("key"));
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("file rename directory ", result.errors);
}

TEST_F(RngctlTest, ASignalAfterAFileGotItsNameLeavesItWhole) {
  const std::string file = TreePath("key");
  const Result result =
      RunShell("ulimit -c 0; LD_PRELOAD=" FAKE_LIBS_DIR "/interrupts_rename.so exec " + Rngctl() +
               " read unixdev -n 32 -o " + file);
  EXPECT_EQ(SIGUSR1, result.signal);
  EXPECT_EQ(65U, ReadFile(file).size());
}

TEST_F(RngctlTest, WritesAFileWhoseNameIsTheLongest) {
  InstallPlugin("sobol");
  const std::string file = TreePath(std::string(255, 'k'));
  EXPECT_EQ(0, Run("read sobol -n 2 --raw -o " + file).status);
  EXPECT_EQ("\xA5\xA5", ReadFile(file));
  EXPECT_THAT(Run("read sobol -n 2 -o " + file + "k").errors, HasSubstr("File name too long"));
}

TEST_F(RngctlTest, ADirectoryIsNoFile) {
  for (const char* path : {"", "lib", "lib/", "lib/.", "lib/.."}) {
    const Result result = Run("read unixdev -n 2 -o " + TreePath(path));
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, EndsWith(": Is a directory.\n")) << path;
  }
}

TEST_F(RngctlTest, ALinkIsRefusedAndItsTargetNamed) {
  WriteFile(TreePath("keys/target"), "old");
  fs::create_symlink("target", TreePath("keys/link"));
  fs::create_symlink("nowhere", TreePath("keys/dangling"));
  for (const std::string option : {"", " --force"}) {
    const Result result = Run("read unixdev -n 2 -o " + TreePath("keys/link") + option);
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, HasSubstr("it is a link to \"target\"; name the target itself."));
    EXPECT_EQ(1, Run("read unixdev -n 2 -o " + TreePath("keys/dangling") + option).status);
  }
  EXPECT_EQ("old", ReadFile(TreePath("keys/target")));
  EXPECT_EQ(3U, CountFiles("keys"));
}

TEST_F(RngctlTest, ALinkOnTheWayToTheFileIsFollowed) {
  InstallPlugin("sobol");
  fs::create_directory(TreePath("keys"));
  fs::create_directory_symlink("keys", TreePath("way"));
  EXPECT_EQ(0, Run("read sobol -n 2 --raw -o " + TreePath("way/key")).status);
  EXPECT_EQ("\xA5\xA5", ReadFile(TreePath("keys/key")));
}

// Other programs write to standard output then. A file of that name must be meant.
TEST_F(RngctlTest, ADashIsNoFileName) {
  InstallPlugin("sobol");
  const Result result = RunShell("cd " + TreePath("") + " && bin/rngctl read sobol -n 2 -o -");
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, HasSubstr("\"-\" is not a file name here. Leave out -o to write to "
                                       "standard output, or write \"-o ./-\" for a file of that "
                                       "name\n"));
  EXPECT_FALSE(fs::exists(TreePath("-")));
  EXPECT_EQ(0, RunShell("cd " + TreePath("") + " && bin/rngctl read sobol -n 2 -o ./-").status);
  EXPECT_EQ("a5a5\n", ReadFile(TreePath("-")));
}

// Root writes over a file of nobody; other users try a file of root.
TEST_F(RngctlTest, AFileOfAnotherUserIsReplacedOnlyWithForce) {
  WriteFile(TreePath("key"), "old");
  GiveToNobody(TreePath("key"));
  const std::string draw = "read unixdev -n 2 -o " + (IsRoot() ? TreePath("key") : "/etc/passwd");
  const Result refused = Run(draw);
  EXPECT_EQ(1, refused.status);
  EXPECT_THAT(refused.errors, HasSubstr("it belongs to another user (UID " +
                                        std::to_string(IsRoot() ? kNobody : 0)));
  EXPECT_EQ("old", ReadFile(TreePath("key")));
  const Result forced = Run(draw + " --force");
  EXPECT_EQ(IsRoot() ? 0 : 1, forced.status);
  EXPECT_THAT(forced.errors, IsRoot() ? HasSubstr("") : HasSubstr("Permission denied"));
  EXPECT_EQ(IsRoot() ? 5U : 3U, ReadFile(TreePath("key")).size());
}

TEST_F(RngctlTest, AFifoOrDeviceOfAnotherUserIsRefused) {
  ASSERT_EQ(0, ::mkfifo(TreePath("fifo").c_str(), 0666));
  GiveToNobody(TreePath("fifo"));
  for (const std::string option : {"", " --force"}) {
    const Result result =
        Run("read unixdev -n 2 -o " + (IsRoot() ? TreePath("fifo") : "/dev/zero") + option);
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, HasSubstr("is not a regular file and belongs to another user"));
  }
}

TEST_F(RngctlTest, WritesToAFifoOfTheUser) {
  InstallPlugin("sobol");
  const std::string fifo = TreePath("fifo");
  const Result result = RunShell("mkfifo " + fifo + "; " + Rngctl() + " read sobol -n 2 -o " +
                                 fifo + " & cat " + fifo + "; wait $!");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("a5a5\n", result.output);
  EXPECT_TRUE(fs::is_fifo(fifo));
}

TEST_F(RngctlTest, PathsOfDescriptorsMeanTheDescriptors) {
  InstallPlugin("sobol");
  const std::string draw = Rngctl() + " read sobol -n 2 -o ";
  for (const char* path : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
    EXPECT_EQ("a5a5\n", RunShell(draw + path).output);
  }
  EXPECT_EQ("a5a5\n",
            RunShell(draw + "/dev/fd/5 5>" + TreePath("key") + "; cat " + TreePath("key")).output);
  const Result closed = RunShell(draw + "/dev/fd/5");
  EXPECT_EQ(1, closed.status);
  EXPECT_EQ("rngctl: Cannot write to \"/dev/fd/5\": Bad file descriptor.\n", closed.errors);
  EXPECT_EQ("", RunShell(draw + "/dev/fd/1x").output);
}

// A user may have to take part in a draw, so what is certain to fail fails before it.
TEST_F(RngctlTest, ADescriptorThatIsOnlyReadIsRefusedBeforeTheDraw) {
  const Result result = RunShell(Rngctl() + " read no-such-kind -o /dev/fd/5 -n 2 5</dev/null");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to \"/dev/fd/5\": Bad file descriptor.\n", result.errors);
}

TEST_F(RngctlTest, AClosedStandardDescriptorIsNotTheFile) {
  InstallPlugin("dsdr", "drawing/Print");
  const std::string file = TreePath("key");
  const std::string draw = Rngctl() + " read dsdr --raw -n 5000 -o " + file;
  EXPECT_EQ(0, RunShell(draw + " <&- >&- 2>&-").status);
  EXPECT_EQ(5000U, ReadFile(file).size());
  EXPECT_THAT(ReadFile(file), testing::Not(testing::HasSubstr("a message")));
  const Result result = RunShell(Rngctl() + " read dsdr -n 2 >&-");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to standard output: Bad file descriptor.\n", result.errors);
  EXPECT_EQ(1, RunShell(Rngctl() + " list >&-").status);
}

TEST_F(RngctlTest, WhatAppearsDuringTheDrawIsNotReplaced) {
  fs::create_directory(TreePath("keys"));
  const std::string draw = "RNG_TEST_FOLDER=" + TreePath("keys") + " " + Rngctl() +
                           " read dsdr -n 5000 -o " + TreePath("keys/key");
  InstallPlugin("dsdr", "drawing/PlaceLink");
  const Result linked = RunShell(draw);
  EXPECT_EQ(1, linked.status);
  EXPECT_THAT(linked.errors, HasSubstr("it is a link to \"elsewhere\"; name the target itself."));
  EXPECT_TRUE(fs::is_symlink(TreePath("keys/key")));
  EXPECT_EQ(1U, CountFiles("keys"));
  if (!IsRoot()) GTEST_SKIP() << "only root can give files away";
  fs::remove(TreePath("keys/key"));
  InstallPlugin("dsdr", "drawing/GiveAway");
  EXPECT_THAT(RunShell(draw).errors, HasSubstr("it belongs to another user (UID 4711)"));
  EXPECT_EQ("", ReadFile(TreePath("keys/key")));
  EXPECT_EQ(0, RunShell(draw + " --force").status);
  EXPECT_EQ(10001U, ReadFile(TreePath("keys/key")).size());
}

TEST_F(RngctlTest, AnUnfinishedFileThatWasMovedIsEmpty) {
  fs::create_directory(TreePath("keys"));
  InstallPlugin("dsdr", "drawing/MoveAndExit");
  EXPECT_EQ(1, RunShell("RNG_TEST_FOLDER=" + TreePath("keys") + " " + Rngctl() +
                        " read dsdr -n 5000 -o " + TreePath("keys/key"))
                   .status);
  EXPECT_TRUE(fs::exists(TreePath("keys/moved")));
  EXPECT_EQ("", ReadFile(TreePath("keys/moved")));
}
