// What counts, and what does not.

#include "helpers/gathering/gathering.h"
#include "tests/gathering/robot.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

// The credit of each press of a row of keys, given the milliseconds before each.
std::vector<int> Credit(const std::string& keys, const std::vector<double>& intervals,
                        bool isRemote = false) {
  KeyCredit credit(isRemote);
  std::vector<int> credits;
  double now = 1000;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    now += intervals[i];
    const auto time = std::chrono::nanoseconds(std::llround(1e6 * now));
    credits.push_back(credit.Take({time, static_cast<std::uint32_t>(keys[i]), true}));
  }
  return credits;
}

using Credits = std::vector<int>;

}  // namespace

TEST(KeyCredit, IsTwoBitsForAPressAndNothingForTheFirst) {
  EXPECT_EQ((Credits{0, 2, 2, 2}), Credit("abcd", {0, 100, 150, 210}));
}

TEST(KeyCredit, IsOneBitOverANetwork) {
  EXPECT_EQ((Credits{0, 1, 1, 1}), Credit("abcd", {0, 100, 150, 210}, true));
}

TEST(KeyCredit, EndsWithTheThirdPressOfAKeyInARow) {
  EXPECT_EQ((Credits{0, 2, 0, 0, 2, 2, 2, 0}),
            Credit("aaaabbcc", {0, 100, 150, 210, 300, 110, 160, 161}));
  EXPECT_EQ((Credits{0, 2, 2, 2, 2, 0}), Credit("abaccc", {0, 100, 150, 210, 300, 120}));
}

TEST(KeyCredit, NeedsEightMilliseconds) {
  EXPECT_EQ((Credits{0, 0, 2}), Credit("abc", {0, 7.999999, 20}));
  EXPECT_EQ((Credits{0, 2, 2}), Credit("abc", {0, 8, 20}));
}

TEST(KeyCredit, NeedsAnIntervalUnlikeTheTwoBefore) {
  EXPECT_EQ((Credits{0, 2, 0}), Credit("abc", {0, 100, 102}));
  EXPECT_EQ((Credits{0, 2, 0}), Credit("abc", {0, 100, 98}));
  EXPECT_EQ((Credits{0, 2, 2}), Credit("abc", {0, 100, 102.000001}));
  EXPECT_EQ((Credits{0, 2, 2, 0}), Credit("abcd", {0, 100, 200, 102}));
  EXPECT_EQ((Credits{0, 2, 2, 2, 2}), Credit("abcde", {0, 100, 200, 300, 100}));
  // Intervals count whether their press was credited or not.
  EXPECT_EQ((Credits{0, 0, 2, 0}), Credit("abcd", {0, 5, 100, 6.5}));
}

TEST(KeyCredit, IsNothingForWhatArrivesTogether) {
  KeyCredit credit(false);
  EXPECT_EQ(0, credit.Take({1000ms, 'a', true}));
  EXPECT_EQ(0, credit.Take({1100ms, 'b', false}));
  EXPECT_EQ(2, credit.Take({1300ms, 'c', true}));
}

// It is still what the next press is compared with.
TEST(KeyCredit, ComparesWithWhatArrivesTogether) {
  const auto last = [](std::initializer_list<KeyPress> presses) {
    KeyCredit credit(false);
    int bits = 0;
    for (const KeyPress& press : presses) bits = credit.Take(press);
    return bits;
  };
  EXPECT_EQ(0, last({{1000ms, 'a', true}, {1100ms, 'b', false}, {1107ms, 'c', true}}));
  EXPECT_EQ(0, last({{1000ms, 'a', true}, {1100ms, 'b', false}, {1201ms, 'c', true}}));
  EXPECT_EQ(0, last({{1000ms, 'a', true}, {1100ms, 'a', false}, {1300ms, 'a', true}}));
  EXPECT_EQ(
      2,
      last({{1000ms, 'a', true}, {1100ms, 'b', false}, {1300ms, 'a', true}, {1600ms, 'a', true}}));
}

TEST(KeyCredit, AMetronomeHasNotFinishedAfterAThousandPresses) {
  for (int milliseconds = 5; milliseconds <= 500; ++milliseconds) {
    KeyCredit credit(false);
    int bits = 0;
    for (int press = 0; press < 1000; ++press) {
      bits += credit.Take(
          {milliseconds * press * 1ms, static_cast<std::uint32_t>('a' + press % 26), true});
    }
    EXPECT_GE(2, bits) << milliseconds;
  }
}

TEST(KeyCredit, AHeldKeyOrAPasteNeverFinishes) {
  KeyCredit held(false);
  KeyCredit pasted(false);
  Robot robot(1);
  int bits = 0;
  for (int press = 0; press < 1000; ++press) {
    KeyPress key = robot.Press();
    key.isAlone = false;
    bits += pasted.Take(key);
    key.isAlone = true;
    key.key = 'a';
    bits += held.Take(key);
  }
  EXPECT_EQ(2, bits);  // the second press of the held key
}

TEST(MotionCredit, IsForASecondDifferenceOfTwoPixels) {
  for (const int bend : {-3, -2, -1, 0, 1, 2, 3}) {
    for (const bool isVertical : {false, true}) {
      MotionCredit credit;
      EXPECT_FALSE(credit.Take({0ms, 10, 20, 0}));
      EXPECT_FALSE(credit.Take({8ms, 13, 24, 0}));
      const auto result =
          credit.Take({16ms, 16 + (isVertical ? 0 : bend), 28 + (isVertical ? bend : 0), 0});
      ASSERT_EQ(std::abs(bend) >= 2, result.has_value()) << bend;
      if (result) {
        EXPECT_EQ(bend, isVertical ? result->y : result->x);
      }
    }
  }
}

TEST(MotionCredit, SamplesAtMostEveryEightMilliseconds) {
  MotionCredit credit;
  credit.Take({0ms, 0, 0, 0});
  credit.Take({8ms, 0, 0, 0});
  EXPECT_FALSE(credit.Take({15999us, 100, 0, 0}));  // no sample
  EXPECT_TRUE(credit.Take({16ms, 100, 0, 0}));
  EXPECT_FALSE(credit.Take({17ms, 0, 0, 0}));
  EXPECT_FALSE(credit.Take({24ms, 200, 0, 0}));  // as fast as before
}

TEST(MotionCredit, AStraightLineAtConstantSpeedIsNeverCredited) {
  for (int angle = 0; angle < 360; ++angle) {
    for (const double speed : {0.1, 0.7, 1.0, 3.3, 17.7, 40.0}) {
      MotionCredit credit;
      const double x = speed * std::cos(angle * 0.01745329);
      const double y = speed * std::sin(angle * 0.01745329);
      for (int i = 0; i < 200; ++i) {
        EXPECT_FALSE(credit.Take({8ms * i, static_cast<std::int32_t>(std::lround(1000 + x * i)),
                                  static_cast<std::int32_t>(std::lround(1000 + y * i)), 0}))
            << angle << ' ' << speed;
      }
    }
  }
}
