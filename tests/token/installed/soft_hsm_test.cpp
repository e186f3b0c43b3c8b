// rngctl with the token plug-in and SoftHSM, in a prefix of the case.

#include "tests/token/installed/soft_hsm.h"

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace {

class ToolWithSoftHsm : public InstalledTool {
 protected:
  void SetUp() override {
    InstalledTool::SetUp();
    std::filesystem::copy_file(SOFTHSM_PLUGIN, TreePath("lib/librngrutoken.so"));
    first = hsm.Add("first");
    second = hsm.Add("second");
    ASSERT_EQ(16U, first.size());
    ASSERT_NE(first, second);
  }

  static std::string Read(const std::string& arguments = "") {
    const Result result = Run("read -n 32 " + arguments);
    EXPECT_EQ(0, result.status) << result.errors;
    EXPECT_THAT(result.output, MatchesRegex("[0-9a-f]+\n"));
    EXPECT_EQ(65U, result.output.size());
    return result.output;
  }

  const SoftHsm hsm;
  std::string first;
  std::string second;
};

}  // namespace

TEST_F(ToolWithSoftHsm, ReadsTheDefaultTokenAsLongAsItIsThere) {
  ASSERT_EQ(0, Run("default set Rutoken " + first).status);
  EXPECT_NE(Read(), Read());
  hsm.TakeOut(first);
  const Result result = Run("read -n 32");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.output);
  EXPECT_THAT(result.errors, ContainsRegex("^rngctl: .*" + first + ".*[.]\n$"));
  hsm.Insert(first);
  Read();
}

TEST_F(ToolWithSoftHsm, ReadsAnyTokenOfTheKind) {
  hsm.TakeOut(first);
  Read("Rutoken");
  hsm.TakeOut(second);
  const Result result = Run("read -n 32 Rutoken");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("There is no usable generator \"Rutoken\""));
}

TEST_F(ToolWithSoftHsm, ListsALineForEachToken) {
  const std::string output = Run("list").output;
  EXPECT_THAT(output, ContainsRegex(first + ".*first"));
  EXPECT_THAT(output, ContainsRegex(second + ".*second"));
}

TEST_F(ToolWithSoftHsm, ShowsTheTokensInTheDoctor) {
  const Result result = Run("doctor Rutoken");
  EXPECT_EQ(0, result.status) << result.output;
  EXPECT_THAT(result.output, ContainsRegex("Rutoken, device " + first + ": .*first.*SoftHSM v2"));
  EXPECT_THAT(result.output, ContainsRegex("Rutoken, device " + second + ": .*second.*SoftHSM v2"));
}
