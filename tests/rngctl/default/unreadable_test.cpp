// What "default" and "read" say about a settings file that exists and cannot be read.

#include "tests/rngctl/default/settings_of_tree.h"
#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

void ExpectUnreadable(const Result& result, const std::string& why) {
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors,
              AllOf(StartsWith("rngctl: It is unknown which default is configured: "),
                    HasSubstr(Ini() + " cannot be read (" + why)));
}

}  // namespace

class UnreadableSettings : public RngctlTest {
 protected:
  void SetUp() override {
    RngctlTest::SetUp();
    fs::create_directory(TreePath("etc"));
  }

  static void ExpectRefusals(const std::string& why) {
    ExpectUnreadable(Run("default"), why);
    ExpectUnreadable(Run("read -n 2"), why);
    EXPECT_EQ(0, Run("read unixdev -n 2").status);
    const Result set = Run("default set unixdev");
    EXPECT_EQ(1, set.status);
    EXPECT_THAT(set.errors, StartsWith("rngctl: The default could not be stored in " + Ini()));
  }

  static Result RunAsUser(const std::string& arguments) {
    return RunForked([&arguments] {
      const Unprivileged user;
      const std::string command = "exec " + Rngctl() + " " + arguments;
      ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      return 127;
    });
  }
};

TEST_F(UnreadableSettings, AFifoIsNotOpened) {
  ASSERT_EQ(0, ::mkfifo(Ini().c_str(), 0666));
  ExpectRefusals("it is a named pipe (FIFO)). Replace it with a regular file, or remove it.");
  EXPECT_THAT(Run("default set unixdev").errors,
              HasSubstr(": " + Ini() + " is a named pipe (FIFO). Nothing was changed. "));
}

TEST_F(UnreadableSettings, ASocketIsNamed) {
  ASSERT_EQ(0, ::mknod(Ini().c_str(), S_IFSOCK | 0600, 0));
  ExpectRefusals("it is a socket). ");
  EXPECT_THAT(Run("default set unixdev").errors,
              HasSubstr(": " + Ini() + " is a socket. Nothing was changed. "));
}

TEST_F(UnreadableSettings, TooFewDescriptorsAreNotReportedAsNoDefault) {
  WriteFile(Ini(), "[Devices]\nRandomNumberGeneratorType=unixdev\n");
  std::string answered;
  for (int limit = 3; limit <= 12; ++limit) {
    const Result result =
        RunShell("ulimit -n " + std::to_string(limit) + "; exec " + Rngctl() + " default");
    if (result.status == 0) answered = result.output;
    EXPECT_THAT(result.output, AnyOf(IsEmpty(), StartsWith("configured  unixdev\n"))) << limit;
  }
  EXPECT_EQ("configured  unixdev\ndefault     unixdev\nloaded      yes\n", answered);
}

// They would wait for ever if they read the settings themselves.
TEST_F(UnreadableSettings, NoPluginIsStartedBeforeTheFileIsKnown) {
  ASSERT_EQ(0, ::mkfifo(Ini().c_str(), 0666));
  InstallPlugin("dsdr", "prints_start");
  for (const std::string command : {"default", "read -n 2"}) {
    EXPECT_THAT(Run(command).errors, StartsWith("rngctl: It is unknown which")) << command;
  }
}

TEST_F(UnreadableSettings, ADeviceIsNotOpened) {
  fs::create_symlink("/dev/zero", Ini());
  ExpectRefusals("it is a device). ");
}

TEST_F(UnreadableSettings, ADirectoryIsNotAnEmptyFile) {
  fs::create_directory(Ini());
  ExpectRefusals("it is a directory). ");
}

TEST_F(UnreadableSettings, AFileWithoutEndIsNotReadToIt) {
  WriteFile(Ini(), "[Devices]\n");
  fs::resize_file(Ini(), std::uintmax_t{1} << 40U);
  ExpectRefusals("it does not end within 16 MiB). ");
}

TEST_F(UnreadableSettings, ALargeFileIsRead) {
  WriteFile(Ini(), "[Devices]\nRandomNumberGeneratorType=unixdev\n" + std::string(1U << 20U, '\n'));
  EXPECT_EQ(0, Run("default").status);
}

TEST_F(UnreadableSettings, ADanglingLinkIsNotAnAbsentFile) {
  fs::create_symlink(TreePath("gone"), Ini());
  ExpectRefusals("it is a dangling symbolic link). ");
  EXPECT_FALSE(fs::exists(TreePath("gone")));
}

TEST_F(UnreadableSettings, AServiceThatThrowsIsNamed) {
  InstallKnownPath("throwing");
  for (const std::string command : {"default", "read -n 2", "default set unixdev"}) {
    const Result result = Run(command);
    EXPECT_EQ(1, result.status) << command;
    EXPECT_THAT(result.errors,
                StartsWith("rngctl: The known-path service failed: no directories today.\n"))
        << command;
  }
}

TEST_F(UnreadableSettings, TheModeOfTheFileAndItsOwnerAreNamed) {
  WriteFile(Ini(), "[Devices]\nRandomNumberGeneratorType=unixdev\n");
  fs::permissions(Ini(), fs::perms(0));
  const Result result = RunAsUser("default");
  ExpectUnreadable(result,
                   "Permission denied: " + Ini() + " has mode 0000 and belongs to the user ");
  EXPECT_THAT(result.errors, HasSubstr(": chmod a+r " + Ini() + "\n"));
  ExpectUnreadable(RunAsUser("read -n 2"), "Permission denied: ");
}

TEST_F(UnreadableSettings, TheDirectoryThatCannotBeSearchedIsNamed) {
  WriteFile(Ini(), "[Devices]\nRandomNumberGeneratorType=unixdev\n");
  fs::permissions(TreePath("etc"), fs::perms(0600));
  const Result result = RunAsUser("default");
  fs::permissions(TreePath("etc"), fs::perms(0700));
  ExpectUnreadable(result,
                   "Permission denied: " + TreePath("etc") + " has mode 0600 and belongs to ");
  EXPECT_THAT(result.errors, HasSubstr(": chmod a+x " + TreePath("etc") + "\n"));
}
