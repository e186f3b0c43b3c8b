// How "default set" stores: modes, the lock, interruptions, refusals and warnings.

#include "tests/rngctl/default/settings_of_tree.h"
#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <thread>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

namespace {

std::string Folder() { return TreePath("etc"); }

class FolderLock {
 public:
  FolderLock() : descriptor(::open(Folder().c_str(), O_RDONLY | O_CLOEXEC)) {
    EXPECT_EQ(0, ::flock(descriptor, LOCK_EX));
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock() { ::close(descriptor); }

 private:
  const int descriptor;
};

}  // namespace

class Store : public RngctlTest {
 protected:
  static void Set(const std::string& before = "") {
    const Result result = RunShell(before + Rngctl() + " default set unixdev");
    EXPECT_EQ(0, result.status) << result.errors;
    EXPECT_THAT(ReadFile(Ini()), HasSubstr("Type=unixdev\n"));
  }

  // Nothing but the refusal is left behind.
  static void ExpectRefusal(const std::string& why, const std::string& fix,
                            const std::string& content = kOldSettings) {
    const Result result = Run("default set unixdev");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_EQ("rngctl: The default could not be stored in " + Ini() + ": " + why +
                  ". Nothing was changed. " + fix + "\n",
              result.errors);
    EXPECT_EQ(content, ReadFile(Ini()));
  }
};

TEST_F(Store, TheUmaskOfTheUserDoesNotDecide) {
  for (const std::string umask : {"000", "077", "777"}) {
    fs::remove_all(Folder());
    Set("umask " + umask + "; ");
    EXPECT_EQ(0755U, ModeOf(Folder())) << umask;
    EXPECT_EQ(0644U, ModeOf(Ini())) << umask;
    Set("umask " + umask + "; ");
    EXPECT_EQ(0644U, ModeOf(Ini())) << umask;
  }
}

TEST_F(Store, KeepsAModeThatIsNarrower) {
  WriteFile(Ini(), kOldSettings);
  const std::pair<unsigned, unsigned> modes[] = {{0600, 0600}, {0640, 0640}, {0604, 0604},
                                                 {0444, 0444}, {0666, 0644}, {0777, 0644}};
  for (const auto& [before, after] : modes) {
    fs::permissions(Ini(), fs::perms(before));
    Set("umask 0; ");
    EXPECT_EQ(after, ModeOf(Ini())) << std::oct << before;
  }
}

TEST_F(Store, SaysWhoMayNoLongerReadTheFile) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  WriteFile(Ini(), kOldSettings);
  ASSERT_EQ(0, ::chown(Ini().c_str(), 0, kAnotherUser));
  EXPECT_THAT(Run("default set unixdev").errors, IsEmpty());  // everybody may read it
  fs::permissions(Ini(), fs::perms(0640));
  ASSERT_EQ(0, ::chown(Ini().c_str(), 0, kAnotherUser));
  const Result result = Run("default set unixdev");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(
      "Warning: " + Ini() +
          " now belongs to the user \"root\" and the group \"root\". Before, it belonged to the "
          "user \"root\" and the group 4711, who may no longer be able to read it. Fix: chown "
          "0:4711 " +
          Ini() + "\n",
      result.errors);
  EXPECT_EQ(0640U, ModeOf(Ini()));
}

TEST_F(Store, KeepsOtherSections) {
  WriteFile(Ini(), kOldSettings);
  Set();
  EXPECT_EQ(
      "[Devices]\nRandomNumberGeneratorType=unixdev\nRandomNumberGeneratorHardwareID=\n\n"
      "[Other]\nkey=value\n",
      ReadFile(Ini()));
  EXPECT_FALSE(fs::exists(Temporary()));
}

TEST_F(Store, RefusesALeftOverLink) {
  WriteFile(Ini(), kOldSettings);
  WriteFile(TreePath("victim"), "untouched");
  fs::create_symlink(TreePath("victim"), Temporary());
  ExpectRefusal(Temporary() + " is a symbolic link to " + TreePath("victim") +
                    ", and storing would write to it",
                "Remove it: rm " + Temporary());
  EXPECT_EQ("untouched", ReadFile(TreePath("victim")));
  fs::remove(Temporary());
  fs::create_hard_link(TreePath("victim"), Temporary());
  ExpectRefusal(Temporary() + " has 2 names (hard links), and storing would write to it",
                "Remove it: rm " + Temporary());
  EXPECT_EQ("untouched", ReadFile(TreePath("victim")));
}

TEST_F(Store, RefusesTheLeftOverFileOfAnotherUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  WriteFile(Ini(), kOldSettings);
  WriteFile(Temporary(), "left over");
  ASSERT_EQ(0, ::chown(Temporary().c_str(), kAnotherUser, kAnotherUser));
  ExpectRefusal(Temporary() + " belongs to the user 4711, and storing would write to it",
                "Remove it: rm " + Temporary());
  EXPECT_EQ("left over", ReadFile(Temporary()));
}

TEST_F(Store, ReplacesTheFileThatAnEarlierProcessLeft) {
  WriteFile(Ini(), kOldSettings);
  WriteFile(Temporary(), "[Devi");
  for (const unsigned mode : {0666U, 0600U}) {
    WriteFile(Temporary(), "[Devi");
    fs::permissions(Temporary(), fs::perms(mode));
    Set();
    EXPECT_EQ(0644U, ModeOf(Ini())) << std::oct << mode;
  }
  EXPECT_THAT(ReadFile(Ini()), EndsWith("\n\n[Other]\nkey=value\n"));
}

// The loader would not find the library of a set-user-ID tool here.
TEST_F(Store, NothingIsStoredWithTheRightsOfAnother) {
  WriteFile(Ini(), kOldSettings);
  const Result result =
      RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/another_user.so " + Rngctl() + " default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("does not store a default with the rights of another user"));
  EXPECT_EQ(kOldSettings, ReadFile(Ini()));
}

TEST_F(Store, CompletesTheStoreOfAKilledProcess) {
  WriteFile(Temporary(), kOldSettings);
  const Result result = Run("default set unixdev");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("Warning: " + Ini() +
                " was missing because an earlier store was interrupted. It was restored from " +
                Temporary() + ".\n",
            result.errors);
  EXPECT_THAT(ReadFile(Ini()),
              AllOf(HasSubstr("Type=unixdev\n"), EndsWith("[Other]\nkey=value\n")));
}

TEST_F(Store, AnInterruptionWaitsUntilTheFileIsComplete) {
  WriteFile(Ini(), kOldSettings);
  const Result result = RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/interrupts_unlink.so exec setsid " +
                                 Rngctl() + " default set unixdev X1");
  EXPECT_EQ(SIGINT, result.signal);
  EXPECT_THAT(ReadFile(Ini()), AllOf(HasSubstr("Type=unixdev\n"), HasSubstr("HardwareID=X1\n"),
                                     EndsWith("[Other]\nkey=value\n")));
  EXPECT_FALSE(fs::exists(Temporary()));
}

TEST_F(Store, TheLimitOnFileSizesLeavesTheOldFile) {
  WriteFile(Ini(), kOldSettings);
  const Result result = RunShell("ulimit -c 0; ulimit -f 0; exec " + Rngctl() +
                                 " default set unixdev >/dev/null 2>&1");
  EXPECT_NE(0, result.status);
  EXPECT_EQ(kOldSettings, ReadFile(Ini()));
}

TEST_F(Store, WaitsForAnotherProcessThatStores) {
  WriteFile(Ini(), kOldSettings);
  for (const char* command : {"default set unixdev", "default", "read -n 1"}) {
    auto lock = std::make_unique<FolderLock>();
    std::atomic<bool> isReleased = false;
    std::jthread release([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      isReleased = true;
      lock.reset();
    });
    EXPECT_EQ(0, Run(command).status) << command;
    EXPECT_TRUE(isReleased) << command;
  }
}

// Plug-ins may be slow to start, or wait for their user.
TEST_F(Store, DoesNotKeepTheLockWhilePluginsAreTried) {
  InstallPlugin("sobol", "hanging");
  const Result result =
      RunShell(Rngctl() + " default set unixdev >" + TreePath("told") + " & until test -s " +
               TreePath("told") + "; do sleep 0.01; done; flock -n " + Folder() +
               " echo free; kill $!; wait $!");
  EXPECT_EQ("free\n", result.output);
}

TEST_F(Store, GivesUpWhenTheLockIsKept) {
  WriteFile(Ini(), kOldSettings);
  const FolderLock lock;
  ExpectRefusal("another process has kept " + Folder() + " locked for five seconds",
                "Try again when it has finished.");
}

TEST_F(Store, ReadingGoesOnWhenTheLockIsKept) {
  WriteFile(Ini(), kOldSettings);
  const FolderLock lock;
  EXPECT_THAT(Run("default").output, HasSubstr("configured  sobol\n"));
}

TEST_F(Store, ManyAtOnceAgree) {
  WriteFile(Ini(), kOldSettings);
  const Result result = RunShell(
      "for i in 1 2 3 4 5 6 7 8 9 10; do"
      "  for kind in unixdev dsdr sobol accord Rutoken; do " +
      Rngctl() + " default set $kind $i & done; " + Rngctl() + " default & done; wait");
  EXPECT_THAT(result.output, Not(HasSubstr("configured  none")));
  EXPECT_THAT(result.output, HasSubstr("The default is now "));
  EXPECT_THAT(result.errors, Not(HasSubstr("reads back as")));
  EXPECT_THAT(ReadFile(Ini()), AllOf(testing::StartsWith("[Devices]\nRandomNumberGeneratorType="),
                                     EndsWith("\n\n[Other]\nkey=value\n")));
  // The last of them has stored both.
  const std::string shown = Run("default").output;
  const std::string stored = shown.substr(12, shown.find('\n') - 12);
  EXPECT_THAT(result.output, HasSubstr("The default is now " + stored + ".\n"));
  EXPECT_FALSE(fs::exists(Temporary()));
}

TEST_F(Store, ManyAtOnceAgreeWithoutADirectory) {
  const Result result = RunShell("for i in 1 2 3 4 5 6 7 8 9 10; do " + Rngctl() +
                                 " default set unixdev $i & done; wait");
  EXPECT_THAT(result.errors, Not(HasSubstr("could not be stored")));
  EXPECT_THAT(Run("default").output, HasSubstr("configured  unixdev, device "));
}

TEST_F(Store, SaysThatALinkIsReplaced) {
  WriteFile(TreePath("place/ini"), kOldSettings);
  fs::create_directory(Folder());
  fs::create_symlink("../place/ini", Ini());
  const Result result = Run("default set unixdev");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(
      "Warning: " + Ini() +
          " is a symbolic link to ../place/ini. Storing replaces the link with a file and leaves "
          "its target unchanged.\n",
      result.errors);
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(Ini())));
  EXPECT_EQ(kOldSettings, ReadFile(TreePath("place/ini")));
}

TEST_F(Store, DoesNotCreateWhatADanglingLinkNames) {
  fs::create_directory(Folder());
  fs::create_symlink(TreePath("gone"), Ini());
  ExpectRefusal("it is a symbolic link to " + TreePath("gone") + ", which does not exist",
                "Create that file, or remove the link: rm " + Ini(), "");
  EXPECT_FALSE(fs::exists(TreePath("gone")));
}

TEST_F(Store, FollowsADirectoryThatIsALink) {
  fs::create_directory(TreePath("place"));
  fs::create_symlink("place", Folder());
  Set();
  EXPECT_TRUE(fs::is_symlink(Folder()));
}

TEST_F(Store, WarnsOfALineThatCutsTheFile) {
  WriteFile(Ini(), kOldSettings + std::string(511, 'x') + "\r\n");
  EXPECT_THAT(Run("default set unixdev").errors, IsEmpty());
  WriteFile(Ini(), kOldSettings + std::string(512, 'x') + "\nlost=1\n");
  EXPECT_EQ(
      "Warning: line 6 of " + Ini() +
          " has 512 bytes, more than the 511 that the library can copy. Storing removes it and all "
          "lines after it.\n",
      Run("default set unixdev").errors);
  EXPECT_THAT(ReadFile(Ini()), EndsWith("[Other]\nkey=value\n"));
}

TEST_F(Store, NamesTheOwnerOfWhatThisUserMayNotWrite) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a directory of root's";
  WriteFile(Ini(), kOldSettings);
  fs::permissions(Folder(), fs::perms(0755));
  const auto setAsUser = [] {
    return RunForked([] {
      const Unprivileged user;
      ::execl(Rngctl().c_str(), "rngctl", "default", "set", "unixdev", nullptr);
      return 127;
    });
  };
  EXPECT_EQ("rngctl: The default could not be stored in " + Ini() + ": " + Folder() +
                " cannot be written by this user (Permission denied). Nothing was changed. " +
                Folder() + " belongs to root. Try again with sudo.\n",
            setAsUser().errors);
  ASSERT_EQ(0, ::chown(Folder().c_str(), kAnotherUser, kAnotherUser));
  EXPECT_THAT(
      setAsUser().errors,
      HasSubstr(Folder() + " belongs to the user 4711. Try again as that user or with sudo."));
  EXPECT_EQ(kOldSettings, ReadFile(Ini()));
}

TEST_F(Store, AFullDiskIsNamedBeforeTheFileIsLost) {
  WriteFile(TreePath("etc/filler"), "");
  const std::string disk = Folder();
  if (::mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0) {
    GTEST_SKIP() << "this user cannot mount a small disk";
  }
  WriteFile(Ini(), kOldSettings);
  RunShell("cat /dev/zero >" + disk + "/filler");
  ExpectRefusal("the disk of " + disk + " is full", "Free some space on that disk, and try again.");
  ::umount2(disk.c_str(), MNT_DETACH);
}

TEST_F(Store, ARelativeDirectoryIsRefused) {
  const Result result =
      RunShell("cd / && RNG_TEST_TREE=gone/place " + Rngctl() + " default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: The default could not be stored in gone/place/etc/rng.ini: its directory is not an "
      "absolute path. Nothing was changed. Fix that, and try again.\n",
      result.errors);
}

TEST_F(Store, AnUnknownDirectoryIsNamed) {
  InstallKnownPath("no_function");
  EXPECT_EQ(
      "rngctl: The default could not be stored: the known-path service returns no directory.\n",
      Run("default set unixdev").errors);
}
