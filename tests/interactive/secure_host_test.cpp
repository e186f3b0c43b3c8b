// A host that has more rights than its user.

#include "tests/interactive/tty/terminal_draw.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <optional>
#include <unistd.h>

using testing::EndsWith;
using testing::StartsWith;

namespace {

class SecureHost : public testing::Test {
 protected:
  SecureHost() {
    std::filesystem::create_directories(TreePath("libexec/rngaggregator"));
    std::filesystem::copy(INSTALLATION "/libexec/rngaggregator/rng-gather-tty",
                          TreePath("libexec/rngaggregator"));
    std::filesystem::copy(SECURE_HOST, program);
  }

  HostProcess& Start(HostProcess::Words command) {
    command.push_back(program);
    return host.emplace(command, HostProcess::Words{"TERM=dumb"}, terminal.Path());
  }

  const std::string program = TreePath("lib/host");
  PseudoTerminal terminal;
  std::optional<HostProcess> host;
};

}  // namespace

TEST_F(SecureHost, AsksItsUserWithoutMoreRights) {
  HostProcess& run = Start({});
  ASSERT_TRUE(terminal.Shows(kPrompt));
  terminal.Press("\x03");
  EXPECT_EQ("available 1\nself-test 1\ndrawn 0\n", run.Finish());
}

// The advice must be one that the reader can follow.
TEST_F(SecureHost, NamesADirectoryThatItsUserMayNotEnter) {
  if (::geteuid() != 0) GTEST_SKIP() << "root alone can become another user";
  std::filesystem::permissions(TreePath(""), std::filesystem::perms(0755));
  std::filesystem::permissions(TreePath("libexec"), std::filesystem::perms(0700));
  EXPECT_THAT(
      Start({"/usr/bin/setpriv", "--reuid=65534", "--clear-groups"}).Finish(),
      EndsWith(
          "rng-gather-tty: Permission denied. Let this user enter the directories above it.\n"));
}

TEST_F(SecureHost, AsksNobodyWithTheRightsOfAnotherUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a program to another user";
  std::filesystem::permissions(program, std::filesystem::perms(04755));
  std::filesystem::permissions(TreePath(""), std::filesystem::perms(0755));
  EXPECT_THAT(
      Start({"/usr/bin/setpriv", "--reuid=65534", "--clear-groups"}).Finish(),
      StartsWith(
          "available 0\nself-test 0\ndrawn 0\nproblem\tThe program has more rights than its user"));
  EXPECT_EQ("", terminal.Screen());
}
