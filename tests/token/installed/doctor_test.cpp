// rngctl with the token plug-in and the mock module.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"
#include "tests/token/mock_tokens.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

class ToolWithTokens : public InstalledTool {
 protected:
  void SetUp() override {
    InstalledTool::SetUp();
    std::filesystem::copy_file(MOCK_PLUGIN, TreePath("lib/librngrutoken.so"));
  }

  std::string Doctor(std::initializer_list<std::string> lines, int status) {
    tokens.Set(lines);
    const Result result = Run("doctor Rutoken");
    EXPECT_EQ(status, result.status) << result.errors;
    return result.output;
  }

  const MockTokens tokens;
};

}  // namespace

TEST_F(ToolWithTokens, DoctorShowsEachToken) {
  const std::string output =
      Doctor({"slot id=0 label=One", "slot id=1 serial=B2 label=Two model=X"}, 0);
  EXPECT_THAT(output, ContainsRegex("Rutoken, device A1: .*One.*M1"));
  EXPECT_THAT(output, ContainsRegex("Rutoken, device B2: .*Two.*X"));
}

TEST_F(ToolWithTokens, DoctorSaysThatThereIsNoToken) {
  EXPECT_THAT(Doctor({"slot id=0 present=no"}, 1), ContainsRegex("No usable token matches"));
}

TEST_F(ToolWithTokens, DoctorSaysWhyATokenDoesNotMatch) {
  const std::string output = Doctor({"slot id=0 label=Foreign manufacturer=Other"}, 1);
  EXPECT_THAT(output, HasSubstr("Foreign"));
  EXPECT_THAT(output, ContainsRegex("manufacturer.*Other"));
}

TEST_F(ToolWithTokens, DoctorNamesATokenWithoutAGenerator) {
  EXPECT_THAT(Doctor({"slot id=0", "slot id=1 serial=B2 label=Dull rng=no"}, 0),
              ContainsRegex("Dull.*generator"));
}

TEST_F(ToolWithTokens, DoctorNamesATokenThatRequiresAPin) {
  EXPECT_THAT(Doctor({"slot id=0 label=Locked pin=yes"}, 1), ContainsRegex("Locked.*PIN"));
}

TEST_F(ToolWithTokens, DoctorNamesTokensWithOneSerial) {
  const std::string output =
      Doctor({"slot id=0 label=One", "slot id=1 label=Two", "slot id=2 serial=C3"}, 0);
  EXPECT_THAT(output, ContainsRegex("problem: .*A1"));
  EXPECT_THAT(output, Not(HasSubstr("device A1")));
  EXPECT_THAT(output, HasSubstr("device C3"));
}

TEST_F(ToolWithTokens, DoctorNamesATokenWhoseSerialCannotBeStored) {
  EXPECT_THAT(Doctor({"slot id=0", "slot id=1 label=Odd serial=a%3Db"}, 0),
              ContainsRegex("problem: .*Odd"));
}

TEST_F(ToolWithTokens, ListHasALineForEachToken) {
  tokens.Set({"slot id=0 label=One", "slot id=1 serial=B2 label=Two"});
  const std::string output = Run("list").output;
  EXPECT_THAT(output, HasSubstr("\nRutoken, device A1: Token \"One\", model M1\n"));
  EXPECT_THAT(output, HasSubstr("\nRutoken, device B2: Token \"Two\", model M1\n"));
}

TEST_F(ToolWithTokens, ReadFailsIfTheTokenIsMissing) {
  tokens.Set({"slot id=0", "slot id=1 serial=B2"});
  ASSERT_EQ(0, Run("default set Rutoken B2").status);
  EXPECT_EQ(0, Run("read -n 32").status);
  tokens.Set({"slot id=0"});
  const Result result = Run("read -n 32");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.output);
  EXPECT_THAT(result.errors, HasSubstr("B2"));
}

TEST_F(ToolWithTokens, ReadFailsWhenTheTokenIsTakenOut) {
  tokens.Set({"slot id=0 bytes=100000"});
  const Result result = Run("read -n 1000000 Rutoken");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("\"Rutoken\""));
}

// The module's log is no part of what is checked.
TEST_F(ToolWithTokens, CheckFindsNoFault) {
  ::unsetenv("MOCK_LOG");
  tokens.Set({"slot id=0", "slot id=1 serial=B2"});
  const Result result = Run("check " + TreePath("lib/librngrutoken.so"));
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr(" 0 failed, 0 warnings")) << result.output;
}
