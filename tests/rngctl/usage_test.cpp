#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

class RngctlWrongUsage : public RngctlTest, public testing::WithParamInterface<const char*> {};

TEST_P(RngctlWrongUsage, IsRefusedWithASentence) {
  const Result result = Run(GetParam());
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, StartsWith("rngctl: "));
  EXPECT_FALSE(fs::exists(TreePath(kSettingsFile)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, RngctlWrongUsage,
    testing::Values("", "nosuch", "list more", "read unixdev", "read unixdev -n",
                    "read unixdev -n x", "read unixdev -n -1", "read unixdev -n 010",
                    "read unixdev -n 18446744073709551616", "read unixdev -n 1 --raw --hex",
                    "read unixdev -n 1 --hex --base64", "read unixdev -n 1 --raw --base64",
                    "read unixdev -n 1 -o ''", "read unixdev -n 1 -o -",
                    "read unixdev -n 1 --force", "read unixdev -n 1 --raw -o ''", "default nosuch",
                    "default --mask x", "default --mask -1", "default --mask 010",
                    "default --mask 4 set a", "default set", "default set a b c", "default set a=b",
                    "default set ' a'", "default set 'a '", "default set a 'x '",
                    "default set a ' x'", "default set 123456789012345678",
                    "default set a 123456789012345678"));

TEST_F(RngctlTest, ANumberThatIsTooLargeIsStillADecimalNumber) {
  EXPECT_THAT(Run("read unixdev -n 18446744073709551616").errors,
              StartsWith("rngctl: -n: \"18446744073709551616\" is too large\n"));
  EXPECT_THAT(Run("read unixdev -n 18446744073709551616k").errors,
              HasSubstr("not a decimal number"));
}

TEST_F(RngctlTest, AMisspeltCommandIsNamed) {
  EXPECT_THAT(Run("chekc x").errors, StartsWith("rngctl: There is no command \"chekc\"\n"));
  EXPECT_THAT(Run("list more").errors, HasSubstr("more"));
  EXPECT_THAT(Run("--json").errors, StartsWith("rngctl: A subcommand is required\n"));
  EXPECT_THAT(Run("--json list").errors,
              StartsWith("rngctl: The following argument was not expected: --json\n"));
}

TEST_F(RngctlTest, HelpThatCannotBeWrittenIsAFailure) {
  for (const char* option : {"--help", "--version", "read --help"}) {
    const Result result = RunShell(Rngctl() + " " + option + " >/dev/full");
    EXPECT_EQ(1, result.status) << option;
    EXPECT_EQ("rngctl: Cannot write to standard output.\n", result.errors) << option;
  }
}

TEST_F(RngctlTest, AStartThatCannotTakeTheLockIsNotStopped) {
  const Result result =
      RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/refuses_lock.so " + Rngctl() + " list");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              StartsWith("refused\nrngctl: A plug-in or the system failed: boost: "));
}

TEST_F(RngctlTest, HelpAndVersionAreResults) {
  const Result help = Run("--help");
  EXPECT_EQ(0, help.status);
  for (const char* command : {"list", "read", "default"}) {
    EXPECT_THAT(help.output, HasSubstr(command));
  }
  EXPECT_EQ("rngctl 1.0.0\n", Run("--version").output);
}
