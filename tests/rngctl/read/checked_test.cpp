// "rngctl read" stops at bytes that are not random, and draws from the device that is named.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kDoNotUse[] =
    "Do not use its bytes, including those that it returned before. \"rngctl test\" examines it.\n";

}  // namespace

TEST_F(RngctlTest, ReadRefusesBytesThatAreNotRandom) {
  InstallPlugin("sobol");  // its bytes are all A5
  ASSERT_EQ(0, Run("default set sobol").status);
  for (const std::string name : {"sobol", ""}) {
    const Result result = Run("read -n 9 " + name);
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("", result.output);
    EXPECT_EQ(
        "rngctl: The generator \"sobol\" returned bytes that are not random (nine equal bytes in "
        "a row) after 0 bytes.\n" +
            std::string(kDoNotUse),
        result.errors);
  }
}

TEST_F(RngctlTest, ReadRefusesBytesOfAUserThatAreNotRandom) {
  InstallPlugin("biokbd");
  const Result result = Run("read -n 32 biokbd");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.output);
  EXPECT_THAT(result.errors, HasSubstr("(nine equal bytes in a row)"));
}

TEST_F(RngctlTest, AFileIsNotReplacedByBytesThatAreNotRandom) {
  InstallPlugin("dsdr", "drawing/TurnConstant");
  WriteFile(TreePath("key"), "old");
  const Result result = Run("read dsdr -n 5000 -o " + TreePath("key"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr(" (nine equal bytes in a row) after 768 bytes.\n"));
  EXPECT_EQ("old", ReadFile(TreePath("key")));
}

TEST_F(RngctlTest, EveryKindOfDefectHasItsName) {
  InstallPlugin("dsdr", "drawing/RepeatBlocks");
  EXPECT_THAT(Run("read dsdr -n 5000").errors,
              HasSubstr(" (16 bytes equal to the 16 before them) after 768 bytes.\n"));
  InstallPlugin("dsdr", "drawing/PreferOneValue");
  EXPECT_THAT(Run("read dsdr -n 5000").errors,
              HasSubstr(" (one value far too often in 512 bytes) after 768 bytes.\n"));
}

TEST_F(RngctlTest, UncheckedBytesAreTheGeneratorsOwn) {
  InstallPlugin("sobol");
  const Result result = Run("read sobol -n 9 --unchecked");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("a5a5a5a5a5a5a5a5a5\n", result.output);
}

TEST_F(RngctlTest, ReadsFromTheDeviceThatIsNamed) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  EXPECT_EQ("7231\n", Run("read dsdr -n 2").output);
  EXPECT_EQ("7232\n", Run("read dsdr -n 2 --device r2").output);
  const Result result = Run("read dsdr -n 2 --device 'r3\033'");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              StartsWith("rngctl: The generator \"dsdr\" refuses the device \"r3?\".\n"));
}

TEST_F(RngctlTest, SelectsNoDeviceUnlessOneIsNamed) {
  InstallPlugin("dsdr", "breaking/refuses_the_empty_device");
  EXPECT_EQ(0, Run("read dsdr -n 2").status);
}

TEST_F(RngctlTest, AnotherDeviceThanTheDefaultsCanBeNamed) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  ASSERT_EQ(0, Run("default set dsdr r3").status);
  EXPECT_THAT(Run("read -n 2").errors,
              StartsWith("rngctl: The default generator \"dsdr\" refuses the device \"r3\".\n"));
  EXPECT_EQ("7232\n", Run("read -n 2 --device r2").output);
}

TEST_F(RngctlTest, AnEmptyDeviceIsWrongUsage) {
  const Result result = Run("read unixdev -n 2 --device ''");
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.errors, HasSubstr("the hardware identifier is empty"));
}
