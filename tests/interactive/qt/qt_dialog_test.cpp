// The dialog of "bioqt" on screens of different resolution. With the environment variable PICTURES, the name of a
// folder, the cases write what they see to files there.

#include "tests/interactive/host_process.h"
#include "tests/interactive/moving_robot.h"
#include "tests/interactive/shown_window.h"
#include "tests/support/x_server.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <optional>

namespace {

// In the middle of a draw.
class Dialog {
 public:
  Dialog(const std::string& resolution, const std::string& language, const std::string& title,
         const std::string& picture, const std::string& machine = "") {
    SetResources(server.display, "Xft.dpi:\t" + resolution + '\n');
    host.emplace(HostProcess::Words{DRAWING_HOST, "bioqt", "32"},
                 HostProcess::Words{"DISPLAY=" + machine + server.display, "LANG=" + language});
    window.emplace(server.display, title);
    EXPECT_TRUE(window->Appears());
    if (const char* const folder = std::getenv("PICTURES")) {
      Record(std::string(folder) + '/' + picture);
    }
  }

  ShownWindow::Area Place() { return window->Place(); }

  const std::string& OutputAfterFineMotions() {
    robot.MoveFinely(450);
    return host->Finish();
  }

  // Once there is enough, the button does nothing.
  const std::string& OutputAfterKeysAndTheButton(int presses) {
    robot.Type(presses);
    robot.Do({"key", "Tab", "key", "space"});
    return host->Finish();
  }

 private:
  void Record(const std::string& file) {
    robot.Move(225);
    robot.Wait();
    const std::string command = "import -display " + server.display + " -window " +
                                std::to_string(window->Number()) + " -strip " + file;
    EXPECT_EQ(0, std::system(command.c_str()));
  }

  XServer server{{"-screen", "0", "1600x1000x24", "-dpi", "96", "-listen", "tcp"}};
  std::optional<HostProcess> host;
  std::optional<ShownWindow> window;
  MovingRobot robot{server.display, 800, 500};
};

}  // namespace

TEST(QtDialog, IsTwiceAsLargeAtTwiceTheResolution) {
  Dialog usual("96", "en_GB.UTF-8", "A program needs random bytes", "bioqt.png");
  Dialog fine("192", "en_GB.UTF-8", "A program needs random bytes", "bioqt_192.png");
  EXPECT_NEAR(2 * usual.Place().width, fine.Place().width, 4);
  EXPECT_NEAR(2 * usual.Place().height, fine.Place().height, 8);
}

// Qt's own pixels are twice as large there.
TEST(QtDialog, CreditsMotionsInPixelsOfTheScreen) {
  Dialog fine("192", "en_GB.UTF-8", "A program needs random bytes", "bioqt_192.png");
  EXPECT_THAT(fine.OutputAfterFineMotions(), testing::HasSubstr("drawn"));
}

// The sentence takes one line more.
TEST(QtDialog, IsHigherForALongerSentence) {
  Dialog english("192", "en_GB.UTF-8", "A program needs random bytes", "bioqt_192.png");
  Dialog german("192", "de_DE.UTF-8", "Ein Programm benötigt Zufallsbytes", "bioqt_192_de.png");
  EXPECT_EQ(english.Place().width, german.Place().width);
  EXPECT_GT(german.Place().height, english.Place().height);
}

TEST(QtDialog, SaysThatTheDisplayMayBeReachedOverANetwork) {
  Dialog usual("96", "en_GB.UTF-8", "A program needs random bytes", "bioqt.png");
  Dialog remote("96", "en_GB.UTF-8", "A program needs random bytes", "bioqt_remote.png",
                "localhost");
  EXPECT_LT(usual.Place().height, remote.Place().height);
}

// They would be worth two bits each on this machine, which is enough.
TEST(QtDialog, KeysOverANetworkAreWorthHalf) {
  Dialog remote("96", "en_GB.UTF-8", "A program needs random bytes", "bioqt_remote.png",
                "localhost");
  EXPECT_THAT(remote.OutputAfterKeysAndTheButton(300), testing::HasSubstr("zeros"));
}
