// The window of "unixx11" on screens of different kinds. With the environment variable PICTURES, the name of a
// folder, the cases write what they see to files there.

#include "tests/interactive/host_process.h"
#include "tests/interactive/moving_robot.h"
#include "tests/interactive/shown_window.h"
#include "tests/support/x_server.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <optional>

namespace {

// The window half way to the end of a draw.
class WindowOnScreen {
 public:
  WindowOnScreen(int width, int height, int dpi, const std::string& picture,
                 const std::string& resources = "", const std::string& host = "")
      : server({"-screen", "0", std::to_string(width) + "x" + std::to_string(height) + "x24",
                "-dpi", std::to_string(dpi), "-listen", "tcp"}),
        robot(server.display, width / 2, height / 2) {
    SetResources(server.display, resources);
    program.emplace(HostProcess::Words{DRAWING_HOST, "unixx11", "32"},
                    HostProcess::Words{"DISPLAY=" + host + server.display});
    EXPECT_TRUE(window.Appears());
    if (const char* const folder = std::getenv("PICTURES")) {
      Record(std::string(folder) + '/' + picture);
    }
  }

  ShownWindow::Area Place() { return window.Place(); }
  std::vector<unsigned long> Pixels() { return window.Pixels(); }

  const std::string& OutputAfterKeysAndEscape(int presses) {
    EXPECT_TRUE(window.GetsFocus());
    robot.Type(presses);
    robot.Do({"key", "Escape"});
    return program->Finish();
  }

 private:
  void Record(const std::string& file) {
    robot.Move(180);
    robot.Wait();
    const std::string command = "import -display " + server.display + " -window " +
                                std::to_string(window.Number()) + " -strip " + file;
    EXPECT_EQ(0, std::system(command.c_str()));
  }

  XServer server;
  std::optional<HostProcess> program;
  ShownWindow window{server.display, "A program needs random bytes"};
  MovingRobot robot;
};

}  // namespace

TEST(X11Window, IsInTheMiddleOfTheScreen) {
  WindowOnScreen screen(1024, 768, 96, "unixx11.png");
  const ShownWindow::Area area = screen.Place();
  EXPECT_NEAR(512, area.x + area.width / 2, 1);
  EXPECT_NEAR(384, area.y + area.height / 2, 1);
  EXPECT_NEAR(34 * 12 * 96 / 72, area.width, 1);  // 34 letters of 12 points
}

TEST(X11Window, IsTwiceAsLargeAtTwiceTheResolution) {
  WindowOnScreen usual(1600, 1000, 96, "unixx11_96.png");
  WindowOnScreen fine(1600, 1000, 192, "unixx11_192.png");
  EXPECT_NEAR(2 * usual.Place().width, fine.Place().width, 4);
  EXPECT_NEAR(2 * usual.Place().height, fine.Place().height, 8);
}

TEST(X11Window, FollowsTheResolutionThatTheUserSetsForTexts) {
  WindowOnScreen usual(1600, 1000, 96, "unixx11_96.png");
  WindowOnScreen set(1600, 1000, 96, "unixx11_set.png", "Xft.antialias:\t1\nXft.dpi:\t144\n");
  EXPECT_NEAR(1.5 * usual.Place().width, set.Place().width, 4);
}

TEST(X11Window, DoesNotBelieveOddResolutions) {
  WindowOnScreen usual(1600, 1000, 96, "unixx11_96.png");
  WindowOnScreen screen(1600, 1000, 20, "unixx11_odd.png");
  WindowOnScreen set(1600, 1000, 96, "unixx11_odd.png", "Xft.dpi:\t47\n");
  WindowOnScreen fineScreen(1600, 1000, 500, "unixx11_odd.png");
  WindowOnScreen setFine(1600, 1000, 96, "unixx11_odd.png", "Xft.dpi:\t769\n");
  EXPECT_EQ(usual.Place().width, screen.Place().width);
  EXPECT_EQ(usual.Place().width, set.Place().width);
  EXPECT_EQ(usual.Place().width, fineScreen.Place().width);
  EXPECT_EQ(usual.Place().width, setFine.Place().width);
}

TEST(X11Window, BelievesTheSmallestAndTheLargestUsualResolution) {
  WindowOnScreen smallest(1600, 1000, 96, "unixx11_smallest.png", "Xft.dpi:\t48\n");
  WindowOnScreen largest(1600, 1000, 96, "unixx11_largest.png", "Xft.dpi:\t768\n");
  EXPECT_EQ(34 * 12 * 48 / 72, smallest.Place().width);
  EXPECT_EQ(1600, largest.Place().width);
}

// The sentence about the network takes more lines.
TEST(X11Window, SaysThatTheDisplayMayBeReachedOverANetwork) {
  WindowOnScreen usual(1600, 1000, 96, "unixx11_96.png");
  WindowOnScreen remote(1600, 1000, 96, "unixx11_remote.png", "", "localhost");
  EXPECT_EQ(usual.Place().width, remote.Place().width);
  EXPECT_LT(usual.Place().height, remote.Place().height);
}

// They would be worth two bits each on this machine, which is enough, but the end of a draw swallows the last key.
TEST(X11Window, KeysOverANetworkAreWorthHalf) {
  WindowOnScreen remote(1600, 1000, 96, "unixx11_remote.png", "", "localhost");
  EXPECT_THAT(remote.OutputAfterKeysAndEscape(300), testing::HasSubstr("zeros"));
}

TEST(X11Window, FitsASmallScreen) {
  WindowOnScreen screen(320, 200, 96, "unixx11_small.png");
  const ShownWindow::Area area = screen.Place();
  EXPECT_GE(area.x, 0);
  EXPECT_GE(area.y, 0);
  EXPECT_LE(area.x + area.width, 320);
  EXPECT_LE(area.y + area.height, 200);
}
