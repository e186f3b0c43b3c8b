// The program rng-gather-x11 without a plug-in.

#include "tests/interactive/moving_robot.h"
#include "tests/interactive/shown_window.h"
#include "tests/interactive/started_helper.h"
#include "tests/support/process.h"
#include "tests/support/x_server.h"

namespace {

constexpr char kHelper[] = INSTALLATION "/libexec/rngaggregator/rng-gather-x11";

class X11Helper : public StartedHelper {
 protected:
  X11Helper() : StartedHelper(kHelper) {}
};

}  // namespace

TEST_F(X11Helper, TestsItselfWithoutADisplay) {
  Ask(HelperRequest::kSelfTest, "");
  EXPECT_EQ(std::string(1, static_cast<char>(kHelperPassed)), Answer());
  EXPECT_EQ(0, Status());
}

TEST_F(X11Helper, ExitsWithoutADisplay) {
  Ask(HelperRequest::kDraw, ":65000");
  EXPECT_EQ("", Answer());
  EXPECT_EQ(1, WEXITSTATUS(Status()));
}

// The plug-in may take its time.
TEST_F(X11Helper, ClosesTheWindowBeforeItSendsTheBytes) {
  const XServer server;
  Ask(HelperRequest::kDraw, server.display, 1 << 30);
  ShownWindow window(server.display, "A program needs random bytes");
  ASSERT_TRUE(window.Appears() && window.GetsFocus());
  MovingRobot robot(server.display, 512, 384);
  robot.Type(3000);
  EXPECT_TRUE(window.Disappears());
  ::shutdown(socket, SHUT_RDWR);
  EXPECT_EQ(0, Status());
}

TEST_F(X11Helper, SaysHowItIsStarted) {
  const Result result = RunShell(kHelper);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rng-gather-x11: This program is started by a plug-in. Run \"rngctl read\" instead.\n",
            result.errors);
}
