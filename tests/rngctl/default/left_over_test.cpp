// What "default set" does with the file that an interrupted process left, also where the settings are missing.

#include "tests/rngctl/default/settings_of_tree.h"
#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <unistd.h>

using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

class LeftOver : public RngctlTest {};

}  // namespace

TEST_F(LeftOver, DoesNotFinishWhatAnotherUserBegan) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  WriteFile(Temporary(), "[Devices]\nRandomNumberGeneratorType=sobol\n");
  ASSERT_EQ(0, ::chown(Temporary().c_str(), kAnotherUser, kAnotherUser));
  const Result result = Run("default set unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr(Temporary() + " belongs to the user 4711, and storing"));
  EXPECT_FALSE(fs::exists(Ini()));
}

TEST_F(LeftOver, AnEmptyFileIsNoUnfinishedOne) {
  WriteFile(Temporary(), "");
  const Result result = Run("default set unixdev");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, IsEmpty());
}

// Somebody else may have opened it for writing when its mode allowed that.
TEST_F(LeftOver, IsReplacedRatherThanWrittenTo) {
  WriteFile(Ini(), "[Devices]\n");
  WriteFile(Temporary(), "left over");
  std::ifstream opened(Temporary());
  EXPECT_EQ(0, Run("default set unixdev").status);
  std::string content;
  std::getline(opened, content);
  EXPECT_EQ("left over", content);
}
