// The program rng-gather-qt where it cannot show a dialog, or need not.

#include "tests/interactive/started_helper.h"
#include "tests/support/process.h"
#include "tests/support/tree.h"
#include "tests/support/x_server.h"

#include <csignal>
#include <poll.h>
#include <sys/un.h>

namespace {

constexpr char kHelper[] = INSTALLATION "/libexec/rngaggregator/rng-gather-qt";

class QtHelper : public StartedHelper {
 protected:
  QtHelper() : StartedHelper(kHelper) {}
};

// The address of a message bus, which never answers.
class MessageBus {
 public:
  explicit MessageBus(const std::string& path) {
    sockaddr_un address = {AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(0, ::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    EXPECT_EQ(0, ::listen(descriptor, 1));
  }
  MessageBus(const MessageBus&) = delete;
  MessageBus& operator=(const MessageBus&) = delete;
  ~MessageBus() { ::close(descriptor); }

  bool IsAsked(int milliseconds) const {
    pollfd event = {descriptor, POLLIN, 0};
    return ::poll(&event, 1, milliseconds) == 1;
  }

 private:
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
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

// Qt would start a bus if it had no address.
TEST_F(QtHelper, AsksTheMessageBusOfTheUser) {
  const XServer server;
  const MessageBus usual(TreePath("bus"));
  ::setenv("XDG_RUNTIME_DIR", TreePath("").c_str(), 1);
  ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
  Ask(HelperRequest::kDraw, server.display);
  EXPECT_TRUE(usual.IsAsked(30'000));
}

TEST_F(QtHelper, AsksTheMessageBusThatTheEnvironmentNames) {
  const XServer server;
  const MessageBus usual(TreePath("bus"));
  const MessageBus other(TreePath("other"));
  ::setenv("XDG_RUNTIME_DIR", TreePath("").c_str(), 1);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + TreePath("other")).c_str(), 1);
  Ask(HelperRequest::kDraw, server.display);
  EXPECT_TRUE(other.IsAsked(30'000));
  EXPECT_FALSE(usual.IsAsked(0));
}

TEST_F(QtHelper, SaysHowItIsStarted) {
  const Result result = RunShell(kHelper);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rng-gather-qt: This program is started by a plug-in. Run \"rngctl read\" instead.\n",
            result.errors);
}
