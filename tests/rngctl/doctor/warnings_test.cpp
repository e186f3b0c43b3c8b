#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace fs = std::filesystem;

TEST_F(Doctor, WarnsOfAFunctionThatIsMissing) {
  InstallPlugin("unixdev", "unresolved_function");
  const json row = ExamineKind("unixdev");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_EQ(
      "It needs the function \"GetSobolRng\", which is missing: calling it terminates the program "
      "unless another plug-in provides it.",
      row.at("warnings")[0]);
}

TEST_F(Doctor, WarnsOfAFunctionThatOnlyThisProgramHas) {
  InstallPlugin("dsdr", "breaking/borrows_a_function");
  const json row = ExamineKind("dsdr");
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_EQ(
      "It needs the function \"elf_version\", which is missing: calling it terminates the program "
      "unless another plug-in provides it.",
      row.at("warnings")[0]);
}

TEST_F(Doctor, WarnsOfAPluginWithoutCapabilities) {
  InstallPlugin("sobol", "flagless");
  const json row = ExamineKind("sobol");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_EQ(
      "It reports no capability flags: programs that list generators by capability do not find it; "
      "programs that ask for it by name do.",
      row.at("warnings")[0]);
}

TEST_F(Doctor, WarnsOfAPluginThatIsNotGoneWhenItIsClosed) {
  InstallPlugin("biocore", "sticky");
  const json row = ExamineKind("biocore");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_EQ(
      "It stays in the process after it is closed, so the next start finds it in the state in "
      "which it was left.",
      row.at("warnings")[0]);
}

TEST_F(Doctor, WarnsOfAFileForThisProcessorThatComesBeforeTheOther) {
  InstallPlugin("dsdr", "stub");
  const std::string folder = TreePath("lib/glibc-hwcaps/x86-64-v2");
  fs::create_directories(folder);
  fs::copy(TreePath("lib/librngdsdr.so"), folder);
  const json row = ExamineKind("dsdr");
  EXPECT_EQ(folder + "/librngdsdr.so", row.at("file"));
  EXPECT_EQ(json({"The loader opens " + folder + "/librngdsdr.so instead of " +
                  TreePath("lib/librngdsdr.so") + ". Remove the one that you do not need."}),
            row.at("warnings"));
}
