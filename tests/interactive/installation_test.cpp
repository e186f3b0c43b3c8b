// An installation that is moved or incomplete.

#include "tests/interactive/tty/terminal_draw.h"
#include "tests/support/tree.h"

#include <dlfcn.h>
#include <filesystem>
#include <unistd.h>

#include <rngaggregator/provider.h>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

// A copy of the installation in another place. LD_LIBRARY_PATH takes precedence over the host's run path.
class MovedInstallation : public testing::Test {
 protected:
  MovedInstallation() {
    fs::copy(INSTALLATION, moved, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  }

  const fs::path moved = TreePath("moved");
  const fs::path helper = moved / "libexec/rngaggregator/rng-gather-tty";
  const HostProcess::Words command = {DRAWING_HOST, "biokbd", "32"};
  const HostProcess::Words variables = {"TERM=dumb", "LD_LIBRARY_PATH=" + (moved / "lib").string()};
  PseudoTerminal terminal;
  TypingRobot robot{terminal};
};

}  // namespace

TEST_F(MovedInstallation, Draws) {
  HostProcess host(command, variables, terminal.Path());
  ASSERT_TRUE(terminal.Shows(kPrompt));
  const std::string maps = ReadFile("/proc/" + std::to_string(host.Get()) + "/maps");
  EXPECT_THAT(maps, HasSubstr((moved / "lib/librngbiokb.so").string()));
  EXPECT_THAT(maps, Not(HasSubstr(INSTALLATION)));
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  EXPECT_THAT(host.Finish(), StartsWith("ready\ndrawn\n"));
}

// The plug-in does not use the helper of the original installation instead.
TEST_F(MovedInstallation, HasNoGeneratorWithoutItsHelper) {
  fs::remove(helper);
  HostProcess host(command, variables, terminal.Path());
  EXPECT_EQ("no biokbd\n", host.Finish());
}

TEST_F(MovedInstallation, HasNoGeneratorIfItsHelperIsNotExecutable) {
  fs::permissions(helper, fs::perms::owner_read);
  HostProcess host(command, variables, terminal.Path());
  EXPECT_EQ("no biokbd\n", host.Finish());
}

// Another folder could be the current one by the time of a draw.
TEST(RelativeInstallation, HasNoHelper) {
  ASSERT_EQ(0, ::chdir(INSTALLATION));
  void* const plugin = ::dlopen("lib/librngbiokb.so", RTLD_NOW);
  ASSERT_NE(nullptr, plugin) << ::dlerror();
  const auto report = reinterpret_cast<decltype(&GetRngReport)>(::dlsym(plugin, "GetRngReport"));
  std::string text(static_cast<std::size_t>(report(nullptr)), '\0');
  report(text.data());
  EXPECT_STREQ(
      "problem\tThe plug-in was loaded by a relative path, so it cannot find its helper program "
      "rng-gather-tty. Use absolute paths in LD_LIBRARY_PATH.\n",
      text.c_str());
}
