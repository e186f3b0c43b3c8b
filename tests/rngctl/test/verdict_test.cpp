// What "rngctl test" finds, and what it does not.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <chrono>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

nlohmann::json Parse(const Result& result) {
  const Result schema = MatchSchema("test.schema.json", result.output);
  EXPECT_EQ(0, schema.status) << schema.errors;
  return nlohmann::json::parse(result.output);
}

std::vector<std::string> TestsWith(const std::string& outcome, const nlohmann::json& report) {
  std::vector<std::string> names;
  for (const auto& test : report.at("tests")) {
    if (test.at("result") == outcome) names.push_back(test.at("name"));
  }
  return names;
}

nlohmann::json Find(const nlohmann::json& report, const std::string& name) {
  for (const auto& test : report.at("tests")) {
    if (test.at("name") == name) return test;
  }
  return {};
}

}  // namespace

TEST_F(RngctlTest, TestFindsNothingInTheSystemsGenerator) {
  const Result result = Run("test unixdev");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.errors);
  EXPECT_THAT(result.output, StartsWith("generator   unixdev: The operating system's"));
  EXPECT_THAT(result.output, HasSubstr("\npassed      restarts "));
  EXPECT_THAT(result.output, ContainsRegex("With 2\\^1[0-2] possible seeds or fewer,"));
  EXPECT_THAT(result.output,
              HasSubstr("\nverdict     No test found a difference from random bytes.\n"));
  EXPECT_THAT(result.output,
              HasSubstr("\nlimits      Statistics cannot show whether bytes can be predicted"));
}

TEST_F(RngctlTest, TestReportsAsJson) {
  const Result result = Run("test unixdev -n 100000 --restarts 10 --json");
  EXPECT_EQ(0, result.status);
  const nlohmann::json report = Parse(result);
  EXPECT_EQ("unixdev", report.at("generator"));
  EXPECT_EQ(100000, report.at("bytes"));
  EXPECT_EQ(7U, TestsWith("passed", report).size());
  EXPECT_EQ(1000, report.at("speed").at("small_draws").at("count"));
  EXPECT_GE(report.at("speed").at("small_draws").at("percentile_99_seconds"),
            report.at("speed").at("small_draws").at("median_seconds"));
  EXPECT_GT(report.at("speed").at("bytes_per_second"), 0);
  EXPECT_EQ(10, report.at("restarts").at("made"));
  EXPECT_EQ(3, report.at("restarts").at("ruled_out_seed_bits"));
  EXPECT_EQ("nothing-found", report.at("verdict"));
  EXPECT_THAT(report.at("limits"), HasSubstr("SHA-256"));
}

TEST_F(RngctlTest, TestMeasuresTheSpeedOfSmallDrawsIfThereAreNoOthers) {
  const nlohmann::json report = Parse(Run("test unixdev -n 64 --restarts 0 --json"));
  EXPECT_EQ(2, report.at("speed").at("small_draws").at("count"));
  EXPECT_GT(report.at("speed").at("bytes_per_second"), 0);
}

TEST_F(RngctlTest, TestReportsAtLeastTheSpeedOfItsWholeRun) {
  const auto start = std::chrono::steady_clock::now();
  const nlohmann::json report = Parse(Run("test unixdev -n 10000000 --restarts 0 --json"));
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  EXPECT_GE(report.at("speed").at("bytes_per_second"), 1e7 / time.count());
}

TEST_F(RngctlTest, TestUsesTheConfiguredDefault) {
  ASSERT_EQ(0, Run("default set unixdev").status);
  const Result result = Run("test -n 1000 --restarts 0 --json");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("unixdev", Parse(result).at("generator"));
}

TEST_F(RngctlTest, TestSaysWhatFewBytesCannotShow) {
  const Result result = Run("test unixdev -n 100 --restarts 0 --json");
  EXPECT_EQ(0, result.status);
  const nlohmann::json report = Parse(result);
  EXPECT_THAT(TestsWith("not-made", report),
              UnorderedElementsAre("blocks", "byte-frequencies", "serial-correlation", "restarts"));
  EXPECT_EQ("It needs at least 4,096 bytes.", Find(report, "byte-frequencies").at("found"));
  EXPECT_THAT(report.at("reason"), HasSubstr("So few bytes show only gross defects"));
}

using Defect =
    std::pair<std::string, std::vector<std::string>>;  // and the tests that fail at least

class RngctlTestDefect : public RngctlTest, public testing::WithParamInterface<Defect> {};

TEST_P(RngctlTestDefect, IsFound) {
  const auto [variant, tests] = GetParam();
  InstallPlugin("dsdr", "drawing/" + variant);
  const Result result = Run("test dsdr -n 1048576 --restarts 0 --json");
  EXPECT_EQ(1, result.status);
  const nlohmann::json report = Parse(result);
  EXPECT_EQ("not-random", report.at("verdict"));
  EXPECT_THAT(TestsWith("failed", report), IsSupersetOf(tests));
  EXPECT_THAT(result.errors, StartsWith("rngctl: The bytes are not random. "));
}

INSTANTIATE_TEST_SUITE_P(
    Each, RngctlTestDefect,
    testing::Values(Defect("LeaningBit", {"bit-frequencies", "byte-frequencies"}),
                    Defect("StuckBit", {"blocks", "bit-frequencies", "byte-frequencies"}),
                    Defect("Counter", {"blocks", "byte-frequencies", "serial-correlation"}),
                    Defect("Ascii", {"blocks", "byte-frequencies", "bit-frequencies"}),
                    Defect("ShortPeriod", {"byte-frequencies"}),
                    Defect("Constant", {"blocks", "repetition-count", "adaptive-proportion"}),
                    Defect("HalfZeros", {"blocks", "repetition-count", "adaptive-proportion"}),
                    Defect("HalfFilled", {"blocks", "repetition-count", "adaptive-proportion"})),
    [](const auto& instance) { return instance.param.first; });

TEST_F(RngctlTest, TestSaysWhatTheBlocksFailed) {
  InstallPlugin("dsdr", "drawing/Constant");
  const Result result = Run("test dsdr -n 1048576 --restarts 0");
  EXPECT_THAT(result.errors,
              StartsWith("rngctl: The bytes are not random. 419 of 419 blocks failed FIPS "
                         "140-2 tests (monobit 0, poker 419, runs 419, long run 0); up to "));
}

TEST_F(RngctlTest, TestNamesTheBitThatIsOneMoreOften) {
  InstallPlugin("dsdr", "drawing/LeaningBit");
  const Result result = Run("test dsdr -n 1048576 --restarts 0");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("\nfailed      bit-frequencies      Bit 5 is one in 5"));
  EXPECT_THAT(
      result.output,
      HasSubstr("\nfailed      byte-frequencies     The 256 values are not equally frequent"));
  EXPECT_THAT(result.errors, StartsWith("rngctl: The bytes are not random. Bit 5 is one in 5"));
}

TEST_F(RngctlTest, TestTellsABytesCountFromItsPredecessor) {
  InstallPlugin("dsdr", "drawing/Counter");
  const Result result = Run("test dsdr -n 1048576 --restarts 0");
  EXPECT_THAT(
      result.output,
      HasSubstr(
          "The 256 values are closer to equally frequent than chance allows: chi-square 0, "));
}

// --- Restarts

class RngctlRestarts : public RngctlTest {
 protected:
  static Result RunWith(const std::string& variant, const std::string& arguments) {
    InstallPlugin("dsdr", "drawing/" + variant);
    return RunShell("RNG_TEST_STARTS=" + TreePath("starts") + " " + Rngctl() + " test dsdr " +
                    arguments);
  }
};

// Its seeds are a fixed sequence, in which the 311th restart is the first to repeat one.
TEST_F(RngctlRestarts, FindAGeneratorWith16BitsOfSeed) {
  const Result result = RunWith("HasFewSeeds", "-n 100000 --restarts 1000 --json");
  EXPECT_EQ(1, result.status);
  const nlohmann::json report = Parse(result);
  EXPECT_THAT(TestsWith("failed", report), UnorderedElementsAre("restarts"));
  EXPECT_THAT(report.at("reason"),
              HasSubstr("gave the same bytes: the generator has too few seeds."));
  EXPECT_TRUE(report.at("restarts").at("ruled_out_seed_bits").is_null());
}

TEST_F(RngctlRestarts, FindNothingInAGeneratorWithManySeeds) {
  const Result result = RunWith("HasManySeeds", "-n 100000 --restarts 40 --json");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(7, Parse(result).at("restarts").at("ruled_out_seed_bits"));
  EXPECT_EQ(41U, ReadFile(TreePath("starts")).size());  // with the one that draws for the others
}

// Forked copies of one process would all have the same seed.
TEST_F(RngctlRestarts, RunTheProgramAnew) {
  EXPECT_EQ(0, RunWith("HasTheKernelsSeed", "-n 1000 --restarts 20").status);
}

TEST_F(RngctlRestarts, FindASharedBeginning) {
  const Result result = RunWith("BeginsAlike", "-n 100000 --restarts 5");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("gave bytes whose first "));
  EXPECT_THAT(result.output, HasSubstr(" bits are equal; chance explains at most 27."));
}

TEST_F(RngctlRestarts, FindAShortBeginningThatAllHave) {
  const Result result = RunWith("BeginsBriefly", "-n 100000 --restarts 5");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("The first draws of 5 starts all begin with the same 1"));
}

TEST_F(RngctlRestarts, AreLeftOutOnRequest) {
  const Result result = RunWith("BeginsAlike", "-n 100000 --restarts 0");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output,
              HasSubstr("\nnot made    restarts             It was skipped, as requested.\n"));
  EXPECT_EQ(1U, ReadFile(TreePath("starts")).size());
}

TEST_F(RngctlRestarts, ACrashInOneIsNoVerdict) {
  const Result result = RunWith("CrashesInThirdStart", "-n 1000 --restarts 5");
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(
      "rngctl: In start 3: a plug-in crashed with signal 11 (Segmentation fault).\n"
      "Run \"rngctl doctor\" to find out which.\n",
      result.errors);
}

TEST_F(RngctlRestarts, AFailureInOneIsNoVerdict) {
  const Result failed = RunWith("FailsInThirdStart", "-n 1000 --restarts 5");
  EXPECT_EQ(3, failed.status);
  EXPECT_EQ("rngctl: In start 3: the generator \"dsdr\" failed in its first draw.\n",
            failed.errors);
  WriteFile(TreePath("starts"), "");
  const Result thrown = RunWith("ThrowsInThirdStart", "-n 1000 --restarts 5");
  EXPECT_EQ(3, thrown.status);
  EXPECT_EQ(
      "rngctl: In start 3: A plug-in or the system failed: out of range\n"
      "Run \"rngctl doctor\" to find out which.\n",
      thrown.errors);
}

TEST_F(RngctlRestarts, OneThatHangsIsNoVerdict) {
  const Result result = RunWith("WaitsInThirdStart", "-n 1000 --restarts 5");
  EXPECT_EQ(3, result.status);
  EXPECT_THAT(result.errors,
              StartsWith("rngctl: In start 3: a plug-in did not answer within 20 s.\n"));
}

// Each takes six seconds.
TEST_F(RngctlRestarts, EndAfterHalfAMinute) {
  const Result result = RunWith("StartsSlowly", "-n 1000 --json");
  EXPECT_EQ(0, result.status);
  const nlohmann::json report = Parse(result);
  EXPECT_EQ(200, report.at("restarts").at("wanted"));
  EXPECT_GE(report.at("restarts").at("made"), 2);
  EXPECT_LE(report.at("restarts").at("made"), 5);
  EXPECT_THAT(Find(report, "restarts").at("found"),
              HasSubstr(" of the 200 starts could be made in 30 s."));
}

TEST_F(RngctlRestarts, DoNotRepeatWhatIsPrinted) {
  const Result result = RunWith("PrintsInEachStart", "-n 1000 --restarts 20 --json");
  EXPECT_EQ(0, result.status);
  Parse(result);
  EXPECT_EQ("a line\n", result.errors);
}

// --- Speed

TEST_F(RngctlTest, TestReportsTheTimesOfSmallDraws) {
  InstallPlugin("dsdr", "drawing/SlowAtTimes");
  const nlohmann::json report = Parse(Run("test dsdr -n 32000 --restarts 0 --json"));
  const nlohmann::json draws = report.at("speed").at("small_draws");
  EXPECT_GE(draws.at("median_seconds"), 0.0001);        // of 30 draws in 50
  EXPECT_GE(draws.at("percentile_99_seconds"), 0.001);  // of one draw in 50
}

// --- A generator that needs the user

TEST_F(RngctlTest, TestAsksAUserOnce) {
  InstallPlugin("dsdr", "drawing/NeedsUser");
  const Result result = Run("test dsdr --json");
  EXPECT_EQ(0, result.status) << result.errors;
  const nlohmann::json report = Parse(result);
  EXPECT_TRUE(report.at("needs_user"));
  EXPECT_EQ(256, report.at("bytes"));
  EXPECT_TRUE(report.at("speed").is_null());
  EXPECT_EQ(0, report.at("restarts").at("wanted"));
  EXPECT_EQ("Each start would ask the user.", Find(report, "restarts").at("found"));
  EXPECT_THAT(
      Run("test dsdr").output,
      HasSubstr("\ndrawn       256 bytes: no more, because the generator needs the user\n"));
}

TEST_F(RngctlTest, TestAsksAUserMoreOnRequest) {
  InstallPlugin("dsdr", "drawing/NeedsUser");
  EXPECT_THAT(Run("test dsdr -n 20000").output, HasSubstr("\ndrawn       20,000 bytes\n"));
  const nlohmann::json report = Parse(Run("test dsdr -n 20000 --restarts 3 --json"));
  EXPECT_EQ(20000, report.at("bytes"));
  EXPECT_EQ(3, report.at("restarts").at("made"));
}
