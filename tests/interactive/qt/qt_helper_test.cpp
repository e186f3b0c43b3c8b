// The program rng-gather-qt where it cannot show a dialog, or need not.

#include "tests/interactive/started_helper.h"
#include "tests/support/process.h"
#include "tests/support/x_server.h"

#include <csignal>

namespace {

constexpr char kHelper[] = INSTALLATION "/libexec/rngaggregator/rng-gather-qt";

class QtHelper : public StartedHelper {
 protected:
  QtHelper() : StartedHelper(kHelper) {}
};

}  // namespace

TEST_F(QtHelper, TestsItselfWithoutADisplay) {
  Ask(HelperRequest::kSelfTest, "");
  EXPECT_EQ(std::string(1, static_cast<char>(kHelperPassed)), Answer());
  EXPECT_EQ(0, Status());
}

// Qt itself would abort.
TEST_F(QtHelper, ExitsWithoutADisplay) {
  Ask(HelperRequest::kDraw, ":65000");
  EXPECT_EQ("", Answer());
  EXPECT_EQ(1, WEXITSTATUS(Status()));
}

TEST_F(QtHelper, IsCancelledWhileTheServerDoesNotAnswer) {
  XServer server;
  server.Send(SIGSTOP);
  Ask(HelperRequest::kDraw, server.display);
  ::usleep(100'000);
  ::shutdown(socket, SHUT_RDWR);
  EXPECT_EQ(0, Status());
  server.Send(SIGCONT);
}

TEST_F(QtHelper, SaysHowItIsStarted) {
  const Result result = RunShell(kHelper);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rng-gather-qt: This program is started by a plug-in. Run \"rngctl read\" instead.\n",
            result.errors);
}
