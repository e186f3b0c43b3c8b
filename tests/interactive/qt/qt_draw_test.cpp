// Draws from "bioqt" on a display, and all ways in which they end.

#include "tests/interactive/host_process.h"
#include "tests/interactive/moving_robot.h"
#include "tests/interactive/shown_window.h"
#include "tests/support/x_server.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>

using namespace std::chrono_literals;

namespace {

constexpr char kTitle[] = "A program needs random bytes";
constexpr char kHelper[] = "rng-gather-qt";
constexpr long kPixelsOfProgress = 500;  // of the bar, after some twenty motions

long CountChanges(const std::vector<unsigned long>& before,
                  const std::vector<unsigned long>& after) {
  EXPECT_EQ(before.size(), after.size());
  return std::inner_product(before.begin(), before.end(), after.begin(), 0L, std::plus<>(),
                            std::not_equal_to<>());
}

class QtDraw : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(window.Appears()); }

  // The user uses keys alone, as in a desktop that has made the new window active. Earlier keys may be lost.
  void Press(const std::vector<std::string>& keys) {
    ASSERT_TRUE(window.GetsFocus());
    std::vector<std::string> commands;
    for (const std::string& key : keys) commands.insert(commands.end(), {"key", key});
    robot.Do(commands);
    robot.Wait();
  }

  void ClickTheButton() { ClickTheButton(robot); }

  void ClickTheButton(MovingRobot& hand) {
    const ShownWindow::Area area = window.Place();
    hand.Do({"mousemove", std::to_string(area.x + area.width - 40),
             std::to_string(area.y + area.height - 20), "click", "1"});
    hand.Wait();
  }

  // In per cent of the bar, which has a margin of 11 pixels. It is blue, and nothing else is.
  int Progress() {
    const int width = window.Place().width;
    const std::vector<unsigned long> pixels = window.Pixels();
    int most = 0;
    int blue = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      if (i % static_cast<std::size_t>(width) == 0) blue = 0;
      if ((pixels[i] & 0xFF) > (pixels[i] >> 16) + 60) most = std::max(most, ++blue);
    }
    return most * 100 / (width - 2 * 11);
  }

  // Nothing is left, whatever the result is.
  void ExpectEnd(const std::string& result) {
    EXPECT_EQ("ready\n" + result + "\ndescriptors 0\nchildren 0\n", host.Finish());
    EXPECT_TRUE(host.IsAlone());
  }

  // The dialog is still there, and takes keys.
  void ExpectCancelByEscape() {
    EXPECT_EQ(1U, host.Others(kHelper).size());
    EXPECT_EQ(1, window.Count());
    Press({"Escape"});
    ExpectEnd("zeros");
  }

  void SendToHelper(int signal) {
    const std::vector<pid_t> helpers = host.Others(kHelper);
    ASSERT_EQ(1U, helpers.size());
    ::kill(helpers[0], signal);
  }

  XServer server{{"-screen", "0", "1024x768x24", "-dpi", "96"}};
  HostProcess host{{DRAWING_HOST, "bioqt", "32"}, {"DISPLAY=" + server.display}};
  ShownWindow window{server.display, kTitle};
  MovingRobot robot{server.display, 512, 384};
};

}  // namespace

// Each motion is worth one bit at most, of 320.
TEST_F(QtDraw, SucceedsAfterEnoughMotions) {
  robot.Move(320);
  robot.Wait();
  EXPECT_EQ(1, window.Count());
  robot.Move(200);
  ExpectEnd("drawn");
}

// As a user hides and shows the windows of a desktop.
TEST_F(QtDraw, GoesOnAfterItsWindowWasHidden) {
  const std::string number = std::to_string(window.Number());
  robot.Do({"windowunmap", number, "windowmap", number});
  robot.Wait();
  robot.Move(520);
  ExpectEnd("drawn");
}

// Each press is worth two bits at most, and the first nothing.
TEST_F(QtDraw, SucceedsAfterEnoughKeys) {
  robot.Type(160);
  robot.Wait();
  EXPECT_EQ(1, window.Count());
  robot.Type(200);
  ExpectEnd("drawn");
}

TEST_F(QtDraw, BarShowsTheProgress) {
  EXPECT_EQ(0, Progress());
  robot.Move(150);
  EXPECT_TRUE(WaitUntil([this] { return Progress() >= 10; }));
  robot.Wait();
  EXPECT_GE(60, Progress());
  ExpectCancelByEscape();
}

// What is still typed then goes to the dialog, and to no other window.
TEST_F(QtDraw, StaysWhileKeysArePressedButNotForever) {
  robot.Type(3000);
  ASSERT_TRUE(WaitUntil([this] { return Progress() >= 99; }));
  const auto start = std::chrono::steady_clock::now();
  ASSERT_TRUE(window.Disappears());
  EXPECT_GE(std::chrono::steady_clock::now() - start, 1500ms);
  ExpectEnd("drawn");
}

TEST_F(QtDraw, IsNotCancelledByTheButtonOnceThereIsEnough) {
  robot.Type(3000);
  ASSERT_TRUE(WaitUntil([this] { return Progress() >= 99; }));
  MovingRobot hand(server.display, 512, 384);
  ClickTheButton(hand);
  ExpectEnd("drawn");
}

TEST_F(QtDraw, IsCancelledByEscape) {
  Press({"Escape"});
  ExpectEnd("zeros");
}

TEST_F(QtDraw, IsCancelledByTheButton) {
  ClickTheButton();
  ExpectEnd("zeros");
}

TEST_F(QtDraw, IsCancelledByTheButtonWithReturn) {
  Press({"Tab", "Return"});
  ExpectEnd("zeros");
}

TEST_F(QtDraw, IsCancelledByTheButtonWithEnter) {
  Press({"Tab", "KP_Enter"});
  ExpectEnd("zeros");
}

TEST_F(QtDraw, IsCancelledByTheButtonWithSpace) {
  Press({"Tab", "space"});
  ExpectEnd("zeros");
}

TEST_F(QtDraw, IsCancelledByClosingTheWindow) {
  window.Close();
  ExpectEnd("zeros");
}

// By another program. Qt would wait for a user who sees nothing.
TEST_F(QtDraw, IsCancelledByDestroyingTheWindow) {
  window.Destroy();
  ExpectEnd("zeros");
}

TEST_F(QtDraw, IsCancelledByAnotherThread) {
  host.Send(SIGUSR1);
  ExpectEnd("zeros");
}

TEST_F(QtDraw, FailsIfTheHelperIsTerminated) {
  SendToHelper(SIGTERM);
  ExpectEnd("zeros");
}

TEST_F(QtDraw, FailsIfTheHelperIsKilled) {
  SendToHelper(SIGKILL);
  ExpectEnd("zeros");
}

TEST_F(QtDraw, FailsIfTheServerEnds) {
  window.Leave();
  server.Stop();
  ExpectEnd("zeros");
}

TEST_F(QtDraw, LeavesNothingIfTheHostIsKilled) {
  host.Send(SIGKILL);
  EXPECT_EQ("ready\n", host.Finish());
  EXPECT_TRUE(host.IsAlone());
}

// A person who types does not cancel by accident, even after having moved to the button.
TEST_F(QtDraw, TypingDoesNotPressTheButton) {
  Press({"space", "Return", "KP_Enter", "Tab", "x", "space", "Return"});
  ExpectCancelByEscape();
}

TEST_F(QtDraw, TabLeavesTheButtonInBothDirections) {
  Press({"Tab", "Tab", "space", "Tab", "shift+Tab", "space"});
  ExpectCancelByEscape();
}

// The server makes a repetition of a press of a key that is down.
TEST_F(QtDraw, HeldKeyNeverFinishes) {
  std::vector<std::string> commands;
  for (int i = 0; i < 250; ++i) {
    const std::string interval = "0.0" + std::to_string(10 + i * i % 13);
    commands.insert(commands.end(), {"keydown", "a", "sleep", interval});
  }
  commands.insert(commands.end(), {"keyup", "a"});
  robot.Do(commands);
  robot.Wait();
  ExpectCancelByEscape();
}

TEST_F(QtDraw, StraightLineNeverFinishes) {
  robot.MoveStraight(360);
  robot.Wait();
  ExpectCancelByEscape();
}

TEST_F(QtDraw, TextOfAProgramNeverFinishes) {
  std::string text;
  for (int i = 0; i < 500; ++i) text += static_cast<char>('a' + i * i % 26);
  robot.Do({"type", "--delay", "0", text});
  robot.Wait();
  ExpectCancelByEscape();
}

TEST_F(QtDraw, PretendedKeysDoNotCancel) {
  window.PretendEscape();
  Press({"x"});
  ExpectCancelByEscape();
}

// Such motions look the same to the health tests. Keys that are still typed do not hide what the dialog says.
TEST_F(QtDraw, RegularMotionsRaiseAnAlarm) {
  ShownWindow alarm(server.display, "No random bytes");
  robot.Shake(100);
  ASSERT_TRUE(alarm.Appears());
  robot.Wait();
  Press({"space", "x", "Return"});
  EXPECT_EQ(1, alarm.Count());
  EXPECT_TRUE(WaitUntil([this] { return Progress() == 0; }));
  ClickTheButton();
  ExpectEnd("zeros");
}

// While the helper is stopped, the pointer moves along a line, which is worth nothing, and then to and fro. The first
// of two motions at the same time is the one that may be credited. On a busy machine, some arrive one by one.
TEST_F(QtDraw, MotionsThatArriveTogetherAreTakenOneByOne) {
  const std::string helper = std::to_string(host.Others(kHelper).at(0));
  const auto at = [](int place) { return std::to_string(place); };
  std::vector<std::string> commands;
  for (int i = 0; i < 45; ++i) {
    commands.insert(commands.end(), {"exec", "--sync", "--args", "3", "kill", "-STOP", helper});
    commands.insert(commands.end(), {"mousemove", at(480 + i), "384"});
    commands.insert(commands.end(), {"mousemove", at(500 + i % 2 * 8), "410"});
    commands.insert(commands.end(), {"exec", "--sync", "--args", "3", "kill", "-CONT", helper});
    commands.insert(commands.end(), {"sleep", "0.03"});
  }
  commands.insert(commands.end(), {"sleep", "0.5"});
  std::vector<unsigned long> before;
  ASSERT_TRUE(WaitUntil([&] {
    before = window.Pixels();  // of one colour until Qt paints it
    return std::adjacent_find(before.begin(), before.end(), std::not_equal_to<>()) != before.end();
  }));
  robot.Do(commands);
  robot.Wait();
  EXPECT_GT(kPixelsOfProgress, CountChanges(before, window.Pixels()));
  ExpectCancelByEscape();
}

TEST(QtLanguage, IsThatOfTheUser) {
  const XServer server;
  const std::pair<HostProcess::Words, std::string> expected[] = {
      {{"LANG=de_DE.UTF-8"}, "Ein Programm benötigt Zufallsbytes"},
      {{"LANG=en_GB.UTF-8", "LC_ALL=de_AT.UTF-8"}, "Ein Programm benötigt Zufallsbytes"},
      {{"LANG=en_GB.UTF-8", "LANGUAGE=de:en"}, "Ein Programm benötigt Zufallsbytes"},
      {{"LANG=xx_YY.UTF-8"}, kTitle}};
  for (auto [variables, title] : expected) {
    variables.push_back("DISPLAY=" + server.display);
    HostProcess host({DRAWING_HOST, "bioqt", "32"}, variables);
    EXPECT_TRUE(ShownWindow(server.display, title).Appears()) << variables[0];
  }
}

TEST(QtKind, IsAbsentWithoutADisplay) {
  HostProcess host({DRAWING_HOST, "bioqt", "32"}, {});
  EXPECT_EQ("no bioqt\n", host.Finish());
}
