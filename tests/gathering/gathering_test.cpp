#include "helpers/gathering/gathering.h"

#include "tests/gathering/robot.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

SystemBytes Zeros() { return {}; }

std::string Draw(Gathering& gathering, std::size_t size) {
  std::string bytes(size, 'x');
  gathering.Finish().Generate(bytes.data(), size);
  return bytes;
}

std::string Hexadecimal(const std::string& bytes) {
  std::string digits;
  for (const char byte : bytes) {
    digits += "0123456789abcdef"[byte >> 4 & 0xF];
    digits += "0123456789abcdef"[byte & 0xF];
  }
  return digits;
}

// Types until there is enough, and returns how many presses that took.
int Type(Gathering& gathering, Robot robot) {
  int presses = 0;
  for (; !gathering.IsComplete() && presses < 2000; ++presses) gathering.Add(robot.Press());
  return presses;
}

}  // namespace

TEST(Gathering, TakesSome160To200Presses) {
  for (std::uint64_t seed = 0; seed < 50; ++seed) {
    Gathering gathering(Zeros(), false);
    const int presses = Type(gathering, Robot(seed));
    EXPECT_LE(161, presses);
    EXPECT_GE(200, presses);
    EXPECT_FALSE(gathering.HasAlarm());
  }
}

TEST(Gathering, TakesTwiceAsManyOverANetwork) {
  Gathering gathering(Zeros(), true);
  const int presses = Type(gathering, Robot(1));
  EXPECT_LE(321, presses);
  EXPECT_GE(400, presses);
}

TEST(Gathering, TakesMotionAndKeysTogether) {
  Gathering gathering(Zeros(), false);
  Robot robot(2);
  for (int i = 0; i < 100; ++i) gathering.Add(robot.Move());
  const int moved = gathering.Bits();
  EXPECT_LT(50, moved);
  EXPECT_GE(98, moved);
  const int presses = Type(gathering, robot);
  EXPECT_LE((Gathering::kNeededBits - moved) / 2 + 1, presses);
  EXPECT_FALSE(gathering.HasAlarm());
}

TEST(Gathering, GivesNothingBeforeThereIsEnough) {
  Gathering gathering(Zeros(), false);
  EXPECT_EQ(0, gathering.Bits());
  Robot robot(3);
  while (gathering.Bits() < Gathering::kNeededBits - 2) gathering.Add(robot.Press());
  EXPECT_FALSE(gathering.IsComplete());
  EXPECT_THROW(gathering.Finish(), std::logic_error);
}

TEST(Gathering, RoundsThePercentageDown) {
  Gathering gathering(Zeros(), false);
  EXPECT_EQ(0, gathering.Percent());
  Robot robot(3);
  while (gathering.Bits() < 316) gathering.Add(robot.Press());
  ASSERT_EQ(316, gathering.Bits());
  EXPECT_EQ(98, gathering.Percent());
  while (!gathering.IsComplete()) gathering.Add(robot.Press());
  EXPECT_EQ(100, gathering.Percent());
}

TEST(Gathering, AlarmsAtTheSameKeyOverAndOver) {
  Gathering gathering(Zeros(), false);
  Robot robot(4);
  for (int i = 0; i < 400; ++i) {
    KeyPress press = robot.Press();
    press.key = 'a';
    // Every third press ends the row of equal keys, without credit.
    if (i % 3 == 2) press = {press.time, 'q', false};
    gathering.Add(press);
  }
  EXPECT_TRUE(gathering.HasAlarm());
  EXPECT_THROW(gathering.Finish(), std::logic_error);
}

TEST(Gathering, AlarmsAtTheSameBendOverAndOver) {
  Gathering gathering(Zeros(), false);
  for (int i = 0; i < 40; ++i)
    gathering.Add(Motion{8ms * i, i * i, 0, 0});  // constant acceleration
  EXPECT_TRUE(gathering.HasAlarm());
}

// Computed with other implementations of HMAC and HMAC_DRBG.
TEST(Gathering, ConditionsAllEventsInOrder) {
  SystemBytes system;
  for (std::size_t i = 0; i < system.size(); ++i) system[i] = static_cast<unsigned char>(i);
  Gathering gathering(system, false);
  std::chrono::nanoseconds now = 1s;
  for (std::uint32_t i = 0; i < 200; ++i) {
    now += 1ms * (50 + i * 29 % 97 * 3) + 1ns * i;
    gathering.Add(KeyPress{now, 'a' + i % 26, true});
  }
  gathering.Add(Motion{123456789ns, -5, 70000, 3});
  EXPECT_EQ("b499e9255e97b4b01c7e4f29a5f6f35c78573ee5b6e9dce0caa9904da369de2b",
            Hexadecimal(Draw(gathering, 32)));
}

TEST(Gathering, EveryEventAndEverySystemByteChangesTheResult) {
  const auto draw = [&](const SystemBytes& system, const std::function<void(Gathering&)>& add) {
    Gathering gathering(system, false);
    Type(gathering, Robot(6));
    add(gathering);
    return Draw(gathering, 32);
  };
  std::set<std::string> results;
  results.insert(draw(Zeros(), [](Gathering&) {}));
  SystemBytes other = Zeros();
  other[63] = 1;
  results.insert(draw(other, [](Gathering&) {}));
  const KeyPress press = {99s, 'k', true};
  const Motion motion = {99s, 'k', 1, 0};
  results.insert(draw(Zeros(), [&](Gathering& gathering) { gathering.Add(press); }));
  results.insert(draw(Zeros(), [&](Gathering& gathering) { gathering.Add(motion); }));
  for (const KeyPress& changed :
       {KeyPress{99s + 1ns, 'k', true}, KeyPress{99s, 'l', true}, KeyPress{99s, 'k', false}}) {
    results.insert(draw(Zeros(), [&](Gathering& gathering) { gathering.Add(changed); }));
  }
  for (const Motion& changed : {Motion{99s + 1ns, 'k', 1, 0}, Motion{99s, 'l', 1, 0},
                                Motion{99s, 'k', 2, 0}, Motion{99s, 'k', 1, 1}}) {
    results.insert(draw(Zeros(), [&](Gathering& gathering) { gathering.Add(changed); }));
  }
  EXPECT_EQ(11U, results.size());
}
