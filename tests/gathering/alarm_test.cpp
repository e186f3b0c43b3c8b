// When events are too much alike.

#include "helpers/gathering/gathering.h"
#include "tests/gathering/robot.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

// Moves along a path with given bends. Each is credited.
class Path {
 public:
  explicit Path(Gathering& into) : gathering(into) {
    Sample();
    Sample();
  }
  void Bend(std::int32_t bendX, std::int32_t bendY) {
    speedX += bendX;
    speedY += bendY;
    Sample();
  }

 private:
  void Sample() {
    now += 8ms;
    x += speedX;
    y += speedY;
    gathering.Add(Motion{now, x, y, 0});
  }

  Gathering& gathering;
  std::chrono::nanoseconds now{};
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t speedX = 0;
  std::int32_t speedY = 0;
};

class Alarm : public testing::Test {
 protected:
  Gathering gathering{{}, false};
  Path path{gathering};
};

}  // namespace

TEST_F(Alarm, ComesWithThe31stEqualBendInARow) {
  for (int i = 0; i < 30; ++i) path.Bend(3, 0);
  EXPECT_FALSE(gathering.HasAlarm());
  path.Bend(3, 0);
  EXPECT_TRUE(gathering.HasAlarm());
}

TEST_F(Alarm, ComesWithThe56thEqualBendOf64) {
  for (int i = 1; i <= 56; ++i) path.Bend(i % 30 == 0 ? -3 : 3, 0);
  EXPECT_FALSE(gathering.HasAlarm());
  path.Bend(3, 0);
  EXPECT_TRUE(gathering.HasAlarm());
}

TEST_F(Alarm, ComparesBendsInBothDirections) {
  for (int i = 0; i < 60; ++i) path.Bend(3, i % 7 - 3);
  EXPECT_FALSE(gathering.HasAlarm());
  for (int i = 0; i < 60; ++i) path.Bend(i % 7 - 3, 3);
  EXPECT_FALSE(gathering.HasAlarm());
}

TEST_F(Alarm, ComparesTheLowBitsOfBends) {
  for (int i = 0; i < 60; ++i) path.Bend(2 + i % 5, 0);
  EXPECT_FALSE(gathering.HasAlarm());
  for (int i = 0; i < 60; ++i) path.Bend(0, 2 + i % 5);
  EXPECT_FALSE(gathering.HasAlarm());
}

TEST_F(Alarm, ComparesKeysWithTheirCase) {
  Robot robot(3);
  for (int i = 0; i < 60; ++i) {
    KeyPress press = robot.Press();
    press.key = static_cast<std::uint32_t>("aA!"[i % 3]);
    gathering.Add(press);
  }
  EXPECT_FALSE(gathering.HasAlarm());
}

TEST_F(Alarm, OfMotionsIsNotPreventedByKeysInBetween) {
  Robot robot(1);
  for (int i = 0; i < 31; ++i) {
    path.Bend(3, 0);
    gathering.Add(robot.Press());
  }
  EXPECT_TRUE(gathering.HasAlarm());
}

TEST_F(Alarm, StaysWhateverTheUserDoesThen) {
  for (int i = 0; i < 31; ++i) path.Bend(3, 0);
  ASSERT_TRUE(gathering.HasAlarm());
  Robot robot(2);
  for (int i = 0; i < 300; ++i) gathering.Add(robot.Press());
  EXPECT_TRUE(gathering.HasAlarm());
}
