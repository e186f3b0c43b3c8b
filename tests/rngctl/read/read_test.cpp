#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

TEST_F(RngctlTest, ReadsFromANamedGeneratorAsHexadecimal) {
  const Result first = Run("read unixdev -n 32");
  const Result second = Run("read unixdev -n 32 --hex");
  EXPECT_EQ(0, first.status);
  EXPECT_THAT(first.output, MatchesRegex("[0-9a-f]+\n"));
  EXPECT_EQ(65U, first.output.size());
  EXPECT_EQ(65U, second.output.size());
  EXPECT_NE(first.output, second.output);
}

TEST_F(RngctlTest, ReadsExactlyTheBytesOfTheGenerator) {
  InstallPlugin("sobol");  // its bytes are all A5
  EXPECT_EQ("a5a5a5\n", Run("read sobol -n 3").output);
  EXPECT_EQ("paWlpQ==\n", Run("read sobol -n 4 --base64").output);
  EXPECT_EQ("\xA5\xA5", Run("read sobol -n 2 --raw").output);
  EXPECT_EQ("", Run("read sobol -n 0 --raw").output);
}

TEST_F(RngctlTest, JoinsThePiecesOfALongDraw) {
  InstallPlugin("sobol");
  const std::size_t size = 3 * 16384 * 4 + 1;  // several of the largest pieces
  EXPECT_EQ(std::string(size, '\xA5'),
            Run("read sobol --unchecked --raw -n " + std::to_string(size)).output);
  // As if it were encoded at once: padding may stand only at the end.
  std::string text;
  for (std::size_t i = 0; i < size / 3; ++i) text += "paWl";
  EXPECT_EQ(text + "pQ==\n",
            Run("read sobol --unchecked --base64 -n " + std::to_string(size)).output);
}

TEST_F(RngctlTest, JoinsThePiecesOfALongDrawFromAUserOrSeveralGenerators) {
  InstallPlugin("biokbd", "drawing/NeedsUser");
  for (const std::string generators : {"biokbd", "--from unixdev", "--from unixdev,biokbd"}) {
    const std::string text = Run("read " + generators + " -n 100000 --base64").output;
    EXPECT_THAT(text, MatchesRegex("[A-Za-z0-9+/]+==\n")) << generators;
    EXPECT_EQ(4 * 33334U + 1, text.size()) << generators;
  }
}

// The second draw of that plug-in would fail.
TEST_F(RngctlTest, AsksTheUserOnceForAllBytes) {
  InstallPlugin("biokbd", "drawing/NeedsUser");
  const Result result = Run("read biokbd -n 1048576 --raw | wc -c");
  EXPECT_EQ("1048576\n", result.output);
  EXPECT_EQ("", result.errors);
}

TEST_F(RngctlTest, DoesNotAskTheUserForMoreThanOneDrawGives) {
  InstallPlugin("biokbd", "drawing/NeedsUser");
  const Result result = Run("read biokbd -n 1048577 -o " + TreePath("key"));
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: The generator \"biokbd\" needs the user, so at most 1048576 bytes can be read at "
      "once.\nRead fewer bytes, or choose a generator that does not need the user.\n",
      result.errors);
  EXPECT_FALSE(std::filesystem::exists(TreePath("key")));
}

TEST_F(RngctlTest, WritesThatAreShortAreContinued) {
  InstallPlugin("sobol");
  const Result result = RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/writes_little.so " + Rngctl() +
                                 " read sobol --raw --unchecked -n 50");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(std::string(50, '\xA5'), result.output);
}

TEST_F(RngctlTest, ReadsFromTheConfiguredDefault) {
  InstallPlugin("sobol");
  ASSERT_EQ(0, Run("default set sobol").status);
  EXPECT_EQ("a5a5\n", Run("read -n 2").output);
}

TEST_F(RngctlTest, ReadWithoutNameAndDefaultIsANegativeAnswer) {
  const Result result = Run("read -n 2");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: No usable default generator is configured. Name a generator, or store a default "
      "with \"rngctl default set\".\n",
      result.errors);
}

TEST_F(RngctlTest, ReadFromADefaultThatIsNotLoadedIsANegativeAnswer) {
  ASSERT_EQ(0, Run("default set sobol").status);
  const Result result = Run("read -n 2");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: The configured default generator \"sobol\" is not usable now. "
      "Run \"rngctl doctor\" to find out why.\n",
      result.errors);
}

TEST_F(RngctlTest, ReadFromAnUnknownGeneratorIsANegativeAnswer) {
  const Result result = Run("read nosuch -n 2");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: There is no usable generator \"nosuch\". Run \"rngctl list\" to see the usable "
      "ones, and \"rngctl doctor\" to find out why it is missing.\n",
      result.errors);
}

TEST_F(RngctlTest, SelectsTheConfiguredDevice) {
  InstallPlugin("dsdr", "failing_device");
  ASSERT_EQ(0, Run("default set dsdr X2").status);
  const Result unknown = Run("read -n 2");
  EXPECT_EQ(1, unknown.status);
  EXPECT_EQ(
      "rngctl: The default generator \"dsdr\" refuses the device \"X2\".\n"
      "\"rngctl list\" shows the devices of generators that report them, and their problems.\n",
      unknown.errors);
  ASSERT_EQ(0, Run("default set dsdr X1").status);
  EXPECT_THAT(Run("read -n 2").errors, HasSubstr("failed after 0 bytes"));
}

TEST_F(RngctlTest, RawBytesNeverGoToATerminal) {
  // script(1) runs its command on a terminal.
  const Result result =
      RunShell("script -qec '" + Rngctl() + " read unixdev -n 2 --raw' " + TreePath("typescript"));
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, HasSubstr("Raw bytes are not written to a terminal"));
  const Result named =
      RunShell("script -qec '" + Rngctl() + " read unixdev -n 2 --raw -o /dev/tty >/dev/null' " +
               TreePath("typescript"));
  EXPECT_EQ(2, named.status);
  EXPECT_THAT(named.output, HasSubstr("Raw bytes are not written to a terminal"));
  const Result hex =
      RunShell("script -qec '" + Rngctl() + " read unixdev -n 2' " + TreePath("typescript"));
  EXPECT_EQ(0, hex.status);
  EXPECT_THAT(hex.output, MatchesRegex("[0-9a-f]{4}\r\n"));
}

TEST_F(RngctlTest, AnExceptionInADrawIsASentence) {
  InstallPlugin("dsdr", "throws_own_class");
  const Result named = RunShell("RNG_THROW_IN_DRAW=1 " + Rngctl() + " read dsdr -n 4");
  EXPECT_EQ(1, named.status);
  EXPECT_EQ(
      "rngctl: A plug-in or the system failed: a fault of its own\n"
      "Run \"rngctl doctor\" to find out which.\n",
      named.errors);
  const Result deceptive =
      RunShell("RNG_THROW_IN_DRAW=1 RNG_THROW_CONTROLS=1 " + Rngctl() + " read dsdr -n 4");
  EXPECT_THAT(deceptive.errors, StartsWith("rngctl: A plug-in or the system failed: "
                                           "?[2Ja?fault\xEF\xBF\xBD\n"));
  const Result silent =
      RunShell("RNG_THROW_IN_DRAW=1 RNG_THROW_NULL=1 " + Rngctl() + " read dsdr -n 4");
  EXPECT_EQ(1, silent.status);
  EXPECT_THAT(silent.errors, StartsWith("rngctl: A plug-in or the system failed without an"));
}
