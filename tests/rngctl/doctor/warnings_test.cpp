#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::StartsWith;

namespace fs = std::filesystem;

TEST_F(Doctor, WarnsOfAFunctionThatIsMissing) {
  InstallPlugin("unixdev", "unresolved_function");
  const json row = ExamineKind("unixdev");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It needs the function \"GetSobolRng\","));
}

TEST_F(Doctor, WarnsOfAFunctionThatOnlyThisProgramHas) {
  InstallPlugin("dsdr", "breaking/borrows_a_function");
  const json row = ExamineKind("dsdr");
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It needs the function \"elf_version\","));
}

TEST_F(Doctor, WarnsOfAPluginWithoutCapabilities) {
  InstallPlugin("sobol", "flagless");
  const json row = ExamineKind("sobol");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It reports no capability"));
}

TEST_F(Doctor, WarnsOfAPluginThatIsNotGoneWhenItIsClosed) {
  InstallPlugin("biocore", "sticky");
  const json row = ExamineKind("biocore");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It stays in the process"));
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
