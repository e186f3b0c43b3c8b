// What "default set" does so that nothing of the settings file is lost, or says what is lost.

#include "tests/rngctl/default/settings_of_tree.h"
#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/xattr.h>
#include <vector>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 4096;
constexpr char kBegin[] = "[Devices]\nRandomNumberGeneratorType=a\n\n[Other]\n";
constexpr char kEnd[] = "last=1\n";

// Settings of that many bytes.
std::string Settings(std::size_t size) {
  std::string text = kBegin;
  while (text.size() + 100 < size) text += std::string(79, 'x') + '\n';
  return text + std::string(size - text.size() - sizeof kEnd, 'x') + '\n' + kEnd;
}

// A disk of 64 blocks in place of the settings directory, with that many free once it is filled.
class SmallDisk {
 public:
  explicit SmallDisk(const std::string& option = "") : place(TreePath("etc")) {
    fs::create_directory(place);
    const std::string options = "size=256k,mode=755" + option;
    isMounted = ::mount("none", place.c_str(), "tmpfs", 0, options.c_str()) == 0;
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    if (isMounted) ::umount2(place.c_str(), MNT_DETACH);
  }
  bool IsMounted() const { return isMounted; }
  void ForbidWriting() const {
    ::mount("none", place.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
  }
  void Fill(std::size_t freeBlocks) const {
    const std::string filler = place + "/filler";
    RunShell("cat /dev/zero >" + filler + " 2>/dev/null");
    fs::resize_file(filler, fs::file_size(filler) - freeBlocks * kBlock);
  }

 private:
  const std::string place;
  bool isMounted;
};

// A default access control list that lets everybody and the user 4711 write.
bool OpenToEverybody(const std::string& directory) {
  constexpr std::uint32_t kNoId = 0xFFFFFFFF;
  const struct {
    std::uint32_t version = 2;
    struct {
      std::uint16_t tag, rights;
      std::uint32_t id;
    } entries[5] = {{1, 7, kNoId}, {2, 7, 4711}, {4, 7, kNoId}, {16, 7, kNoId}, {32, 7, kNoId}};
  } list;
  return ::setxattr(directory.c_str(), "system.posix_acl_default", &list, sizeof list, 0) == 0;
}

class Losses : public RngctlTest {
 protected:
  static std::string SetAndWarn() {
    const Result result = Run("default set unixdev 12345678901234567 2>&1 | grep -v refuses");
    return result.output;
  }
};

}  // namespace

TEST_F(Losses, AReadOnlyDiskIsNotReportedAsAPermissionProblem) {
  const SmallDisk disk;
  if (!disk.IsMounted()) GTEST_SKIP() << "this user cannot mount a small disk";
  WriteFile(Ini(), std::string(600, 'x') + '\n');  // it would be warned of its loss
  disk.ForbidWriting();
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The default could not be stored in " + Ini() + ": " + TreePath("etc") +
                " cannot be written (Read-only file system). Nothing was changed. Fix "
                "that, and try again.\n",
            result.errors);
}

TEST_F(Losses, ADiskWithoutFreeInodesIsNamed) {
  const SmallDisk disk(",nr_inodes=2");  // the directory and the file
  if (!disk.IsMounted()) GTEST_SKIP() << "this user cannot mount a small disk";
  WriteFile(Ini(), kOldSettings);
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("the disk of " + TreePath("etc") +
                                       " has no free inodes. Nothing was changed. Free some space "
                                       "on that disk, and try again."));
  EXPECT_EQ(kOldSettings, ReadFile(Ini()));
}

TEST_F(Losses, ADiskWithoutRoomForTheNewEntryIsFull) {
  const SmallDisk disk;
  if (!disk.IsMounted()) GTEST_SKIP() << "this user cannot mount a small disk";
  const std::string old = Settings(kBlock - 20);
  WriteFile(Ini(), old);
  disk.Fill(1);
  const Result result = Run("default set unixdev 12345678901234567");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(
      result.errors,
      HasSubstr("is full. Nothing was changed. Free some space on that disk, and try again."));
  EXPECT_EQ(old, ReadFile(Ini()));
  disk.Fill(2);
  EXPECT_EQ(0, Run("default set unixdev 12345678901234567").status);
  EXPECT_THAT(ReadFile(Ini()), AllOf(HasSubstr("ID=12345678901234567\n"), EndsWith(kEnd)));
}

TEST_F(Losses, ALeftOverFileIsNoRoomForALargerOne) {
  const SmallDisk disk;
  if (!disk.IsMounted()) GTEST_SKIP() << "this user cannot mount a small disk";
  const std::string old = Settings(3 * kBlock - 200);
  WriteFile(Ini(), old);
  WriteFile(Ini() + ".tmp", "left over");
  disk.Fill(0);
  EXPECT_EQ(1, Run("default set unixdev").status);
  EXPECT_EQ(old, ReadFile(Ini()));
  WriteFile(Ini() + ".tmp", "");
  fs::resize_file(TreePath("etc/filler"), fs::file_size(TreePath("etc/filler")) - 2 * kBlock);
  WriteFile(Ini() + ".tmp", std::string(3 * kBlock, 'x'));
  EXPECT_EQ(0, Run("default set unixdev").status);
  EXPECT_THAT(ReadFile(Ini()), AllOf(HasSubstr("Type=unixdev\n"), EndsWith(kEnd)));
}

TEST_F(Losses, ALimitOnFileSizesIsNamedEvenIfItsSignalIsIgnored) {
  const std::string old = Settings(1500);
  WriteFile(Ini(), old);
  for (const std::string signal : {"-", "''"}) {
    const Result result = RunShell("trap " + signal + " XFSZ; ulimit -f 1; exec " + Rngctl() +
                                   " default set unixdev");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(
        result.errors,
        AllOf(HasSubstr("this process may write no file of more than "),
              HasSubstr(" bytes (ulimit -f). Nothing was changed. Fix that, and try again.")));
    EXPECT_EQ(old, ReadFile(Ini()));
  }
  EXPECT_EQ(0, RunShell("ulimit -f 8; exec " + Rngctl() + " default set unixdev").status);
}

TEST_F(Losses, ALastLineWithoutAnEndIsNamed) {
  WriteFile(Ini(), std::string(kBegin) + "last=1");
  EXPECT_EQ("Warning: line 5 of " + Ini() +
                " is the last one and does not end with a line feed. Storing removes it.\n"
                "The default is now unixdev, device 12345678901234567.\n",
            SetAndWarn());
  WriteFile(Ini(), "[Devices]\nRandomNumberGeneratorType=a");
  EXPECT_EQ("The default is now unixdev, device 12345678901234567.\n", SetAndWarn());
}

TEST_F(Losses, CarriageReturnsAreNoLoss) {
  WriteFile(Ini(), "[Devices]\r\nRandomNumberGeneratorType=a\r\n\r\n[Other]\r\nlast=1\r\n");
  EXPECT_EQ("The default is now unixdev, device 12345678901234567.\n", SetAndWarn());
  EXPECT_THAT(ReadFile(Ini()), EndsWith("\n\n[Other]\nlast=1\n"));
}

TEST_F(Losses, AZeroByteIsNamed) {
  WriteFile(Ini(), std::string(kBegin) + std::string("a\0b\n", 4) + kEnd);
  EXPECT_EQ("Warning: line 5 of " + Ini() +
                " contains a zero byte. Storing removes the rest of the line from there.\n"
                "The default is now unixdev, device 12345678901234567.\n",
            SetAndWarn());
  EXPECT_THAT(ReadFile(Ini()), EndsWith("\na\nlast=1\n"));
}

TEST_F(Losses, AnAccessControlListDoesNotDecideWhoWrites) {
  fs::create_directory(TreePath("etc"));
  if (!OpenToEverybody(TreePath("etc"))) GTEST_SKIP() << "there are no access control lists here";
  EXPECT_EQ(0, Run("default set unixdev").status);
  EXPECT_EQ(0644U, ModeOf(Ini()));
  fs::permissions(Ini(), fs::perms(0600));
  EXPECT_EQ(0, Run("default set unixdev").status);
  EXPECT_EQ(0600U, ModeOf(Ini()));
}

TEST_F(Losses, AModeThatCannotBeChangedIsAWarningIfItGivesRights) {
  const std::string set =
      "LD_PRELOAD=" FAKE_LIBS_DIR "/refuses_modes.so " + Rngctl() + " default set unixdev 2>&1";
  WriteFile(Ini(), kOldSettings);
  EXPECT_EQ("The default is now unixdev.\n", RunShell(set).output);
  if (!OpenToEverybody(TreePath("etc"))) GTEST_SKIP() << "there are no access control lists here";
  EXPECT_THAT(RunShell(set).output,
              HasSubstr("Warning: other users may read or write " + Ini() +
                        " more than intended, and its mode cannot be changed (Operation not "
                        "permitted).\nThe default is now unixdev.\n"));
}

TEST_F(Losses, AServiceThatEndsTheProgramIsAFailure) {
  for (const auto& [variant, end] :
       {std::pair<const char*, std::string>("quitting", "exited with status 0"),
        {"exiting", "exited with status 0"},
        {"crashing", "crashed with signal 6 (Aborted)"}}) {
    InstallKnownPath(variant);
    for (const char* command : {"default", "default set unixdev", "read -n 2"}) {
      const Result result = Run(command);
      EXPECT_EQ(1, result.status) << command;
      EXPECT_THAT(result.output, IsEmpty());
      EXPECT_EQ("rngctl: The known-path service " + end +
                    ".\nRun \"rngctl doctor\" to find out which file it is.\n",
                result.errors);
    }
  }
}

TEST_F(Losses, AServiceThatCrashesWhileTheDefaultIsReadIsAFailure) {
  WriteFile(Ini(), kBegin);
  InstallKnownPath("crashing_later");
  const Result result = Run("default");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: A plug-in or the known-path service crashed with signal 6 (Aborted).\n"
      "Run \"rngctl doctor\" to find out which.\n",
      result.errors);
}

TEST_F(Losses, TooFewDescriptorsAreNoFaultOfTheFile) {
  const std::string old = Settings(200);
  bool hasNotStarted = false;
  bool hasNotStored = false;
  bool hasStored = false;
  for (int limit = 3; !hasStored && limit < 64; ++limit) {  // some may be inherited
    WriteFile(Ini(), old);
    const Result result = RunShell("ulimit -n " + std::to_string(limit) + "; exec " + Rngctl() +
                                   " default set unixdev");
    const bool isStarting =
        result.errors.find("Cannot start a process: Too many open files.") != std::string::npos;
    const bool isStoring =
        result.errors.find(" (Too many open files): it reads back as ") != std::string::npos;
    const bool isNamed = result.errors.ends_with("\nAllow more with ulimit -n; 16 are enough.\n");
    EXPECT_EQ(isStarting || isStoring, isNamed) << result.errors;
    hasNotStarted = hasNotStarted || isStarting;
    hasNotStored = hasNotStored || isStoring;
    hasStored = result.status == 0;
    if (!hasStored) {
      EXPECT_EQ(old, ReadFile(Ini()));
    } else {
      EXPECT_THAT(ReadFile(Ini()), EndsWith(kEnd));
    }
  }
  EXPECT_TRUE(hasNotStarted);
  EXPECT_TRUE(hasNotStored);
  EXPECT_TRUE(hasStored);
}

TEST_F(Losses, ALinkToTheTemporaryFileKeepsItsTarget) {
  WriteFile(Ini() + ".tmp", kBegin);
  fs::create_symlink("rng.ini.tmp", Ini());
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The default could not be stored in " + Ini() + ": it leads to " + Ini() +
                ".tmp, which storing removes. Nothing was changed. Put the file in its place: mv " +
                Ini() + ".tmp " + Ini() + "\n",
            result.errors);
  EXPECT_EQ(kBegin, ReadFile(Ini()));
}

TEST_F(Losses, ADirectoryThatItsOwnerMayNotUseIsMended) {
  WriteFile(Ini(), kBegin);
  const auto setWithMode = [](unsigned mode) {
    fs::permissions(TreePath("etc"), fs::perms(mode));
    return RunForked([] {
      if (::geteuid() == 0 && ::chown(TreePath("etc").c_str(), 65534, 65534) != 0) return 126;
      const Unprivileged user;
      ::execl(Rngctl().c_str(), "rngctl", "default", "set", "unixdev", nullptr);
      return 127;
    });
  };
  EXPECT_THAT(setWithMode(0555).errors,
              EndsWith(" Nothing was changed. Fix: chmod u+rwX " + TreePath("etc") + "\n"));
  EXPECT_THAT(
      setWithMode(0311).errors,
      EndsWith("cannot be locked (Permission denied). Nothing was changed. Fix: chmod u+rwX " +
               TreePath("etc") + "\n"));
  fs::permissions(TreePath("etc"), fs::perms(0755));
  EXPECT_EQ(kBegin, ReadFile(Ini()));
}

TEST_F(Losses, ADirectoryThatOthersMayNotReadIsNotTheirsToMend) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a directory of root and another user";
  WriteFile(Ini(), kBegin);
  fs::permissions(TreePath("etc"), fs::perms(0711));
  const Result result = RunForked([] {
    const Unprivileged user;
    ::execl(Rngctl().c_str(), "rngctl", "default", "set", "unixdev", nullptr);
    return 127;
  });
  fs::permissions(TreePath("etc"), fs::perms(0755));
  EXPECT_THAT(result.errors,
              EndsWith("cannot be locked (Permission denied). Nothing was changed. " +
                       TreePath("etc") + " belongs to root. Try again with sudo.\n"));
  EXPECT_EQ(kBegin, ReadFile(Ini()));
}

TEST_F(Losses, ADiskWithoutRoomForANewFileAndItsCopyIsFull) {
  const SmallDisk disk;
  if (!disk.IsMounted()) GTEST_SKIP() << "this user cannot mount a small disk";
  disk.Fill(1);
  EXPECT_THAT(
      Run("default set unixdev").errors,
      HasSubstr("is full. Nothing was changed. Free some space on that disk, and try again."));
  EXPECT_FALSE(fs::exists(Ini()));
  disk.Fill(2);
  EXPECT_EQ(0, Run("default set unixdev").status);
}
