// The program rng-gather-qt where it cannot show a dialog, or need not.

#include "plugins/interactive/request.h"
#include "plugins/interactive/start_helper.h"
#include "tests/support/process.h"
#include "tests/support/x_server.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char kHelper[] = INSTALLATION "/libexec/rngaggregator/rng-gather-qt";

class QtHelper : public testing::Test {
 protected:
  // So that its status is seen: it is nobody's child.
  QtHelper() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
  ~QtHelper() override { ::close(socket); }

  void Ask(HelperRequest::Task task, const std::string& display) {
    ::setenv("DISPLAY", display.c_str(), 1);
    socket = StartHelper(kHelper);
    const HelperRequest request = {task, 0, 32};
    ::send(socket, &request, sizeof request, MSG_NOSIGNAL);
  }

  std::string Answer() const {
    char answer[64];
    const ssize_t count = ::recv(socket, answer, sizeof answer, MSG_WAITALL);
    return std::string(answer, count > 0 ? static_cast<std::size_t>(count) : 0);
  }

  static int Status() {
    int status = -1;
    ::wait(&status);
    return status;
  }

  int socket = -1;
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
