// The commands with the device "hwrng" of the real plug-in.

#include "tests/rngctl/installed_tool.h"

#include <gmock/gmock.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kWorking[] = "/dev/urandom";
constexpr char kLine[] =
    "unixdev, device hwrng: The kernel's hardware generator /dev/hwrng, source tested\n";

Result RunWith(const std::string& device, const std::string& arguments) {
  return RunShell(WithHardware(device) + Rngctl() + " " + arguments);
}

}  // namespace

class RngctlHardware : public InstalledTool {};

TEST_F(RngctlHardware, IsListedWithItsSource) {
  EXPECT_THAT(RunWith(kWorking, "list").output, EndsWith("generator\n\n" + std::string(kLine)));
  EXPECT_THAT(RunWith(kWorking, "doctor unixdev").output, HasSubstr(kLine));
  EXPECT_THAT(RunWith("", "list").output, Not(HasSubstr("hwrng")));
  EXPECT_THAT(RunWith("", "doctor unixdev").output, Not(HasSubstr("hwrng")));
}

TEST_F(RngctlHardware, IsTheDefaultAndIsRead) {
  const Result stored = RunWith(kWorking, "default set unixdev hwrng");
  EXPECT_EQ("The default is now unixdev, device hwrng.\n", stored.output);
  EXPECT_THAT(stored.errors, IsEmpty());
  const Result drawn = RunWith(kWorking, "read -n 32");
  EXPECT_EQ(0, drawn.status);
  EXPECT_EQ(65U, drawn.output.size());
  EXPECT_EQ(0, RunWith(kWorking, "doctor unixdev").status);
}

TEST_F(RngctlHardware, IsExaminedByTheTest) {
  const Result result = RunWith(kWorking, "test unixdev --device hwrng -n 10000 --restarts 3");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr("device      hwrng\n"));
}

TEST_F(RngctlHardware, ThatIsMissingIsAWarningAtFirstAndLaterAFailure) {
  const Result stored = RunWith("", "default set unixdev hwrng");
  EXPECT_EQ(0, stored.status);
  EXPECT_THAT(stored.errors, HasSubstr("refuses the device \"hwrng\""));
  const Result drawn = RunWith("", "read -n 32");
  EXPECT_EQ(1, drawn.status);
  EXPECT_THAT(drawn.errors,
              HasSubstr("The default generator \"unixdev\" refuses the device \"hwrng\".\n"));
  EXPECT_THAT(drawn.output, IsEmpty());
  EXPECT_THAT(RunWith("", "list").output,
              HasSubstr("\nunixdev, problem: There is no /dev/hwrng. "));
  const Result back = RunWith(kWorking, "read -n 32");
  EXPECT_EQ(0, back.status);
}

TEST_F(RngctlHardware, ThatThisUserMayNotReadIsExplained) {
  RunWith(kWorking, "default set unixdev hwrng");
  const Result result = RunWith("refused", "doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("the generator refuses the device \"hwrng\"\n"));
  EXPECT_THAT(result.output, HasSubstr("\nDefault: Follow the advice for unixdev, store another "));
  EXPECT_THAT(
      result.output,
      HasSubstr("\nunixdev, problem: This user may not read /dev/hwrng. Add a udev rule that "
                "lets a group read it, and add this user to the group.\n"));
}

TEST_F(RngctlHardware, ThatGivesZerosIsRefused) {
  const Result result = RunWith("/dev/zero", "read unixdev --device hwrng -n 32");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, IsEmpty());
}
