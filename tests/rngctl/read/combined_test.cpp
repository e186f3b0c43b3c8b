// "rngctl read --from": several generators, or no bytes at all.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::MatchesRegex;

namespace fs = std::filesystem;

namespace {

std::size_t CountKeys() {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(TreePath("keys")), {}));
}

// A draw that fails after the first piece would otherwise have shown some bytes.
void ExpectNothing(const Result& result, const std::string& message) {
  EXPECT_EQ(1, result.status) << message;
  EXPECT_EQ("", result.output) << message;
  EXPECT_THAT(result.errors, HasSubstr(message));
}

}  // namespace

TEST_F(RngctlTest, ReadsFromSeveralGenerators) {
  InstallPlugin("dsdr", "stub");
  const Result first = Run("read --from unixdev,dsdr -n 32");
  const Result second = Run("read --from unixdev,dsdr -n 32");
  EXPECT_EQ(0, first.status);
  EXPECT_EQ("", first.errors);
  EXPECT_THAT(first.output, MatchesRegex("[0-9a-f]{64}\n"));
  EXPECT_NE(first.output, second.output);
  EXPECT_EQ("100000\n", Run("read --from unixdev,dsdr -n 100000 --raw | wc -c").output);
  EXPECT_EQ("100000\n",
            Run("read --from unixdev,dsdr -n 100000 --base64 | base64 -d | wc -c").output);
  EXPECT_EQ("\n", Run("read --from unixdev,dsdr -n 0").output);
}

TEST_F(RngctlTest, CombinesWithTheDeviceThatIsNamed) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  EXPECT_EQ(
      0, Run("read --from unixdev,dsdr:rr -n 8").status);  // the bytes of the others are not random
  ExpectNothing(Run("read --from unixdev,dsdr:X9 -n 8"),
                "rngctl: The generator \"dsdr\" refuses the device \"X9\".\n"
                "\"rngctl list\" shows the devices of generators that report them, and their "
                "problems.\n");
}

TEST_F(RngctlTest, AGeneratorOfSeveralThatCannotBeUsedEndsTheDraw) {
  const std::vector<std::pair<std::string, std::string>> failures = {
      {"failing_device",
       "rngctl: The generator \"dsdr\" failed, or the draw was cancelled.\n"
       "Run \"rngctl doctor\" to find out why.\n"},
      {"drawing/Constant",
       "rngctl: The generator \"dsdr\" returned bytes that are not random (nine equal bytes in a "
       "row).\nDo not use its bytes. \"rngctl test\" examines it.\n"},
      {"drawing/TurnConstant", "returned bytes that are not random"},
      {"drawing/Crash", "rngctl: A plug-in crashed with signal 11"},
      {"drawing/ExitAtOnce", "rngctl: A plug-in exited with status 0"},
      {"names_another_kind",
       "rngctl: The generator \"dsdr\" is not usable now.\n"
       "Run \"rngctl list\" to see the usable ones, and \"rngctl doctor\" to find out why it is "
       "missing.\n"},
  };
  for (const auto& [variant, message] : failures) {
    fs::remove(TreePath("lib/librngdsdr.so"));
    InstallPlugin("dsdr", variant);
    for (const char* list : {"dsdr,unixdev", "unixdev,dsdr"}) {
      const std::string read = std::string("read -n 5000 --from ") + list;
      ExpectNothing(Run(read), message);
      WriteFile(TreePath("keys/key"), "old");
      ExpectNothing(
          Run(read + " -o " + TreePath("keys/key") + " --record " + TreePath("keys/record")),
          message);
      EXPECT_EQ("old", ReadFile(TreePath("keys/key")));
      EXPECT_EQ(1U, CountKeys()) << message;
    }
  }
}

TEST_F(RngctlTest, AnExceptionOfOneOfSeveralIsASentence) {
  InstallPlugin("dsdr", "throws_own_class");
  const Result result =
      RunShell("RNG_THROW_IN_DRAW=1 " + Rngctl() + " read --from unixdev,dsdr -n 4");
  ExpectNothing(
      result,
      "rngctl: The generator \"dsdr\" threw an exception (a fault of its own).\nRun \"rngctl "
      "doctor\" to find out why.\n");
}

TEST_F(RngctlTest, FewerGeneratorsAreEnoughOnlyIfTheUserSaysSo) {
  InstallPlugin("dsdr", "failing_device");
  const Result result = Run("read --from dsdr,unixdev,sobol -n 8 --need 1");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(17U, result.output.size());
  EXPECT_EQ(
      "rngctl: The generator \"dsdr\" failed, or the draw was cancelled. It is not part of the "
      "result.\nrngctl: The generator \"sobol\" is not usable now. It is not part of the result.\n",
      result.errors);
  ExpectNothing(
      Run("read --from dsdr,unixdev,sobol -n 8 --need 2"),
      "rngctl: Fewer than 2 generators can be used. The generator \"dsdr\" failed, or the "
      "draw was cancelled. The generator \"sobol\" is not usable now.\nRun \"rngctl list");
  ExpectNothing(
      Run("read --from dsdr,sobol -n 8 --need 1"),
      "rngctl: None of the generators can be used. The generator \"dsdr\" failed, or the draw was "
      "cancelled. The generator \"sobol\" is not usable now.\n");
  ExpectNothing(
      Run("read --from unixdev,sobol,accord -n 8 --need 2"),
      "rngctl: Fewer than 2 generators can be used. The generator \"sobol\" is not usable "
      "now. The generator \"accord\" is not usable now.\n");
}

TEST_F(RngctlTest, AGeneratorThatTurnsBadIsLeftOutFromThenOn) {
  InstallPlugin("dsdr", "drawing/TurnConstant");
  const Result result = Run("read --from dsdr,unixdev -n 5000 --need 1 --raw | wc -c");
  EXPECT_EQ("5000\n", result.output);
  EXPECT_THAT(result.errors, HasSubstr(" It was left out of some of the draws.\n"));
}

TEST_F(RngctlTest, AGeneratorThatFailedInBetweenIsNamedWithItsLastFailure) {
  InstallPlugin("dsdr", "drawing/ThrowsTwice");
  const Result result = Run("read --from dsdr,unixdev -n 20000 --need 1 --raw | wc -c");
  EXPECT_EQ("20000\n", result.output);
  EXPECT_EQ(
      "rngctl: The generator \"dsdr\" threw an exception (draw 3 ?[2J?\xEF\xBF\xBD). It was left "
      "out of some of the draws.\n",
      result.errors);
}

TEST_F(RngctlTest, ANeedMustBePossible) {
  for (const char* need : {"0", "3", "18446744073709551615"}) {
    const Result result = Run(std::string("read --from unixdev,dsdr -n 8 --need ") + need);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("rngctl: --need must be a number from 1 to 2, the number of generators in --from.\n",
              result.errors);
  }
}

TEST_F(RngctlTest, ReadRefusesOptionsThatContradictEachOther) {
  const std::vector<std::pair<std::string, std::string>> refusals = {
      {"unixdev --from unixdev", "NAME excludes --from"},
      {"--device x --from unixdev", "--device excludes --from"},
      {"--unchecked --from unixdev", "--unchecked excludes --from"},
      {"--need 1", "--need requires --from"},
      {"--from unixdev,dsdr --need 02", "\"02\" is not a decimal number"},
      {"--from ''", "--from: The list of sources \"\" contains an empty item."},
      {"--from unixdev,unixdev:x", "The generator \"unixdev\" is named twice."},
      {"unixdev --record ''", "the file name is empty"},
      {"unixdev --record -", "the record cannot be written to standard output: name a file"},
  };
  for (const auto& [options, message] : refusals) {
    const Result result = Run("read -n 8 " + options);
    EXPECT_EQ(2, result.status) << options;
    EXPECT_THAT(result.errors, HasSubstr(message));
    EXPECT_EQ("", result.output);
  }
}

// The second draw of that plug-in would fail.
TEST_F(RngctlTest, AsksTheUserOnceAlsoAmongSeveral) {
  InstallPlugin("biokbd", "drawing/NeedsUser");
  EXPECT_EQ("1048576\n", Run("read --from unixdev,biokbd -n 1048576 --raw | wc -c").output);
  ExpectNothing(Run("read --from unixdev,biokbd -n 1048577"),
                "rngctl: One of the generators needs the user, so at most 1048576 bytes");
}

TEST_F(RngctlTest, AsksNobodyIfAnotherGeneratorIsMissing) {
  InstallPlugin("dsdr", "failing_device");
  ExpectNothing(Run("read --from dsdr,sobol -n 8"),
                "rngctl: The generator \"sobol\" is not usable now.\n");
}

TEST_F(RngctlTest, WhatIsTooLargeToBeHeldNeedsAFile) {
  ExpectNothing(Run("read --from unixdev -n 16777217"),
                "at most 16777216 bytes can be written to anything but a file, because they are "
                "held until all have "
                "been drawn.\nWrite them to a file with -o.\n");
  const Result result = Run("read --from unixdev -n 16777217 --raw -o " + TreePath("key"));
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(16777217U, fs::file_size(TreePath("key")));
}
