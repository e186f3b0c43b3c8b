// That the comparison of library and model finds, shrinks and repeats what is wrong.

#include "tests/model/model.h"

#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>
#include <ostream>

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

constexpr std::size_t kHandful = 10;

std::string Quoted(const std::string& text) { return " '" + text + "'"; }

// The steps that a failed run printed for a replay.
std::string Reproducer(const std::string& output) {
  const std::string begin = "--replay \"";
  const std::size_t found = output.find(begin);
  if (found == std::string::npos) return "";
  const std::size_t first = found + begin.size();
  return output.substr(first, output.find('"', first) - first);
}

const std::string kModelRun = MODEL_RUN;

}  // namespace

class ModelWithAMistake : public testing::TestWithParam<std::string> {};

TEST_P(ModelWithAMistake, IsFoundShrunkAndRepeated) {
  const std::string mistake = " --mistake" + Quoted(GetParam());
  const Result run = RunShell(kModelRun + " --count 50000 --seed 1" + mistake);
  EXPECT_EQ(1, run.status);
  const std::string steps = Reproducer(run.output);
  ASSERT_NE("", steps) << run.output;
  EXPECT_LE(ParseSteps(steps).size(), kHandful) << steps;

  const Result replay = RunShell(kModelRun + mistake + " --replay" + Quoted(steps));
  EXPECT_EQ(1, replay.status) << replay.output;
  EXPECT_THAT(replay.output, HasSubstr("fails\n"));

  const Result right = RunShell(kModelRun + " --replay" + Quoted(steps));
  EXPECT_EQ(0, right.status) << right.output;
  EXPECT_EQ("agrees\n", right.output);
}

INSTANTIATE_TEST_SUITE_P(Each, ModelWithAMistake, testing::ValuesIn(kMistakes),
                         [](const auto& instance) {
                           std::string name;
                           for (const char c : instance.param) name += std::isalnum(c) ? c : '_';
                           return name;
                         });

TEST(ModelRun, TellsWhatDiffers) {
  const Result replay = RunShell(kModelRun +
                                 " --mistake 'stop forgets the settings' --replay "
                                 "'initialize A; shutdown; set :x null'");
  EXPECT_EQ(1, replay.status);
  EXPECT_THAT(replay.output, HasSubstr("set :x null:\n  result of the model:   no\n"
                                       "  result of the library: yes\n"));
}

TEST(ModelRun, CallsACrashAFailure) {
  const Result replay =
      RunShell(kModelRun + " --mistake 'program ends at a debt' --replay shutdown");
  EXPECT_EQ(1, replay.status);
  EXPECT_THAT(replay.output, HasSubstr("ended by signal 6"));
}

TEST(ModelRun, RunsUntilItIsStopped) {
  const Result run =
      RunShell("timeout --preserve-status --signal TERM 2 " + kModelRun + " --seed 7");
  EXPECT_EQ(0, run.status);
  EXPECT_THAT(run.output,
              MatchesRegex("[0-9]+ sequences, [0-9]+ calls, seed 7, [0-9.]+ seconds\n"));
  EXPECT_THAT(run.output, testing::Not(testing::StartsWith("0 ")));
}

TEST(ModelRun, EndsAfterTheGivenNumberOfSequences) {
  const Result run = RunShell(kModelRun + " --count 20 --seed 7");
  EXPECT_EQ(0, run.status);
  EXPECT_THAT(run.output, MatchesRegex("20 sequences, [0-9]+ calls, seed 7, [0-9.]+ seconds\n"));
}

TEST(ModelRun, RefusesWhatItDoesNotKnow) {
  for (const char* const wrong :
       {"--replay 'jump'", "--replay 'rng'", "--mistake none", "--seed", "--fast 1"}) {
    EXPECT_EQ(2, RunShell(kModelRun + " " + wrong).status) << wrong;
  }
}

TEST(RandomSteps, AreTheSameForTheSameSeedAndSurviveBeingText) {
  for (std::uint64_t number = 0; number < 200; ++number) {
    const Steps steps = RandomSteps(3, number);
    EXPECT_EQ(steps, RandomSteps(3, number));
    EXPECT_NE(steps, RandomSteps(4, number));
    EXPECT_EQ(steps, ParseSteps(ToText(steps)));
  }
}
