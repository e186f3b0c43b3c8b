// What other users may change matters to the exit status where root's processes use it, whoever asks.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

constexpr auto kForEveryone = fs::perms(0777);

class DoctorOnRootsPaths : public Doctor {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make an installation of root's";
    Doctor::SetUp();
    InstallUnixDev();
    WriteFile(TreePath("etc/rng.ini"), "[Devices]\n");
    fs::create_directories(OwnPath());
  }

  static std::string OwnPath() { return TreePath("etc/own"); }

  static Result RunAsUser(const std::string& environment) {
    const std::string command = "exec env " + environment + " " + Rngctl() + " doctor --json";
    return RunForked([&command] {
      const Unprivileged user;
      ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      return 127;
    });
  }

  static bool Finds(const std::string& path, const Result& result) {
    const json report = json::parse(result.output);
    for (const json& finding : report.at("permissions")) {
      if (finding.at("path") == path) return true;
    }
    return false;
  }
};

}  // namespace

TEST_F(DoctorOnRootsPaths, MatterToAUserWhoAsks) {
  EXPECT_EQ(0, RunAsUser("A=1").status);
  fs::permissions(TreePath("lib"), kForEveryone);
  const Result result = RunAsUser("A=1");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("Other users can change 1 path"));
}

TEST_F(DoctorOnRootsPaths, AreNotInTheLibraryPathOfAUser) {
  InstallPlugin("dsdr", "stub");
  fs::rename(TreePath("lib/librngdsdr.so"), OwnPath() + "/librngdsdr.so");
  fs::permissions(OwnPath(), kForEveryone);
  fs::permissions(OwnPath() + "/librngdsdr.so", kForEveryone);
  const Result result = RunAsUser("LD_LIBRARY_PATH=" + OwnPath());
  EXPECT_TRUE(Finds(OwnPath(), result)) << result.output;
  EXPECT_TRUE(Finds(OwnPath() + "/librngdsdr.so", result)) << result.output;
  EXPECT_EQ(0, result.status) << result.errors;
}

// The directory above both is found twice, first because of the user's.
TEST_F(DoctorOnRootsPaths, MayLeadThroughADirectoryOfTheLibraryPath) {
  fs::permissions(TreePath("etc"), kForEveryone);
  const Result result = RunAsUser("LD_LIBRARY_PATH=" + OwnPath());
  EXPECT_TRUE(Finds(TreePath("etc"), result)) << result.output;
  EXPECT_EQ(1, result.status);
}

TEST_F(DoctorOnRootsPaths, CountOnceWhateverIsWrongWithThem) {
  fs::permissions(TreePath("lib"), kForEveryone);
  ASSERT_EQ(0, ::lchown(TreePath("lib").c_str(), 54321, 0));  // nobody has that account
  EXPECT_THAT(RunAsUser("A=1").errors, HasSubstr("Other users can change 1 path that root's"));
}

TEST_F(DoctorOnRootsPaths, IncludeTheProgramsThatPluginsStart) {
  const std::string program = TreePath("libexec/rngaggregator/rng-gather");
  fs::create_directories(TreePath("libexec/rngaggregator"));
  WriteFile(program, "");
  EXPECT_EQ(0, RunAsUser("A=1").status);
  fs::permissions(program, kForEveryone);
  const Result result = RunAsUser("A=1");
  EXPECT_TRUE(Finds(program, result)) << result.output;
  EXPECT_EQ(1, result.status);
}

// The loader looks there before the directory itself.
TEST_F(DoctorOnRootsPaths, IncludeTheDirectoryForThisProcessor) {
  const std::string folder = TreePath("lib/glibc-hwcaps/x86-64-v2");
  fs::create_directories(folder);
  fs::permissions(folder, kForEveryone);
  const Result result = RunAsUser("A=1");
  EXPECT_TRUE(Finds(folder, result)) << result.output;
  EXPECT_EQ(1, result.status);
}
