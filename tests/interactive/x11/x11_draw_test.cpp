// Draws from "unixx11" on an X server.

#include "tests/interactive/host_process.h"
#include "tests/interactive/moving_robot.h"
#include "tests/interactive/shown_window.h"
#include "tests/support/x_server.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <gmock/gmock.h>
#include <random>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr char kTitle[] = "A program needs random bytes";
constexpr char kHelper[] = "rng-gather-x11";
constexpr unsigned long kBackground = 0xF5F5F5;
constexpr unsigned long kBar = 0x195EB5;
constexpr int kEnough = 3000;  // motions or presses, also on a busy machine

// What the host prints after one draw, or several, that left nothing.
std::string Output(const std::string& results) {
  return "ready\n" + results + "\ndescriptors 0\nchildren 0\n";
}

class X11Draw : public testing::Test {
 protected:
  explicit X11Draw(const std::string& draws = "1") : count(draws) {}
  void SetUp() override { ASSERT_TRUE(window.Appears() && window.GetsFocus()); }

  void ExpectEnd(const std::string& results) {
    EXPECT_EQ(Output(results), host.Finish());
    EXPECT_TRUE(host.IsAlone());
  }

  // In per cent of the bar, which has a margin of 16 pixels and a frame of at most 2.
  int Progress() {
    const int whole = window.Place().width - 2 * 16 - 2 * 2;
    return window.CountInRow(kBar) * 100 / whole;
  }

  // True once the helper has taken every event from before the resize to 600 by 400 pixels.
  bool ShowsItsNewSize() {
    return WaitUntil([this] {
      const auto pixels = window.Pixels();
      return pixels.size() == 600u * 400 && pixels.back() != 0xFFFFFF;
    });
  }

  pid_t Helper() const { return host.Others(kHelper).at(0); }
  void SendToHelper(int signal) const { ::kill(Helper(), signal); }

  std::string count;
  XServer server{{"-screen", "0", "1024x768x24", "-dpi", "96"}};
  HostProcess host{{DRAWING_HOST, "unixx11", "32", count}, {"DISPLAY=" + server.display}};
  ShownWindow window{server.display, kTitle};
  MovingRobot robot{server.display, 512, 384};
};

}  // namespace

TEST_F(X11Draw, SucceedsAfterEnoughMotions) {
  robot.Move(kEnough);
  ASSERT_TRUE(WaitUntil([this] { return Progress() >= 50; }));
  ExpectEnd("drawn");
}

TEST_F(X11Draw, SucceedsAfterEnoughKeys) {
  robot.Type(kEnough);
  ASSERT_TRUE(WaitUntil([this] { return Progress() >= 99; }));
  // As long as keys are pressed, but not forever.
  const auto start = std::chrono::steady_clock::now();
  ASSERT_TRUE(window.Disappears());
  EXPECT_GE(std::chrono::steady_clock::now() - start, 1500ms);
  ExpectEnd("drawn");
}

// What is still typed then goes to the window, and to no other.
TEST_F(X11Draw, BarIsFullForAMomentAtTheEnd) {
  robot.Move(kEnough);
  ASSERT_TRUE(WaitUntil([this] { return Progress() >= 99; }));
  const auto start = std::chrono::steady_clock::now();
  ASSERT_TRUE(window.Disappears());
  EXPECT_GE(std::chrono::steady_clock::now() - start, 400ms);
  ExpectEnd("drawn");
}

// Without a window manager, somebody has to give the window the keys.
TEST_F(X11Draw, EscapeCancelsWhereverThePointerIs) {
  robot.Do({"mousemove", "5", "5", "key", "Escape"});
  ExpectEnd("zeros");
}

// A copy of the host has the helper's end of the socket open, too.
TEST(X11DrawInACopiedHost, NoticesTheEndOfTheHelper) {
  const XServer server{{"-screen", "0", "1024x768x24", "-dpi", "96"}};
  HostProcess host({COPIED_HOST, "unixx11", "32"}, {"DISPLAY=" + server.display});
  ShownWindow window{server.display, kTitle};
  ASSERT_TRUE(window.Appears() && window.GetsFocus());
  MovingRobot robot(server.display, 512, 384);
  robot.Do({"key", "Escape"});
  EXPECT_TRUE(host.Prints("drawn 0"));
  host.Finish();
  EXPECT_TRUE(host.IsAlone());
}

TEST_F(X11Draw, SleepsWhileNothingHappens) {
  ASSERT_TRUE(WaitUntil([this] { return window.CountInRow(kBackground) > 400; }));
  EXPECT_TRUE(Sleeps(Helper()));
  window.Close();
  ExpectEnd("zeros");
}

TEST_F(X11Draw, CloseButtonCancels) {
  window.Close();
  ExpectEnd("zeros");
}

TEST_F(X11Draw, IsDrawnAgainAfterItWasCovered) {
  ASSERT_TRUE(WaitUntil([this] { return window.CountInRow(kBackground) > 400; }));
  const auto before = window.Pixels();
  window.CoverForAMoment();
  EXPECT_TRUE(WaitUntil([&] { return before == window.Pixels(); }));
  window.Close();
  ExpectEnd("zeros");
}

TEST_F(X11Draw, FailsIfTheWindowIsDestroyed) {
  window.Destroy();
  ExpectEnd("zeros");
}

TEST_F(X11Draw, FailsIfTheConnectionIsClosed) {
  window.Disconnect();
  ExpectEnd("zeros");
}

TEST_F(X11Draw, FailsIfTheServerEnds) {
  window.Leave();
  server.Stop();
  ExpectEnd("zeros");
}

TEST_F(X11Draw, IsCancelledByAnotherThread) {
  host.Send(SIGUSR1);
  ExpectEnd("zeros");
  EXPECT_TRUE(window.Disappears());
}

TEST_F(X11Draw, IsCancelledWhileTheServerDoesNotAnswer) {
  server.Send(SIGSTOP);
  host.Send(SIGUSR1);
  ExpectEnd("zeros");
  server.Send(SIGCONT);
}

TEST_F(X11Draw, FailsIfTheHelperIsTerminated) {
  SendToHelper(SIGTERM);
  ExpectEnd("zeros");
}

TEST_F(X11Draw, FailsIfTheHelperIsHungUp) {
  SendToHelper(SIGHUP);
  ExpectEnd("zeros");
}

TEST_F(X11Draw, FailsIfTheHelperIsKilled) {
  SendToHelper(SIGKILL);
  ExpectEnd("zeros");
}

TEST_F(X11Draw, WindowClosesIfTheHostIsKilled) {
  host.Send(SIGKILL);
  EXPECT_TRUE(window.Disappears());
  host.Finish();
  EXPECT_TRUE(host.IsAlone());
}

TEST_F(X11Draw, StraightLineNeverFinishes) {
  robot.MoveStraight(400);
  robot.Wait();
  EXPECT_LE(Progress(), 20);  // a busy machine loses some motions
  robot.Do({"key", "Escape"});
  ExpectEnd("zeros");
}

// The second press of a key counts, and is less than one per cent.
TEST_F(X11Draw, HeldKeyShowsNoProgress) {
  const auto before = window.Pixels();
  robot.Do({"keydown", "a", "sleep", "1.5", "keyup", "a"});
  robot.Wait();
  EXPECT_TRUE(before == window.Pixels());
  robot.Do({"key", "Escape"});
  ExpectEnd("zeros");
}

// The server would report motions outside to a window in which a button is down.
TEST_F(X11Draw, MotionsOutsideDoNotCount) {
  const auto before = window.Pixels();
  robot.Do({"mousemove", "512", "384", "mousedown", "1"});
  robot.Wait();
  MovingRobot outside(server.display, 512, 100);
  outside.Move(60);
  outside.Wait();
  EXPECT_TRUE(before == window.Pixels());
  host.Send(SIGUSR1);
  ExpectEnd("zeros");
}

// The helper does not run while the program types a word, so that its keys arrive together on a slow machine, too. Were
// the first of each counted, the bar would reach 60 %. A busy server may give it a millisecond of its own.
TEST_F(X11Draw, WordsOfAProgramNeverFinish) {
  std::mt19937 generator;
  for (int i = 0; i < 100; ++i) {
    std::string word(8, ' ');
    for (char& letter : word) letter = static_cast<char>('a' + generator() % 26);
    SendToHelper(SIGSTOP);
    robot.Do({"type", "--delay", "0", word});
    robot.Wait();
    SendToHelper(SIGCONT);
    std::this_thread::sleep_for(20ms + generator() % 11 * 5ms);
  }
  window.Resize(600, 400);
  EXPECT_TRUE(ShowsItsNewSize());
  EXPECT_LE(Progress(), 45);
  robot.Do({"key", "Escape"});
  ExpectEnd("zeros");
}

// Such motions look the same to the health tests. The window says so, and closes by itself.
TEST_F(X11Draw, RegularMotionsRaiseAnAlarm) {
  robot.Shake(120);
  robot.Wait();
  EXPECT_EQ(1, window.Count());
  EXPECT_EQ(0, Progress());
  ExpectEnd("zeros");
}

// What other programs only pretend to have happened, or tell the window, is sent to it before its new size.
TEST_F(X11Draw, PretendedEventsAndOtherMessagesDoNotCount) {
  window.PretendEscape();
  window.Send("WM_PROTOCOLS", "WM_TAKE_FOCUS");
  window.Send("_NET_WM_STATE", "WM_DELETE_WINDOW");
  for (int i = 0; i < 100; ++i) window.PretendMotion(i * i % 97, i * i * i % 89);
  EXPECT_EQ(0, Progress());
  window.Resize(600, 400);
  EXPECT_TRUE(ShowsItsNewSize());
  host.Send(SIGUSR1);
  ExpectEnd("zeros");
}

// The server does not ask for that. The bar would reach the edge.
TEST_F(X11Draw, IsDrawnAgainWhenItBecomesNarrower) {
  ASSERT_TRUE(WaitUntil([this] { return window.CountInRow(kBackground) > 400; }));
  window.Resize(500, window.Place().height);
  EXPECT_TRUE(WaitUntil([this] {
    const auto pixels = window.Pixels();
    bool isFree = !pixels.empty();
    for (std::size_t i = 499; i < pixels.size(); i += 500) isFree &= pixels[i] == kBackground;
    return isFree;
  }));
  window.Close();
  ExpectEnd("zeros");
}

// The picture moves to the middle.
TEST_F(X11Draw, IsDrawnAgainWhenItBecomesHigher) {
  ASSERT_TRUE(WaitUntil([this] { return window.CountInRow(kBackground) > 400; }));
  const ShownWindow::Area area = window.Place();
  const auto rowsAbove = [&] {
    const auto pixels = window.Pixels();
    const auto ink = std::find_if(pixels.begin(), pixels.end(),
                                  [](unsigned long pixel) { return pixel != kBackground; });
    return (ink - pixels.begin()) / area.width;
  };
  const auto before = rowsAbove();
  window.Resize(area.width, area.height + 100);
  EXPECT_TRUE(WaitUntil([&] { return rowsAbove() == before + 50; }));
  EXPECT_EQ(kBackground, window.Pixels().back());
  window.Close();
  ExpectEnd("zeros");
}

// The server then refuses the focus.
TEST_F(X11Draw, MayBeHiddenWhileItTakesTheFocus) {
  window.ShowForAMoment();
  window.Resize(600, 400);
  window.Show();
  EXPECT_TRUE(window.GetsFocus());
  EXPECT_TRUE(ShowsItsNewSize());
  window.Close();
  ExpectEnd("zeros");
}

TEST_F(X11Draw, WindowSaysWhatItIs) {
  EXPECT_EQ(kTitle, window.Property("WM_NAME"));
  EXPECT_EQ(kTitle, window.Property("_NET_WM_NAME"));
  EXPECT_EQ(std::string("rng-gather-x11\0Rng-gather-x11\0", 30), window.Property("WM_CLASS"));
  EXPECT_EQ("WM_DELETE_WINDOW", window.Property("WM_PROTOCOLS"));
  EXPECT_EQ("_NET_WM_WINDOW_TYPE_DIALOG", window.Property("_NET_WM_WINDOW_TYPE"));
  EXPECT_TRUE(window.KeepsClicks());
  EXPECT_TRUE(window.AsksForKeys());
  const ShownWindow::Area area = window.Place();
  EXPECT_EQ("size " + std::to_string(area.width) + ' ' + std::to_string(area.height) +
                "\nsmallest " + std::to_string(area.width / 3) + ' ' +
                std::to_string(area.height / 3) + "\ncentre\n",
            window.SizeHints());
}

namespace {

class SeveralX11Draws : public X11Draw {
 protected:
  SeveralX11Draws() : X11Draw("3") {}
};

}  // namespace

TEST_F(SeveralX11Draws, TakeTurnsAndAreAllCancelled) {
  EXPECT_EQ(1, window.Count());
  host.Send(SIGUSR1);
  ExpectEnd("zeros\nzeros\nzeros");
}

// By the time that the window shows its text, it would have taken the focus.
TEST(X11Focus, IsLeftToAWindowManager) {
  XServer server;
  WindowManager manager(server.display);
  HostProcess host({DRAWING_HOST, "unixx11", "32"}, {"DISPLAY=" + server.display});
  ASSERT_TRUE(manager.ShowNext());
  ShownWindow window(server.display, kTitle);
  ASSERT_TRUE(window.Appears());
  EXPECT_TRUE(WaitUntil([&] { return window.CountInRow(kBackground) > 400; }));
  EXPECT_FALSE(window.HasFocus());
  window.Close();
  EXPECT_EQ(Output("zeros"), host.Finish());
  EXPECT_TRUE(host.IsAlone());
}

TEST(X11Kind, IsAbsentWithoutADisplay) {
  HostProcess host({DRAWING_HOST, "unixx11", "32"}, {});
  EXPECT_EQ("no unixx11\n", host.Finish());
}
